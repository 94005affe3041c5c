#include "support/archives.h"
#include "support/consolecapture.h"
#include "support/localencoding.h"
#include "support/scratchfolder.h"
#include "support/texts.h"
#include "window/testform.h"

#include <QChildEvent>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>
#include <QTest>

#include <stdexcept>

Q_DECLARE_METATYPE(Archives::Extractor)

namespace
{
using Texts::text;

template<typename Rows>
void forEachExtractor(const Rows &rows)
{
    rows(Archives::Extractor::Ours, "ours");
#ifndef Q_OS_WIN
    rows(Archives::Extractor::OfTheDistribution, "the distribution's");
#endif
}

const char recordArguments[] = "record arguments.txt";

// Refuses every child by an exception.
class RefusingParent : public QObject
{
public:
    // The child that never came to be is still listed.
    ~RefusingParent() override { const_cast<QObjectList &>(children()).clear(); }

protected:
    void childEvent(QChildEvent *event) override
    {
        if (event->added()) {
            throw std::runtime_error(
                LocalEncoding::bytes(text("no room for \xC3\xA4 child")).toStdString());
        }
    }
};

// What unzip2Folder() returned, and what was printed meanwhile.
using Outcome = QPair<bool, QByteArray>;

// Unpacks a.zip into A/1.0.
Outcome unpackedWith(QObject *parent)
{
    ConsoleCapture console;
    const bool result = testform::unzip2Folder(text("a.zip"), text("A/1.0"), parent);
    return {result, console.out() + console.err()};
}

#ifdef Q_OS_WIN
const char pathSeparator[] = ";";
#else
const char pathSeparator[] = ":";
#endif

// A folder that is searched for programs before all others, as long as the object lives.
class SearchedFolder
{
public:
    explicit SearchedFolder(const QString &folder)
        : m_previous(qgetenv("PATH"))
    {
        qputenv("PATH",
                QFile::encodeName(QDir::toNativeSeparators(folder)) + pathSeparator + m_previous);
    }
    ~SearchedFolder() { qputenv("PATH", m_previous); }
    SearchedFolder(const SearchedFolder &) = delete;
    SearchedFolder &operator=(const SearchedFolder &) = delete;

private:
    QByteArray m_previous;
};
} // namespace

// Unpacking with the external extractor: how it is called, and that nothing it does is noticed.
class TestExtraction : public QObject
{
    Q_OBJECT

private slots:
    void arguments_data();
    void arguments();
    void runsInTheWorkingDirectory();
    void waitsUntilTheExtractorHasEnded();
    void folderIsMadeFirst_data();
    void folderIsMadeFirst();
    void folderThatCannotBeMade();

    void unpacks();
    void unpacksWithoutParent();
    void encryptedArchive_data();
    void encryptedArchive();
    void noArchive_data();
    void noArchive();

    void processBelongsToTheParent();
    void processWithoutParent();

    void extractorThatDoesNotStart_data();
    void extractorThatDoesNotStart();
    void extractorThatFails_data();
    void extractorThatFails();
    void extractorThatTalks();
    void extractorThatReads();
    void filesThatAreThereAreReplaced();
    void extractorThatAsksBeforeReplacing();
    void extractorHasNoTerminal();
    void exceptionIsPrinted();
};

void TestExtraction::arguments_data()
{
    QTest::addColumn<QString>("password");
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("folder");
    QTest::addColumn<QString>("recorded");
    QTest::newRow("without a password") << QString() << text("client.zip") << text("A/B/1.0")
                                        << text("3\nclient.zip\n-d\nA/B/1.0\n");
    QTest::newRow("with a password") << text("sesame") << text("client.zip") << text("A/B/1.0")
                                     << text("5\n-P\nsesame\nclient.zip\n-d\nA/B/1.0\n");
    QTest::newRow("blanks everywhere")
        << text("two words") << text("my client.zip") << text("A B/C D/1.0")
        << text("5\n-P\ntwo words\nmy client.zip\n-d\nA B/C D/1.0\n");
    QTest::newRow("what a shell would take apart")
        << text("$HOME \"'*") << text("a;b.zip") << text("A/&/1.0")
        << text("5\n-P\n$HOME \"'*\na;b.zip\n-d\nA/&/1.0\n");
    QTest::newRow("letters beyond Latin-1")
        << text("\xD0\xBA\xD0\xBE\xD0\xB4") << text("\xD0\xB8.zip") << text("A/\xD0\x91/1.0")
        << text("5\n-P\n\xD0\xBA\xD0\xBE\xD0\xB4\n\xD0\xB8.zip\n-d\nA/\xD0\x91/1.0\n");
}

