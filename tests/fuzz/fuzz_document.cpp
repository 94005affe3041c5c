// The launcher document with everything it sets off: texts on labels, the table of clients, the
// panel with its buttons, the choice that is applied at once.

#include "fetch/filedownloader.h"
#include "fetch/imagedownloader.h"
#include "support/testsettings.h"
#include "ui_testform.h"
#include "window/testform.h"

#include <QApplication>
#include <QDesktopServices>
#include <QDir>
#include <QMessageBox>
#include <QNetworkProxy>
#include <QPixmapCache>
#include <QTemporaryDir>
#include <QThreadPool>
#include <QTimer>

#include <cstdio>

namespace
{
// Takes the addresses that would go to the player's browser.
class Nobody : public QObject
{
    Q_OBJECT
public slots:
    void open(const QUrl & /*url*/) {}
};

struct Stage {
    Stage()
    {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        static int count = 1;
        static char name[] = "fuzz_document";
        static char *arguments[] = {name, nullptr};
        new QApplication(count, arguments); // as long as the process
        QDir::setCurrent(folder.path());
        // The form's pictures, once for all windows: they are no input.
        QPixmapCache::setCacheLimit(128 * 1024);
        // Whatever address a document names, nothing leaves this machine.
        QNetworkProxy::setApplicationProxy(
            QNetworkProxy(QNetworkProxy::HttpProxy, QStringLiteral("127.0.0.1"), 1));
        for (const char *scheme : {"http", "https", "file"}) {
            QDesktopServices::setUrlHandler(QString::fromLatin1(scheme), &nobody, "open");
        }
        qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &) {});
        // The names of the elements, which the launcher prints.
        (void)std::freopen("/dev/null", "w", stdout);
    }
    QTemporaryDir folder;
    Nobody nobody;
};
} // namespace

// Of a window that is gone in the end.
static void show(const unsigned char *data, size_t size)
{
    testform window;
    window.settings =
        Settings(QStringLiteral("Alpha"), QStringLiteral("Official"), true, QStringLiteral("code"));
    window.infoDownloader->m_DownloadedData =
        QByteArray(reinterpret_cast<const char *>(data), static_cast<int>(size));
    // An outdated launcher is told so; the player reads it and goes on.
    QTimer reader;
    QObject::connect(&reader, &QTimer::timeout, &reader, [] {
        if (QWidget *box = QApplication::activeModalWidget()) {
            box->close();
        }
    });
    reader.start(1);
    window.loadInfo();
    // A few turns of the event loop, for what was set off.
    for (int turn = 0; turn < 3; ++turn) {
        QApplication::processEvents();
    }
    // Costs more than all the rest, and hardly depends on the input.
    if (size % 8 == 0) {
        window.customResize(700, 400);
    }
    if (!window.clientInfos.isEmpty() && window.serverButtons.size() > window.clientInfos.size()) {
        __builtin_trap();
    }
}

extern "C" int LLVMFuzzerTestOneInput(const unsigned char *data, size_t size)
{
    static const Stage stage;
    show(data, size);
    // A window that goes leaves pictures to be written. Nobody waits for that when the process
    // ends.
    QThreadPool::globalInstance()->waitForDone();
    return 0;
}

#include "fuzz_document.moc"
