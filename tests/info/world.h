#pragma once

#include "support/documents.h"
#include "support/publishedworld.h"
#include "support/scratchfolder.h"
#include "window/testform.h"

#include <QApplication>
#include <QDialog>
#include <QTimer>

// A fresh installation folder beside what is published.
class World : public PublishedWorld
{
public:
    ScratchFolder folder;
};

// Closes every dialog that appears as long as it lives, and notes its title. A test that expects
// none would otherwise wait in it for ever.
class DialogGuard
{
public:
    DialogGuard()
    {
        QObject::connect(&m_timer, &QTimer::timeout, &m_timer, [this] {
            auto *dialog = qobject_cast<QDialog *>(QApplication::activeModalWidget());
            if (dialog != nullptr) {
                titles << dialog->windowTitle();
                dialog->reject();
            }
        });
        m_timer.start(5);
    }

    QStringList titles;

private:
    QTimer m_timer;
};
