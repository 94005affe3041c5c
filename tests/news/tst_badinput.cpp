#include "fetch/filedownloader.h"
#include "fetch/imagedownloader.h"
#include "info/serverbutton.h"
#include "news/newsworld.h"
#include "support/consolecapture.h"
#include "support/messagelog.h"
#include "support/scratchfolder.h"
#include "support/windowdriver.h"
#include "ui_testform.h"
#include "window/testform.h"

#include <QGroupBox>
#include <QLayout>
#include <QSignalSpy>
#include <QTest>
#include <QThreadPool>
#include <QTimer>

#include <functional>
#include <memory>

namespace
{
constexpr int limit = 15000; // milliseconds

// Ways in which something published can be bad.
enum class Fault {
    Refused,
    NotFound,
    NotFoundWithPage,
    ServerError,
    ServerErrorWithPage,
    Redirect,
    Empty,
    Text,
    NulBytes,
    HalfSent,
    ConnectionCut
};

const QByteArray page = "<html><body>out of order</body></html>";

void serveFaulty(HttpServer &server, const QString &path, const QByteArray &good, Fault fault)
{
    switch (fault) {
    case Fault::Refused: // up to who names the address
        return;
    case Fault::NotFound:
        server.serve(path, {}, 404);
        return;
    case Fault::NotFoundWithPage:
        server.serve(path, page, 404);
        return;
    case Fault::ServerError:
        server.serve(path, {}, 500);
        return;
    case Fault::ServerErrorWithPage:
        server.serve(path, page, 500);
        return;
    case Fault::Redirect:
        server.serve(QStringLiteral("target"), good);
        server.redirect(path, server.url(QStringLiteral("target")));
        return;
    case Fault::Empty:
        server.serve(path, {});
        return;
    case Fault::Text:
        server.serve(path, "this is not what you wanted");
        return;
    case Fault::NulBytes:
        server.serve(path, QByteArray(100, '\0'));
        return;
    case Fault::HalfSent:
        server.serve(path, good.left(good.size() / 2));
        return;
    case Fault::ConnectionCut:
        server.serveCut(path, good, good.size() / 2);
        return;
    }
}

const NewsWorld::Item &itemNumber(int number)
{
    return NewsWorld::items[static_cast<std::size_t>(number)];
}

News &itemOf(testform &window, const NewsWorld::Item &item)
{
    return item.isSlide ? window.homeNews[item.index] : window.news[item.index];
}

QLabel *labelOf(const testform &window, const char *name)
{
    return window.findChild<QLabel *>(QLatin1String(name));
}

QPixmap pictureOf(const testform &window, const NewsWorld::Item &item)
{
    return labelOf(window, item.image)->pixmap(Qt::ReturnByValue);
}

bool showsItsPicture(const testform &window, const NewsWorld::Item &item)
{
    const QImage picture = pictureOf(window, item).toImage();
    return picture.size() == labelOf(window, item.image)->size() &&
           picture.pixel(picture.rect().center()) == item.colour;
}

int columns(const testform &window)
{
    const QLayout *row = window.ui->serverButtonsGroup->layout();
    return row != nullptr ? row->count() : 0;
}

bool hasLogo(const testform &window, const QString &server)
{
    const QIcon icon = window.serverButtons.value(server)->getButton()->icon();
    return !icon.pixmap(16, 16).isNull();
}

bool allPicturesAreAnswered(testform &window)
{
    for (const NewsWorld::Item &item : NewsWorld::items) {
        const ImageDownloader *const downloader = itemOf(window, item).imageDownloader;
        if (downloader == nullptr || !downloader->isDownloaded) {
            return false;
        }
    }
    for (ServerButton *server : qAsConst(window.serverButtons)) {
        if (!server->getImageDownloader()->isDownloaded) {
            return false;
        }
    }
    return QThreadPool::globalInstance()->waitForDone(limit);
}

QStringList sorted(QStringList names)
{
    names.sort();
    return names;
}

QString logoPath(const QString &server)
{
    return server + QStringLiteral(".png");
}

const QString alpha = QStringLiteral("Alpha");
const QString omega = QStringLiteral("Omega");

QStringList twoClients()
{
    return {Documents::client(alpha, QStringLiteral("Official"), QStringLiteral("1.0")),
            Documents::client(omega, QStringLiteral("Official"), QStringLiteral("2.0"))};
}

// A shown window whose event loop is counted: a window that hangs stops counting.
class Session
{
public:
    Session()
    {
        QObject::connect(window.infoDownloader, &FileDownloader::downloaded, &m_timer,
                         [this] { ++m_answers; });
        QObject::connect(&m_timer, &QTimer::timeout, &m_timer, [this] { ++m_turns; });
        m_timer.start(0);
    }

