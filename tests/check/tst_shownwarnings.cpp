#include "base/labeltext.h"
#include "check/pictures.h"
#include "check/shownmarkup.h"
#include "check/textroom.h"
#include "fetch/picturesize.h"
#include "stage.h"
#include "support/relation.h"
#include "support/urlcatcher.h"

#include <QBuffer>
#include <QDesktopServices>
#include <QFontMetricsF>
#include <QImage>
#include <QImageReader>
#include <QLabel>
#include <QTextDocument>
#include <QTextLayout>

#include <algorithm>
#include <cmath>

namespace
{
const QString failed = QStringLiteral("Download failed");

// As an operator writes it: the text may hold references.
QString newsOf(const QString &kind, const QString &title, const QString &description,
               const QString &page = QStringLiteral("http://127.0.0.1:9/"))
{
    return Documents::news(kind, title, description, QStringLiteral("http://127.0.0.1:9/p.png"),
                           page)
        .replace(QStringLiteral("&amp;"), QStringLiteral("&"));
}

QString tile(const QString &title)
{
    return newsOf(QStringLiteral("news"), title, QStringLiteral("d"));
}

struct TextPlace {
    QLabel *label;
    TextRoom room;
};

// All eighteen texts, those of slides first.
QVector<TextPlace> placesOf(const testform &window)
{
    QVector<TextPlace> places;
    for (const News &slide : window.homeNews) {
        places << TextPlace{slide.labelTitle, roomOfSlide(TextPart::Title)}
               << TextPlace{slide.labelSubtitle, roomOfSlide(TextPart::Description)};
    }
    for (int i = 0; i < 6; ++i) {
        places << TextPlace{window.news[i].labelTitle, roomOfTile(i, TextPart::Title)}
               << TextPlace{window.news[i].labelSubtitle, roomOfTile(i, TextPart::Description)};
    }
    return places;
}

// What of the label its parents let be seen, in its own coordinates.
QRect seenPartOf(const QLabel &label)
{
    QRect seen = label.rect();
    QPoint offset;
    for (const QWidget *widget = &label; !widget->isWindow(); widget = widget->parentWidget()) {
        offset += widget->pos();
        seen &= widget->parentWidget()->rect().translated(-offset);
    }
    return seen;
}

// What the label draws with. The titles of slides ask for a family of the name "Lato Bold", which
// not every system makes of the bold letters of Lato: where something else stands in, they are
// measured as what they ask for.
QFont fontOf(const QLabel &label)
{
    QFont font = label.font();
    if (font.family() == QLatin1String("Lato Bold")) {
        font.setFamily(QStringLiteral("Lato"));
        font.setBold(true);
    }
    return font;
}

QByteArray savedAs(const char *format, const QImage &image)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, format, 90);
    return bytes;
}

QImage stripes(int width, int height)
{
    QImage image(width, height, QImage::Format_RGB32);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            image.setPixelColor(x, y, QColor(x * 7 % 256, y * 5 % 256, (x + y) % 256));
        }
    }
    return image;
}

// A JPEG file that says how to turn it, as cameras write it.
QByteArray withOrientation(QByteArray jpeg, char orientation)
{
    const QByteArray directory =
        QByteArray("\1\0\x12\1\3\0\1\0\0\0", 10) + QByteArray(1, orientation) + QByteArray(7, '\0');
    const QByteArray exif = QByteArray("Exif\0\0II*\0\x8\0\0\0", 14) + directory;
    const QByteArray segment = QByteArray("\xFF\xE1\0", 3) + char(exif.size() + 2) + exif;
    return jpeg.insert(2, segment);
}

// Two pictures of one pixel, red and blue.
QByteArray twoPicturesInGif()
{
    return QByteArray("GIF89a\1\0\1\0\x80\0\0\xFF\0\0\0\0\xFF", 19) +
           QByteArray("!\xF9\4\0\x0A\0\0\0,\0\0\0\0\1\0\1\0\0\2\2D\1\0", 23) +
           QByteArray("!\xF9\4\0\x0A\0\0\0,\0\0\0\0\1\0\1\0\0\2\2L\1\0;", 24);
}

