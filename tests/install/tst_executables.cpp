#include "install/executables.h"

#include <QTest>

// Which file Play starts.
class TestExecutables : public QObject
{
    Q_OBJECT

private slots:
    void executables();
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

QTEST_GUILESS_MAIN(TestExecutables)
#include "tst_executables.moc"
