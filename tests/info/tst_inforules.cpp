#include "info/clientinfo.h"
#include "info/launcherdocumentreader.h"
#include "info/serverpanel.h"
#include "info/settings.h"
#include "support/documents.h"
#include "support/messagelog.h"
#include "support/relation.h"

#include <QCryptographicHash>
#include <QElapsedTimer>
#include <QRegularExpression>
#include <QTest>

namespace
{
const char sumOfNothing[] = "da39a3ee5e6b4b0d3255bfef95601890afd80709";

// Notes everything that the document says, one line each.
class Notes : public LauncherDocumentHandler
{
public:
    void elementStarted(const QString &name) override
    {
        lines << QStringLiteral("element ") + name;
    }
    void launcherVersion(int version) override
    {
        lines << QStringLiteral("version %1").arg(version);
    }
    void client(const ClientInfo &info) override
    {
        lines << QStringLiteral("client ") +
                     QStringList{info.server, info.client, info.version, info.url, info.auth}.join(
                         QLatin1Char('|'));
    }
    void homeNews(int index, const NewsEntry &entry) override
    {
        lines << QStringLiteral("slide %1 ").arg(index) + text(entry);
    }
    void news(int index, const NewsEntry &entry) override
    {
        lines << QStringLiteral("tile %1 ").arg(index) + text(entry);
    }
    void brokenClient() override { lines << QStringLiteral("broken client"); }
    void brokenNews() override { lines << QStringLiteral("broken news"); }

    // Without the names of the elements.
    QStringList said() const
    {
        QStringList others;
        for (const QString &line : lines) {
            if (!line.startsWith(QStringLiteral("element "))) {
                others << line;
            }
        }
        return others;
    }

    QStringList lines;

private:
    static QString text(const NewsEntry &entry)
    {
        return QStringList{entry.title, entry.description, entry.imageUrl, entry.clickUrl}.join(
            QLatin1Char('|'));
    }
};

// Notes what only an operator is told, one line each.
class Places : public LauncherDocumentObserver
{
public:
    void elementWritten(const DocumentElement &element) override { note("at", element); }
    void hiddenClient(const ClientInfo &info) override
    {
        places << QStringLiteral("hidden ") + info.server;
    }
    void readingEnded(const DocumentEnd &end) override
    {
        places << QStringLiteral("end %1").arg(end.reason);
    }
    void elementLost(const DocumentElement &element) override { note("lost", element); }
    void restIsNotXml(const DocumentEnd &end) override
    {
        places << QStringLiteral("rest is no XML %1").arg(end.line);
    }

    QStringList places;

private:
    void note(const char *word, const DocumentElement &element)
    {
        places << QStringLiteral("%1 %2 %3:%4")
                      .arg(QLatin1String(word), element.name)
                      .arg(element.line)
                      .arg(element.column);
    }
};

QStringList placesIn(const QString &document)
{
    Notes notes;
    Places places;
    readLauncherDocument(document, QStringLiteral("code"), notes, &places);
    return places.places;
}

QStringList linesOf(const QString &document, const QString &code = {})
{
    Notes notes;
    readLauncherDocument(document, code, notes);
    return notes.lines;
}

QStringList saidBy(const QString &document, const QString &code = {})
{
    Notes notes;
    readLauncherDocument(document, code, notes);
    return notes.said();
}

// Behind a client that is read; then one that is not.
QString withElement(const QString &element)
{
    return QStringLiteral("<l>") +
           Documents::client(QStringLiteral("A"), QStringLiteral("O"), QStringLiteral("1"),
                             QStringLiteral("u")) +
           element +
           Documents::client(QStringLiteral("Z"), QStringLiteral("O"), QStringLiteral("1"),
                             QStringLiteral("u")) +
           QStringLiteral("</l>");
}

QString withAttributes(const char *begin, int count, const char *end = "/>")
{
    QString element = QLatin1String(begin);
    for (int i = 0; i < count; ++i) {
        element += QStringLiteral(" a%1='>'").arg(i);
    }
    return element + QLatin1String(end);
}

QString inLauncher(const QString &elements)
{
    return QStringLiteral("<launcher>") + elements + QStringLiteral("</launcher>");
}

QString clientElement(const QString &server)
{
    return Documents::client(server, QStringLiteral("Official"), QStringLiteral("1.0"),
                             QStringLiteral("u"));
}

QString newsElement(const QString &kind, const QString &title,
                    const QString &description = QStringLiteral("d"))
{
    return Documents::news(kind, title, description, QStringLiteral("i"), QStringLiteral("c"));
}

QString slides(int count)
{
    return newsElement(QStringLiteral("homenews"), QStringLiteral("s")).repeated(count);
}

QString tiles(int count)
{
    return newsElement(QStringLiteral("news"), QStringLiteral("t")).repeated(count);
}
} // namespace

// The rules of info/ that need no window: the settings line, the document and the panel's numbers.
class TestInfoRules : public QObject
{
    Q_OBJECT

private slots:
    void settingsAreEmptyAndRememberByDefault();
    void settingsLineIsRead_data();
    void settingsLineIsRead();
    void settingsLineIsWritten_data();
    void settingsLineIsWritten();
    void settingsForDiagnostics();
    void clientInfoTakesItsFieldsInOrder();

    void bodyIsDecoded_data();
    void bodyIsDecoded();
    void leadingQuestionMark_data();
    void leadingQuestionMark();
    void latin1Detour_data();
    void latin1Detour();
    void sumOfCode_data();
    void sumOfCode();

    void wholeDocumentIsRead();
    void elementsAreKnownByNameAlone_data();
    void elementsAreKnownByNameAlone();
    void launcherVersion_data();
    void launcherVersion();
    void missingServerAndNameAreEmpty();
    void presentButEmptyAttributesAreEnough();
    void auth_data();
    void auth();
    void slidesAloneTakeTheDetour();
    void atMostNineSlidesAndTiles_data();
    void atMostNineSlidesAndTiles();
    void brokenElementEndsTheReading_data();
    void brokenElementEndsTheReading();
    void brokenSurplusSlideEndsTheReading();
    void readingEndsWhereTheTextIsNoXml_data();
    void readingEndsWhereTheTextIsNoXml();
    void everyCutKeepsWhatCameBefore();

    void tooManyAttributesEndTheReading_data();
    void tooManyAttributesEndTheReading();
    void quotesElsewhereAreNoAttributes();
    void manyAttributesCostNoTime();

    void elementsAreToldWithTheirPlaces_data();
    void elementsAreToldWithTheirPlaces();
    void elementsAreToldToThoseWhoWantThemOnly();
    void theRestIsToldWithoutBeingRead_data();
    void theRestIsToldWithoutBeingRead();

    void clientButtons_data();
    void clientButtons();
    void columnOrder_data();
    void columnOrder();
    void sizes_data();
    void sizes();
    void placesOfTheDesign();
    void placesAtAnySize();
    void selectionKeys_data();
    void selectionKeys();
    void styleSheets_data();
    void styleSheets();
    void onlyTheBetaSheetWarns_data();
    void onlyTheBetaSheetWarns();
};

