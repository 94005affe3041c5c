// The plain way of fetching a large file, for comparison: plain_download URL FILE. Whatever the
// network brings is taken into memory at once and written from there.

#include "bench/measuring.h"

#include <QCoreApplication>
#include <QFile>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QUrl>

int main(int argc, char *argv[])
{
    Measuring::silenceConsole();
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    QFile file(arguments.at(2));
    if (!file.open(QIODevice::WriteOnly)) {
        qFatal("cannot write %s", qPrintable(arguments.at(2)));
    }
    const qint64 before = Measuring::memory("VmRSS");
    QNetworkAccessManager manager;
    QNetworkReply *reply = manager.get(QNetworkRequest(QUrl(arguments.at(1))));
    QObject::connect(reply, &QNetworkReply::readyRead, reply,
                     [&] { file.write(reply->readAll()); });
    QObject::connect(reply, &QNetworkReply::finished, reply, [&] {
        file.write(reply->readAll());
        file.close();
        Measuring::report({{QStringLiteral("bytes"), file.size()},
                           {QStringLiteral("before"), before},
                           {QStringLiteral("peak"), Measuring::memory("VmHWM")}});
        Measuring::endHere();
    });
    return QCoreApplication::exec();
}
