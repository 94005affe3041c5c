#include "install/gamefolder.h"
#include "window/screenscaling.h"
#include "window/testform.h"

#include <QApplication>
#include <QDir>
#include <QIcon>

int main(int argc, char *argv[])
{
    ScreenScaling::letToolkitScale();
    const QApplication application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Emberwake Online Launcher"));
    QApplication::setApplicationVersion(QStringLiteral(EMBERWAKE_VERSION));
    QApplication::setWindowIcon(QIcon(QStringLiteral(":/clienticon.ico")));

    // Before anything is read. Where it cannot be entered, the launcher stays where it is.
    const QString folder =
        GameFolder::choose(QDir::currentPath(), QApplication::applicationDirPath());
    (void)QDir::setCurrent(folder);

    testform window;
    window.show();
    return QApplication::exec();
}
