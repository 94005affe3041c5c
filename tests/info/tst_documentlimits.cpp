#include "info/clientinfo.h"
#include "info/launcherdocumentreader.h"
#include "support/documents.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

namespace
{
// Notes what a document brings.
class Heard : public LauncherDocumentHandler
{
public:
    explicit Heard(const QString &document) { readLauncherDocument(document, {}, *this); }

    void elementStarted(const QString & /*name*/) override { ++elements; }
    void launcherVersion(int /*version*/) override {}
    void client(const ClientInfo &info) override
    {
        servers << info.server;
        version = info.version;
        url = info.url;
    }
    void homeNews(int /*index*/, const NewsEntry &entry) override { item = entry; }
    void news(int /*index*/, const NewsEntry &entry) override { item = entry; }
    void brokenClient() override { ++broken; }
    void brokenNews() override { ++broken; }

    QStringList servers;
    QString version; // of the last client
    QString url;
    NewsEntry item; // the last slide or tile
    int elements = 0;
    int broken = 0;
};

const QStringList none;
const QStringList first{QStringLiteral("A")};
const QStringList both{QStringLiteral("A"), QStringLiteral("Z")};

// Four attributes each.
QString client(const char *server, const QString &url = QStringLiteral("u"))
{
    return Documents::client(QLatin1String(server), QStringLiteral("Official"), QStringLiteral("1"),
                             url);
}

QString betweenClients(const QString &elements)
{
    return QStringLiteral("<l>") + client("A") + elements + client("Z") + QStringLiteral("</l>");
}

QString withAttributes(const char *name, int count)
{
    QString element = QStringLiteral("<x");
    for (int i = 0; i < count; ++i) {
        element += QStringLiteral(" %1%2='n'").arg(QLatin1String(name)).arg(i);
    }
    return element + QStringLiteral("/>");
}
} // namespace

// How much of a document is read when it asks for more than any game needs.
class TestDocumentLimits : public QObject
{
    Q_OBJECT

private slots:
    void typeThatDeclaresEndsTheReading_data();
    void typeThatDeclaresEndsTheReading();
    void otherTypesAreRead_data();
    void otherTypesAreRead();
    void knownReferencesAreRead();
    void declaredReferencesBringNothing_data();
    void declaredReferencesBringNothing();
    void typeElsewhereIsNotLoaded();

    void boundsOfTheWhole_data();
    void boundsOfTheWhole();
    void elementBeyondABoundIsReportedAsBroken_data();
    void elementBeyondABoundIsReportedAsBroken();

    void addresses_data();
    void addresses();
};

void TestDocumentLimits::typeThatDeclaresEndsTheReading_data()
{
    QTest::addColumn<QString>("type");
    const auto row = [](const char *name, const char *type) {
        QTest::newRow(name) << QString::fromLatin1(type);
    };
    row("an entity", "<!DOCTYPE l [<!ENTITY e 'x'>]>");
    row("a parameter entity", "<!DOCTYPE l [<!ENTITY % e 'x'>]>");
    row("an attribute list", "<!DOCTYPE l [<!ATTLIST l a CDATA #IMPLIED>]>");
    row("an element", "<!DOCTYPE l [<!ELEMENT l ANY>]>");
    row("a comment alone", "<!DOCTYPE l [<!-- nothing -->]>");
    row("nothing at all", "<!DOCTYPE l []>");
    row("on a line of its own", "<!DOCTYPE l\n\n[\n<!ENTITY e 'x'>\n]\n>\n");
    row("behind an address", "<!DOCTYPE l SYSTEM 'l.dtd' [<!ENTITY e 'x'>]>");
    row("that is not quite one", "<! DOCTYPE l [<!ENTITY e 'x'>]>");
    row("behind a quote that closes nothing", "<!DOCTYPE l ' [<!ENTITY e 'x'>]>");
    row("behind the first line, a comment and an instruction",
        "<?xml version='1.0'?>\n<!-- <> --><?p <>?>\n<!DOCTYPE l [<!ENTITY e 'x'>]>");
}

