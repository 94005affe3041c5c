#include "install/removal.h"
#include "support/links.h"
#include "support/scratchfolder.h"
#include "support/texts.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTest>

#include <memory>

// What may be removed, and what must stay, whatever a document calls its servers, clients and
// versions.
class TestRemoval : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void hostilePaths_data();
    void hostilePaths();
    void hostileNames_data();
    void hostileNames();
    void allowedPaths_data();
    void allowedPaths();
    void fileIsNoFolder();
    void readOnlyFilesGo();
    void linksGoAsLinks_data();
    void linksGoAsLinks();
    void linksInsideAFolder();
    void wayThroughALink_data();
    void wayThroughALink();
    void whatIsNotThere();
    void versionOfNoPlainName_data();
    void versionOfNoPlainName();
    void versionOfAMovedClient();
    void linkedVersion_data();
    void linkedVersion();
    void folderThatALinkMakesAClients_data();
    void folderThatALinkMakesAClients();

private:
    QString filledIn(QString path) const;
    QStringList everything() const;

    std::unique_ptr<ScratchFolder> m_scratch;
};

namespace
{
using Texts::text;

void makeFile(const QString &name)
{
    ScratchFolder::write(name, "precious");
}

bool isLink(const QString &name)
{
    return QFileInfo(name).isSymLink();
}
} // namespace

void TestRemoval::init()
{
    m_scratch = std::make_unique<ScratchFolder>();
    makeFile(text("../neighbour/letter.txt"));
    makeFile(filledIn(text("../%22/letter.txt")));
    makeFile(text("Alpha/Official/1.0/game.exe"));
    makeFile(text("Alpha/Official/2.0/game.exe"));
    makeFile(text("client.zip"));
}

void TestRemoval::cleanup()
{
    m_scratch.reset();
}

// %1 stands for the folder around the installation folder, %2 for the installation folder's name.
QString TestRemoval::filledIn(QString path) const
{
    path.replace(text("%1"), m_scratch->outside());
    return path.replace(text("%2"), QFileInfo(m_scratch->path()).fileName());
}

// All that lies in the folder around the working directory.
QStringList TestRemoval::everything() const
{
    return m_scratch->treeOutside() + ScratchFolder::tree();
}

void TestRemoval::hostilePaths_data()
{
    QTest::addColumn<QString>("path");
    const auto row = [](const char *path) { QTest::newRow(path) << text(path); };
    row("");
    row(".");
    row("./");
    row("..");
    row("../");
    row("/");
    row("//");
    row("../neighbour");
    row("../neighbour/letter.txt");
    row("../%22");
    row("../%2");
    row("%1");
    row("%1/neighbour");
    row("%1/neighbour/letter.txt");
    row("%1/%2");
    row("%1/%2/");
    row("%1/%2/.");
    row("%1/%2/../neighbour");
    row("Alpha/..");
    row("Alpha/../..");
    row("Alpha/../../neighbour");
    row("Alpha/Official/../../../neighbour");
    // Inside after all, but nothing of ours is written so.
    row("Alpha/../Alpha");
    row("Alpha/Official/.");
    row("missing/../../neighbour");
#ifdef Q_OS_WIN
    row("..\\neighbour");
    row("Alpha\\..\\..\\neighbour");
    row("C:");
    row("C:\\");
    row("C:/");
    row("C:..");
    row("\\\\server\\share");
#endif
}

void TestRemoval::hostilePaths()
{
    QFETCH(QString, path);
    path = filledIn(path);
    const QStringList before = everything();
    QVERIFY(!Removal::isAllowed(path));
    QVERIFY(!Removal::removeFolder(path));
    QVERIFY(!Removal::removeFile(path));
    QCOMPARE(everything(), before);
}

// As a document would give them, put together as the launcher does.
void TestRemoval::hostileNames_data()
{
    QTest::addColumn<QString>("server");
    QTest::addColumn<QString>("client");
    QTest::addColumn<QString>("version");
    const auto row = [](const char *server, const char *client, const char *version) {
        const QByteArray name = QByteArray(server) + '|' + client + '|' + version;
        QTest::newRow(name.constData()) << text(server) << text(client) << text(version);
    };
    row("", "", "");
    row("", "", "tmp");
    row("..", "neighbour", "");
    row("..", "", "neighbour");
    row("..", "..", "..");
    row("Alpha", "..", "..");
    row("Alpha", "..", "../neighbour");
    row("Alpha", "../..", "neighbour");
    row("Alpha", "Official", "..");
    row("Alpha", "Official", "../..");
    row("Alpha", "Official", "../../..");
    row("Alpha", "Official", "../../../neighbour");
    row("Alpha", "Official", ".");
    row(".", ".", ".");
    row("%1", "neighbour", "letter.txt");
    row("/%1", "neighbour", "");
    row("Alpha/../..", "neighbour", "letter.txt");
}

