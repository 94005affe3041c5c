#pragma once

#include "base/documentlimits.h"
#include "info/clientinfo.h"
#include "info/settings.h"
#include "news/news.h"

#include <QHash>
#include <QMainWindow>
#include <QPoint>
#include <QString>

class DownloadManager;
class FileDownloader;
class Keyboard;
class MySizeGrip;
class QGroupBox;
class QLabel;
class QVBoxLayout;
class ServerButton;

namespace Ui
{
class testform;
}

// The tiles, in the order of the document's news elements.
enum NewsTile {
    IMAGE_NEWS_BIG = 0,
    IMAGE_NEWS_MEDIUM_1 = 1,
    IMAGE_NEWS_MEDIUM_2 = 2,
    IMAGE_NEWS_SMALL_1 = 3,
    IMAGE_NEWS_SMALL_2 = 4,
    IMAGE_NEWS_SMALL_3 = 5,
};
static_assert(IMAGE_NEWS_SMALL_3 + 1 == DocumentLimits::tiles, "each tile has a name");

// The launcher's main window. Everything the launcher knows lives here; what it creates belongs to
// it or to the widget that shows it and stays until it closes. Operations stand in the folder of
// the subsystem that owns them.
class testform : public QMainWindow
{
    Q_OBJECT

public:
    // Builds and wires the window and starts the fetch of the launcher document; shows nothing.
    explicit testform(QWidget *parent = nullptr);
    // Writes no file.
    ~testform() override;

    // Writes the text and a line end to standard output, for diagnostics.
    void print(QString s);

    // Unpacks the archive into the folder with "./unzip.exe"; blocks until that has ended. The
    // extractor's process object belongs to parent. Always true: failures are not examined.
    static bool unzip2Folder(QString file, QString folder, QObject *parent = nullptr,
                             QString password = {});

    // Scales the window and all its widgets to this size in pixels, or, when one of them is 0, to
    // the size the window has; the window ends in the design's proportions.
    void customResize(int w = 0, int h = 0);

    // Hover and press feedback; never consumes an event.
    bool eventFilter(QObject *obj, QEvent *event) override;

    static constexpr int tabs = 2;
    static constexpr int watchedButtons = 22;

    // Constants of the class; empty (0) until the first window assigns them.
    static QString DIR_OFFLINE;
    static QString DIR_SETTINGS;
    static QString BASE_URL;
    static QString WEBSITE_URL;
    static int LAUNCHER_VERSION;
    static QString DIR_FOLDER; // stays empty; nothing reads it

private slots:
    // The order of the slots is part of the window's interface: it is their index in the
    // meta-object.
    void loadInfo(bool isBuffer = false);
    void updateProgress(QString msg, int prog);
    void updateFinished();
    void on_btnHome_2_clicked();
    void on_btnNews_2_clicked();
    void on_btnRight_clicked();
    void on_btnLeft_clicked();
    void on_btnPlay_clicked();
    void on_btnPlay_2_clicked();
    void on_btnFacebook_clicked();
    void on_btnDiscord_clicked();
    void on_btnHomeNews_clicked();
    void on_btnNewsBig_clicked();
    void on_btnNewsMedium1_clicked();
    void on_btnNewsMedium2_clicked();
    void on_btnNewsSmall1_clicked();
    void on_btnNewsSmall2_clicked();
    void on_btnNewsSmall3_clicked();
    void on_btnClose_clicked();
    void on_btnFullscreen_clicked();
    void on_btnMinimize_clicked();
    void on_btnCloseIntro_clicked();
    void on_btnSelectServer_clicked();
    void on_rememberCheckBox_clicked();
    void on_btnUpdate_clicked();
    void on_btnDownload_clicked();
    void onServerSelect(QString args);

protected:
    // info/: key F12
    bool event(QEvent *event) override;

    // window/: chrome
    bool nativeEvent(const QByteArray &eventType, void *message, long *result) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;

    // window/: keyboard
    bool focusNextPrevChild(bool next) override;
    void keyPressEvent(QKeyEvent *event) override;

private:
    class DocumentApplier;

    // window/: the steps of construction
    static void keepFormPictures();
    void letPanelHideTheRest();
    void darkenGrounds();
    void assignConstants();
    void fillWidgetArrays();
    void resetDownloadDisplay();
    void watchButtons();
    void recordDesignGeometry();
    void quitWithSettings();

    // window/: scaling
    void prepWidgets(QWidget *widget);
    void scaleWidget(QWidget *widget, float ratio);
    void scaleNewsPicture(QLabel *label, QSize size);
    const News *newsItemOf(const QLabel *label) const;
    void remakePictures();

    // window/: keyboard
    void followKeyboard();
    void keepKeyboardInStep();
    bool leavePanel();
    void offerActionToKeyboard();

