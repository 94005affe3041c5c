// How the window's work grows: bench_growth WHAT SIZE ROUNDS, in processor time of its thread, in
// which small pictures alone are decoded.
//
//   servers  so many servers of two kinds each, from the document's bytes to the painted panel with
//            all logos
//   news     so many slides and tiles, from the document's bytes to all pictures painted
//   screen   the window so many pixels wide: one step of its rescaling, painted

#include "base/documentlimits.h"
#include "bench/measuring.h"
#include "fetch/filedownloader.h"
#include "support/arrivedpictures.h"
#include "support/documents.h"
#include "support/httpserver.h"
#include "support/testsettings.h"
#include "window/testform.h"

#include <QApplication>
#include <QSignalSpy>
#include <QTest>

#include <algorithm>
#include <memory>

namespace
{
constexpr int news = 9;

QString server(int number)
{
    return QStringLiteral("Server %1").arg(number);
}

QByteArray documentOfServers(int count)
{
    QStringList elements;
    for (int i = 0; i < count; ++i) {
        for (const QString &kind : {QStringLiteral("Official"), QStringLiteral("Beta")}) {
            elements << Documents::client(server(i), kind, QStringLiteral("2.1.4"));
        }
    }
    return Documents::launcher(elements);
}

QByteArray documentOfNews(int count, const HttpServer &host)
{
    QStringList elements;
    for (int i = 0; i < count; ++i) {
        elements << Documents::news(i < 3 ? QStringLiteral("homenews") : QStringLiteral("news"),
                                    QStringLiteral("The Forge Awakens"),
                                    QStringLiteral("Twelve new quests"),
                                    host.url(QStringLiteral("%1.png").arg(i)));
    }
    return Documents::launcher(elements);
}

// Shown, and its own document, which is none, has come.
std::unique_ptr<testform> emptyWindow()
{
    auto window = std::make_unique<testform>();
    QSignalSpy answered(window->infoDownloader, &FileDownloader::downloaded);
    window->show();
    if (!answered.wait(Measuring::patience) ||
        !QTest::qWaitForWindowExposed(window.get(), Measuring::patience)) {
        qFatal("the window never stood there");
    }
    window->repaint();
    return window;
}

// Until so many pictures and logos are painted.
double apply(testform &window, const QByteArray &document, int pictures, int withLogos)
{
    const double start = Measuring::threadMilliseconds();
    window.infoDownloader->m_DownloadedData = document;
    window.loadInfo(false);
    const double deadline = Measuring::milliseconds() + Measuring::patience;
    while (ArrivedPictures::news(window) < pictures || ArrivedPictures::logos(window) < withLogos) {
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        if (Measuring::milliseconds() > deadline) {
            qFatal("%d pictures and %d logos came", ArrivedPictures::news(window),
                   ArrivedPictures::logos(window));
        }
    }
    QCoreApplication::processEvents();
    window.repaint();
    return Measuring::threadMilliseconds() - start;
}

// A step to a neighbouring size and back again.
double rescale(testform &window, int width)
{
    constexpr int steps = 10;
    const int height = window.height();
    const double start = Measuring::threadMilliseconds();
    for (int i = 0; i < steps; ++i) {
        window.customResize(width + (i % 2 == 0 ? 7 : 0), height);
        QCoreApplication::processEvents();
        window.repaint();
    }
    return (Measuring::threadMilliseconds() - start) / steps;
}
} // namespace

int main(int argc, char *argv[])
{
    Measuring::silenceConsole();
    const QApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    const QString what = arguments.at(1);
    const int size = arguments.at(2).toInt();
    const int rounds = arguments.at(3).toInt();
    HttpServer host;
    for (int i = 0; i < news; ++i) {
        host.serve(QStringLiteral("%1.png").arg(i),
                   Documents::png(1118, 638, 0xFF402010U + static_cast<unsigned>(i)));
    }
    const int columns = std::min(size, DocumentLimits::servers);
    if (what == QStringLiteral("servers")) {
        for (int i = 0; i < size; ++i) {
            host.serve(server(i) + QStringLiteral(".png"), Documents::png(320, 150, 0xFF00FF00U));
        }
    }
    TestSettings::setBaseUrl(host.url());

    std::vector<double> times;
    std::unique_ptr<testform> window;
    for (int round = -1; round < rounds; ++round) {
        // The first round finds everything cold.
        const auto counted = round < 0 ? Measuring::warmUp : Measuring::ours;
        double time = 0;
        if (what == QStringLiteral("screen")) {
            if (window == nullptr) {
                window = emptyWindow();
                (void)apply(*window, documentOfNews(news, host), news, 0);
                window->customResize(size, window->height() * size / window->width());
                QCoreApplication::processEvents();
            }
            counted([&] { time = rescale(*window, size); });
        } else {
            window = emptyWindow();
            counted([&] {
                time = what == QStringLiteral("servers")
                           ? apply(*window, documentOfServers(size), 0, columns)
                           : apply(*window, documentOfNews(size, host), size, 0);
            });
        }
        if (round >= 0) {
            times.push_back(time);
        }
    }
    Measuring::report({{QStringLiteral("ours"), Measuring::median(times)},
                       {QStringLiteral("pixels"), window->width() * window->height()}});
    Measuring::endHere();
}
