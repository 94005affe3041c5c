#include "support/links.h"
#include "support/scratchfolder.h"
#include "support/texts.h"
#include "window/testform.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTest>

namespace
{
using Texts::names;
using Texts::text;

ClientInfo client(const QString &server, const QString &kind, const QString &version)
{
    return ClientInfo(version, QString(), kind, server);
}

// Below the folder; each name a file, or a folder when it ends in "/".
void makeEntries(const QString &folder, const QStringList &entries)
{
    ScratchFolder::makeFolder(folder);
    for (const QString &name : entries) {
        const QString path = folder + QLatin1Char('/') + name;
        if (name.endsWith(QLatin1Char('/'))) {
            ScratchFolder::makeFolder(path);
        } else {
            ScratchFolder::write(path, "content");
        }
    }
}
} // namespace

// The tree of installed clients: where it lies, what counts as installed, and what is cleared away.
class TestClientDirectories : public QObject
{
    Q_OBJECT

private slots:
    void parentFolderIsMadeLevelByLevel();
    void existingParentFolderIsKept();
    void onlyOneLevelIsMadeForTheServer();
    void fileInPlaceOfTheServerFolder();
    void clientFolder();
    void nothingIsMadeOutside_data();
    void nothingIsMadeOutside();
    void nothingIsMadeForANameThatIsNone_data();
    void nothingIsMadeForANameThatIsNone();
    void nothingSelected();

    void installedVersion_data();
    void installedVersion();
    void installedVersionIsReadFromTheDiskEachTime();
    void installedVersionMakesTheParentFolder();

    void olderVersionsGo_data();
    void olderVersionsGo();
    void olderVersionsGoWithAllTheyHold();
    void otherClientsStay();
    void versionThatIsNoNameSparesNothing();
    void nothingIsRemovedForANameThatIsNone_data();
    void nothingIsRemovedForANameThatIsNone();
    void nothingOutsideIsRemoved_data();
    void nothingOutsideIsRemoved();
    void movedClientIsCleanedUp_data();
    void movedClientIsCleanedUp();
    void linkedVersionFolder_data();
    void linkedVersionFolder();
    void linksInsideAnOldVersionAreNotFollowed();

    void archivesAreRemoved();
    void linkedArchive();

    void fileExists_data();
    void fileExists();
};

void TestClientDirectories::parentFolderIsMadeLevelByLevel()
{
    const ScratchFolder folder;
    testform window;
    window.selectedClientInfo = client(text("Alpha"), text("Official"), text("2.0"));
    QCOMPARE(window.getParentDir(), text("Alpha/Official"));
    QCOMPARE(ScratchFolder::tree(), names("Alpha/|Alpha/Official/"));
}

void TestClientDirectories::existingParentFolderIsKept()
{
    const ScratchFolder folder;
    makeEntries(text("Alpha/Official"), names("2.0/game.exe"));
    testform window;
    window.selectedClientInfo = client(text("Alpha"), text("Official"), text("2.0"));
    const QStringList before = ScratchFolder::tree();
    QCOMPARE(window.getParentDir(), text("Alpha/Official"));
    QCOMPARE(ScratchFolder::tree(), before);
}

void TestClientDirectories::onlyOneLevelIsMadeForTheServer()
{
    const ScratchFolder folder;
    testform window;
    window.selectedClientInfo = client(text("Deep/Alpha"), text("Official"), text("2.0"));
    QCOMPARE(window.getParentDir(), text("Deep/Alpha/Official"));
    QCOMPARE(ScratchFolder::tree(), QStringList());
}

void TestClientDirectories::fileInPlaceOfTheServerFolder()
{
    const ScratchFolder folder;
    ScratchFolder::write(text("Alpha"), "a file");
    testform window;
    window.selectedClientInfo = client(text("Alpha"), text("Official"), text("2.0"));
    QCOMPARE(window.getParentDir(), text("Alpha/Official"));
    QCOMPARE(window.getInstalledVersion(), QString());
    window.deleteOlderVersions();
    QCOMPARE(ScratchFolder::tree(), names("Alpha"));
    QCOMPARE(ScratchFolder::read(text("Alpha")), QByteArray("a file"));
}

