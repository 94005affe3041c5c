#pragma once

#include "support/httpserver.h"
#include "support/testsettings.h"

#include <QString>
#include <QStringList>

class testform;

constexpr int worldLimit = 10000; // milliseconds that the slowest step may take

// An operator's web server behind the base URL as long as the object lives: the ground that the
// worlds of the subsystems' tests stand on. Windows made meanwhile ask this server.
class PublishedWorld
{
public:
    PublishedWorld();
    ~PublishedWorld();
    PublishedWorld(const PublishedWorld &) = delete;
    PublishedWorld &operator=(const PublishedWorld &) = delete;

    static QString documentPath() { return QStringLiteral("launcher.xml"); }
    // Serves a launcher document with these elements.
    void publish(const QStringList &elements, const QString &version = QStringLiteral("1"));

    // Waits until the window has dealt with the answer to its fetch. To be called before the event
    // loop turns for the first time after construction.
    static bool answered(testform &window, int limit = worldLimit);

    HttpServer server;
};
