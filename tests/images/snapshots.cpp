// Leaves pictures of the launcher in the demo world in a folder: snapshots FOLDER. Every page at
// the smallest, the design's and the full-screen size, the panel with one to four columns among
// them, and what a player without a network sees. To be looked at; it judges nothing.
// QT_SCALE_FACTOR=1.5 in the environment makes it a screen of 150 %.

#include "images/demoworld.h"
#include "support/arrivedpictures.h"
#include "support/documents.h"
#include "support/publishedworld.h"
#include "support/scratchfolder.h"
#include "support/windowdriver.h"
#include "ui_testform.h"
#include "window/screenscaling.h"

#include <QApplication>
#include <QCursor>
#include <QDir>
#include <QTest>

#include <memory>

namespace
{
void shoot(QWidget &window, const QDir &folder, const QString &name)
{
    QTest::qWait(100);
    if (!window.grab().save(folder.filePath(name + QStringLiteral(".png")))) {
        qFatal("cannot write to %s", qPrintable(folder.path()));
    }
}

void shootPages(testform &window, const QDir &folder)
{
    window.ui->serverButtonsGroup->hide();
    ScratchFolder::makeFolder(QStringLiteral("Cinderfall/Official/2.0.0"));
    window.onServerSelect(QStringLiteral("Cinderfall|Official"));
    window.ui->downloadProgressBar->setValue(64);
    window.ui->downloadProgressBar->show();
    window.ui->downloadProgressText->setText(
        QStringLiteral("Downloading client version 2.1.4:  36% 1.4 MB/s"));
    window.ui->downloadProgressText->show();
    for (const QSize size : {QSize(974, 571), QSize(487, 286), QSize(1842, 1080)}) {
        window.customResize(size.width(), size.height());
        const QString width = QString::number(size.width());
        for (int slide = 0; slide < 3; ++slide) {
            window.setSlideState(slide);
            shoot(window, folder, QStringLiteral("home%1-%2").arg(slide + 1).arg(width));
        }
        window.setMenuState(1);
        shoot(window, folder, QStringLiteral("news-") + width);
        window.setMenuState(0);
    }
}

void shootPanels(const QDir &folder)
{
    PublishedWorld world;
    const QStringList names{QStringLiteral("Ashenmoor"), QStringLiteral("Cinderfall"),
                            QStringLiteral("Emberreach"), QStringLiteral("Emberwake")};
    for (const QString &name : names) {
        const bool isOwn = name != names.last();
        world.server.serve(name + QStringLiteral(".png"),
                           demoFile((isOwn ? name : names.at(1)) + QStringLiteral(".png")));
    }
    QStringList clients;
    for (int columns = 1; columns <= names.size(); ++columns) {
        const ScratchFolder scratch;
        for (const char *kind : {"Official", "Beta"}) {
            clients << Documents::client(names.at(columns - 1), QLatin1String(kind),
                                         QStringLiteral("1.0"));
        }
        world.publish(clients);
        testform window;
        window.show();
        QTest::qWait(1500);
        shoot(window, folder, QStringLiteral("servers%1-974").arg(columns));
        for (const QSize size : {QSize(487, 286), QSize(1842, 1080)}) {
            window.customResize(size.width(), size.height());
            shoot(window, folder, QStringLiteral("servers%1-%2").arg(columns).arg(size.width()));
        }
    }
}
} // namespace

int main(int argc, char *argv[])
{
    ScreenScaling::letToolkitScale();
    const QApplication application(argc, argv);
    if (argc != 2) {
        qFatal("usage: snapshots FOLDER");
    }
    const QDir folder(QDir(QFile::decodeName(argv[1])).absolutePath());
    // Where it changes no look of a button.
    QCursor::setPos(1900, 1060);
    {
        const ScratchFolder scratch;
        testform window; // nobody answers it
        window.show();
        shoot(window, folder, QStringLiteral("connecting-974"));
        window.ui->serverButtonsGroup->hide();
        shoot(window, folder, QStringLiteral("offline-home-974"));
        window.setMenuState(1);
        shoot(window, folder, QStringLiteral("offline-news-974"));
    }
    {
        const ScratchFolder scratch;
        const DemoWorld world;
        testform window;
        window.show();
        if (!QTest::qWaitFor([&window] { return ArrivedPictures::isComplete(window); }, 20000)) {
            qFatal("the demo world never arrived");
        }
        shootPages(window, folder);
    }
    shootPanels(folder);
    return 0;
}
