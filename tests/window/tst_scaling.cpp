#include "fetch/imagedownloader.h"
#include "support/documents.h"
#include "support/publishedworld.h"
#include "support/relation.h"
#include "support/scratchfolder.h"
#include "support/windowdriver.h"
#include "ui_testform.h"
#include "window/mysizegrip.h"
#include "window/testform.h"

#include <QMouseEvent>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <QTest>

#include <cmath>

// Proportional scaling of the whole window.
class TestScaling : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();
    void recordedAtConstruction();
    void prepWidgetsTreatsTheWidgetItself();
    void widthAloneDecides();
    void heightAloneDecides();
    void smallerRatioDecides();
    void zeroMeansTheSizeOfTheWindow();
    void sameSizeChangesNothing();
    void centralWidgetAndGripAreLeftAlone();
    void fonts_data();
    void fonts();
    void iconsTakeTheDesignSize();
    void newsPicturesComeFromTheOriginal();
    void otherPicturesStayUnscaled();
    void itemsThatLoadedNothingAreNotRead();
    void subclassesDoNotCount();
    void sharedNamesShareTheLastGeometry();
    void runTimeWidgetsHaveNoDesignGeometry();
    void randomSizesFollowTheFormula();
    void designSizeRestoresEverything();
    void smallPicturesGrowWithTheWindow_data();
    void smallPicturesGrowWithTheWindow();
    void sizeGripRescalesEveryLauncherWindow();
    void sizeGripIgnoresMoves();

private:
    struct Design {
        QRect geometry;
        int font;
    };
    QHash<QString, Design> design() const;

    std::unique_ptr<ScratchFolder> m_folder;
    std::unique_ptr<testform> m_window;
};

void TestScaling::init()
{
    m_folder = std::make_unique<ScratchFolder>();
    m_window = std::make_unique<testform>();
}

void TestScaling::cleanup()
{
    m_window.reset();
    m_folder.reset();
}

QHash<QString, TestScaling::Design> TestScaling::design() const
{
    QHash<QString, Design> found;
    const auto widgets = m_window->findChildren<QWidget *>();
    for (const QWidget *widget : widgets) {
        const QString sheet = widget->styleSheet();
        const QRegularExpressionMatch font =
            QRegularExpression(QStringLiteral("font: (\\d+)px")).match(sheet);
        found[widget->objectName()] = {widget->geometry(),
                                       font.hasMatch() ? font.captured(1).toInt() : -1};
    }
    return found;
}

void TestScaling::recordedAtConstruction()
{
    QCOMPARE(m_window->W, 974);
    QCOMPARE(m_window->H, 571);
    QCOMPARE(m_window->prevWidth, 974);
    QCOMPARE(m_window->prevHeight, 571);
    QCOMPARE(m_window->W_MIN, 487);
    QCOMPARE(m_window->H_MIN, 285);
    QCOMPARE(m_window->RATIO, 974.0F / 571.0F);
    QCOMPARE(m_window->widths.value(QStringLiteral("btnNewsBig")), 559);
    QCOMPARE(m_window->heights.value(QStringLiteral("btnNewsBig")), 319);
    QCOMPARE(m_window->xs.value(QStringLiteral("btnNewsBig")), 67);
    QCOMPARE(m_window->ys.value(QStringLiteral("btnNewsBig")), 33);
    QCOMPARE(m_window->fontSizes.value(QStringLiteral("btnHome")), 21);
    QVERIFY(!m_window->fontSizes.contains(QStringLiteral("btnPlay")));
    QCOMPARE(m_window->minimumSize(), QSize(487, 285));
}

void TestScaling::prepWidgetsTreatsTheWidgetItself()
{
    QCOMPARE(m_window->maximumSize(), QSize(99999, 99999));
    QCOMPARE(m_window->sizePolicy().horizontalPolicy(), QSizePolicy::Preferred);
    // The descendants keep the policies of the form.
    QCOMPARE(m_window->ui->lineNews->sizePolicy().horizontalPolicy(), QSizePolicy::Fixed);

    QWidget other;
    QWidget child(&other);
    child.setMinimumSize(10, 10);
    m_window->setMinimumSize(1, 1);
    m_window->prepWidgets(&other);
    QCOMPARE(other.maximumSize(), QSize(99999, 99999));
    QCOMPARE(other.minimumSize(), QSize(0, 0));
    QCOMPARE(child.minimumSize(), QSize(10, 10));
    QCOMPARE(m_window->minimumSize(), QSize(487, 285));
}