// A picture of 128 grey tones. Its codes are bytes, for the table never grows between two of its
// beginnings.
QByteArray stripesInGif(int side)
{
    const auto number = [](int value) { return QByteArray(1, char(value)); };
    const QByteArray sides = number(side % 256) + number(side / 256);
    QByteArray bytes = "GIF89a" + sides + sides + QByteArray("\xF6\0\0", 3);
    for (int tone = 0; tone < 128; ++tone) {
        bytes += number(2 * tone).repeated(3);
    }
    bytes += ',' + QByteArray(4, '\0') + sides + sides + QByteArray("\0\7", 2);
    constexpr int clear = 128;
    constexpr int end = 129;
    constexpr int block = 100;
    for (int begin = 0; begin < side * side; begin += block) {
        const int pixels = std::min(block, side * side - begin);
        bytes += number(pixels + 1) + number(clear);
        for (int i = begin; i < begin + pixels; ++i) {
            bytes += number((i % side + i / side) % clear);
        }
    }
    return bytes + number(1) + number(end) + QByteArray("\0;", 2);
}

QStringList idsIn(const QByteArray &picture, const QSize &shown)
{
    QStringList ids;
    const Findings findings = findingsOfPicture(picture, shown, {}, QStringLiteral("it"));
    for (const Finding &finding : findings) {
        ids << finding.id;
    }
    return ids;
}
} // namespace

#define LOAD_WARNED(stage, document, id)                                                           \
    QVERIFY((stage).load document);                                                                \
    QVERIFY2((stage).warnedOf(id), id)

// What the checker says of texts and pictures beside what the real window, or at least the decoder,
// does with them.
class TestShownWarnings : public QObject
{
    Q_OBJECT

private slots:
    void placesOfTexts();
    void clippedText_data();
    void clippedText();
    void descriptionOfTooManyLines();
    void lineBreak_data();
    void lineBreak();
    void textsAsTheyAreShown_data();
    void textsAsTheyAreShown();
    void shownAsMarkup_data();
    void shownAsMarkup();
    void takenAsMarkup();
    void darkLetters();
    void fromTheRight();
    void clientsThatAreSeen_data();
    void clientsThatAreSeen();
    void clientsThatAreNotSeen_data();
    void clientsThatAreNotSeen();

    void accentInASlide();
    void mail();
    void emptyPicture();
    void otherArchives_data();
    void otherArchives();

    void stretchedPicture();
    void animatedPicture();
    void turnedPicture();
    void transparentPicture();
    void logosThatAreOne();
    void picturesThatAreOne();
    void cutPicture_data();
    void cutPicture();
    void pictures_data();
    void pictures();
};

// What the checker believes of the window: the width of each place, and of the letters in it.
void TestShownWarnings::placesOfTexts()
{
    Stage stage;
    QVERIFY(stage.load({tile(QStringLiteral("t"))}));
    const QVector<TextPlace> places = placesOf(*stage.window);
    QCOMPARE(places.size(), 18);
    stage.window->show();
    QVERIFY(QTest::qWaitForWindowExposed(stage.window.get()));
    for (const TextPlace &place : places) {
        place.label->ensurePolished();
        const QByteArray name = place.label->objectName().toLatin1();
        QVERIFY2(place.room.width == seenPartOf(*place.label).width(), name.constData());
        QVERIFY2(place.label->wordWrap() == (place.room.height != 0), name.constData());
        if (place.room.height != 0) {
            QVERIFY2(place.room.height == place.label->height(), name.constData());
        }
        QVERIFY2(place.label->font().pixelSize() == place.room.letterHeight, name.constData());
        for (const char *text :
             {"The Hill That Breathes", "LANTERN FAIR", "Music at the Caf\xC3\xA9 of Cinders",
              "\xD0\x9D\xD0\xBE\xD0\xB2\xD0\xBE\xD1\x81\xD1\x82\xD0\xB8", "0123456789 (20 %)"}) {
            const QString shown = QString::fromUtf8(text);
            const double real = QFontMetricsF(fontOf(*place.label)).horizontalAdvance(shown);
            const double measured = widthOf(shown, place.room);
            QVERIFY2(std::abs(real - measured) <= 0.06 * real,
                     qPrintable(QStringLiteral("%1 %2: %3 instead of %4")
                                    .arg(place.label->objectName(), shown)
                                    .arg(measured)
                                    .arg(real)));
        }
    }
}

