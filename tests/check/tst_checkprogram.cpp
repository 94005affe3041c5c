#include "support/archives.h"
#include "support/documents.h"
#include "support/httpserver.h"
#include "support/relation.h"
#include "support/scratchfolder.h"

#include <QElapsedTimer>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QProcess>
#include <QTest>

namespace
{
const QString documentName = QStringLiteral("launcher.xml");

struct Run {
    int exitCode = -1;
    QString output;
    QString error;
};

// Starts the real program, as an operator does.
Run check(const QStringList &arguments, const QStringList &variables = {},
          const QByteArray &input = {})
{
    QProcess process;
    process.setEnvironment(QProcess::systemEnvironment() + variables);
    // Counted from here: on Wine the tests run on another drive than the build.
    process.start(QCoreApplication::applicationDirPath() +
                      QStringLiteral("/../../" EMBERWAKE_CHECK),
                  arguments);
    process.write(input);
    process.closeWriteChannel();
    if (!process.waitForFinished(60000) || process.exitStatus() != QProcess::NormalExit) {
        return {};
    }
    // Windows ends lines in its own way.
    const auto text = [](const QByteArray &bytes) {
        return QString::fromUtf8(bytes).remove(QLatin1Char('\r'));
    };
    return {process.exitCode(), text(process.readAllStandardOutput()),
            text(process.readAllStandardError())};
}

const char manyThings[] =
    "<launcher version='1'>\n"
    "  <client server='Beta' name='Official' version='1.0' url='https://files.example/1.zip'/>\n"
    "  <client server='Ash' name='Official' version='2.0' url='https://files.example/2.zip'/>\n"
    "  <client server='Ash' name='Beta' version='2.1' url='https://files.example/3.zip'\n"
    "    auth='e6fb06210fafc02fd7479ddbed2d042cc3a5155e'/>\n"
    "  <client server='Reach' name='Beta' version='22.0' url='https://files.example/4.zip'/>\n"
    "  <homenews id='1' title='Plain' description='d' imageUrl='https://files.example/p.png' "
    "clickUrl='https://www.example/'/>\n"
    "  <news id='2' title='?Tile' description='d' imageUrl='https://files.example/p.png' "
    "clickUrl='https://www.example/'/>\n"
    "</launcher>\n";

// Without the lines of what players see.
QString findingsPart(const QString &output)
{
    return output.mid(output.indexOf(QStringLiteral("\n\n")) + 2);
}

QStringList idsIn(const Run &run)
{
    QStringList ids;
    const QJsonArray findings = QJsonDocument::fromJson(run.output.toUtf8())
                                    .object()
                                    .value(QStringLiteral("findings"))
                                    .toArray();
    for (const QJsonValue &finding : findings) {
        ids << finding.toObject().value(QStringLiteral("id")).toString();
    }
    return ids;
}
} // namespace

// The program itself: its texts, exit codes, options, and what it does about servers that
// misbehave.
class TestCheckProgram : public QObject
{
    Q_OBJECT

private slots:
    void textOutput();
    void codeShowsWhatATesterSees();
    void jsonOutput();
    void exitCodes_data();
    void exitCodes();
    void previousFromTheNetwork();
    void wrongUse_data();
    void wrongUse();
    void helpIsNoWrongUse();
    void versionIsTold();
    void standardInput();
    void ignoredFindings();
    void unknownPicturesOfTheTerminal();

    void documentFromTheNetwork_data();
    void documentFromTheNetwork();
    void folderInPlaceOfTheDocument();
    void noServers();
    void swappedPicture();
    void nobodyAnswers_data();
    void nobodyAnswers();
    void picturesThatAreNone_data();
    void picturesThatAreNone();
    void logosLieBesideTheDocument();
    void missingLogoOfAFile();
    void archiveThatDoesNotArrive_data();
    void archiveThatDoesNotArrive();
    void deepWithoutFault();
    void silentServerIsGivenUp();
    void endlessPictureIsGivenUp();
    void certificates_data();
    void certificates();
    void startsNoOtherProgram();
};