void TestScaling::widthAloneDecides()
{
    m_window->resize(1200, 571);
    m_window->customResize();
    QCOMPARE(m_window->size(), QSize(1200, 703));
    QCOMPARE(m_window->prevWidth, 1200);
    QCOMPARE(m_window->prevHeight, 703);
    const float ratio = 1200.0F / 974.0F;
    QCOMPARE(m_window->ui->btnNewsBig->geometry(),
             QRect(int(67 * ratio), int(33 * ratio), int(559 * ratio), int(319 * ratio)));
}

void TestScaling::heightAloneDecides()
{
    m_window->customResize(974, 800);
    QCOMPARE(m_window->size(), QSize(int(std::floor(974.0F * (800.0F / 571.0F))), 800));
}

void TestScaling::smallerRatioDecides()
{
    m_window->customResize(1920, 1080);
    QCOMPARE(m_window->size(), QSize(1842, 1080));
}

void TestScaling::zeroMeansTheSizeOfTheWindow()
{
    m_window->resize(1100, 571);
    m_window->customResize(1200, 0);
    QCOMPARE(m_window->width(), 1100);
    m_window->resize(1100, 571);
    m_window->customResize(0, 333);
    VERIFY_RELATION(m_window->height(), >, 500);
}

void TestScaling::sameSizeChangesNothing()
{
    m_window->customResize(1200, 703);
    const QString sheet = QStringLiteral("font: 77px \"Lato\";");
    m_window->ui->btnHome->setStyleSheet(sheet);
    m_window->ui->btnHome->setGeometry(1, 2, 3, 4);
    m_window->customResize(m_window->prevWidth, m_window->prevHeight);
    QCOMPARE(m_window->ui->btnHome->styleSheet(), sheet);
    QCOMPARE(m_window->ui->btnHome->geometry(), QRect(1, 2, 3, 4));
}

void TestScaling::centralWidgetAndGripAreLeftAlone()
{
    MySizeGrip grip(m_window.get());
    grip.setObjectName(QStringLiteral("btnPlay"));
    grip.setGeometry(5, 6, 7, 8);
    m_window->sizeGrip = &grip;
    // Hidden, nothing else moves the central widget.
    m_window->xs[QStringLiteral("mainwindow")] = 50;
    const QRect central = m_window->ui->mainwindow->geometry();
    m_window->customResize(1948, 1142);
    QCOMPARE(grip.geometry(), QRect(5, 6, 7, 8));
    QCOMPARE(m_window->ui->mainwindow->geometry(), central);
    m_window->sizeGrip = nullptr;
    QVERIFY(WindowDriver::show(*m_window));
    QTRY_COMPARE(m_window->ui->mainwindow->size(), m_window->size());
}

void TestScaling::fonts_data()
{
    QTest::addColumn<QString>("sheet");
    QTest::addColumn<int>("recorded");
    QTest::addColumn<float>("ratio");
    QTest::addColumn<QString>("expected");
    const auto row = [](const char *name, const char *sheet, int recorded, float ratio,
                        const char *expected) {
        QTest::newRow(name) << QString::fromLatin1(sheet) << recorded << ratio
                            << QString::fromLatin1(expected);
    };
    row("12 px at 1.5", "font: 12px;", 12, 1.5F, "font: 18px;");
    row("12 px at 0.5", "font: 12px;", 12, 0.5F, "font: 6px;");
    row("no blank stays", "font:12px;", 2, 1.5F, "font:12px;");
    row("px before font ends at 1", "border: 2px; font: 14px;", 0, 1.5F, "border: 2px; font: 1px;");
    row("two declarations share the first size", "A{font: 10px;} B{font: 30px;}", 10, 2.0F,
        "A{font: 20px;} B{font: 20px;}");
}

// A window whose form was changed before its geometry was recorded.
void TestScaling::fonts()
{
    QFETCH(QString, sheet);
    QFETCH(int, recorded);
    QFETCH(float, ratio);
    QFETCH(QString, expected);
    m_window->ui->btnHome->setStyleSheet(sheet);
    m_window->recordDesignGeometry();
    QCOMPARE(m_window->fontSizes.value(QStringLiteral("btnHome")), recorded);
    m_window->scaleWidget(m_window->ui->btnHome, ratio);
    QCOMPARE(m_window->ui->btnHome->styleSheet(), expected);
}

