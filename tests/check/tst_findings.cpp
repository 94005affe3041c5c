#include "base/plainname.h"
#include "check/documentcontent.h"
#include "check/playersview.h"
#include "check/rules.h"
#include "support/documents.h"
#include "support/relation.h"

#include <QCryptographicHash>
#include <QTest>

#include <algorithm>

namespace
{
const char sumOfCode[] = "4da0b9a5e4a1d1f8d2f0c2b1f1a0e9d8c7b6a594";

// A client without a fault, but for what is given.
QString client(const QString &server, const QString &kind, const QString &version,
               const QString &url = {}, const QString &auth = {})
{
    const QString archive = url.isEmpty()
                                ? QStringLiteral("https://a.example/%1-%2.zip")
                                      .arg(QString::fromLatin1(server.toUtf8().toHex()), kind)
                                : url;
    return Documents::client(server, kind, version, archive, auth);
}

QString official(const QString &server, const QString &version = QStringLiteral("1.0"))
{
    return client(server, QStringLiteral("Official"), version);
}

QString ofVersion(const char *version)
{
    return official(QStringLiteral("S"), QString::fromUtf8(version));
}

QString ofServer(const char *server)
{
    return official(QString::fromUtf8(server));
}

QString ofUrl(const char *url)
{
    return client(QStringLiteral("S"), QStringLiteral("Official"), QStringLiteral("1.0"),
                  QString::fromUtf8(url));
}

QString serversFrom(int begin, int end)
{
    QString elements;
    for (int i = begin; i < end; ++i) {
        elements += official(QStringLiteral("S%1").arg(i, 3, 10, QLatin1Char('0')));
    }
    return elements;
}

QString withAuth(const char *auth)
{
    return ofServer("Open") + QLatin1Char('\n') +
           client(QStringLiteral("S"), QStringLiteral("Official"), QStringLiteral("1.0"), {},
                  QString::fromLatin1(auth));
}

// An entry whose sum stands in an attribute of another name.
QString otherwise(const char *attribute)
{
    return client(QStringLiteral("S"), QStringLiteral("Official"), QStringLiteral("1.0"), {},
                  QLatin1String(sumOfCode))
        .replace(QStringLiteral("auth="),
                 QStringLiteral("xmlns:a='urn:a' %1=").arg(QString::fromUtf8(attribute)));
}

QString news(const char *kind, const char *title, const char *picture = "https://a.example/p.png",
             const char *page = "https://a.example/")
{
    return Documents::news(QLatin1String(kind), QString::fromUtf8(title), QStringLiteral("d"),
                           QString::fromUtf8(picture), QString::fromUtf8(page));
}

QString document(const QString &elements, const char *version = "1")
{
    return QStringLiteral("<launcher version=\"%1\">\n").arg(QLatin1String(version)) + elements +
           QStringLiteral("\n</launcher>\n");
}

QString manyAttributes(int count)
{
    QString attributes;
    for (int i = 0; i < count; ++i) {
        attributes += QStringLiteral(" a%1=''").arg(i);
    }
    return attributes;
}

// "error id line:column", one line each.
QStringList linesOf(const Findings &findings)
{
    QStringList lines;
    for (const Finding &finding : findings) {
        lines << QStringLiteral("%1 %2 %3:%4")
                     .arg(severityName(finding.severity), finding.id)
                     .arg(finding.line)
                     .arg(finding.column);
    }
    return lines;
}

Findings findingsIn(const QByteArray &body, const QString &code = {})
{
    return findingsOf(readContent(body, code));
}
} // namespace

// The rules over one document: what is found, where, and what is not.
class TestFindings : public QObject
{
    Q_OBJECT

private slots:
    void clean_data();
    void clean();
    void found_data();
    void found();
    void bytes_data();
    void bytes();
    void everyFindingSaysHowToMendIt();
    void mends_data();
    void mends();
    void mendsOfReleases();
    void previous_data();
    void previous();
    void versionInOtherLetters();
    void sumOfSomethingElse_data();
    void sumOfSomethingElse();
    void codeThatIsNotKept_data();
    void codeThatIsNotKept();
    void codeDecidesWhatIsSeen();
    void lostThingsAreCounted();
    void namesAreToldOnce();
    void everyNameThatIsNoneIsFound();
    void orderAndExitCodes();
};

