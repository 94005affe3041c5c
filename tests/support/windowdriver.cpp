#include "support/windowdriver.h"

#include "install/staleinput.h"

#include <QApplication>
#include <QDialog>
#include <QElapsedTimer>
#include <QTest>
#include <QTimer>
#include <QWindow>

bool WindowDriver::show(QWidget &window)
{
    window.show();
    return QTest::qWaitForWindowExposed(&window);
}

QString WindowDriver::click(QWidget &window, const QString &objectName)
{
    auto *target = window.findChild<QWidget *>(objectName);
    if (target == nullptr) {
        return QStringLiteral("there is no ") + objectName;
    }
    return click(window, *target);
}

QString WindowDriver::click(QWidget &window, QWidget &target)
{
    // No player clicks in the very turn in which a block ended: that click would count as an old
    // one.
    (void)QTest::qWaitFor(
        [] { return QCoreApplication::instance()->findChild<StaleInput *>() == nullptr; });
    const QString name = target.objectName();
    if (!target.isVisible()) {
        return name + QStringLiteral(" is hidden");
    }
    if (!target.isEnabled()) {
        return name + QStringLiteral(" is disabled");
    }
    const QPoint place = target.mapTo(&window, target.rect().center());
    const QWidget *top = window.childAt(place);
    if (top != &target) {
        return name + QStringLiteral(" is covered by ") +
               (top != nullptr ? top->objectName() : QStringLiteral("nothing"));
    }
    QTest::mouseClick(window.windowHandle(), Qt::LeftButton, Qt::NoModifier, place);
    return {};
}

std::shared_ptr<bool> WindowDriver::answerNextDialog(const std::function<void(QDialog &)> &answer)
{
    auto done = std::make_shared<bool>(false);
    auto *timer = new QTimer(qApp);
    QElapsedTimer waited;
    waited.start();
    QObject::connect(timer, &QTimer::timeout, timer, [timer, answer, done, waited] {
        auto *dialog = qobject_cast<QDialog *>(QApplication::activeModalWidget());
        if (dialog != nullptr && dialog->isVisible()) {
            timer->stop();
            timer->deleteLater();
            *done = true;
            answer(*dialog);
        } else if (waited.hasExpired(5000)) {
            timer->stop();
            timer->deleteLater();
        }
    });
    timer->start(5);
    return done;
}
