#pragma once

#include <QString>

#include <functional>
#include <memory>

class QDialog;
class QWidget;

// Drives a shown window as a player does.
namespace WindowDriver
{
// Shows the window and waits until it is exposed. False when it never is.
bool show(QWidget &window);

// Clicks the middle of the widget with this object name through the window system's events.
// Returns why that cannot be (missing, hidden, disabled, covered by another widget there), or an
// empty text after the click.
QString click(QWidget &window, const QString &objectName);
// The same for a widget that has no name of its own.
QString click(QWidget &window, QWidget &target);

// Calls the function once, with the next dialog that appears, from inside the dialog's own event
// loop; call it before whatever opens the dialog. The dialog is closed by the function; one that
// does not appear within five seconds is reported by the returned flag staying false.
std::shared_ptr<bool> answerNextDialog(const std::function<void(QDialog &)> &answer);
} // namespace WindowDriver
