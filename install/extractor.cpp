#include "install/extractor.h"

#include "base/console.h"
#include "install/staleinput.h"

#include <QDir>
#include <QProcess>

#include <exception>

#ifdef Q_OS_UNIX
#include <unistd.h>
#endif

namespace
{
// An extractor that finds an archive encrypted asks for the password at the terminal itself, past
// the closed standard input. Without a terminal of its own it gets none and gives up.
class ExtractorProcess : public QProcess
{
public:
    using QProcess::QProcess;

protected:
#ifdef Q_OS_UNIX
    void setupChildProcess() override
    {
        (void)setsid();
    }
#endif
};

QStringList argumentsOf(const QString &archive, const QString &folder, const QString &password)
{
    QStringList arguments;
    if (!password.isEmpty()) {
        arguments << QStringLiteral("-P") << password;
    }
    return arguments << archive << QStringLiteral("-d") << folder;
}
} // namespace

void Extractor::unpack(const QString &archive, const QString &folder, QObject *parent,
                       const QString &password)
{
    try {
        const QStringList arguments = argumentsOf(archive, folder, password);
        (void)QDir::current().mkpath(folder);

        // Lives as long as its parent; without one nobody would ever delete it.
        auto *process = new ExtractorProcess(parent);
        process->start(QStringLiteral("./unzip.exe"), arguments, QIODevice::ReadWrite);
        // An extractor that asks something ("replace file?") gets end-of-file for an answer.
        // Waiting for a player who cannot see the question would freeze the window for ever.
        if (process->waitForStarted(-1)) {
            process->closeWriteChannel();
            process->waitForFinished(-1);
            StaleInput::drop();
        }
        if (parent == nullptr) {
            delete process;
        }
    } catch (const std::exception &error) {
        Console::error(QString::fromLocal8Bit(error.what()) + QLatin1Char('\n'));
    }
}
