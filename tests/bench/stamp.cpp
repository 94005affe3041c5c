// Stands in for the extractor: stamp ARCHIVE -d FOLDER. Unpacks nothing; it only notes when the
// launcher started it, which is when the archive was complete, and what that had cost by then.

#include "bench/measuring.h"

#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QStringList>

#include <unistd.h>

int main(int argc, char *argv[])
{
    const double at = Measuring::milliseconds();
    const double processor = Measuring::threadsMilliseconds(getppid());
    if (argc < 2) {
        return 1;
    }
    const QJsonObject stamp{
        {QStringLiteral("at"), at},
        {QStringLiteral("processor"), processor},
        {QStringLiteral("bytes"), QFileInfo(QFile::decodeName(argv[1])).size()}};
    QFile file(QStringLiteral("stamp.json"));
    return file.open(QIODevice::WriteOnly) && file.write(QJsonDocument(stamp).toJson()) > 0 ? 0 : 1;
}
