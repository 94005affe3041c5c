#include "fetch/filedownloader.h"
#include "fetch/imagedownloader.h"
#include "news/news.h"
#include "support/consolecapture.h"
#include "support/documents.h"
#include "support/httpserver.h"
#include "support/messagelog.h"
#include "support/scratchfolder.h"

#include <QChildEvent>
#include <QLabel>
#include <QPixmap>
#include <QPointer>
#include <QSignalSpy>
#include <QTest>
#include <QThreadPool>

#include <memory>
#include <stdexcept>
#include <type_traits>

namespace
{
constexpr int limit = 10000; // milliseconds

constexpr QRgb red = 0xffff0000;
constexpr QRgb green = 0xff00ff00;

// The three labels that show an item.
struct Labels {
    Labels()
    {
        image.setObjectName(QStringLiteral("tile"));
        image.resize(40, 30);
        title.setText(QStringLiteral("old title"));
        subtitle.setText(QStringLiteral("old subtitle"));
    }

    void bind(News &item)
    {
        item.imageLabel = &image;
        item.labelTitle = &title;
        item.labelSubtitle = &subtitle;
    }

    QPixmap picture() const { return image.pixmap(Qt::ReturnByValue); }
    QRgb colour() const { return picture().toImage().pixel(20, 15); }

    QLabel image;
    QLabel title;
    QLabel subtitle;
};

// Notes what the title says at the moment a fetch is started.
class FetchWatcher : public QObject
{
    Q_OBJECT

public:
    FetchWatcher(ImageDownloader *downloader, const QLabel &title)
        : m_title(title)
    {
        downloader->installEventFilter(this);
    }

    QStringList titles;

protected:
    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() == QEvent::ChildAdded) {
            titles << m_title.text();
        }
        return QObject::eventFilter(watched, event);
    }

private:
    const QLabel &m_title;
};

bool pictureArrives(const News &item)
{
    QSignalSpy loaded(item.imageDownloader, &ImageDownloader::loadedImage);
    return loaded.wait(limit) && QThreadPool::globalInstance()->waitForDone(limit);
}
} // namespace

// One slide or tile, bound to labels of its own.
class TestNews : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void emptyItem();
    void itemWithTexts();
    void itemWithLabels();
    void itemWithLabelsNeedsAPictureLabel();
    void copiesShareDownloaderAndLabels();
    void copyMadeBeforeLoadingGetsItsOwnDownloader();

    void loadsFromTheNetwork_data();
    void loadsFromTheNetwork();
    void loadsFromTheBuffer();
    void bufferWithoutACacheFile();
    void networkAfterBufferFetchesAndOverwrites();
    void secondLoadOnlyRescales();
    void textsChangeAfterTheFetchWasStarted();
    void textsChangeAfterTheBufferWasShown();
    void textsAreShownAsTheyAre_data();
    void textsAreShownAsTheyAre();

    void withoutAPictureLabel_data();
    void withoutAPictureLabel();
    void recoversWhenThePictureLabelIsSet();

    void originalOfAnItemThatNeverLoaded();
    void originalIsTheDownloaders();
    void toStringJoinsTheFourTexts_data();
    void toStringJoinsTheFourTexts();
    void bufferSwitchOfTheItemIsNotRead();
    void emptyOperationsReturnNothing();
    void downloaderGoesWithItsLabel();

private:
    QString url(QRgb colour)
    {
        m_server->serve(QStringLiteral("picture"), Documents::png(8, 6, colour));
        return m_server->url(QStringLiteral("picture"));
    }
    int requests() const { return m_server->requests(QStringLiteral("picture")); }

    std::unique_ptr<ScratchFolder> m_folder;
    std::unique_ptr<HttpServer> m_server;
};

void TestNews::init()
{
    m_folder = std::make_unique<ScratchFolder>();
    m_server = std::make_unique<HttpServer>();
}

void TestNews::cleanup()
{
    m_server.reset();
    m_folder.reset();
}