void TestCheckProgram::textOutput()
{
    const ScratchFolder folder;
    ScratchFolder::write(documentName, manyThings);
    const Run run = check({documentName});
    QCOMPARE(run.error, QString());
    QCOMPARE(run.output, QString::fromUtf8(R"(What players see
  Servers, from left to right:
    Ash  [Official] 2.0
    Reach  [Beta] 22.0
    Beta  [Official] 1.0
  Hidden entries:
    Ash  Beta 2.1
  Slides:
    1  Plain
       d
    2  (empty)
    3  (empty)
  Tiles:
    big  Tile
         d
    medium 1  (empty)
    medium 2  (empty)
    small 1  (empty)
    small 2  (empty)
    small 3  (empty)

launcher.xml:6:3: error: version "22.0" is too great and wraps around: it never counts as installed, and Play is never offered [version-wraps]
    mend: number versions from 0.0.0.0.1 to 21.47
launcher.xml:8:3: warning: the title loses the "?" at its beginning [leading-question-mark]
    mend: begin with another character, or write "??"
1 error, 1 warning
)"));
    QCOMPARE(run.exitCode, 2);
}

void TestCheckProgram::codeShowsWhatATesterSees()
{
    const ScratchFolder folder;
    ScratchFolder::write(documentName, manyThings);
    const Run run = check({QStringLiteral("--code"), QStringLiteral("code"), documentName});
    QVERIFY(run.output.contains(QStringLiteral("    Ash  [Official] 2.0  [Beta] 2.1\n")));
    QVERIFY(!run.output.contains(QStringLiteral("Hidden")));
    QVERIFY(!run.output.contains(QStringLiteral("code-opens-nothing")));
    // With a line end, as "echo" writes it.
    const Run slip = check({QStringLiteral("--code"), QStringLiteral("code\n"), documentName});
    QVERIFY(slip.output.contains(QStringLiteral("launcher.xml:0:0: warning: no entry has the sum "
                                                "of this code")));
    QVERIFY(slip.output.contains(QStringLiteral("Hidden")));
}

void TestCheckProgram::jsonOutput()
{
    const ScratchFolder folder;
    ScratchFolder::write(documentName, manyThings);
    const Run run = check({QStringLiteral("--json"), documentName});
    const QJsonObject object = QJsonDocument::fromJson(run.output.toUtf8()).object();
    QCOMPARE(object.value(QStringLiteral("exitCode")).toInt(), run.exitCode);
    QCOMPARE(run.exitCode, 2);

    const QJsonObject players = object.value(QStringLiteral("players")).toObject();
    QCOMPARE(players.keys(), (QStringList{QStringLiteral("connected"), QStringLiteral("hidden"),
                                          QStringLiteral("outdated"), QStringLiteral("servers"),
                                          QStringLiteral("slides"), QStringLiteral("tiles")}));
    const QByteArray servers = QJsonDocument(players.value(QStringLiteral("servers")).toArray())
                                   .toJson(QJsonDocument::Compact);
    QCOMPARE(servers,
             QByteArray(R"([{"buttons":[{"client":"Official","selects":true,"version":"2.0"}],)"
                        R"("server":"Ash"},)"
                        R"({"buttons":[{"client":"Beta","selects":true,"version":"22.0"}],)"
                        R"("server":"Reach"},)"
                        R"({"buttons":[{"client":"Official","selects":true,"version":"1.0"}],)"
                        R"("server":"Beta"}])"));
    const QJsonObject finding =
        object.value(QStringLiteral("findings")).toArray().first().toObject();
    QCOMPARE(finding.value(QStringLiteral("line")).toInt(), 6);
    QCOMPARE(finding.value(QStringLiteral("column")).toInt(), 3);
    QCOMPARE(finding.value(QStringLiteral("severity")).toString(), QStringLiteral("error"));
    QCOMPARE(finding.value(QStringLiteral("id")).toString(), QStringLiteral("version-wraps"));
    QVERIFY(!finding.value(QStringLiteral("text")).toString().isEmpty());
    QVERIFY(!finding.value(QStringLiteral("mend")).toString().isEmpty());

    QCOMPARE(object.value(QStringLiteral("document")).toString(), documentName);
    QCOMPARE(object.value(QStringLiteral("program"))
                 .toObject()
                 .value(QStringLiteral("version"))
                 .toString(),
             QStringLiteral(EMBERWAKE_VERSION));
    const Run withOptions =
        check({QStringLiteral("--json"), QStringLiteral("--code"), QStringLiteral("secret"),
               QStringLiteral("--ignore"), QStringLiteral("version-wraps"),
               QStringLiteral("--fail-on"), QStringLiteral("error"), documentName});
    const QJsonObject options = QJsonDocument::fromJson(withOptions.output.toUtf8())
                                    .object()
                                    .value(QStringLiteral("options"))
                                    .toObject();
    QCOMPARE(options.value(QStringLiteral("failOn")).toString(), QStringLiteral("error"));
    QCOMPARE(options.value(QStringLiteral("ignore")).toArray(),
             QJsonArray{QStringLiteral("version-wraps")});
    // Outputs are kept, and the code is a secret.
    QVERIFY(!withOptions.output.contains(QStringLiteral("secret")));
}

void TestCheckProgram::exitCodes_data()
{
    QTest::addColumn<QStringList>("elements");
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<int>("exitCode");
    const QString https = QStringLiteral("https://files.example/1.zip");
    const QString clean = Documents::client(QStringLiteral("S"), QStringLiteral("Official"),
                                            QStringLiteral("1.0"), https);
    const QStringList previous{QStringLiteral("--previous"), QStringLiteral("before.xml")};
    QTest::newRow("clean") << QStringList{clean} << QStringList() << 0;
    QTest::newRow("warning") << QStringList{Documents::client(QStringLiteral("S"),
                                                              QStringLiteral("Official"),
                                                              QStringLiteral("43.0"), https)}
                             << QStringList() << 1;
    const QStringList errorsOnly{QStringLiteral("--fail-on"), QStringLiteral("error")};
    QTest::newRow("warning that is none of an error")
        << QStringList{Documents::client(QStringLiteral("S"), QStringLiteral("Official"),
                                         QStringLiteral("43.0"), https)}
        << errorsOnly << 0;
    QTest::newRow("error among errors")
        << QStringList{QStringLiteral("<client/>")} << errorsOnly << 2;
    QTest::newRow("error") << QStringList{QStringLiteral("<client/>")} << QStringList() << 2;
    QTest::newRow("a lower version than before") << QStringList{clean} << previous << 1;
}

void TestCheckProgram::exitCodes()
{
    QFETCH(QStringList, elements);
    QFETCH(QStringList, arguments);
    QFETCH(int, exitCode);
    const ScratchFolder folder;
    ScratchFolder::write(documentName, Documents::launcher(elements));
    ScratchFolder::write(QStringLiteral("before.xml"),
                         Documents::launcher({Documents::client(
                             QStringLiteral("S"), QStringLiteral("Official"), QStringLiteral("1.1"),
                             QStringLiteral("https://files.example/1.zip"))}));
    const Run run = check(arguments + QStringList{documentName});
    QCOMPARE(run.exitCode, exitCode);
}

// What players have now is the live document.
void TestCheckProgram::previousFromTheNetwork()
{
    const ScratchFolder folder;
    HttpServer server;
    const auto document = [](const char *version) {
        return Documents::launcher({Documents::client(
            QStringLiteral("S"), QStringLiteral("Official"), QLatin1String(version),
            QStringLiteral("https://files.example/%1.zip").arg(QLatin1String(version)))});
    };
    ScratchFolder::write(documentName, document("1.0"));
    server.serve(documentName, document("1.1"));
    const QString live = server.url(documentName);
    const Run run =
        check({QStringLiteral("--json"), QStringLiteral("--previous"), live, documentName});
    QCOMPARE(idsIn(run), QStringList{QStringLiteral("version-lower")});
    const QString missing = server.url(QStringLiteral("missing.xml"));
    const Run wrong = check({QStringLiteral("--previous"), missing, documentName});
    QCOMPARE(wrong.exitCode, 64);
    QVERIFY(
        wrong.error.contains(missing + QStringLiteral(" cannot be read: the server answers 404; "
                                                      "before the first release leave "
                                                      "--previous out.")));
    const QString moved = server.url(QStringLiteral("moved.xml"));
    server.redirect(QStringLiteral("moved.xml"), live);
    const Run elsewhere = check({QStringLiteral("--previous"), moved, documentName});
    QVERIFY(elsewhere.error.contains(
        QStringLiteral("%1 cannot be read: it is redirected to %2.").arg(moved, live)));
}

void TestCheckProgram::wrongUse_data()
{
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QString>("why");
    const auto row = [](const char *name, const char *arguments, const char *why) {
        QTest::newRow(name) << QString::fromLatin1(arguments).split(QLatin1Char(' '),
                                                                    Qt::SkipEmptyParts)
                            << QString::fromLatin1(why);
    };
    const char one[] = "Name one document: a file, an address, or - for the standard input.";
    const char noFile[] =
        "missing.xml cannot be read: there is no such file, and an address begins "
        "with https:// or http://.";
    const char base[] =
        "--base needs an address that begins with https:// or http:// and ends in a "
        "slash.";
    row("nothing", "", one);
    row("two documents", "launcher.xml other.xml", one);
    row("an unknown option", "--shallow launcher.xml", "Unknown option 'shallow'.");
    row("an option without its value", "launcher.xml --code", "Missing value after '--code'.");
    row("no such file", "missing.xml", noFile);
    row("no such previous file", "--previous missing.xml launcher.xml", noFile);
    row("no such authority", "--authority missing.xml launcher.xml", noFile);
    row("a folder", ".", ". cannot be read: it is a folder.");
    row("a time that is none", "--timeout soon launcher.xml",
        "--timeout needs a number of seconds from 1 to 3600.");
    row("a base without its slash", "--base https://files.example launcher.xml", base);
    row("a base that is a folder", "--base web/ launcher.xml", base);
    row("a finding that is none", "--ignore version-wraps,version-raps launcher.xml",
        "--ignore: there is no finding \"version-raps\"; perhaps version-wraps?");
    row("a finding of whatever", "--ignore whatever launcher.xml",
        "--ignore: there is no finding \"whatever\".");
    row("an empty finding", "--ignore version-wraps, launcher.xml",
        "--ignore: there is no finding \"\".");
    row("a severity that is none", "--fail-on note launcher.xml",
        "--fail-on needs error or warning.");
    row("an authority that is none", "--authority launcher.xml launcher.xml",
        "launcher.xml holds no certificate.");
}

void TestCheckProgram::wrongUse()
{
    QFETCH(QStringList, arguments);
    QFETCH(QString, why);
    const ScratchFolder folder;
    ScratchFolder::write(documentName, manyThings);
    const Run run = check(arguments);
    QCOMPARE(run.exitCode, 64);
    QCOMPARE(run.output, QString());
    QCOMPARE(run.error,
             QStringLiteral("emberwake-check: %1\nTry emberwake-check --help.\n").arg(why));
}

void TestCheckProgram::helpIsNoWrongUse()
{
    const Run run = check({QStringLiteral("--help")});
    QCOMPARE(run.exitCode, 0);
    for (const char *option : {"--json", "--code", "--deep", "--previous", "--base", "--authority",
                               "--timeout", "--ignore", "--fail-on", "--version"}) {
        QVERIFY2(run.output.contains(QLatin1String(option)), option);
    }
}

void TestCheckProgram::versionIsTold()
{
    const Run run = check({QStringLiteral("--version")});
    QCOMPARE(run.output, QStringLiteral("emberwake-check " EMBERWAKE_VERSION "\n"));
    QCOMPARE(run.exitCode, 0);
}

void TestCheckProgram::standardInput()
{
    const Run run = check({QStringLiteral("-")}, {}, manyThings);
    QVERIFY(run.output.contains(QStringLiteral("<stdin>:6:3: error: ")));
    QCOMPARE(run.exitCode, 2);
    // Nothing comes either: an empty document.
    QCOMPARE(idsIn(check({QStringLiteral("--json"), QStringLiteral("-")})),
             QStringList{QStringLiteral("empty-document")});
}

void TestCheckProgram::ignoredFindings()
{
    const ScratchFolder folder;
    ScratchFolder::write(documentName, manyThings);
    const QString ignore = QStringLiteral("--ignore");
    const Run one = check({ignore, QStringLiteral("version-wraps"), documentName});
    QVERIFY(!one.output.contains(QStringLiteral("version-wraps")));
    QVERIFY(one.output.endsWith(QStringLiteral("0 errors, 1 warning, 1 ignored\n")));
    QCOMPARE(one.exitCode, 1);
    const Run both =
        check({ignore, QStringLiteral("version-wraps,leading-question-mark"), documentName});
    QVERIFY(both.output.endsWith(QStringLiteral("0 errors, 0 warnings, 2 ignored\n")));
    QCOMPARE(both.exitCode, 0);
    const Run twice = check({ignore, QStringLiteral("version-wraps"), ignore,
                             QStringLiteral("leading-question-mark"), documentName});
    QCOMPARE(twice.exitCode, 0);
}

// A document may come from anybody: nothing in it gives orders to the terminal.
void TestCheckProgram::unknownPicturesOfTheTerminal()
{
    const ScratchFolder folder;
    ScratchFolder::write(
        documentName, Documents::launcher(
                          {Documents::news(QStringLiteral("news"), QStringLiteral("a&#x9b;b&#10;c"))
                               .replace(QStringLiteral("&amp;"), QStringLiteral("&"))}));
    const Run run = check({documentName});
    QVERIFY(run.output.contains(QStringLiteral("    big  a b c\n")));
}

void TestCheckProgram::documentFromTheNetwork_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<int>("exitCode");
    QTest::addColumn<QStringList>("ids");
    QTest::newRow("good") << QStringLiteral("good") << 0 << QStringList();
    QTest::newRow("missing") << QStringLiteral("missing") << 2
                             << QStringList{QStringLiteral("unreachable")};
    // The page that says so is no document, and nothing more is said of it.
    QTest::newRow("forbidden") << QStringLiteral("forbidden") << 2
                               << QStringList{QStringLiteral("unreachable")};
    QTest::newRow("redirect") << QStringLiteral("moved") << 2
                              << QStringList{QStringLiteral("redirect")};
    QTest::newRow("empty") << QStringLiteral("empty") << 2
                           << QStringList{QStringLiteral("empty-document")};
}

