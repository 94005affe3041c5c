// What one paint of a glowing button costs beside the same two toolkit effects applied directly to
// the button's picture: bench_hover ROUNDS.

#include "bench/measuring.h"
#include "ui_testform.h"
#include "window/testform.h"

#include <QApplication>
#include <QGraphicsBlurEffect>
#include <QGraphicsColorizeEffect>
#include <QGraphicsPixmapItem>
#include <QGraphicsScene>
#include <QPainter>
#include <QTest>

namespace
{
constexpr int paints = 200;
constexpr int extent = 4;

void paintInto(QPixmap &target, QWidget &frame)
{
    target.fill(Qt::transparent);
    frame.render(&target, QPoint(), QRegion(), QWidget::DrawChildren);
}

QPixmap through(QGraphicsEffect *effect, const QPixmap &source, int margin)
{
    QGraphicsScene scene;
    QGraphicsPixmapItem *item = scene.addPixmap(source);
    item->setGraphicsEffect(effect);
    QPixmap result(source.size() + QSize(2 * margin, 2 * margin));
    result.fill(Qt::transparent);
    QPainter painter(&result);
    scene.render(&painter, QRectF(), QRectF(-margin, -margin, result.width(), result.height()));
    return result;
}

void paintBare(QPixmap &target, QWidget &frame)
{
    QPixmap source(frame.size());
    paintInto(source, frame);
    auto *colorize = new QGraphicsColorizeEffect;
    colorize->setColor(Qt::white);
    auto *blur = new QGraphicsBlurEffect;
    blur->setBlurRadius(extent);
    const QPixmap glow = through(blur, through(colorize, source, 0), extent);
    target.fill(Qt::transparent);
    QPainter painter(&target);
    painter.drawPixmap(-extent, -extent, glow);
    painter.drawPixmap(0, 0, source);
}
} // namespace

int main(int argc, char *argv[])
{
    Measuring::silenceConsole();
    const QApplication application(argc, argv);
    const int rounds = QCoreApplication::arguments().at(1).toInt();
    testform window;
    // The button alone, in a frame that paints nothing and has room for the glow.
    QPushButton &button = *window.ui->btnDownload;
    QWidget frame;
    button.setParent(&frame);
    button.move(extent, extent);
    button.show();
    frame.resize(button.size() + QSize(2 * extent, 2 * extent));
    frame.show();
    if (!QTest::qWaitForWindowExposed(&frame, Measuring::patience)) {
        qFatal("the frame never appeared");
    }
    QEvent enter(QEvent::Enter);
    QPixmap ourTarget(frame.size());
    QPixmap bareTarget(frame.size());

    std::vector<double> ours;
    std::vector<double> bare;
    for (int round = -1; round < rounds; ++round) {
        // The pointer comes, and goes before the other side's turn.
        QCoreApplication::sendEvent(&button, &enter);
        if (button.graphicsEffect() == nullptr) {
            qFatal("the button does not glow");
        }
        const auto runOurs = round < 0 ? Measuring::warmUp : Measuring::ours;
        const auto runBare = round < 0 ? Measuring::warmUp : Measuring::bare;
        const double start = Measuring::threadMilliseconds();
        for (int i = 0; i < paints; ++i) {
            runOurs([&] { paintInto(ourTarget, frame); });
        }
        const double ourTime = Measuring::threadMilliseconds() - start;
        button.setGraphicsEffect(nullptr);

        const double bareStart = Measuring::threadMilliseconds();
        for (int i = 0; i < paints; ++i) {
            runBare([&] { paintBare(bareTarget, frame); });
        }
        if (round >= 0) {
            ours.push_back(ourTime / paints);
            bare.push_back((Measuring::threadMilliseconds() - bareStart) / paints);
        }
    }
    Measuring::report(
        {{QStringLiteral("ours"), Measuring::median(ours)},
         {QStringLiteral("bare"), Measuring::median(bare)},
         {QStringLiteral("samePicture"), ourTarget.toImage() == bareTarget.toImage()}});
    Measuring::endHere();
}
