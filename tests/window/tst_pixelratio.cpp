#include "fetch/imagedownloader.h"
#include "info/serverbutton.h"
#include "support/documents.h"
#include "support/publishedworld.h"
#include "support/scratchfolder.h"
#include "support/windowdriver.h"
#include "ui_testform.h"
#include "window/qgraphicsgloweffect.h"
#include "window/screenscaling.h"
#include "window/testform.h"

#include <QMouseEvent>
#include <QPainter>
#include <QScreen>
#include <QTest>
#include <QThreadPool>
#include <QWindow>

#include <cstdlib>
#include <memory>

// The window on screens with so many pixels to one of its own: run with several of them, and with
// the one that is expected in the environment.
class TestPixelRatio : public QObject
{
    Q_OBJECT

public:
    // Called by the toolkit's test main before the application object is made.
    static void initMain()
    {
        // A screen has a number of its own only where one was given; init() makes it 1.
        qputenv("QT_SCREEN_SCALE_FACTORS", "1.5");
        ScreenScaling::letToolkitScale();
    }

private slots:
    void init();
    void cleanup();
    void ratioIsTheScreens();
    void newsPictures();
    void logos();
    void smallPictures_data();
    void smallPictures();
    void glowKeepsItsPlaceAndDetail();
    void anotherDensityMakesPicturesAnew();
    void dragGoesOnInAnotherMeasure();

private:
    QSize inPixels(QSize size) const { return size * m_ratio; }
    // The toolkit's own number for the screen, as when the player changes it or moves the window.
    void setScreenFactor(qreal factor) const;
    void publishAndLoad();

    qreal m_ratio =
        qEnvironmentVariable("EMBERWAKE_EXPECTED_RATIO", QStringLiteral("1")).toDouble();
    QImage m_fine;
    std::unique_ptr<ScratchFolder> m_folder;
    std::unique_ptr<PublishedWorld> m_world;
    std::unique_ptr<testform> m_window;
};

namespace
{
// The sum over all pixels of two pictures of one size, in the colours' own steps.
qint64 difference(const QImage &one, const QImage &other)
{
    qint64 sum = 0;
    for (int y = 0; y < one.height(); ++y) {
        for (int x = 0; x < one.width(); ++x) {
            const QColor a = one.pixelColor(x, y);
            const QColor b = other.pixelColor(x, y);
            sum += std::abs(a.red() - b.red()) + std::abs(a.green() - b.green()) +
                   std::abs(a.blue() - b.blue());
        }
    }
    return sum;
}
} // namespace

void TestPixelRatio::init()
{
    setScreenFactor(1);
    m_fine = QImage(640, 600, QImage::Format_RGB32);
    for (int y = 0; y < m_fine.height(); ++y) {
        for (int x = 0; x < m_fine.width(); ++x) {
            m_fine.setPixel(x, y, qRgb(x % 256, y % 256, (x * y) % 256));
        }
    }
    m_folder = std::make_unique<ScratchFolder>();
}

void TestPixelRatio::cleanup()
{
    m_window.reset();
    m_world.reset();
    m_folder.reset();
}

void TestPixelRatio::setScreenFactor(qreal factor) const
{
    QGuiApplication::primaryScreen()->setProperty("_q_scaleFactor", factor);
}

void TestPixelRatio::publishAndLoad()
{
    m_world = std::make_unique<PublishedWorld>();
    m_world->server.serve(QStringLiteral("slide.png"), Documents::png(m_fine));
    m_world->server.serve(QStringLiteral("Realm.png"), Documents::png(m_fine));
    m_world->publish({Documents::client(QStringLiteral("Realm"), QStringLiteral("Official"),
                                        QStringLiteral("1")),
                      Documents::news(QStringLiteral("homenews"), QStringLiteral("One"), {},
                                      m_world->server.url(QStringLiteral("slide.png")))});
    m_window = std::make_unique<testform>();
    QVERIFY(WindowDriver::show(*m_window));
    QTRY_VERIFY(!m_window->ui->homeNewsImageBackground->pixmap(Qt::ReturnByValue).isNull());
    QTRY_VERIFY(m_window->serverButtons.contains(QStringLiteral("Realm")));
    QTRY_VERIFY(m_window->serverButtons.value(QStringLiteral("Realm"))->getPixmap() != nullptr);
}