void TestNews::emptyItem()
{
    const News item;
    QCOMPARE(item.title, QString());
    QCOMPARE(item.description, QString());
    QCOMPARE(item.imageUrl, QString());
    QCOMPARE(item.newsUrl, QString());
    QCOMPARE(item.imageLabel, nullptr);
    QCOMPARE(item.labelTitle, nullptr);
    QCOMPARE(item.labelSubtitle, nullptr);
    QCOMPARE(item.fullyInitialized, false);
}

void TestNews::itemWithTexts()
{
    const News item(QStringLiteral("t"), QStringLiteral("d"), QStringLiteral("i"));
    QCOMPARE(item.title, QStringLiteral("t"));
    QCOMPARE(item.description, QStringLiteral("d"));
    QCOMPARE(item.imageUrl, QStringLiteral("i"));
    QCOMPARE(item.newsUrl, QString());
    QCOMPARE(item.imageLabel, nullptr);
    QCOMPARE(item.fullyInitialized, false);
}

void TestNews::itemWithLabels()
{
    Labels labels;
    const News item(QStringLiteral("t"), QStringLiteral("d"), url(red), QStringLiteral("n"),
                    &labels.image, &labels.title, &labels.subtitle);
    QCOMPARE(item.title, QStringLiteral("t"));
    QCOMPARE(item.description, QStringLiteral("d"));
    QCOMPARE(item.imageUrl, m_server->url(QStringLiteral("picture")));
    QCOMPARE(item.newsUrl, QStringLiteral("n"));
    QCOMPARE(item.imageLabel, &labels.image);
    QCOMPARE(item.labelTitle, &labels.title);
    QCOMPARE(item.labelSubtitle, &labels.subtitle);
    QCOMPARE(item.fullyInitialized, true);
    QCOMPARE(item.imageDownloader->url, QUrl(item.imageUrl));
    QCOMPARE(item.imageDownloader->label, &labels.image);
    QCOMPARE(item.imageDownloader->objectName, QStringLiteral("tile"));
    // Made, but nothing was asked for or shown.
    QCOMPARE(item.imageDownloader->fd, nullptr);
    QCOMPARE(labels.title.text(), QStringLiteral("old title"));
}

void TestNews::itemWithLabelsNeedsAPictureLabel()
{
    Labels labels;
    QVERIFY_EXCEPTION_THROWN(News({}, {}, {}, {}, nullptr, &labels.title, &labels.subtitle),
                             std::invalid_argument);
}

void TestNews::copiesShareDownloaderAndLabels()
{
    Labels labels;
    News item(QStringLiteral("t"), QStringLiteral("d"), url(red), {}, &labels.image, &labels.title,
              &labels.subtitle);
    News copy = item;
    QCOMPARE(copy.imageDownloader, item.imageDownloader);
    copy.title = QStringLiteral("the copy's");
    QCOMPARE(item.title, QStringLiteral("t"));
    copy.loadNews();
    QCOMPARE(labels.title.text(), QStringLiteral("the copy's"));
    QVERIFY(pictureArrives(item));
    QVERIFY(item.getOriginalPixmap() != nullptr);
    QCOMPARE(copy.getOriginalPixmap(), item.getOriginalPixmap());
    // What the copy has fetched, the item need not fetch.
    item.loadNews();
    QCOMPARE(item.imageDownloader->findChildren<FileDownloader *>().size(), 1);
    QCOMPARE(requests(), 1);
}

void TestNews::copyMadeBeforeLoadingGetsItsOwnDownloader()
{
    Labels labels;
    News item({}, {}, url(red));
    labels.bind(item);
    News copy = item;
    item.loadNews();
    QCOMPARE(copy.fullyInitialized, false);
    copy.loadNews();
    QVERIFY(copy.imageDownloader != item.imageDownloader);
}

void TestNews::loadsFromTheNetwork_data()
{
    QTest::addColumn<bool>("isDefault");
    QTest::newRow("when told so") << false;
    QTest::newRow("when told nothing") << true;
}