void TestFindings::clean_data()
{
    QTest::addColumn<QString>("elements");
    const auto row = [](const char *name, const QString &elements) {
        QTest::newRow(name) << elements;
    };
    row("no element at all", {});
    row("one client", ofServer("S"));
    row("as many servers as fit side by side", serversFrom(0, 4));
    row("the longest address",
        ofUrl(("https://a.example/" + QByteArray("aaaaaaaaa/").repeated(816) + QByteArray(10, 'a') +
               ".zip")
                  .constData()));
    row("two kinds on two servers",
        ofServer("A") + ofServer("B") +
            client(QStringLiteral("B"), QStringLiteral("Beta"), QStringLiteral("1.0")));
    row("simple markup in a tile", news("news", "<b>Why</b> now"));
    row("a sign that is no tag", news("news", "1 < 2"));
    row("markup of two lines in a slide's description",
        Documents::news(
            QStringLiteral("homenews"), QStringLiteral("t"), QStringLiteral("<b>one</b><br>two"),
            QStringLiteral("https://a.example/p.png"), QStringLiteral("https://a.example/")));
    row("two lines in a slide's description",
        Documents::news(QStringLiteral("homenews"), QStringLiteral("t"),
                        QStringLiteral("one&#10;two"), QStringLiteral("https://a.example/p.png"),
                        QStringLiteral("https://a.example/"))
            .replace(QStringLiteral("&amp;"), QStringLiteral("&")));
    row("a text that just fits", news("news", "The Hill That Breathes keeps its small fire"));
    row("letters from the right on a small tile",
        news("news", "t") + news("news", "\xD7\xA9\xD7\x9C!"));
    row("letters of other languages",
        news("news", "\xC3\x93 \xE2\x80\x93 \xC3\x83O \xC2\xAB\xC3\xA0\xC2\xBB"));
    row("signs that no template left", news("news", "100% {sic} @you $5"));
    row("a comment without elements", QStringLiteral("<!-- news <b> -->"));
    row("an element that is only called so",
        QStringLiteral("<enabled>") + ofServer("S") + QStringLiteral("</enabled>"));
    row("signs that are no markup",
        news("news", "Tier [S] [EU] 2*3*4 ** a_b_ [/x] (https:)") + news("news", "***"));
    row("colours that can be read",
        news("homenews", "<font color='#444'>a</font> <font color=gray>b</font>") +
            news("news", "<span style='background-color: white; color: black'>a</span>"));
    row("what only looks like a colour", news("homenews", "<b>New</b> color: black"));
    row("what only looks like an editor's markup", news("homenews", "2**3, 4**5, d**n b**t"));
    row("a file's name beyond ASCII",
        ofUrl("https://a.example/\xD0\xB8\xD0\xB3\xD1\x80\xD0\xB0.zip"));
    row("a query of the file's version", ofUrl("https://a.example/a.zip?v=12&cache=expires"));
    row("two dots in the middle of a version", ofVersion("1..2"));
    row("a name that only begins like a device", ofServer("CONTEST") + ofServer("COM10"));
    row("a blank in the middle", ofServer("The Old World"));
    row("the greatest version", ofVersion("21.47.48.36.47"));
    row("the smallest version", ofVersion("0.0.0.0.1"));
    row("a sum in capital letters", withAuth("4DA0B9A5E4A1D1F8D2F0C2B1F1A0E9D8C7B6A594"));
    row("an attribute that nobody reads",
        ofServer("S").replace(QStringLiteral("server="),
                              QStringLiteral("comment='x' id='4' size='12' server=")));
    row("the guide's code in the guide's document",
        withAuth("f0946d87e0d638e47fd52fe9ed0c09b093e4b448"));
    row("an archive of one code for two servers",
        client(QStringLiteral("A"), QStringLiteral("Beta"), QStringLiteral("1.0"),
               QStringLiteral("https://a.example/a.zip"), QLatin1String(sumOfCode)) +
            client(QStringLiteral("B"), QStringLiteral("Beta"), QStringLiteral("1.0"),
                   QStringLiteral("https://a.example/a.zip"),
                   QString::fromLatin1(sumOfCode).toUpper()));
    row("a sum beside auth", withAuth(sumOfCode).replace(
                                 QStringLiteral("auth="),
                                 QStringLiteral("hash='%1' auth=").arg(QLatin1String(sumOfCode))));
    row("plain http that stays on the machine",
        ofUrl("http://127.0.0.1:8080/a.zip") +
            news("news", "t", "http://localhost/p.png", "http://[::1]/"));
    row("a try on the own machine, with pages elsewhere",
        ofUrl("http://127.0.0.1:8080/a.zip") + news("news", "t", "http://localhost/p.png"));
    const auto ofArchive = [](const char *server, const char *version, const char *name) {
        return client(QString::fromUtf8(server), QStringLiteral("Official"),
                      QString::fromLatin1(version),
                      QStringLiteral("https://a.example/%1").arg(QLatin1String(name)));
    };
    row("archives of two servers with one name without theirs",
        ofArchive("Ashenmoor", "1.0", "game-1.0.zip") +
            ofArchive("Saltreach", "1.0", "game-1.0.zip"));
    row("a server's name within another's",
        ofArchive("Ember", "1.0", "ember-reach-1.0.zip") +
            ofArchive("Ember Reach", "1.0", "ember-reach-1.0.zip"));
    row("two servers of one name's beginning, with one game",
        ofArchive("Ember", "1.0", "ember-1.0.zip") +
            ofArchive("Ember PvP", "1.0", "ember-1.0.zip"));
    row("a folder that tells the server",
        ofArchive("Ashenmoor", "1.0", "ashenmoor-1.0.zip") +
            ofArchive("Saltreach", "1.1", "saltreach/ashenmoor-1.1.zip"));
    row("a server named like a kind",
        ofArchive("Beta", "1.0", "beta-1.0.zip") + ofArchive("Saltreach", "1.0", "beta-1.0.zip"));
    row("a game named like its first server",
        ofArchive("Ember", "1.0", "ember-1.0.zip") + ofArchive("Salt", "1.0", "ember-s-1.0.zip"));
    for (const char *name :
         {"a-1.4.2.zip", "a-1.4.2.3315.zip", "a-1.4.02.zip", "a-ue4.27-1.4.2.zip", "a-ue4.27.zip",
          "a-2026.11.20.zip", "a-1.4.3a.zip", "a-1.4.3-patch1.zip", "a-opengl3.3.1.zip",
          "1.4.2/a-9.8.7.zip", "a-1.5.0-rc2.zip", "a-1.5.0beta.zip", "a_1_5_0.zip", "a-150.zip"}) {
        row(name, ofArchive("S", "1.4.2", name));
    }
    row("capital letters at the archive's end", ofUrl("https://a.example/A.ZIP"));
    row("the same archive for two servers",
        client(QStringLiteral("A"), QStringLiteral("Official"), QStringLiteral("1.0"),
               QStringLiteral("https://a.example/c.zip")) +
            client(QStringLiteral("B"), QStringLiteral("Official"), QStringLiteral("1.0"),
                   QStringLiteral("https://a.example/c.zip")));
    row("a tester's newer entry behind everybody's",
        ofServer("S") + client(QStringLiteral("S"), QStringLiteral("Official"),
                               QStringLiteral("1.1"), QStringLiteral("https://a.example/new.zip"),
                               QLatin1String(sumOfCode)));
    row("three slides and six tiles",
        news("homenews", "s").repeated(3) + news("news", "t").repeated(6));
    row("an accent in a slide, written as its bytes", news("homenews", "Caf\xC3\x83\xC2\xA9?"));
    row("a mail", news("news", "t", "https://a.example/p.png", "mailto:crew@a.example"));
    row("a sum behind the archive's name", ofUrl("https://a.example/a.zip#sha256"));
    row("accents in a tile", news("news", "Caf\xC3\xA9"));
    row("a question mark in the middle", news("homenews", "Why?") + news("news", "Why?"));
    row("an unknown container",
        QStringLiteral("<clients>") + ofServer("S") + QStringLiteral("</clients>"));
}

void TestFindings::clean()
{
    QFETCH(QString, elements);
    QCOMPARE(linesOf(findingsIn(document(elements).toUtf8())), QStringList());
}

