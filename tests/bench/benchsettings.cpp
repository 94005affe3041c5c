#include "bench/benchsettings.h"

#include "window/buildsettings.h"

namespace
{
QString &currentBaseUrl()
{
    static QString url = QLatin1String(BenchSettings::nobodyListens);
    return url;
}
} // namespace

void BenchSettings::setBaseUrl(const QString &url)
{
    currentBaseUrl() = url;
}

QString BuildSettings::baseUrl()
{
    return currentBaseUrl();
}

QString BuildSettings::websiteUrl()
{
    return QStringLiteral("https://www.emberwake.test/");
}

QString BuildSettings::discordUrl()
{
    return QStringLiteral("https://chat.emberwake.test/invite");
}

QString BuildSettings::facebookUrl()
{
    return QStringLiteral("https://community.emberwake.test/page");
}
