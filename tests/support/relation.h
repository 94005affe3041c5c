#pragma once

#include <QString>
#include <QTest>

#include <memory>

namespace Relation
{
template<typename Value>
QString text(const Value &value)
{
    const std::unique_ptr<char[]> text(QTest::toString(value));
    return QString::fromUtf8(text.get());
}

template<typename Left, typename Right>
QByteArray failed(const Left &left, const char *relation, const Right &right)
{
    return QStringLiteral("%1 is not %2 %3")
        .arg(text(left), QLatin1String(relation), text(right))
        .toUtf8();
}
} // namespace Relation

// What the toolkit's comparison is for equal values, for any other relation: says both when it does
// not hold.
#define VERIFY_RELATION(left, relation, right)                                                     \
    do {                                                                                           \
        const auto &relationLeft = (left);                                                         \
        const auto &relationRight = (right);                                                       \
        QVERIFY2(relationLeft relation relationRight,                                              \
                 Relation::failed(relationLeft, #relation, relationRight).constData());            \
    } while (false)
// Waits for it, for so many milliseconds; both sides are asked again and again.
#define TRY_VERIFY_RELATION(left, relation, right, limit)                                          \
    QTRY_VERIFY2_WITH_TIMEOUT((left)relation(right),                                               \
                              Relation::failed(left, #relation, right).constData(), limit)
