#include "fetch/oneperturn.h"
#include "support/relation.h"

#include <QBasicTimer>
#include <QCoreApplication>
#include <QTest>
#include <QTimerEvent>

#include <memory>

namespace
{
constexpr int limit = 10000; // milliseconds

// Notes in which turn of the event loop something happened.
class Turns : public QObject
{
public:
    Turns() { m_timer.start(0, this); }

    void note(const QString &what) { m_notes << qMakePair(what, m_turn); }
    QStringList order() const
    {
        QStringList names;
        for (const auto &entry : m_notes) {
            names << entry.first;
        }
        return names;
    }
    int turnOf(int place) const { return m_notes.at(place).second; }
    int count() const { return m_notes.size(); }

protected:
    void timerEvent(QTimerEvent *) override { ++m_turn; }

private:
    QBasicTimer m_timer;
    int m_turn = 0;
    QVector<QPair<QString, int>> m_notes;
};
} // namespace

// Work that comes all at once is spread over turns of the event loop.
class TestOnePerTurn : public QObject
{
    Q_OBJECT

private slots:
    void cleanup();

    void firstIsDoneAtOnce();
    void othersFollowInTheirOrderAndInTurnsOfTheirOwn();
    void paintingHasATurnInBetween();
    void workMayAskForMore();
    void goneOwnersAreSkipped();
    void silentWhenDone();
};

// Until nothing waits any more, so that the next test begins afresh.
void TestOnePerTurn::cleanup()
{
    auto *turns = QCoreApplication::instance()->findChild<OnePerTurn *>();
    QVERIFY(turns != nullptr);
    QTRY_COMPARE_WITH_TIMEOUT(turns->m_timer, 0, limit);
}

void TestOnePerTurn::firstIsDoneAtOnce()
{
    bool done = false;
    OnePerTurn::take(this, [&done] { done = true; });
    QVERIFY(done);
}

void TestOnePerTurn::othersFollowInTheirOrderAndInTurnsOfTheirOwn()
{
    Turns turns;
    const QStringList names{QStringLiteral("one"), QStringLiteral("two"), QStringLiteral("three"),
                            QStringLiteral("four")};
    for (const QString &name : names) {
        OnePerTurn::take(this, [&turns, name] { turns.note(name); });
    }
    QCOMPARE(turns.count(), 1);
    QTRY_COMPARE_WITH_TIMEOUT(turns.count(), names.size(), limit);
    QCOMPARE(turns.order(), names);
    for (int place = 1; place < names.size(); ++place) {
        VERIFY_RELATION(turns.turnOf(place), >, turns.turnOf(place - 1));
    }
}

void TestOnePerTurn::paintingHasATurnInBetween()
{
    Turns turns;
    for (int i = 0; i < 5; ++i) {
        OnePerTurn::take(this, [&turns] { turns.note({}); });
    }
    QTRY_COMPARE_WITH_TIMEOUT(turns.count(), 5, limit);
    for (int place = 2; place < 5; ++place) {
        VERIFY_RELATION(turns.turnOf(place) - turns.turnOf(place - 1), >=, 2);
    }
}

void TestOnePerTurn::workMayAskForMore()
{
    QStringList done;
    OnePerTurn::take(this, [this, &done] {
        done << QStringLiteral("outer");
        OnePerTurn::take(this, [&done] { done << QStringLiteral("inner"); });
        done << QStringLiteral("still outer");
    });
    QCOMPARE(done, (QStringList{QStringLiteral("outer"), QStringLiteral("still outer")}));
    QTRY_COMPARE_WITH_TIMEOUT(done.size(), 3, limit);
    QCOMPARE(done.last(), QStringLiteral("inner"));
}

void TestOnePerTurn::goneOwnersAreSkipped()
{
    QStringList done;
    auto owner = std::make_unique<QObject>();
    OnePerTurn::take(this, [&done] { done << QStringLiteral("first"); });
    OnePerTurn::take(owner.get(), [&done] { done << QStringLiteral("of one that is gone"); });
    OnePerTurn::take(this, [&done] { done << QStringLiteral("last"); });
    owner.reset();
    QTRY_VERIFY_WITH_TIMEOUT(done.contains(QStringLiteral("last")), limit);
    QCOMPARE(done, (QStringList{QStringLiteral("first"), QStringLiteral("last")}));
}

// A timer that runs on would keep the processor from sleeping.
void TestOnePerTurn::silentWhenDone()
{
    OnePerTurn::take(this, [] {});
    auto *turns = QCoreApplication::instance()->findChild<OnePerTurn *>();
    QVERIFY(turns->m_timer != 0);
    QTRY_COMPARE_WITH_TIMEOUT(turns->m_timer, 0, limit);
    bool done = false;
    OnePerTurn::take(this, [&done] { done = true; });
    QVERIFY(done);
}

QTEST_GUILESS_MAIN(TestOnePerTurn)
#include "tst_oneperturn.moc"
