#include "base/console.h"

#include <QByteArray>

#include <cstdio>

namespace
{
void write(std::FILE *stream, const QString &text)
{
    const QByteArray bytes = text.toUtf8();
    // A console that cannot be written to is no reason to disturb the player.
    (void)std::fwrite(bytes.constData(), 1, static_cast<std::size_t>(bytes.size()), stream);
    (void)std::fflush(stream);
}
} // namespace

void Console::out(const QString &text)
{
    write(stdout, text);
}

void Console::error(const QString &text)
{
    write(stderr, text);
}

QString Console::harmless(QString text)
{
    for (QChar &letter : text) {
        if (letter.category() == QChar::Other_Control) {
            letter = QLatin1Char('?');
        }
    }
    return text;
}