void TestScaling::iconsTakeTheDesignSize()
{
    m_window->ui->btnRight->setIconSize(QSize(0, 0));
    m_window->customResize(1461, 571);
    const float ratio = 1461.0F / 974.0F;
    QCOMPARE(m_window->ui->btnPlay->iconSize(), QSize(int(196 * ratio), int(81 * ratio)));
    QCOMPARE(m_window->ui->btnRight->iconSize(), QSize(0, 0));
}

void TestScaling::newsPicturesComeFromTheOriginal()
{
    QImage fine(600, 600, QImage::Format_RGB32);
    for (int y = 0; y < 600; ++y) {
        for (int x = 0; x < 600; ++x) {
            fine.setPixel(x, y, qRgb(x % 256, y % 256, (x * y) % 256));
        }
    }
    const QImage mirrored = fine.mirrored();
    PublishedWorld world;
    world.server.serve(QStringLiteral("slide.png"), Documents::png(fine));
    world.server.serve(QStringLiteral("tile.png"), Documents::png(mirrored));
    world.publish({Documents::news(QStringLiteral("homenews"), QStringLiteral("One"), {},
                                   world.server.url(QStringLiteral("slide.png"))),
                   Documents::news(QStringLiteral("news"), QStringLiteral("Two"), {},
                                   world.server.url(QStringLiteral("tile.png")))});
    m_window = std::make_unique<testform>();
    const QLabel *slide = m_window->ui->homeNewsImageBackground;
    const QLabel *tile = m_window->ui->newsMedium1Background;
    const QLabel *big = m_window->ui->newsBigBackground;
    QTRY_VERIFY(!slide->pixmap(Qt::ReturnByValue).isNull());
    QTRY_VERIFY(!big->pixmap(Qt::ReturnByValue).isNull());
    // Small first: what was lost there must not be missing afterwards.
    m_window->customResize(487, 285);
    m_window->customResize(1461, 856);
    for (const QLabel *label : {slide, big}) {
        QCOMPARE(label->pixmap(Qt::ReturnByValue).size(), label->size());
        QCOMPARE(label->pixmap(Qt::ReturnByValue).toImage(),
                 QPixmap::fromImage(label == slide ? fine : mirrored)
                     .scaled(label->size(), Qt::IgnoreAspectRatio, Qt::FastTransformation)
                     .toImage());
    }
    QVERIFY(tile->pixmap(Qt::ReturnByValue).isNull());

    // Not even a window of no size loses them.
    m_window->customResize(1, 1);
    m_window->customResize(974, 571);
    QCOMPARE(big->pixmap(Qt::ReturnByValue).size(), QSize(559, 319));
}

void TestScaling::otherPicturesStayUnscaled()
{
    QPixmap logo(144, 67);
    logo.fill(Qt::red);
    m_window->ui->labelServer->setPixmap(logo);
    m_window->customResize(1461, 856);
    QCOMPARE(m_window->ui->labelServer->pixmap(Qt::ReturnByValue).size(), QSize(144, 67));
}

void TestScaling::itemsThatLoadedNothingAreNotRead()
{
    QPixmap picture(10, 10);
    picture.fill(Qt::red);
    m_window->ui->newsBigBackground->setPixmap(picture);
    QCOMPARE(m_window->news[0].getOriginalPixmap(), nullptr);
    m_window->customResize(1461, 856);
    QCOMPARE(m_window->ui->newsBigBackground->pixmap(Qt::ReturnByValue).size(), QSize(10, 10));
}

namespace
{
class SpecialButton : public QPushButton
{
    Q_OBJECT

public:
    using QPushButton::QPushButton;
};

class SpecialLabel : public QLabel
{
    Q_OBJECT

public:
    using QLabel::QLabel;
};
} // namespace

