#include "fetch/filedownloader.h"
#include "install/downloadmanager.h"
#include "installworld.h"
#include "support/arrivedpictures.h"
#include "support/holdings.h"
#include "support/relation.h"
#include "support/testsettings.h"
#include "support/texts.h"

#include <QAbstractEventDispatcher>
#include <QApplication>
#include <QDir>
#include <QEventLoop>
#include <QFileInfo>
#include <QLayout>
#include <QProcess>
#include <QPushButton>
#include <QRandomGenerator>
#include <QThreadPool>
#include <QTimer>

#include <ctime>
#include <typeinfo>

namespace
{
constexpr int archiveSize = 1024 * 1024;

constexpr int selections = 1000;
constexpr int firstSelections = 50; // until every picture and every font was used once
// A kept text of a few letters for each selection would be more.
constexpr qint64 selectionsMayKeep = 16 * 1024; // bytes, all of them together

constexpr int downloads = 200;
constexpr int firstDownloads = 10;
// What a kept manager and its process object cost, with all that the toolkit puts behind them, and
// no more: the archive is thirty times that.
constexpr qint64 downloadMayKeep = 32 * 1024; // bytes, each

using Texts::text;

// Two servers of two kinds each, with logos, and all nine news with their pictures. The remembered
// choice is Alpha's official client, whose archive is as large as what is in it.
class FullWorld : public InstallWorld
{
public:
    FullWorld()
    {
        offer(text("Official"), version);
        QStringList elements;
        for (const char *name : {"Alpha", "Bravo"}) {
            server.serve(text(name) + text(".png"), Documents::png(320, 150, 0xFF00FF00));
            for (const char *kind : {"Official", "Beta"}) {
                elements << Documents::client(text(name), text(kind), version, server.url(archive));
            }
        }
        server.serve(text("news.png"), Documents::png(400, 300, 0xFF0000FF));
        for (const char *element :
             {"homenews", "homenews", "homenews", "news", "news", "news", "news", "news", "news"}) {
            elements << Documents::news(text(element), text("A title"), text("A text"),
                                        server.url(text("news.png")));
        }
        server.serve(text("launcher.xml"), Documents::launcher(elements));

        QVector<quint32> game(archiveSize / int(sizeof(quint32)));
        QRandomGenerator random(1);
        random.fillRange(game.data(), game.size());
        server.serve(archive,
                     Archives::zip(
                         {{text("game.exe"),
                           QByteArray(reinterpret_cast<const char *>(game.data()), archiveSize)}}));
        Archives::provideExtractor();
    }

    // Starts the launcher and waits until nothing is on its way any more.
    bool startAndSettle()
    {
        return start() && QTest::qWaitFor([this] { return everythingArrived(); }, 30000) &&
               restPool();
    }

    // Without the threads of the toolkit's pool, which end by themselves, but only after half a
    // minute.
    static bool restPool() { return QThreadPool::globalInstance()->waitForDone(30000); }

    // The panel's buttons that choose a client, column by column.
    QList<QPushButton *> choices() const
    {
        QList<QPushButton *> buttons;
        const QLayout *row = window->ui->serverButtonsGroup->layout();
        for (int i = 0; row != nullptr && i < row->count(); ++i) {
            const QLayout *column = row->itemAt(i)->widget()->layout();
            for (int place = 1; place < column->count(); ++place) {
                buttons << qobject_cast<QPushButton *>(column->itemAt(place)->widget());
            }
        }
        return buttons;
    }

    // Opens the panel and clicks there. Tells why that cannot be.
    QString choose(QPushButton &choice) const
    {
        const QString problem = WindowDriver::click(*window, text("btnSelectServer"));
        return problem.isEmpty() ? WindowDriver::click(*window, choice) : problem;
    }

    // One download of the client as if it had never been there, from the click to the end. Returns
    // what the player reads then, or why it came to nothing.
    QString download()
    {
        QDir(gameFolder()).removeRecursively();
        chooseAgain();
        const QString problem = WindowDriver::click(*window, text("btnDownload"));
        if (!problem.isEmpty()) {
            return problem;
        }
        return waitForTheEnd() ? progressText() : text("no end");
    }

    bool gameIsThere() const
    {
        return QFileInfo(gameFolder() + text("/game.exe")).size() == archiveSize;
    }

    int objects() const { return window->findChildren<QObject *>().size(); }

    const QString version = QStringLiteral("2.1");

private:
    QString gameFolder() const { return text("Alpha/Official/") + version; }