void TestCheckProgram::documentFromTheNetwork()
{
    QFETCH(QString, path);
    QFETCH(int, exitCode);
    QFETCH(QStringList, ids);
    HttpServer server;
    server.serve(QStringLiteral("good"), Documents::launcher({}));
    server.serve(QStringLiteral("forbidden"), "<html><p>Forbidden<hr></html>", 403);
    server.serve(QStringLiteral("empty"), {});
    server.redirect(QStringLiteral("moved"), server.url(QStringLiteral("good")));
    const Run run = check({QStringLiteral("--json"), server.url(path)});
    QCOMPARE(run.exitCode, exitCode);
    QCOMPARE(idsIn(run), ids);
    QCOMPARE(server.requests(QStringLiteral("good")), path == QLatin1String("good") ? 1 : 0);
}

void TestCheckProgram::folderInPlaceOfTheDocument()
{
    HttpServer server;
    const QString hint = QStringLiteral("the address of a document ends in its name");
    QVERIFY(check({server.url(QStringLiteral("world/"))}).output.contains(hint));
    QVERIFY(!check({server.url(QStringLiteral("world/launcher.xml"))}).output.contains(hint));
}

void TestCheckProgram::noServers()
{
    const ScratchFolder folder;
    const QString none = QStringLiteral("  Servers, from left to right:\n    (none)\n");
    ScratchFolder::write(documentName, Documents::launcher({}));
    QVERIFY(check({documentName}).output.contains(none));
    ScratchFolder::write(documentName, manyThings);
    QVERIFY(!check({documentName}).output.contains(none));
}

