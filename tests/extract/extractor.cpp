#include "extract/extractor.h"

#include "extract/zipbuilder.h"
#include "support/scratchfolder.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QProcess>

const QString Extractor::target = QStringLiteral("Alpha/Official/1.0");

QByteArray Extractor::gameArchive()
{
    return ZipBuilder{ZipEntry::deflated("game.exe", QByteArray(3000, 'g')),
                      {"empty/", ""},
                      {"data/map.bin", "map"}}
        .bytes();
}

QStringList Extractor::beside(const QString &folder)
{
    return QDir(QFileInfo(folder).path())
        .entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
}

QString Extractor::program()
{
    // Counted from here: on Wine the tests run on another drive than the build.
    return QCoreApplication::applicationDirPath() + QStringLiteral("/../../unzip.exe");
}

void Extractor::start(QProcess &process, const QStringList &arguments)
{
    process.start(program(), arguments);
    if (!process.waitForStarted(-1)) {
        qFatal("the extractor does not start: %s", qPrintable(process.errorString()));
    }
    process.closeWriteChannel();
}

Extractor::Ended Extractor::run(const QStringList &arguments)
{
    QProcess process;
    start(process, arguments);
    (void)process.waitForFinished(-1);
    Ended ended;
    ended.code = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    ended.error = process.readAllStandardError().replace("\r\n", "\n");
    ended.out = process.readAllStandardOutput();
    return ended;
}

Extractor::Ended Extractor::unpack(const QByteArray &archive, const QString &folder,
                                   const QString &password)
{
    ScratchFolder::write(QStringLiteral("a.zip"), archive);
    QStringList arguments;
    if (!password.isEmpty()) {
        arguments << QStringLiteral("-P") << password;
    }
    return run(arguments << QStringLiteral("a.zip") << QStringLiteral("-d") << folder);
}
