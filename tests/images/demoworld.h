#pragma once

#include "support/httpserver.h"
#include "support/publishedworld.h"

#include <QDirIterator>
#include <QFile>

// A file of the demo world, from the resources that come with this folder.
inline QByteArray demoFile(const QString &name)
{
    QFile file(QStringLiteral(":/demo/") + name);
    if (!file.open(QIODevice::ReadOnly)) {
        qFatal("the demo world lacks %s", qPrintable(name));
    }
    return file.readAll();
}

// The demo world's files: document and logos behind the base URL, the pictures on two more servers.
// One answers only so many connections at the same time.
class DemoWorld : public PublishedWorld
{
public:
    DemoWorld()
    {
        QString document = QString::fromUtf8(demoFile(QStringLiteral("launcher.xml")));
        serveAll(m_slides, QStringLiteral("slide"), document);
        serveAll(m_tiles, QStringLiteral("tile"), document);
        document.replace(QStringLiteral("@BASE_URL@"), server.url());
        document.replace(QStringLiteral("@LAUNCHER_VERSION@"), QStringLiteral("1"));
        server.serve(documentPath(), document.toUtf8());
        for (const char *name : {"Ashenmoor", "Cinderfall", "Emberreach"}) {
            const QString logo = QLatin1String(name) + QStringLiteral(".png");
            server.serve(logo, demoFile(logo));
        }
    }

private:
    static void serveAll(HttpServer &host, const QString &kind, QString &document)
    {
        const QString path = QStringLiteral("news/") + kind;
        document.replace(QStringLiteral("@BASE_URL@") + path, host.url(path));
        QDirIterator files(QStringLiteral(":/demo/news"), {kind + QLatin1Char('*')}, QDir::Files);
        while (files.hasNext()) {
            files.next();
            const QString name = QStringLiteral("news/") + files.fileName();
            host.serve(name, demoFile(name));
        }
    }

    HttpServer m_slides;
    HttpServer m_tiles;
};