// One that stands in another's place has another shape, most times.
void TestCheckProgram::swappedPicture()
{
    HttpServer server;
    const QString picture = server.url(QStringLiteral("slide.png"));
    server.serve(QStringLiteral("slide.png"), Documents::png(650, 650, 0));
    server.serve(documentName, Documents::launcher(
                                   {Documents::news(QStringLiteral("news"), QStringLiteral("t"),
                                                    QStringLiteral("d"), picture, server.url())}));
    const Run run = check({QStringLiteral("--deep"), server.url(documentName)});
    QVERIFY2(run.output.contains(
                 QStringLiteral("[picture-shape]\n    mend: if it is the right picture, cut it to "
                                "the proportions of its place, best to 1118 x 638\n")),
             qPrintable(run.output));
}

void TestCheckProgram::nobodyAnswers_data()
{
    QTest::addColumn<QString>("address");
    QTest::addColumn<QString>("mend");
    QTest::newRow("no server") << QStringLiteral("http://127.0.0.1:9/launcher.xml")
                               << QStringLiteral("start the web server, or mend the host and the "
                                                 "port of the address");
#ifndef Q_OS_WIN
    // Longer than any name: so nobody is asked, and it does not matter who would answer.
    const QString label = QString(60, QLatin1Char('x')) + QLatin1Char('.');
    QTest::newRow("no host")
        << QStringLiteral("http://%1example/launcher.xml").arg(label.repeated(4))
        << QStringLiteral("mend the host's name in the address");
#endif
}