    bool show() { return WindowDriver::show(window); }
    bool documentIsAnswered()
    {
        return QTest::qWaitFor([this] { return m_answers > 0; }, limit);
    }
    bool turnsOn()
    {
        const int before = m_turns;
        return QTest::qWaitFor([this, before] { return m_turns > before + 10; }, limit);
    }

    testform window;

private:
    QTimer m_timer;
    int m_turns = 0;
    int m_answers = 0;
};
} // namespace

// What the player sees of a world that is broken, and what it does to the disk.
class TestBadInput : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void documentThatSaysNothing_data();
    void documentThatSaysNothing();
    void documentThatIsNone_data();
    void documentThatIsNone();
    void documentCutInTheMiddle_data();
    void documentCutInTheMiddle();
    void documentWithClientsOnly();
    void documentWithNewsOnly();

    void everyPictureCanFail_data();
    void everyPictureCanFail();
    void pictureFault_data();
    void pictureFault();
    void allPicturesFail();
    void pictureOfAnotherScheme_data();
    void pictureOfAnotherScheme();

    void everyLogoCanFail_data();
    void everyLogoCanFail();
    void logoFault_data();
    void logoFault();
    void logoNamesThatLeadOut_data();
    void logoNamesThatLeadOut();

    void wholeWorldIsShown();
    void windowGoesWhileSomethingIsHeld_data();
    void windowGoesWhileSomethingIsHeld();

private:
    void expectRestOfThePage(testform &window, int except);

    std::unique_ptr<ScratchFolder> m_folder;
    std::unique_ptr<MessageLog> m_log;
    QStringList m_outside;
};

void TestBadInput::init()
{
    m_folder = std::make_unique<ScratchFolder>();
    m_log = std::make_unique<MessageLog>();
    ScratchFolder::write(m_folder->outside() + QStringLiteral("/precious.png"), "precious");
    m_outside = m_folder->treeOutside();
}

// Whatever was published: nothing outside the installation folder has changed.
void TestBadInput::cleanup()
{
    QThreadPool::globalInstance()->waitForDone();
    const QStringList outside = m_folder->treeOutside();
    const QByteArray precious =
        ScratchFolder::read(m_folder->outside() + QStringLiteral("/precious.png"));
    // Ahead of the checks: one that fails returns.
    m_log.reset();
    m_folder.reset();
    QCOMPARE(outside, m_outside);
    QCOMPARE(precious, QByteArray("precious"));
}

void addFaultRows(const QVector<QPair<const char *, Fault>> &rows)
{
    QTest::addColumn<int>("fault");
    for (const auto &row : rows) {
        QTest::newRow(row.first) << static_cast<int>(row.second);
    }
}

// Every item but one shows its texts and its picture; that one shows its texts alone.
void TestBadInput::expectRestOfThePage(testform &window, int except)
{
    for (int number = 0; number < NewsWorld::numItems; ++number) {
        const NewsWorld::Item &item = itemNumber(number);
        QCOMPARE(labelOf(window, item.title)->text(), NewsWorld::titleOf(item));
        QCOMPARE(labelOf(window, item.subtitle)->text(), NewsWorld::subtitleOf(item));
        const QByteArray cached = ScratchFolder::read(NewsWorld::cacheFile(item));
        if (number == except) {
            QVERIFY2(pictureOf(window, item).isNull(), item.image);
            QCOMPARE(cached, QByteArray());
        } else {
            QVERIFY2(showsItsPicture(window, item), item.image);
            QCOMPARE(cached, Documents::png(40, 30, item.colour));
        }
    }
    QVERIFY(window.ui->labelConnecting->isHidden());
    QVERIFY(window.ui->serverButtonsGroup->isVisible());
}

