// How well each text stands out from the pixels that actually lie under it: the real window at its
// design size, in the demo world, with the contrast ratio of WCAG 2.1. The texts' colours are fixed
// by the form; where a row fails, the picture under the text has to give way.

#include "images/demoworld.h"
#include "support/arrivedpictures.h"
#include "support/contrast.h"
#include "support/relation.h"
#include "support/scratchfolder.h"
#include "support/windowdriver.h"
#include "ui_testform.h"
#include "window/testform.h"

#include <QAbstractButton>
#include <QCursor>
#include <QFontInfo>
#include <QImage>
#include <QLabel>
#include <QTest>
#include <QThreadPool>

#include <algorithm>
#include <cmath>
#include <memory>

namespace
{
constexpr double forSmallText = 4.5; // up to 15 pixels
constexpr double forLargeText = 3.0;
// Plain green on pure black has no more than 4.1.
constexpr double forPlainGreen = 3.5;

int difference(QRgb one, QRgb other)
{
    return std::max({std::abs(qRed(one) - qRed(other)), std::abs(qGreen(one) - qGreen(other)),
                     std::abs(qBlue(one) - qBlue(other))});
}

QString textOf(const QWidget &widget)
{
    return widget.property("text").toString();
}

// What the text covers: the least contrast of one pixel under it, and of the letters' pixels how
// many there are.
struct Measured {
    double worst = 100;
    QPoint where;
    QRgb ground = 0;
    int pixels = 0;
    bool isInItsColour = false;
};

Measured measure(QWidget &window, QWidget &widget, QRgb colour)
{
    const QString text = textOf(widget);
    const QImage with = window.grab().toImage().convertToFormat(QImage::Format_RGB32);
    widget.setProperty("text", QString());
    const QImage without = window.grab().toImage().convertToFormat(QImage::Format_RGB32);
    widget.setProperty("text", text);

    Measured result;
    for (int y = 0; y < with.height(); ++y) {
        for (int x = 0; x < with.width(); ++x) {
            const QRgb ground = without.pixel(x, y);
            if (difference(with.pixel(x, y), ground) < 8) {
                continue;
            }
            ++result.pixels;
            result.isInItsColour |= difference(with.pixel(x, y), colour) < 24;
            const double ratio = Contrast::ratio(colour, ground);
            if (ratio < result.worst) {
                result.worst = ratio;
                result.where = QPoint(x, y);
                result.ground = ground;
            }
        }
    }
    return result;
}
} // namespace

class TestContrast : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void cleanupTestCase();
    void formulaIsTheStandards();
    void brightPictureIsFound();
    void text_data();
    void text();

private:
    void choose(const QString &state);

    std::unique_ptr<ScratchFolder> m_folder;
    std::unique_ptr<DemoWorld> m_world;
    std::unique_ptr<testform> m_window; // in the demo world
    std::unique_ptr<testform> m_lonely; // nobody answers it
};

void TestContrast::initTestCase()
{
    // Where it changes no look of a button.
    QCursor::setPos(1900, 1060);
    m_folder = std::make_unique<ScratchFolder>();
    m_lonely = std::make_unique<testform>();
    QVERIFY(WindowDriver::show(*m_lonely));
    m_lonely->hide();
    m_world = std::make_unique<DemoWorld>();
    m_window = std::make_unique<testform>();
    QVERIFY(WindowDriver::show(*m_window));
    QTRY_VERIFY_WITH_TIMEOUT(ArrivedPictures::isComplete(*m_window), 20000);
    QCOMPARE(m_window->size(), QSize(974, 571));
    QCOMPARE(m_window->serverButtons.size(), 3);
}

void TestContrast::cleanupTestCase()
{
    m_window.reset();
    m_lonely.reset();
    m_world.reset();
    m_folder.reset();
}

void TestContrast::formulaIsTheStandards()
{
    const auto near = [](double one, double other) { return std::abs(one - other) < 0.005; };
    QVERIFY(near(Contrast::ratio(qRgb(255, 255, 255), qRgb(0, 0, 0)), 21));
    QVERIFY(near(Contrast::ratio(qRgb(119, 119, 119), qRgb(255, 255, 255)), 4.48));
    QVERIFY(near(Contrast::ratio(qRgb(255, 0, 0), qRgb(0, 0, 0)), 5.25));
}

// Guards the measurement: one that looks at the wrong pixels would pass everywhere.
void TestContrast::brightPictureIsFound()
{
    choose(QStringLiteral("HOME, slide 1"));
    const QString sheet = m_window->ui->backgroundImage->styleSheet();
    QWidget &description = *m_window->ui->homeNewsDescription;
    VERIFY_RELATION(measure(*m_window, description, qRgb(255, 255, 255)).worst, >=, forSmallText);
    m_window->ui->backgroundImage->setStyleSheet(QStringLiteral("background-color: #808080;"));
    const Measured bright = measure(*m_window, description, qRgb(255, 255, 255));
    m_window->ui->backgroundImage->setStyleSheet(sheet);
    QCOMPARE(bright.ground, qRgb(128, 128, 128));
    VERIFY_RELATION(bright.worst, <, forSmallText);
}

