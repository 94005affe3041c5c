#include "support/archives.h"

#include "support/scratchfolder.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QStandardPaths>
#include <QTemporaryDir>

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
    QProcess process;
    process.setWorkingDirectory(folder.filePath(QStringLiteral("in")));
    process.start(QStringLiteral("zip"), arguments);
    if (!process.waitForFinished() || process.exitCode() != 0) {
        qFatal("zip failed: %s", process.readAllStandardError().constData());
    }
    return ScratchFolder::read(folder.filePath(QStringLiteral("out.zip")));
}

void Archives::provideExtractor()
{
    const QString unzip = QStandardPaths::findExecutable(QStringLiteral("unzip"));
    if (unzip.isEmpty() || !QFile::link(unzip, QStringLiteral("unzip.exe"))) {
        qFatal("there is no unzip");
    }
}

void Archives::provideExtractorScript(const QByteArray &script)
{
    ScratchFolder::write(QStringLiteral("unzip.exe"), "#!/bin/sh\n" + script + "\n");
    QFile::setPermissions(QStringLiteral("unzip.exe"),
                          QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
}
