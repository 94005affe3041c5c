// The launcher itself, watched: bench_window BASE_URL UNTIL [PICTURES.rcc]. It runs in its working
// folder as the product does, and tells what it cost up to one moment:
//
//   choice    the selection panel is painted and can be clicked
//   pictures  the nine pictures and all logos are there, and the window is painted with them
//   idle      the same; then it goes on until it is ended from outside
//   download  the choice is a remembered one: Download is clicked once the pictures are there, and
//             the watch ends with the download
//   turnsN    the same with a slow window: from the click on, each turn of the event loop takes N
//             milliseconds more
//   busy      as download, but clicked at once; tells the gaps between two turns of the event loop
//   pulled    the same as pictures; then the window is pulled larger and smaller again, at most
//             sixty times a second; tells the gaps, too
//
// With a file, its pictures take the place of the launcher's own.

#include "bench/measuring.h"
#include "bench/turns.h"
#include "fetch/filedownloader.h"
#include "fetch/imagedownloader.h"
#include "info/serverbutton.h"
#include "info/serverpanel.h"
#include "install/downloadmanager.h"
#include "support/arrivedpictures.h"
#include "support/testsettings.h"
#include "ui_testform.h"
#include "window/screenscaling.h"
#include "window/testform.h"

#include <QApplication>
#include <QIcon>
#include <QResource>
#include <QThreadPool>
#include <QTimer>

#include <algorithm>
#include <iterator>

// Outside of any namespace, as the toolkit wants it.
static void dropOwnPictures()
{
    Q_CLEANUP_RESOURCE(images);
}

namespace
{
class Watch : public QObject
{
public:
    Watch(testform &window, QString until)
        : m_window(window)
        , m_until(std::move(until))
        , m_pull([&window](QSize size) { window.customResize(size.width(), size.height()); })
    {
        static const QString slow = QStringLiteral("turns");
        if (m_until.startsWith(slow)) {
            m_slowness = m_until.mid(slow.size()).toInt();
            m_until = QStringLiteral("download");
        }
        // After the window's own connection: the document is applied by then.
        connect(window.infoDownloader, &FileDownloader::downloaded, this, &Watch::documentApplied);
        qApp->installEventFilter(this);
    }

protected:
    bool eventFilter(QObject *receiver, QEvent *event) override
    {
        if (event->type() == QEvent::Paint && m_until == QStringLiteral("choice") && m_applied &&
            isClientButton(receiver)) {
            // In the next turn the picture has reached the screen.
            QTimer::singleShot(0, this, &Watch::panelPainted);
        }
        return false;
    }

private:
    bool isClientButton(QObject *object) const
    {
        const auto *button = qobject_cast<QPushButton *>(object);
        return button != nullptr && button->size() == ServerPanel::clientButtonSize &&
               m_window.ui->serverButtonsGroup->isAncestorOf(button);
    }

    void documentApplied()
    {
        m_applied = true;
        if (m_until == QStringLiteral("choice")) {
            return;
        }
        const auto watch = [this](const ImageDownloader *downloader) {
            connect(downloader, &ImageDownloader::loadedImage, this, &Watch::lookForPictures,
                    Qt::QueuedConnection);
        };
        forEachNews([&watch](const News &item) { watch(item.imageDownloader); });
        for (const ServerButton *button : qAsConst(m_window.serverButtons)) {
            watch(button->getImageDownloader());
        }
        if (m_until == QStringLiteral("busy")) {
            // The window's first paint is a matter of its start.
            m_window.repaint();
            m_turns.start();
            startDownload();
        }
    }

    template<typename Function>
    void forEachNews(Function function) const
    {
        std::for_each(std::begin(m_window.homeNews), std::end(m_window.homeNews), function);
        std::for_each(std::begin(m_window.news), std::end(m_window.news), function);
    }

    int pictures() const
    {
        return ArrivedPictures::news(m_window) + ArrivedPictures::logos(m_window);
    }