void TestFindings::found_data()
{
    QTest::addColumn<QString>("document");
    QTest::addColumn<QStringList>("findings");
    const auto row = [](const char *name, const QString &text, const char *findings) {
        QTest::newRow(name) << text << QString::fromLatin1(findings).split(QStringLiteral(", "));
    };
    const auto in = [&row](const char *name, const QString &elements, const char *findings) {
        row(name, document(elements), findings);
    };
    const QString lines = QStringLiteral("\n");

    row("a newer launcher", document({}, "2"), "warning newer-launcher 1:1");
    row("a launcher version that is no number", document({}, "1.2"),
        "warning launcher-version 1:1");
    row("an empty document", {}, "error empty-document 0:0");
    row("a type without declarations",
        QStringLiteral("<!DOCTYPE launcher>\n") + document(ofServer("")), "error empty-server 3:1");

    row("not well-formed", QStringLiteral("<launcher>\n <client a=1/></launcher>"),
        "error not-well-formed 2:12");
    row("more attributes than are read",
        QStringLiteral("<launcher>\n <x") + manyAttributes(1001) + QStringLiteral("/></launcher>"),
        "error too-many-attributes 2:2");
    row("a type that declares",
        QStringLiteral("<?xml version='1.0'?>\n<!DOCTYPE launcher [<!ENTITY e 'x'>]>\n<launcher/>"),
        "error document-type 2:1");
    in("more elements than are read",
       QStringLiteral("<x/>").repeated(20 * 1000 - 1) + lines + QStringLiteral("<x/>"),
       "error too-many-elements 3:1");
    in("elements that lie deeper than is read",
       QStringLiteral("<x>").repeated(99) + lines + QStringLiteral("<x/>") +
           QStringLiteral("</x>").repeated(99),
       "error too-many-elements 3:1");
    row("cut off", QStringLiteral("<launcher>\n"), "error not-well-formed 2:1");
    in("a client without its url", QStringLiteral("<client version=\"1\"/>"),
       "error missing-attribute 2:1");
    in("a slide without its id",
       QStringLiteral(" <homenews title='t' description='d' imageUrl='i' clickUrl='c'/>"),
       "error missing-attribute 2:2");
    in("a client after the ninth",
       news("news", "t").repeated(6) + news("homenews", "t").repeated(3) + lines + ofServer("late"),
       "error after-ninth-news 3:1");
    in("no XML after the ninth",
       news("news", "t").repeated(6) + news("homenews", "t").repeated(3) + QStringLiteral("\n<<"),
       "warning not-well-formed 3:2");
    in("a fourth slide",
       news("homenews", "t").repeated(3) + lines + news("homenews", "t") + news("news", "t"),
       "error too-many-slides 3:1");
    in("a seventh tile", news("news", "t").repeated(6) + lines + news("news", "t"),
       "error too-many-tiles 3:1");

    in("the same client twice", ofServer("S") + lines + ofVersion("1.1"),
       "error duplicate-client 2:1, warning archive-reused 3:1");
    in("a tester's entry before everybody's",
       client(QStringLiteral("S"), QStringLiteral("Official"), QStringLiteral("1.1"), {},
              QLatin1String(sumOfCode)) +
           lines + ofVersion("1.0"),
       "warning closed-archive-is-open 2:1, error duplicate-client 2:1, warning archive-reused "
       "3:1");
    in("one tester's entry twice",
       ofServer("Open") + lines +
           client(QStringLiteral("S"), QStringLiteral("Beta"), QStringLiteral("1.1"), {},
                  QLatin1String(sumOfCode)) +
           lines +
           client(QStringLiteral("S"), QStringLiteral("Beta"), QStringLiteral("1.2"), {},
                  QString::fromLatin1(sumOfCode).toUpper()),
       "error duplicate-client 3:1, warning archive-reused 4:1");

    in("a version of zeros", ofVersion("0.0"), "error version-zero 2:1");
    in("a version of words", ofVersion("beta"), "error version-zero 2:1");
    in("an empty version", ofVersion(""), "error version-zero 2:1");
    in("a negative version", ofVersion("-1.0"), "error version-negative 2:1");
    in("a version that wraps to less than nothing", ofVersion("22.0"), "error version-wraps 2:1");
    in("a version that wraps to more than nothing", ofVersion("43.0"), "warning version-wraps 2:1");
    for (const char *version : {"1.0-rc2", "v1.1", "1.+2", "1.0b", "1.99999999999", "1. 2"}) {
        in(version, ofVersion(version), "warning version-not-numbers 2:1");
    }
    in("a part above 99", ofVersion("1.100"), "warning version-carries 2:1");
    in("a year", ofVersion("1.0.2026"), "warning version-carries 2:1");
    in("an archive of two versions",
       ofUrl("https://a.example/a.zip") + lines +
           client(QStringLiteral("T"), QStringLiteral("Official"), QStringLiteral("1.1"),
                  QStringLiteral("https://a.example/a.zip")),
       "warning archive-reused 3:1");
    in("a sixth part", ofVersion("1.2.3.4.5.6"), "warning version-parts 2:1");
    in("a tester's version that counts the same",
       ofVersion("1.0") + lines +
           client(QStringLiteral("S"), QStringLiteral("Official"), QStringLiteral("1.00"),
                  QStringLiteral("https://a.example/new.zip"), QLatin1String(sumOfCode)),
       "warning version-equal 3:1");

    in("no server", ofServer(""), "error empty-server 2:1");
    in("a bar in the server's name", ofServer("A|B"), "error bar-in-name 2:1");
    in("a server's name of 256 letters",
       client(QString(256, QLatin1Char('a')), QStringLiteral("Official"), QStringLiteral("1.0"),
              QStringLiteral("https://a.example/a.zip")),
       "error forbidden-character 2:1");
    in("a slash in the server's name", ofServer("A/B"), "error slash-in-name 2:1");
    in("a backslash in the server's name", ofServer("A\\B"), "error slash-in-name 2:1");
    in("a slash in the version", ofVersion("1/0"),
       "error slash-in-name 2:1, error version-zero 2:1");
    in("the folder above as a server", ofServer(".."), "error dot-name 2:1");
    in("the folder above in the server's name", ofServer("A\\..\\B"), "error dot-name 2:1");
    in("the folder above in the version", ofVersion("../1.0"),
       "error dot-name 2:1, error version-zero 2:1");
    for (const char *letter : {"<", ">", ":", "\"", "?", "*"}) {
        in(letter, official(QStringLiteral("A") + QLatin1String(letter)),
           "error forbidden-character 2:1");
    }
    in("a bar in the version", ofVersion("1|0"),
       "error forbidden-character 2:1, error version-zero 2:1");
    in("a device's name", ofServer("CON"), "error reserved-name 2:1");
    in("a device's name with an extension", ofServer("nul.old"), "error reserved-name 2:1");
    in("a numbered device's name", ofServer("Com1"), "error reserved-name 2:1");
    in("a device's name with blanks before the extension", ofServer("nul  .old"),
       "error reserved-name 2:1, warning odd-blanks 2:1");
    in("a device's name behind a blank", ofServer(" con"),
       "error reserved-name 2:1, warning odd-blanks 2:1");
    in("the console's name", ofServer("ConIn$"), "error reserved-name 2:1");
    in("a device's name as a version", ofVersion("CONOUT$.1"),
       "error reserved-name 2:1, warning version-not-numbers 2:1");
    in("a delete in the server's name", ofServer("A\x7F"), "error forbidden-character 2:1");
    in("a control character beyond ASCII in the version", ofVersion("1.0\xC2\x85"),
       "error forbidden-character 2:1, warning version-not-numbers 2:1");
    in("a dot at the end", ofServer("A."), "error trailing-dot-or-blank 2:1");
    in("a blank at the end", ofServer("A "), "error trailing-dot-or-blank 2:1");
    in("a dot at the version's end", ofVersion("1.0."), "error trailing-dot-or-blank 2:1");
    in("servers of the same letters", ofServer("Alpha") + lines + ofServer("ALPHA"),
       "error same-folder 3:1");

    in("another kind beside Official",
       ofServer("S") + lines +
           client(QStringLiteral("S"), QStringLiteral("Nightly"), QStringLiteral("1.0")),
       "error unknown-kind 3:1");
    in("another kind alone",
       client(QStringLiteral("S"), QStringLiteral("official"), QStringLiteral("1.0")),
       "error unknown-kind 2:1, error empty-beta-button 2:1");

    in("an auth that is no sum", withAuth("secret"), "error auth-not-sha1 3:1");
    in("a sum that is cut short", withAuth("4da0b9a5e4a1d1f8d2f0c2b1f1a0e9d8c7b6a59"),
       "error auth-not-sha1 3:1");
    in("a sum with more behind it", withAuth("4da0b9a5e4a1d1f8d2f0c2b1f1a0e9d8c7b6a594a"),
       "error auth-not-sha1 3:1");
    in("an empty auth", withAuth(""), "error auth-not-sha1 3:1");
    in("the sum of no code", withAuth("da39a3ee5e6b4b0d3255bfef95601890afd80709"),
       "warning auth-of-no-code 3:1");

    in("auth in other letters", ofServer("Open") + lines + otherwise("Auth"),
       "error auth-misspelled 3:1");
    for (const char *name : {"AUTH", "auht", "aut", "authh", "authcode", "auth-code", "a:auth",
                             "\xD0\xB0uth", "_auth", "password", "whatever"}) {
        in(name, ofServer("Open") + lines + otherwise(name), "error auth-misspelled 3:1");
    }
    in("the sum of a file in an element of its own",
       QStringLiteral("<file sha1='%1'/>").arg(QLatin1String(sumOfCode)),
       "note unknown-element 2:1");
    in("the sum of an archive, or what closes nothing",
       ofServer("Open") + lines + otherwise("sha1"), "warning auth-misspelled 3:1");
    in("auth of a container",
       QStringLiteral("<beta auth='x'>") + ofServer("S") + QStringLiteral("</beta>"),
       "error auth-elsewhere 2:1, warning unknown-element 2:1");
    in("auth of everything", QStringLiteral("<launcher auth='%1'/>").arg(QLatin1String(sumOfCode)),
       "error auth-elsewhere 2:1");
    in("auth of a tile",
       news("news", "t").replace(QStringLiteral("<news "), QStringLiteral("<news auth='x' ")),
       "error auth-elsewhere 2:1");
    in("auth as an element", ofServer("S") + QStringLiteral("\n<auth>x</auth>"),
       "error auth-elsewhere 3:1, warning text-between-elements 3:8");
    in("a server in other letters",
       ofServer("S").replace(QStringLiteral("server="), QStringLiteral("Server=")),
       "error attribute-misspelled 2:1, error empty-server 2:1");
    in("a kind in other letters",
       ofServer("S").replace(QStringLiteral("name="), QStringLiteral("NAME=")),
       "error attribute-misspelled 2:1, error unknown-kind 2:1, error empty-beta-button 2:1");
    in("a launcher's version in other letters", QStringLiteral("<launcher Version='2'/>"),
       "error attribute-misspelled 2:1");
    in("a tile's picture in other letters",
       news("news", "t").replace(QStringLiteral("imageUrl"), QStringLiteral("imageURL")),
       "error attribute-misspelled 2:1, error missing-attribute 2:1");
    in("the sum of a line end", withAuth("adc83b19e793491b1c6ea0fd8b46cd9f32e592fc"),
       "error auth-of-blank 3:1");
    in("the sum of a blank", withAuth("B858CB282617FB0956D960215C8E84D1CCF909C6"),
       "error auth-of-blank 3:1");
    in("a sum with blanks around it",
       withAuth(QByteArray("\n ").append(sumOfCode).append('\n').constData()),
       "error auth-not-sha1 3:1");
    in("the sum of the server's name",
       withAuth(QCryptographicHash::hash("s", QCryptographicHash::Sha1).toHex().constData()),
       "warning auth-guessable 3:1");
    const auto closedBy = [](const char *code, const char *host) {
        return client(QStringLiteral("S"), QStringLiteral("Beta"), QStringLiteral("1.0"),
                      QStringLiteral("https://%1/a.zip").arg(QLatin1String(host)),
                      Documents::sumOf(QLatin1String(code)));
    };
    in("the guide's code", closedBy("our-code", "files.test"), "warning auth-guessable 2:1");
    in("an archive of two codes",
       closedBy("code of one", "a.example") + lines + closedBy("code of another", "a.example"),
       "warning archive-of-two-codes 3:1");
    in("a closed archive that is open",
       ofUrl("https://a.example/a.zip") + lines +
           client(QStringLiteral("T"), QStringLiteral("Official"), QStringLiteral("1.0"),
                  QStringLiteral("https://a.example/a.zip"), QLatin1String(sumOfCode)),
       "warning closed-archive-is-open 3:1");

    in("an archive over http", ofUrl("http://a.example/a.zip"), "warning http 2:1");
    in("a host that only begins like the loopback", ofUrl("http://127.0.0.1.example/a.zip"),
       "warning http 2:1");
    in("a picture over http", news("news", "t", "http://a.example/p.png"), "warning http 2:1");
    in("a page over http", news("news", "t", "https://a.example/p.png", "http://a.example/"),
       "warning http 2:1");
    in("an archive without a scheme", ofUrl("a.example/a.zip"), "error unusable-address 2:1");
    in("an archive on the disk", ofUrl("file:///a.zip"), "error unusable-address 2:1");
    in("no picture", news("news", "t", ""), "note unusable-address 2:1");
    in("no page", news("homenews", "t", "https://a.example/p.png", ""),
       "note unusable-address 2:1");
    for (const char *page : {"www.a.example", "file:///a.html", "javascript:alert(1)",
                             "steam:", "C:\\a.html", "https:///a.html", "data:text/html,a"}) {
        in(page, news("homenews", "t", "https://a.example/p.png", page),
           "error unusable-address 2:1");
    }
    in("a picture that is mailed", news("news", "t", "mailto:a@a.example"),
       "error unusable-address 2:1");
    in("another program's page", news("news", "t", "https://a.example/p.png", "steam://run/1"),
       "note other-program 2:1");
    in("a longer archive's address than is read",
       ofUrl(("https://a.example/" + QByteArray(8192, 'a') + ".zip").constData()),
       "error unusable-address 2:1, error long-address 2:1");
    in("a longer page's address than is read",
       news("homenews", "t", "https://a.example/p.png",
            ("https://a.example/" + QByteArray(8192, 'a')).constData()),
       "note unusable-address 2:1, error long-address 2:1");
    in("more servers than have buttons",
       serversFrom(0, 99) + lines + ofServer("Beta") + lines + serversFrom(99, 101),
       "note crowded-panel 0:0, error too-many-servers 3:1");
    in("more servers than fit side by side", serversFrom(0, 5), "note crowded-panel 0:0");
    for (const char *name : {"S#1", "A%41", "a%2eb", "#"}) {
        in(name, ofServer(name), "error logo-address 2:1");
    }
    for (const char *name : {"settings.txt", "Offline.TXT", "unzip.exe"}) {
        in(name, ofServer(name), "error name-taken 2:1");
    }
    const char beyond[] = "note name-beyond-ascii 2:1";
    const char invisible[] = "warning invisible-character 2:1, note name-beyond-ascii 2:1";
    in("letters beyond ASCII in a server's name", ofServer("\xC3\x84\xD0\x96"), beyond);
    in("a no-break blank", ofServer("The\xC2\xA0World"), invisible);
    in("a blank of no width", ofServer("S\xE2\x80\x8B"), invisible);
    in("a mark that turns the direction", ofServer("S\xE2\x80\xAE"), invisible);
    in("a soft hyphen in a version", ofVersion("1.0\xC2\xAD"),
       "warning version-not-numbers 2:1, warning invisible-character 2:1");
    in("a no-break blank behind a kind",
       ofServer("S") + lines +
           client(QStringLiteral("S"), QString::fromUtf8("Beta\xC2\xA0"), QStringLiteral("1.0"),
                  QStringLiteral("https://a.example/a.zip")),
       "warning invisible-character 3:1, error unknown-kind 3:1");
    in("a blank in front", ofServer(" S"), "warning odd-blanks 2:1");
    in("several blanks", ofServer("The  World"), "warning odd-blanks 2:1");
    in("a Cyrillic letter among Latin ones", ofServer("\xD0\x90sh"),
       "warning look-alike-letters 2:1, note name-beyond-ascii 2:1");
    in("an accent of its own", ofServer("Cafe\xCC\x81"),
       "warning decomposed-letters 2:1, note name-beyond-ascii 2:1");
    in("servers that look the same", ofServer("Aop") + lines + ofServer("\xD0\x90\xD0\xBE\xD1\x80"),
       "note name-beyond-ascii 3:1, warning look-alike-servers 3:1");
    in("a long way",
       client(QString(180, QLatin1Char('a')), QStringLiteral("Official"), QStringLiteral("1.0"),
              QStringLiteral("https://a.example/a.zip")),
       "warning long-path 2:1");

    const auto archiveIs = [&in](const char *name, const char *url, const char *findings) {
        in(name, ofUrl(url), findings);
    };
    archiveIs("a blank behind the address", "https://a.example/a.zip ",
              "warning archive-not-zip 2:1, error blank-around-address 2:1, "
              "note archive-name-odd 2:1");
    archiveIs("a line end before the address", "\nhttps://a.example/a.zip",
              "error unusable-address 2:1, error blank-around-address 2:1");
    archiveIs("a blank of no width in the address", "https://a.example/a\xE2\x80\x8B.zip",
              "error invisible-character 2:1");
    archiveIs("a Cyrillic letter in the host", "https://\xD0\xB0uth.example/a.zip",
              "warning look-alike-letters 2:1");
    archiveIs("a longer name than any",
              ("https://a.example/" + QByteArray(252, 'a') + ".zip").constData(),
              "error archive-name-too-long 2:1");
    archiveIs("a name that is encoded twice", "https://a.example/a%2520b.zip",
              "note archive-name-odd 2:1");
    archiveIs("no name before the end", "https://a.example/.zip", "note archive-name-odd 2:1");
    for (const char *query : {"Expires=1", "X-Any-Signature=ab", "v=1&token=ab", "sig=a"}) {
        archiveIs(query, (QByteArray("https://a.example/a.zip?") + query).constData(),
                  "warning address-expires 2:1");
    }
    archiveIs("a password in the address", "https://u:p@a.example/a.zip",
              "warning password-in-address 2:1");
    for (const char *host : {"10.0.0.1", "192.168.1.2", "172.20.0.1", "fileserver", "nas.local"}) {
        archiveIs(host, (QByteArray("https://") + host + "/a.zip").constData(),
                  "warning private-address 2:1");
    }
    in("an archive on the own machine, and another elsewhere",
       ofServer("S") + lines +
           client(QStringLiteral("T"), QStringLiteral("Official"), QStringLiteral("1.0"),
                  QStringLiteral("http://localhost:8000/a.zip")),
       "warning private-address 3:1");
    in("a picture and a page on the own machine",
       ofServer("S") + lines + news("news", "t", "http://127.0.0.1/p.png", "http://[::1]/"),
       "warning private-address 3:1, warning private-address 3:1");
    in("the archive of another server",
       client(QStringLiteral("Ashen Moor"), QStringLiteral("Official"), QStringLiteral("1.1"),
              QStringLiteral("https://a.example/ashen-moor-1.1.zip")) +
           lines +
           client(QStringLiteral("Saltreach"), QStringLiteral("Official"), QStringLiteral("1.0.2"),
                  QStringLiteral("https://a.example/1/Ashen-Moor-1.0.2.zip")),
       "warning archive-of-another-server 3:1");
    in("the archive of another version",
       client(QStringLiteral("S"), QStringLiteral("Official"), QStringLiteral("1.5.0"),
              QStringLiteral("https://a.example/a-ue4.27-1.4.2.zip")),
       "warning archive-of-another-version 2:1");
    in("a page that is an archive",
       ofUrl("https://a.example/a.zip") + lines +
           news("news", "t", "https://a.example/p.png", "https://a.example/a.zip"),
       "warning page-is-file 3:1");
    in("a page that is the picture",
       news("news", "t", "https://a.example/p.png", "https://a.example/p.png"),
       "note page-is-file 2:1");
    archiveIs("a page about the archive", "https://a.example/game/blob/main/a.zip",
              "warning page-address 2:1");
    archiveIs("a page that offers the archive", "https://a.example/a.zip?dl=0",
              "warning page-address 2:1");
    in("a page about a picture", news("news", "t", "https://a.example/p.html"),
       "warning page-address 2:1");
    in("blanks around a tile's addresses",
       news("news", "t", "https://a.example/p.png ", "https://a.example/ "),
       "error blank-around-address 2:1, error blank-around-address 2:1");
    in("an archive that is a folder", ofUrl("https://a.example/a/"),
       "warning archive-url-ends-in-slash 2:1");
    in("an archive that is a host", ofUrl("https://a.example"),
       "warning archive-url-ends-in-slash 2:1");
    in("an archive of another ending", ofUrl("https://a.example/get?f=a.zip"),
       "warning archive-not-zip 2:1");
    for (const char *name : {"a.7z", "a.RAR", "a.tar.gz", "a.zip.001", "a.z01"}) {
        in(name, ofUrl((QByteArray("https://a.example/") + name).constData()),
           "error archive-not-zip 2:1");
    }
    in("an archive's name with a number sign", ofUrl("https://a.example/build#3.zip"),
       "error archive-url-fragment 2:1");
    for (const char *name : {"version.dll", "SETUP.EXE", "qt.conf", "a.zip.lnk", "unzip.exe%00.zip",
                             "a%0A.zip", "D:x.zip", "nul.zip", "a%3F.zip"}) {
        in(name, ofUrl((QByteArray("https://a.example/") + name).constData()),
           "error archive-name-refused 2:1");
    }
    in("archives of one name",
       ofUrl("https://a.example/1/client.zip") + lines +
           client(QStringLiteral("S"), QStringLiteral("Beta"), QStringLiteral("1.0"),
                  QStringLiteral("https://a.example/2/Client.zip")),
       "note archive-name-collides 3:1");

    in("an accent in a slide", news("homenews", "Caf\xC3\xA9"), "error latin1-damage 2:1");
    in("letters beyond Latin-1 in a slide", news("homenews", "\xD0\x96"),
       "error latin1-damage 2:1");
    in("a question mark before a slide", news("homenews", "?Why"),
       "warning leading-question-mark 2:1");
    in("a question mark before a tile", news("news", "?Why"), "warning leading-question-mark 2:1");
    in("a picture in a tile's text", news("news", "<img src='x'>"),
       "warning markup-as-letters 2:1");
    in("broken markup in a slide", news("homenews", "<b Why"), "warning markup-as-letters 2:1");
    for (const char *text : {"[b]NEW[/B]", "[url=x]here[/url]", "**NEW** world", "**a b**",
                             "[here](https://a.example/)"}) {
        in(text, news("news", text), "warning markup-as-letters 2:1");
    }
    for (const char *colour : {"#000", "'#0a0a0a'", "\"Black\"", "#332222"}) {
        in(colour,
           news("homenews", (QByteArray("<font color=") + colour + ">a</font>").constData()),
           "warning dark-letters 2:1");
    }
    in("dark letters in a style", news("homenews", "<span style='color: #000080'>a</span>"),
       "warning dark-letters 2:1");
    in("dark letters of a small tile",
       news("news", "t").repeated(3) + lines + news("news", "<font color=navy>a</font>"),
       "warning dark-letters 3:1");
    in("dark letters on a picture", news("news", "<font color=black>a</font>"),
       "note dark-letters 2:1");
    in("a text in CDATA", QStringLiteral("<![CDATA[for others]]>") + ofServer("S"),
       "note text-between-elements 2:22");
    in("a text in CDATA in a tile",
       news("news", "t").replace(QStringLiteral("/>"), QStringLiteral(">\n<![CDATA[a]]></news>")),
       "warning text-between-elements 3:13");
    in("a longer text", news("news", QByteArray(10001, 'w').constData()), "warning text-cut 2:1");
    in("a text that is wider than its place", news("news", QByteArray(80, 'w').constData()),
       "warning text-clipped 2:1");
    in("a title of two lines",
       news("news", "one&#10;two").replace(QStringLiteral("&amp;"), QStringLiteral("&")),
       "warning line-break 2:1");
    in("a title with a gap", news("news", "one    two"), "warning line-break 2:1");
    in("a title of two lines of markup", news("news", "<b>one</b><br>two"),
       "warning line-break 2:1");
    for (const char *damaged :
         {"Caf\xC3\x83\xC2\xA9", "\xC3\xA2\xE2\x82\xAC\xE2\x84\xA2", "a\xEF\xBF\xBD"}) {
        in(damaged, news("news", damaged), "warning wrong-encoding 2:1");
    }
    in("an accent in a slide that is damaged twice",
       news("homenews", "Caf\xC3\x83\xC2\x83\xC3\x82\xC2\xA9"), "warning wrong-encoding 2:1");
    for (const char *entity : {"A &amp; B", "&quot;A", "&#39;", "&#x20AC;", "&eacute;"}) {
        in(entity, news("news", entity), "warning entity-as-letters 2:1");
    }
    in("a tag without its end", news("news", "Press <b> to jump"), "warning taken-as-markup 2:1");
    in("a sign that turns the direction",
       news("news", "a\xE2\x80\xAE"
                    "b"),
       "warning direction 2:1");
    for (const char *left : {"{{ title }}", "${version}", "$(TITLE)", "%TITLE%", "@TITLE@",
                             "__TITLE__", "{% title %}"}) {
        in(left, news("news", left), "error placeholder 2:1");
    }
    in("a text between elements", QStringLiteral("\n  Hello\n") + ofServer("S"),
       "warning text-between-elements 4:1");
    in("an element in CDATA", QStringLiteral("<![CDATA[<client version='1' url='u'/>]]>"),
       "warning text-between-elements 2:41");
    in("an element in a comment",
       QStringLiteral("<!--\n<client version='1' url='u'/>\n<news id='1'/>-->"),
       "note in-comment 4:17");
    in("an element within one that sounds switched off",
       QStringLiteral("<disabled>\n ") + ofServer("S") + QStringLiteral("</disabled>"),
       "warning not-switched-off 3:2");
    for (const char *name : {"enabled", "hidden", "visible", "validUntil"}) {
        in(name,
           QStringLiteral("<client server='S' name='Official' version='1.0'\n "
                          "url='https://a.example/b.zip' %1='false'/>")
               .arg(QLatin1String(name)),
           "warning not-switched-off 2:1");
    }
    for (const char *element :
         {"<Client server='S'/>", "<clients version='1'/>", "<home-news title='t'/>",
          "<build version='1' url='https://a.example/'/>", "<item imageURL='x'/>"}) {
        in(element, QString::fromLatin1(element), "warning unknown-element 2:1");
    }
    in("an element for others", QStringLiteral("<feed name='t' version='2'/>"),
       "note unknown-element 2:1");
}