void TestShownWarnings::clippedText_data()
{
    QTest::addColumn<bool>("slide");
    QTest::addColumn<int>("before"); // tiles
    QTest::addColumn<bool>("title");
    const auto rows = [](const char *name, bool slide, int before) {
        QTest::addRow("%s, title", name) << slide << before << true;
        QTest::addRow("%s, description", name) << slide << before << false;
    };
    QTest::newRow("slide") << true << 0 << true;
    rows("big", false, 0);
    rows("medium", false, 1);
    rows("small", false, 3);
}

void TestShownWarnings::clippedText()
{
    QFETCH(bool, slide);
    QFETCH(int, before);
    QFETCH(bool, title);
    const TextPart part = title ? TextPart::Title : TextPart::Description;
    const TextRoom room = slide ? roomOfSlide(part) : roomOfTile(before, part);
    const QString words = QStringLiteral("lanterns and cinders at the hill that breathes ");
    const QString all = words.repeated(5);
    const int fits = charactersThatFit(all, room);
    VERIFY_RELATION(fits, <, all.size());
    const auto document = [&](const QString &text) {
        QStringList elements;
        for (int i = 0; i < before; ++i) {
            elements << tile(QStringLiteral("t"));
        }
        return elements << newsOf(slide ? QStringLiteral("homenews") : QStringLiteral("news"),
                                  title ? text : QStringLiteral("t"),
                                  title ? QStringLiteral("d") : text);
    };
    const auto real = [&](const Stage &stage, const QString &text) {
        const News &item =
            slide ? stage.window->homeNews[0] : stage.window->news[before]; // by value elsewhere
        QLabel *label = title ? item.labelTitle : item.labelSubtitle;
        label->ensurePolished();
        return label->text() == text ? QFontMetricsF(fontOf(*label)).horizontalAdvance(text) : -1;
    };
    Stage stage;
    // Clearly too long.
    const QString tooLong = all.left(fits * 11 / 10 + 2) + QLatin1Char('x');
    LOAD_WARNED(stage, (document(tooLong)), "text-clipped");
    VERIFY_RELATION(real(stage, tooLong), >, double(room.width));
    // Clearly short enough.
    const QString shortEnough = all.left(fits * 9 / 10 - 1) + QLatin1Char('x');
    QVERIFY(stage.load(document(shortEnough)));
    QVERIFY(!stage.warnedOf("text-clipped"));
    const double width = real(stage, shortEnough);
    VERIFY_RELATION(width, >, 0.0);
    VERIFY_RELATION(width, <=, double(room.width));
}

void TestShownWarnings::descriptionOfTooManyLines()
{
    const QString words = QStringLiteral("lanterns and cinders at the hill that breathes ");
    const int fits = charactersThatFit(words.repeated(30), roomOfSlide(TextPart::Description));
    const auto load = [&](Stage &stage, int length) {
        return stage.load({newsOf(QStringLiteral("homenews"), QStringLiteral("t"),
                                  words.repeated(30).left(length) + QLatin1Char('x'))});
    };
    Stage stage;
    QLabel *label = nullptr;
    const auto height = [&] {
        label = stage.window->homeNews[0].labelSubtitle;
        label->ensurePolished();
        return label->heightForWidth(label->width());
    };
    QVERIFY(load(stage, fits * 11 / 10));
    QVERIFY(stage.warnedOf("text-clipped"));
    VERIFY_RELATION(height(), >, label->height());
    QVERIFY(load(stage, fits * 9 / 10));
    QVERIFY(!stage.warnedOf("text-clipped"));
    VERIFY_RELATION(height(), <=, label->height());
}

void TestShownWarnings::lineBreak_data()
{
    QTest::addColumn<QString>("title");
    QTest::newRow("line end") << QStringLiteral("one&#10;two");
    QTest::newRow("markup") << QStringLiteral("<b>one</b><br/>two").toHtmlEscaped();
}

void TestShownWarnings::lineBreak()
{
    QFETCH(QString, title);
    Stage stage;
    LOAD_WARNED(stage, (QStringList{tile(title)}), "line-break");
    QLabel *label = stage.window->ui->titleNewsBig;
    VERIFY_RELATION(label->sizeHint().height(), >, label->height());
    QVERIFY(stage.load({tile(QStringLiteral("one two"))}));
    label = stage.window->ui->titleNewsBig;
    VERIFY_RELATION(label->sizeHint().height(), <=, label->height());
}