void TestPixelRatio::ratioIsTheScreens()
{
    m_window = std::make_unique<testform>();
    QVERIFY(WindowDriver::show(*m_window));
    QCOMPARE(m_window->devicePixelRatioF(), m_ratio);
    QCOMPARE(m_window->size(), QSize(974, 571));
    QCOMPARE(m_window->grab().size(), inPixels(QSize(974, 571)));
}

void TestPixelRatio::newsPictures()
{
    publishAndLoad();
    const QLabel *slide = m_window->ui->homeNewsImageBackground;
    const auto check = [this, slide] {
        QPixmap shown = slide->pixmap(Qt::ReturnByValue);
        QCOMPARE(shown.devicePixelRatio(), m_ratio);
        shown.setDevicePixelRatio(1);
        QCOMPARE(shown.size(), inPixels(slide->size()));
        const auto how = m_ratio == 1 ? Qt::FastTransformation : Qt::SmoothTransformation;
        QCOMPARE(
            shown.toImage(),
            QPixmap::fromImage(m_fine).scaled(shown.size(), Qt::IgnoreAspectRatio, how).toImage());
    };
    check();
    m_window->customResize(1461, 856);
    check();
    // From the cache file.
    QThreadPool::globalInstance()->waitForDone();
    m_window->ui->homeNewsImageBackground->clear();
    m_window->homeNews[0].imageDownloader->loadBuffer();
    QCOMPARE(slide->pixmap(Qt::ReturnByValue).size(), inPixels(slide->size()));
}

void TestPixelRatio::logos()
{
    publishAndLoad();
    const QPushButton *logo = m_window->serverButtons.value(QStringLiteral("Realm"))->getButton();
    QCOMPARE(logo->iconSize(), QSize(438, 205));
    const QPixmap icon = logo->icon().pixmap(m_window->windowHandle(), logo->iconSize());
    QCOMPARE(icon.size(), inPixels(logo->iconSize()));
    m_window->onServerSelect(QStringLiteral("Realm|Official"));
    const QPixmap strip = m_window->ui->labelServer->pixmap(Qt::ReturnByValue);
    QCOMPARE(strip.size(), inPixels(QSize(144, 67)));
    QCOMPARE(strip.devicePixelRatio(), m_ratio);
}

void TestPixelRatio::smallPictures_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("picture");
    const auto row = [](const char *name, const char *picture) {
        QTest::newRow(name) << QString::fromLatin1(name) << QString::fromLatin1(picture);
    };
    row("btnClose_", "buttonClose");
    row("btnFullscreen_", "buttonFullScreen");
    row("btnLeft", "leftArrow");
    row("btnRight", "rightArrow");
    row("btnFacebook", "facebook");
    row("slide1", "slideActive");
}

// As if drawn from the whole picture for the screen's pixels, and not enlarged from fewer.
void TestPixelRatio::smallPictures()
{
    QFETCH(QString, name);
    QFETCH(QString, picture);
    m_window = std::make_unique<testform>();
    QVERIFY(WindowDriver::show(*m_window));
    auto *widget = m_window->findChild<QWidget *>(name);
    const QImage whole(QStringLiteral(":/images/%1.png").arg(picture));
    const auto on = [](const QImage &drawn, QSize size) {
        QImage ground(size, QImage::Format_RGB32);
        ground.fill(Qt::black);
        QPainter painter(&ground);
        painter.drawImage(
            QRect(QPoint((size.width() - drawn.width()) / 2, (size.height() - drawn.height()) / 2),
                  drawn.size()),
            drawn);
        return ground;
    };
    const auto fitted = [&whole, widget](QSize room) {
        return whole.scaled(room,
                            widget->styleSheet().contains(QLatin1String("border-image"))
                                ? Qt::IgnoreAspectRatio
                                : Qt::KeepAspectRatio,
                            Qt::SmoothTransformation);
    };
    const QSize room = inPixels(widget->size());
    QImage shown(room, QImage::Format_RGB32);
    shown.setDevicePixelRatio(m_ratio);
    shown.fill(Qt::black);
    widget->render(&shown, QPoint(), QRegion(), QWidget::RenderFlags());
    shown.setDevicePixelRatio(1);
    const qint64 toWhole = difference(shown, on(fitted(room), room));
    const qint64 toEnlarged = difference(
        shown,
        on(fitted(widget->size()).scaled(room, Qt::KeepAspectRatio, Qt::SmoothTransformation),
           room));
    const QString told =
        QStringLiteral("%1 to the whole, %2 to the enlarged").arg(toWhole).arg(toEnlarged);
    qInfo("%s", qPrintable(told));
    if (m_ratio > 1) {
        QVERIFY2(toWhole < toEnlarged, qPrintable(told));
    }
}