void TestExtraction::arguments()
{
    QFETCH(QString, password);
    QFETCH(QString, file);
    QFETCH(QString, folder);
    QFETCH(QString, recorded);
    const ScratchFolder scratch;
    Archives::provideExtractorScript(recordArguments);
    QVERIFY(testform::unzip2Folder(file, folder, nullptr, password));
    QCOMPARE(QString::fromUtf8(ScratchFolder::read(text("arguments.txt"))), recorded);
}

void TestExtraction::runsInTheWorkingDirectory()
{
    const ScratchFolder scratch;
    Archives::provideExtractorScript("note where.txt {cwd}\nnote where.txt {self}");
    QVERIFY(testform::unzip2Folder(text("a.zip"), text("out")));
    QCOMPARE(QString::fromUtf8(ScratchFolder::read(text("where.txt"))),
             scratch.path() + QDir::toNativeSeparators(text("\n./unzip.exe\n")));
}

void TestExtraction::waitsUntilTheExtractorHasEnded()
{
    const ScratchFolder scratch;
    Archives::provideExtractorScript("sleep 300\nnote end.txt end");
    QVERIFY(testform::unzip2Folder(text("a.zip"), text("out")));
    QVERIFY(QFile::exists(text("end.txt")));
}

void TestExtraction::folderIsMadeFirst_data()
{
    QTest::addColumn<QString>("existing");
    QTest::addColumn<bool>("absolute");
    QTest::newRow("all levels are missing") << QString() << false;
    QTest::newRow("all levels of an absolute way are missing") << QString() << true;
    QTest::newRow("the last level is missing") << text("A/B") << false;
    QTest::newRow("it is there already") << text("A/B/1.0") << false;
}

void TestExtraction::folderIsMadeFirst()
{
    QFETCH(QString, existing);
    QFETCH(bool, absolute);
    const ScratchFolder scratch;
    if (!existing.isEmpty()) {
        ScratchFolder::makeFolder(existing);
    }
    Archives::provideExtractorScript("needfolder A/B/1.0\nnote seen.txt there");
    const QString folder = text("A/B/1.0");
    QVERIFY(testform::unzip2Folder(text("a.zip"),
                                   absolute ? QDir::current().absoluteFilePath(folder) : folder));
    QCOMPARE(ScratchFolder::read(text("seen.txt")), QByteArray("there\n"));
    QVERIFY(QFileInfo(folder).isDir());
}

void TestExtraction::folderThatCannotBeMade()
{
    const ScratchFolder scratch;
    ScratchFolder::write(text("A"), "a file");
    Archives::provideExtractorScript(recordArguments);
    QVERIFY(testform::unzip2Folder(text("a.zip"), text("A/B")));
    // The extractor runs all the same.
    QCOMPARE(ScratchFolder::read(text("arguments.txt")), QByteArray("3\na.zip\n-d\nA/B\n"));
    QCOMPARE(ScratchFolder::read(text("A")), QByteArray("a file"));
}

void TestExtraction::unpacks()
{
    const ScratchFolder scratch;
    Archives::provideExtractor();
    ScratchFolder::write(text("my client.zip"), Archives::zip({{text("game.exe"), "game"},
                                                               {text("data/map.bin"), "map"}}));
    QObject parent;
    QVERIFY(testform::unzip2Folder(text("my client.zip"), text("Al pha/Official/1.0"), &parent));
    QCOMPARE(ScratchFolder::read(text("Al pha/Official/1.0/game.exe")), QByteArray("game"));
    QCOMPARE(ScratchFolder::read(text("Al pha/Official/1.0/data/map.bin")), QByteArray("map"));
    QVERIFY(QFile::exists(text("my client.zip")));
}

