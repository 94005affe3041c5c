#include "install/savefilename.h"
#include "support/scratchfolder.h"
#include "support/texts.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>
#include <QUrl>

#include <memory>

namespace
{
using Texts::text;

const char control[] = "Control character in the file name";
const char program[] = "Name of a program or of a program's settings";
const char noName[] = "Not a file name on Windows";

// Each name a file, or a folder when it ends in "/".
void makeEntries(const QStringList &names)
{
    for (const QString &name : names) {
        if (name.endsWith(QLatin1Char('/'))) {
            ScratchFolder::makeFolder(name);
        } else {
            ScratchFolder::write(name);
        }
    }
}
} // namespace

// The name under which an archive is saved.
class TestSaveFileName : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void saveFileName_data();
    void saveFileName();
    void saveFileNameCreatesNothing();
    void refusedName_data();
    void refusedName();
    void refusedNameOnWindows_data();
    void refusedNameOnWindows();

private:
    std::unique_ptr<QTemporaryDir> m_scratch; // the working directory
    QString m_previous;
};

void TestSaveFileName::init()
{
    m_previous = QDir::currentPath();
    m_scratch = std::make_unique<QTemporaryDir>();
    QVERIFY(m_scratch->isValid());
    QVERIFY(QDir::setCurrent(m_scratch->path()));
}

void TestSaveFileName::cleanup()
{
    QDir::setCurrent(m_previous);
    m_scratch.reset();
}

void TestSaveFileName::saveFileName_data()
{
    QTest::addColumn<QString>("url");
    QTest::addColumn<QStringList>("existing");
    QTest::addColumn<QString>("name");
    const auto row = [](const char *name, const char *url, const char *existing,
                        const char *result) {
        QTest::newRow(name) << QString::fromLatin1(url)
                            << QString::fromLatin1(existing).split(QLatin1Char('|'),
                                                                   Qt::SkipEmptyParts)
                            << QString::fromUtf8(result);
    };
    row("the last component of the path", "http://h.test/a/client.zip", "", "client.zip");
    row("an extension is not added", "http://h.test/client", "", "client");
    row("a query is not part of the name", "http://h.test/get?file=x.zip", "", "get");
    row("a fragment is not part of the name", "http://h.test/client.zip#x", "", "client.zip");
    row("a path that ends in a slash", "http://h.test/files/", "", "download");
    row("no path at all", "http://h.test", "", "download");
    row("an empty address", "", "", "download");
    row("a file named download exists", "http://h.test/files/", "download", "download.0.zip");
    row("a blank is decoded", "http://h.test/my%20client.zip", "", "my client.zip");
    row("letters beyond Latin-1 are decoded", "http://h.test/%D0%B8%D0%B3%D1%80%D0%B0.zip", "",
        "\xD0\xB8\xD0\xB3\xD1\x80\xD0\xB0.zip");
    row("a percent sign is decoded once", "http://h.test/a%2541.zip", "", "a%41.zip");
    row("an encoded slash separates once decoded", "http://h.test/a%2Fb.zip", "", "b.zip");
    row("the extension is doubled", "http://h.test/client.zip", "client.zip", "client.zip.0.zip");
    row("a name without extension gets one", "http://h.test/client", "client", "client.0.zip");
    row("the first number that is free", "http://h.test/client.zip",
        "client.zip|client.zip.0.zip|client.zip.1.zip|client.zip.3.zip", "client.zip.2.zip");
    row("numbers alone do not matter", "http://h.test/client.zip", "client.zip.0.zip",
        "client.zip");
    row("a folder of that name", "http://h.test/client.zip", "client.zip/", "client.zip.0.zip");
    row("a folder of the numbered name", "http://h.test/client.zip", "client.zip|client.zip.0.zip/",
        "client.zip.1.zip");
    row("a place holder in the name stays", "http://h.test/a%252.zip", "a%2.zip", "a%2.zip.0.zip");
    row("the folder above is no name to write to", "http://h.test/a/..", "", "...0.zip");
    row("a file elsewhere does not matter", "http://h.test/client.zip", "sub/|sub/client.zip",
        "client.zip");
}

void TestSaveFileName::saveFileName()
{
    QFETCH(QString, url);
    QFETCH(QStringList, existing);
    QFETCH(QString, name);
    makeEntries(existing);
    QCOMPARE(freeSaveFileName(QUrl(url)), name);
}

void TestSaveFileName::saveFileNameCreatesNothing()
{
    (void)freeSaveFileName(QUrl(QStringLiteral("http://h.test/client.zip")));
    QCOMPARE(QDir::current().entryList(QDir::AllEntries | QDir::NoDotAndDotDot), QStringList());
}

void TestSaveFileName::refusedName_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("reason");
    const auto row = [](const QString &name, const char *reason) {
        QTest::newRow(qPrintable(name)) << name << text(reason);
    };
    for (const char *name :
         {"client.zip", "client", "download", "my client.zip", "unzip.exe.0.zip",
          "client.zip.0.zip", "\xD0\xB8\xD0\xB3\xD1\x80\xD0\xB0.zip", "a%2.zip", "client.7z", "exe",
          "qt.conf.0.zip", "qt.config", "my qt.conf.zip", "client.exe2", "dll.zip", "...0.zip"}) {
        row(text(name), "");
    }
    for (const char *name :
         {"client.exe", "version.dll", "VERSION.DLL", "a.com", "a.bat", "a.Cmd", "a.scr", "a.msi",
          "a.pif", "a.cpl", "a.lnk", "emberwake-launcher.exe.manifest",
          "emberwake-launcher.exe.local", "emberwake-launcher.exe.config", "a.msp", "a.hta", "a.js",
          "a.vbs", "a.wsf", "a.ps1", "a.reg", "a.jar", "a.msc", "a.URL", "a.scf", "a.library-ms",
          "a.search-ms", "Desktop.ini", "settings.txt", "OFFLINE.TXT", "qt.conf", "QT.Conf", ".exe",
          "client.zip.exe",
          // Windows drops what stands behind.
          "version.dll.", "version.dll ", "qt.conf. ."}) {
        row(text(name), program);
    }
    row(text("unzip.exe") + QChar(QChar::Null) + text(".zip"), control);
    row(text("a\n.zip"), control);
    row(text("a\x7F.zip"), control);
    row(text("a\xC2\x85.zip"), control);
    row(QString(QChar(QChar::Null)), control);
}

void TestSaveFileName::refusedName()
{
    QFETCH(QString, name);
    QFETCH(QString, reason);
    QCOMPARE(whyNotSavedAs(name), reason);
    QCOMPARE(whyNotSavedOnWindowsAs(name), reason);
}

void TestSaveFileName::refusedNameOnWindows_data()
{
    QTest::addColumn<QString>("name");
    for (const char *name :
         {"D:x.zip", "unzip:x.zip", "a<b.zip", "a>b.zip", "a\"b.zip", "a|b.zip", "a?b.zip",
          "a*b.zip", "a\\b.zip", "nul", "NUL.zip", "con.0.zip", "com1 .zip", "conin$.zip"}) {
        QTest::newRow(name) << text(name);
    }
}

void TestSaveFileName::refusedNameOnWindows()
{
    QFETCH(QString, name);
    QCOMPARE(whyNotSavedOnWindowsAs(name), text(noName));
#ifdef Q_OS_WIN
    QCOMPARE(whyNotSavedAs(name), text(noName));
#else
    QCOMPARE(whyNotSavedAs(name), QString());
#endif
}

QTEST_GUILESS_MAIN(TestSaveFileName)
#include "tst_savefilename.moc"
