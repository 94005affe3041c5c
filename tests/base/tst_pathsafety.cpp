#include "base/pathsafety.h"
#include "support/links.h"
#include "support/scratchfolder.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

#include <memory>

namespace
{
// Whether the data row of now is about links.
bool needsLinks()
{
    return QByteArray(QTest::currentDataTag()).contains("link");
}
} // namespace

// What may be made, overwritten or removed, and what may not, in the working directory and around
// it.
class TestPathSafety : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void folderInsideWorkingDirectory_data();
    void folderInsideWorkingDirectory();
    void folderToBeMade_data();
    void folderToBeMade();
    void nothingLiesInARemovedWorkingDirectory();
    void fileOrFree();
    void folderItself_data();
    void folderItself();

private:
    // "<scratch>/installation" is the working directory, "<scratch>/elsewhere" lies outside it.
    std::unique_ptr<QTemporaryDir> m_scratch;
    QString m_previous;
};

void TestPathSafety::init()
{
    m_previous = QDir::currentPath();
    m_scratch = std::make_unique<QTemporaryDir>();
    QVERIFY(m_scratch->isValid());
    const QDir root(m_scratch->path());
    QVERIFY(root.mkpath(QStringLiteral("installation")));
    QVERIFY(root.mkpath(QStringLiteral("elsewhere/Alpha")));
    QVERIFY(QDir::setCurrent(root.filePath(QStringLiteral("installation"))));
}

void TestPathSafety::cleanup()
{
    QDir::setCurrent(m_previous);
    m_scratch.reset();
}

void TestPathSafety::folderInsideWorkingDirectory_data()
{
    QTest::addColumn<QString>("folder");
    QTest::addColumn<bool>("inside");
    QTest::newRow("a folder in it") << QStringLiteral("Alpha") << true;
    QTest::newRow("a folder further down") << QStringLiteral("Alpha/Official") << true;
    QTest::newRow("a way that comes back in") << QStringLiteral("../installation/Alpha") << true;
    QTest::newRow("the way as the system knows it") << QStringLiteral("%1/Alpha") << true;
    QTest::newRow("a link that leads elsewhere inside") << QStringLiteral("inner") << true;
    QTest::newRow("the folder itself") << QStringLiteral(".") << false;
    QTest::newRow("the folder itself, from within") << QStringLiteral("Alpha/..") << false;
    QTest::newRow("the folder itself, absolute") << QStringLiteral("%1") << false;
    QTest::newRow("the folder above") << QStringLiteral("..") << false;
    QTest::newRow("climbing out from within") << QStringLiteral("Alpha/../..") << false;
    QTest::newRow("a folder beside it") << QStringLiteral("../elsewhere") << false;
    QTest::newRow("a folder beside it whose name goes on")
        << QStringLiteral("../installation2") << false;
    QTest::newRow("the root of the drive") << QStringLiteral("/") << false;
    QTest::newRow("an absolute folder elsewhere") << QStringLiteral("/tmp") << false;
    QTest::newRow("a link that leads out") << QStringLiteral("outer") << false;
    QTest::newRow("a folder behind a link that leads out")
        << QStringLiteral("outer/Alpha") << false;
    QTest::newRow("a link that leads nowhere") << QStringLiteral("broken") << false;
    QTest::newRow("a folder that does not exist") << QStringLiteral("Beta") << false;
    QTest::newRow("an empty name") << QString() << false;
}

void TestPathSafety::folderInsideWorkingDirectory()
{
    QFETCH(QString, folder);
    QFETCH(bool, inside);
    ScratchFolder::makeFolder(QStringLiteral("Alpha/Official"));
    ScratchFolder::makeFolder(QStringLiteral("../installation2"));
    if (needsLinks()) {
        MAKE_LINK(QStringLiteral("Alpha"), QStringLiteral("inner"));
        MAKE_LINK(QStringLiteral("../elsewhere"), QStringLiteral("outer"));
        MAKE_LINK(QStringLiteral("nowhere"), QStringLiteral("broken"));
    }
    if (folder.contains(QLatin1Char('%'))) {
        folder = folder.arg(QDir::currentPath());
    }
    QCOMPARE(liesInsideWorkingDirectory(folder), inside);
}