void TestShownWarnings::textsAsTheyAreShown_data()
{
    QTest::addColumn<QString>("title");
    QTest::addColumn<QString>("shown");
    QTest::addColumn<QByteArray>("id");
    const auto row = [](const char *id, const char *title, const char *shown) {
        QTest::newRow(title) << QString::fromUtf8(title) << QString::fromUtf8(shown)
                             << QByteArray(id);
    };
    row("line-break", "one\n      two", "one       two");
    row("wrong-encoding", "Caf\xC3\x83\xC2\xA9", "Caf\xC3\x83\xC2\xA9");
    row("entity-as-letters", "Fire &#38;amp; Ice", "Fire &amp; Ice");
    row("placeholder", "{{title}}", "{{title}}");
    row("markup-as-letters", "[b]NEW[/b]", "[b]NEW[/b]");
    row("markup-as-letters", "**NEW**", "**NEW**");
}

void TestShownWarnings::textsAsTheyAreShown()
{
    QFETCH(QString, title);
    QFETCH(QString, shown);
    QFETCH(QByteArray, id);
    Stage stage;
    LOAD_WARNED(stage, (QStringList{tile(title)}), id.constData());
    const QLabel *label = stage.window->ui->titleNewsBig;
    QCOMPARE(label->text(), shown);
    QVERIFY(!Qt::mightBeRichText(label->text()));
}

void TestShownWarnings::shownAsMarkup_data()
{
    QTest::addColumn<QString>("text");
    for (const char *text : {"",
                             "a",
                             "1 < 2",
                             "<b>a</b>",
                             "a <b>b</b>",
                             "  <i>a",
                             "a\n<b>b</b>",
                             "a &lt; b",
                             "a &gt; b",
                             "a &amp; b",
                             "<b",
                             "<br/>",
                             "a<br>b",
                             "<p align='left'>a",
                             "<table>a",
                             "<b>a</i>",
                             "1 <2 <b>a</b>",
                             "\n <b>a</b>",
                             "a\n&lt;",
                             "<ul><li>a</ul>"}) {
        QTest::newRow(text) << QString::fromLatin1(text);
    }
}

void TestShownWarnings::shownAsMarkup()
{
    QFETCH(QString, text);
    QLabel label;
    showDocumentText(label, text);
    QCOMPARE(isShownAsMarkup(text),
             label.textFormat() == Qt::AutoText && Qt::mightBeRichText(text));
    if (isShownAsMarkup(text)) {
        QTextDocument document;
        document.setHtml(text);
        QCOMPARE(readFromMarkup(text).simplified(), document.toPlainText().simplified());
    }
}

void TestShownWarnings::takenAsMarkup()
{
    Stage stage;
    LOAD_WARNED(stage, (QStringList{tile(QStringLiteral("Press <b> to jump").toHtmlEscaped())}),
                "taken-as-markup");
    const QLabel *label = stage.window->ui->titleNewsBig;
    QVERIFY(label->textFormat() == Qt::AutoText && Qt::mightBeRichText(label->text()));
    QTextDocument document;
    document.setHtml(label->text());
    QCOMPARE(document.toPlainText(), QStringLiteral("Press to jump"));
}

// By the brightest pixel of a slide's title, as the window draws it.
void TestShownWarnings::darkLetters()
{
    Stage stage;
    const auto brightest = [&stage] {
        stage.window->ui->serverButtonsGroup->hide();
        stage.window->show();
        const bool exposed = QTest::qWaitForWindowExposed(stage.window.get());
        const QLabel *label = stage.window->ui->homeNewsTitle;
        const QRect place(label->mapTo(stage.window.get(), QPoint()), label->size());
        const QImage drawn = stage.window->grab(place).toImage();
        int light = exposed ? 0 : -1;
        for (int y = 0; y < drawn.height(); ++y) {
            for (int x = 0; x < drawn.width(); ++x) {
                light = std::max(light, qGray(drawn.pixel(x, y)));
            }
        }
        return light;
    };
    const auto slide = [](const char *colour) {
        return newsOf(QStringLiteral("homenews"),
                      QStringLiteral("<font color='%1'>MMM</font>")
                          .arg(QLatin1String(colour))
                          .toHtmlEscaped(),
                      QStringLiteral("d"));
    };
    constexpr int readable = 120;
    LOAD_WARNED(stage, (QStringList{slide("#0a0a0a")}), "dark-letters");
    VERIFY_RELATION(brightest(), <, readable);
    QVERIFY(stage.load({slide("#ffcc66")}));
    QVERIFY(!stage.warnedOf("dark-letters"));
    VERIFY_RELATION(brightest(), >, readable);
}

