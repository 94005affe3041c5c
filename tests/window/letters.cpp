// Leaves pictures of the form's letters in a folder: letters FOLDER. tests/window/same-letters.sh
// compares those of several systems.

#include "support/scratchfolder.h"
#include "support/windowdriver.h"
#include "ui_testform.h"
#include "window/testform.h"

#include <QApplication>
#include <QDir>

namespace
{
void keep(QWidget &widget, const QDir &folder, const QString &name)
{
    if (!widget.grab().save(folder.filePath(name + QStringLiteral(".png")))) {
        qFatal("cannot write to %s", qPrintable(folder.path()));
    }
}
} // namespace

int main(int argc, char *argv[])
{
    const QApplication application(argc, argv);
    if (argc != 2) {
        qFatal("usage: letters FOLDER");
    }
    const QDir folder(QDir(QFile::decodeName(argv[1])).absolutePath());
    const ScratchFolder scratch;
    testform window; // nobody answers it
    // They are in the system's own font.
    window.ui->labelClient->hide();
    window.ui->labelClientVersion->hide();
    window.ui->serverButtonsGroup->hide();
    window.ui->homeNewsTitle->setText(QStringLiteral("The Ashen Gate opens"));
    window.ui->homeNewsDescription->setText(
        QStringLiteral("New halls, <b>bold letters</b> and 21 quests; fjord, Žluťoučký, Ελλάς."));
    if (!WindowDriver::show(window)) {
        qFatal("the window is not shown");
    }
    keep(*window.ui->_menubar, folder, QStringLiteral("strip"));
    keep(*window.ui->homeNewsTitle, folder, QStringLiteral("title"));
    keep(*window.ui->homeNewsDescription, folder, QStringLiteral("description"));
    return 0;
}