void TestInfoRules::settingsAreEmptyAndRememberByDefault()
{
    const Settings settings;
    QCOMPARE(settings.server, QString());
    QCOMPARE(settings.client, QString());
    QCOMPARE(settings.auth, QString());
    QCOMPARE(settings.rememberSettings, true);

    const Settings withoutCode(QStringLiteral("S"), QStringLiteral("C"), false);
    QCOMPARE(withoutCode.server, QStringLiteral("S"));
    QCOMPARE(withoutCode.client, QStringLiteral("C"));
    QCOMPARE(withoutCode.auth, QString());
    QCOMPARE(withoutCode.rememberSettings, false);
}

void TestInfoRules::settingsLineIsRead_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QStringList>("texts"); // server, client, code
    QTest::addColumn<bool>("remember");
    const auto row = [](const char *name, const char *line, const QStringList &texts,
                        bool remember) {
        QTest::newRow(name) << QString::fromUtf8(line) << texts << remember;
    };
    const QString none;
    const QString alpha = QStringLiteral("Alpha");
    const QString official = QStringLiteral("Official");
    const QString code = QStringLiteral("code");

    row("four fields in order", "Alpha|Official|true|code", {alpha, official, code}, true);
    row("the flag word false", "Alpha|Official|false|code", {alpha, official, code}, false);
    row("three fields leave the code empty", "Alpha|Official|true", {alpha, official, none}, true);
    row("an empty fourth field is an empty code", "Alpha|Official|true|", {alpha, official, none},
        true);
    row("a fifth field is ignored", "Alpha|Official|true|code|more", {alpha, official, code}, true);
    row("many more fields are ignored", "Alpha|Official|true|code|a|b|c", {alpha, official, code},
        true);
    row("True with a capital letter is false", "Alpha|Official|True|code", {alpha, official, code},
        false);
    row("TRUE in capitals is false", "Alpha|Official|TRUE|code", {alpha, official, code}, false);
    row("the number 1 is false", "Alpha|Official|1|code", {alpha, official, code}, false);
    row("true after a blank is false", "Alpha|Official| true|code", {alpha, official, code}, false);
    row("an empty flag is false", "Alpha|Official||code", {alpha, official, code}, false);
    row("two fields leave the flag false", "Alpha|Official", {alpha, official, none}, false);
    row("one field is the server", "Alpha", {alpha, none, none}, false);
    row("an empty text is all empty and false", "", {none, none, none}, false);
    row("empty fields keep their places", "||true|", {none, none, none}, true);
    row("a line end in the third field makes it false", "Alpha|Official|true\n",
        {alpha, official, none}, false);
    row("a line end in the fourth field belongs to the code", "Alpha|Official|true|code\n",
        {alpha, official, QStringLiteral("code\n")}, true);
    row("blanks belong to the fields", " Alpha | Official |true| code ",
        {QStringLiteral(" Alpha "), QStringLiteral(" Official "), QStringLiteral(" code ")}, true);
}

void TestInfoRules::settingsLineIsRead()
{
    QFETCH(QString, line);
    QFETCH(QStringList, texts);
    QFETCH(bool, remember);
    const Settings settings = parseSettings(line);
    QCOMPARE((QStringList{settings.server, settings.client, settings.auth}), texts);
    QCOMPARE(settings.rememberSettings, remember);
}

void TestInfoRules::settingsLineIsWritten_data()
{
    QTest::addColumn<QStringList>("texts"); // server, client, code
    QTest::addColumn<bool>("remember");
    QTest::addColumn<QString>("line");
    QTest::addColumn<bool>("readBackAlike");
    const QString none;
    const QString alpha = QStringLiteral("Alpha");
    const QString beta = QStringLiteral("Beta");

    QTest::newRow("a choice without a code ends in a bar")
        << QStringList{alpha, beta, none} << true << QStringLiteral("Alpha|Beta|true|") << true;
    QTest::newRow("a choice with a code")
        << QStringList{alpha, beta, QStringLiteral("code")} << false
        << QStringLiteral("Alpha|Beta|false|code") << true;
    QTest::newRow("nothing chosen yet")
        << QStringList{none, none, none} << true << QStringLiteral("||true|") << true;
    QTest::newRow("letters beyond ASCII")
        << QStringList{QString::fromUtf8("\xC3\x84\xD0\x96"), beta,
                       QString::fromUtf8("\xE2\x82\xAC")}
        << true << QString::fromUtf8("\xC3\x84\xD0\x96|Beta|true|\xE2\x82\xAC") << true;
    QTest::newRow("a bar in the server's name is not escaped and shifts the fields")
        << QStringList{QStringLiteral("A|B"), beta, none} << true
        << QStringLiteral("A|B|Beta|true|") << false;
    QTest::newRow("a bar in the code is not escaped and cuts it")
        << QStringList{alpha, beta, QStringLiteral("a|b")} << true
        << QStringLiteral("Alpha|Beta|true|a|b") << false;
}

void TestInfoRules::settingsLineIsWritten()
{
    QFETCH(QStringList, texts);
    QFETCH(bool, remember);
    QFETCH(QString, line);
    QFETCH(bool, readBackAlike);
    const Settings settings(texts[0], texts[1], remember, texts[2]);
    QCOMPARE(formatSettings(settings), line);

    const Settings again = parseSettings(line);
    const bool alike = again.server == texts[0] && again.client == texts[1] &&
                       again.auth == texts[2] && again.rememberSettings == remember;
    QCOMPARE(alike, readBackAlike);
}

void TestInfoRules::settingsForDiagnostics()
{
    QCOMPARE(Settings(QStringLiteral("Alpha"), QStringLiteral("Beta"), true, QStringLiteral("code"))
                 .toString(),
             QStringLiteral("Alpha, Beta, true, code"));
    QCOMPARE(Settings(QStringLiteral("Alpha"), QStringLiteral("Beta"), false).toString(),
             QStringLiteral("Alpha, Beta, false, "));
}

void TestInfoRules::clientInfoTakesItsFieldsInOrder()
{
    const ClientInfo info(QStringLiteral("v"), QStringLiteral("u"), QStringLiteral("c"),
                          QStringLiteral("s"), QStringLiteral("a"));
    QCOMPARE(info.version, QStringLiteral("v"));
    QCOMPARE(info.url, QStringLiteral("u"));
    QCOMPARE(info.client, QStringLiteral("c"));
    QCOMPARE(info.server, QStringLiteral("s"));
    QCOMPARE(info.auth, QStringLiteral("a"));

    const ClientInfo open(QStringLiteral("v"), QStringLiteral("u"), QStringLiteral("c"),
                          QStringLiteral("s"));
    QCOMPARE(open.auth, QString());

    const ClientInfo empty;
    QVERIFY(empty.version.isEmpty() && empty.url.isEmpty() && empty.client.isEmpty() &&
            empty.server.isEmpty() && empty.auth.isEmpty());
}