void TestShownWarnings::fromTheRight()
{
    Stage stage;
    const QString title = QString::fromUtf8("\xD7\xA9\xD7\x9C\xD7\x95\xD7\x9D!");
    const auto isSeen = [](QLabel *label) {
        const QImage drawn = label->grab(seenPartOf(*label)).toImage();
        const QRgb ground = drawn.pixel(0, 0);
        for (int x = 0; x < drawn.width(); ++x) {
            if (drawn.pixel(x, drawn.height() / 2) != ground) {
                return true;
            }
        }
        return false;
    };
    QVERIFY(stage.load({tile(title), tile(title)}));
    QVERIFY(!stage.warnedOf("direction"));
    stage.window->on_btnNews_2_clicked();
    stage.window->show();
    QVERIFY(QTest::qWaitForWindowExposed(stage.window.get()));
    QVERIFY(isSeen(stage.window->ui->titleNewsBig));
    QVERIFY(isSeen(stage.window->ui->titleNewsMedium1));

    const QString turned = QStringLiteral("one ") + QChar(0x202E) + QStringLiteral("two");
    LOAD_WARNED(stage, (QStringList{tile(turned)}), "direction");
    // The last letter read is the first one shown behind the sign.
    QTextLayout layout(stage.window->ui->titleNewsBig->text());
    layout.beginLayout();
    const QTextLine line = layout.createLine();
    layout.endLayout();
    QVERIFY(line.cursorToX(5) > line.cursorToX(8));
}

void TestShownWarnings::clientsThatAreSeen_data()
{
    QTest::addColumn<QString>("before");
    QTest::addColumn<QString>("attribute");
    QTest::addColumn<QString>("behind");
    QTest::newRow("element") << QStringLiteral("<disabled>") << QString()
                             << QStringLiteral("</disabled>");
    QTest::newRow("enabled") << QString() << QStringLiteral("enabled='false' ") << QString();
    QTest::newRow("hidden") << QString() << QStringLiteral("hidden='true' ") << QString();
}

void TestShownWarnings::clientsThatAreSeen()
{
    QFETCH(QString, before);
    QFETCH(QString, attribute);
    QFETCH(QString, behind);
    Stage stage;
    QString element = stage.ofServer(QStringLiteral("S"));
    element.replace(QStringLiteral("<client "), QStringLiteral("<client ") + attribute);
    LOAD_WARNED(stage, (QStringList{before + element + behind}), "not-switched-off");
    QCOMPARE(stage.window->clientInfos.keys(), QStringList{QStringLiteral("S")});
}

void TestShownWarnings::clientsThatAreNotSeen_data()
{
    QTest::addColumn<QString>("before");
    QTest::addColumn<QString>("behind");
    QTest::addColumn<QByteArray>("id");
    QTest::newRow("CDATA") << QStringLiteral("<![CDATA[") << QStringLiteral("]]>")
                           << QByteArray("text-between-elements");
    QTest::newRow("comment") << QStringLiteral("<!--") << QStringLiteral("-->")
                             << QByteArray("in-comment");
    QTest::newRow("text") << QStringLiteral("<s>A text") << QStringLiteral("</s>")
                          << QByteArray("text-between-elements");
}

void TestShownWarnings::clientsThatAreNotSeen()
{
    QFETCH(QString, before);
    QFETCH(QString, behind);
    QFETCH(QByteArray, id);
    Stage stage;
    const QString element = stage.ofServer(QStringLiteral("S"));
    LOAD_WARNED(stage, (QStringList{before + element + behind}), id.constData());
    // A text hides nothing but itself.
    QCOMPARE(stage.window->clientInfos.keys(), before.startsWith(QStringLiteral("<s>"))
                                                   ? QStringList{QStringLiteral("S")}
                                                   : QStringList());
    const QList<QLabel *> labels = stage.window->findChildren<QLabel *>();
    QVERIFY(std::none_of(labels.begin(), labels.end(), [](const QLabel *label) {
        return label->text().contains(QStringLiteral("A text"));
    }));
}

