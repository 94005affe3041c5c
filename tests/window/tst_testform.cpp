#include "support/consolecapture.h"
#include "support/documents.h"
#include "support/messagelog.h"
#include "support/publishedworld.h"
#include "support/relation.h"
#include "support/scratchfolder.h"
#include "support/testsettings.h"
#include "support/windowdriver.h"
#include "ui_testform.h"
#include "window/testform.h"

#include <QDirIterator>
#include <QImageReader>
#include <QMetaMethod>
#include <QPixmapCache>
#include <QTest>
#include <QTimer>

namespace
{
// How often a widget was painted.
class PaintCounter : public QObject
{
public:
    explicit PaintCounter(QWidget *widget) { widget->installEventFilter(this); }
    int count() const { return m_count; }

protected:
    bool eventFilter(QObject *, QEvent *event) override
    {
        m_count += event->type() == QEvent::Paint ? 1 : 0;
        return false;
    }

private:
    int m_count = 0;
};
} // namespace

// Construction, constants, slot table and the ways in which the launcher ends.
class TestTestform : public QObject
{
    Q_OBJECT

private slots:
    void constantsAreEmptyBeforeTheFirstWindow();
    void constantsAfterConstruction();
    void slotTable_data();
    void slotTable();
    void slotTableIsComplete();
    void noConnectByNameWarning();
    void arraysHoldTheWidgetsInOrder();
    void formPicturesFitIntoTheToolkitsCache();
    void downloadDisplayIsReset();
    void panelHidesWhatLiesBeneath_data();
    void panelHidesWhatLiesBeneath();
    void startsHiddenFramelessOnHomeWithTheFirstSlide();
    void fetchIsUnderWayButAnsweredOnlyByTheEventLoop();
    void closeButtonWritesSettingsAndEndsWithZero_data();
    void closeButtonWritesSettingsAndEndsWithZero();
    void destroyingTheWindowWritesNoFile();
    void systemCloseWritesNoFile();
    void printWritesUtf8Line();
};

// Runs first: the order of declaration is the order of the run.
void TestTestform::constantsAreEmptyBeforeTheFirstWindow()
{
    QVERIFY(testform::DIR_OFFLINE.isEmpty());
    QVERIFY(testform::DIR_SETTINGS.isEmpty());
    QVERIFY(testform::BASE_URL.isEmpty());
    QVERIFY(testform::WEBSITE_URL.isEmpty());
    QVERIFY(testform::DIR_FOLDER.isEmpty());
    QCOMPARE(testform::LAUNCHER_VERSION, 0);
}

void TestTestform::constantsAfterConstruction()
{
    const ScratchFolder folder;
    const testform window;
    QCOMPARE(testform::DIR_OFFLINE, QStringLiteral("offline.txt"));
    QCOMPARE(testform::DIR_SETTINGS, QStringLiteral("settings.txt"));
    QCOMPARE(testform::BASE_URL, QLatin1String(TestSettings::nobodyListens));
    QCOMPARE(testform::WEBSITE_URL, QStringLiteral("https://www.emberwake.test/"));
    QCOMPARE(testform::LAUNCHER_VERSION, 1);
    QVERIFY(testform::DIR_FOLDER.isEmpty());
    QCOMPARE(window.infoUrl, testform::BASE_URL + QStringLiteral("launcher.xml"));
    QCOMPARE(window.urlDiscord, QStringLiteral("https://chat.emberwake.test/invite"));
    QCOMPARE(window.urlFacebook, QStringLiteral("https://community.emberwake.test/page"));
    QCOMPARE(window.isDownloadingClient, false);
    QCOMPARE(window.isMax, false);
    QCOMPARE(window.sizeGrip, nullptr);
    QCOMPARE(window.numButtons, 2);
    QCOMPARE(window.numSlides, 3);
    QCOMPARE(window.numNews, 6);
    QCOMPARE(window.numButtonsList, 22);

    // Every construction assigns them again.
    testform::DIR_SETTINGS = QStringLiteral("elsewhere.txt");
    const testform second;
    QCOMPARE(testform::DIR_SETTINGS, QStringLiteral("settings.txt"));
}