void TestInfoRules::bodyIsDecoded_data()
{
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<QString>("text");
    QTest::newRow("an empty body is an empty text") << QByteArray() << QString();
    QTest::newRow("ASCII stays") << QByteArray("<launcher/>") << QStringLiteral("<launcher/>");
    QTest::newRow("UTF-8 is decoded") << QByteArray("\xC3\xA9\xD0\x96\xF0\x9F\x94\xA5")
                                      << QString::fromUcs4(U"\u00E9\u0416\U0001F525");
    QTest::newRow("the text ends at the first NUL byte")
        << QByteArray("be\0fore\0after", 13) << QStringLiteral("be");
    QTest::newRow("nothing is left of a body that starts with NUL")
        << QByteArray("\0<launcher/>", 12) << QString();
    QTest::newRow("a byte that is no UTF-8 becomes a replacement mark")
        << QByteArray("a\xFF"
                      "b")
        << QString::fromUcs4(U"a\uFFFDb");
    QTest::newRow("a byte order mark is no text")
        << QByteArray("\xEF\xBB\xBF<launcher/>") << QStringLiteral("<launcher/>");
}

void TestInfoRules::bodyIsDecoded()
{
    QFETCH(QByteArray, body);
    QFETCH(QString, text);
    QCOMPARE(decodeLauncherDocument(body), text);
}

void TestInfoRules::leadingQuestionMark_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("result");
    QTest::newRow("one at the start goes") << QStringLiteral("?News") << QStringLiteral("News");
    QTest::newRow("only one goes") << QStringLiteral("??News") << QStringLiteral("?News");
    QTest::newRow("one alone leaves nothing") << QStringLiteral("?") << QString();
    QTest::newRow("one further on stays") << QStringLiteral("News?") << QStringLiteral("News?");
    QTest::newRow("one after a blank stays")
        << QStringLiteral(" ?News") << QStringLiteral(" ?News");
    QTest::newRow("a text without one stays") << QStringLiteral("News") << QStringLiteral("News");
    QTest::newRow("an empty text stays") << QString() << QString();
}

void TestInfoRules::leadingQuestionMark()
{
    QFETCH(QString, text);
    QFETCH(QString, result);
    QCOMPARE(withoutLeadingQuestionMark(text), result);
}

void TestInfoRules::latin1Detour_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("result");
    QTest::newRow("ASCII stays") << QStringLiteral("News 1!") << QStringLiteral("News 1!");
    QTest::newRow("an accented letter becomes a replacement mark")
        << QString::fromUcs4(U"Caf\u00E9") << QString::fromUcs4(U"Caf\uFFFD");
    QTest::newRow("an accented letter amid others becomes one mark")
        << QString::fromUcs4(U"Fr\u00FChling") << QString::fromUcs4(U"Fr\uFFFDhling");
    QTest::newRow("a letter beyond Latin-1 becomes a question mark")
        << QString::fromUcs4(U"a\u0416b") << QStringLiteral("a?b");
    QTest::newRow("two letters that happen to be UTF-8 become the one they spell")
        << QString::fromUcs4(U"\u00C3\u00A9") << QString::fromUcs4(U"\u00E9");
    QTest::newRow("the text ends at a NUL")
        << QStringLiteral("a") + QChar(0) + QStringLiteral("b") << QStringLiteral("a");
    QTest::newRow("an empty text stays") << QString() << QString();
}

void TestInfoRules::latin1Detour()
{
    QFETCH(QString, text);
    QFETCH(QString, result);
    QCOMPARE(throughLatin1(text), result);
}

void TestInfoRules::sumOfCode_data()
{
    QTest::addColumn<QString>("code");
    QTest::addColumn<QString>("sum");
    // The first two are the algorithm's published examples.
    QTest::newRow("the empty code") << QString() << QString::fromLatin1(sumOfNothing);
    QTest::newRow("letters") << QStringLiteral("abc")
                             << QStringLiteral("a9993e364706816aba3e25717850c26c9cd0d89d");
    QTest::newRow("letters beyond ASCII are summed as UTF-8")
        << QString::fromUcs4(U"\u00FC")
        << QString::fromLatin1(
               QCryptographicHash::hash("\xC3\xBC", QCryptographicHash::Sha1).toHex());
}

void TestInfoRules::sumOfCode()
{
    QFETCH(QString, code);
    QFETCH(QString, sum);
    QCOMPARE(authCodeSum(code), sum);
}

void TestInfoRules::wholeDocumentIsRead()
{
    const QString document = QStringLiteral(
        "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>\n"
        "<launcher version=\"3\">\n"
        "  <client server=\"Alpha\" name=\"Official\" version=\"1.0\" url=\"http://a/1.zip\"/>\n"
        "  <client server=\"Beta\" name=\"Beta\" version=\"2.1\" url=\"http://b/2.zip\"/>\n"
        "  <homenews id=\"1\" title=\"H\" description=\"Hd\" imageUrl=\"Hi\" clickUrl=\"Hc\"/>\n"
        "  <news id=\"2\" title=\"N\" description=\"Nd\" imageUrl=\"Ni\" clickUrl=\"Nc\"/>\n"
        "  <homenews id=\"3\" title=\"I\" description=\"Id\" imageUrl=\"Ii\" clickUrl=\"Ic\"/>\n"
        "</launcher>\n");
    const QStringList expected{QStringLiteral("element launcher"),
                               QStringLiteral("version 3"),
                               QStringLiteral("element client"),
                               QStringLiteral("client Alpha|Official|1.0|http://a/1.zip|"),
                               QStringLiteral("element client"),
                               QStringLiteral("client Beta|Beta|2.1|http://b/2.zip|"),
                               QStringLiteral("element homenews"),
                               QStringLiteral("slide 0 H|Hd|Hi|Hc"),
                               QStringLiteral("element news"),
                               QStringLiteral("tile 0 N|Nd|Ni|Nc"),
                               QStringLiteral("element homenews"),
                               QStringLiteral("slide 1 I|Id|Ii|Ic")};
    QCOMPARE(linesOf(document), expected);
}

