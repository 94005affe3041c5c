#include "stage.h"

// What only Windows makes of a document: names that its folders cannot have, or not beside each
// other. Each warning of the checker beside what the window does there.
class TestWindowsWarnings : public QObject
{
    Q_OBJECT

private slots:
    void nameThatWindowsRefuses_data();
    void nameThatWindowsRefuses();
    void serversOfTheSameLetters();
    void versionsOfTheSameLetters();
};

void TestWindowsWarnings::nameThatWindowsRefuses_data()
{
    QTest::addColumn<QString>("server");
    QTest::addColumn<QString>("version");
    QTest::addColumn<QByteArray>("id");
    const auto row = [](const char *name, const char *server, const char *version, const char *id) {
        QTest::newRow(name) << QString::fromLatin1(server) << QString::fromLatin1(version)
                            << QByteArray(id);
    };
    for (const char *name : {"a<b", "a>b", "a:b", "a\"b", "a?b", "a*b"}) {
        row(name, name, "1.0", "forbidden-character");
    }
    row("a bar in the version", "S", "1.0.|", "forbidden-character");
    row("a backslash in the version", "S", "1\\0", "slash-in-name");
    row("a device", "CON", "1.0", "reserved-name");
    row("a device with an extension", "nul.old", "1.0", "reserved-name");
    row("a dot at the version's end", "S", "1.0.", "trailing-dot-or-blank");
    // A blank at the end is dropped by Windows as well, but kept by Wine.
}

// Whatever the window says at the end, there is no game that Play could start.
void TestWindowsWarnings::nameThatWindowsRefuses()
{
    QFETCH(QString, server);
    QFETCH(QString, version);
    QFETCH(QByteArray, id);
    Stage stage;
    Stage::Client client;
    client.server = server;
    client.version = version;
    QVERIFY(stage.load({stage.element(client)}));
    QVERIFY2(stage.warnedOf(id.constData()), id.constData());
    const QString end = stage.download();
    const bool playable = stage.offersPlay() && Stage::hasGame();
    QVERIFY2(!playable,
             qPrintable(end + QLatin1Char('\n') + ScratchFolder::tree().join(QLatin1Char('\n'))));
}

void TestWindowsWarnings::serversOfTheSameLetters()
{
    Stage stage;
    Stage::Client other;
    other.server = QStringLiteral("s");
    other.version = QStringLiteral("1.1");
    QVERIFY(stage.load({stage.ofServer(QStringLiteral("S")), stage.element(other)}));
    QVERIFY(stage.warnedOf("same-folder"));
    QCOMPARE(stage.download(), QStringLiteral("Download finished: version 1.0"));
    QVERIFY(QFile::exists(QStringLiteral("S/Official/1.0/game.exe")));

    stage.button(1, 1)->click();
    stage.window->on_btnDownload_clicked();
    QVERIFY(QTest::qWaitFor([&stage] { return stage.window->ui->downloadProgressBar->isHidden(); },
                            30000));
    QVERIFY(QFile::exists(QStringLiteral("s/Official/1.1/game.exe")));
    QVERIFY(!QFile::exists(QStringLiteral("S/Official/1.0/game.exe")));
}

void TestWindowsWarnings::versionsOfTheSameLetters()
{
    Stage stage;
    const QStringList before{stage.ofVersion(QStringLiteral("1.4-RC1"))};
    QVERIFY(stage.load(before));
    QCOMPARE(stage.download(), QStringLiteral("Download finished: version 1.4-RC1"));
    QVERIFY(Stage::hasGame());
    stage.setPrevious(before);
    QVERIFY(stage.load({stage.ofVersion(QStringLiteral("1.4-rc1"))}));
    QVERIFY(stage.warnedOf("same-folder"));
    QCOMPARE(stage.download(), QStringLiteral("Download finished: version 1.4-rc1"));
    QVERIFY(!Stage::hasGame());
}

QTEST_MAIN(TestWindowsWarnings)
#include "tst_windowswarnings.moc"