void TestShownWarnings::accentInASlide()
{
    Stage stage;
    QVERIFY(stage.load({newsOf(QStringLiteral("homenews"), QStringLiteral("Caf&#xC3;&#xA9;"),
                               QStringLiteral("d"))}));
    QVERIFY(!stage.warnedOf("latin1-damage"));
    QVERIFY(!stage.warnedOf("wrong-encoding"));
    QCOMPARE(stage.window->ui->homeNewsTitle->text(), QString::fromUtf8("Caf\xC3\xA9"));
}

void TestShownWarnings::mail()
{
    Stage stage;
    const QString page = QStringLiteral("mailto:crew@a.example");
    QVERIFY(stage.load(
        {newsOf(QStringLiteral("news"), QStringLiteral("t"), QStringLiteral("d"), page)}));
    QVERIFY(!stage.warnedOf("unusable-address"));
    UrlCatcher catcher;
    QDesktopServices::setUrlHandler(QStringLiteral("mailto"), &catcher, "open");
    stage.window->on_btnNewsBig_clicked();
    QDesktopServices::unsetUrlHandler(QStringLiteral("mailto"));
    QCOMPARE(catcher.opened, QList<QUrl>{QUrl(page)});
}

void TestShownWarnings::emptyPicture()
{
    Stage stage;
    LOAD_WARNED(stage,
                (QStringList{Documents::news(QStringLiteral("news"), QStringLiteral("t"),
                                             QStringLiteral("d"), {}, {})}),
                "unusable-address");
    QCOMPARE(stage.window->ui->titleNewsBig->text(), QStringLiteral("t"));
    QTRY_VERIFY(stage.window->news[0].getOriginalPixmap() != nullptr);
    QVERIFY(stage.window->news[0].getOriginalPixmap()->isNull());
}

void TestShownWarnings::otherArchives_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QByteArray>("id");
    QTest::newRow("7z") << QStringLiteral("files/game.7z") << QByteArray("archive-not-zip");
    QTest::newRow("number sign") << QStringLiteral("files/game#1.zip")
                                 << QByteArray("archive-url-fragment");
}

void TestShownWarnings::otherArchives()
{
    QFETCH(QString, path);
    QFETCH(QByteArray, id);
    Stage stage;
    stage.server.serve(QStringLiteral("files/game.7z"), "7z\xBC\xAF\x27\x1C no zip archive");
    LOAD_WARNED(stage, ({stage.ofUrl(stage.server.url() + path)}), id.constData());
    QCOMPARE(stage.download(), failed);
    QVERIFY(!Stage::hasGame());
}

// A circle becomes an ellipse.
void TestShownWarnings::stretchedPicture()
{
    Stage stage;
    stage.server.serve(QStringLiteral("p.png"), Documents::png(stripes(300, 300)));
    QVERIFY(stage.load(
        {Documents::news(QStringLiteral("news"), QStringLiteral("t"), QStringLiteral("d"),
                         stage.server.url(QStringLiteral("p.png")), stage.server.url())}));
    QVERIFY(stage.deeplyWarnedOf("picture-shape"));
    QTRY_VERIFY(!stage.window->news[0].imageLabel->pixmap(Qt::ReturnByValue).isNull());
    QCOMPARE(stage.window->news[0].imageLabel->pixmap(Qt::ReturnByValue).size(),
             shownSizeOfTile(0));
    for (int i = 0; i < 6; ++i) {
        QCOMPARE(stage.window->news[i].imageLabel->size(), shownSizeOfTile(i));
    }
    QCOMPARE(stage.window->homeNews[0].imageLabel->size(), shownSizeOfSlide());
}

void TestShownWarnings::animatedPicture()
{
    const QByteArray bytes = twoPicturesInGif();
    QByteArray copy = bytes;
    QBuffer buffer(&copy);
    buffer.open(QIODevice::ReadOnly);
    QCOMPARE(QImageReader(&buffer).imageCount(), 2);
    QCOMPARE(idsIn(bytes, {1, 1}), QStringList{QStringLiteral("picture-animated")});

    Stage stage;
    stage.server.serve(QStringLiteral("p.gif"), bytes);
    QVERIFY(stage.load(
        {Documents::news(QStringLiteral("news"), QStringLiteral("t"), QStringLiteral("d"),
                         stage.server.url(QStringLiteral("p.gif")), stage.server.url())}));
    QVERIFY(stage.deeplyWarnedOf("picture-animated"));
    QLabel *label = stage.window->news[0].imageLabel;
    QTRY_VERIFY(!label->pixmap(Qt::ReturnByValue).isNull());
    QCOMPARE(label->movie(), nullptr);
    QCOMPARE(label->pixmap(Qt::ReturnByValue).toImage().pixelColor(0, 0), QColor(Qt::red));
}