void TestNews::loadsFromTheNetwork()
{
    QFETCH(bool, isDefault);
    ScratchFolder::write(QStringLiteral("tile.png"), Documents::png(8, 6, green));
    Labels labels;
    News item(QStringLiteral("new title"), QStringLiteral("new subtitle"), url(red));
    labels.bind(item);
    if (isDefault) {
        item.loadNews();
    } else {
        item.loadNews(false);
    }
    QCOMPARE(item.fullyInitialized, true);
    QCOMPARE(labels.title.text(), QStringLiteral("new title"));
    QCOMPARE(labels.subtitle.text(), QStringLiteral("new subtitle"));
    QVERIFY(labels.picture().isNull());
    QVERIFY(pictureArrives(item));
    QCOMPARE(labels.picture().size(), QSize(40, 30));
    QCOMPARE(labels.colour(), red);
    QCOMPARE(ScratchFolder::read(QStringLiteral("tile.png")), Documents::png(8, 6, red));
    QCOMPARE(requests(), 1);
}

void TestNews::loadsFromTheBuffer()
{
    ScratchFolder::write(QStringLiteral("tile.png"), Documents::png(8, 6, green));
    Labels labels;
    News item(QStringLiteral("new title"), QStringLiteral("new subtitle"), url(red));
    labels.bind(item);
    item.loadNews(true);
    QCOMPARE(item.fullyInitialized, true);
    QCOMPARE(labels.picture().size(), QSize(40, 30));
    QCOMPARE(labels.colour(), green);
    QCOMPARE(labels.title.text(), QStringLiteral("new title"));
    QCOMPARE(labels.subtitle.text(), QStringLiteral("new subtitle"));
    QCOMPARE(item.imageDownloader->isDownloaded, false);
    QCOMPARE(item.imageDownloader->fd, nullptr);
}

void TestNews::bufferWithoutACacheFile()
{
    Labels labels;
    const QString placeholder =
        QStringLiteral("border-image: url(:/images/newsBig.png) 0 0 0 0 stretch stretch;");
    labels.image.setStyleSheet(placeholder);
    const QImage before = labels.image.grab().toImage();
    News item(QStringLiteral("new title"), QStringLiteral("new subtitle"), url(red), {},
              &labels.image, &labels.title, &labels.subtitle);
    QSignalSpy loaded(item.imageDownloader, &ImageDownloader::loadedImage);
    item.loadNews(true);
    QCOMPARE(loaded.count(), 0);
    QCOMPARE(item.imageDownloader->fd, nullptr);
    QCOMPARE(labels.image.styleSheet(), placeholder);
    QCOMPARE(labels.image.grab().toImage(), before);
    QCOMPARE(labels.title.text(), QStringLiteral("new title"));
    QCOMPARE(labels.subtitle.text(), QStringLiteral("new subtitle"));
    QCOMPARE(ScratchFolder::tree(), QStringList());
}

void TestNews::networkAfterBufferFetchesAndOverwrites()
{
    ScratchFolder::write(QStringLiteral("tile.png"), Documents::png(8, 6, green));
    Labels labels;
    News item({}, {}, url(red));
    labels.bind(item);
    item.loadNews(true);
    QCOMPARE(labels.colour(), green);
    item.loadNews(false);
    // The cached picture stands until the new one is there.
    QCOMPARE(labels.colour(), green);
    QVERIFY(pictureArrives(item));
    QCOMPARE(labels.colour(), red);
    QCOMPARE(ScratchFolder::read(QStringLiteral("tile.png")), Documents::png(8, 6, red));
    QCOMPARE(requests(), 1);
}

void TestNews::secondLoadOnlyRescales()
{
    Labels labels;
    News item(QStringLiteral("first"), {}, url(red));
    labels.bind(item);
    item.loadNews(false);
    QVERIFY(pictureArrives(item));

    QSignalSpy loaded(item.imageDownloader, &ImageDownloader::loadedImage);
    const FileDownloader *const fetch = item.imageDownloader->fd;
    labels.image.resize(77, 55);
    item.title = QStringLiteral("second");
    item.loadNews(false);
    QCOMPARE(labels.picture().size(), QSize(77, 55));
    QCOMPARE(labels.colour(), red);
    QCOMPARE(labels.title.text(), QStringLiteral("second"));
    QCOMPARE(item.imageDownloader->fd, fetch);
    QCOMPARE(loaded.count(), 0);
    QCOMPARE(requests(), 1);
}