void TestBadInput::documentThatSaysNothing_data()
{
    addFaultRows({{"nobody listens", Fault::Refused},
                  {"it is not found", Fault::NotFound},
                  {"the server is out of order", Fault::ServerError},
                  {"it has moved", Fault::Redirect},
                  {"it is empty", Fault::Empty},
                  {"it begins with a NUL byte", Fault::NulBytes}});
}

void TestBadInput::documentThatSaysNothing()
{
    QFETCH(int, fault);
    NewsWorld world;
    if (static_cast<Fault>(fault) == Fault::Refused) {
        TestSettings::setBaseUrl(QLatin1String(TestSettings::nobodyListens));
    }
    serveFaulty(world.base, NewsWorld::documentPath(), Documents::launcher(world.elements()),
                static_cast<Fault>(fault));
    Session session;
    testform &window = session.window;
    ConsoleCapture console;
    QVERIFY(session.show());
    QVERIFY(session.documentIsAnswered());
    QVERIFY(session.turnsOn());

    QVERIFY(window.ui->serverButtonsGroup->isVisible());
    QVERIFY(window.ui->labelConnecting->isVisible());
    QCOMPARE(window.ui->labelConnecting->text(), QStringLiteral("Connecting to server..."));
    QVERIFY(window.ui->serverButtonsGroup->layout() == nullptr);
    QVERIFY(window.clientInfos.isEmpty());
    for (const NewsWorld::Item &item : NewsWorld::items) {
        QCOMPARE(labelOf(window, item.title)->text(), QString());
        QCOMPARE(labelOf(window, item.subtitle)->text(), QString());
        QVERIFY(itemOf(window, item).imageDownloader == nullptr);
    }
    QCOMPARE(world.base.requests(QStringLiteral("target")), 0);
    QCOMPARE(console.out() + console.err(), QByteArray());
    QCOMPARE(ScratchFolder::tree(), QStringList{QStringLiteral("offline.txt")});
    QCOMPARE(ScratchFolder::read(QStringLiteral("offline.txt")), QByteArray());
}

void TestBadInput::documentThatIsNone_data()
{
    addFaultRows({{"an error page instead of it, not found", Fault::NotFoundWithPage},
                  {"an error page instead of it, out of order", Fault::ServerErrorWithPage},
                  {"a text", Fault::Text}});
}

// Any text is taken for a document, the status is not looked at: a panel without columns.
void TestBadInput::documentThatIsNone()
{
    QFETCH(int, fault);
    NewsWorld world;
    serveFaulty(world.base, NewsWorld::documentPath(), {}, static_cast<Fault>(fault));
    Session session;
    testform &window = session.window;
    const ConsoleCapture console;
    QVERIFY(session.show());
    QTRY_VERIFY_WITH_TIMEOUT(window.ui->labelConnecting->isHidden(), limit);
    QTRY_VERIFY_WITH_TIMEOUT(allPicturesAreAnswered(window), limit);
    QVERIFY(session.turnsOn());

    QVERIFY(window.ui->serverButtonsGroup->isVisible());
    QCOMPARE(columns(window), 0);
    for (const NewsWorld::Item &item : NewsWorld::items) {
        QCOMPARE(labelOf(window, item.title)->text(), QString());
        QVERIFY(pictureOf(window, item).isNull());
        QCOMPARE(ScratchFolder::read(NewsWorld::cacheFile(item)), QByteArray());
    }
    QCOMPARE(ScratchFolder::tree(),
             sorted(NewsWorld::cacheFiles() << QStringLiteral("offline.txt")));
}

void TestBadInput::documentCutInTheMiddle_data()
{
    QTest::addColumn<bool>("connectionIsCut");
    QTest::newRow("the server sends the first part only") << false;
    QTest::newRow("the connection is cut") << true;
}

