// How much a step of the window's rescaling costs beside the bare toolkit calls that it cannot do
// without: bench_rescale ROUNDS [STEPS].

#include "bench/measuring.h"
#include "fetch/imagedownloader.h"
#include "support/documents.h"
#include "support/httpserver.h"
#include "support/scratchfolder.h"
#include "support/testsettings.h"
#include "ui_testform.h"
#include "window/designscale.h"
#include "window/testform.h"

#include <QApplication>
#include <QTest>

#include <algorithm>
#include <memory>
#include <vector>

namespace
{
// What one step does to one widget, worked out beforehand.
struct Call {
    QWidget *widget;
    QRect geometry;
    QPushButton *icon = nullptr;
    QLabel *label = nullptr;
    const QPixmap *picture = nullptr;
    QString sheet = {}; // null when it does not change
};

struct Step {
    QSize target;
    QSize window;
    std::vector<Call> calls;
};

std::unique_ptr<testform> completeWindow(HttpServer &server)
{
    TestSettings::setBaseUrl(server.url());
    auto window = std::make_unique<testform>();
    window->ui->serverButtonsGroup->hide();
    window->show();
    const bool complete = QTest::qWaitFor(
        [&window] {
            const auto loaded = [](const News &item) {
                const QPixmap *picture = item.getOriginalPixmap();
                return picture != nullptr && !picture->isNull();
            };
            return std::all_of(std::begin(window->homeNews), std::end(window->homeNews), loaded) &&
                   std::all_of(std::begin(window->news), std::end(window->news), loaded);
        },
        Measuring::patience);
    if (!complete || !QTest::qWaitForWindowExposed(window.get(), Measuring::patience)) {
        qFatal("the window never became complete");
    }
    return window;
}

// The same decisions as the window's, taken once and outside the measurement.
std::vector<Step> plan(testform &window, const std::vector<QSize> &sizes)
{
    const QSize design(974, 571);
    QSize previous = design;
    QHash<QWidget *, QString> sheets;
    std::vector<Step> result;
    const auto widgets = window.findChildren<QWidget *>();
    for (const QSize size : sizes) {
        const float ratio = DesignScale::ratio(design, previous, size);
        Step step{size,
                  {DesignScale::scaledWindowSide(design.width(), ratio),
                   DesignScale::scaledWindowSide(design.height(), ratio)},
                  {}};
        for (QWidget *widget : widgets) {
            const QString name = widget->objectName();
            if (name == QStringLiteral("mainwindow")) {
                continue;
            }
            Call call{widget,
                      {DesignScale::scaled(window.xs.value(name), ratio),
                       DesignScale::scaled(window.ys.value(name), ratio),
                       DesignScale::scaled(window.widths.value(name), ratio),
                       DesignScale::scaled(window.heights.value(name), ratio)}};
            const QByteArray className = widget->metaObject()->className();
            auto *button =
                className == "QPushButton" ? static_cast<QPushButton *>(widget) : nullptr;
            if (button != nullptr && button->iconSize().width() != 0) {
                call.icon = button;
            }
            auto *label = className == "QLabel" ? static_cast<QLabel *>(widget) : nullptr;
            const News *item = label != nullptr ? window.newsItemOf(label) : nullptr;
            if (item != nullptr) {
                call.label = label;
                call.picture = item->getOriginalPixmap();
            }
            const QString now = sheets.value(widget, widget->styleSheet());
            if (DesignScale::hasFont(now)) {
                const QString next = DesignScale::withFontSize(
                    now, DesignScale::scaledFontSize(window.fontSizes.value(name), ratio));
                if (next != now) {
                    call.sheet = next;
                    sheets[widget] = next;
                }
            }
            step.calls.push_back(call);
        }
        result.push_back(step);
        previous = step.window;
    }
    return result;
}

void runBare(QWidget &window, const Step &step)
{
    for (const Call &call : step.calls) {
        if (call.label != nullptr) {
            call.label->setPixmap(call.picture->scaled(call.geometry.size(), Qt::IgnoreAspectRatio,
                                                       Qt::FastTransformation));
        }
        if (call.icon != nullptr) {
            call.icon->setIconSize(call.geometry.size());
        }
        if (!call.sheet.isNull()) {
            call.widget->setStyleSheet(call.sheet);
        }
        call.widget->resize(call.geometry.size());
        call.widget->move(call.geometry.topLeft());
    }
    window.resize(step.window);
}

} // namespace

int main(int argc, char *argv[])
{
    Measuring::silenceConsole();
    const QApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    const int rounds = arguments.at(1).toInt();
    const int steps = arguments.size() > 2 ? arguments.at(2).toInt() : 200;
    const ScratchFolder folder;
    HttpServer server;
    QStringList elements;
    for (int i = 0; i < 9; ++i) {
        const QString name = QStringLiteral("%1.png").arg(i);
        server.serve(name, Documents::png(1118, 638, 0xFF402010U + static_cast<unsigned>(i)));
        elements << Documents::news(i < 3 ? QStringLiteral("homenews") : QStringLiteral("news"),
                                    QStringLiteral("Title"), QStringLiteral("Text"),
                                    server.url(name));
    }
    server.serve(QStringLiteral("launcher.xml"), Documents::launcher(elements));
    const auto ours = completeWindow(server);
    const auto bare = completeWindow(server);

    std::vector<QSize> sizes;
    for (int i = 0; i < steps; ++i) {
        // Out and back, by uneven steps, ending at the design size.
        const int grow = i < steps / 2 ? i + 1 : steps - 1 - i;
        sizes.emplace_back(974 + grow * 7, 571 + grow * 5);
    }
    const std::vector<Step> bareSteps = plan(*bare, sizes);

    std::vector<double> ourTimes;
    std::vector<double> bareTimes;
    for (int round = 0; round < rounds; ++round) {
        double ourTime = 0;
        double bareTime = 0;
        for (std::size_t i = 0; i < sizes.size(); ++i) {
            double start = 0;
            const auto takeOurs = [&] {
                start = Measuring::threadMilliseconds();
                Measuring::ours([&] { ours->customResize(sizes[i].width(), sizes[i].height()); });
                ourTime += Measuring::threadMilliseconds() - start;
                QCoreApplication::processEvents();
            };
            const auto takeBare = [&] {
                start = Measuring::threadMilliseconds();
                Measuring::bare([&] { runBare(*bare, bareSteps[i]); });
                bareTime += Measuring::threadMilliseconds() - start;
                QCoreApplication::processEvents();
            };
            // Whoever comes second finds the caches warm.
            if (i % 2 == 0) {
                takeOurs();
                takeBare();
            } else {
                takeBare();
                takeOurs();
            }
            if (ours->size() != bare->size()) {
                qFatal("the two windows went different ways");
            }
        }
        ourTimes.push_back(ourTime / steps);
        bareTimes.push_back(bareTime / steps);
    }
    Measuring::report({{QStringLiteral("ours"), Measuring::median(ourTimes)},
                       {QStringLiteral("bare"), Measuring::median(bareTimes)}});
    return 0;
}