void TestScaling::subclassesDoNotCount()
{
    SpecialButton button(m_window.get());
    button.setObjectName(QStringLiteral("btnPlay"));
    button.setIconSize(QSize(11, 12));
    SpecialLabel label(m_window.get());
    label.setObjectName(QStringLiteral("newsBigBackground"));
    QPixmap picture(10, 10);
    picture.fill(Qt::red);
    label.setPixmap(picture);
    m_window->news[0] = News({}, {}, {}, {}, &label, nullptr, nullptr);
    m_window->news[0].imageDownloader->px_orig = new QPixmap(picture);
    m_window->customResize(1461, 856);
    QCOMPARE(button.iconSize(), QSize(11, 12));
    QCOMPARE(label.pixmap(Qt::ReturnByValue).size(), QSize(10, 10));
    QCOMPARE(label.size(), m_window->ui->newsBigBackground->size());
    QCOMPARE(button.size(), m_window->ui->btnPlay->size());
}

void TestScaling::sharedNamesShareTheLastGeometry()
{
    QWidget twin(m_window->ui->mainwindow);
    twin.setObjectName(QStringLiteral("btnRight"));
    twin.setGeometry(100, 200, 300, 400);
    m_window->recordDesignGeometry();
    m_window->customResize(1948, 1142);
    // Recorded last: the twin is younger than the whole form.
    QCOMPARE(m_window->ui->btnRight->geometry(), QRect(200, 400, 600, 800));
}

void TestScaling::runTimeWidgetsHaveNoDesignGeometry()
{
    QLabel late(m_window->ui->mainwindow);
    late.setObjectName(QStringLiteral("late"));
    late.setStyleSheet(QStringLiteral("font: 20px;"));
    late.setGeometry(10, 20, 30, 40);
    m_window->customResize(1461, 856);
    QCOMPARE(late.geometry(), QRect(0, 0, 0, 0));
    QCOMPARE(late.styleSheet(), QStringLiteral("font: 1px;"));
    for (const auto *record : {&m_window->widths, &m_window->heights, &m_window->xs, &m_window->ys,
                               &m_window->fontSizes}) {
        QVERIFY(record->contains(QStringLiteral("late")));
    }
    QVERIFY(!m_window->fontSizes.contains(QStringLiteral("btnPlay")));
}

// At 2,000 sizes every widget lies where the formula puts it, recomputed from the design.
void TestScaling::randomSizesFollowTheFormula()
{
    const QHash<QString, Design> expected = design();
    const auto widgets = m_window->findChildren<QWidget *>();
    QRandomGenerator random(20240229);
    int sizes = 0;
    while (sizes < 2000) {
        const QSize previous(m_window->prevWidth, m_window->prevHeight);
        QSize target(random.bounded(487, 3000), random.bounded(286, 2000));
        switch (random.bounded(4)) {
        case 0:
            target.setHeight(previous.height());
            break;
        case 1:
            target.setWidth(previous.width());
            break;
        default:
            break;
        }
        m_window->customResize(target.width(), target.height());
        if (target == previous) {
            QCOMPARE(QSize(m_window->prevWidth, m_window->prevHeight), previous);
            continue;
        }
        ++sizes;
        const float byWidth = float(target.width()) / 974.0F;
        const float byHeight = float(target.height()) / 571.0F;
        const float ratio = target.height() == previous.height() ? byWidth
                            : target.width() == previous.width() ? byHeight
                                                                 : std::min(byHeight, byWidth);
        QCOMPARE(m_window->prevWidth, int(std::floor(974.0F * ratio)));
        QCOMPARE(m_window->prevHeight, int(std::floor(571.0F * ratio)));
        for (const QWidget *widget : widgets) {
            const QString name = widget->objectName();
            if (name == QStringLiteral("mainwindow")) {
                continue;
            }
            const QRect from = expected.value(name).geometry;
            const QRect wanted(int(float(from.x()) * ratio), int(float(from.y()) * ratio),
                               int(float(from.width()) * ratio), int(float(from.height()) * ratio));
            if (widget->geometry() != wanted) {
                QFAIL(qPrintable(QStringLiteral("%1 at %2 x %3")
                                     .arg(name)
                                     .arg(target.width())
                                     .arg(target.height())));
            }
        }
        // A sheet with a font costs most; a sample of them is enough.
        const int font = expected.value(QStringLiteral("btnHome")).font;
        const int wantedFont = std::max(1, int(std::ceil(float(font) * ratio)));
        QVERIFY(m_window->ui->btnHome->styleSheet().contains(
            QStringLiteral("font: %1px").arg(wantedFont)));
    }

    m_window->customResize(974, 571);
    const QHash<QString, Design> after = design();
    for (auto widget = expected.cbegin(); widget != expected.cend(); ++widget) {
        QCOMPARE(after.value(widget.key()).font, widget.value().font);
        if (widget.key() != QStringLiteral("mainwindow")) {
            QCOMPARE(after.value(widget.key()).geometry, widget.value().geometry);
        }
    }
}