void TestBadInput::documentCutInTheMiddle()
{
    QFETCH(bool, connectionIsCut);
    NewsWorld world;
    for (const QString &server : {alpha, omega}) {
        world.base.serve(logoPath(server), Documents::png(40, 30, 0xff305080));
    }
    const QByteArray whole = Documents::launcher(twoClients() + world.elements());
    const int kept = whole.indexOf("Title of the second slide");
    QVERIFY(kept > 0);
    if (connectionIsCut) {
        world.base.serveCut(NewsWorld::documentPath(), whole, kept);
    } else {
        world.base.serve(NewsWorld::documentPath(), whole.left(kept));
    }
    Session session;
    testform &window = session.window;
    const ConsoleCapture console;
    QVERIFY(session.show());
    QTRY_VERIFY_WITH_TIMEOUT(window.ui->labelConnecting->isHidden(), limit);
    QTRY_VERIFY_WITH_TIMEOUT(allPicturesAreAnswered(window), limit);
    QVERIFY(session.turnsOn());

    // What was read before the cut stands.
    QCOMPARE(columns(window), 2);
    QVERIFY(window.ui->serverButtonsGroup->isVisible());
    QVERIFY(hasLogo(window, alpha));
    QVERIFY(hasLogo(window, omega));
    for (int number = 0; number < NewsWorld::numItems; ++number) {
        const NewsWorld::Item &item = itemNumber(number);
        QCOMPARE(labelOf(window, item.title)->text(),
                 number == 0 ? NewsWorld::titleOf(item) : QString());
        QCOMPARE(showsItsPicture(window, item), number == 0);
    }
    QCOMPARE(ScratchFolder::tree(),
             sorted(NewsWorld::cacheFiles()
                    << logoPath(alpha) << logoPath(omega) << QStringLiteral("offline.txt")));
}

void TestBadInput::documentWithClientsOnly()
{
    NewsWorld world;
    for (const QString &server : {alpha, omega}) {
        world.base.serve(logoPath(server), Documents::png(40, 30, 0xff305080));
    }
    world.publish(twoClients());
    Session session;
    testform &window = session.window;
    const ConsoleCapture console;
    QVERIFY(session.show());
    const QImage placeholder = window.ui->newsBigBackground->grab().toImage();
    QTRY_VERIFY_WITH_TIMEOUT(window.ui->labelConnecting->isHidden(), limit);
    QTRY_VERIFY_WITH_TIMEOUT(allPicturesAreAnswered(window), limit);
    QVERIFY(session.turnsOn());

    QVERIFY(window.ui->serverButtonsGroup->isVisible());
    QCOMPARE(columns(window), 2);
    QVERIFY(hasLogo(window, alpha));
    QVERIFY(hasLogo(window, omega));
    for (const NewsWorld::Item &item : NewsWorld::items) {
        QCOMPARE(labelOf(window, item.title)->text(), QString());
        QCOMPARE(labelOf(window, item.subtitle)->text(), QString());
        QVERIFY(pictureOf(window, item).isNull());
        QCOMPARE(world.pictures(item).log(), QStringList());
    }
    QVERIFY(window.ui->newsBigBackground->grab().toImage() == placeholder);
    QCOMPARE(ScratchFolder::tree(),
             sorted(NewsWorld::cacheFiles()
                    << logoPath(alpha) << logoPath(omega) << QStringLiteral("offline.txt")));
}

void TestBadInput::documentWithNewsOnly()
{
    NewsWorld world;
    world.publish(world.elements());
    Session session;
    testform &window = session.window;
    const ConsoleCapture console;
    QVERIFY(session.show());
    QTRY_VERIFY_WITH_TIMEOUT(window.ui->labelConnecting->isHidden(), limit);
    QTRY_VERIFY_WITH_TIMEOUT(allPicturesAreAnswered(window), limit);
    QVERIFY(session.turnsOn());
    expectRestOfThePage(window, -1);
    QCOMPARE(columns(window), 0);
    QVERIFY(window.ui->serverButtonsGroup->layout() != nullptr);
    QCOMPARE(ScratchFolder::tree(),
             sorted(NewsWorld::cacheFiles() << QStringLiteral("offline.txt")));
}

