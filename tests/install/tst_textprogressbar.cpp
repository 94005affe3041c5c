#include "install/textprogressbar.h"
#include "support/consolecapture.h"

#include <QTest>

#include <functional>

namespace
{
// What the function writes to standard output. The test log goes there too, so nothing is compared
// in between.
QByteArray printedBy(const std::function<void()> &function)
{
    ConsoleCapture capture;
    function();
    return capture.out();
}

QString blanks(int count)
{
    return QString(count, QLatin1Char(' '));
}
} // namespace

// The bar that is drawn on the console, and its text in the window.
class TestTextProgressBar : public QObject
{
    Q_OBJECT

private slots:
    void barOfAKnownSize_data();
    void barOfAKnownSize();
    void textOfAKnownSize_data();
    void textOfAKnownSize();
    void movingBar_data();
    void movingBar();
    void movingBarBeginsAnewAfterFortyEightRedraws();

    void textDoesNotMoveTheBar();
    void freshBarKnowsNoSize();
    void clearEndsTheLineAndForgetsAllButTheMessage();
};

void TestTextProgressBar::barOfAKnownSize_data()
{
    QTest::addColumn<qint64>("value");
    QTest::addColumn<qint64>("maximum");
    QTest::addColumn<int>("hashes");
    QTest::addColumn<bool>("half"); // a ">" follows them
    QTest::addColumn<QString>("percent");
    const auto row = [](const char *name, qint64 value, qint64 maximum, int hashes, bool half,
                        const char *percent) {
        QTest::newRow(name) << value << maximum << hashes << half << QString::fromLatin1(percent);
    };
    row("nothing yet", 0, 100, 0, false, "  0");
    row("one per cent is half a step", 1, 100, 0, true, "  1");
    row("two per cent is one step", 2, 100, 1, false, "  2");
    row("an odd percentage", 43, 100, 21, true, " 43");
    row("an even percentage", 42, 100, 21, false, " 42");
    row("rounded down, not to the nearest", 1999, 10000, 9, true, " 19");
    row("99 %", 99, 100, 49, true, " 99");
    row("a byte before the end is 99 %", 999999, 1000000, 49, true, " 99");
    row("100 %", 100, 100, 50, false, "100");
    row("sizes beyond 32 bits", 30000000000LL, 40000000000LL, 37, true, " 75");
    row("more than was announced makes the bar wider", 104, 100, 52, false, "104");
    row("a bar has an end all the same", 1000000000LL, 100, 1000, false, "1000000000");
    row("sizes whose product would not fit", 4611686018427387904LL, 9223372036854775807LL, 25,
        false, " 50");
}

void TestTextProgressBar::barOfAKnownSize()
{
    QFETCH(qint64, value);
    QFETCH(qint64, maximum);
    QFETCH(int, hashes);
    QFETCH(bool, half);
    QFETCH(QString, percent);
    TextProgressBar bar;
    bar.setMessage(QStringLiteral("1.5 MB/s"));
    bar.setStatus(value, maximum);
    const QString steps =
        QString(hashes, QLatin1Char('#')) + (half ? QStringLiteral(">") : QString());
    const QString field = steps + blanks(50 - steps.size());
    const QString expected = QStringLiteral("\r[") + field + QStringLiteral("] ") + percent +
                             QStringLiteral("% 1.5 MB/s     ");
    const QByteArray printed = printedBy([&bar] { bar.update(); });
    QCOMPARE(QString::fromUtf8(printed), expected);
}

void TestTextProgressBar::textOfAKnownSize_data()
{
    QTest::addColumn<qint64>("value");
    QTest::addColumn<qint64>("maximum");
    QTest::addColumn<int>("progress");
    QTest::addColumn<QString>("text");
    const auto row = [](const char *name, qint64 value, qint64 maximum, int progress,
                        const char *text) {
        QTest::newRow(name) << value << maximum << progress << QString::fromLatin1(text);
    };
    row("nothing yet", 0, 7, 0, "  0% 1.5 MB/s     ");
    row("two digits after a blank", 42, 100, 42, " 42% 1.5 MB/s     ");
    row("rounded down", 2, 3, 66, " 66% 1.5 MB/s     ");
    row("everything", 7, 7, 100, "100% 1.5 MB/s     ");
    row("sizes beyond 32 bits", 30000000000LL, 40000000000LL, 75, " 75% 1.5 MB/s     ");
}

