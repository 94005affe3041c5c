#include "install/receiveahead.h"

#include <QTest>

namespace
{
constexpr qint64 mebibyte = 1024 * 1024;
constexpr qint64 gigabit = 119 * mebibyte; // in bytes a second
} // namespace

// How many bytes of an archive wait for the window.
class TestReceiveAhead : public QObject
{
    Q_OBJECT

private slots:
    void next_data();
    void next();
    void aGigabitDoesNotWaitForTheWindow();
};

void TestReceiveAhead::next_data()
{
    QTest::addColumn<qint64>("allowed");
    QTest::addColumn<qint64>("waiting");
    QTest::addColumn<qint64>("away");
    QTest::addColumn<qint64>("result");
    const auto row = [](const char *name, qint64 allowed, qint64 waiting, qint64 away,
                        qint64 result) {
        QTest::newRow(name) << allowed << waiting << away << result;
    };
    constexpr qint64 least = mebibyte;
    constexpr qint64 most = 5 * mebibyte;
    row("a window that came at once", least, least, 0, least);
    row("turns as they usually are", least, least, 4, least);
    row("turns of 6 ms", least, least, 6, least);
    row("turns of 7 ms", least, least, 7, 2 * mebibyte);
    row("turns of 10 ms", least, least, 10, 2 * mebibyte);
    row("turns of 20 ms", least, least, 20, 4 * mebibyte);
    row("turns of 30 ms", least, least, 30, most);
    row("a window that stood still for a second", least, least, 1000, most);
    row("for a month", least, least, 2678400000LL, most);
    row("more than allowed waits for a moment, after there was less room", least, 3 * least, 10,
        2 * mebibyte);
    row("a slow line: nothing waits", least, 0, 1000, least);
    constexpr qint64 piece = 128 * 1024;
    row("a slow line: room for a piece and a byte", least, least - piece - 1, 1000, least);
    row("a line that became slow keeps its room", most, most - piece - 1, 0, most);
    row("no room for another piece", least, least - piece, 10, 2 * mebibyte);
    row("a window that is fast again", most, most, 0, least);
    row("a window that is less slow", most, most, 10, 2 * mebibyte);
}

void TestReceiveAhead::next()
{
    QFETCH(qint64, allowed);
    QFETCH(qint64, waiting);
    QFETCH(qint64, away);
    QFETCH(qint64, result);
    QCOMPARE(ReceiveAhead::next(allowed, waiting, away), result);
}

// With turns of up to 30 ms, of which a sixth more goes by while the bytes are taken.
void TestReceiveAhead::aGigabitDoesNotWaitForTheWindow()
{
    for (qint64 away = 0; away <= 30; ++away) {
        const qint64 turn = away * 7 / 6;
        const qint64 waits = ReceiveAhead::next(mebibyte, mebibyte, away);
        QVERIFY2(waits >= gigabit * turn / 1000, qPrintable(QString::number(away)));
    }
}

QTEST_GUILESS_MAIN(TestReceiveAhead)
#include "tst_receiveahead.moc"