void TestFindings::found()
{
    QFETCH(QString, document);
    QFETCH(QStringList, findings);
    QCOMPARE(linesOf(findingsIn(document.toUtf8())), findings);
}

void TestFindings::bytes_data()
{
    QTest::addColumn<QByteArray>("body");
    QTest::addColumn<QStringList>("findings");
    QTest::newRow("a zero byte") << QByteArray("<launcher>\n</launcher>\n\0<x/>", 28)
                                 << QStringList{QStringLiteral("error nul-byte 3:0")};
    QTest::newRow("Latin-1") << QByteArray("<launcher>\n<x y='\xE9'/></launcher>")
                             << QStringList{QStringLiteral("note unknown-element 2:1"),
                                            QStringLiteral("error not-utf8 2:7")};
    QTest::newRow("a replacement mark that is written")
        << QByteArray("<launcher x='\xEF\xBF\xBD'/>") << QStringList();
    QTest::newRow("a byte order mark") << QByteArray("\xEF\xBB\xBF<launcher/>") << QStringList();
}

void TestFindings::bytes()
{
    QFETCH(QByteArray, body);
    QFETCH(QStringList, findings);
    QCOMPARE(linesOf(findingsIn(body)), findings);
}

void TestFindings::everyFindingSaysHowToMendIt()
{
    const QString text = document(ofServer("A|B") + ofVersion("22.0") + withAuth("x") +
                                  news("homenews", "?\xC3\xA9"));
    const Findings findings = findingsIn(text.toUtf8());
    VERIFY_RELATION(findings.size(), >=, 4);
    for (const Finding &finding : findings) {
        QVERIFY2(!finding.mend.isEmpty() && !finding.text.isEmpty(), qPrintable(finding.id));
        QVERIFY2(!finding.text.contains(QStringLiteral("%1")), qPrintable(finding.text));
    }
}