void TestTextProgressBar::textOfAKnownSize()
{
    QFETCH(qint64, value);
    QFETCH(qint64, maximum);
    QFETCH(int, progress);
    QFETCH(QString, text);
    TextProgressBar bar;
    bar.setMessage(QStringLiteral("1.5 MB/s"));
    bar.setStatus(value, maximum);
    QString message;
    const QByteArray printed = printedBy([&bar, &message] { message = bar.getMessage(); });
    QCOMPARE(message, text);
    QCOMPARE(printed, QByteArray());
    QCOMPARE(bar.getProgress(), progress);
}

void TestTextProgressBar::movingBar_data()
{
    QTest::addColumn<int>("redraws");
    QTest::addColumn<qint64>("maximum");
    QTest::addColumn<int>("before");
    QTest::addColumn<int>("after");
    QTest::newRow("the first redraw") << 1 << qint64(-1) << 0 << 4;
    QTest::newRow("the second redraw") << 2 << qint64(-1) << 1 << 5;
    QTest::newRow("the third redraw") << 3 << qint64(-1) << 2 << 6;
    QTest::newRow("in the middle") << 24 << qint64(-1) << 23 << 27;
    QTest::newRow("the widest field") << 47 << qint64(-1) << 46 << 50;
    QTest::newRow("back at the left") << 48 << qint64(-1) << 0 << 3;
    QTest::newRow("the second round") << 49 << qint64(-1) << 0 << 4;
    QTest::newRow("a size of 0 is unknown too") << 3 << qint64(0) << 2 << 6;
}

void TestTextProgressBar::movingBar()
{
    QFETCH(int, redraws);
    QFETCH(qint64, maximum);
    QFETCH(int, before);
    QFETCH(int, after);
    TextProgressBar bar;
    bar.setMessage(QStringLiteral("3.0 kB/s"));
    bar.setStatus(5000, maximum);
    QByteArray printed;
    for (int i = 0; i < redraws; ++i) {
        printed = printedBy([&bar] { bar.update(); });
    }
    const QString expected = QStringLiteral("\r[") + blanks(before) + QStringLiteral("###") +
                             blanks(after) + QStringLiteral("]      3.0 kB/s      ");
    QCOMPARE(QString::fromUtf8(printed), expected);
    QCOMPARE(bar.getMessage(), expected);
    QCOMPARE(bar.getProgress(), 0);
}

void TestTextProgressBar::movingBarBeginsAnewAfterFortyEightRedraws()
{
    TextProgressBar bar;
    bar.setStatus(1, -1);
    const QByteArray first = printedBy([&bar] { bar.update(); });
    QCOMPARE(first, QByteArray("\r[###    ]            "));
    QByteArray last;
    for (int i = 0; i < 48; ++i) {
        last = printedBy([&bar] { bar.update(); });
    }
    QCOMPARE(last, first);
}

void TestTextProgressBar::textDoesNotMoveTheBar()
{
    TextProgressBar bar;
    bar.setStatus(1, -1);
    (void)printedBy([&bar] { bar.update(); });
    const QString text = bar.getMessage();
    QCOMPARE(text, QStringLiteral("\r[###    ]            "));
    QCOMPARE(bar.getMessage(), text);
    const QByteArray second = printedBy([&bar] { bar.update(); });
    QCOMPARE(second, QByteArray("\r[ ###     ]            "));
}

void TestTextProgressBar::freshBarKnowsNoSize()
{
    const TextProgressBar bar;
    QCOMPARE(bar.getMessage(), QStringLiteral("\r[###   ]            "));
    QCOMPARE(bar.getProgress(), 0);
}

void TestTextProgressBar::clearEndsTheLineAndForgetsAllButTheMessage()
{
    TextProgressBar bar;
    bar.setMessage(QStringLiteral("fast"));
    bar.setStatus(50, 100);
    (void)printedBy([&bar] {
        bar.update();
        bar.update();
    });
    QCOMPARE(bar.getProgress(), 50);
    const QByteArray printed = printedBy([&bar] { bar.clear(); });
    QCOMPARE(printed, QByteArray("\n"));
    QCOMPARE(bar.getProgress(), 0);
    QCOMPARE(bar.getMessage(), QStringLiteral("\r[###   ]      fast      "));
    QCOMPARE(bar.value, qint64(0));
    QCOMPARE(bar.maximum, qint64(-1));
    const QByteArray redrawn = printedBy([&bar] { bar.update(); });
    QCOMPARE(redrawn, QByteArray("\r[###    ]      fast      "));
}

QTEST_GUILESS_MAIN(TestTextProgressBar)
#include "tst_textprogressbar.moc"