void TestTestform::slotTable_data()
{
    QTest::addColumn<int>("index");
    QTest::addColumn<QByteArray>("signature");
    QTest::addColumn<QString>("widget"); // of a slot connected by name
    const char *const table[][2] = {
        {"loadInfo(bool)", ""},
        {"loadInfo()", ""},
        {"updateProgress(QString,int)", ""},
        {"updateFinished()", ""},
        {"on_btnHome_2_clicked()", "btnHome_2"},
        {"on_btnNews_2_clicked()", "btnNews_2"},
        {"on_btnRight_clicked()", "btnRight"},
        {"on_btnLeft_clicked()", "btnLeft"},
        {"on_btnPlay_clicked()", "btnPlay"},
        {"on_btnPlay_2_clicked()", "btnPlay_2"},
        {"on_btnFacebook_clicked()", "btnFacebook"},
        {"on_btnDiscord_clicked()", "btnDiscord"},
        {"on_btnHomeNews_clicked()", "btnHomeNews"},
        {"on_btnNewsBig_clicked()", "btnNewsBig"},
        {"on_btnNewsMedium1_clicked()", "btnNewsMedium1"},
        {"on_btnNewsMedium2_clicked()", "btnNewsMedium2"},
        {"on_btnNewsSmall1_clicked()", "btnNewsSmall1"},
        {"on_btnNewsSmall2_clicked()", "btnNewsSmall2"},
        {"on_btnNewsSmall3_clicked()", "btnNewsSmall3"},
        {"on_btnClose_clicked()", "btnClose"},
        {"on_btnFullscreen_clicked()", "btnFullscreen"},
        {"on_btnMinimize_clicked()", "btnMinimize"},
        {"on_btnCloseIntro_clicked()", "btnCloseIntro"},
        {"on_btnSelectServer_clicked()", "btnSelectServer"},
        {"on_rememberCheckBox_clicked()", "rememberCheckBox"},
        {"on_btnUpdate_clicked()", "btnUpdate"},
        {"on_btnDownload_clicked()", "btnDownload"},
        {"onServerSelect(QString)", ""},
    };
    int index = 0;
    for (const auto &row : table) {
        QTest::newRow(row[0]) << index++ << QByteArray(row[0]) << QString::fromLatin1(row[1]);
    }
}

void TestTestform::slotTable()
{
    QFETCH(int, index);
    QFETCH(QByteArray, signature);
    QFETCH(QString, widget);
    const QMetaObject &meta = testform::staticMetaObject;
    const QMetaMethod method = meta.method(meta.methodOffset() + index);
    QCOMPARE(method.methodSignature(), signature);
    QCOMPARE(method.methodType(), QMetaMethod::Slot);

    const ScratchFolder folder;
    testform window;
    if (!widget.isEmpty()) {
        auto *button = window.findChild<QAbstractButton *>(widget);
        QVERIFY(button != nullptr);
        // Connected already: a unique connection is refused.
        QVERIFY(!QObject::connect(button, QMetaMethod::fromSignal(&QAbstractButton::clicked),
                                  &window, method, Qt::UniqueConnection));
    }
}

void TestTestform::slotTableIsComplete()
{
    const QMetaObject &meta = testform::staticMetaObject;
    QCOMPARE(meta.methodCount() - meta.methodOffset(), 28);
}

void TestTestform::noConnectByNameWarning()
{
    const ScratchFolder folder;
    const MessageLog log;
    const testform window;
    QCOMPARE(MessageLog::containing(QStringLiteral("connectSlotsByName")), QStringList());
    QCOMPARE(MessageLog::containing(QStringLiteral("QObject::connect")), QStringList());
    QCOMPARE(MessageLog::containing(QStringLiteral("QMetaObject")), QStringList());
}

void TestTestform::arraysHoldTheWidgetsInOrder()
{
    const ScratchFolder folder;
    const testform window;
    const auto nameOf = [](const QObject *object) { return object->objectName(); };
    QCOMPARE(nameOf(window.activeButtons[0]), QStringLiteral("btnHomeGroupActive"));
    QCOMPARE(nameOf(window.activeButtons[1]), QStringLiteral("btnNewsGroupActive"));
    QCOMPARE(nameOf(window.passiveButtons[0]), QStringLiteral("btnHomeGroup"));
    QCOMPARE(nameOf(window.passiveButtons[1]), QStringLiteral("btnNewsGroup"));
    QCOMPARE(nameOf(window.contents[0]), QStringLiteral("contentHome"));
    QCOMPARE(nameOf(window.contents[1]), QStringLiteral("contentNews"));
    for (int i = 0; i < 3; ++i) {
        QCOMPARE(nameOf(window.activeSlides[i]), QStringLiteral("slide%1").arg(i + 1));
        QCOMPARE(nameOf(window.passiveSlides[i]), QStringLiteral("slidePassive%1").arg(i + 1));
    }
}

void TestTestform::formPicturesFitIntoTheToolkitsCache()
{
    const ScratchFolder folder;
    const testform window;
    qint64 bytes = 0;
    int pictures = 0;
    QDirIterator names(QStringLiteral(":/images"), QDir::Files, QDirIterator::Subdirectories);
    while (names.hasNext()) {
        const QSize size = QImageReader(names.next()).size();
        bytes += qint64(size.width()) * size.height() * 4;
        ++pictures;
    }
    VERIFY_RELATION(pictures, >, 30);
    VERIFY_RELATION(bytes / 1024, <, QPixmapCache::cacheLimit());
}

void TestTestform::downloadDisplayIsReset()
{
    const ScratchFolder folder;
    const testform window;
    QCOMPARE(window.ui->downloadProgressBar->value(), 0);
    QVERIFY(window.ui->downloadProgressBar->isHidden());
    QCOMPARE(window.ui->downloadProgressText->text(), QString());
}

void TestTestform::panelHidesWhatLiesBeneath_data()
{
    QTest::addColumn<QSize>("size");
    QTest::newRow("the design size") << QSize(974, 571);
    QTest::newRow("the smallest size") << QSize(487, 286);
    QTest::newRow("a size between") << QSize(1111, 651);
    QTest::newRow("full screen") << QSize(1842, 1080);
}