void TestInfoRules::elementsAreKnownByNameAlone_data()
{
    QTest::addColumn<QString>("document");
    QTest::addColumn<QStringList>("lines");
    const QString alpha = clientElement(QStringLiteral("A"));
    const QString readAlpha = QStringLiteral("client A|Official|1.0|u|");
    const QString client = QStringLiteral("element client");

    QTest::newRow("a client as the root") << alpha << QStringList{client, readAlpha};
    QTest::newRow("a client under another root")
        << QStringLiteral("<catalogue>") + alpha + QStringLiteral("</catalogue>")
        << QStringList{QStringLiteral("element catalogue"), client, readAlpha};
    QTest::newRow("a client in a client")
        << QStringLiteral("<client version=\"2\" url=\"v\">") + alpha + QStringLiteral("</client>")
        << QStringList{client, QStringLiteral("client ||2|v|"), client, readAlpha};
    QTest::newRow("a launcher below a client")
        << QStringLiteral("<client version=\"2\" url=\"v\"><launcher version=\"4\"/></client>")
        << QStringList{client, QStringLiteral("client ||2|v|"), QStringLiteral("element launcher"),
                       QStringLiteral("version 4")};
    QTest::newRow("texts, comments and instructions between")
        << QStringLiteral("<launcher>text<!-- <client/> --><?go?><![CDATA[<client/>]]>") + alpha +
               QStringLiteral("</launcher>")
        << QStringList{QStringLiteral("element launcher"), QStringLiteral("version 0"), client,
                       readAlpha};
    QTest::newRow("an unknown element is only named")
        << QStringLiteral("<launcher><weather id=\"1\" title=\"x\"/>") + alpha +
               QStringLiteral("</launcher>")
        << QStringList{QStringLiteral("element launcher"), QStringLiteral("version 0"),
                       QStringLiteral("element weather"), client, readAlpha};
    QTest::newRow("names differ by case")
        << QStringLiteral("<Launcher version=\"9\"><Client/><HomeNews/><NEWS/></Launcher>")
        << QStringList{QStringLiteral("element Launcher"), QStringLiteral("element Client"),
                       QStringLiteral("element HomeNews"), QStringLiteral("element NEWS")};
    QTest::newRow("a prefix is not part of the name")
        << QStringLiteral("<e:launcher xmlns:e=\"urn:e\" version=\"2\"><e:client server=\"A\" "
                          "name=\"Official\" version=\"1.0\" url=\"u\"/></e:launcher>")
        << QStringList{QStringLiteral("element launcher"), QStringLiteral("version 2"), client,
                       readAlpha};
    QTest::newRow("further attributes are ignored")
        << QStringLiteral("<client size=\"5\" server=\"A\" name=\"Official\" version=\"1.0\" "
                          "url=\"u\" since=\"x\"/>")
        << QStringList{client, readAlpha};
}

void TestInfoRules::elementsAreKnownByNameAlone()
{
    QFETCH(QString, document);
    QFETCH(QStringList, lines);
    QCOMPARE(linesOf(document), lines);
}

void TestInfoRules::launcherVersion_data()
{
    QTest::addColumn<QString>("attribute");
    QTest::addColumn<int>("version");
    QTest::newRow("a number") << QStringLiteral("version=\"2\"") << 2;
    QTest::newRow("a number of several digits") << QStringLiteral("version=\"120\"") << 120;
    QTest::newRow("a leading zero is no other base") << QStringLiteral("version=\"010\"") << 10;
    QTest::newRow("a negative number") << QStringLiteral("version=\"-3\"") << -3;
    QTest::newRow("missing") << QString() << 0;
    QTest::newRow("empty") << QStringLiteral("version=\"\"") << 0;
    QTest::newRow("a word") << QStringLiteral("version=\"new\"") << 0;
    QTest::newRow("a fraction") << QStringLiteral("version=\"2.5\"") << 0;
    QTest::newRow("hexadecimal") << QStringLiteral("version=\"0x10\"") << 0;
    QTest::newRow("too great for an integer") << QStringLiteral("version=\"99999999999\"") << 0;
    QTest::newRow("another attribute") << QStringLiteral("Version=\"2\"") << 0;
}

void TestInfoRules::launcherVersion()
{
    QFETCH(QString, attribute);
    QFETCH(int, version);
    QCOMPARE(saidBy(QStringLiteral("<launcher %1/>").arg(attribute)),
             QStringList{QStringLiteral("version %1").arg(version)});
}

void TestInfoRules::missingServerAndNameAreEmpty()
{
    QCOMPARE(saidBy(QStringLiteral("<client version=\"1.0\" url=\"u\"/>")),
             QStringList{QStringLiteral("client ||1.0|u|")});
}

void TestInfoRules::presentButEmptyAttributesAreEnough()
{
    QCOMPARE(saidBy(QStringLiteral(
                 "<x><client version=\"\" url=\"\"/><homenews id=\"\" title=\"\" description=\"\" "
                 "imageUrl=\"\" clickUrl=\"\"/><news id=\"\" title=\"\" description=\"\" "
                 "imageUrl=\"\" clickUrl=\"\"/></x>")),
             (QStringList{QStringLiteral("client ||||"), QStringLiteral("slide 0 |||"),
                          QStringLiteral("tile 0 |||")}));
}

void TestInfoRules::auth_data()
{
    QTest::addColumn<QString>("code");
    QTest::addColumn<QString>("attribute"); // null: none
    QTest::addColumn<bool>("offered");
    const QString abc = QStringLiteral("abc");
    const QString sum = QStringLiteral("a9993e364706816aba3e25717850c26c9cd0d89d");
    const QString ofNothing = QString::fromLatin1(sumOfNothing);
    const QString umlaut = QString::fromUcs4(U"\u00FC");

    QTest::newRow("no attribute and no code") << QString() << QString() << true;
    QTest::newRow("no attribute but a code") << abc << QString() << true;
    QTest::newRow("the sum in lower case") << abc << sum << true;
    QTest::newRow("the sum in upper case") << abc << sum.toUpper() << true;
    QTest::newRow("the sum in mixed case") << abc << sum.left(20) + sum.mid(20).toUpper() << true;
    QTest::newRow("the sum of another code") << QStringLiteral("abd") << sum << false;
    QTest::newRow("the code itself") << abc << abc << false;
    QTest::newRow("the code in another case") << QStringLiteral("ABC") << sum << false;
    QTest::newRow("a sum but no code") << QString() << sum << false;
    QTest::newRow("the sum of nothing and no code") << QString() << ofNothing << true;
    QTest::newRow("the sum of nothing in upper case and no code")
        << QString() << ofNothing.toUpper() << true;
    QTest::newRow("the sum of nothing but a code") << abc << ofNothing << false;
    QTest::newRow("an empty attribute and no code") << QString() << QStringLiteral("") << false;
    QTest::newRow("a blank after the sum") << abc << sum + QLatin1Char(' ') << false;
    QTest::newRow("half the sum") << abc << sum.left(20) << false;
    QTest::newRow("a code beyond ASCII")
        << umlaut
        << QString::fromLatin1(
               QCryptographicHash::hash("\xC3\xBC", QCryptographicHash::Sha1).toHex())
        << true;
}

void TestInfoRules::auth()
{
    QFETCH(QString, code);
    QFETCH(QString, attribute);
    QFETCH(bool, offered);
    const QString element =
        QStringLiteral("<client server=\"A\" name=\"Beta\" version=\"1\" url=\"u\"%1/>")
            .arg(attribute.isNull() ? QString() : QStringLiteral(" auth=\"%1\"").arg(attribute));
    QStringList expected{QStringLiteral("element client")};
    if (offered) {
        expected << QStringLiteral("client A|Beta|1|u|") + attribute;
    }
    QCOMPARE(linesOf(element, code), expected);
}

void TestInfoRules::slidesAloneTakeTheDetour()
{
    const QString title = QString::fromUcs4(U"?\u00E9");
    const QString description = QString::fromUcs4(U"\u0416?x");
    QCOMPARE(saidBy(inLauncher(newsElement(QStringLiteral("homenews"), title, description) +
                               newsElement(QStringLiteral("news"), title, description))),
             (QStringList{QStringLiteral("version 0"), QString::fromUcs4(U"slide 0 \uFFFD|?x|i|c"),
                          QString::fromUcs4(U"tile 0 \u00E9|\u0416?x|i|c")}));
    // Addresses are taken as they are.
    QCOMPARE(saidBy(QString::fromUcs4(U"<homenews id=\"1\" title=\"\" description=\"\" "
                                      U"imageUrl=\"?\u00E9\" clickUrl=\"?\u0416\"/>")),
             QStringList{QString::fromUcs4(U"slide 0 ||?\u00E9|?\u0416")});
}