void TestBadInput::everyPictureCanFail_data()
{
    QTest::addColumn<int>("number");
    QTest::addColumn<int>("fault");
    const QPair<const char *, Fault> faults[] = {
        {"is not found", Fault::NotFound},
        {"meets a server out of order", Fault::ServerErrorWithPage},
    };
    for (int number = 0; number < NewsWorld::numItems; ++number) {
        for (const auto &fault : faults) {
            QTest::addRow("the picture of %s %s", itemNumber(number).description, fault.first)
                << number << static_cast<int>(fault.second);
        }
    }
}

void TestBadInput::everyPictureCanFail()
{
    QFETCH(int, number);
    QFETCH(int, fault);
    const NewsWorld::Item &item = itemNumber(number);
    NewsWorld world;
    serveFaulty(world.pictures(item), NewsWorld::path(item), Documents::png(40, 30, item.colour),
                static_cast<Fault>(fault));
    world.publish(world.elements());
    Session session;
    testform &window = session.window;
    const ConsoleCapture console;
    QVERIFY(session.show());
    QTRY_VERIFY_WITH_TIMEOUT(window.ui->labelConnecting->isHidden(), limit);
    QTRY_VERIFY_WITH_TIMEOUT(allPicturesAreAnswered(window), limit);
    QVERIFY(session.turnsOn());
    expectRestOfThePage(window, number);
    QCOMPARE(world.pictures(item).requests(NewsWorld::path(item)), 1);
    QCOMPARE(ScratchFolder::tree(),
             sorted(NewsWorld::cacheFiles() << QStringLiteral("offline.txt")));
}

void TestBadInput::pictureFault_data()
{
    addFaultRows({{"the picture moved", Fault::Redirect},
                  {"the picture is empty", Fault::Empty},
                  {"the picture is a text", Fault::Text},
                  {"the picture is a page with an error status", Fault::NotFoundWithPage},
                  {"the picture is NUL bytes", Fault::NulBytes},
                  {"the server sends half of the picture", Fault::HalfSent},
                  {"the connection is cut", Fault::ConnectionCut},
                  {"nobody listens for the picture", Fault::Refused}});
}

void TestBadInput::pictureFault()
{
    QFETCH(int, fault);
    const int number = 3;
    const NewsWorld::Item &item = itemNumber(number);
    // An older picture of it does not come back.
    ScratchFolder::write(NewsWorld::cacheFile(item), Documents::png(40, 30, item.colour));
    NewsWorld world;
    serveFaulty(world.tiles, NewsWorld::path(item), Documents::png(40, 30, item.colour),
                static_cast<Fault>(fault));
    QStringList elements = world.elements();
    if (static_cast<Fault>(fault) == Fault::Refused) {
        elements[number] = Documents::news(
            QStringLiteral("news"), NewsWorld::titleOf(item), NewsWorld::subtitleOf(item),
            QLatin1String(TestSettings::nobodyListens) + NewsWorld::path(item));
    }
    world.publish(elements);
    Session session;
    testform &window = session.window;
    const ConsoleCapture console;
    QVERIFY(session.show());
    QTRY_VERIFY_WITH_TIMEOUT(window.ui->labelConnecting->isHidden(), limit);
    QTRY_VERIFY_WITH_TIMEOUT(allPicturesAreAnswered(window), limit);
    QVERIFY(session.turnsOn());
    expectRestOfThePage(window, number);
    QCOMPARE(world.tiles.requests(QStringLiteral("target")), 0);
    QCOMPARE(ScratchFolder::tree(),
             sorted(NewsWorld::cacheFiles() << QStringLiteral("offline.txt")));
}