void TestDocumentLimits::typeThatDeclaresEndsTheReading()
{
    QFETCH(QString, type);
    const Heard heard(type + betweenClients({}));
    QCOMPARE(heard.servers, none);
    QCOMPARE(heard.elements, 0);
    QCOMPARE(heard.broken, 0);
}

void TestDocumentLimits::otherTypesAreRead_data()
{
    QTest::addColumn<QString>("before");
    QTest::addColumn<QString>("within");
    const auto row = [](const char *name, const char *before, const char *within = "") {
        QTest::newRow(name) << QString::fromLatin1(before) << QString::fromLatin1(within);
    };
    row("none", "");
    row("a name", "<!DOCTYPE launcher>");
    row("a name over lines", "<?xml version='1.0'?>\n<!DOCTYPE\nlauncher\n>\n");
    row("an address", "<!DOCTYPE launcher SYSTEM \"launcher.dtd\">");
    row("brackets in the address", "<!DOCTYPE launcher PUBLIC '-//x//' \"file:///[1]>.dtd\">");
    row("a declaration in a comment", "<!-- <!DOCTYPE l [<!ENTITY e 'x'>]> --><!DOCTYPE l>",
        "<!-- <!DOCTYPE l [<!ENTITY e 'x'>]> -->");
    row("a declaration in an instruction", "<?p <!DOCTYPE l [<!ENTITY e 'x'>]> ?>",
        "<?p <!DOCTYPE l [ ?>");
    row("a declaration as it is written", "", "<![CDATA[ <!DOCTYPE l [<!ENTITY e 'x'>]> ]]>");
    row("a declaration in an attribute", "", "<x a='&lt;!DOCTYPE l [&lt;!ENTITY e' b=\"[']>\"/>");
    row("a declaration in a text", "", "&lt;!DOCTYPE l [&lt;!ENTITY e 'x'>]> DOCTYPE [ \" '");
}

void TestDocumentLimits::otherTypesAreRead()
{
    QFETCH(QString, before);
    QFETCH(QString, within);
    QCOMPARE(Heard(before + betweenClients(within)).servers, both);
}

void TestDocumentLimits::knownReferencesAreRead()
{
    const QString written =
        QStringLiteral("<l><client url='u' version='&lt;&gt;&amp;&quot;&apos;&#65;&#x42;'/></l>");
    QCOMPARE(Heard(written).version, QStringLiteral("<>&\"'AB"));
    QCOMPARE(Heard(QStringLiteral("<!DOCTYPE l>") + written).version, QStringLiteral("<>&\"'AB"));
}

void TestDocumentLimits::declaredReferencesBringNothing_data()
{
    QTest::addColumn<QString>("document");
    const auto row = [](const char *name, const QString &entity, const QString &content) {
        QTest::newRow(name)
            << QStringLiteral("<!DOCTYPE l [<!ENTITY e \"%1\">]><l>%2</l>").arg(entity, content);
    };
    row("letters in a title", QStringLiteral("x").repeated(4000),
        Documents::news(QStringLiteral("news"), QStringLiteral("&e;").repeated(2000))
            .replace(QStringLiteral("&amp;"), QStringLiteral("&")));
    row("elements", QStringLiteral("<a/>").repeated(1000), QStringLiteral("&e;").repeated(100));
}

void TestDocumentLimits::declaredReferencesBringNothing()
{
    QFETCH(QString, document);
    const Heard heard(document);
    QCOMPARE(heard.elements, 0);
    QCOMPARE(heard.item.title.size(), 0);
}

void TestDocumentLimits::typeElsewhereIsNotLoaded()
{
    const QTemporaryDir folder;
    QFile file(folder.filePath(QStringLiteral("l.dtd")));
    QVERIFY(file.open(QIODevice::WriteOnly));
    QVERIFY(file.write("<!ATTLIST client server CDATA 'loaded'>") > 0);
    file.close();
    const Heard heard(QStringLiteral("<!DOCTYPE l SYSTEM '%1'><l><client version='1' url='u'/></l>")
                          .arg(file.fileName()));
    QCOMPARE(heard.servers, QStringList{QString()});
}