void TestCheckProgram::nobodyAnswers()
{
    QFETCH(QString, address);
    QFETCH(QString, mend);
    const Run run = check({QStringLiteral("--json"), address});
    QCOMPARE(idsIn(run).constFirst(), QStringLiteral("unreachable"));
    QVERIFY2(run.output.contains(mend), qPrintable(run.output));
}

// What an operator reads of a picture that players do not see: what it is, and what to do.
void TestCheckProgram::picturesThatAreNone_data()
{
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<QString>("what");
    QTest::addColumn<QString>("mend");
    const QString another = QStringLiteral("another name alone changes nothing");
    QTest::newRow("page") << QByteArray("<!DOCTYPE html>\n<p>Sign in")
                          << QStringLiteral("a web page")
                          << QStringLiteral("the address of the file itself");
    QTest::newRow("WebP") << QByteArray("RIFF\x10\x00\x00\x00WEBPVP8 ", 16)
                          << QStringLiteral("WebP, which the launcher does not know") << another;
    QTest::newRow("AVIF") << QByteArray("\x00\x00\x00\x20"
                                        "ftypavif",
                                        12)
                          << QStringLiteral("AVIF or HEIC, which") << another;
    QTest::newRow("SVG") << QByteArray("<?xml version='1.0'?><svg/>")
                         << QStringLiteral("SVG, which") << another;
    QTest::newRow("cut") << Documents::png(40, 40, 0).left(40)
                         << QStringLiteral("damaged, or breaks off")
                         << QStringLiteral("upload it again");
    QTest::newRow("text") << QByteArray("tile one") << QStringLiteral("no picture")
                          << QStringLiteral("publish a PNG or JPEG file");
}

