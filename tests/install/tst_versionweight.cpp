#include "install/versionweight.h"

#include <QTest>

// Which of the installed versions counts, and what the player sees of it.
class TestVersionWeight : public QObject
{
    Q_OBJECT

private slots:
    void versionWeight_data();
    void versionWeight();
    void versionPartsAreReadAsTheToolkitReadsNumbers();
    void versionWeightWraps_data();
    void versionWeightWraps();

    void greatestVersion_data();
    void greatestVersion();
    void versionColour_data();
    void versionColour();
};

void TestVersionWeight::versionWeight_data()
{
    QTest::addColumn<QString>("version");
    QTest::addColumn<qint32>("weight");
    const auto row = [](const char *name, const char *version, qint32 weight) {
        QTest::newRow(name) << QString::fromLatin1(version) << weight;
    };
    row("three parts", "2.1.4", 201040000);
    row("the five parts that count", "1.2.3.4.5", 102030405);
    row("a sixth part counts nothing", "2.1.4.0.0.1", 201040000);
    row("a single part", "7", 700000000);
    row("the smallest weight above nothing", "0.0.0.0.1", 1);
    row("a part of three digits reaches into the one before it", "1.100", 200000000);
    row("zeros in front are no matter", "02.0", 200000000);
    row("nothing but zeros", "0.0", 0);
    row("an empty name", "", 0);
    row("the folder itself", ".", 0);
    row("the folder above", "..", 0);
    row("a word", "backup", 0);
    row("a word in the middle counts 0", "1.x.3", 100030000);
    row("digits with a letter behind them are no number", "1a.5", 5000000);
    row("no other base than ten", "0x10.1", 1000000);
    row("an empty part keeps its place", "2..4", 200040000);
    row("an empty first part keeps its place", ".5", 5000000);
    row("a minus sign counts", "1.-5", 95000000);
    row("a plus sign counts", "+2", 200000000);
    row("a negative first part", "-1.5", -95000000);
    row("a plain file's extension counts 0", "3.zip", 300000000);
    row("the greatest weight there is", "21.47.48.36.47", 2147483647);
    row("one more wraps around", "21.47.48.36.48", -2147483647 - 1);
    row("21.99 wraps to less than nothing", "21.99", -2095967296);
    row("22.0 wraps to less than nothing", "22.0", -2094967296);
    row("43.0.0 wraps to less than 1.0", "43.0.0", 5032704);
    row("the product of one part wraps by itself", "2147483647", -100000000);
    row("a number beyond 32 bits is no number", "99999999999.1", 1000000);
}

void TestVersionWeight::versionWeight()
{
    QFETCH(QString, version);
    QFETCH(qint32, weight);
    QCOMPARE(::versionWeight(version), weight);
}

void TestVersionWeight::versionPartsAreReadAsTheToolkitReadsNumbers()
{
    const QStringList parts{
        {},
        QStringLiteral("0"),
        QStringLiteral("7"),
        QStringLiteral("007"),
        QStringLiteral("+7"),
        QStringLiteral("-7"),
        QStringLiteral("--7"),
        QStringLiteral(" 7"),
        QStringLiteral("7 "),
        QStringLiteral("7 7"),
        QStringLiteral("7a"),
        QStringLiteral("a7"),
        QStringLiteral("0x7"),
        QStringLiteral("7e1"),
        QStringLiteral("1,000"),
        QStringLiteral("/"),
        QStringLiteral(":"),
        QString(QChar(0x0667)), // seven, in Arabic
        QString(QChar(0xFF17)), // seven, in full width
        QStringLiteral("999999999"),
        QStringLiteral("1000000000"),
        QStringLiteral("2147483647"),
        QStringLiteral("2147483648"),
        QStringLiteral("-2147483648"),
        QStringLiteral("0000000000000007"),
        QStringLiteral("99999999999999999999"),
    };
    for (const QString &part : parts) {
        // The fifth part weighs once.
        QCOMPARE(::versionWeight(QStringLiteral("0.0.0.0.") + part), part.toInt());
    }
}

void TestVersionWeight::versionWeightWraps_data()
{
    QTest::addColumn<QString>("version");
    QTest::addColumn<bool>("wraps");
    const auto row = [](const char *version, bool wraps) {
        QTest::newRow(version) << QString::fromLatin1(version) << wraps;
    };
    row("2.1.4", false);
    row("21.47.48.36.47", false);
    row("21.47.48.36.48", true);
    row("22.0", true);
    row("43.0.0", true);
    row("-1.5", false);
    row("-22.0", true);
    row("2147483647", true);
    row("99999999999", false);
}

void TestVersionWeight::versionWeightWraps()
{
    QFETCH(QString, version);
    QFETCH(bool, wraps);
    QCOMPARE(::versionWeightWraps(version), wraps);
}

void TestVersionWeight::greatestVersion_data()
{
    QTest::addColumn<QStringList>("names");
    QTest::addColumn<QString>("greatest");
    const auto row = [](const char *name, const char *names, const char *greatest) {
        QTest::newRow(name) << QString::fromLatin1(names).split(QLatin1Char(' '))
                            << QString::fromLatin1(greatest);
    };
    row("the later one is greater", ". .. 1.9.9 2.0", "2.0");
    row("the earlier one is greater", ". .. 2.0 1.9.9", "2.0");
    row("ten is more than nine", ". .. 1.10 1.9", "1.10");
    row("of equals the first wins", ". .. 02.0 2.0", "02.0");
    row("of equals the first wins, the other way round", ". .. 2.0 02.0", "2.0");
    row("only 22.0, which weighs less than nothing", ". .. 22.0", "");
    row("43.0.0 loses against 1.0", ". .. 1.0 43.0.0", "1.0");
    row("nothing but the two folders", ". ..", "");
    row("a weight of 0 is not installed", ". .. 0.0 backup", "");
    row("a negative weight is not installed", ". .. -1.0", "");
    row("a file counts like a folder", ". .. 2.0 3.zip", "3.zip");
    QTest::newRow("no names at all") << QStringList() << QString();
}

void TestVersionWeight::greatestVersion()
{
    QFETCH(QStringList, names);
    QFETCH(QString, greatest);
    QCOMPARE(::greatestVersion(names), greatest);
}

void TestVersionWeight::versionColour_data()
{
    QTest::addColumn<QString>("installed");
    QTest::addColumn<QString>("offered");
    QTest::addColumn<QString>("colour");
    const QString version = QStringLiteral("2.0");
    QTest::newRow("nothing installed") << QString() << version << QStringLiteral("red");
    QTest::newRow("nothing installed, nothing offered")
        << QString() << QString() << QStringLiteral("red");
    QTest::newRow("the offered version installed") << version << version << QStringLiteral("green");
    QTest::newRow("an older version installed")
        << QStringLiteral("1.0") << version << QStringLiteral("orange");
    QTest::newRow("a newer version installed")
        << QStringLiteral("3.0") << version << QStringLiteral("orange");
    QTest::newRow("an equal weight is not the same version")
        << QStringLiteral("02.0") << version << QStringLiteral("orange");
    QTest::newRow("something installed, nothing offered")
        << version << QString() << QStringLiteral("orange");
}

void TestVersionWeight::versionColour()
{
    QFETCH(QString, installed);
    QFETCH(QString, offered);
    QFETCH(QString, colour);
    QCOMPARE(::versionColour(installed, offered), colour);
}

QTEST_GUILESS_MAIN(TestVersionWeight)
#include "tst_versionweight.moc"