    // window/: names for screen readers, and tooltips
    void nameForm();
    void nameButtons();
    void explainButton(QWidget *button, const QString &what);

    // info/: launcher document
    void downloadInfo();
    void loadBuffer();
    QString trimString(QString q);

    // info/: settings and authentication code
    void loadSettings();
    void writeSettings();
    void askAuthenticationCode();
    void offerRestart();

    // info/: selection panel
    void createServerButtons();
    QGroupBox *createServerColumn(const QString &name, QSize logo);
    void addClientButtons(QVBoxLayout *column, const QString &server);
    void placeServerColumnsAnew();
    void applyRememberedSelection();
    void serverSelectCallback();
    void showServerLogo();
    void remakeServerLogo();

    // install/: client directories. Paths are relative to the working directory; the first two
    // create the server's and the client's folder when missing, if the entry's names are plain.
    QString getParentDir();
    QString getClientDir(QString version = {});
    QString getInstalledVersion();
    bool hasPlainFolder() const;
    bool isPlainEntry() const;
    void deleteOlderVersions();
    void deleteInstallationFiles();
    bool fileExists(QString path);
    void showClientVersion(const QString &version, const QString &installed);

    // install/: download and action buttons
    void downloadClient();
    void updateButtonStates(QString state);
    bool nothingChosenYet() const;
    enum class Installed { Nothing, AnotherVersion, OfferedVersion };
    Installed whatIsInstalled();
    void showButtonsFor(Installed installed);
    void enablePlay(bool enable);
    void enableUpdateAndDownload(bool enable);
    QString askGraphicsEngineFilter();
    void play(QString fileName = {});

    // news/: tabs, slides and tiles
    void initNewsGui();
    void loadNews(bool isBuffer);
    void setMenuState(int ms);
    void setSlideState(int s);
    void nameNews();
    void nameSlide();

    // window/: the form
    Ui::testform *ui;

    // info/: settings
    Settings settings;

    // news/: items, bound to their labels by initNewsGui()
    News homeNews[DocumentLimits::slides];
    News news[DocumentLimits::tiles];

    // install/: version of the last download that ended; nobody reads it
    QString installedVersion;

    // The four addresses get their values from the constructor.
    QString infoUrl;
    QString urlDiscord;
    QString urlFacebook;

    // info/: logos by server name; the document's fetch, made by downloadInfo(). All are children
    // of the window.
    QHash<QString, ServerButton *> serverButtons;
    FileDownloader *infoDownloader = nullptr;

    // install/: the newest manager, made by downloadClient(); earlier ones live on as children
    DownloadManager *downloadManager = nullptr;

    // info/: client table and current selection
    ClientInfoTable clientInfos;
    ClientInfo selectedClientInfo;

    // window/: scaling; sizes in pixels. W to H_MIN and RATIO get their values when the design
    // geometry is recorded, the four *_before_full when full screen is entered.
    int W = 0;
    int H = 0;
    int prevWidth = 0;
    int prevHeight = 0;
    int W_MIN = 0;
    int H_MIN = 0;
    int w_before_full = 0;
    int h_before_full = 0;
    int x_before_full = 0;
    int y_before_full = 0;
    bool isMax = false;
    QPoint mousePos;
    // The measure that mousePos is in: pixels of the screen to one of the window's, and the
    // screen's corner; 0 before the first press or move.
    qreal m_dragRatio = 0;
    QPoint m_dragOrigin;
    float RATIO = 0;
    bool manualResizeCall = false; // nobody uses it
    QHash<QString, int> widths;
    QHash<QString, int> heights;
    QHash<QString, int> xs;
    QHash<QString, int> ys;
    QHash<QString, int> fontSizes;
    MySizeGrip *sizeGrip = nullptr; // the window makes none

    // news/: tabs and slides; the arrays are filled by the constructor
    int menuState = -1;
    QGroupBox *activeButtons[tabs] = {};
    QGroupBox *passiveButtons[tabs] = {};
    QGroupBox *contents[tabs] = {};
    int numButtons = tabs;
    int slideState = -1;
    int numSlides = DocumentLimits::slides;
    QLabel *activeSlides[DocumentLimits::slides] = {};
    QLabel *passiveSlides[DocumentLimits::slides] = {};
    int numNews = DocumentLimits::tiles;

    // install/: nothing ever sets it
    bool isDownloadingClient = false;

    // window/: the buttons watched for hover and press
    int numButtonsList = watchedButtons;
    QObject *btn_list[watchedButtons] = {};

    // window/: where the keyboard is, made by followKeyboard(); whether Escape leaves the panel
    Keyboard *keyboard = nullptr;
    bool panelOpenedAgain = false;
};