// What cannot be seen is not painted, and nobody sees that it is not.
void TestTestform::panelHidesWhatLiesBeneath()
{
    QFETCH(QSize, size);
    QVERIFY(!QImage(QStringLiteral(":/images/servers_nobutton_dark.png")).hasAlphaChannel());
    const ScratchFolder folder;
    testform window;
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    window.customResize(size.width(), size.height());
    QVERIFY(window.ui->serverButtonsGroup->isVisible());

    PaintCounter beneath(window.ui->backgroundImage);
    window.repaint();
    QCOMPARE(beneath.count(), 0);
    const QImage picture = window.grab().toImage();
    window.ui->serverButtonsGroup->setAttribute(Qt::WA_OpaquePaintEvent, false);
    QCOMPARE(window.grab().toImage(), picture);
    VERIFY_RELATION(beneath.count(), >, 0);

    // Without the panel it is painted as ever.
    window.ui->serverButtonsGroup->setAttribute(Qt::WA_OpaquePaintEvent);
    window.ui->serverButtonsGroup->hide();
    const int before = beneath.count();
    window.repaint();
    VERIFY_RELATION(beneath.count(), >, before);
}

void TestTestform::startsHiddenFramelessOnHomeWithTheFirstSlide()
{
    const ScratchFolder folder;
    const testform window;
    QVERIFY(window.isHidden());
    QCOMPARE(window.windowFlags() & ~Qt::WindowType_Mask, Qt::WindowFlags(Qt::FramelessWindowHint));
    QCOMPARE(window.menuState, 0);
    QCOMPARE(window.slideState, 0);
    QVERIFY(!window.ui->contentHome->isHidden());
    QVERIFY(window.ui->contentNews->isHidden());
    QVERIFY(!window.ui->slide1->isHidden());
    QVERIFY(window.ui->slide2->isHidden());
    QVERIFY(!window.ui->serverButtonsGroup->isHidden());
    QVERIFY(!window.ui->labelConnecting->isHidden());
    QVERIFY(window.infoDownloader != nullptr);
}

void TestTestform::fetchIsUnderWayButAnsweredOnlyByTheEventLoop()
{
    const ScratchFolder folder;
    PublishedWorld world;
    world.publish({Documents::client(QStringLiteral("Alpha"), QStringLiteral("Official"),
                                     QStringLiteral("1.0"))});
    testform window;
    QVERIFY(window.clientInfos.isEmpty());
    QTRY_COMPARE(window.clientInfos.size(), 1);
    QCOMPARE(world.server.requests(PublishedWorld::documentPath()), 1);
}

void TestTestform::closeButtonWritesSettingsAndEndsWithZero_data()
{
    QTest::addColumn<QString>("button");
    QTest::newRow("title bar") << QStringLiteral("btnClose");
    QTest::newRow("selection panel") << QStringLiteral("btnCloseIntro");
}

void TestTestform::closeButtonWritesSettingsAndEndsWithZero()
{
    QFETCH(QString, button);
    const ScratchFolder folder;
    testform window;
    // The panel lies over the title bar until a server was chosen.
    window.ui->serverButtonsGroup->setVisible(button == QStringLiteral("btnCloseIntro"));
    QVERIFY(WindowDriver::show(window));
    QString refused = QStringLiteral("never clicked");
    QTimer::singleShot(0, &window, [&] {
        refused = WindowDriver::click(window, button);
        if (!refused.isEmpty()) {
            QApplication::exit(-1);
        }
    });
    QTimer::singleShot(10000, &window, [] { QApplication::exit(-2); });
    QCOMPARE(QApplication::exec(), 0);
    QCOMPARE(refused, QString());
    QCOMPARE(ScratchFolder::read(QStringLiteral("settings.txt")), QByteArray("||true|"));
}

void TestTestform::destroyingTheWindowWritesNoFile()
{
    const ScratchFolder folder;
    {
        testform window;
        window.settings.server = QStringLiteral("Alpha");
    }
    QCOMPARE(ScratchFolder::tree(), QStringList());
}

void TestTestform::systemCloseWritesNoFile()
{
    const ScratchFolder folder;
    {
        testform window;
        QVERIFY(WindowDriver::show(window));
        window.settings.server = QStringLiteral("Alpha");
        QTimer::singleShot(0, &window, &QWidget::close);
        QTimer::singleShot(10000, &window, [] { QApplication::exit(-2); });
        QCOMPARE(QApplication::exec(), 0);
    }
    QVERIFY(!QFile::exists(QStringLiteral("settings.txt")));
}

void TestTestform::printWritesUtf8Line()
{
    const ScratchFolder folder;
    testform window;
    ConsoleCapture console;
    window.print(QString::fromUtf8("Glut \xC3\xA4"));
    QCOMPARE(console.out(), QByteArray("Glut \xC3\xA4\n"));
    QCOMPARE(console.err(), QByteArray());
}

QTEST_MAIN(TestTestform)
#include "tst_testform.moc"
