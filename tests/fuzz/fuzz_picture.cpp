// A picture from the network, from its bytes to the label that shows it and the file that keeps it.

#include "fetch/filedownloader.h"
#include "fetch/imagedownloader.h"

#include <QApplication>
#include <QDir>
#include <QLabel>
#include <QTemporaryDir>
#include <QThreadPool>

#include <cstdlib>

namespace
{
struct Stage {
    Stage()
    {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        static int count = 1;
        static char name[] = "fuzz_picture";
        static char *arguments[] = {name, nullptr};
        new QApplication(count, arguments); // as long as the process
        QDir::setCurrent(folder.path());
        // What the decoders complain of is not of interest here.
        qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &) {});
    }
    QTemporaryDir folder;
};
} // namespace

extern "C" int LLVMFuzzerTestOneInput(const unsigned char *data, size_t size)
{
    static const Stage stage;
    QLabel label;
    label.setObjectName(QStringLiteral("imageNewsBig"));
    label.resize(276, 157);
    // Nothing is fetched: an address that no scheme belongs to fails at once.
    static FileDownloader arrived{QUrl()};
    arrived.m_DownloadedData =
        QByteArray(reinterpret_cast<const char *>(data), static_cast<int>(size));
    ImageDownloader downloader(QUrl(), &label);
    downloader.fd = &arrived;
    downloader.loadData();
    QThreadPool::globalInstance()->waitForDone();
    const QPixmap *original = downloader.getOriginalPixmap();
    if (original != nullptr && !original->isNull() &&
        (label.pixmap(Qt::ReturnByValue).size() != label.size() ||
         qint64(original->width()) * original->height() > largestPicture)) {
        std::abort();
    }
    // Not freed by its owner, which lives as long as the window.
    delete downloader.px;
    downloader.px = nullptr;
    downloader.fd = nullptr;
    return 0;
}
