// What nine downloaded pictures cost from their bytes to the screen, beside decoding each twice and
// scaling it once: bench_pictures ROUNDS PICTURE...

#include "bench/measuring.h"
#include "info/filedownloader.h"
#include "news/imagedownloader.h"
#include "ui_testform.h"
#include "window/testform.h"

#include <QApplication>
#include <QFile>
#include <QLabel>
#include <QTest>
#include <QThreadPool>

#include <memory>

namespace
{
// The original, which a window has to keep.
QPixmap showBare(const QByteArray &bytes, QSize size)
{
    QPixmap original;
    QPixmap shown;
    if (!original.loadFromData(bytes) || !shown.loadFromData(bytes) ||
        shown.scaled(size, Qt::IgnoreAspectRatio, Qt::FastTransformation).size() != size) {
        qFatal("a picture cannot be read");
    }
    return original;
}
} // namespace

int main(int argc, char *argv[])
{
    Measuring::silenceConsole();
    const QApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    const int rounds = arguments.at(1).toInt();
    std::vector<QByteArray> pictures;
    for (const QString &name : arguments.mid(2)) {
        QFile file(name);
        if (!file.open(QIODevice::ReadOnly)) {
            qFatal("there is no %s", qPrintable(name));
        }
        pictures.push_back(file.readAll());
    }

    testform window;
    window.ui->labelConnecting->hide();
    window.show();
    if (!QTest::qWaitForWindowExposed(&window)) {
        qFatal("the window never appeared");
    }
    std::vector<QLabel *> labels;
    for (const News &item : window.homeNews) {
        labels.push_back(item.imageLabel);
    }
    for (const News &item : window.news) {
        labels.push_back(item.imageLabel);
    }
    if (pictures.size() != labels.size()) {
        qFatal("one picture for each of %d labels", static_cast<int>(labels.size()));
    }

    std::vector<double> ours;
    std::vector<double> bare;
    std::vector<double> ourThread;
    std::vector<double> bareThread;
    for (int round = -1; round < rounds; ++round) {
        std::vector<std::unique_ptr<ImageDownloader>> downloaders;
        for (std::size_t i = 0; i < labels.size(); ++i) {
            const QUrl nowhere(QStringLiteral("http://127.0.0.1:9/"));
            auto downloader = std::make_unique<ImageDownloader>(nowhere, labels[i]);
            downloader->fd = new FileDownloader(nowhere, downloader.get());
            downloader->fd->m_DownloadedData = pictures[i];
            downloaders.push_back(std::move(downloader));
        }
        double thread = Measuring::threadMilliseconds();
        double start = Measuring::milliseconds();
        for (const auto &downloader : downloaders) {
            downloader->loadData();
        }
        window.repaint();
        const double ourTime = Measuring::milliseconds() - start;
        const double ourThreadTime = Measuring::threadMilliseconds() - thread;
        QThreadPool::globalInstance()->waitForDone();

        thread = Measuring::threadMilliseconds();
        start = Measuring::milliseconds();
        // Kept as long as ours: memory that was just set free is given again faster than other.
        std::vector<QPixmap> originals;
        for (std::size_t i = 0; i < labels.size(); ++i) {
            originals.push_back(showBare(pictures[i], labels[i]->size()));
        }
        const double bareTime = Measuring::milliseconds() - start;
        const double bareThreadTime = Measuring::threadMilliseconds() - thread;
        for (QLabel *label : labels) {
            label->clear();
        }
        if (round >= 0) {
            ours.push_back(ourTime);
            bare.push_back(bareTime);
            ourThread.push_back(ourThreadTime);
            bareThread.push_back(bareThreadTime);
        }
    }
    Measuring::report({{QStringLiteral("ours"), Measuring::median(ours)},
                       {QStringLiteral("bare"), Measuring::median(bare)},
                       {QStringLiteral("ourThread"), Measuring::median(ourThread)},
                       {QStringLiteral("bareThread"), Measuring::median(bareThread)}});
    Measuring::endHere();
}
