#include "check/archive.h"

#include <QCoreApplication>
#include <QDir>
#include <QProcess>
#include <QRegularExpression>
#include <QStandardPaths>

namespace
{
constexpr int longestRun = 30 * 60 * 1000; // milliseconds

struct Run {
    bool ended = false;
    int exitCode = 0;
    QString output;
    QString error;
};

Run runUnzip(const QString &unzip, const QStringList &arguments)
{
    Run run;
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    // Options that somebody keeps there would change what is printed.
    for (const char *name : {"UNZIP", "UNZIPOPT", "ZIPINFO", "ZIPINFOOPT"}) {
        environment.remove(QLatin1String(name));
    }
    process.setProcessEnvironment(environment);
    process.start(unzip, arguments);
    process.closeWriteChannel();
    run.ended = process.waitForFinished(longestRun) && process.exitStatus() == QProcess::NormalExit;
    run.exitCode = process.exitCode();
    run.output = QString::fromUtf8(process.readAllStandardOutput());
    run.error = QString::fromUtf8(process.readAllStandardError()).simplified();
    if (!run.ended) {
        run.error = process.errorString();
        process.kill();
        (void)process.waitForFinished();
    }
    return run;
}

// 1 is a warning: everything could be read.
bool isGood(const Run &run)
{
    return run.ended && run.exitCode <= 1;
}
} // namespace

QString findUnzip()
{
    const QString unzip = QStringLiteral("unzip");
    const QString beside =
        QStandardPaths::findExecutable(unzip, {QCoreApplication::applicationDirPath()});
    return beside.isEmpty() ? QStandardPaths::findExecutable(unzip) : beside;
}

Archive listArchive(const QString &unzip, const QString &file)
{
    const Run run = runUnzip(unzip, {QStringLiteral("-Z"), QStringLiteral("-s"), file});
    Archive archive;
    archive.opens = isGood(run);
    if (!archive.opens) {
        archive.error = (run.error.isEmpty() ? run.output : run.error).simplified();
        return archive;
    }
    // Mode, version, system, size, kind, method, date, time, name. A capital letter in front of the
    // kind means encrypted.
    static const QRegularExpression entry(
        QStringLiteral(
            R"(^\S.*\s\d+\.\d+\s+\S+\s+\d+\s+([tTbB])\S\s+\S+\s+\S+\s+\d\d:\d\d (.+?)\r?$)"),
        QRegularExpression::MultilineOption);
    for (auto match = entry.globalMatch(run.output); match.hasNext();) {
        const QRegularExpressionMatch found = match.next();
        const QString name = found.captured(2);
        if (!name.endsWith(QLatin1Char('/'))) {
            archive.files << name;
            archive.encryptedFiles += found.captured(1).at(0).isUpper() ? 1 : 0;
        }
    }
    return archive;
}

QString testArchive(const QString &unzip, const QString &file, const QString &password)
{
    const Run run = runUnzip(unzip, {QStringLiteral("-P"), password, QStringLiteral("-tqq"), file});
    if (isGood(run)) {
        return {};
    }
    const QString words = (run.output + QLatin1Char(' ') + run.error).simplified();
    return words.isEmpty() ? QStringLiteral("unzip ended with %1").arg(run.exitCode) : words;
}

QStringList executablesOf(const Archive &archive, const QString &filter)
{
    QStringList found;
    for (const QString &file : archive.files) {
        if (!file.contains(QLatin1Char('/')) && QDir::match(filter, file)) {
            found << file;
        }
    }
    return found;
}