// Where a finding's id alone does not tell an operator what to do.
void TestFindings::mends_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("id");
    QTest::addColumn<QString>("said");
    const auto row = [](const char *id, const QString &elements, const char *said) {
        QTest::newRow(said) << document(elements) << QString::fromLatin1(id)
                            << QString::fromLatin1(said);
    };
    const QString twice = ofVersion("1.0") + ofVersion("1.1");
    row("duplicate-client", twice, "if one is meant for testers alone, give it its auth");
    row("unknown-kind", client(QStringLiteral("S"), QStringLiteral("Test"), QStringLiteral("1.0")),
        "a build for testers is one of the two, with an auth");
    row("not-well-formed", QStringLiteral("<x y='Fire & Ember'/>"), "write \"&amp;\" for \"&\"");
#ifndef Q_OS_WIN
    // There what stands behind it is the name, and nothing is refused.
    row("archive-name-refused", ofUrl("https://a.example/clients\\s.zip"),
        "write slashes in the address, and no backslashes");
#endif
    row("archive-name-refused", ofUrl("https://a.example/game.exe"),
        "end the address in a plain file name with .zip");
    row("missing-attribute", QStringLiteral("<news/>") + ofServer("S"),
        ": it is lost, and so is what follows (1 client)");
    row("missing-attribute", QStringLiteral("<news/>"), ", clickUrl: it is lost: add");
}