// A glow of no blur and no extent is the source's own shape in white.
void TestPixelRatio::glowKeepsItsPlaceAndDetail()
{
    QPixmap source(inPixels(QSize(40, 20)));
    source.setDevicePixelRatio(m_ratio);
    source.fill(Qt::transparent);
    {
        QPainter painter(&source);
        painter.fillRect(QRectF(20, 0, 20, 20), Qt::red);
    }
    auto *colorize = new QGraphicsColorizeEffect;
    colorize->setColor(Qt::white);
    const QPixmap glow = QGraphicsGlowEffect::applyEffectToPixmap(source, colorize, 4);
    QCOMPARE(glow.devicePixelRatio(), m_ratio);
    QCOMPARE(glow.size(), inPixels(QSize(48, 28)));
    const QImage shape = glow.toImage();
    const auto alphaAt = [&shape, this](qreal x, qreal y) {
        return qAlpha(shape.pixel(int(x * m_ratio), int(y * m_ratio)));
    };
    QCOMPARE(alphaAt(22, 14), 0);
    QCOMPARE(alphaAt(26, 14), 255);
    QCOMPARE(alphaAt(42, 22), 255);
    QCOMPARE(alphaAt(46, 14), 0);
    QCOMPARE(alphaAt(34, 26), 0);
}

void TestPixelRatio::anotherDensityMakesPicturesAnew()
{
    publishAndLoad();
    m_window->onServerSelect(QStringLiteral("Realm|Official"));
    const QLabel *slide = m_window->ui->homeNewsImageBackground;
    const QLabel *strip = m_window->ui->labelServer;
    ServerButton *server = m_window->serverButtons.value(QStringLiteral("Realm"));
    const qreal other = 1.5 * m_ratio;
    setScreenFactor(1.5);
    m_window->update();
    QTRY_COMPARE(slide->pixmap(Qt::ReturnByValue).size(), slide->size() * other);
    QCOMPARE(slide->pixmap(Qt::ReturnByValue).devicePixelRatio(), other);
    QCOMPARE(strip->pixmap(Qt::ReturnByValue).size(), QSize(144, 67) * other);
    QCOMPARE(server->getButton()
                 ->icon()
                 .pixmap(m_window->windowHandle(), server->getButton()->iconSize())
                 .size(),
             server->getButton()->iconSize() * other);
    setScreenFactor(1);
    m_window->update();
    QTRY_COMPARE(slide->pixmap(Qt::ReturnByValue).size(), inPixels(slide->size()));
    QCOMPARE(strip->pixmap(Qt::ReturnByValue).size(), inPixels(QSize(144, 67)));
}

void TestPixelRatio::dragGoesOnInAnotherMeasure()
{
    m_window = std::make_unique<testform>();
    QVERIFY(WindowDriver::show(*m_window));
    m_window->move(100, 100);
    QTRY_COMPARE(m_window->pos(), QPoint(100, 100));
    const auto mouse = [this](QEvent::Type type, QPointF global) {
        QMouseEvent event(type, QPointF(1, 1), global, Qt::LeftButton, Qt::LeftButton,
                          Qt::NoModifier);
        QApplication::sendEvent(m_window.get(), &event);
    };
    mouse(QEvent::MouseButtonPress, QPointF(300, 300));
    mouse(QEvent::MouseMove, QPointF(310, 305));
    QCOMPARE(m_window->pos(), QPoint(110, 105));
    // The same place of the screen has another number now, far away.
    setScreenFactor(1.5);
    mouse(QEvent::MouseMove, QPointF(206, 203));
    QCOMPARE(m_window->pos(), QPoint(110, 105));
    mouse(QEvent::MouseMove, QPointF(216, 208));
    QCOMPARE(m_window->pos(), QPoint(120, 110));
}

QTEST_MAIN(TestPixelRatio)
#include "tst_pixelratio.moc"
