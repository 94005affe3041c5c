#include "install/savefilename.h"
#include "support/scratchfolder.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>
#include <QUrl>

#include <memory>

namespace
{
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

QTEST_GUILESS_MAIN(TestSaveFileName)
#include "tst_savefilename.moc"