void TestClientDirectories::clientFolder()
{
    const ScratchFolder folder;
    testform window;
    window.selectedClientInfo = client(text("Alpha"), text("Beta"), text("2.0"));
    QCOMPARE(window.getClientDir(text("1.5")), text("Alpha/Beta/1.5"));
    QCOMPARE(ScratchFolder::tree(), names("Alpha/|Alpha/Beta/"));
    QCOMPARE(window.getClientDir(), text("Alpha/Beta/2.0"));
    QCOMPARE(window.getClientDir(QString()), text("Alpha/Beta/2.0"));
    QCOMPARE(ScratchFolder::tree(), names("Alpha/|Alpha/Beta/"));
}

void TestClientDirectories::nothingIsMadeOutside_data()
{
    QTest::addColumn<QString>("server"); // %1: the folder around the installation folder
    QTest::addColumn<QString>("client");
    QTest::newRow("an absolute server") << text("%1/Fresh") << text("Official");
    QTest::newRow("a server that is the folder above") << text("..") << text("Fresh");
    QTest::newRow("a server that climbs out") << text("../Fresh") << text("Official");
    QTest::newRow("a server that climbs out from within")
        << text("Alpha/../../Fresh") << text("Official");
    QTest::newRow("a client that climbs out") << text("Alpha") << text("../../Fresh");
    QTest::newRow("an empty server before a client that is a way from the root")
        << QString() << text("%1/Fresh");
}

void TestClientDirectories::nothingIsMadeOutside()
{
    QFETCH(QString, server);
    QFETCH(QString, client);
    const ScratchFolder folder;
    ScratchFolder::makeFolder(text("Alpha"));
    server.replace(text("%1"), folder.outside());
    client.replace(text("%1"), folder.outside());
    testform window;
    window.selectedClientInfo = ClientInfo(text("2.0"), {}, client, server);
    QCOMPARE(window.getParentDir(), server + QLatin1Char('/') + client);
    QCOMPARE(window.getClientDir(), server + QLatin1Char('/') + client + text("/2.0"));
    QCOMPARE(window.getInstalledVersion(), QString());
    QCOMPARE(folder.treeOutside(), QStringList());
    QCOMPARE(ScratchFolder::tree(), names("Alpha/"));
}

void TestClientDirectories::nothingIsMadeForANameThatIsNone_data()
{
    QTest::addColumn<QString>("server");
    QTest::addColumn<QString>("client");
    QTest::addColumn<QString>("version");
    const auto row = [](const char *name, const QString &server, const QString &client,
                        const QString &version) {
        QTest::newRow(name) << server << client << version;
    };
    row("a version that is the client's folder", text("Fresh"), text("Official"), text("."));
    row("a version that is the server's folder", text("Fresh"), text("Official"), text(".."));
    row("a version of two folders", text("Fresh"), text("Official"), text("1/0"));
    row("a version with a line end", text("Fresh"), text("Official"), text("1.0\n"));
    row("a client that is the server's folder", text("Fresh"), text("."), text("1.0"));
    row("a client of two folders", text("Fresh"), text("a/b"), text("1.0"));
    row("a client with a zero byte", text("Fresh"), text("a") + QChar(0), text("1.0"));
    row("no client", text("Fresh"), QString(), text("1.0"));
    row("a server of two folders", text("Alpha/Fresh"), text("Official"), text("1.0"));
    row("a server with a zero byte", text("Fresh") + QChar(0) + text(".old"), text("Official"),
        text("1.0"));
#ifdef Q_OS_WIN
    row("a server of two folders by the system's separators", text("Alpha\\Fresh"),
        text("Official"), text("1.0"));
    row("a server that is a stream", text("Alpha:fresh"), text("Official"), text("1.0"));
    row("a client that loses its dot", text("Fresh"), text("Official."), text("1.0"));
    row("a version that is a device", text("Fresh"), text("Official"), text("nul.old"));
#endif
}