void TestPathSafety::folderToBeMade_data()
{
    QTest::addColumn<QString>("folder");
    QTest::addColumn<bool>("inside");
    QTest::newRow("a folder in it") << QStringLiteral("Alpha") << true;
    QTest::newRow("a folder further down") << QStringLiteral("Alpha/Official/2.1") << true;
    QTest::newRow("a way that comes back in") << QStringLiteral("../installation/Alpha") << true;
    QTest::newRow("absolute, in it") << QStringLiteral("%1/Alpha") << true;
    QTest::newRow("with a slash behind it") << QStringLiteral("Alpha/") << true;
    QTest::newRow("dots that are part of the name") << QStringLiteral("..Alpha") << true;
    QTest::newRow("the folder itself") << QStringLiteral(".") << false;
    QTest::newRow("the folder itself, from within") << QStringLiteral("Alpha/..") << false;
    QTest::newRow("the folder itself, absolute") << QStringLiteral("%1/") << false;
    QTest::newRow("an empty name") << QString() << false;
    QTest::newRow("the folder above") << QStringLiteral("..") << false;
    QTest::newRow("climbing out from within")
        << QStringLiteral("Alpha/Official/../../../evil") << false;
    QTest::newRow("a folder beside it whose name goes on")
        << QStringLiteral("../installation2") << false;
    QTest::newRow("an absolute folder elsewhere") << QStringLiteral("/tmp/evil") << false;
    QTest::newRow("the root of the drive") << QStringLiteral("/") << false;
#ifdef Q_OS_WIN
    QTest::newRow("by the system's separators") << QStringLiteral("Alpha\\2.1") << true;
    QTest::newRow("climbing out by them") << QStringLiteral("..\\evil") << false;
    QTest::newRow("from the root by them") << QStringLiteral("\\evil") << false;
    QTest::newRow("another machine") << QStringLiteral("\\\\server\\share") << false;
    QTest::newRow("a drive") << QStringLiteral("C:") << false;
    QTest::newRow("above where a drive was worked on") << QStringLiteral("C:..\\evil") << false;
    QTest::newRow("where a drive was worked on") << QStringLiteral("C:evil") << false;
    QTest::newRow("a stream of a folder") << QStringLiteral("Alpha:evil") << false;
#else
    QTest::newRow("a colon, which means nothing here") << QStringLiteral("Alpha: 2.1") << true;
#endif
}

// By the text alone: none of them exists.
void TestPathSafety::folderToBeMade()
{
    QFETCH(QString, folder);
    QFETCH(bool, inside);
    if (folder.contains(QLatin1Char('%'))) {
        folder = folder.arg(QDir::currentPath());
    }
    QCOMPARE(wouldLieInsideWorkingDirectory(folder), inside);
}

void TestPathSafety::nothingLiesInARemovedWorkingDirectory()
{
    const QString removed = m_scratch->filePath(QStringLiteral("removed"));
    ScratchFolder::makeFolder(removed);
    QVERIFY(QDir::setCurrent(removed));
    if (!QDir().rmdir(removed)) {
        QSKIP("this system keeps a folder that somebody works in");
    }
    QVERIFY(!liesInsideWorkingDirectory(m_scratch->filePath(QStringLiteral("elsewhere"))));
    QVERIFY(!liesInsideWorkingDirectory(QStringLiteral("/tmp")));
}

void TestPathSafety::fileOrFree()
{
    ScratchFolder::write(QStringLiteral("settings.txt"));
    ScratchFolder::makeFolder(QStringLiteral("folder"));
    QVERIFY(isFileOrFree(QStringLiteral("settings.txt")));
    QVERIFY(isFileOrFree(QStringLiteral("new.txt")));
    QVERIFY(!isFileOrFree(QStringLiteral("folder")));
    MAKE_LINK(QStringLiteral("settings.txt"), QStringLiteral("link.txt"));
    MAKE_LINK(QStringLiteral("nowhere.txt"), QStringLiteral("broken.txt"));
    QVERIFY(!isFileOrFree(QStringLiteral("link.txt")));
    QVERIFY(!isFileOrFree(QStringLiteral("broken.txt")));
}

void TestPathSafety::folderItself_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<bool>("itself");
    QTest::newRow("a folder") << QStringLiteral("Alpha/Official") << true;
    QTest::newRow("a folder that does not exist") << QStringLiteral("Beta") << false;
    QTest::newRow("a file") << QStringLiteral("settings.txt") << false;
    QTest::newRow("a link to a folder inside") << QStringLiteral("inner") << false;
    QTest::newRow("a link to a folder outside") << QStringLiteral("outer") << false;
    QTest::newRow("a link that leads nowhere") << QStringLiteral("broken") << false;
    QTest::newRow("a folder behind a link") << QStringLiteral("outer/Alpha") << true;
    QTest::newRow("what a link leads to") << QStringLiteral("inner/") << true;
}

void TestPathSafety::folderItself()
{
    QFETCH(QString, path);
    QFETCH(bool, itself);
    ScratchFolder::makeFolder(QStringLiteral("Alpha/Official"));
    ScratchFolder::write(QStringLiteral("settings.txt"));
    if (needsLinks()) {
        MAKE_LINK(QStringLiteral("Alpha"), QStringLiteral("inner"));
        MAKE_LINK(QStringLiteral("../elsewhere"), QStringLiteral("outer"));
        MAKE_LINK(QStringLiteral("nowhere"), QStringLiteral("broken"));
    }
    QCOMPARE(isFolderItself(path), itself);
    const QString name = path.section(QLatin1Char('/'), 0, 0);
    QCOMPARE(isLinkOrJunction(QFileInfo(name)), needsLinks());
}

QTEST_GUILESS_MAIN(TestPathSafety)
#include "tst_pathsafety.moc"