void TestBadInput::allPicturesFail()
{
    NewsWorld world;
    for (const NewsWorld::Item &item : NewsWorld::items) {
        serveFaulty(world.pictures(item), NewsWorld::path(item), {}, Fault::Text);
    }
    world.publish(twoClients() + world.elements());
    Session session;
    testform &window = session.window;
    ConsoleCapture console;
    QVERIFY(session.show());
    QTRY_VERIFY_WITH_TIMEOUT(window.ui->labelConnecting->isHidden(), limit);
    QTRY_VERIFY_WITH_TIMEOUT(allPicturesAreAnswered(window), limit);
    QVERIFY(session.turnsOn());
    for (const NewsWorld::Item &item : NewsWorld::items) {
        QCOMPARE(labelOf(window, item.title)->text(), NewsWorld::titleOf(item));
        QVERIFY(pictureOf(window, item).isNull());
    }
    QCOMPARE(columns(window), 2);
    QCOMPARE(console.err(), QByteArray());
    QCOMPARE(MessageLog::containing(QStringLiteral("QPixmap")), QStringList());
    QCOMPARE(MessageLog::containing(QStringLiteral("QImage")), QStringList());
}

void TestBadInput::pictureOfAnotherScheme_data()
{
    QTest::addColumn<QString>("address");
    QTest::newRow("an address without a scheme") << QStringLiteral("picture.png");
    QTest::newRow("an unknown scheme") << QStringLiteral("gopher://127.0.0.1/picture.png");
    QTest::newRow("an address that cannot be read") << QStringLiteral("http://[::1/picture.png");
    QTest::newRow("a missing local file") << QStringLiteral("file:///no/such/picture.png");
    QTest::newRow("nothing") << QString();
}

void TestBadInput::pictureOfAnotherScheme()
{
    QFETCH(QString, address);
    NewsWorld world;
    QStringList elements = world.elements();
    const int number = 5;
    const NewsWorld::Item &item = itemNumber(number);
    elements[number] = Documents::news(QStringLiteral("news"), NewsWorld::titleOf(item),
                                       NewsWorld::subtitleOf(item), address);
    world.publish(elements);
    Session session;
    testform &window = session.window;
    const ConsoleCapture console;
    QVERIFY(session.show());
    QTRY_VERIFY_WITH_TIMEOUT(window.ui->labelConnecting->isHidden(), limit);
    QTRY_VERIFY_WITH_TIMEOUT(allPicturesAreAnswered(window), limit);
    QVERIFY(session.turnsOn());
    expectRestOfThePage(window, number);
}

void TestBadInput::everyLogoCanFail_data()
{
    QTest::addColumn<QString>("failing");
    QTest::addColumn<QString>("other");
    QTest::addColumn<int>("fault");
    QTest::newRow("the first logo is not found")
        << alpha << omega << static_cast<int>(Fault::NotFound);
    QTest::newRow("the second logo is not found")
        << omega << alpha << static_cast<int>(Fault::NotFound);
    QTest::newRow("the first logo meets a server out of order")
        << alpha << omega << static_cast<int>(Fault::ServerErrorWithPage);
    QTest::newRow("the second logo meets a server out of order")
        << omega << alpha << static_cast<int>(Fault::ServerErrorWithPage);
}

void TestBadInput::everyLogoCanFail()
{
    QFETCH(QString, failing);
    QFETCH(QString, other);
    QFETCH(int, fault);
    NewsWorld world;
    const QByteArray logo = Documents::png(40, 30, 0xff305080);
    world.base.serve(logoPath(other), logo);
    serveFaulty(world.base, logoPath(failing), logo, static_cast<Fault>(fault));
    world.publish(twoClients() + world.elements());
    Session session;
    testform &window = session.window;
    const ConsoleCapture console;
    QVERIFY(session.show());
    QTRY_VERIFY_WITH_TIMEOUT(window.ui->labelConnecting->isHidden(), limit);
    QTRY_VERIFY_WITH_TIMEOUT(allPicturesAreAnswered(window), limit);
    QVERIFY(session.turnsOn());

    expectRestOfThePage(window, -1);
    QCOMPARE(columns(window), 2);
    QVERIFY(!hasLogo(window, failing));
    QVERIFY(hasLogo(window, other));
    QVERIFY(window.serverButtons.value(failing)->getButton()->isFlat());
    QCOMPARE(ScratchFolder::read(logoPath(failing)), QByteArray());
    QCOMPARE(ScratchFolder::read(logoPath(other)), logo);
    QCOMPARE(ScratchFolder::tree(),
             sorted(NewsWorld::cacheFiles()
                    << logoPath(alpha) << logoPath(omega) << QStringLiteral("offline.txt")));
}