void TestClientDirectories::nothingIsMadeForANameThatIsNone()
{
    QFETCH(QString, server);
    QFETCH(QString, client);
    QFETCH(QString, version);
    const ScratchFolder folder;
    ScratchFolder::makeFolder(text("Alpha"));
    testform window;
    window.selectedClientInfo = ClientInfo(version, {}, client, server);
    QCOMPARE(window.getParentDir(), server + QLatin1Char('/') + client);
    QCOMPARE(window.getClientDir(),
             server + QLatin1Char('/') + client + QLatin1Char('/') + version);
    QCOMPARE(window.getInstalledVersion(), QString());
    QCOMPARE(ScratchFolder::tree(), names("Alpha/"));
    QCOMPARE(folder.treeOutside(), QStringList());
}

// The parent is the root of the drive. The clean-up is not tried on it: on the day it fails, that
// test would empty the machine that runs it. The rows below try it where nothing can be lost.
void TestClientDirectories::nothingSelected()
{
    const ScratchFolder folder;
    const QDir::Filters everything = QDir::AllEntries | QDir::Hidden | QDir::System;
    const QStringList root = QDir::root().entryList(everything);
    testform window;
    QCOMPARE(window.getParentDir(), text("/"));
    QCOMPARE(window.getClientDir(text("1.0")), text("//1.0"));
    QCOMPARE(window.getInstalledVersion(), QString());
    QCOMPARE(ScratchFolder::tree(), QStringList());
    QCOMPARE(QDir::root().entryList(everything), root);
}

void TestClientDirectories::installedVersion_data()
{
    QTest::addColumn<QStringList>("entries");
    QTest::addColumn<QString>("version");
    const auto row = [](const char *name, const char *entries, const char *version) {
        QTest::newRow(name) << names(entries) << text(version);
    };
    row("2.0 beats 1.9.9", "1.9.9/|2.0/", "2.0");
    row("numbers are compared, not letters", "1.10/|1.9/", "1.10");
    row("of 2.0 and 02.0 the first in name order", "2.0/|02.0/", "02.0");
    row("of equals the first in name order without regard to case", "1.0.B/|1.0.a/", "1.0.a");
    row("of 2.1.4 and a name with a sixth part the first", "2.1.4/|2.1.4.0.0.1/", "2.1.4");
    row("only 22.0", "22.0/", "");
    row("21.99 beside 1.0", "21.99/|1.0/", "1.0");
    row("43.0.0 beside 1.0", "43.0.0/|1.0/", "1.0");
    row("nothing at all", "", "");
    row("only 0.0", "0.0/", "");
    row("only a name without digits", "backup/", "");
    row("a plain file counts like a folder", "2.0/|3.zip", "3.zip");
}

void TestClientDirectories::installedVersion()
{
    QFETCH(QStringList, entries);
    QFETCH(QString, version);
    const ScratchFolder folder;
    makeEntries(text("Alpha/Official"), entries);
    testform window;
    window.selectedClientInfo = client(text("Alpha"), text("Official"), text("9.0"));
    QCOMPARE(window.getInstalledVersion(), version);
}

void TestClientDirectories::installedVersionIsReadFromTheDiskEachTime()
{
    const ScratchFolder folder;
    testform window;
    window.selectedClientInfo = client(text("Alpha"), text("Official"), text("9.0"));
    QCOMPARE(window.getInstalledVersion(), QString());
    ScratchFolder::makeFolder(text("Alpha/Official/1.0"));
    QCOMPARE(window.getInstalledVersion(), text("1.0"));
    window.selectedClientInfo.client = text("Beta");
    QCOMPARE(window.getInstalledVersion(), QString());
}

void TestClientDirectories::installedVersionMakesTheParentFolder()
{
    const ScratchFolder folder;
    testform window;
    window.selectedClientInfo = client(text("Alpha"), text("Official"), text("9.0"));
    QCOMPARE(window.getInstalledVersion(), QString());
    QCOMPARE(ScratchFolder::tree(), names("Alpha/|Alpha/Official/"));
}