void TestNews::textsChangeAfterTheFetchWasStarted()
{
    Labels labels;
    News item(QStringLiteral("new title"), {}, url(red), {}, &labels.image, &labels.title,
              &labels.subtitle);
    const FetchWatcher watcher(item.imageDownloader, labels.title);
    item.loadNews(false);
    QCOMPARE(watcher.titles, QStringList{QStringLiteral("old title")});
    QCOMPARE(labels.title.text(), QStringLiteral("new title"));
}

void TestNews::textsChangeAfterTheBufferWasShown()
{
    ScratchFolder::write(QStringLiteral("tile.png"), Documents::png(8, 6, green));
    Labels labels;
    News item(QStringLiteral("new title"), QStringLiteral("new subtitle"), {}, {}, &labels.image,
              &labels.title, &labels.subtitle);
    QStringList seen;
    connect(item.imageDownloader, &ImageDownloader::loadedImage, this,
            [&] { seen << labels.title.text() << labels.subtitle.text(); });
    item.loadNews(true);
    QCOMPARE(seen, (QStringList{QStringLiteral("old title"), QStringLiteral("old subtitle")}));
    QCOMPARE(labels.title.text(), QStringLiteral("new title"));
}

void TestNews::textsAreShownAsTheyAre_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("an empty text") << QString();
    QTest::newRow("blanks at both ends") << QStringLiteral("  fire  ");
    QTest::newRow("markup") << QStringLiteral("<b>fire</b> & smoke");
    QTest::newRow("an ampersand before a letter") << QStringLiteral("&Fire");
    QTest::newRow("two lines") << QStringLiteral("fire\nsmoke");
    QTest::newRow("letters beyond Latin-1")
        << QString::fromUtf8("\xD0\xBE\xD0\xB3\xD0\xBE\xD0\xBD\xD1\x8C");
    QTest::newRow("a leading question mark") << QStringLiteral("?fire");
}

void TestNews::textsAreShownAsTheyAre()
{
    QFETCH(QString, text);
    Labels labels;
    News item(text, text + QLatin1Char('2'), {});
    labels.bind(item);
    item.loadNews(true);
    QCOMPARE(labels.title.text(), text);
    QCOMPARE(labels.subtitle.text(), text + QLatin1Char('2'));
    QCOMPARE(labels.title.textFormat(), Qt::AutoText);
    QCOMPARE(labels.title.buddy(), nullptr);
}

void TestNews::withoutAPictureLabel_data()
{
    QTest::addColumn<bool>("isBuffer");
    QTest::newRow("from the network") << false;
    QTest::newRow("from the buffer") << true;
}

void TestNews::withoutAPictureLabel()
{
    QFETCH(bool, isBuffer);
    Labels labels;
    News item(QStringLiteral("new title"), QStringLiteral("new subtitle"), url(red));
    item.labelTitle = &labels.title;
    item.labelSubtitle = &labels.subtitle;
    ConsoleCapture console;
    const MessageLog log;
    item.loadNews(isBuffer);
    QCOMPARE(console.err(), QByteArray("ERROR: News: variables aren't complete\n"));
    QCOMPARE(console.out(), QByteArray());
    QCOMPARE(MessageLog::messages(), QStringList());
    QCOMPARE(labels.title.text(), QStringLiteral("old title"));
    QCOMPARE(labels.subtitle.text(), QStringLiteral("old subtitle"));
    QCOMPARE(item.fullyInitialized, false);
    QCOMPARE(item.getOriginalPixmap(), nullptr);
}

void TestNews::recoversWhenThePictureLabelIsSet()
{
    Labels labels;
    News item(QStringLiteral("new title"), {}, url(red));
    {
        ConsoleCapture console;
        item.loadNews(); // has no label at all
        item.loadNews();
        QCOMPARE(console.err().count("ERROR: News: variables aren't complete\n"), 2);
    }
    labels.bind(item);
    item.loadNews();
    QCOMPARE(labels.title.text(), QStringLiteral("new title"));
    QVERIFY(pictureArrives(item));
    QCOMPARE(labels.colour(), red);
}

