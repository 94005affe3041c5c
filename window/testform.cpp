#include "window/testform.h"

#include "base/buildsettings.h"
#include "base/console.h"
#include "base/documentlimits.h"
#include "ui_testform.h"
#include "window/fontsupply.h"
#include "window/pixelratiowatch.h"

#include <QApplication>
#include <QCheckBox>
#include <QColor>
#include <QPalette>
#include <QPixmapCache>

#include <algorithm>

QString testform::DIR_OFFLINE;
QString testform::DIR_SETTINGS;
QString testform::BASE_URL;
QString testform::WEBSITE_URL;
int testform::LAUNCHER_VERSION;
QString testform::DIR_FOLDER;

testform::testform(QWidget *parent)
    : QMainWindow(parent)
    , ui(new Ui::testform)
{
    keepFormPictures();
    FontSupply::provide(FontSupply::shippedFolder());
    ui->setupUi(this);
    letPanelHideTheRest();
    darkenGrounds();
    assignConstants();
    fillWidgetArrays();
    resetDownloadDisplay();
    loadSettings();
    initNewsGui();
    nameNews();
    setMenuState(0);
    setSlideState(0);
    downloadInfo();
    watchButtons();
    recordDesignGeometry();
    new PixelRatioWatch(*this, [this] { remakePictures(); });
    followKeyboard();
    nameForm();
    setWindowFlags(Qt::FramelessWindowHint);
}

testform::~testform()
{
    delete ui;
}

// The toolkit keeps 10 MiB of decoded pictures. The form's two largest do not fit together: each
// widget that is styled anew would push one of them out and have all others decoded again.
void testform::keepFormPictures()
{
    constexpr int enoughForAll = 40 * 1024; // in KiB
    QPixmapCache::setCacheLimit(std::max(QPixmapCache::cacheLimit(), enoughForAll));
}

// The panel's picture is opaque and fills it: nothing beneath needs to be painted while it is open.
// The style would take the mark away when it is first applied, so it is applied now.
void testform::letPanelHideTheRest()
{
    ui->serverButtonsGroup->ensurePolished();
    ui->serverButtonsGroup->setAttribute(Qt::WA_OpaquePaintEvent);
}

// What the system would paint in its own light grey: the room beside the content in a window that
// is larger, until it is rescaled, and the box under the check mark, which the form makes white.
void testform::darkenGrounds()
{
    const QColor dark(5, 7, 12); // of the picture's edges
    QPalette around = palette();
    around.setColor(QPalette::Window, dark);
    setPalette(around);
    // The frame keeps the light shades that styles draw from these.
    const QPalette usual = QApplication::palette(ui->rememberCheckBox);
    QPalette box = ui->rememberCheckBox->palette();
    box.setBrush(QPalette::Window, usual.window());
    box.setColor(QPalette::Base, dark);
    box.setColor(QPalette::Button, dark);
    ui->rememberCheckBox->setPalette(box);
}

void testform::assignConstants()
{
    DIR_OFFLINE = QStringLiteral("offline.txt");
    DIR_SETTINGS = QStringLiteral("settings.txt");
    BASE_URL = BuildSettings::baseUrl();
    LAUNCHER_VERSION = DocumentLimits::launcherVersion;
    WEBSITE_URL = BuildSettings::websiteUrl();

    isDownloadingClient = false;
    infoUrl = BASE_URL + QStringLiteral("launcher.xml");
    urlDiscord = BuildSettings::discordUrl();
    urlFacebook = BuildSettings::facebookUrl();
}

void testform::fillWidgetArrays()
{
    static_assert(tabs == 2 && DocumentLimits::slides == 3, "each has its own widgets in the form");
    activeButtons[0] = ui->btnHomeGroupActive;
    activeButtons[1] = ui->btnNewsGroupActive;
    passiveButtons[0] = ui->btnHomeGroup;
    passiveButtons[1] = ui->btnNewsGroup;
    contents[0] = ui->contentHome;
    contents[1] = ui->contentNews;
    activeSlides[0] = ui->slide1;
    activeSlides[1] = ui->slide2;
    activeSlides[2] = ui->slide3;
    passiveSlides[0] = ui->slidePassive1;
    passiveSlides[1] = ui->slidePassive2;
    passiveSlides[2] = ui->slidePassive3;
}

void testform::resetDownloadDisplay()
{
    ui->downloadProgressBar->setValue(0);
    ui->downloadProgressText->setText(QString());
    ui->downloadProgressBar->hide();
}

void testform::print(QString s)
{
    Console::out(s + QLatin1Char('\n'));
}

void testform::on_btnClose_clicked()
{
    quitWithSettings();
}

void testform::on_btnCloseIntro_clicked()
{
    quitWithSettings();
}

// Only the two close buttons write the settings on the way out; any other end leaves the file as
// the last change wrote it.
void testform::quitWithSettings()
{
    writeSettings();
    QApplication::exit(0);
}
