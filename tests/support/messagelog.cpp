#include "support/messagelog.h"

#include <QMutex>

namespace
{
QMutex mutex;
QtMessageHandler previous = nullptr;

QStringList &collected()
{
    static QStringList list;
    return list;
}

void collect(QtMsgType type, const QMessageLogContext &context, const QString &text)
{
    if (type == QtFatalMsg) {
        previous(type, context, text);
    }
    const QMutexLocker lock(&mutex);
    collected() << text;
}
} // namespace

MessageLog::MessageLog()
{
    const QMutexLocker lock(&mutex);
    collected().clear();
    previous = qInstallMessageHandler(collect);
}

MessageLog::~MessageLog()
{
    qInstallMessageHandler(previous);
}

QStringList MessageLog::messages()
{
    const QMutexLocker lock(&mutex);
    return collected();
}

QStringList MessageLog::containing(const QString &text)
{
    return messages().filter(text);
}
