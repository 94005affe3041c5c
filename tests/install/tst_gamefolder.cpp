#include "install/gamefolder.h"
#include "support/scratchfolder.h"

#include <QTest>

// Which folder the launcher works in, by where an extractor lies.
class TestGameFolder : public QObject
{
    Q_OBJECT

private slots:
    void choice_data();
    void choice();
};

void TestGameFolder::choice_data()
{
    QTest::addColumn<QString>("here");
    QTest::addColumn<QString>("beside");
    QTest::addColumn<QString>("chosen");
    const QString here = QStringLiteral("here");
    const QString program = QStringLiteral("program");
    const QString extractor = QStringLiteral("unzip.exe");
    QTest::newRow("an extractor in both") << extractor << extractor << here;
    QTest::newRow("only where it was started") << extractor << QString() << here;
    QTest::newRow("only beside the program") << QString() << extractor << program;
    QTest::newRow("in neither") << QString() << QString() << here;
    QTest::newRow("a folder of that name beside the program")
        << QString() << QStringLiteral("unzip.exe/") << here;
    QTest::newRow("a folder of that name where it was started")
        << QStringLiteral("unzip.exe/") << extractor << program;
}

void TestGameFolder::choice()
{
    QFETCH(QString, here);
    QFETCH(QString, beside);
    QFETCH(QString, chosen);
    const ScratchFolder folder;
    const auto provide = [](const QString &name) {
        if (name.endsWith(QLatin1Char('/'))) {
            ScratchFolder::makeFolder(name);
        } else {
            ScratchFolder::write(name);
        }
    };
    provide(QStringLiteral("here/") + here);
    provide(QStringLiteral("program/") + beside);
    const QString root = folder.path() + QLatin1Char('/');
    QCOMPARE(GameFolder::choose(root + QStringLiteral("here"), root + QStringLiteral("program")),
             root + chosen);
}

QTEST_GUILESS_MAIN(TestGameFolder)
#include "tst_gamefolder.moc"
