// Stands in for a program that the launcher starts: copied under that program's name, with a list
// of orders behind its last byte, it carries them out. The same on every system, which a script
// would not be.
//
//   record FILE         how it was called: the number of arguments, then one a line
//   note FILE [TEXT]    appends a line; {archive} is the archive's name, {cwd} the working
//                       directory, {self} what it was called as
//   keep FILE           copies the archive
//   append FILE         appends the archive's bytes
//   needfolder NAME     ends with 1 unless the folder is there
//   sleep MILLISECONDS
//   talk BYTES          writes that much to standard output, and to standard error
//   drain FILE          reads its input to the end and keeps it
//   session FILE        its process and the leader of its session; Unix only
//   run PROGRAM ARGUMENT...   waits for it; operands are separated by tabs
//   exit STATUS, crash, kill  the end

#include "support/standin.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QThread>

#include <csignal>
#include <cstdio>
#include <cstdlib>

#ifdef Q_OS_WIN
#include <qt_windows.h>
#else
#include <unistd.h>
#endif

namespace
{
QByteArray contentOf(const QString &name)
{
    QFile file(name);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// Complete at once, for whoever waits until the file is there.
void write(const QString &name, const QByteArray &content)
{
    const QString unfinished = name + QStringLiteral(".part");
    QFile file(unfinished);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size()) {
        std::exit(90);
    }
    file.close();
    QFile::remove(name);
    if (!QFile::rename(unfinished, name)) {
        std::exit(91);
    }
}

void append(const QString &name, const QByteArray &content)
{
    QFile file(name);
    if (!file.open(QIODevice::Append) || file.write(content) != content.size()) {
        std::exit(92);
    }
}

// The archive among the extractor's arguments: [-P password] ARCHIVE -d FOLDER.
QString archive()
{
    const QStringList arguments = QCoreApplication::arguments();
    return arguments.value(arguments.size() - 3);
}

QByteArray linesOf(const QStringList &arguments)
{
    QByteArray lines;
    for (const QString &argument : arguments) {
        lines += argument.toUtf8() + '\n';
    }
    return lines;
}

[[noreturn]] void endHard()
{
#ifdef Q_OS_WIN
    // What another program's end of it looks like: a status that no program chooses.
    TerminateProcess(GetCurrentProcess(), 0xC000013A);
#else
    (void)raise(SIGKILL);
#endif
    std::abort();
}

[[noreturn]] void crash()
{
#ifdef Q_OS_WIN
    RaiseException(EXCEPTION_ACCESS_VIOLATION, EXCEPTION_NONCONTINUABLE, 0, nullptr);
#else
    // A sanitizer would catch it, and turn it into an exit code.
    (void)std::signal(SIGSEGV, SIG_DFL);
    (void)raise(SIGSEGV);
#endif
    std::abort();
}

void talk(int bytes)
{
    const QByteArray block(bytes, 'e');
    (void)std::fwrite(block.constData(), 1, static_cast<std::size_t>(bytes), stdout);
    (void)std::fwrite(block.constData(), 1, static_cast<std::size_t>(bytes), stderr);
    (void)std::fflush(stdout);
}

QByteArray wholeInput()
{
    QFile input;
    return input.open(stdin, QIODevice::ReadOnly) ? input.readAll() : QByteArray();
}

QString filledIn(QString text)
{
    text.replace(QStringLiteral("{archive}"), QFileInfo(archive()).fileName());
    text.replace(QStringLiteral("{cwd}"), QDir::currentPath());
    text.replace(QStringLiteral("{self}"), QCoreApplication::arguments().value(0));
    return text;
}

void carryOut(const QString &verb, const QString &operand)
{
    const QStringList arguments = QCoreApplication::arguments().mid(1);
    if (verb == QLatin1String("record")) {
        write(operand, QByteArray::number(arguments.size()) + '\n' + linesOf(arguments));
    } else if (verb == QLatin1String("note")) {
        const QString text = operand.section(QLatin1Char(' '), 1);
        append(operand.section(QLatin1Char(' '), 0, 0), filledIn(text).toUtf8() + '\n');
    } else if (verb == QLatin1String("keep")) {
        QFile::remove(operand);
        if (!QFile::copy(archive(), operand)) {
            std::exit(96);
        }
    } else if (verb == QLatin1String("append")) {
        append(operand, contentOf(archive()));
    } else if (verb == QLatin1String("needfolder")) {
        if (!QFileInfo(operand).isDir()) {
            std::exit(1);
        }
    } else if (verb == QLatin1String("sleep")) {
        QThread::msleep(operand.toULong());
    } else if (verb == QLatin1String("talk")) {
        talk(operand.toInt());
    } else if (verb == QLatin1String("drain")) {
        write(operand, wholeInput());
#ifdef Q_OS_UNIX
    } else if (verb == QLatin1String("session")) {
        write(operand, QByteArray::number(getpid()) + ' ' + QByteArray::number(getsid(0)));
#endif
    } else if (verb == QLatin1String("run")) {
        const QStringList call = operand.split(QLatin1Char('\t'));
        if (QProcess::execute(call.constFirst(), call.mid(1)) != 0) {
            std::exit(93);
        }
    } else if (verb == QLatin1String("exit")) {
        std::exit(operand.toInt());
    } else if (verb == QLatin1String("crash")) {
        crash();
    } else if (verb == QLatin1String("kill")) {
        endHard();
    } else {
        std::fprintf(stderr, "stand-in: no such order: %s\n", qPrintable(verb));
        std::exit(94);
    }
}
} // namespace

int main(int argc, char *argv[])
{
#ifdef Q_OS_WIN
    // A crash on order opens no dialog that nobody would answer.
    SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX);
#endif
    const QCoreApplication application(argc, argv);
    const QByteArray program = contentOf(QCoreApplication::applicationFilePath());
    const int start = program.lastIndexOf(Standin::mark());
    if (start < 0) {
        std::fputs("stand-in: no orders\n", stderr);
        return 95;
    }
    const QString orders = QString::fromUtf8(program.mid(start + Standin::mark().size()));
    const QStringList lines = orders.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    for (const QString &line : lines) {
        carryOut(line.section(QLatin1Char(' '), 0, 0), line.section(QLatin1Char(' '), 1));
    }
    return 0;
}
