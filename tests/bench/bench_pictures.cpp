// What nine downloaded pictures cost from their bytes to the screen, beside decoding each twice and
// scaling it once: bench_pictures ROUNDS PICTURE...

#include "bench/measuring.h"
#include "fetch/filedownloader.h"
#include "fetch/imagedownloader.h"
#include "ui_testform.h"
#include "window/testform.h"

#include <QApplication>
#include <QFile>
#include <QImage>
#include <QLabel>
#include <QTest>
#include <QThreadPool>

#include <algorithm>
#include <memory>
#include <vector>

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

// In memory, of all of them.
std::size_t sizeOf(const std::vector<QByteArray> &pictures)
{
    std::size_t bytes = 0;
    for (const QByteArray &picture : pictures) {
        bytes += static_cast<std::size_t>(QImage::fromData(picture).sizeInBytes());
    }
    return bytes;
}

// A virtual machine gives memory that was just set free far sooner than other: each side begins
// with more of it than it needs.
void setMemoryFree(std::size_t bytes)
{
    const std::vector<char> touched(bytes, 'x');
    if (std::find(touched.crbegin(), touched.crend(), 'x') != touched.crbegin()) {
        qFatal("the memory was not touched");
    }
}

struct Taken {
    double wall;   // milliseconds
    double thread; // milliseconds of the window's thread
};

template<typename Function>
Taken measured(Function function)
{
    const double thread = Measuring::threadMilliseconds();
    const double start = Measuring::milliseconds();
    function();
    return {Measuring::milliseconds() - start, Measuring::threadMilliseconds() - thread};
}

struct Figures {
    std::vector<double> wall;
    std::vector<double> thread;

    void add(const Taken &taken)
    {
        wall.push_back(taken.wall);
        thread.push_back(taken.thread);
    }
};
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

    const auto loadAll = [&](const auto &counted) {
        std::vector<std::unique_ptr<ImageDownloader>> downloaders;
        for (std::size_t i = 0; i < labels.size(); ++i) {
            const QUrl nowhere(QStringLiteral("http://127.0.0.1:9/"));
            auto downloader = std::make_unique<ImageDownloader>(nowhere, labels[i]);
            downloader->fd = new FileDownloader(nowhere, downloader.get());
            downloader->fd->m_DownloadedData = pictures[i];
            downloaders.push_back(std::move(downloader));
        }
        const Taken taken = measured([&] {
            counted([&] {
                for (const auto &downloader : downloaders) {
                    downloader->loadData();
                }
                window.repaint();
            });
        });
        QThreadPool::globalInstance()->waitForDone();
        for (std::size_t i = 0; i < labels.size(); ++i) {
            labels[i]->clear();
            delete downloaders[i]->px; // which the launcher keeps for as long as it runs
        }
        return taken;
    };
    const auto decodeAll = [&](const auto &counted) {
        // Kept, as ours are: a window needs them.
        std::vector<QPixmap> originals;
        return measured([&] {
            counted([&] {
                for (std::size_t i = 0; i < labels.size(); ++i) {
                    originals.push_back(showBare(pictures[i], labels[i]->size()));
                }
            });
        });
    };

    const std::size_t needed = 4 * sizeOf(pictures);
    Figures ours;
    Figures bare;
    for (int round = -1; round < rounds; ++round) {
        const auto runOurs = round < 0 ? Measuring::warmUp : Measuring::ours;
        const auto runBare = round < 0 ? Measuring::warmUp : Measuring::bare;
        // Whoever comes second finds the caches warm, so they take turns.
        for (const bool isOurs : {round % 2 == 0, round % 2 != 0}) {
            setMemoryFree(needed);
            const Taken taken = isOurs ? loadAll(runOurs) : decodeAll(runBare);
            if (round >= 0) {
                (isOurs ? ours : bare).add(taken);
            }
        }
    }
    Measuring::report({{QStringLiteral("ours"), Measuring::median(ours.wall)},
                       {QStringLiteral("bare"), Measuring::median(bare.wall)},
                       {QStringLiteral("ourThread"), Measuring::median(ours.thread)},
                       {QStringLiteral("bareThread"), Measuring::median(bare.thread)}});
    Measuring::endHere();
}
