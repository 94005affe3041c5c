#include "window/testform.h"

#include <QApplication>
#include <QIcon>

int main(int argc, char *argv[])
{
    const QApplication application(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Emberwake Online Launcher"));
    QApplication::setApplicationVersion(QStringLiteral(EMBERWAKE_VERSION));
    QApplication::setWindowIcon(QIcon(QStringLiteral(":/clienticon.ico")));

    testform window;
    window.show();
    return QApplication::exec();
}
