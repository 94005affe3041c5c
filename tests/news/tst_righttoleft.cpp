// Titles and texts of languages that are written from right to left, on the tiles: most of their
// labels are wider than the tile that cuts them off, and such a text begins at the label's right
// end.

#include "news/newsworld.h"
#include "support/relation.h"
#include "support/scratchfolder.h"
#include "support/windowdriver.h"
#include "ui_testform.h"
#include "window/testform.h"

#include <QCursor>
#include <QImage>
#include <QTest>

#include <algorithm>
#include <cstdlib>
#include <memory>

namespace
{
// Hebrew, and the same with more behind it than any label has room for.
const QString shortText = QString::fromUtf8("\xd7\xa9\xd7\x9c\xd7\x95\xd7\x9d \xd7\xa2\xd7\x9c");
const QString longText = shortText + QString(300, QChar(QChar::Nbsp)) + shortText;

QImage pictureOf(QWidget &widget)
{
    return widget.grab().toImage().convertToFormat(QImage::Format_RGB32);
}

// Where on the window the two pictures differ.
QRect difference(const QImage &one, const QImage &other)
{
    QRect place;
    for (int y = 0; y < one.height(); ++y) {
        for (int x = 0; x < one.width(); ++x) {
            if (one.pixel(x, y) != other.pixel(x, y)) {
                place |= QRect(x, y, 1, 1);
            }
        }
    }
    return place;
}

QRect placeOn(const QWidget &window, const QWidget &widget)
{
    return {widget.mapTo(&window, QPoint()), widget.size()};
}
} // namespace

class TestRightToLeft : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();
    void textStandsInItsTile_data();
    void textStandsInItsTile();
    void longTextLosesItsEnd_data();
    void longTextLosesItsEnd();
    void latinTextStaysWhereItWas_data();
    void latinTextStaysWhereItWas();
    void slideTextsNeedNoMore();

private:
    static void addTexts();
    // The window's picture with the text on one label of the item.
    QImage shown(const News &item, bool isTitle, const QString &text) const;

    std::unique_ptr<ScratchFolder> m_folder;
    std::unique_ptr<testform> m_window;
};

void TestRightToLeft::initTestCase()
{
    // Where no tile glows for it.
    QCursor::setPos(1900, 1060);
    m_folder = std::make_unique<ScratchFolder>();
    m_window = std::make_unique<testform>();
    m_window->ui->serverButtonsGroup->hide();
    m_window->setMenuState(1);
    QVERIFY(WindowDriver::show(*m_window));
}

void TestRightToLeft::cleanupTestCase()
{
    m_window.reset();
    m_folder.reset();
}

void TestRightToLeft::addTexts()
{
    QTest::addColumn<int>("tile");
    QTest::addColumn<bool>("isTitle");
    QTest::addColumn<QSize>("size");
    for (const QSize &size : {QSize(974, 571), QSize(487, 285), QSize(1200, 703)}) {
        for (int tile = 0; tile < 6; ++tile) {
            for (const bool isTitle : {true, false}) {
                QTest::addRow("%s of tile %d, %d pixels", isTitle ? "title" : "text", tile,
                              size.width())
                    << tile << isTitle << size;
            }
        }
    }
}

QImage TestRightToLeft::shown(const News &item, bool isTitle, const QString &text) const
{
    News changed = item;
    changed.title = isTitle ? text : QString();
    changed.description = isTitle ? QString() : text;
    changed.loadNews(true);
    return pictureOf(*m_window);
}

void TestRightToLeft::textStandsInItsTile_data()
{
    addTexts();
}

void TestRightToLeft::textStandsInItsTile()
{
    QFETCH(int, tile);
    QFETCH(bool, isTitle);
    QFETCH(QSize, size);
    const News &item = m_window->news[tile];
    QLabel &label = isTitle ? *item.labelTitle : *item.labelSubtitle;

    for (const QString &text : {shortText, QStringLiteral("<b>%1</b>").arg(shortText),
                                QStringLiteral("<p dir=\"rtl\">Patch notes</p>")}) {
        for (const int tabWhileResized : {0, 1}) {
            m_window->customResize(974, 571);
            (void)shown(item, isTitle, text);
            m_window->setMenuState(tabWhileResized);
            m_window->customResize(size.width(), size.height());
            m_window->setMenuState(1);

            const QImage with = pictureOf(*m_window);
            label.setText(QString());
            const QRect ink = difference(with, pictureOf(*m_window));

            const QRect tileArea = placeOn(*m_window, *label.parentWidget());
            QVERIFY2(ink.width() > 15, qPrintable(text)); // all of its letters
            QVERIFY2(tileArea.contains(ink), qPrintable(text));
            // As far from the tile's right side as others are from what stands left of them,
            // unless the label ends before.
            const int end = std::min(placeOn(*m_window, label).right(),
                                     tileArea.right() - tileArea.width() / 46);
            VERIFY_RELATION(ink.right(), <=, end);
            VERIFY_RELATION(ink.right(), >, end - 6);
        }
    }
}

void TestRightToLeft::longTextLosesItsEnd_data()
{
    addTexts();
}

// And not its beginning.
void TestRightToLeft::longTextLosesItsEnd()
{
    QFETCH(int, tile);
    QFETCH(bool, isTitle);
    QFETCH(QSize, size);
    const News &item = m_window->news[tile];
    m_window->customResize(size.width(), size.height());
    const QImage without = shown(item, isTitle, QString());
    const QRect few = difference(shown(item, isTitle, shortText), without);

    const QRect many = difference(shown(item, isTitle, longText), without);

    // To the pixel or two that letters take up for smooth edges.
    QVERIFY(few.width() > 15);
    VERIFY_RELATION(std::abs(many.right() - few.right()), <=, 2);
    VERIFY_RELATION(std::abs(many.left() - few.left()), <=, 2);
}

void TestRightToLeft::latinTextStaysWhereItWas_data()
{
    addTexts();
}

void TestRightToLeft::latinTextStaysWhereItWas()
{
    QFETCH(int, tile);
    QFETCH(bool, isTitle);
    QFETCH(QSize, size);
    const News &item = m_window->news[tile];
    QLabel &label = isTitle ? *item.labelTitle : *item.labelSubtitle;
    m_window->customResize(size.width(), size.height());
    for (const QString &text :
         {QStringLiteral("Patch notes"), QStringLiteral("Patch <b>notes</b>"),
          QStringLiteral("A long way to the end of the tile, and ").repeated(9)}) {
        (void)shown(item, isTitle, shortText);
        const QImage after = shown(item, isTitle, text);

        label.setContentsMargins(0, 0, 0, 0);
        label.setText(text);

        QCOMPARE(difference(pictureOf(*m_window), after), QRect());
    }
}

// Their labels are not wider than the page: they stay as they are.
void TestRightToLeft::slideTextsNeedNoMore()
{
    News &item = m_window->homeNews[0];
    item.title = shortText;
    item.description = shortText;
    item.loadNews(true);
    QCOMPARE(item.labelTitle->contentsMargins(), QMargins());
    QCOMPARE(item.labelSubtitle->contentsMargins(), QMargins());
}

QTEST_MAIN(TestRightToLeft)
#include "tst_righttoleft.moc"
