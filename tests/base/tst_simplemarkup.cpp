#include "base/simplemarkup.h"

#include <QTest>

// Which texts of a document are shown as rich text, and how much of them.
class TestSimpleMarkup : public QObject
{
    Q_OBJECT

private slots:
    void simpleMarkup_data();
    void simpleMarkup();
    void depth_data();
    void depth();
    void length();
    void shownPart();
};

void TestSimpleMarkup::simpleMarkup_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("simple");
    const auto simple = [](const char *text) {
        QTest::newRow(text) << QString::fromUtf8(text) << true;
    };
    const auto other = [](const char *text) {
        QTest::newRow(text) << QString::fromUtf8(text) << false;
    };
    QTest::newRow("nothing") << QString() << true;
    simple("Keep your fire small.");
    simple("Smoke & fire, 5 > 3");
    simple("&lt;img src=&quot;file:pipe&quot;&gt;");
    simple("<b>fire</b> & smoke");
    simple("<B>fire</B>");
    simple("<b ><i\n>fire</i ></b\t>");
    simple("<u>a</u><s>b</s><em>c</em><strong>d</strong>");
    simple("first<br>second<br/>third<br />");
    simple("<p>first<p>second");
    simple("<p align=\"center\">first</p>");
    simple("<b>never closed");
    simple("<ul><li>one<li>two</ul>");
    simple("<ol type='1'><li>one</li><li>two</li></ol>");
    simple("<ul><li><p>one</ul>");
    simple("<b/>");
    simple("<font color=red size=+2 face=\"Lato, 'DejaVu Sans'\">fire</font>");
    simple("<font color=\"#ff8000\">fire</font>");
    simple("<span style=\"\">fire</span>");
    simple("<span style=\" color:#ff0000; font-weight:600;\">fire</span>");
    simple("<span style=\"COLOR: rgb(255, 0, 0)\">fire</span>");
    simple("<span style=\"background-color: rgba(0,0,0,50%); font-family:'Lato'\">fire</span>");
    simple(
        "<span style='font-size: 14px; font-style: italic; text-decoration: underline'>x</span>");
    simple("<span style='font-size:99px'>fire</span>");
    simple("<span style='font-size:99.999pt'>fire</span>");
    simple("<p style='margin-left:-99px; margin-top:+9.5em'>fire</p>");
    simple("<p style=\"margin-top:0px; text-align: right\" dir=\"rtl\">fire</p>");

    other("<img src=\"file:///dev/zero\">");
    other("<IMG SRC=pipe>");
    other("<b><img src=pipe></b>");
    other("<table><tr><td>fire</td></tr></table>");
    other("<a href=\"https://example.test\">fire</a>");
    other("<link rel=stylesheet href=pipe>");
    other("<style>p { background-image: url(pipe) }</style>");
    other("<html><body>fire</body></html>");
    other("<!DOCTYPE html><b>fire</b>");
    other("<?xml version=\"1.0\"?><b>fire</b>");
    other("<!-- fire -->");
    other("<div>fire</div>");
    other("<bold>fire</bold>");
    other("5 < 3");
    other("<3");
    other("< b>fire</b>");
    other("<b");
    other("<b <i>>");
    other("</b>");
    other("<b>fire</i>");
    other("<b><i>fire</b></i>");
    other("</br>");
    other("</b style=\"color:red\">");
    other("<b//>");
    other("<b onclick=fire>");
    other("<b style>");
    other("<b style=>");
    other("<b style=\"color:red>fire</b>");
    other("<b style=\"color:red\"style=\"color:red\">fire</b>");
    other("<p background=\"pipe\">fire</p>");
    other("<ul style=\"list-style-image:url(pipe)\"><li>fire</ul>");
    other("<p style=\"background-image:url(pipe)\">fire</p>");
    other("<p style=\"background:url(pipe)\">fire</p>");
    other("<p style=\"background-color:url(pipe)\">fire</p>");
    other("<p style=\"color:red;background-image : URL( 'pipe' )\">fire</p>");
    other("<p style=\"font-family:url(pipe)\">fire</p>");
    other("<p style=\"font-family:'a;background-image:url(pipe)'\">fire</p>");
    other("<p style=\"font-family:&#117;rl\">fire</p>");
    other("<p style=\"color:\\75 rl(pipe)\">fire</p>");
    other("<p style=\"co/**/lor:red\">fire</p>");
    other("<p style=\"page-break-before:always\">fire</p>");
    other("<p style=\"color\">fire</p>");
    for (const char *unit : {"", "px", "pt", "em", "%"}) {
        for (const char *property :
             {"font-size", "margin-top", "margin-bottom", "margin-left", "margin-right"}) {
            other((QByteArray("<p style='") + property + ":100" + unit + "'>fire</p>").constData());
        }
    }
    other("<p style=\"margin-left:-100px\">fire</p>");
    other("<p style=\"font-size:099px\">fire</p>");
    other("<font size=\"99\">fire</font>");
    other("<font face=\"file:pipe\">fire</font>");
    other("<font color=\"url(pipe)\">fire</font>");
}

void TestSimpleMarkup::simpleMarkup()
{
    QFETCH(QString, text);
    QFETCH(bool, simple);
    QCOMPARE(isSimpleMarkup(text), simple);
    QCOMPARE(isSimpleMarkup(QStringLiteral("The fair:\n") + text), simple);
    // What a line of the launcher's own says around it.
    QCOMPARE(isSimpleMarkup(text + QStringLiteral(": 5.0 kB/s")), simple);
}

void TestSimpleMarkup::depth_data()
{
    QTest::addColumn<QString>("opening");
    QTest::addColumn<QString>("between");
    QTest::newRow("letters") << QStringLiteral("<b>") << QString();
    QTest::newRow("lists") << QStringLiteral("<ul>") << QString();
    QTest::newRow("with line ends")
        << QStringLiteral("<span style=\"color:red\">") << QStringLiteral("<br>");
}

void TestSimpleMarkup::depth()
{
    QFETCH(QString, opening);
    QFETCH(QString, between);
    QVERIFY(isSimpleMarkup((opening + between).repeated(deepestMarkup)));
    QVERIFY(!isSimpleMarkup((opening + between).repeated(deepestMarkup) + opening));
    QVERIFY(isSimpleMarkup(QStringLiteral("<b><i>fire</i></b>").repeated(100)));
    QVERIFY(isSimpleMarkup(QStringLiteral("<p>fire").repeated(100)));
}

void TestSimpleMarkup::length()
{
    const QString markup = QStringLiteral("<b>fire</b>");
    const int rest = longestShownText - markup.size();
    QVERIFY(isSimpleMarkup(markup + QString(rest, QLatin1Char('x'))));
    QVERIFY(!isSimpleMarkup(markup + QString(rest + 1, QLatin1Char('x'))));
}

void TestSimpleMarkup::shownPart()
{
    const QString longest(longestShownText, QLatin1Char('x'));
    QCOMPARE(shownPartOf(QString()), QString());
    QCOMPARE(shownPartOf(longest), longest);
    QCOMPARE(shownPartOf(longest + QLatin1Char('y')), longest);
    // A letter of two halves is not torn.
    const QString flame = QString::fromUtf8("\xF0\x9F\x94\xA5");
    QCOMPARE(flame.size(), 2);
    const QString before = longest.mid(1);
    QCOMPARE(shownPartOf(before + flame), before);
    QCOMPARE(shownPartOf(before.mid(1) + flame + flame), before.mid(1) + flame);
}

QTEST_GUILESS_MAIN(TestSimpleMarkup)
#include "tst_simplemarkup.moc"