void TestRemoval::hostileNames()
{
    QFETCH(QString, server);
    QFETCH(QString, client);
    QFETCH(QString, version);
    QString path = server + QLatin1Char('/') + client + QLatin1Char('/') + version;
    path = filledIn(path);
    const QStringList before = everything();
    QVERIFY2(!Removal::removeFolder(path), qPrintable(path));
    QVERIFY2(!Removal::removeFile(path), qPrintable(path));
    QCOMPARE(everything(), before);
}

void TestRemoval::allowedPaths_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<bool>("folder");
    QTest::newRow("a file in the working directory") << text("client.zip") << false;
    QTest::newRow("written with a dot before it") << text("./client.zip") << false;
    QTest::newRow("absolute") << text("%1/%2/client.zip") << false;
    QTest::newRow("a file further down") << text("Alpha/Official/1.0/game.exe") << false;
    QTest::newRow("a version") << text("Alpha/Official/1.0") << true;
    QTest::newRow("a version, absolute") << text("%1/%2/Alpha/Official/1.0") << true;
    QTest::newRow("with a slash behind it") << text("Alpha/Official/1.0/") << true;
    QTest::newRow("a server") << text("Alpha") << true;
    QTest::newRow("a name of dots") << text("...") << false;
    QTest::newRow("dots that are part of the name") << text("..2.0") << true;
}

void TestRemoval::allowedPaths()
{
    QFETCH(QString, path);
    QFETCH(bool, folder);
    path = filledIn(path);
#ifdef Q_OS_WIN
    if (path == text("...")) {
        QSKIP("Windows drops dots at the end of a name");
    }
#endif
    if (path.contains(text(".."))) {
        if (folder) {
            QVERIFY(QDir().mkdir(path));
        } else {
            makeFile(path);
        }
    }
    QVERIFY(Removal::isAllowed(path));
    QVERIFY(folder ? Removal::removeFolder(path) : Removal::removeFile(path));
    QVERIFY(!QFileInfo::exists(path));
    QVERIFY(QFileInfo::exists(text("../neighbour/letter.txt")));
    QVERIFY(QFileInfo::exists(filledIn(text("../%22/letter.txt"))));
}

void TestRemoval::fileIsNoFolder()
{
    QVERIFY(!Removal::removeFolder(text("client.zip")));
    QVERIFY(QFileInfo::exists(text("client.zip")));
    QVERIFY(!Removal::removeFile(text("Alpha")));
    QVERIFY(QFileInfo::exists(text("Alpha/Official/1.0/game.exe")));
}

void TestRemoval::readOnlyFilesGo()
{
    QVERIFY(QFile::setPermissions(text("Alpha/Official/1.0/game.exe"), QFile::ReadOwner));
    QVERIFY(Removal::removeFolder(text("Alpha/Official/1.0")));
    QVERIFY(QFile::setPermissions(text("client.zip"), QFile::ReadOwner));
    QVERIFY(Removal::removeFile(text("client.zip")));
}

void TestRemoval::linksGoAsLinks_data()
{
    QTest::addColumn<QString>("target");
    QTest::addColumn<bool>("folder");
    QTest::newRow("to a folder outside") << text("../neighbour") << true;
    QTest::newRow("to a folder inside") << text("Alpha") << true;
    QTest::newRow("to the working directory") << text(".") << true;
    QTest::newRow("to a file outside") << text("../neighbour/letter.txt") << false;
    QTest::newRow("to a file inside") << text("client.zip") << false;
    QTest::newRow("to nowhere") << text("nowhere") << false;
}

void TestRemoval::linksGoAsLinks()
{
    QFETCH(QString, target);
    QFETCH(bool, folder);
    const QStringList before = everything();
    MAKE_LINK(target, text("link"));
    QVERIFY(isLink(text("link")));
    QVERIFY(folder ? Removal::removeFolder(text("link")) : Removal::removeFile(text("link")));
    QVERIFY(!isLink(text("link")));
    QCOMPARE(everything(), before);
}

void TestRemoval::linksInsideAFolder()
{
    MAKE_LINK(text("../../../../neighbour"), text("Alpha/Official/1.0/data"));
    MAKE_LINK(text("../../../../neighbour/letter.txt"), text("Alpha/Official/1.0/letter.txt"));
    MAKE_LINK(text("../2.0"), text("Alpha/Official/1.0/next"));
    MAKE_LINK(text("nowhere"), text("Alpha/Official/1.0/broken"));
    QVERIFY(Removal::removeFolder(text("Alpha/Official/1.0")));
    QVERIFY(!QFileInfo::exists(text("Alpha/Official/1.0")));
    QVERIFY(QFileInfo::exists(text("Alpha/Official/2.0/game.exe")));
    QVERIFY(QFileInfo::exists(text("../neighbour/letter.txt")));
}

void TestRemoval::wayThroughALink_data()
{
    QTest::addColumn<QString>("target");
    QTest::addColumn<QString>("path");
    QTest::addColumn<bool>("allowed");
    QTest::newRow("leading out") << text("../neighbour") << text("link/letter.txt") << false;
    QTest::newRow("leading in") << text("Alpha/Official") << text("link/1.0/game.exe") << true;
    QTest::newRow("leading to the working directory")
        << text(".") << text("link/client.zip") << true;
}

