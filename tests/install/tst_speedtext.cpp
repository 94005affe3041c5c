#include "install/speedtext.h"

#include <QTest>

// How fast a download says it is.
class TestSpeedText : public QObject
{
    Q_OBJECT

private slots:
    void speedText_data();
    void speedText();
};

void TestSpeedText::speedText_data()
{
    QTest::addColumn<qint64>("bytes");
    QTest::addColumn<qint64>("milliseconds");
    QTest::addColumn<QString>("text");
    const auto row = [](const char *name, qint64 bytes, qint64 milliseconds, const char *text) {
        QTest::newRow(name) << bytes << milliseconds << QString::fromLatin1(text);
    };
    row("nothing received yet", 0, 100, "0.0 bytes/sec");
    row("a few bytes", 5, 1000, "5.0 bytes/sec");
    row("a fraction of a byte", 1, 3000, "0.3 bytes/sec");
    row("just below a kilobyte", 10239, 10000, "1023.9 bytes/sec");
    row("rounding does not change the unit", 102396, 100000, "1024.0 bytes/sec");
    row("exactly a kilobyte", 1024, 1000, "1.0 kB/s");
    row("some kilobytes", 12800, 1000, "12.5 kB/s");
    row("just below a megabyte", 1048575, 1000, "1024.0 kB/s");
    row("exactly a megabyte", 1048576, 1000, "1.0 MB/s");
    row("some megabytes in a fraction of a second", 786432, 500, "1.5 MB/s");
    row("no unit above megabytes", 3221225472LL, 1000, "3072.0 MB/s");
    row("more bytes than 32 bits hold", 42949672960LL, 4096000, "10.0 MB/s");
    row("no time passed", 1, 0, "inf MB/s");
    row("nothing received in no time", 0, 0, "0.0 bytes/sec");
}

void TestSpeedText::speedText()
{
    QFETCH(qint64, bytes);
    QFETCH(qint64, milliseconds);
    QFETCH(QString, text);
    QCOMPARE(::speedText(bytes, milliseconds), text);
}

QTEST_GUILESS_MAIN(TestSpeedText)
#include "tst_speedtext.moc"