void TestClientDirectories::olderVersionsGo_data()
{
    QTest::addColumn<QString>("selected");
    QTest::addColumn<QStringList>("entries");
    QTest::addColumn<QStringList>("left");
    const auto row = [](const char *name, const char *selected, const char *entries,
                        const char *left) {
        QTest::newRow(name) << text(selected) << names(entries) << names(left);
    };
    row("after an update from 2.0 to 2.1 only 2.1 and the plain files are left", "2.1",
        "2.0/|2.1/|notes.txt|1.0", "1.0|2.1/|notes.txt");
    row("the selected one is not there, as after a failed update", "2.1", "1.0/|2.0/", "");
    row("a newer one goes too", "2.1", "2.1/|3.0/", "2.1/");
    row("any other folder goes", "2.1", "2.1/|saves/|zz/", "2.1/");
    row("a name that only ends like the selected one goes", "2.1", "12.1/|2.1/", "2.1/");
    row("a name that only begins like the selected one goes", "2.1", "2.1/|2.1.4/", "2.1/");
#ifdef Q_OS_WIN
    // The disk has but one of the two, and the comparison does not know that.
    row("upper and lower case are not the same", "2.1a", "2.1A/|3.0/", "");
#else
    row("upper and lower case are not the same", "2.1a", "2.1A/|2.1a/", "2.1a/");
#endif
    row("with no version offered every folder goes", "", "1.0/|2.0/|notes.txt", "notes.txt");
    row("one entry before the dots is spared unseen", "2.0", "(backup)/|1.0/|2.0/",
        "(backup)/|2.0/");
    row("two entries before the dots are spared unseen", "2.0", "!old/|(backup)/|1.0/|2.0/",
        "!old/|(backup)/|2.0/");
    row("a third entry before the dots goes", "2.0", "!old/|#saves/|(backup)/|1.0/|2.0/",
        "!old/|#saves/|2.0/");
    row("a plain file before the dots is one of the two", "2.0", "(notes).txt|+saves/|1.0/|2.0/",
        "(notes).txt|+saves/|2.0/");
}

void TestClientDirectories::olderVersionsGo()
{
    QFETCH(QString, selected);
    QFETCH(QStringList, entries);
    QFETCH(QStringList, left);
    const ScratchFolder folder;
    makeEntries(text("Alpha/Official"), entries);
    makeEntries(text("Alpha/Beta"), names("1.0/"));
    ScratchFolder::write(text("readme.txt"));
    testform window;
    window.selectedClientInfo = client(text("Alpha"), text("Official"), selected);
    window.deleteOlderVersions();
    QStringList expected = names("Alpha/|Alpha/Beta/|Alpha/Beta/1.0/|Alpha/Official/|readme.txt");
    for (const QString &name : left) {
        expected << text("Alpha/Official/") + name;
    }
    expected.sort();
    QCOMPARE(ScratchFolder::tree(), expected);
    QCOMPARE(folder.treeOutside(), QStringList());
}

void TestClientDirectories::olderVersionsGoWithAllTheyHold()
{
    const ScratchFolder folder;
    makeEntries(text("Alpha/Official"),
                names("1.0/game.exe|1.0/data/maps/a.bin|1.0/.hidden|2.0/game.exe|2.0/data/a.bin"));
    QVERIFY(QFile::setPermissions(text("Alpha/Official/1.0/game.exe"), QFile::ReadOwner));
    testform window;
    window.selectedClientInfo = client(text("Alpha"), text("Official"), text("2.0"));
    window.deleteOlderVersions();
    QCOMPARE(ScratchFolder::tree(),
             names("Alpha/|Alpha/Official/|Alpha/Official/2.0/|Alpha/Official/2.0/data/|"
                   "Alpha/Official/2.0/data/a.bin|Alpha/Official/2.0/game.exe"));
}