void TestBadInput::logoFault_data()
{
    addFaultRows({{"it moved", Fault::Redirect},
                  {"it is empty", Fault::Empty},
                  {"it is a text", Fault::Text},
                  {"it is NUL bytes", Fault::NulBytes},
                  {"the server sends half of it", Fault::HalfSent},
                  {"the connection is cut", Fault::ConnectionCut}});
}

// The server can still be chosen; an older logo on the disk is not shown instead.
void TestBadInput::logoFault()
{
    QFETCH(int, fault);
    NewsWorld world;
    const QByteArray logo = Documents::png(40, 30, 0xff305080);
    ScratchFolder::write(logoPath(alpha), logo);
    serveFaulty(world.base, logoPath(alpha), logo, static_cast<Fault>(fault));
    world.publish(twoClients().mid(0, 1));
    Session session;
    testform &window = session.window;
    const ConsoleCapture console;
    QVERIFY(session.show());
    QTRY_VERIFY_WITH_TIMEOUT(window.ui->labelConnecting->isHidden(), limit);
    QTRY_VERIFY_WITH_TIMEOUT(allPicturesAreAnswered(window), limit);
    QVERIFY(session.turnsOn());
    QCOMPARE(columns(window), 1);
    QVERIFY(!hasLogo(window, alpha));
    QCOMPARE(world.base.requests(QStringLiteral("target")), 0);
    QCOMPARE(ScratchFolder::read(logoPath(alpha)), QByteArray());

    QPushButton *official = nullptr;
    const auto buttons = window.ui->serverButtonsGroup->findChildren<QPushButton *>();
    for (QPushButton *button : buttons) {
        if (button->styleSheet().contains(QStringLiteral("official.png"))) {
            official = button;
        }
    }
    QVERIFY(official != nullptr);
    window.ui->labelServer->setPixmap(QPixmap(10, 10));
    QCOMPARE(WindowDriver::click(window, *official), QString());
    QVERIFY(!window.ui->serverButtonsGroup->isVisible());
    QCOMPARE(window.ui->labelClient->text(), QStringLiteral("OFFICIAL"));
    QVERIFY(window.ui->labelServer->pixmap(Qt::ReturnByValue).isNull());
}

void TestBadInput::logoNamesThatLeadOut_data()
{
    QTest::addColumn<QString>("server");
    QTest::newRow("the folder above") << QStringLiteral("../precious");
    QTest::newRow("an absolute path") << QStringLiteral("%1/precious");
}

void TestBadInput::logoNamesThatLeadOut()
{
    QFETCH(QString, server);
    server.replace(QStringLiteral("%1"), m_folder->outside());
    NewsWorld world;
    // Every path that the server may see for this name.
    for (const QString &path : {QStringLiteral("precious"), server, server.mid(1)}) {
        world.base.serve(logoPath(path), Documents::png(40, 30, 0xff305080));
    }
    world.publish({Documents::client(server, QStringLiteral("Official"), QStringLiteral("1.0"))});
    Session session;
    testform &window = session.window;
    const ConsoleCapture console;
    QVERIFY(session.show());
    QTRY_VERIFY_WITH_TIMEOUT(window.ui->labelConnecting->isHidden(), limit);
    QTRY_VERIFY_WITH_TIMEOUT(allPicturesAreAnswered(window), limit);
    QVERIFY(session.turnsOn());
    // The logo is shown, it is only not kept.
    QCOMPARE(columns(window), 1);
    QVERIFY(hasLogo(window, server));
    QCOMPARE(ScratchFolder::tree(),
             sorted(NewsWorld::cacheFiles() << QStringLiteral("offline.txt")));
}

// The other tests' yardstick: with nothing wrong all of it is there.
void TestBadInput::wholeWorldIsShown()
{
    NewsWorld world;
    for (const QString &server : {alpha, omega}) {
        world.base.serve(logoPath(server), Documents::png(40, 30, 0xff305080));
    }
    world.publish(twoClients() + world.elements());
    Session session;
    testform &window = session.window;
    ConsoleCapture console;
    QVERIFY(session.show());
    QTRY_VERIFY_WITH_TIMEOUT(window.ui->labelConnecting->isHidden(), limit);
    QTRY_VERIFY_WITH_TIMEOUT(allPicturesAreAnswered(window), limit);
    expectRestOfThePage(window, -1);
    QCOMPARE(columns(window), 2);
    QVERIFY(hasLogo(window, alpha));
    QVERIFY(hasLogo(window, omega));
    QCOMPARE(console.err(), QByteArray());
}