void TestNews::originalOfAnItemThatNeverLoaded()
{
    Labels labels;
    QCOMPARE(News().getOriginalPixmap(), nullptr);
    const News item({}, {}, url(red), {}, &labels.image, &labels.title, &labels.subtitle);
    QCOMPARE(item.getOriginalPixmap(), nullptr);
}

void TestNews::originalIsTheDownloaders()
{
    Labels labels;
    News item({}, {}, url(red));
    labels.bind(item);
    item.loadNews();
    QCOMPARE(item.getOriginalPixmap(), nullptr);
    QVERIFY(pictureArrives(item));
    QVERIFY(item.getOriginalPixmap() != nullptr);
    QCOMPARE(item.getOriginalPixmap(), item.imageDownloader->getOriginalPixmap());
    QCOMPARE(item.getOriginalPixmap()->size(), QSize(8, 6));
}

void TestNews::toStringJoinsTheFourTexts_data()
{
    QTest::addColumn<QStringList>("texts");
    QTest::addColumn<QString>("joined");
    QTest::newRow("four texts") << QStringList{QStringLiteral("t"), QStringLiteral("d"),
                                               QStringLiteral("i"), QStringLiteral("n")}
                                << QStringLiteral("t, d, i, n");
    QTest::newRow("four empty texts")
        << QStringList{QString(), QString(), QString(), QString()} << QStringLiteral(", , , ");
    QTest::newRow("texts that hold place marks and commas")
        << QStringList{QStringLiteral("%2"), QStringLiteral("%1, x"), QString(),
                       QStringLiteral("n")}
        << QStringLiteral("%2, %1, x, , n");
}

void TestNews::toStringJoinsTheFourTexts()
{
    QFETCH(QStringList, texts);
    QFETCH(QString, joined);
    News item(texts[0], texts[1], texts[2]);
    item.newsUrl = texts[3];
    QCOMPARE(item.toString(), joined);
}

void TestNews::bufferSwitchOfTheItemIsNotRead()
{
    ScratchFolder::write(QStringLiteral("tile.png"), Documents::png(8, 6, green));
    Labels labels;
    News item({}, {}, {}, {}, &labels.image, &labels.title, &labels.subtitle);
    item.setEnableLoadBuffer(true);
    QCOMPARE(item.enableLoadBuffer, true);
    item.setEnableLoadBuffer(false);
    QCOMPARE(item.enableLoadBuffer, false);
    QCOMPARE(item.imageDownloader->getEnableLoadBuffer(), true);
    item.loadNews(true);
    QCOMPARE(labels.colour(), green);

    // The downloader's own switch is the one that counts.
    labels.image.clear();
    item.setEnableLoadBuffer(true);
    item.imageDownloader->setEnableLoadBuffer(false);
    item.loadNews(true);
    QVERIFY(labels.picture().isNull());
}

void TestNews::emptyOperationsReturnNothing()
{
    const News item;
    static_assert(std::is_void_v<decltype(item.getEnableLoadBuffer())>);
    static_assert(std::is_void_v<decltype(item.isDownloaded())>);
    item.getEnableLoadBuffer();
    item.isDownloaded();
    QCOMPARE(item.enableLoadBuffer, false);
    QCOMPARE(item.fullyInitialized, false);
}

void TestNews::downloaderGoesWithItsLabel()
{
    m_server->serveHeld(QStringLiteral("held"), Documents::png(8, 6, red), 20);
    QPointer<ImageDownloader> downloader;
    {
        Labels labels;
        News item({}, {}, m_server->url(QStringLiteral("held")));
        labels.bind(item);
        item.loadNews();
        downloader = item.imageDownloader;
        QTRY_COMPARE_WITH_TIMEOUT(m_server->requests(QStringLiteral("held")), 1, limit);
    }
    QVERIFY(downloader.isNull());
}

QTEST_MAIN(TestNews)
#include "tst_news.moc"