void TestFindings::mends()
{
    QFETCH(QString, text);
    QFETCH(QString, id);
    QFETCH(QString, said);
    const Findings findings = findingsIn(text.toUtf8());
    const auto found = std::find_if(findings.begin(), findings.end(),
                                    [&id](const Finding &finding) { return finding.id == id; });
    QVERIFY(found != findings.end());
    const QString told = found->text + QStringLiteral(": ") + found->mend;
    QVERIFY2(told.contains(said), qPrintable(told));
}

void TestFindings::mendsOfReleases()
{
    const QString before = document(official(QStringLiteral("S"), QStringLiteral("1.10")));
    const QString now = document(official(QStringLiteral("S"), QStringLiteral("1.9")));
    const DocumentContent previous = readContent(before.toUtf8(), {});
    const Findings findings = findingsOf(readContent(now.toUtf8(), {}), &previous);
    QCOMPARE(linesOf(findings), (QStringList{QStringLiteral("warning version-lower 2:1"),
                                             QStringLiteral("warning archive-reused 2:1")}));
    QCOMPARE(findings.first().mend,
             QStringLiteral("write a greater version than \"1.10\", for an older build as well"));
    QCOMPARE(findings.last().mend,
             QStringLiteral("upload each archive under a name of its own, and "
                            "write its address into url"));
}