void TestClientDirectories::otherClientsStay()
{
    const ScratchFolder folder;
    makeEntries(text("Alpha/Official"), names("1.0/"));
    makeEntries(text("Alpha/Beta"), names("1.0/"));
    makeEntries(text("Gamma/Official"), names("1.0/"));
    testform window;
    window.selectedClientInfo = client(text("Alpha"), text("Official"), text("2.0"));
    window.deleteOlderVersions();
    QCOMPARE(ScratchFolder::tree(),
             names("Alpha/|Alpha/Beta/|Alpha/Beta/1.0/|Alpha/Official/|Gamma/|Gamma/Official/|"
                   "Gamma/Official/1.0/"));
}

// As after any failed update.
void TestClientDirectories::versionThatIsNoNameSparesNothing()
{
    const ScratchFolder folder;
    makeEntries(text("Alpha/Official"), names("1.0/game.exe|notes.txt"));
    testform window;
    window.selectedClientInfo = client(text("Alpha"), text("Official"), text(".."));
    window.deleteOlderVersions();
    QCOMPARE(ScratchFolder::tree(), names("Alpha/|Alpha/Official/|Alpha/Official/notes.txt"));
}

void TestClientDirectories::nothingIsRemovedForANameThatIsNone_data()
{
    QTest::addColumn<QString>("server");
    QTest::addColumn<QString>("client");
    QTest::newRow("a server of two folders") << text("Alpha/Official") << text("1.0");
    QTest::newRow("a client of two folders") << text("Alpha") << text("Official/1.0");
    QTest::newRow("a server that is the installation folder") << text(".") << text("Alpha");
    QTest::newRow("a client that is the server's folder") << text("Alpha") << text(".");
}

void TestClientDirectories::nothingIsRemovedForANameThatIsNone()
{
    QFETCH(QString, server);
    QFETCH(QString, client);
    const ScratchFolder folder;
    makeEntries(text("Alpha/Official/1.0"), names("data/map.bin|game.exe"));
    const QStringList before = ScratchFolder::tree();
    testform window;
    window.selectedClientInfo = ClientInfo(text("2.0"), {}, client, server);
    window.deleteOlderVersions();
    QCOMPARE(ScratchFolder::tree(), before);
}

void TestClientDirectories::nothingOutsideIsRemoved_data()
{
    QTest::addColumn<QString>("server"); // %1: the folder around the installation folder
    QTest::addColumn<QString>("client");
    const auto row = [](const char *name, const char *server, const char *kind) {
        QTest::newRow(name) << text(server) << text(kind);
    };
    row("an absolute server", "%1/Elsewhere", "Official");
#ifndef Q_OS_WIN
    // A way from the root begins with a drive there, and cannot follow anything.
    row("a server that is the root of the drive", "/", "%1/Elsewhere/Official");
    row("an empty server before a client that is a way from the root", "", "%1/Elsewhere/Official");
#else
    row("a server that climbs out by the system's separators", "..\\Elsewhere", "Official");
    row("a client that climbs out by the system's separators", "Alpha", "..\\..\\Elsewhere");
#endif
    row("an empty client", "Alpha", "");
    row("a server that climbs out", "../Elsewhere", "Official");
    row("a server that is the folder above", "..", "Elsewhere");
    row("a server that climbs out from within", "Alpha/../../Elsewhere", "Official");
    row("a client that climbs out", "Alpha", "../../Elsewhere");
    row("a client that leads to the installation folder", "Alpha", "..");
    row("server and client are the installation folder", ".", ".");
    row("a client whose link leads to the installation folder", "Alpha", "here");
    row("a client whose link leads to the folder around it", "Alpha", "above");
    row("a server whose link leads to the installation folder", "self", ".");
}