void TestInfoRules::atMostNineSlidesAndTiles_data()
{
    QTest::addColumn<QString>("elements");
    QTest::addColumn<int>("slideCount");
    QTest::addColumn<int>("tileCount");
    QTest::addColumn<QStringList>("servers");
    const QString a = clientElement(QStringLiteral("A"));
    const QString broken = QStringLiteral("<client/>");
    const QStringList none;
    const QStringList onlyA{QStringLiteral("A")};

    QTest::newRow("three slides and six tiles") << slides(3) + tiles(6) << 3 << 6 << none;
    QTest::newRow("ten elements: the tenth is never seen")
        << slides(3) + tiles(7) << 3 << 6 << none;
    QTest::newRow("ten slides") << slides(10) << 9 << 0 << none;
    QTest::newRow("ten tiles") << tiles(10) << 0 << 9 << none;
    QTest::newRow("tiles first") << tiles(6) + slides(4) << 3 << 6 << none;
    QTest::newRow("surplus slides count toward the nine") << slides(5) + tiles(6) << 5 << 4 << none;
    QTest::newRow("a client before them is read") << a + slides(3) + tiles(6) << 3 << 6 << onlyA;
    QTest::newRow("a client between the eighth and the ninth is read")
        << slides(3) + tiles(5) + a + tiles(1) << 3 << 6 << onlyA;
    QTest::newRow("a client after the ninth is lost") << slides(3) + tiles(6) + a << 3 << 6 << none;
    QTest::newRow("a broken element after the ninth is not noticed")
        << slides(3) + tiles(6) + broken << 3 << 6 << none;
    QTest::newRow("text that is no XML after the ninth is not noticed")
        << slides(3) + tiles(6) + QStringLiteral("<<&") << 3 << 6 << none;
    QTest::newRow("clients, launchers and unknown elements are not counted")
        << a.repeated(20) + QStringLiteral("<launcher/><weather/>").repeated(20) + slides(3) +
               tiles(6)
        << 3 << 6 << onlyA;
}

void TestInfoRules::atMostNineSlidesAndTiles()
{
    QFETCH(QString, elements);
    QFETCH(int, slideCount);
    QFETCH(int, tileCount);
    QFETCH(QStringList, servers);
    Notes notes;
    readLauncherDocument(inLauncher(elements), QString(), notes);
    const QStringList slideLines = notes.lines.filter(QStringLiteral("slide "));
    const QStringList tileLines = notes.lines.filter(QStringLiteral("tile "));
    QCOMPARE(slideLines.size(), slideCount);
    QCOMPARE(tileLines.size(), tileCount);
    for (int i = 0; i < slideCount; ++i) {
        QCOMPARE(slideLines[i], QStringLiteral("slide %1 s|d|i|c").arg(i));
    }
    for (int i = 0; i < tileCount; ++i) {
        QCOMPARE(tileLines[i], QStringLiteral("tile %1 t|d|i|c").arg(i));
    }
    QStringList clientLines = notes.said().filter(QStringLiteral("client "));
    clientLines.removeDuplicates();
    QCOMPARE(clientLines, servers.isEmpty()
                              ? QStringList()
                              : QStringList{QStringLiteral("client A|Official|1.0|u|")});
    QCOMPARE(notes.lines.filter(QStringLiteral("broken")), QStringList());
    // Nothing follows the ninth, not even a name.
    QVERIFY(notes.lines.last().startsWith(QStringLiteral("slide ")) ||
            notes.lines.last().startsWith(QStringLiteral("tile ")));
}

void TestInfoRules::brokenElementEndsTheReading_data()
{
    QTest::addColumn<QString>("element");
    QTest::addColumn<QString>("verdict");
    const QStringList newsAttributes{QStringLiteral("id"), QStringLiteral("title"),
                                     QStringLiteral("description"), QStringLiteral("imageUrl"),
                                     QStringLiteral("clickUrl")};
    const QStringList clientAttributes{QStringLiteral("version"), QStringLiteral("url")};
    const QMap<QString, QStringList> kinds{{QStringLiteral("client"), clientAttributes},
                                           {QStringLiteral("homenews"), newsAttributes},
                                           {QStringLiteral("news"), newsAttributes}};
    for (auto kind = kinds.cbegin(); kind != kinds.cend(); ++kind) {
        const QString verdict = kind.key() == QStringLiteral("client")
                                    ? QStringLiteral("broken client")
                                    : QStringLiteral("broken news");
        for (const QString &missing : kind.value()) {
            QString element = QLatin1Char('<') + kind.key();
            for (const QString &name : kind.value()) {
                if (name != missing) {
                    element += QStringLiteral(" %1=\"x\"").arg(name);
                }
            }
            QTest::newRow(qPrintable(kind.key() + QStringLiteral(" without ") + missing))
                << element + QStringLiteral("/>") << verdict;
        }
        QTest::newRow(qPrintable(kind.key() + QStringLiteral(" without any")))
            << QLatin1Char('<') + kind.key() + QStringLiteral("/>") << verdict;
    }
    QTest::newRow("a hidden client without url is broken all the same")
        << QStringLiteral("<client version=\"1\" auth=\"00\"/>") << QStringLiteral("broken client");
    QTest::newRow("attribute names differ by case")
        << QStringLiteral("<client Version=\"1\" url=\"u\"/>") << QStringLiteral("broken client");
}

void TestInfoRules::brokenElementEndsTheReading()
{
    QFETCH(QString, element);
    QFETCH(QString, verdict);
    QCOMPARE(saidBy(inLauncher(clientElement(QStringLiteral("A")) + slides(1) + tiles(1) + element +
                               clientElement(QStringLiteral("B")) + slides(1) + tiles(1))),
             (QStringList{QStringLiteral("version 0"), QStringLiteral("client A|Official|1.0|u|"),
                          QStringLiteral("slide 0 s|d|i|c"), QStringLiteral("tile 0 t|d|i|c"),
                          verdict}));
}

void TestInfoRules::brokenSurplusSlideEndsTheReading()
{
    const QStringList lines =
        saidBy(inLauncher(slides(3) + QStringLiteral("<homenews id=\"4\"/>") + tiles(1)));
    QCOMPARE(lines.size(), 5);
    QCOMPARE(lines.last(), QStringLiteral("broken news"));
}

