// Shows the window once and ends: bench_start [PICTURES.rcc]. With a file, its pictures take the
// place of the launcher's own. Prints how long it took from main() to the painted window.

#include "info/console.h"
#include "support/scratchfolder.h"
#include "window/testform.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QResource>
#include <QTest>

static void dropOwnPictures()
{
    Q_CLEANUP_RESOURCE(images);
}

int main(int argc, char *argv[])
{
    QElapsedTimer timer;
    timer.start();
    if (argc > 1) {
        dropOwnPictures();
        if (!QResource::registerResource(QFile::decodeName(argv[1]))) {
            qFatal("no pictures in %s", argv[1]);
        }
    }
    const QApplication application(argc, argv);
    const ScratchFolder folder;
    testform window;
    window.show();
    if (!QTest::qWaitForWindowExposed(&window)) {
        qFatal("the window never appeared");
    }
    window.repaint();
    Console::out(QStringLiteral("%1\n").arg(static_cast<double>(timer.nsecsElapsed()) / 1e6));
    return 0;
}