void TestClientDirectories::nothingOutsideIsRemoved()
{
    QFETCH(QString, server);
    QFETCH(QString, client);
    const ScratchFolder folder;
    makeEntries(text("../Elsewhere/Official"), names("1.0/|1.0/game.exe|3.0/|zz/"));
    makeEntries(text("../Elsewhere"), names("1.0/|zz/|zz/letter.txt"));
    makeEntries(text("Alpha/Official"), names("1.0/|1.0/game.exe"));
    makeEntries(text("Beta"), names("1.0/|zz/"));
    if (QByteArray(QTest::currentDataTag()).contains("link")) {
        MAKE_LINK(text(".."), text("Alpha/here"));
        MAKE_LINK(text("../.."), text("Alpha/above"));
        MAKE_LINK(text("."), text("self"));
    }
    const QStringList inside = ScratchFolder::tree();
    const QStringList outside = folder.treeOutside();
    QVERIFY(outside.contains(text("Elsewhere/Official/1.0/game.exe")));
    const auto filledIn = [&folder](QString name) {
        return name.replace(text("%1"), folder.outside());
    };

    testform window;
    window.selectedClientInfo = ClientInfo(text("2.0"), {}, filledIn(client), filledIn(server));
    QVERIFY2(QFileInfo(window.getParentDir()).isDir(), qPrintable(window.getParentDir()));
    window.deleteOlderVersions();
    QCOMPARE(folder.treeOutside(), outside);
    QCOMPARE(ScratchFolder::tree(), inside);
}

void TestClientDirectories::movedClientIsCleanedUp_data()
{
    QTest::addColumn<QString>("link");
    QTest::addColumn<QString>("target");
    QTest::newRow("the server's folder") << text("Alpha") << text("../Drive/Alpha");
    QTest::newRow("the client's folder")
        << text("Alpha/Official") << text("../../Drive/Alpha/Official");
}

// A player has moved the games to another drive, and made a link where they were.
void TestClientDirectories::movedClientIsCleanedUp()
{
    QFETCH(QString, link);
    QFETCH(QString, target);
    const ScratchFolder folder;
    makeEntries(text("../Precious"), names("letter.txt|2.0/game.exe"));
    makeEntries(text("../Drive/Beta"), names("1.0/game.exe"));
    makeEntries(text("../Drive/Alpha/Official"),
                names("1.0/game.exe|2.0/game.exe|3.0/game.exe|notes.txt"));
    ScratchFolder::makeFolder(QFileInfo(link).path());
    MAKE_LINK(target, link);
    // Further down nobody follows any.
    MAKE_LINK(folder.outside() + text("/Precious"), text("Alpha/Official/1.0/data"));
    MAKE_LINK(folder.outside() + text("/Precious"), text("Alpha/Official/0.9"));
    testform window;
    window.selectedClientInfo = client(text("Alpha"), text("Official"), text("2.0"));
    QCOMPARE(window.getInstalledVersion(), text("3.0"));
    window.deleteOlderVersions();
    QCOMPARE(folder.treeOutside(),
             names("Drive/|Drive/Alpha/|Drive/Alpha/Official/|Drive/Alpha/Official/2.0/|"
                   "Drive/Alpha/Official/2.0/game.exe|Drive/Alpha/Official/notes.txt|Drive/Beta/|"
                   "Drive/Beta/1.0/|Drive/Beta/1.0/game.exe|Precious/|Precious/2.0/|"
                   "Precious/2.0/game.exe|Precious/letter.txt"));
    QVERIFY(QFileInfo(link).isSymLink());
    QCOMPARE(window.getInstalledVersion(), text("2.0"));
}

void TestClientDirectories::linkedVersionFolder_data()
{
    QTest::addColumn<QString>("target");
    QTest::newRow("leading out of the installation folder") << text("../../../Elsewhere");
    QTest::newRow("leading to another client") << text("../Beta");
    QTest::newRow("leading to the installation folder") << text("../..");
}