void TestCheckProgram::picturesThatAreNone()
{
    QFETCH(QByteArray, body);
    QFETCH(QString, what);
    QFETCH(QString, mend);
    HttpServer server;
    const QString picture = server.url(QStringLiteral("p.png"));
    server.serve(QStringLiteral("p.png"), body);
    server.serve(documentName, Documents::launcher(
                                   {Documents::news(QStringLiteral("news"), QStringLiteral("t"),
                                                    QStringLiteral("d"), picture, server.url())}));
    const Run run = check({QStringLiteral("--deep"), server.url(documentName)});
    const QString said = findingsPart(run.output);
    QVERIFY2(said.contains(QStringLiteral("the picture %1 is %2").arg(picture, what)),
             qPrintable(said));
    QVERIFY2(said.contains(QStringLiteral("[not-a-picture]\n    mend: ")) && said.contains(mend),
             qPrintable(said));
}

void TestCheckProgram::logosLieBesideTheDocument()
{
    const ScratchFolder folder;
    HttpServer server;
    const QByteArray document = Documents::launcher(
        {Documents::client(QStringLiteral("S"), QStringLiteral("Official"), QStringLiteral("1.0"),
                           server.url(QStringLiteral("1.zip")))});
    server.serve(QStringLiteral("world/launcher.xml"), document);
    ScratchFolder::write(documentName, document);

    const QString logo = QStringLiteral("world/S.png");
    (void)check({QStringLiteral("--deep"), server.url(QStringLiteral("world/launcher.xml"))});
    QCOMPARE(server.requests(logo), 1);
    (void)check({QStringLiteral("--deep"), QStringLiteral("--base"),
                 server.url(QStringLiteral("world/")), documentName});
    QCOMPARE(server.requests(logo), 2);
    (void)check({documentName});
    QCOMPARE(server.requests(logo), 2);
}

// Where logos lie is a guess when a file is checked: whoever reads that one is missing has to know.
void TestCheckProgram::missingLogoOfAFile()
{
    const ScratchFolder folder;
    HttpServer server;
    server.serve(QStringLiteral("1.zip"), Archives::zip({{QStringLiteral("game.exe"), "game"}}));
    ScratchFolder::write(documentName,
                         Documents::launcher({Documents::client(
                             QStringLiteral("S"), QStringLiteral("Official"), QStringLiteral("1.0"),
                             server.url(QStringLiteral("1.zip")))}));
    const QString hint = QStringLiteral("; without --base logos are looked for at ");
    const Run assumed = check({QStringLiteral("--deep"), documentName});
    QCOMPARE(assumed.output.count(hint), 1);
    QVERIFY(assumed.output.contains(hint + QStringLiteral(EMBERWAKE_BASE_URL)));
    const Run named =
        check({QStringLiteral("--deep"), QStringLiteral("--base"), server.url(), documentName});
    QVERIFY(named.output.contains(QStringLiteral("[unreachable]")));
    QVERIFY(named.output.contains(QStringLiteral("the server's name with .png, capital letters")));
    QVERIFY(!named.output.contains(hint));
}