void TestExtraction::unpacksWithoutParent()
{
    const ScratchFolder scratch;
    Archives::provideExtractor();
    ScratchFolder::write(text("a.zip"), Archives::zip({{text("game.exe"), "game"}}));
    QVERIFY(testform::unzip2Folder(text("a.zip"), text("out")));
    QCOMPARE(ScratchFolder::read(text("out/game.exe")), QByteArray("game"));
}

void TestExtraction::encryptedArchive_data()
{
    QTest::addColumn<Archives::Extractor>("extractor");
    QTest::addColumn<QString>("password");
    QTest::addColumn<QByteArray>("game");
    forEachExtractor([](Archives::Extractor extractor, const char *name) {
        const auto row = [&](const char *what, const QString &password, const QByteArray &game) {
            QTest::addRow("%s, %s", what, name) << extractor << password << game;
        };
        row("with the right password", text("open sesame"), "game");
        row("with a wrong password", text("open barley"), {});
        row("without a password", {}, {});
    });
}

void TestExtraction::encryptedArchive()
{
    QFETCH(Archives::Extractor, extractor);
    QFETCH(QString, password);
    QFETCH(QByteArray, game);
    const ScratchFolder scratch;
    Archives::provideExtractor(extractor);
    ScratchFolder::write(text("a.zip"),
                         Archives::zip({{text("game.exe"), "game"}}, text("open sesame")));
    QVERIFY(testform::unzip2Folder(text("a.zip"), text("out"), nullptr, password));
    QCOMPARE(ScratchFolder::read(text("out/game.exe")), game);
    QCOMPARE(QFileInfo(text("out")).isDir(),
             !game.isEmpty() || extractor == Archives::Extractor::OfTheDistribution);
}

void TestExtraction::noArchive_data()
{
    QTest::addColumn<Archives::Extractor>("extractor");
    QTest::addColumn<QByteArray>("content");
    forEachExtractor([](Archives::Extractor extractor, const char *name) {
        const auto row = [&](const char *what, const QByteArray &content) {
            QTest::addRow("%s, %s", what, name) << extractor << content;
        };
        row("a page of text", "<html>not found</html>");
        row("an empty file", "");
        row("bytes of zero", QByteArray(5000, '\0'));
        row("an archive cut in the middle",
            Archives::zip({{text("game.exe"), QByteArray(3000, 'g')}}).left(120));
        row("no file at all", QByteArray());
    });
}

// Ours takes the folder away that was made for it; another one leaves it, and it is empty.
void TestExtraction::noArchive()
{
    QFETCH(Archives::Extractor, extractor);
    QFETCH(QByteArray, content);
    const ScratchFolder scratch;
    Archives::provideExtractor(extractor);
    if (!content.isNull()) {
        ScratchFolder::write(text("a.zip"), content);
    }
    QCOMPARE(unpackedWith(nullptr), Outcome(true, {}));
    const bool ours = extractor == Archives::Extractor::Ours;
    QCOMPARE(QDir(text("A")).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot),
             ours ? QStringList() : QStringList{text("1.0")});
    QVERIFY(QDir(text("A/1.0")).isEmpty());
    QCOMPARE(QFile::exists(text("a.zip")), !content.isNull());
}

void TestExtraction::processBelongsToTheParent()
{
    const ScratchFolder scratch;
    Archives::provideExtractorScript("exit 3");
    QObject parent;
    QVERIFY(testform::unzip2Folder(text("a.zip"), text("out"), &parent, text("sesame")));
    QVERIFY(testform::unzip2Folder(text("b.zip"), text("out"), &parent));
    // Kept as long as the parent lives.
    const QList<QProcess *> processes =
        parent.findChildren<QProcess *>(QString(), Qt::FindDirectChildrenOnly);
    QCOMPARE(processes.size(), 2);
    QCOMPARE(processes.at(0)->program(), text("./unzip.exe"));
    QCOMPARE(processes.at(0)->arguments(),
             (QStringList{text("-P"), text("sesame"), text("a.zip"), text("-d"), text("out")}));
    QCOMPARE(processes.at(1)->arguments(), (QStringList{text("b.zip"), text("-d"), text("out")}));
    QCOMPARE(processes.at(0)->state(), QProcess::NotRunning);
    QCOMPARE(processes.at(0)->exitCode(), 3);
}

