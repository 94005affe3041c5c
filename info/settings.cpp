#include "info/settings.h"

#include <QStringList>

#include <utility>

namespace
{
QString flagWord(bool flag)
{
    return flag ? QStringLiteral("true") : QStringLiteral("false");
}
} // namespace

Settings::Settings(QString theServer, QString theClient, bool remember, QString theAuth)
    : server(std::move(theServer))
    , client(std::move(theClient))
    , auth(std::move(theAuth))
    , rememberSettings(remember)
{
}

QString Settings::toString() const
{
    return QStringList{server, client, flagWord(rememberSettings), auth}.join(QStringLiteral(", "));
}

// kept: fields are not escaped. A "|" in a server name or code shifts the fields on reading;
// escaping it would make older launchers read the file differently.
Settings parseSettings(const QString &text)
{
    const QStringList fields = text.split(QLatin1Char('|'));
    return {fields.value(0), fields.value(1), fields.value(2) == QLatin1String("true"),
            fields.value(3)};
}

QString formatSettings(const Settings &settings)
{
    return QStringList{settings.server, settings.client, flagWord(settings.rememberSettings),
                       settings.auth}
        .join(QLatin1Char('|'));
}