void TestFindings::previous_data()
{
    QTest::addColumn<QString>("before");
    QTest::addColumn<QString>("now");
    QTest::addColumn<QStringList>("findings");
    const QStringList none;
    const auto one = [](const char *finding) {
        return QStringList{QStringLiteral("warning ") + QLatin1String(finding)};
    };
    const auto noted = [](const char *finding) {
        return QStringList{QStringLiteral("note ") + QLatin1String(finding)};
    };
    const auto version = [](const char *number) {
        return client(QStringLiteral("S"), QStringLiteral("Official"), QString::fromLatin1(number),
                      QStringLiteral("https://a.example/%1.zip").arg(QLatin1String(number)));
    };
    const QString archive = QStringLiteral("https://a.example/a.zip");
    const auto closed = [&](const char *sum) {
        return client(QStringLiteral("S"), QStringLiteral("Beta"), QStringLiteral("1.0"), archive,
                      QLatin1String(sum));
    };
    const char otherSum[] = "5da0b9a5e4a1d1f8d2f0c2b1f1a0e9d8c7b6a594";
    QTest::newRow("greater") << version("1.9") << version("1.10") << none;
    QTest::newRow("the same") << version("1.9") << version("1.9") << none;
    QTest::newRow("lower") << version("1.10") << version("1.9") << one("version-lower 2:1");
    QTest::newRow("of the same weight")
        << version("1.9") << version("1.9.0") << one("version-equal 2:1");
    QTest::newRow("another archive")
        << version("1.9") << ofVersion("1.9") << one("archive-exchanged 2:1");
    QTest::newRow("another archive at the same address")
        << ofVersion("1.8") << ofVersion("1.9") << one("archive-reused 2:1");
    QTest::newRow("another server")
        << ofServer("T") << ofVersion("0.9") << noted("server-gone 0:0");
    QTest::newRow("another server beside it")
        << ofServer("T") << ofServer("T") + ofServer("S") << none;
    QTest::newRow("another kind") << ofServer("S") + client(QStringLiteral("S"),
                                                            QStringLiteral("Beta"),
                                                            QStringLiteral("1.0"))
                                  << ofServer("S") << noted("client-gone 0:0");
    QTest::newRow("behind a code") << ofServer("S") + closed(nullptr)
                                   << ofServer("S") + closed(sumOfCode) << noted("client-gone 0:0");
    QTest::newRow("closed as before")
        << ofServer("S") + closed(sumOfCode) << ofServer("S") + closed(sumOfCode) << none;
    QTest::newRow("opened") << ofServer("S") + closed(sumOfCode)
                            << ofServer("S") + QLatin1Char('\n') + closed(nullptr)
                            << one("opened-to-all 3:1");
    QTest::newRow("another code") << ofServer("S") + closed(sumOfCode)
                                  << ofServer("S") + QLatin1Char('\n') + closed(otherSum)
                                  << noted("code-changed 3:1") + one("archive-of-two-codes 3:1");
    QTest::newRow("another code with another archive")
        << ofServer("S") + closed(sumOfCode)
        << ofServer("S") + QLatin1Char('\n') +
               closed(otherSum).replace(QStringLiteral("/a.zip"), QStringLiteral("/b.zip"))
        << noted("code-changed 3:1");
    QTest::newRow("a tester's that is gone")
        << ofServer("S") + closed(sumOfCode) << ofServer("S") << none;
}

void TestFindings::previous()
{
    QFETCH(QString, before);
    QFETCH(QString, now);
    QFETCH(QStringList, findings);
    const DocumentContent old = readContent(document(before).toUtf8(), {});
    const DocumentContent current = readContent(document(now).toUtf8(), {});
    QCOMPARE(linesOf(findingsOf(current, &old)), findings);
    QCOMPARE(linesOf(findingsOf(current)), QStringList());
}

void TestFindings::versionInOtherLetters()
{
    const DocumentContent old = readContent(document(ofVersion("1.4-RC1")).toUtf8(), {});
    const auto severe = [&old](const char *version) {
        const DocumentContent now = readContent(document(ofVersion(version)).toUtf8(), {});
        return linesOf(findingsOf(now, &old)).filter(QStringLiteral("error"));
    };
    QCOMPARE(severe("1.4-rc1"), QStringList{QStringLiteral("error same-folder 2:1")});
    QCOMPARE(severe("1.4-RC1"), QStringList());
    QCOMPARE(severe("1.4-rc2"), QStringList());
}

void TestFindings::sumOfSomethingElse_data()
{
    QTest::addColumn<QString>("code");
    QTest::addColumn<QByteArray>("summed");
    QTest::addColumn<bool>("found");
    const auto row = [](const char *name, const char *code, const QByteArray &summed) {
        QTest::newRow(name) << QString::fromUtf8(code) << summed << true;
    };
    QTest::newRow("the code") << QStringLiteral("our-code") << QByteArray("our-code") << false;
    QTest::newRow("another code") << QStringLiteral("our-code") << QByteArray("other") << false;
    QTest::newRow("no code") << QString() << QByteArray("our-code\n") << false;
    row("a line end", "our-code", "our-code\n");
    row("a line end of Windows", "our-code", "our-code\r\n");
    row("a blank", "our-code", "our-code ");
    row("a blank of echo", "our-code", "our-code \r\n");
    row("a blank before it", "our-code", " our-code");
    row("no blank where there is one", "our-code ", "our-code");
    row("quotes", "our-code", "\"our-code\"");
    row("an option of echo", "our-code", "-n our-code\n");
    row("a byte order mark", "our-code", "\xEF\xBB\xBFour-code");
    row("two bytes a letter", "abc", QByteArray("a\0b\0c\0", 6));
    row("two bytes a letter, with a mark", "abc",
        QByteArray("\xFF\xFE"
                   "a\0b\0c\0\r\0\n\0",
                   12));
    row("Latin-1",
        "Gl\xC3\xBC"
        "ck",
        "Gl\xFC"
        "ck");
    row("Cyrillic", "\xD0\xB6\xD1\x83\xD0\xBA", "\xE6\xF3\xEA");
    row("another form of an accent", "Caf\xC3\xA9", "Cafe\xCC\x81");
    row("capital letters", "our-code", "OUR-CODE");
    row("small letters", "Our-Code", "our-code\n");
}