void TestExtraction::processWithoutParent()
{
    const ScratchFolder scratch;
    Archives::provideExtractorScript(recordArguments);
    QVERIFY(testform::unzip2Folder(text("a.zip"), text("out"), nullptr));
    QVERIFY(QFile::exists(text("arguments.txt")));
    QCOMPARE(QCoreApplication::instance()->findChildren<QProcess *>().size(), 0);
}

void TestExtraction::extractorThatDoesNotStart_data()
{
    QTest::addColumn<QString>("how");
    QTest::newRow("it is missing") << text("missing");
    QTest::newRow("it is a folder") << text("folder");
#ifdef Q_OS_UNIX
    QTest::newRow("it is not executable") << text("plain file");
    QTest::newRow("it is no program") << text("no program");
    QTest::newRow("its interpreter is missing") << text("no interpreter");
#else
    QTest::newRow("it is a program cut short") << text("cut short");
#endif
    QTest::newRow("only the search path has one") << text("search path");
}

void TestExtraction::extractorThatDoesNotStart()
{
    QFETCH(QString, how);
    const ScratchFolder scratch;
    const QString extractor = text("unzip.exe");
    if (how == text("plain file")) {
        ScratchFolder::write(extractor, "#!/bin/sh\necho > ran.txt\n");
        QVERIFY(QFile::setPermissions(extractor, QFile::ReadOwner | QFile::WriteOwner));
    } else if (how == text("folder")) {
        ScratchFolder::makeFolder(extractor);
    } else if (how == text("no program")) {
        ScratchFolder::write(extractor, QByteArray(100, '\0'));
        QVERIFY(QFile::setPermissions(extractor, QFile::ReadOwner | QFile::ExeOwner));
    } else if (how == text("no interpreter")) {
        ScratchFolder::write(extractor, "#!/missing/interpreter\necho > ran.txt\n");
        QVERIFY(QFile::setPermissions(extractor, QFile::ReadOwner | QFile::ExeOwner));
    }
    if (how == text("cut short")) {
        Archives::provideExtractorScript("note ran.txt");
        const QByteArray program = ScratchFolder::read(extractor);
        ScratchFolder::write(extractor, program.left(200));
    }
    const QString elsewhere = scratch.outside() + text("/tools");
    const SearchedFolder searched(elsewhere);
    if (how == text("search path")) {
        Archives::provideExtractorScript("note ran.txt");
        ScratchFolder::makeFolder(elsewhere);
        const QString found = elsewhere + QLatin1Char('/') + extractor;
        QVERIFY(QFile::rename(extractor, found));
        QCOMPARE(QStandardPaths::findExecutable(extractor), found);
    }
    ScratchFolder::write(text("a.zip"), Archives::zip({{text("game.exe"), "game"}}));
    QObject parent;
    QCOMPARE(unpackedWith(&parent), Outcome(true, {}));
    QVERIFY(QDir(text("A/1.0")).exists());
    QVERIFY(QDir(text("A/1.0")).isEmpty());
    QVERIFY(!QFile::exists(text("ran.txt")));
    QCOMPARE(parent.findChildren<QProcess *>().size(), 1);
    QCOMPARE(parent.findChild<QProcess *>()->error(), QProcess::FailedToStart);
}

void TestExtraction::extractorThatFails_data()
{
    QTest::addColumn<QByteArray>("script");
    QTest::addColumn<int>("status");
    QTest::newRow("it ends with an error") << QByteArray("talk 6\nexit 9") << 0;
    QTest::newRow("it is killed") << QByteArray("kill") << 1;
    QTest::newRow("it crashes") << QByteArray("crash") << 1;
}

void TestExtraction::extractorThatFails()
{
    QFETCH(QByteArray, script);
    QFETCH(int, status);
    const ScratchFolder scratch;
    Archives::provideExtractorScript("note ran.txt\n" + script);
    QObject parent;
    QCOMPARE(unpackedWith(&parent), Outcome(true, {}));
    QVERIFY(QFile::exists(text("ran.txt")));
    QCOMPARE(static_cast<int>(parent.findChild<QProcess *>()->exitStatus()), status);
}