void TestRemoval::wayThroughALink()
{
    QFETCH(QString, target);
    QFETCH(QString, path);
    QFETCH(bool, allowed);
    MAKE_LINK(target, text("link"));
    QVERIFY(QFileInfo::exists(path));
    QCOMPARE(Removal::removeFile(path), allowed);
    QCOMPARE(QFileInfo::exists(path), !allowed);
}

void TestRemoval::whatIsNotThere()
{
    const QStringList before = everything();
    QVERIFY(!Removal::removeFile(text("missing.zip")));
    QVERIFY(!Removal::removeFolder(text("missing")));
    QVERIFY(!Removal::removeFolder(text("missing/1.0")));
    QCOMPARE(everything(), before);
}

void TestRemoval::versionOfNoPlainName_data()
{
    QTest::addColumn<QString>("client");
    QTest::addColumn<QString>("version");
    const auto row = [](const char *client, const char *version) {
        const QByteArray name = QByteArray(client) + '|' + version;
        QTest::newRow(name.constData()) << text(client) << text(version);
    };
    row("Alpha/Official", "..");
    row("Alpha/Official", ".");
    row("Alpha/Official", "");
    row("Alpha/Official", "../../../neighbour");
    row("Alpha/..", "../neighbour");
    row("../neighbour", "deep");
    row("..", "neighbour");
    row("", "../neighbour");
    row("/", "");
    row("%1", "neighbour");
    row("%1/neighbour", "deep");
    row("link/Official/1.0", "data");
    row("link/..", "neighbour");
}

void TestRemoval::versionOfNoPlainName()
{
    QFETCH(QString, client);
    QFETCH(QString, version);
    makeFile(text("../neighbour/deep/letter.txt"));
    makeFile(text("../neighbour/Official/1.0/data/letter.txt"));
    if (client.startsWith(text("link"))) {
        MAKE_LINK(text("../neighbour"), text("link"));
    }
    const QStringList before = everything();
    client = filledIn(client);
    QVERIFY(!Removal::removeVersion(client, version));
    (void)Removal::removeVersionLink(client, version);
    QCOMPARE(everything(), before);
}

void TestRemoval::versionOfAMovedClient()
{
    makeFile(text("../neighbour/Official/1.0/game.exe"));
    makeFile(text("../neighbour/Official/2.0/game.exe"));
    MAKE_LINK(text("../neighbour"), text("moved"));
    MAKE_LINK(text("../../../../%2").replace(text("%2"), QFileInfo(m_scratch->path()).fileName()),
              text("moved/Official/1.0/back"));
    QVERIFY(Removal::removeVersion(text("moved/Official"), text("1.0")));
    QVERIFY(!QFileInfo::exists(text("../neighbour/Official/1.0")));
    QVERIFY(QFileInfo::exists(text("../neighbour/Official/2.0/game.exe")));
    QVERIFY(QFileInfo::exists(text("Alpha/Official/1.0/game.exe")));
    QVERIFY(isLink(text("moved")));
    // The general guard knows of no such links.
    QVERIFY(!Removal::removeFolder(text("moved/Official/2.0")));
    QVERIFY(QFileInfo::exists(text("../neighbour/Official/2.0/game.exe")));
}

void TestRemoval::linkedVersion_data()
{
    QTest::addColumn<QString>("target");
    QTest::newRow("to a folder outside") << text("../../../neighbour");
    QTest::newRow("to another version") << text("1.0");
    QTest::newRow("to a file") << text("../../client.zip");
    QTest::newRow("to nowhere") << text("nowhere");
}

void TestRemoval::linkedVersion()
{
    QFETCH(QString, target);
    const QStringList before = everything();
    MAKE_LINK(target, text("Alpha/Official/3.0"));
    QVERIFY(isLink(text("Alpha/Official/3.0")));
    QVERIFY(Removal::removeVersionLink(text("Alpha/Official"), text("3.0")));
    QVERIFY(!isLink(text("Alpha/Official/3.0")));
    // A folder, or nothing, is no link.
    QVERIFY(Removal::removeVersionLink(text("Alpha/Official"), text("2.0")));
    QVERIFY(Removal::removeVersionLink(text("Alpha/Official"), text("3.0")));
    QCOMPARE(everything(), before);
}

void TestRemoval::folderThatALinkMakesAClients_data()
{
    QTest::addColumn<QString>("target");
    QTest::addColumn<QString>("version");
    QTest::newRow("the installation folder") << text("..") << text("Alpha");
    QTest::newRow("the folder around it") << text("../..") << text("neighbour");
    QTest::newRow("the root of the drive") << text("/") << text("missing");
}

// What such a link leads to is no client: it holds the launcher itself.
void TestRemoval::folderThatALinkMakesAClients()
{
    QFETCH(QString, target);
    QFETCH(QString, version);
    MAKE_LINK(target, text("Alpha/round"));
    const QStringList before = everything();
    QVERIFY(!Removal::removeVersion(text("Alpha/round"), version));
    QCOMPARE(everything(), before);
}

QTEST_GUILESS_MAIN(TestRemoval)
#include "tst_removal.moc"