void TestInfoRules::readingEndsWhereTheTextIsNoXml_data()
{
    QTest::addColumn<QString>("document");
    QTest::addColumn<QStringList>("lines");
    const QString alpha = clientElement(QStringLiteral("A"));
    const QString bravo = clientElement(QStringLiteral("B"));
    const QStringList upToAlpha{QStringLiteral("element launcher"), QStringLiteral("version 0"),
                                QStringLiteral("element client"),
                                QStringLiteral("client A|Official|1.0|u|")};
    const auto after = [&](const char *name, const QString &fault) {
        QTest::newRow(name) << QStringLiteral("<launcher>") + alpha + fault + bravo << upToAlpha;
    };
    QTest::newRow("an empty text") << QString() << QStringList();
    QTest::newRow("blanks") << QStringLiteral("  \n ") << QStringList();
    QTest::newRow("plain words") << QStringLiteral("Service unavailable") << QStringList();
    QTest::newRow("another format") << QStringLiteral("{\"client\": 1}") << QStringList();
    QTest::newRow("a web page") << QStringLiteral("<!DOCTYPE html><html><body><br></body></html>")
                                << QStringList{QStringLiteral("element html"),
                                               QStringLiteral("element body"),
                                               QStringLiteral("element br")};
    after("a bare ampersand", QStringLiteral("&"));
    after("an unknown entity", QStringLiteral("&nbsp;"));
    after("a doubled bracket", QStringLiteral("<<"));
    after("an end without a start", QStringLiteral("</client>"));
    after("an attribute given twice", QStringLiteral("<client url=\"a\" url=\"b\"/>"));
    after("an attribute without quotes", QStringLiteral("<client url=a version=1/>"));
    after("an undeclared prefix", QStringLiteral("<e:client url=\"u\" version=\"1\"/>"));
    after("a control character", QString(QChar(1)));
    QTest::newRow("a second root") << inLauncher(alpha) + inLauncher(bravo) << upToAlpha;
}

void TestInfoRules::readingEndsWhereTheTextIsNoXml()
{
    QFETCH(QString, document);
    QFETCH(QStringList, lines);
    QCOMPARE(linesOf(document), lines);
}

void TestInfoRules::everyCutKeepsWhatCameBefore()
{
    const QString document =
        inLauncher(clientElement(QStringLiteral("A")) + slides(2) + QStringLiteral("<x>text</x>") +
                   tiles(2) + clientElement(QStringLiteral("B")));
    const QStringList whole = linesOf(document);
    QCOMPARE(whole.size(), 15);
    int most = 0;
    for (int length = 0; length < document.size(); ++length) {
        const QStringList lines = linesOf(document.left(length));
        QCOMPARE(lines, whole.mid(0, lines.size()));
        VERIFY_RELATION(lines.size(), >=, most);
        most = lines.size();
    }
    // Only the root's end is missing at last, and nothing of the content.
    QCOMPARE(most, whole.size());
}

// Finding the places costs about as much as the rest of the reading.
void TestInfoRules::elementsAreToldToThoseWhoWantThemOnly()
{
    class Both : public Notes, public Places
    {
    public:
        void elementWritten(const DocumentElement &element) override
        {
            lines << QStringLiteral("written ") + element.name;
        }
    };
    const QString document = QStringLiteral("<launcher><client/></launcher>");
    Both unasked;
    readLauncherDocument(document, {}, unasked);
    QCOMPARE(unasked.lines,
             (QStringList{QStringLiteral("element launcher"), QStringLiteral("version 0"),
                          QStringLiteral("element client"), QStringLiteral("broken client")}));
    QCOMPARE(unasked.places, QStringList());
    // Between the element's name and what it says, so that its place is known by then.
    Both asked;
    readLauncherDocument(document, {}, asked, &asked);
    QCOMPARE(asked.lines,
             (QStringList{QStringLiteral("element launcher"), QStringLiteral("written launcher"),
                          QStringLiteral("version 0"), QStringLiteral("element client"),
                          QStringLiteral("written client"), QStringLiteral("broken client")}));
}

void TestInfoRules::tooManyAttributesEndTheReading_data()
{
    QTest::addColumn<QString>("element");
    QTest::addColumn<QStringList>("said");
    const QString first = QStringLiteral("client A|O|1|u|");
    const QString last = QStringLiteral("client Z|O|1|u|");
    const auto row = [&](const char *name, const QString &element, const char *said) {
        QTest::newRow(name) << element
                            << (QStringList{first} + QString::fromLatin1(said).split(
                                                         QLatin1Char('+'), Qt::SkipEmptyParts));
    };
    QTest::newRow("as many as there may be")
        << withAttributes("<x", 1000) << QStringList{first, last};
    row("one more", withAttributes("<x", 1001), "");
    row("one more, in a namespace", withAttributes("<n:client xmlns:n='n'", 1000), "broken client");
    row("a client", withAttributes("<client version='' url=''", 999), "broken client");
    row("a slide", withAttributes("<homenews", 1001), "broken news");
    row("a tile", withAttributes("<news\n", 1001), "broken news");
    row("without an end", withAttributes("<x", 1001, ""), "");
}

void TestInfoRules::tooManyAttributesEndTheReading()
{
    QFETCH(QString, element);
    QFETCH(QStringList, said);
    QCOMPARE(saidBy(withElement(element)), said);
}

void TestInfoRules::quotesElsewhereAreNoAttributes()
{
    const QString quotes = QStringLiteral("'a' \"b\" ").repeated(2000);
    const QString text =
        QStringLiteral("<!-- ") + quotes + QStringLiteral("--><!DOCTYPE launcher><?p ") + quotes +
        QStringLiteral("?>") +
        withElement(QStringLiteral("<!-- < ") + quotes + QStringLiteral("--><![CDATA[ < ") +
                    quotes + QStringLiteral("]]><?p < ") + quotes + QStringLiteral("?>") + quotes);
    QCOMPARE(saidBy(text),
             (QStringList{QStringLiteral("client A|O|1|u|"), QStringLiteral("client Z|O|1|u|")}));
}

void TestInfoRules::manyAttributesCostNoTime()
{
    QElapsedTimer time;
    time.start();
    QCOMPARE(saidBy(withElement(withAttributes("<x", 100 * 1000))).size(), 1);
    // Quoted or not: nothing that is declared is read.
    for (const char *value : {"''", "#IMPLIED"}) {
        QString declared = QStringLiteral("<!DOCTYPE launcher [<!ATTLIST x");
        for (int i = 0; i < 100 * 1000; ++i) {
            declared += QStringLiteral(" a%1 CDATA %2").arg(i).arg(QLatin1String(value));
        }
        declared += QStringLiteral(">]>");
        QCOMPARE(saidBy(declared + withElement(QStringLiteral("<x/>"))), QStringList());
    }
    // It took many times as long when the toolkit read them.
    VERIFY_RELATION(time.elapsed(), <, 5000);
}