void TestScaling::designSizeRestoresEverything()
{
    const QHash<QString, Design> before = design();
    m_window->customResize(1717, 1234);
    m_window->customResize(600, 400);
    m_window->customResize(974, 571);
    const QHash<QString, Design> after = design();
    QCOMPARE(after.size(), before.size());
    for (auto widget = before.cbegin(); widget != before.cend(); ++widget) {
        if (widget.key() != QStringLiteral("mainwindow")) {
            QCOMPARE(after.value(widget.key()).geometry, widget.value().geometry);
        }
        QCOMPARE(after.value(widget.key()).font, widget.value().font);
    }
    // Icons then have their button's own design size.
    QCOMPARE(m_window->ui->btnPlay->iconSize(), QSize(196, 81));
}

void TestScaling::smallPicturesGrowWithTheWindow_data()
{
    QTest::addColumn<QString>("name");
    for (const char *name : {"btnLeft", "btnRight", "btnFacebook", "btnDiscord", "slide1",
                             "slidePassive2", "btnClose_", "btnFullscreen_", "btnMinimize_"}) {
        QTest::newRow(name) << QString::fromLatin1(name);
    }
}

// Not only their places: what is drawn there takes the same part of them at each size, up to the
// largest screens.
void TestScaling::smallPicturesGrowWithTheWindow()
{
    QFETCH(QString, name);
    auto *widget = m_window->findChild<QWidget *>(name);
    const auto drawnHeight = [widget] {
        QImage image(widget->size(), QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::transparent);
        widget->render(&image, QPoint(), QRegion(), QWidget::RenderFlags());
        int top = image.height();
        int bottom = -1;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                if (qAlpha(image.pixel(x, y)) > 127) {
                    top = std::min(top, y);
                    bottom = y;
                }
            }
        }
        return bottom - top + 1;
    };
    // At twice the design's size, for its edges fall between two pixels there.
    m_window->customResize(1948, 1142);
    const int atTwice = drawnHeight();
    VERIFY_RELATION(atTwice, >, 0);
    for (const QSize size : {QSize(487, 286), QSize(974, 571), QSize(1200, 703), QSize(1842, 1080),
                             QSize(2460, 1440), QSize(3684, 2160)}) {
        m_window->customResize(size.width(), size.height());
        const double expected = atTwice * m_window->prevWidth / 1948.0;
        const double allowed = std::max(2.0, expected / 20);
        VERIFY_RELATION(std::abs(drawnHeight() - expected), <=, allowed);
    }
}

namespace
{
void sendMouse(QWidget &target, QEvent::Type type)
{
    QMouseEvent event(type, QPointF(2, 2), Qt::LeftButton,
                      type == QEvent::MouseButtonRelease ? Qt::NoButton : Qt::LeftButton,
                      Qt::NoModifier);
    QApplication::sendEvent(&target, &event);
}
} // namespace

void TestScaling::sizeGripRescalesEveryLauncherWindow()
{
    testform second;
    MySizeGrip grip(m_window.get());
    QVERIFY(grip.hasMouseTracking());
    QCOMPARE(grip.metaObject()->className(), "QSizeGrip");
    m_window->resize(1200, 571);
    second.resize(974, 800);
    sendMouse(grip, QEvent::MouseButtonRelease);
    QCOMPARE(m_window->size(), QSize(1200, 703));
    QCOMPARE(second.height(), 800);
    VERIFY_RELATION(second.width(), >, 1300);
}

void TestScaling::sizeGripIgnoresMoves()
{
    QWidget window;
    window.resize(200, 200);
    MySizeGrip grip(&window);
    QVERIFY(WindowDriver::show(window));
    sendMouse(grip, QEvent::MouseButtonPress);
    QMouseEvent move(QEvent::MouseMove, QPointF(80, 80), QPointF(500, 500), Qt::NoButton,
                     Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(&grip, &move);
    QCOMPARE(window.size(), QSize(200, 200));
}

QTEST_MAIN(TestScaling)
#include "tst_scaling.moc"