    bool everythingArrived() const
    {
        return window->serverButtons.size() == 2 && ArrivedPictures::isComplete(*window);
    }
};

// Watches the event loop for a while in which nothing is to happen.
class Watch : public QObject
{
public:
    // Looks that many milliseconds, with one timer of its own, which wakes the loop once.
    explicit Watch(int milliseconds)
    {
        const qint64 before = processorTime();
        connect(QAbstractEventDispatcher::instance(), &QAbstractEventDispatcher::awake, this,
                [this] { ++awake; });
        connect(&m_end, &QTimer::timeout, &m_loop, &QEventLoop::quit);
        m_end.setSingleShot(true);
        m_end.start(milliseconds);
        qApp->installEventFilter(this);
        m_loop.exec();
        qApp->removeEventFilter(this);
        microseconds = processorTime() - before;
    }

    bool eventFilter(QObject *receiver, QEvent *event) override
    {
        // Not every class has a name of its own in its meta-object.
        const QByteArray kind(typeid(*receiver).name());
        // The toolkit looks every ten seconds whether there is a network, and tells every network
        // manager. From time to time it throws unused pixmaps and fonts away.
        if (kind.contains("QNetworkConfigurationManager") || kind.contains("QPMCache") ||
            kind.contains("QFontCache")) {
            ++eventsOfTheToolkit;
        } else if (receiver != &m_end) {
            events << QStringLiteral("%1 %2: event %3")
                          .arg(QString::fromLatin1(kind), receiver->objectName())
                          .arg(int(event->type()));
        }
        return false;
    }

    QStringList events; // all others that any object of this thread got
    int eventsOfTheToolkit = 0;
    int awake = 0;
    qint64 microseconds = 0; // that this thread had a processor

private:
    static qint64 processorTime()
    {
        timespec time{};
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
        return qint64(time.tv_sec) * 1000000 + time.tv_nsec / 1000;
    }

    QEventLoop m_loop;
    QTimer m_end;
};

// Whose timers run. The network's managers are no one's children.
QStringList runningTimers(const testform &window)
{
    QObjectList objects = qApp->findChildren<QObject *>() + window.findChildren<QObject *>();
    objects << qApp << const_cast<testform *>(&window);
    const auto addNetwork = [&objects](QNetworkAccessManager &manager) {
        objects << &manager << manager.findChildren<QObject *>();
    };
    for (DownloadManager *manager : window.findChildren<DownloadManager *>()) {
        addNetwork(manager->manager);
    }
    for (FileDownloader *fetch : window.findChildren<FileDownloader *>()) {
        addNetwork(fetch->m_WebCtrl);
    }
    QStringList owners;
    for (QObject *object : qAsConst(objects)) {
        const auto timers = QAbstractEventDispatcher::instance()->registeredTimers(object);
        for (const QAbstractEventDispatcher::TimerInfo &timer : timers) {
            owners << QStringLiteral("%1 %2: every %3 ms")
                          .arg(QString::fromLatin1(object->metaObject()->className()),
                               object->objectName())
                          .arg(timer.interval);
        }
    }
    return owners;
}
} // namespace

// A window that stays open beside the game for hours: nothing piles up, and nothing happens in it.
class TestLongLife : public QObject
{
    Q_OBJECT

private slots:
    void selectionsLeaveNothing();
    void downloadsLeaveOneManagerEach();
    void idleWindowSleeps_data();
    void idleWindowSleeps();
};

void TestLongLife::selectionsLeaveNothing()
{
    FullWorld world;
    QVERIFY(world.startAndSettle());
    const QList<QPushButton *> choices = world.choices();
    QCOMPARE(choices.size(), 4);
    int done = 0;
    const auto chooseUntil = [&](int count) {
        QString problem;
        for (; done < count && problem.isEmpty(); ++done) {
            problem = world.choose(*choices[done % choices.size()]);
        }
        return problem;
    };
    QCOMPARE(chooseUntil(firstSelections), QString());
    QVERIFY(FullWorld::restPool());
    const int objects = world.objects();
    const int descriptors = Holdings::descriptors();
    const int threads = Holdings::threads();
    const qint64 heap = Holdings::heap();

    QCOMPARE(chooseUntil(selections), QString());
    QVERIFY(FullWorld::restPool());
    QCOMPARE(world.window->selectedClientInfo.server, text("Bravo"));
    QCOMPARE(world.window->selectedClientInfo.client, text("Beta"));
    const qint64 kept = Holdings::heap() - heap;
    qInfo("%d selections kept %lld bytes; %d objects, %d descriptors", selections - firstSelections,
          static_cast<long long>(kept), objects, descriptors);
    QCOMPARE(world.objects(), objects);
    TRY_VERIFY_RELATION(Holdings::descriptors(), <=, descriptors, 5000);
    TRY_VERIFY_RELATION(Holdings::threads(), <=, threads, 5000);
    VERIFY_RELATION(kept, <, selectionsMayKeep);
}