// What lay in the camera lies in the window.
void TestShownWarnings::turnedPicture()
{
    const QByteArray stored = savedAs("JPG", stripes(280, 160));
    const QByteArray marked = withOrientation(stored, 6);
    QCOMPARE(idsIn(stored, shownSizeOfTile(0)), QStringList());
    QCOMPARE(idsIn(withOrientation(stored, 1), shownSizeOfTile(0)), QStringList());
    QCOMPARE(idsIn(marked, shownSizeOfTile(0)), QStringList{QStringLiteral("picture-turned")});

    Stage stage;
    stage.server.serve(QStringLiteral("p.jpg"), marked);
    QVERIFY(stage.load(
        {Documents::news(QStringLiteral("news"), QStringLiteral("t"), QStringLiteral("d"),
                         stage.server.url(QStringLiteral("p.jpg")), stage.server.url())}));
    QVERIFY(stage.deeplyWarnedOf("picture-turned"));
    QTRY_VERIFY(stage.window->news[0].getOriginalPixmap() != nullptr);
    QCOMPARE(
        stage.window->news[0].getOriginalPixmap()->toImage().convertToFormat(QImage::Format_RGB32),
        QImage::fromData(stored).convertToFormat(QImage::Format_RGB32));
}

void TestShownWarnings::transparentPicture()
{
    QImage clear(280, 160, QImage::Format_ARGB32);
    clear.fill(Qt::transparent);
    QImage dotted = clear;
    dotted.setPixelColor(100, 100, Qt::red);
    QCOMPARE(idsIn(Documents::png(clear), shownSizeOfTile(0)),
             QStringList{QStringLiteral("picture-transparent")});
    QCOMPARE(idsIn(Documents::png(dotted), shownSizeOfTile(0)), QStringList());

    Stage stage;
    stage.server.serve(QStringLiteral("p.png"), Documents::png(clear));
    QVERIFY(stage.load(
        {Documents::news(QStringLiteral("news"), QStringLiteral("t"), QStringLiteral("d"),
                         stage.server.url(QStringLiteral("p.png")), stage.server.url())}));
    QVERIFY(stage.deeplyWarnedOf("picture-transparent"));
    QTRY_VERIFY(!stage.window->news[0].imageLabel->pixmap(Qt::ReturnByValue).isNull());
    const QImage shown = stage.window->news[0].imageLabel->pixmap(Qt::ReturnByValue).toImage();
    for (int x = 0; x < shown.width(); ++x) {
        QCOMPARE(shown.pixelColor(x, shown.height() / 2).alpha(), 0);
    }
}

// The panel shows nothing of a server but its logo.
void TestShownWarnings::logosThatAreOne()
{
    Stage stage;
    stage.server.serve(QStringLiteral("A.png"), Documents::png(320, 150, 0xFF3366));
    stage.server.serve(QStringLiteral("B.png"), Documents::png(320, 150, 0xFF3366));
    const QStringList elements{stage.ofServer(QStringLiteral("A")),
                               stage.ofServer(QStringLiteral("B"))};
    QVERIFY(stage.load(elements));
    QVERIFY(stage.deeplyWarnedOf("logos-alike"));
    const QPushButton *const first = stage.button(0, 0);
    const QPushButton *const second = stage.button(1, 0);
    QTRY_VERIFY(!first->icon().isNull() && !second->icon().isNull());
    const auto shown = [](const QPushButton *button) {
        return button->icon().pixmap(button->iconSize()).toImage();
    };
    QCOMPARE(shown(first), shown(second));
    QCOMPARE(first->text() + second->text(), QString());

    stage.server.serve(QStringLiteral("B.png"), Documents::png(320, 150, 0x3366FF));
    QVERIFY(stage.load(elements));
    QVERIFY(!stage.deeplyWarnedOf("logos-alike"));
}