void TestFindings::sumOfSomethingElse()
{
    QFETCH(QString, code);
    QFETCH(QByteArray, summed);
    QFETCH(bool, found);
    const QByteArray sum = QCryptographicHash::hash(summed, QCryptographicHash::Sha1).toHex();
    const QString lines = linesOf(findingsIn(document(withAuth(sum.constData())).toUtf8(), code))
                              .join(QLatin1Char('\n'));
    QCOMPARE(lines.contains(QStringLiteral("error auth-of-other-text 3:1")), found);
}

void TestFindings::codeThatIsNotKept_data()
{
    QTest::addColumn<QString>("code");
    QTest::addColumn<QStringList>("findings");
    const auto row = [](const char *code, const char *finding) {
        QTest::newRow(code) << QString::fromUtf8(code)
                            << QString::fromLatin1(finding).split(QStringLiteral(", "),
                                                                  Qt::SkipEmptyParts);
    };
    row("our-code", "");
    row("our code", "");
    row("our|code", "error code-not-kept 0:0");
    row("|", "error code-not-kept 0:0");
    row("our\ncode", "error code-with-line-end 0:0");
    row("our-code\r", "error code-with-line-end 0:0, warning code-with-blanks 0:0");
    row(" our-code", "warning code-with-blanks 0:0");
    row("Gl\xC3\xBC"
        "ck",
        "note code-beyond-ascii 0:0");
}

void TestFindings::codeThatIsNotKept()
{
    QFETCH(QString, code);
    QFETCH(QStringList, findings);
    QCOMPARE(linesOf(findingsIn(document(ofServer("S")).toUtf8(), code)), findings);
}

void TestFindings::codeDecidesWhatIsSeen()
{
    const QString code = QStringLiteral("code");
    const QString sum = QString::fromLatin1(
        QCryptographicHash::hash(code.toUtf8(), QCryptographicHash::Sha1).toHex());
    const QByteArray body =
        document(
            ofServer("B") + ofServer("Beta") + ofServer("a") +
            client(QStringLiteral("B"), QStringLiteral("Beta"), QStringLiteral("2.0"), {}, sum) +
            client(QStringLiteral("T"), QStringLiteral("Nightly"), QStringLiteral("2.0"), {}, sum))
            .toUtf8();
    const auto columns = [&body](const QString &with) {
        QStringList names;
        const PlayersView view = playersViewOf(readContent(body, with));
        for (const PlayersView::Column &column : view.columns) {
            names << column.server + QLatin1Char(' ') + column.officialVersion + QLatin1Char(' ') +
                         column.betaVersion;
        }
        names << QString::number(view.hidden.size());
        return names;
    };
    QCOMPARE(columns({}), (QStringList{QStringLiteral("B 1.0 "), QStringLiteral("a 1.0 "),
                                       QStringLiteral("Beta 1.0 "), QStringLiteral("2")}));
    QCOMPARE(columns(code), (QStringList{QStringLiteral("B 1.0 2.0"), QStringLiteral("T  "),
                                         QStringLiteral("a 1.0 "), QStringLiteral("Beta 1.0 "),
                                         QStringLiteral("0")}));
    // The button that selects nothing is there for the tester only.
    QVERIFY(!linesOf(findingsIn(body))
                 .join(QLatin1Char(' '))
                 .contains(QStringLiteral("empty-beta-button")));
    QVERIFY(linesOf(findingsIn(body, code))
                .join(QLatin1Char(' '))
                .contains(QStringLiteral("empty-beta-button")));
}

void TestFindings::lostThingsAreCounted()
{
    const Findings broken = findingsIn(
        document(QStringLiteral("<client/>") + ofServer("A") + ofServer("B") + news("news", "t"))
            .toUtf8());
    QCOMPARE(broken.size(), 1);
    QCOMPARE(broken.constFirst().text,
             QStringLiteral("the client element lacks version, url: it is lost, and so is what "
                            "follows (2 client, 1 news)"));
    const Findings late =
        findingsIn(document(news("news", "t").repeated(9) + ofServer("A")).toUtf8());
    QVERIFY(late.constLast().text.endsWith(QStringLiteral("lost from here on: 1 client")));
}

void TestFindings::namesAreToldOnce()
{
    const QByteArray body =
        document(client(QStringLiteral("A*"), QStringLiteral("Official"), QStringLiteral("1.0")) +
                 client(QStringLiteral("A*"), QStringLiteral("Beta"), QStringLiteral("1.0")))
            .toUtf8();
    QCOMPARE(findingsIn(body).size(), 1);
}

// Whatever the window makes no folder of, here or on Windows.
void TestFindings::everyNameThatIsNoneIsFound()
{
    const QStringList names =
        QStringLiteral("Alpha;2.1;..2;. .;.;..;a/b;/;a/;a\\b;..\\b;C:;a:b;a<b;a>b;a\"b;a|b;a?b;a*b;"
                       "con;nul.x;com1 .x;lpt0;conin$;conout$;prn;aux;com10;a.;a ;a\u007F;a\u0085")
            .split(QLatin1Char(';'))
        << QString(255, QLatin1Char('a')) << QString(256, QLatin1Char('a'));
    const QStringList ids{
        QStringLiteral("bar-in-name"),         QStringLiteral("dot-name"),
        QStringLiteral("forbidden-character"), QStringLiteral("reserved-name"),
        QStringLiteral("slash-in-name"),       QStringLiteral("trailing-dot-or-blank")};
    for (const QString &name : names) {
        const Findings findings = findingsIn(document(official(name)).toUtf8());
        const bool found =
            std::any_of(findings.begin(), findings.end(),
                        [&ids](const Finding &finding) { return ids.contains(finding.id); });
        QVERIFY2(found != (isPlainName(name) && isPlainOnWindows(name)), qPrintable(name));
    }
}

void TestFindings::orderAndExitCodes()
{
    const auto at = [](int line, int column, Finding::Severity severity) {
        Finding finding;
        finding.line = line;
        finding.column = column;
        finding.severity = severity;
        finding.id = QStringLiteral("x");
        return finding;
    };
    QCOMPARE(exitCodeOf({}), 0);
    QCOMPARE(exitCodeOf({at(1, 1, Finding::Note)}), 0);
    QCOMPARE(exitCodeOf({at(1, 1, Finding::Note), at(1, 1, Finding::Warning)}), 1);
    QCOMPARE(exitCodeOf({at(1, 1, Finding::Error), at(1, 1, Finding::Warning)}), 2);
    QCOMPARE(linesOf(sortedByPlace(
                 {at(2, 1, Finding::Error), at(1, 9, Finding::Error), at(1, 2, Finding::Warning)})),
             (QStringList{QStringLiteral("warning x 1:2"), QStringLiteral("error x 1:9"),
                          QStringLiteral("error x 2:1")}));
}

QTEST_GUILESS_MAIN(TestFindings)
#include "tst_findings.moc"