void TestDocumentLimits::boundsOfTheWhole_data()
{
    QTest::addColumn<QString>("between");
    QTest::addColumn<bool>("readOn");
    const auto row = [](const char *name, const QString &between, bool readOn) {
        QTest::newRow(name) << between << readOn;
    };
    // Three elements stand around.
    const QString element = QStringLiteral("<x/>");
    row("20,000 elements", element.repeated(19997), true);
    row("20,001 elements", element.repeated(19998), false);
    const QString open = QStringLiteral("<x>");
    const QString close = QStringLiteral("</x>");
    row("99 open elements around an end", open.repeated(99) + close.repeated(99), true);
    row("100 open elements around an end", open.repeated(100) + close.repeated(100), false);
    row("many elements side by side", (open + open + close + close).repeated(500), true);
    const QString comment = QStringLiteral("<!---->");
    row("100,000 pieces of markup", comment.repeated(99997), true);
    row("100,001 pieces of markup", comment.repeated(99998), false);
    // Eight attributes stand around.
    const QString thousand = withAttributes("a", 1000);
    row("100,000 attributes", thousand.repeated(99) + withAttributes("a", 992), true);
    row("100,001 attributes", thousand.repeated(99) + withAttributes("a", 993), false);
    row("100 names of namespaces", withAttributes("xmlns:n", 100), true);
    row("101 names of namespaces", withAttributes("xmlns:n", 101), false);
    row("101 names of namespaces, each in an element",
        QStringLiteral("<x xmlns:n='n'/>").repeated(101), false);
    row("101 namespaces without a name", QStringLiteral("<x xmlns='n'/>").repeated(101), false);
    row("namespaces count as attributes",
        thousand.repeated(99) + withAttributes("a", 900) + withAttributes("xmlns:n", 93), false);
}

void TestDocumentLimits::boundsOfTheWhole()
{
    QFETCH(QString, between);
    QFETCH(bool, readOn);
    QCOMPARE(Heard(betweenClients(between)).servers, readOn ? both : first);
}

void TestDocumentLimits::elementBeyondABoundIsReportedAsBroken_data()
{
    QTest::addColumn<QString>("element");
    QTest::addColumn<int>("broken");
    QTest::newRow("a client") << client("late") << 1;
    QTest::newRow("a tile") << Documents::news(QStringLiteral("news"), QStringLiteral("t")) << 1;
    QTest::newRow("another") << QStringLiteral("<x/>") << 0;
}

void TestDocumentLimits::elementBeyondABoundIsReportedAsBroken()
{
    QFETCH(QString, element);
    QFETCH(int, broken);
    const Heard heard(QStringLiteral("<x>").repeated(100) + element);
    QCOMPARE(heard.elements, 100 + broken);
    QCOMPARE(heard.broken, broken);
    QCOMPARE(heard.servers, none);
}

void TestDocumentLimits::addresses_data()
{
    QTest::addColumn<int>("length");
    QTest::addColumn<bool>("kept");
    QTest::newRow("the longest") << 8192 << true;
    QTest::newRow("longer") << 8193 << false;
}

// What counts as empty is there all the same, and ends nothing.
void TestDocumentLimits::addresses()
{
    QFETCH(int, length);
    QFETCH(bool, kept);
    const QString longText(length, QLatin1Char('x'));
    const QString shown = kept ? longText : QString();
    const Heard entry(QStringLiteral("<l>") + client("A", longText));
    QCOMPARE(entry.servers, first);
    QCOMPARE(entry.url, shown);
    for (const char *kind : {"homenews", "news"}) {
        const Heard heard(QStringLiteral("<l>") + Documents::news(QLatin1String(kind), longText,
                                                                  longText, longText, longText));
        QCOMPARE(heard.broken, 0);
        QCOMPARE(heard.item.imageUrl, shown);
        QCOMPARE(heard.item.clickUrl, shown);
        QCOMPARE(heard.item.title, longText);
        QCOMPARE(heard.item.description, longText);
    }
}

QTEST_GUILESS_MAIN(TestDocumentLimits)
#include "tst_documentlimits.moc"