void TestContrast::choose(const QString &state)
{
    if (state == QStringLiteral("connecting")) {
        m_window->hide();
        m_lonely->show();
        return;
    }
    m_lonely->hide();
    m_window->show();
    const bool isPanel = state == QStringLiteral("servers");
    m_window->ui->serverButtonsGroup->setVisible(isPanel);
    if (isPanel) {
        return;
    }
    // By what is on the disk: nothing, another version, the offered one.
    (void)QDir(QStringLiteral("Cinderfall/Official")).removeRecursively();
    if (state == QStringLiteral("HOME, another version")) {
        ScratchFolder::makeFolder(QStringLiteral("Cinderfall/Official/2.0.0"));
    } else if (state != QStringLiteral("HOME, not installed")) {
        ScratchFolder::makeFolder(QStringLiteral("Cinderfall/Official/2.1.4"));
    }
    m_window->onServerSelect(QStringLiteral("Cinderfall|Official"));
    m_window->setMenuState(state.startsWith(QStringLiteral("NEWS")) ? 1 : 0);
    if (state.startsWith(QStringLiteral("HOME, slide "))) {
        m_window->setSlideState(state.right(1).toInt() - 1);
    }
    m_window->ui->downloadProgressBar->setValue(64);
    m_window->ui->downloadProgressBar->show();
    m_window->ui->downloadProgressText->setText(
        QStringLiteral("Downloading client version 2.1.4:  36% 1.4 MB/s"));
    m_window->ui->downloadProgressText->show();
}

void TestContrast::text_data()
{
    QTest::addColumn<QString>("state");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QRgb>("colour");
    const auto row = [](const char *state, const char *name, QRgb colour) {
        QTest::addRow("%s: %s", state, name)
            << QString::fromLatin1(state) << QString::fromLatin1(name) << colour;
    };
    const QRgb white = qRgb(255, 255, 255);
    const QRgb grey = qRgb(140, 140, 140);
    const QRgb blue = qRgb(7, 148, 208);
    const QRgb orange = qRgb(255, 165, 0);
    const QRgb lightGreen = qRgb(100, 230, 100);

    row("HOME, not installed", "labelClientVersion", qRgb(255, 0, 0));
    row("HOME, another version", "labelClientVersion", orange);
    row("HOME, slide 1", "labelClientVersion", qRgb(0, 128, 0));
    row("HOME, slide 1", "labelClient", white);
    row("HOME, slide 1", "btnHome", white);
    row("HOME, slide 1", "btnNews_2", white);
    row("HOME, slide 1", "btnSelectServer", lightGreen);
    row("HOME, slide 1", "homeNewsTitle", white);
    row("HOME, slide 1", "homeNewsDescription", white);
    row("HOME, slide 2", "homeNewsTitle2", white);
    row("HOME, slide 2", "homeNewsDescription2", white);
    row("HOME, slide 3", "homeNewsTitle3", white);
    row("HOME, slide 3", "homeNewsDescription3", white);
    row("HOME, slide 1", "downloadProgressText", white);
    row("NEWS", "btnHome_2", white);
    row("NEWS", "btnNews", white);
    row("NEWS", "titleNewsBig", grey);
    row("NEWS", "subtitleNewsBig", white);
    for (const char *title : {"titleNewsMedium1", "titleNewsMedium2"}) {
        row("NEWS", title, grey);
    }
    for (const char *title : {"subtitleNewsMedium1", "subtitleNewsMedium2", "titleNewsSmall1",
                              "titleNewsSmall2", "titleNewsSmall3"}) {
        row("NEWS", title, white);
    }
    row("NEWS", "subtitleNewsSmall1", blue);
    row("NEWS", "subtitleNewsSmall2", qRgb(255, 174, 0));
    row("NEWS", "subtitleNewsSmall3", blue);
    row("servers", "rememberCheckBox", white);
    row("connecting", "rememberCheckBox", white);
    row("connecting", "labelConnecting", white);
}

void TestContrast::text()
{
    QFETCH(QString, state);
    QFETCH(QString, name);
    QFETCH(QRgb, colour);
    choose(state);
    testform &window = state == QStringLiteral("connecting") ? *m_lonely : *m_window;
    auto *widget = window.findChild<QWidget *>(name);
    QVERIFY(widget != nullptr);
    QVERIFY(widget->isVisible());
    const int size = QFontInfo(widget->font()).pixelSize();
    const double limit = colour == qRgb(0, 128, 0) ? forPlainGreen
                         : size <= 15              ? forSmallText
                                                   : forLargeText;

    const Measured measured = measure(window, *widget, colour);

    const QString figures = QStringLiteral("%1 px, %2:1, limit %3:1, over %4 at %5, %6")
                                .arg(size)
                                .arg(measured.worst, 0, 'f', 2)
                                .arg(limit)
                                .arg(QColor(measured.ground).name())
                                .arg(measured.where.x())
                                .arg(measured.where.y());
    qInfo("%s", qPrintable(figures));
    // Enough to be letters, in the colour that the row names.
    VERIFY_RELATION(measured.pixels, >, 50);
    QVERIFY(measured.isInItsColour);
    QVERIFY2(measured.worst >= limit, qPrintable(figures));
}

QTEST_MAIN(TestContrast)
#include "tst_contrast.moc"