void TestInfoRules::elementsAreToldWithTheirPlaces_data()
{
    QTest::addColumn<QString>("document");
    QTest::addColumn<QStringList>("places");
    const auto row = [](const char *name, const char *document, const QString &places) {
        QTest::newRow(name) << QString::fromUtf8(document) << places.split(QLatin1Char(','));
    };
    row("elements on one line", "<launcher><a/><b></b></launcher>",
        QStringLiteral("at launcher 1:1,at a 1:11,at b 1:15,end 0"));
    row("behind a prolog, comments and blanks",
        "<?xml version=\"1.0\"?>\n<!-- < c\n -->\n\n <launcher>\n  <a/>\n</launcher>",
        QStringLiteral("at launcher 5:2,at a 6:3,end 0"));
    row("an element over several lines", "<launcher>\n\t<a\n  b='1'\n/><c/></launcher>",
        QStringLiteral("at launcher 1:1,at a 2:2,at c 4:3,end 0"));
    row("lines that end as on Windows", "<launcher>\r\n  <a/>\r\n  <b/>\r\n</launcher>",
        QStringLiteral("at launcher 1:1,at a 2:3,at b 3:3,end 0"));
    row("letters and entities count as they are written",
        "<launcher>\xC3\xA9\xD0\x96&amp;&#x41;<a b='&lt;&quot;'/> <b/></launcher>",
        QStringLiteral("at launcher 1:1,at a 1:24,at b 1:44,end 0"));
    row("where the text stops being XML", "<launcher>\n <a/>\n <b c=1/></launcher>",
        QStringLiteral("at launcher 1:1,at a 2:2,end 1"));
    row("an entry that the code does not show",
        "<launcher>\n<client version='1' url='u' server='S' auth='x'/></launcher>",
        QStringLiteral("at launcher 1:1,at client 2:1,hidden S,end 0"));
}

void TestInfoRules::elementsAreToldWithTheirPlaces()
{
    QFETCH(QString, document);
    QFETCH(QStringList, places);
    QCOMPARE(placesIn(document), places);
}

void TestInfoRules::theRestIsToldWithoutBeingRead_data()
{
    QTest::addColumn<QString>("elements");
    QTest::addColumn<QStringList>("rest");
    const QString lost = QStringLiteral("lost client 2:1");
    const QString client = QLatin1Char('\n') + clientElement(QStringLiteral("late"));
    const QString brokenTile = QStringLiteral("<news id=\"1\"/>");
    QTest::newRow("behind the ninth")
        << tiles(9) + client << QStringList{QStringLiteral("end 2"), lost};
    QTest::newRow("nothing behind the ninth") << tiles(9) << QStringList{QStringLiteral("end 2")};
    QTest::newRow("behind a broken client")
        << QStringLiteral("<client/>") + client << QStringList{QStringLiteral("end 3"), lost};
    QTest::newRow("behind a broken tile")
        << brokenTile + client << QStringList{QStringLiteral("end 3"), lost};
    QTest::newRow("the ninth is broken itself")
        << tiles(8) + brokenTile + client << QStringList{QStringLiteral("end 3"), lost};
    QTest::newRow("the rest is no XML")
        << tiles(9) + client + QStringLiteral("\n<")
        << QStringList{QStringLiteral("end 2"), lost, QStringLiteral("rest is no XML 3")};
}

void TestInfoRules::theRestIsToldWithoutBeingRead()
{
    QFETCH(QString, elements);
    QFETCH(QStringList, rest);
    const QString document = inLauncher(elements);
    const auto behindTheEnd = [](const QStringList &places) {
        return places.mid(places.indexOf(QRegularExpression(QStringLiteral("end \\d"))));
    };
    QCOMPARE(behindTheEnd(placesIn(document)), rest);
    // The window is told the same, whether somebody observes or not.
    Notes observed;
    Places places;
    readLauncherDocument(document, QString(), observed, &places);
    QCOMPARE(observed.lines, linesOf(document));
    QVERIFY(!saidBy(document).join(QLatin1Char(' ')).contains(QStringLiteral("late")));
}

void TestInfoRules::clientButtons_data()
{
    QTest::addColumn<QStringList>("kinds");
    QTest::addColumn<QString>("buttons");
    const QString official = QStringLiteral("Official");
    const QString beta = QStringLiteral("Beta");
    QTest::newRow("both") << QStringList{official, beta} << QStringLiteral("official beta selects");
    QTest::newRow("official alone") << QStringList{official} << QStringLiteral("official");
    QTest::newRow("beta alone") << QStringList{beta} << QStringLiteral("beta selects");
    QTest::newRow("another kind") << QStringList{QStringLiteral("Nightly")}
                                  << QStringLiteral("beta");
    QTest::newRow("letters count")
        << QStringList{QStringLiteral("official"), QStringLiteral("beta")}
        << QStringLiteral("beta");
}

void TestInfoRules::clientButtons()
{
    QFETCH(QStringList, kinds);
    QFETCH(QString, buttons);
    const ServerPanel::ClientButtons found = ServerPanel::clientButtons(kinds);
    QStringList words;
    if (found.official) {
        words << QStringLiteral("official");
    }
    if (found.beta) {
        words << QStringLiteral("beta");
    }
    if (found.betaSelects) {
        words << QStringLiteral("selects");
    }
    QCOMPARE(words.join(QLatin1Char(' ')), buttons);
}

void TestInfoRules::columnOrder_data()
{
    QTest::addColumn<QStringList>("names");
    QTest::addColumn<QStringList>("ordered");
    const auto row = [](const char *name, const char *names, const char *ordered) {
        QTest::newRow(name) << QString::fromUtf8(names).split(QLatin1Char(' '))
                            << QString::fromUtf8(ordered).split(QLatin1Char(' '));
    };
    row("capital letters first, Beta last", "b Beta A a", "A a b Beta");
    row("Beta last even when it would be first", "Beta Charlie Delta", "Charlie Delta Beta");
    row("only the exact name goes last", "beta Betas BETA Alpha", "Alpha BETA Betas beta");
    row("Beta alone", "Beta", "Beta");
    row("digits before letters", "10 b 9 2", "10 2 9 b");
    row("no folding of accents", "z \xC3\xA9 e", "e z \xC3\xA9");
    // A letter of two code units sorts by its first, below U+FF21.
    row("by code units, not by characters", "\xEF\xBC\xA1 \xF0\x9F\x94\xA5",
        "\xF0\x9F\x94\xA5 \xEF\xBC\xA1");
    QTest::newRow("no servers") << QStringList() << QStringList();
}

void TestInfoRules::columnOrder()
{
    QFETCH(QStringList, names);
    QFETCH(QStringList, ordered);
    QCOMPARE(ServerPanel::orderedNames(names), ordered);
}

void TestInfoRules::sizes_data()
{
    QTest::addColumn<int>("columns");
    QTest::addColumn<QSize>("logo");
    QTest::addColumn<int>("height");
    QTest::newRow("one server") << 1 << QSize(438, 205) << 367;
    QTest::newRow("two servers") << 2 << QSize(291, 136) << 298;
    QTest::newRow("three servers") << 3 << QSize(218, 102) << 264;
    QTest::newRow("four servers") << 4 << QSize(174, 81) << 243;
    QTest::newRow("five servers") << 5 << QSize(145, 67) << 229;
}

void TestInfoRules::sizes()
{
    QFETCH(int, columns);
    QFETCH(QSize, logo);
    QFETCH(int, height);
    QCOMPARE(ServerPanel::logoSize(columns), logo);
    QCOMPARE(ServerPanel::columnHeight(logo), height);
    QCOMPARE(ServerPanel::clientButtonSize, QSize(196, 81));
}

