#include "install/versionweight.h"

#include <QVector>

#include <cstring>

namespace
{
constexpr qint32 firstPartWeight = 100000000;

// The signed value with these 32 bits, in a way that no compiler may read differently.
qint32 fromBits(quint32 bits)
{
    qint32 value = 0;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

template<typename Number>
Number sumOfParts(const QString &version)
{
    Number weight = 0;
    Number partWeight = firstPartWeight;
    const QVector<QStringRef> parts = version.splitRef(QLatin1Char('.'));
    for (const QStringRef &part : parts) {
        weight += partWeight * static_cast<Number>(part.toInt());
        partWeight /= 100;
    }
    return weight;
}
} // namespace

// kept: 32-bit arithmetic that wraps around, so that 21.99 weighs less than nothing and 43.0 less
// than 1.0. A wider type would make such a version count as installed where it does not today.
// Unsigned arithmetic wraps by definition and gives the same bits.
qint32 versionWeight(const QString &version)
{
    return fromBits(sumOfParts<quint32>(version));
}

bool versionWeightWraps(const QString &version)
{
    return sumOfParts<qint64>(version) != versionWeight(version);
}

QString greatestVersion(const QStringList &names)
{
    QString greatest;
    qint32 greatestWeight = 0;
    for (const QString &name : names) {
        const qint32 weight = versionWeight(name);
        if (weight > greatestWeight) {
            greatestWeight = weight;
            greatest = name;
        }
    }
    return greatest;
}

QString versionColour(const QString &installed, const QString &offered)
{
    if (installed.isEmpty()) {
        return QStringLiteral("red");
    }
    return installed == offered ? QStringLiteral("green") : QStringLiteral("orange");
}