// More than a pipe holds, so that it would block if nobody read.
void TestExtraction::extractorThatTalks()
{
    const ScratchFolder scratch;
    Archives::provideExtractorScript("talk 3000000\nnote end.txt end");
    QByteArray printed;
    {
        ConsoleCapture console;
        QVERIFY(testform::unzip2Folder(text("a.zip"), text("out")));
        printed = console.out() + console.err();
    }
    QVERIFY(QFile::exists(text("end.txt")));
    QCOMPARE(printed, QByteArray());
}

// Without an end of its input the extractor would wait for ever.
void TestExtraction::extractorThatReads()
{
    const ScratchFolder scratch;
    Archives::provideExtractorScript("drain answer.txt\nnote end.txt");
    QVERIFY(testform::unzip2Folder(text("a.zip"), text("out")));
    QVERIFY(QFile::exists(text("end.txt")));
    QCOMPARE(ScratchFolder::read(text("answer.txt")), QByteArray());
}

void TestExtraction::filesThatAreThereAreReplaced()
{
    const ScratchFolder scratch;
    Archives::provideExtractor();
    ScratchFolder::write(text("a.zip"),
                         Archives::zip({{text("game.exe"), "new"}, {text("other.txt"), "new"}}));
    ScratchFolder::write(text("out/game.exe"), "old");
    ScratchFolder::write(text("out/mine.txt"), "mine");
    QVERIFY(testform::unzip2Folder(text("a.zip"), text("out")));
    QCOMPARE(ScratchFolder::read(text("out/game.exe")), QByteArray("new"));
    QCOMPARE(ScratchFolder::read(text("out/other.txt")), QByteArray("new"));
    QCOMPARE(ScratchFolder::read(text("out/mine.txt")), QByteArray("mine"));
}

// The distribution's asks for every file that is there already; without an answer it replaces none.
void TestExtraction::extractorThatAsksBeforeReplacing()
{
#ifdef Q_OS_WIN
    QSKIP("there is none of the distribution's for Windows");
#endif
    const ScratchFolder scratch;
    Archives::provideExtractor(Archives::Extractor::OfTheDistribution);
    ScratchFolder::write(text("a.zip"),
                         Archives::zip({{text("game.exe"), "new"}, {text("other.txt"), "new"}}));
    ScratchFolder::write(text("out/game.exe"), "old");
    QObject parent;
    QVERIFY(testform::unzip2Folder(text("a.zip"), text("out"), &parent));
    auto *process = parent.findChild<QProcess *>();
    QVERIFY(process != nullptr);
    QVERIFY((process->readAllStandardOutput() + process->readAllStandardError())
                .contains("replace out/game.exe?"));
    QCOMPARE(ScratchFolder::read(text("out/game.exe")), QByteArray("old"));
}

// One that asks for a password opens the terminal of its session, past its closed input. The leader
// of a new session has none.
void TestExtraction::extractorHasNoTerminal()
{
#ifndef Q_OS_UNIX
    QSKIP("sessions and their terminals are a matter of Unix");
#endif
    const ScratchFolder scratch;
    Archives::provideExtractorScript("session session.txt");
    QVERIFY(testform::unzip2Folder(text("a.zip"), text("out")));
    const QList<QByteArray> numbers = ScratchFolder::read(text("session.txt")).split(' ');
    QCOMPARE(numbers.size(), 2);
    QCOMPARE(numbers.at(0), numbers.at(1));
}

void TestExtraction::exceptionIsPrinted()
{
    const ScratchFolder scratch;
    Archives::provideExtractorScript("note ran.txt");
    RefusingParent parent;
    QByteArray out;
    QByteArray err;
    bool result = false;
    {
        ConsoleCapture console;
        result = testform::unzip2Folder(text("a.zip"), text("out"), &parent);
        out = console.out();
        err = console.err();
    }
    QCOMPARE(result, true);
    QCOMPARE(err, QByteArray("no room for \xC3\xA4 child\n"));
    QCOMPARE(out, QByteArray());
    QVERIFY(!QFile::exists(text("ran.txt")));
}

QTEST_MAIN(TestExtraction)
#include "tst_extraction.moc"