void TestInfoRules::placesOfTheDesign()
{
    const QMargins margins(9, 9, 9, 9);
    const ServerPanel::ColumnPlace second = ServerPanel::columnPlace(1, 2, margins, 6);
    QCOMPARE(second.column, QRect(582, 136, 291, 298));
    QCOMPARE(second.logo, QRect(0, 0, 291, 136));
    QCOMPARE(second.picture, QSize(291, 136));
    QCOMPARE(second.upper, QRect(47, 136, 196, 81));
    QCOMPARE(second.lower, QRect(47, 217, 196, 81));
    // A logo narrower than the buttons is as wide as they are, its picture in the middle.
    const ServerPanel::ColumnPlace fourth = ServerPanel::columnPlace(3, 4, margins, 6);
    QCOMPARE(fourth.logo.size(), QSize(196, 81));
    QCOMPARE(fourth.picture, QSize(174, 81));
    QCOMPARE(fourth.upper, QRect(0, 81, 196, 81));
    // With five there is no room for buttons of their own size.
    const ServerPanel::ColumnPlace fifth = ServerPanel::columnPlace(4, 5, margins, 6);
    QCOMPARE(fifth.upper.size(), QSize(187, 77));
    QCOMPARE(fifth.lower.y() - fifth.upper.y(), 81);

    const ServerPanel::ColumnPlace half = ServerPanel::scaledTo({487, 285}, second);
    QCOMPARE(half.column, QRect(291, 68, 145, 149));
    QCOMPARE(half.upper, QRect(23, 68, 98, 40));
    QCOMPARE(half.lower, QRect(23, 108, 98, 40));
    QCOMPARE(half.picture, QSize(145, 68));
}

void TestInfoRules::placesAtAnySize()
{
    for (int columns = 1; columns <= 100; ++columns) {
        for (const float ratio : {0.5F, 0.77F, 1.0F, 1.232F, 1.89142F, 4.0F}) {
            const QSize panel(int(974 * ratio), int(571 * ratio));
            int right = 0;
            for (int i = 0; i < columns; ++i) {
                const ServerPanel::ColumnPlace place = ServerPanel::scaledTo(
                    panel, ServerPanel::columnPlace(i, columns, {11, 9, 11, 9}, 6));
                const QRect whole(QPoint(), place.column.size());
                // With a hundred columns nothing is left of them at half the size.
                QVERIFY(columns > 50 || !place.upper.isEmpty());
                QVERIFY(QRect(QPoint(), panel).contains(place.column));
                VERIFY_RELATION(place.column.x(), >=, right);
                right = place.column.x() + place.column.width();
                for (const QRect &part : {place.logo, place.upper, place.lower}) {
                    QVERIFY(whole.contains(part));
                }
                VERIFY_RELATION(place.logo.bottom(), <, place.upper.top());
                VERIFY_RELATION(place.upper.bottom(), <, place.lower.top());
                QCOMPARE(place.lower.size(), place.upper.size());
                VERIFY_RELATION(place.picture.width(), <=, place.logo.width());
                VERIFY_RELATION(place.picture.height(), <=, place.logo.height());
            }
        }
    }
}

void TestInfoRules::selectionKeys_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("server");
    QTest::addColumn<QString>("client");
    QTest::newRow("two parts") << QStringLiteral("Alpha|Beta") << QStringLiteral("Alpha")
                               << QStringLiteral("Beta");
    QTest::newRow("an empty server")
        << QStringLiteral("|Beta") << QString() << QStringLiteral("Beta");
    QTest::newRow("an empty client")
        << QStringLiteral("Alpha|") << QStringLiteral("Alpha") << QString();
    QTest::newRow("no bar") << QStringLiteral("Alpha") << QStringLiteral("Alpha") << QString();
    QTest::newRow("an empty key") << QString() << QString() << QString();
    QTest::newRow("a bar in the server's name shifts the parts")
        << QStringLiteral("A|B|Official") << QStringLiteral("A") << QStringLiteral("B");
}

void TestInfoRules::selectionKeys()
{
    QFETCH(QString, key);
    QFETCH(QString, server);
    QFETCH(QString, client);
    const ServerPanel::Selection selection = ServerPanel::parseSelectionKey(key);
    QCOMPARE(selection.server, server);
    QCOMPARE(selection.client, client);
    if (key.count(QLatin1Char('|')) == 1) {
        QCOMPARE(ServerPanel::selectionKey(server, client), key);
    }
}

void TestInfoRules::styleSheets_data()
{
    QTest::addColumn<QString>("sheet");
    QTest::addColumn<QString>("text");
    const MessageLog unwanted;
    QTest::newRow("Official") << ServerPanel::officialStyleSheet()
                              << QStringLiteral(
                                     "QPushButton {width:196; height: 81; border-image: "
                                     "url(\":/images/new_buttons/official.png\");}"
                                     "QPushButton:hover {width:196; height: 81; border-image: "
                                     "url(\":/images/new_buttons/official-hover.png\");}");
    QTest::newRow("Beta") << ServerPanel::betaStyleSheet()
                          << QStringLiteral(
                                 "QPushButton {width:196; height: 81; border-image: "
                                 "url(\":/images/new_buttons/beta.png\");}"
                                 "QPushButton:hover {width:196; height: 81; border-image: "
                                 "url(\":/images/new_buttons/beta-hover.png\");}");
    QTest::newRow("the placeholder, without its closing brace")
        << ServerPanel::placeholderStyleSheet()
        << QStringLiteral("QPushButton {width:196; height: 81; border-color: rgba(0,0,0,0)");
}

void TestInfoRules::styleSheets()
{
    QFETCH(QString, sheet);
    QFETCH(QString, text);
    QCOMPARE(sheet, text);
}

void TestInfoRules::onlyTheBetaSheetWarns_data()
{
    QTest::addColumn<QString>("sheet");
    QTest::addColumn<int>("warnings");
    QTest::newRow("Official does not warn") << QStringLiteral("official") << 0;
    QTest::newRow("Beta warns of two missing arguments") << QStringLiteral("beta") << 2;
    QTest::newRow("the placeholder does not warn") << QStringLiteral("placeholder") << 0;
}

void TestInfoRules::onlyTheBetaSheetWarns()
{
    QFETCH(QString, sheet);
    QFETCH(int, warnings);
    QStringList printed;
    {
        const MessageLog log;
        if (sheet == QStringLiteral("official")) {
            (void)ServerPanel::officialStyleSheet();
        } else if (sheet == QStringLiteral("beta")) {
            (void)ServerPanel::betaStyleSheet();
        } else {
            (void)ServerPanel::placeholderStyleSheet();
        }
        printed = MessageLog::messages();
    }
    QCOMPARE(printed.size(), warnings);
    if (warnings > 0) {
        QVERIFY(printed[0].contains(QStringLiteral("Argument missing")));
        QVERIFY(printed[0].contains(QStringLiteral(", 196")));
        QVERIFY(printed[1].contains(QStringLiteral("Argument missing")));
        QVERIFY(printed[1].contains(QStringLiteral(", 81")));
    }
}

QTEST_GUILESS_MAIN(TestInfoRules)
#include "tst_inforules.moc"
