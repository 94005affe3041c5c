#pragma once

#include "info/world.h"
#include "support/windowdriver.h"
#include "ui_testform.h"

#include <QAbstractButton>
#include <QDir>
#include <QTest>

#include <memory>

// A launcher that is used by its keyboard alone: three servers, of which the first has both kinds
// of client, and the others one each. A window manager has to be there.
class KeyboardWorld
{
public:
    // Opens the window; with a choice that is remembered, so that the panel is closed by then.
    bool open(const QByteArray &settings = {})
    {
        m_world.publish({entry("Alpha", "Official"), entry("Alpha", "Beta"),
                         entry("Bravo", "Official"), entry("Charlie", "Beta")});
        if (!settings.isEmpty()) {
            ScratchFolder::write(QStringLiteral("settings.txt"), settings);
        }
        window = std::make_unique<testform>();
        return World::answered(*window) && show();
    }
    // Opens it over a world without a document.
    bool openUnanswered()
    {
        window = std::make_unique<testform>();
        return World::answered(*window) && show();
    }

    // By the window system, to whatever has the keyboard.
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) const
    {
        QTest::keyClick(window->windowHandle(), key, modifiers);
    }
    // Presses Tab until the button of this name has the keyboard.
    bool tabTo(const QString &name) const
    {
        for (int i = 0; i < 40; ++i) {
            press(Qt::Key_Tab);
            if (focused() == name) {
                return true;
            }
        }
        return false;
    }

    // What has the keyboard: its name in the form, or what a reader calls it; "the window" for no
    // button.
    QString focused() const
    {
        const QWidget *widget = QApplication::focusWidget();
        if (widget == nullptr) {
            return QStringLiteral("nothing");
        }
        if (widget == window.get()) {
            return QStringLiteral("the window");
        }
        return widget->objectName().isEmpty() ? widget->accessibleName() : widget->objectName();
    }

    // One round of Tab, or with Shift, from here.
    QStringList round(Qt::Key key = Qt::Key_Tab, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        QStringList stops;
        for (int i = 0; i < 40; ++i) {
            press(key, modifiers);
            if (stops.contains(focused())) {
                break;
            }
            stops << focused();
        }
        return stops;
    }

    // The button of the panel that a reader calls so.
    QAbstractButton *clientButton(const QString &name) const
    {
        const auto buttons = window->ui->serverButtonsGroup->findChildren<QAbstractButton *>();
        for (QAbstractButton *button : buttons) {
            if (button->accessibleName() == name) {
                return button;
            }
        }
        return nullptr;
    }

    static void install(const QString &version)
    {
        const QString folder = QStringLiteral("Alpha/Official/") + version;
        QVERIFY(QDir::current().mkpath(folder));
        ScratchFolder::write(folder + QStringLiteral("/game.exe"), "program");
    }

    static QByteArray remembered() { return "Alpha|Official|true|"; }

    std::unique_ptr<testform> window;

private:
    static QString entry(const char *server, const char *client)
    {
        return Documents::client(QLatin1String(server), QLatin1String(client),
                                 QStringLiteral("2.0"));
    }
    bool show() const
    {
        return WindowDriver::show(*window) && QTest::qWaitForWindowActive(window.get());
    }

    World m_world;
};