// A host that gives everybody else the same small picture.
void TestShownWarnings::picturesThatAreOne()
{
    Stage stage;
    const auto tileOf = [&stage](const char *path) {
        return Documents::news(QStringLiteral("news"), QStringLiteral("t"), QStringLiteral("d"),
                               stage.server.url(QLatin1String(path)), stage.server.url());
    };
    stage.server.serve(QStringLiteral("1.png"), Documents::png(4, 4, 0xFF3366));
    stage.server.serve(QStringLiteral("2.png"), Documents::png(4, 4, 0xFF3366));
    QVERIFY(stage.load({tileOf("1.png"), tileOf("1.png")}));
    QCOMPARE(stage.deepIds(), QStringList());
    QVERIFY(stage.load({tileOf("1.png"), tileOf("2.png")}));
    QCOMPARE(stage.deepIds(), QStringList{QStringLiteral("pictures-alike")});
    const auto shown = [&stage](int index) {
        const QPixmap *picture = stage.window->news[index].getOriginalPixmap();
        return picture == nullptr ? QImage() : picture->toImage();
    };
    QTRY_VERIFY(!shown(0).isNull() && !shown(1).isNull());
    QCOMPARE(shown(0), shown(1));
}

void TestShownWarnings::cutPicture_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QByteArray>("id");
    const QByteArray jpeg = savedAs("JPG", stripes(300, 300));
    const QByteArray png = Documents::png(stripes(300, 300));
    QTest::newRow("whole") << jpeg << QByteArray();
    QTest::newRow("half") << jpeg.left(jpeg.size() / 2) << QByteArray("picture-cut");
    const QByteArray gif = stripesInGif(300);
    QTest::newRow("a whole GIF file") << gif << QByteArray();
    QTest::newRow("half of a GIF file") << gif.left(gif.size() / 2) << QByteArray("picture-cut");
    QTest::newRow("half of a PNG file") << png.left(png.size() / 2) << QByteArray("not-a-picture");
}

// What the window's own decoder makes of it.
void TestShownWarnings::cutPicture()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QByteArray, id);
    QCOMPARE(idsIn(bytes, shownSizeOfSlide()),
             id.isEmpty() ? QStringList() : QStringList{QString::fromLatin1(id)});
    const QImage picture = decodedPicture(bytes);
    if (id == "not-a-picture") {
        QVERIFY(picture.isNull());
        return;
    }
    const QRgb corner = picture.pixel(0, picture.height() - 1);
    bool plain = true;
    for (int x = 0; x < picture.width(); ++x) {
        plain = plain && picture.pixel(x, picture.height() - 1) == corner;
    }
    QCOMPARE(plain, !id.isEmpty());
}

void TestShownWarnings::pictures_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QSize>("shown");
    QTest::addColumn<QString>("ids");
    const auto row = [](const char *name, const QByteArray &bytes, const QSize &shown,
                        const char *ids = "") {
        QTest::newRow(name) << bytes << shown << QString::fromLatin1(ids);
    };
    const QSize logo = shownSizeOfLogo();
    const QSize slide = shownSizeOfSlide();
    row("as recommended", Documents::png(640, 300, 0), logo);
    row("a dot", Documents::png(4, 4, 0), logo);
    row("nearly its shape", Documents::png(330, 300, 0), slide);
    row("too wide", Documents::png(400, 300, 0), slide, "picture-shape");
    row("too high", Documents::png(300, 400, 0), slide, "picture-shape");
    row("four times as large", Documents::png(1300, 1300, 0), slide);
    row("larger", Documents::png(1301, 1301, 0), slide, "picture-oversized");
    QImage noise(800, 800, QImage::Format_RGB32);
    quint32 state = 1;
    for (int y = 0; y < noise.height(); ++y) {
        for (int x = 0; x < noise.width(); ++x) {
            state = state * 1664525 + 1013904223;
            noise.setPixel(x, y, state);
        }
    }
    row("a large file", Documents::png(noise), slide, "picture-oversized");
    QByteArray animated = Documents::png(330, 330, 0);
    const QByteArray control("\0\0\0\x08"
                             "acTL\0\0\0\2\0\0\0\0\xF3\x8D\x93\x70",
                             20);
    animated.insert(33, control);
    row("a moving PNG", animated, slide, "picture-animated");
}

void TestShownWarnings::pictures()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QSize, shown);
    QFETCH(QString, ids);
    QCOMPARE(idsIn(bytes, shown).join(QLatin1Char(' ')), ids);
}

QTEST_MAIN(TestShownWarnings)
#include "tst_shownwarnings.moc"
