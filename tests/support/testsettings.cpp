#include "support/testsettings.h"

#include "base/buildsettings.h"

namespace
{
QString &currentBaseUrl()
{
    static QString url = QLatin1String(TestSettings::nobodyListens);
    return url;
}
} // namespace

void TestSettings::setBaseUrl(const QString &url)
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
