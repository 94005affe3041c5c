// The launcher as far as the restart after a changed code: presses F12, types the code, answers
// Yes, and ends with the event loop's exit code. Started once more in the same folder, where the
// code is saved by then, it notes its whole command line in the file "noted" and ends.

#include "info/world.h"
#include "support/scratchfolder.h"
#include "support/windowdriver.h"

#include <QDir>
#include <QInputDialog>
#include <QMessageBox>
#include <QPushButton>
#include <QTest>

namespace
{
constexpr int nobodyAsked = 3;
constexpr int neverEnded = 4;
constexpr int notNoted = 5;

int noteTheCall()
{
    QByteArray lines;
    const QStringList arguments = QCoreApplication::arguments();
    for (const QString &argument : arguments) {
        lines += '[' + argument.toUtf8() + "]\n";
    }
    // Complete at once, for the one that waits for it.
    ScratchFolder::write(QStringLiteral("noted.part"), lines);
    return QFile::rename(QStringLiteral("noted.part"), QStringLiteral("noted")) ? 0 : notNoted;
}
} // namespace

int main(int argc, char *argv[])
{
    const QApplication application(argc, argv);
    (void)QDir::setCurrent(QStringLiteral("game"));
    if (QFile::exists(QStringLiteral("settings.txt"))) {
        return noteTheCall();
    }
    testform window;
    if (!WindowDriver::show(window)) {
        return nobodyAsked;
    }

    std::shared_ptr<bool> confirmed;
    const auto typed = WindowDriver::answerNextDialog([&confirmed](QDialog &dialog) {
        static_cast<QInputDialog &>(dialog).setTextValue(QStringLiteral("new code"));
        confirmed = WindowDriver::answerNextDialog([](QDialog &box) {
            static_cast<QMessageBox &>(box).button(QMessageBox::Yes)->click();
        });
        dialog.accept();
    });
    QTimer::singleShot(0, &window, [&window] { QTest::keyClick(&window, Qt::Key_F12); });
    QTimer::singleShot(worldLimit, &window, [] { QApplication::exit(neverEnded); });
    const int code = QApplication::exec();
    return *typed && confirmed != nullptr && *confirmed ? code : nobodyAsked;
}
