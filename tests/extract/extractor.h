#pragma once

#include <QByteArray>
#include <QStringList>

class QProcess;

// The program under test, started as the launcher starts it, in the working directory.
namespace Extractor
{
struct Ended {
    int code = -1;
    QByteArray error; // what it said
    QByteArray out;
};

// The version's folder that the tests unpack into, and an archive of a small game.
extern const QString target;
QByteArray gameArchive();
// Names of what lies beside a folder.
QStringList beside(const QString &folder);

QString program();
// Started, with its input closed, as the launcher does.
void start(QProcess &process, const QStringList &arguments);
Ended run(const QStringList &arguments);
// An archive of these bytes into this folder.
Ended unpack(const QByteArray &archive, const QString &folder, const QString &password = {});
} // namespace Extractor
