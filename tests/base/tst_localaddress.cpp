#include "base/localaddress.h"
#include "support/links.h"
#include "support/scratchfolder.h"
#include "support/texts.h"

#include <QDir>
#include <QTest>
#include <QUrl>

#ifndef Q_OS_WIN
#include <sys/stat.h>
#endif

using Texts::text;

// Which addresses the toolkit may be asked to fetch.
class TestLocalAddress : public QObject
{
    Q_OBJECT

private slots:
    void byName_data();
    void byName();
    void shareIsNotAskedFor_data();
    void shareIsNotAskedFor();
    void byWhatLiesThere();
    void pipeAndDevice();
};

void TestLocalAddress::byName_data()
{
    QTest::addColumn<QString>("url");
    QTest::addColumn<bool>("may");
    QTest::newRow("https") << text("https://a.example/p.png") << true;
    QTest::newRow("http") << text("http://a.example:8080/p.png") << true;
    QTest::newRow("data") << text("data:image/png;base64,AAAA") << true;
    QTest::newRow("the program's own") << text("qrc:/images/p.png") << true;
    QTest::newRow("an unknown scheme") << text("emberwake://nowhere/p.png") << true;
    QTest::newRow("no address") << QString() << true;
    QTest::newRow("no scheme") << text("p.png") << true;
    QTest::newRow("a file that is not there") << text("file:///nowhere/p.png") << true;

    QTest::newRow("ftp") << text("ftp://a.example/p.png") << false;
    QTest::newRow("ftp in capital letters") << text("FTP://a.example/p.png") << false;
    QTest::newRow("ftp without a host") << text("ftp:p.png") << false;
    QTest::newRow("a file with a host") << text("file://server/share/p.png") << false;
    QTest::newRow("a file with a host, in capital letters") << text("FILE://SERVER/p.png") << false;
    QTest::newRow("this computer as a host") << text("file://localhost/p.png") << false;
    QTest::newRow("a share as a path") << text("file:////server/share/p.png") << false;
    QTest::newRow("a share behind more slashes") << text("file://///server/share/p.png") << false;
    QTest::newRow("backslashes") << text("file:///\\\\server\\share\\p.png") << false;
    QTest::newRow("one backslash more") << text("file:///\\server\\share\\p.png") << false;
    QTest::newRow("backslashes in disguise") << text("file:///%5C%5Cserver%5Cshare") << false;
    QTest::newRow("no slash but backslashes") << text("file:\\\\server\\share\\p.png") << false;
    QTest::newRow("Windows' own names") << text("file:////?/UNC/server/share/p.png") << false;
    QTest::newRow("a Windows pipe") << text("file:////./pipe/p") << false;
}

void TestLocalAddress::byName()
{
    QFETCH(QString, url);
    QFETCH(bool, may);
    QCOMPARE(mayBeFetched(QUrl(url)), may);
    QCOMPARE(mayBeFetched(QUrl::fromEncoded(url.toUtf8())), may);
}

// On Windows the question alone would be the connection.
void TestLocalAddress::shareIsNotAskedFor_data()
{
    QTest::addColumn<QString>("url");
    QTest::newRow("no scheme") << text("////%1");
    QTest::newRow("a scheme of one letter") << text("x:////%1");
    QTest::newRow("an unknown scheme") << text("nowhere:////%1");
    QTest::newRow("a file") << text("file:////%1");
}

void TestLocalAddress::shareIsNotAskedFor()
{
#ifdef Q_OS_LINUX
    // A folder that is there counts as a share by its two slashes. Who looks at what lies in it
    // finds a pipe, which is never fetched; who does not look cannot tell.
    const ScratchFolder folder;
    QCOMPARE(mkfifo("pipe", 0600), 0);
    QFETCH(QString, url);
    const QString path = QDir::current().absoluteFilePath(text("pipe")).mid(1);
    QUrl address(url.arg(path));
    const bool mayBe = mayBeFetched(address);
    // The same address to where nothing lies.
    address.setPath(address.path() + text("-not-there"));
    QCOMPARE(mayBe, mayBeFetched(address));
#else
    QSKIP("needs a folder that two slashes lead to as well");
#endif
}

void TestLocalAddress::byWhatLiesThere()
{
    const ScratchFolder folder;
    ScratchFolder::write(text("p.png"), "x");
    ScratchFolder::makeFolder(text("folder"));
    const auto may = [](const char *name) {
        return mayBeFetched(QUrl::fromLocalFile(QDir::current().absoluteFilePath(text(name))));
    };
    QVERIFY(may("p.png"));
    QVERIFY(!may("folder"));
    QVERIFY(!may("."));
    MAKE_LINK(text("p.png"), text("link"));
    MAKE_LINK(text("folder"), text("link to a folder"));
    QVERIFY(may("link"));
    QVERIFY(!may("link to a folder"));
}

void TestLocalAddress::pipeAndDevice()
{
#ifdef Q_OS_WIN
    QSKIP("pipes and devices have names of their own there");
#else
    const ScratchFolder folder;
    QCOMPARE(mkfifo("pipe", 0600), 0);
    QCOMPARE(mkfifo("xy:pipe", 0600), 0);
    MAKE_LINK(text("pipe"), text("link"));
    const auto may = [](const char *name) {
        return mayBeFetched(QUrl::fromLocalFile(QDir::current().absoluteFilePath(text(name))));
    };
    QVERIFY(!may("pipe"));
    QVERIFY(!may("link"));
    QVERIFY(!mayBeFetched(QUrl(text("xy:pipe"))));
    QVERIFY(!mayBeFetched(QUrl(text("file:///dev/zero"))));
#endif
}

QTEST_GUILESS_MAIN(TestLocalAddress)
#include "tst_localaddress.moc"
