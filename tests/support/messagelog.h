#pragma once

#include <QStringList>

// Collects the toolkit's own messages (warnings and the like) as long as it lives.
class MessageLog
{
public:
    MessageLog();
    ~MessageLog();
    MessageLog(const MessageLog &) = delete;
    MessageLog &operator=(const MessageLog &) = delete;

    static QStringList messages();
    // Those that contain the text.
    static QStringList containing(const QString &text);
};