    void panelPainted()
    {
        const auto buttons = m_window.ui->serverButtonsGroup->findChildren<QPushButton *>();
        const bool canBeClicked =
            std::any_of(buttons.begin(), buttons.end(), [this](QPushButton *button) {
                return isClientButton(button) && button->isVisible() && button->isEnabled() &&
                       m_window.childAt(button->mapTo(&m_window, button->rect().center())) ==
                           button;
            });
        if (!canBeClicked) {
            QTimer::singleShot(1, this, &Watch::panelPainted);
            return;
        }
        tell();
        Measuring::endHere();
    }

    void lookForPictures()
    {
        if (pictures() != 9 + m_window.serverButtons.size() || m_complete) {
            return;
        }
        m_complete = true;
        m_window.repaint();
        if (m_until == QStringLiteral("pictures")) {
            tell();
            Measuring::endHere();
        }
        if (m_until == QStringLiteral("busy")) {
            return;
        }
        if (m_until == QStringLiteral("pulled")) {
            m_pull.start();
            return;
        }
        // The pool has written the pictures' cache files when it falls silent.
        QThreadPool::globalInstance()->waitForDone();
        if (m_until == QStringLiteral("idle")) {
            tell();
        } else if (m_until == QStringLiteral("download")) {
            startDownload();
        }
    }

    void tell() const
    {
        Measuring::report({{QStringLiteral("at"), Measuring::milliseconds()},
                           {QStringLiteral("processor"), Measuring::processorMilliseconds()},
                           {QStringLiteral("peak"), Measuring::memory("VmHWM")},
                           {QStringLiteral("anonymous"), Measuring::memory("RssAnon")},
                           {QStringLiteral("pictures"), pictures()}});
    }

    void startDownload()
    {
        if (!m_window.ui->btnDownload->isVisible() || !m_window.ui->btnDownload->isEnabled()) {
            qFatal("there is nothing to download");
        }
        Measuring::forgetPeak();
        m_memory = Measuring::memory("VmRSS");
        m_processor = Measuring::threadsMilliseconds(QCoreApplication::applicationPid());
        m_clicked = Measuring::milliseconds();
        m_window.ui->btnDownload->click();
        if (m_slowness > 0) {
            connect(&m_slow, &QTimer::timeout, this, &Watch::takeTime);
            m_slow.start(0);
        }
        connect(m_window.downloadManager, &DownloadManager::finished, this, &Watch::downloadEnded);
    }

    void downloadEnded()
    {
        m_turns.stop();
        Measuring::report({{QStringLiteral("clicked"), m_clicked},
                           {QStringLiteral("ended"), Measuring::milliseconds()},
                           {QStringLiteral("processorBefore"), m_processor},
                           {QStringLiteral("before"), m_memory},
                           {QStringLiteral("peak"), Measuring::memory("VmHWM")},
                           {QStringLiteral("text"), m_window.ui->downloadProgressText->text()},
                           {QStringLiteral("pictures"), pictures()},
                           {QStringLiteral("turns"), m_turns.times()},
                           {QStringLiteral("work"), m_turns.work()}});
        Measuring::endHere();
    }

    void takeTime() const
    {
        const double end = Measuring::milliseconds() + m_slowness;
        while (Measuring::milliseconds() < end) {
        }
    }

    testform &m_window;
    QString m_until;
    int m_slowness = 0; // milliseconds
    QTimer m_slow;
    Pull m_pull;
    bool m_applied = false;
    bool m_complete = false;
    qint64 m_memory = 0;
    double m_processor = 0;
    double m_clicked = 0;
    Turns m_turns;
};
} // namespace

int main(int argc, char *argv[])
{
    Measuring::silenceConsole();
    if (argc > 3) {
        dropOwnPictures();
        if (!QResource::registerResource(QFile::decodeName(argv[3]))) {
            qFatal("no pictures in %s", argv[3]);
        }
    }
    // As the product's own main() does.
    ScreenScaling::letToolkitScale();
    const QApplication application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Emberwake Online Launcher"));
    QApplication::setApplicationVersion(QStringLiteral("1.0.0"));
    QApplication::setWindowIcon(QIcon(QStringLiteral(":/clienticon.ico")));

    const QStringList arguments = QCoreApplication::arguments();
    TestSettings::setBaseUrl(arguments.at(1));
    testform window;
    const Watch watch(window, arguments.at(2));
    window.show();
    return QApplication::exec();
}
