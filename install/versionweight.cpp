#include "install/versionweight.h"

#include <QStringRef>

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

// The part as an integer, 0 when it is none. The toolkit's own reading is slow, and a folder may
// hold many names; what is not plain digits is left to it.
qint32 numberOf(const QStringRef &part)
{
    constexpr int alwaysFit = 9;
    if (part.size() > alwaysFit) {
        return part.toInt();
    }
    qint32 number = 0;
    for (const QChar character : part) {
        if (character < QLatin1Char('0') || character > QLatin1Char('9')) {
            return part.toInt();
        }
        number = number * 10 + (character.unicode() - u'0');
    }
    return number;
}

template<typename Number>
Number sumOfParts(const QString &version)
{
    Number weight = 0;
    Number partWeight = firstPartWeight;
    // Where a part weighs nothing any more, the rest of the name does not matter.
    for (int begin = 0; begin <= version.size() && partWeight != 0; partWeight /= 100) {
        const int dot = version.indexOf(QLatin1Char('.'), begin);
        const int end = dot < 0 ? version.size() : dot;
        weight += partWeight * static_cast<Number>(numberOf(version.midRef(begin, end - begin)));
        begin = end + 1;
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
