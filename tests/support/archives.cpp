#include "support/archives.h"

#include "support/scratchfolder.h"
#include "support/standin.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>

namespace
{
bool packs(const QString &folder, const QStringList &arguments)
{
    QProcess process;
    process.setWorkingDirectory(folder);
    process.start(QStringLiteral("zip"), arguments);
    if (process.waitForFinished() && process.exitStatus() == QProcess::NormalExit &&
        process.exitCode() == 0) {
        return true;
    }
    qWarning("zip failed: %s, code %d: %s", qPrintable(process.errorString()), process.exitCode(),
             process.readAllStandardError().constData());
    return false;
}
} // namespace

QByteArray Archives::zip(const QMap<QString, QByteArray> &files, const QString &password)
{
    const QTemporaryDir folder;
    for (auto file = files.cbegin(); file != files.cend(); ++file) {
        ScratchFolder::write(folder.filePath(QStringLiteral("in/") + file.key()), file.value());
    }
    QStringList arguments{QStringLiteral("-q"), QStringLiteral("-r")};
    if (!password.isEmpty()) {
        arguments << QStringLiteral("-P") << password;
    }
    arguments << folder.filePath(QStringLiteral("out.zip")) << QStringLiteral(".");
    // Once, on a busy Wine, the tool ended without a word; it is not what is tested.
    const QString sources = folder.filePath(QStringLiteral("in"));
    bool packed = packs(sources, arguments);
    if (!packed) {
        packed = packs(sources, arguments);
    }
    if (!packed) {
        qFatal("zip failed twice");
    }
    return ScratchFolder::read(folder.filePath(QStringLiteral("out.zip")));
}

void Archives::provideExtractor(Extractor which)
{
    // Counted from here: on Wine the tests run on another drive than the build.
    const QString unzip =
        which == Extractor::Ours
            ? QCoreApplication::applicationDirPath() + QStringLiteral("/../../unzip.exe")
            : QStandardPaths::findExecutable(QStringLiteral("unzip"));
#ifdef Q_OS_WIN
    const bool provided = QFile::copy(unzip, QStringLiteral("unzip.exe"));
#else
    const bool provided = QFile::link(unzip, QStringLiteral("unzip.exe"));
#endif
    if (!provided || !QFileInfo(QStringLiteral("unzip.exe")).isExecutable()) {
        qFatal("there is no extractor: %s", qPrintable(unzip));
    }
}

void Archives::provideExtractorScript(const QByteArray &orders)
{
    (void)provideStandin(QStringLiteral("unzip"), orders);
#ifndef Q_OS_WIN
    if (!QFile::rename(QStringLiteral("unzip"), QStringLiteral("unzip.exe"))) {
        qFatal("there is an unzip.exe already");
    }
#endif
}

QString Archives::provideStandin(const QString &name, const QByteArray &orders)
{
#ifdef Q_OS_WIN
    const QString ending = QStringLiteral(".exe");
#else
    const QString ending;
#endif
    const QString original =
        QCoreApplication::applicationDirPath() + QStringLiteral("/standin") + ending;
    const QByteArray program = ScratchFolder::read(original);
    if (program.isEmpty()) {
        qFatal("there is no stand-in: %s", qPrintable(original));
    }
    ScratchFolder::write(name + ending, program + Standin::mark() + orders);
    QFile::setPermissions(name + ending, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    return QDir::current().absoluteFilePath(name + ending);
}