void TestClientDirectories::linkedVersionFolder()
{
    QFETCH(QString, target);
    const ScratchFolder folder;
    makeEntries(text("../Elsewhere"), names("game.exe|data/map.bin"));
    makeEntries(text("Alpha/Beta"), names("1.0/|1.0/game.exe"));
    makeEntries(text("Alpha/Official"), names("0.9/|2.0/"));
    MAKE_LINK(target, text("Alpha/Official/1.0"));
    QVERIFY(QFileInfo(text("Alpha/Official/1.0")).isDir());
    const QStringList outside = folder.treeOutside();

    testform window;
    window.selectedClientInfo = client(text("Alpha"), text("Official"), text("2.0"));
    window.deleteOlderVersions();
    QCOMPARE(folder.treeOutside(), outside);
    QVERIFY(QFile::exists(text("Alpha/Beta/1.0/game.exe")));
    QVERIFY(QFile::exists(text("Alpha/Official/2.0")));
    // The clean-up did run.
    QVERIFY(!QFile::exists(text("Alpha/Official/0.9")));
}

void TestClientDirectories::linksInsideAnOldVersionAreNotFollowed()
{
    const ScratchFolder folder;
    makeEntries(text("../Elsewhere"), names("game.exe|data/map.bin"));
    makeEntries(text("Alpha/Official"), names("1.0/game.exe|2.0/"));
    MAKE_LINK(folder.outside() + text("/Elsewhere"), text("Alpha/Official/1.0/data"));
    MAKE_LINK(folder.outside() + text("/Elsewhere/game.exe"),
              text("Alpha/Official/1.0/linked.exe"));
    const QStringList outside = folder.treeOutside();
    testform window;
    window.selectedClientInfo = client(text("Alpha"), text("Official"), text("2.0"));
    window.deleteOlderVersions();
    QCOMPARE(folder.treeOutside(), outside);
    QVERIFY(!QFile::exists(text("Alpha/Official/1.0")));
}

void TestClientDirectories::archivesAreRemoved()
{
    const ScratchFolder folder;
    makeEntries(text("."), names("client.zip|client.zip.0.zip|OTHER.ZIP|x.zip/|full.zip/a.txt|"
                                 "client.zip.part|zip|readme.txt|sub/inner.zip|unzip.exe"));
    testform window;
    window.deleteInstallationFiles();
    QCOMPARE(ScratchFolder::tree(), names("client.zip.part|full.zip/|full.zip/a.txt|readme.txt|"
                                          "sub/|sub/inner.zip|unzip.exe|x.zip/|zip"));
}

void TestClientDirectories::linkedArchive()
{
    const ScratchFolder folder;
    ScratchFolder::write(text("../precious.zip"), "mine");
    MAKE_LINK(text("../precious.zip"), text("client.zip"));
    testform window;
    window.deleteInstallationFiles();
    QCOMPARE(ScratchFolder::tree(), QStringList());
    QCOMPARE(ScratchFolder::read(text("../precious.zip")), QByteArray("mine"));
}

void TestClientDirectories::fileExists_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<bool>("exists");
    QTest::newRow("a file") << text("file.txt") << true;
    QTest::newRow("an empty file further down") << text("sub/empty") << true;
    QTest::newRow("a link to a file") << text("link") << true;
    QTest::newRow("a folder") << text("sub") << false;
    QTest::newRow("a link to a folder") << text("folderlink") << false;
    QTest::newRow("a link that leads nowhere") << text("broken") << false;
    QTest::newRow("nothing of that name") << text("missing") << false;
    QTest::newRow("an empty name") << QString() << false;
}

void TestClientDirectories::fileExists()
{
    QFETCH(QString, path);
    QFETCH(bool, exists);
    const ScratchFolder folder;
    makeEntries(text("."), names("file.txt|sub/empty"));
    if (QByteArray(QTest::currentDataTag()).contains("link")) {
        MAKE_LINK(text("file.txt"), text("link"));
        MAKE_LINK(text("sub"), text("folderlink"));
        MAKE_LINK(text("nowhere"), text("broken"));
    }
    testform window;
    QCOMPARE(window.fileExists(path), exists);
}

QTEST_MAIN(TestClientDirectories)
#include "tst_clientdirectories.moc"