void TestCheckProgram::archiveThatDoesNotArrive_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("id");
    QTest::addColumn<QString>("said");
    QTest::newRow("cut") << QStringLiteral("cut.zip") << QStringLiteral("unreachable")
                         << QStringLiteral("compare the file on the server with yours");
    QTest::newRow("forbidden") << QStringLiteral("forbidden.zip") << QStringLiteral("unreachable")
                               << QStringLiteral("the launcher has no password");
    QTest::newRow("fault") << QStringLiteral("fault.zip") << QStringLiteral("unreachable")
                           << QStringLiteral("look into the server's log");
    QTest::newRow("missing") << QStringLiteral("missing.zip") << QStringLiteral("unreachable")
                             << QStringLiteral("publish the file, or mend the address, in which "
                                               "capital letters count");
    QTest::newRow("refused") << QStringLiteral("refused.zip") << QStringLiteral("archive-refused")
                             << QStringLiteral("pack it anew without that, with Deflate");
    QTest::newRow("page") << QStringLiteral("page.zip") << QStringLiteral("archive-broken")
                          << QStringLiteral("is a web page: the download fails");
}

void TestCheckProgram::archiveThatDoesNotArrive()
{
    QFETCH(QString, path);
    QFETCH(QString, id);
    QFETCH(QString, said);
    HttpServer server;
    server.serve(QStringLiteral("S.png"), Documents::png(4, 4, 0));
    server.serveCut(QStringLiteral("cut.zip"), QByteArray(5000, 'x'), 1000);
    server.serve(QStringLiteral("forbidden.zip"), "no", 403);
    server.serve(QStringLiteral("fault.zip"), "no", 503);
    server.serveWithoutLength(QStringLiteral("page.zip"), "\n<!DOCTYPE html>\n<p>Sign in");
    server.serve(QStringLiteral("refused.zip"),
                 Archives::zip({{QStringLiteral("xx/game.exe"), "#!game"}}).replace("xx/", "../"));
    server.serve(
        documentName,
        Documents::launcher({Documents::client(QStringLiteral("S"), QStringLiteral("Official"),
                                               QStringLiteral("1.0"), server.url(path))}));
    const Run run =
        check({QStringLiteral("--deep"), QStringLiteral("--json"), server.url(documentName)});
    QCOMPARE(idsIn(run), QStringList{id});
    QVERIFY2(run.output.contains(said), qPrintable(run.output));
}

void TestCheckProgram::deepWithoutFault()
{
    HttpServer server;
    const QByteArray archive = Archives::zip({{QStringLiteral("game.exe"), "#!game"}});
    server.serve(QStringLiteral("1.zip"), archive);
    server.serve(QStringLiteral("S.png"), Documents::png(4, 4, 0));
    server.serve(documentName, Documents::launcher({Documents::client(
                                   QStringLiteral("S"), QStringLiteral("Official"),
                                   QStringLiteral("1.0"), server.url(QStringLiteral("1.zip")))}));
    const Run good = check({QStringLiteral("--deep"), server.url(documentName)});
    const QString size = QStringLiteral("%1 bytes").arg(archive.size());
    const QString room = QStringLiteral("%1 bytes").arg(archive.size() + 6);
    QVERIFY2(good.output.contains(QStringLiteral("/1.zip  ") + size) &&
                 good.output.contains(QStringLiteral(", unpacks to 1 file of 6 bytes, needs ") +
                                      room + QStringLiteral(" of free space\n")),
             qPrintable(good.output));
    const QString end = findingsPart(good.output);
    QVERIFY2(end.startsWith(QStringLiteral("fetched 3 of 3 files, ")), qPrintable(end));
    QVERIFY2(end.endsWith(QStringLiteral("s; the largest client needs %1 of free space\n"
                                         "0 errors, 0 warnings\n")
                              .arg(room)),
             qPrintable(end));
    QVERIFY(good.output.contains(
        QStringLiteral("\n  Play starts:\n    S  Official 1.0: game.exe\n\n")));
    QCOMPARE(good.exitCode, 0);
    // Nothing but findings on a console that nobody watches.
    QCOMPARE(good.error, QString());

    server.serve(QStringLiteral("1.zip"), archive.left(archive.size() - 30));
    const Run cut =
        check({QStringLiteral("--deep"), QStringLiteral("--json"), server.url(documentName)});
    QCOMPARE(idsIn(cut), QStringList{QStringLiteral("archive-broken")});
    QVERIFY(cut.output.contains(QStringLiteral("upload it whole, and compare its size")));
    QCOMPARE(cut.exitCode, 2);
}