void TestLongLife::downloadsLeaveOneManagerEach()
{
    FullWorld world;
    QVERIFY(world.startAndSettle());
    const int descriptors = Holdings::descriptors();
    const int threads = Holdings::threads();
    const int objects = world.objects();
    // Wine starts its own services as children of the first program.
    const int children = Holdings::children();
#ifndef Q_OS_WIN
    QCOMPARE(children, 0);
#endif
    qint64 heap = 0;
    for (int done = 1; done <= downloads; ++done) {
        QCOMPARE(world.download(), text("Download finished: version 2.1"));
        QVERIFY(world.gameIsThere());
        QCOMPARE(InstallWorld::archives(), QStringList());
        QCOMPARE(Holdings::children(), children);
        // The manager of the click, and the extractor's process below it.
        QCOMPARE(world.objects(), objects + 2 * done);
        QCOMPARE(world.window->findChildren<DownloadManager *>().size(), done);
        QCOMPARE(world.window->findChildren<QProcess *>().size(), done);
        if (done == firstDownloads) {
            // With the connection the server has let go of its copy of the archive, too.
            QVERIFY(FullWorld::restPool());
            TRY_VERIFY_RELATION(Holdings::descriptors(), <=, descriptors, 5000);
            heap = Holdings::heap();
        }
    }
    QCOMPARE(world.server.requests(world.archive), downloads);
    QVERIFY(FullWorld::restPool());
    TRY_VERIFY_RELATION(Holdings::descriptors(), <=, descriptors, 5000);
    TRY_VERIFY_RELATION(Holdings::threads(), <=, threads, 5000);
    const qint64 kept = (Holdings::heap() - heap) / (downloads - firstDownloads);
    qInfo("a download keeps %lld bytes and 2 objects; descriptors %d before, %d after; "
          "threads %d before, %d after",
          static_cast<long long>(kept), descriptors, Holdings::descriptors(), threads,
          Holdings::threads());
    VERIFY_RELATION(kept, <, downloadMayKeep);
}

void TestLongLife::idleWindowSleeps_data()
{
    QTest::addColumn<QString>("before");
    QTest::newRow("as it starts") << QString();
    QTest::newRow("with the panel open") << text("panel");
    QTest::newRow("on the other tab") << text("tab");
    QTest::newRow("after a download") << text("download");
    QTest::newRow("after a download that failed") << text("refused");
}

void TestLongLife::idleWindowSleeps()
{
    QFETCH(QString, before);
    FullWorld world;
    QVERIFY(world.startAndSettle());
    if (before == text("panel")) {
        QCOMPARE(WindowDriver::click(*world.window, text("btnSelectServer")), QString());
    } else if (before == text("tab")) {
        QCOMPARE(WindowDriver::click(*world.window, text("btnNews_2")), QString());
    } else if (before == text("download")) {
        QCOMPARE(world.download(), text("Download finished: version 2.1"));
    } else if (before == text("refused")) {
        world.window->selectedClientInfo.url = QLatin1String(TestSettings::nobodyListens);
        QCOMPARE(WindowDriver::click(*world.window, text("btnDownload")), QString());
        QVERIFY(world.waitForTheEnd());
        QCOMPARE(world.progressText(), text("Download failed"));
    }
    // The last layouts and paintings of what happened just now.
    bool quiet = false;
    for (int i = 0; i < 50 && !quiet; ++i) {
        quiet = Watch(100).events.isEmpty();
    }

    const Watch watch(1000);
    qInfo("a second took %lld microseconds of the processor; the event loop awoke %d times",
          static_cast<long long>(watch.microseconds), watch.awake);
    QCOMPARE(watch.events.join(text("; ")), QString());
    QCOMPARE(runningTimers(*world.window), QStringList());
#ifdef Q_OS_LINUX
    // The watch's own timer, and turns in which the toolkit finds out that nothing is to be done.
    // On Windows messages of the system that come to nothing are more than that.
    QVERIFY2(watch.awake <= 5 + watch.eventsOfTheToolkit, qPrintable(QString::number(watch.awake)));
#endif
}

QTEST_MAIN(TestLongLife)
#include "tst_longlife.moc"
