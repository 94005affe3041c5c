// The launcher as far as the restart after a changed code: presses F12, types the code, answers
// Yes, and ends with the event loop's exit code. Its arguments become the launcher's own argument
// list, program path first, so that the test decides what is started.

#include "info/world.h"
#include "support/windowdriver.h"

#include <QInputDialog>
#include <QMessageBox>
#include <QPushButton>
#include <QTest>

namespace
{
constexpr int nobodyAsked = 3;
constexpr int neverEnded = 4;
} // namespace

int main(int argc, char *argv[])
{
    int count = argc - 1;
    const QApplication application(count, argv + 1);
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
