// Unpacking a client archive with the external extractor.

#include "info/console.h"
#include "window/testform.h"

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
class Extractor : public QProcess
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
} // namespace

bool testform::unzip2Folder(QString file, QString folder, QObject *parent, QString password)
{
    try {
        QStringList arguments;
        if (!password.isEmpty()) {
            arguments << QStringLiteral("-P") << password;
        }
        arguments << file << QStringLiteral("-d") << folder;

        (void)QDir::current().mkpath(folder);

        // Lives as long as its parent; without one nobody would ever delete it.
        auto *extractor = new Extractor(parent);
        extractor->start(QStringLiteral("./unzip.exe"), arguments, QIODevice::ReadWrite);
        // An extractor that asks something ("replace file?") gets end-of-file for an answer.
        // Waiting for a player who cannot see the question would freeze the window for ever.
        if (extractor->waitForStarted(-1)) {
            extractor->closeWriteChannel();
            extractor->waitForFinished(-1);
        }
        if (parent == nullptr) {
            delete extractor;
        }
    } catch (const std::exception &error) {
        Console::error(QString::fromLocal8Bit(error.what()) + QLatin1Char('\n'));
    }
    // kept: how the extractor ended is not examined; callers judge by what lies on the disk.
    return true;
}
