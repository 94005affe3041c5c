#include "install/executables.h"
#include "support/scratchfolder.h"

#include <QDir>
#include <QTest>

// Which file Play starts.
class TestExecutables : public QObject
{
    Q_OBJECT

private slots:
    void executables();
    void firstInTheOrderOfTheFolder();
};

void TestExecutables::executables()
{
    QCOMPARE(Executables::filters(QStringLiteral("Official")),
             QStringList{QStringLiteral("*.exe")});
    QCOMPARE(Executables::filters(QStringLiteral("Beta")),
             (QStringList{QStringLiteral("*_dx.exe"), QStringLiteral("*_gl.exe")}));
    QVERIFY(Executables::askForEngine(QStringLiteral("Beta")));
    QVERIFY(!Executables::askForEngine(QStringLiteral("beta")));
}

// The same as a folder of these names says, which is where Play looks.
void TestExecutables::firstInTheOrderOfTheFolder()
{
    const ScratchFolder folder;
    const QStringList names{QStringLiteral("b.exe"),         QStringLiteral("A_gl.EXE"),
                            QStringLiteral("_a.exe"),        QStringLiteral("Zz_gl.exe"),
                            QStringLiteral("\u00C4_dx.exe"), QStringLiteral("a.exe.txt"),
                            QStringLiteral("readme")};
    for (const QString &name : names) {
        ScratchFolder::write(name, "x");
    }
    for (const QString &filter :
         {Executables::any(), Executables::directX(), Executables::openGl()}) {
        const QString first = Executables::firstOf(names, filter);
        QCOMPARE(first, QDir().entryList({filter}).constFirst());
    }
    QCOMPARE(Executables::firstOf(names, QStringLiteral("*.com")), QString());
}

QTEST_GUILESS_MAIN(TestExecutables)
#include "tst_executables.moc"