void TestBadInput::windowGoesWhileSomethingIsHeld_data()
{
    QTest::addColumn<QStringList>("held");
    QTest::addColumn<int>("bytes");
    const QString slide = NewsWorld::path(itemNumber(0));
    const QString tile = NewsWorld::path(itemNumber(8));
    QTest::newRow("the document, before its first byte")
        << QStringList{NewsWorld::documentPath()} << 0;
    QTest::newRow("the document, half-way") << QStringList{NewsWorld::documentPath()} << 100;
    QTest::newRow("a slide's picture, before its first byte") << QStringList{slide} << 0;
    QTest::newRow("a slide's picture, half-way") << QStringList{slide} << 40;
    QTest::newRow("a tile's picture, half-way") << QStringList{tile} << 40;
    QTest::newRow("a logo, before its first byte") << QStringList{logoPath(alpha)} << 0;
    QTest::newRow("a logo, half-way") << QStringList{logoPath(alpha)} << 40;
    QTest::newRow("pictures and logos, half-way")
        << QStringList{slide, tile, logoPath(alpha), logoPath(omega)} << 40;
}

void TestBadInput::windowGoesWhileSomethingIsHeld()
{
    QFETCH(QStringList, held);
    QFETCH(int, bytes);
    NewsWorld world;
    const QByteArray logo = Documents::png(40, 30, 0xff305080);
    world.base.serve(logoPath(alpha), logo);
    world.base.serve(logoPath(omega), logo);
    const QByteArray document = Documents::launcher(twoClients() + world.elements());
    world.base.serve(NewsWorld::documentPath(), document);
    QStringList missing;
    HttpServer *const servers[] = {&world.base, &world.slides, &world.tiles};
    const auto serverOf = [&](const QString &path) -> HttpServer & {
        return *servers[path == NewsWorld::path(itemNumber(0))   ? 1
                        : path == NewsWorld::path(itemNumber(8)) ? 2
                                                                 : 0];
    };
    for (const QString &path : held) {
        const bool isDocument = path == NewsWorld::documentPath();
        serverOf(path).serveHeld(path, isDocument ? document : logo, bytes);
        missing << QString(path).replace(QStringLiteral(".bin"), QStringLiteral(".png"));
    }
    QStringList expected = NewsWorld::cacheFiles()
                           << logoPath(alpha) << logoPath(omega) << QStringLiteral("offline.txt");
    if (held.contains(NewsWorld::documentPath())) {
        expected.clear();
    }
    for (const QString &name : missing) {
        expected.removeAll(name);
    }
    {
        Session session;
        const ConsoleCapture console;
        QVERIFY(session.show());
        for (const QString &path : held) {
            QTRY_COMPARE_WITH_TIMEOUT(serverOf(path).requests(path), 1, limit);
        }
        // Everything else has arrived and was written.
        QTRY_VERIFY_WITH_TIMEOUT(QThreadPool::globalInstance()->waitForDone(limit) &&
                                     ScratchFolder::tree() == sorted(expected),
                                 limit);
        QVERIFY(session.turnsOn());
    }
    for (const QString &path : held) {
        serverOf(path).release(path);
    }
    // Another whole fetch gives the abandoned answers time to do harm.
    const HttpServer other;
    FileDownloader later(QUrl(other.url(QStringLiteral("later"))));
    QSignalSpy downloaded(&later, &FileDownloader::downloaded);
    QVERIFY(downloaded.wait(limit));
    QVERIFY(QThreadPool::globalInstance()->waitForDone(limit));
    QCOMPARE(ScratchFolder::tree(), sorted(expected));
}

QTEST_MAIN(TestBadInput)
#include "tst_badinput.moc"
