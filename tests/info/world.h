#pragma once

#include "fetch/filedownloader.h"
#include "support/documents.h"
#include "support/httpserver.h"
#include "support/scratchfolder.h"
#include "support/testsettings.h"
#include "window/testform.h"

#include <QApplication>
#include <QDialog>
#include <QSignalSpy>
#include <QTimer>

constexpr int worldLimit = 10000; // milliseconds that the slowest step may take

// A fresh installation folder, and a web server behind the base URL, as long as the object lives.
class World
{
public:
    World() { TestSettings::setBaseUrl(server.url()); }
    ~World() { TestSettings::setBaseUrl(QString::fromLatin1(TestSettings::nobodyListens)); }
    World(const World &) = delete;
    World &operator=(const World &) = delete;

    void publish(const QStringList &elements, const QString &version = QStringLiteral("1"))
    {
        server.serve(QStringLiteral("launcher.xml"), Documents::launcher(elements, version));
    }

    // Waits until the window has dealt with the answer to its fetch. To be called before the event
    // loop turns for the first time after construction.
    static bool answered(testform &window, int limit = worldLimit)
    {
        // Connected after the window's own slot, and so called after it.
        QSignalSpy spy(window.infoDownloader, &FileDownloader::downloaded);
        return spy.wait(limit);
    }

    ScratchFolder folder;
    HttpServer server;
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