void TestCheckProgram::silentServerIsGivenUp()
{
    HttpServer server;
    server.serveHeld(documentName, Documents::launcher({}), 10);
    QElapsedTimer time;
    time.start();
    const Run run = check({QStringLiteral("--timeout"), QStringLiteral("1"),
                           QStringLiteral("--json"), server.url(documentName)});
    VERIFY_RELATION(time.elapsed(), <, 20000);
    QCOMPARE(run.exitCode, 2);
    QCOMPARE(idsIn(run).constFirst(), QStringLiteral("unreachable"));
    QVERIFY(run.output.contains(QStringLiteral("nothing came for 1 seconds")));
}

void TestCheckProgram::endlessPictureIsGivenUp()
{
    HttpServer server;
    server.serveLarge(QStringLiteral("p.png"), 1024LL * 1024 * 1024);
    server.serve(documentName, Documents::launcher({Documents::news(
                                   QStringLiteral("news"), QStringLiteral("t"), QStringLiteral("d"),
                                   server.url(QStringLiteral("p.png")), server.url())}));
    const Run run =
        check({QStringLiteral("--deep"), QStringLiteral("--json"), server.url(documentName)});
    QCOMPARE(idsIn(run), QStringList{QStringLiteral("unreachable")});
    QVERIFY(run.output.contains(QStringLiteral("it is longer than 32 MiB")));
}

void TestCheckProgram::certificates_data()
{
    QTest::addColumn<QByteArray>("server");
    QTest::addColumn<bool>("trusted");
    QTest::newRow("own") << QByteArray("EMBERWAKE_TEST_HTTPS") << true;
    QTest::newRow("stranger") << QByteArray("EMBERWAKE_TEST_STRANGER") << false;
}

void TestCheckProgram::certificates()
{
#ifdef Q_OS_WIN
    QSKIP("Wine knows the system's own list of authorities only");
#endif
    QFETCH(QByteArray, server);
    QFETCH(bool, trusted);
    const ScratchFolder folder;
    ScratchFolder::write(QStringLiteral("authority.pem"), qgetenv("EMBERWAKE_TEST_AUTHORITY"));
    ScratchFolder::write(
        documentName,
        Documents::launcher({Documents::client(
            QStringLiteral("S"), QStringLiteral("Official"), QStringLiteral("1.0"),
            qEnvironmentVariable(server.constData()) + QStringLiteral("client.zip"))}));
    const Run run =
        check({QStringLiteral("--deep"), QStringLiteral("--json"), QStringLiteral("--authority"),
               QStringLiteral("authority.pem"), QStringLiteral("--base"),
               QStringLiteral("http://127.0.0.1:9/"), documentName});
    // What is served there is no archive, which only who trusts the server can know.
    QCOMPARE(idsIn(run),
             (QStringList{QStringLiteral("unreachable"), trusted ? QStringLiteral("archive-broken")
                                                                 : QStringLiteral("tls-error")}));
    QCOMPARE(run.output.contains(QStringLiteral("for a try, --authority trusts one of your own")),
             !trusted);
}

void TestCheckProgram::startsNoOtherProgram()
{
#ifdef Q_OS_WIN
    QSKIP("the search path is also where the program finds its libraries");
#endif
    HttpServer server;
    server.serve(QStringLiteral("1.zip"), Archives::zip({{QStringLiteral("game.exe"), "#!game"}}));
    server.serve(QStringLiteral("S.png"), Documents::png(4, 4, 0));
    server.serve(documentName, Documents::launcher({Documents::client(
                                   QStringLiteral("S"), QStringLiteral("Official"),
                                   QStringLiteral("1.0"), server.url(QStringLiteral("1.zip")))}));
    const Run run =
        check({QStringLiteral("--deep"), QStringLiteral("--json"), server.url(documentName)},
              {QStringLiteral("PATH=/nowhere")});
    QCOMPARE(idsIn(run), QStringList());
    QCOMPARE(run.exitCode, 0);
    const QJsonArray starts = QJsonDocument::fromJson(run.output.toUtf8())
                                  .object()
                                  .value(QStringLiteral("players"))
                                  .toObject()
                                  .value(QStringLiteral("starts"))
                                  .toArray();
    QCOMPARE(QJsonDocument(starts).toJson(QJsonDocument::Compact),
             QByteArray(R"([{"client":"Official","programs":["game.exe"],"server":"S",)"
                        R"("version":"1.0"}])"));
}

QTEST_GUILESS_MAIN(TestCheckProgram)
#include "tst_checkprogram.moc"
