#include "support/urlcatcher.h"

#include <QDesktopServices>

namespace
{
const QStringList &schemes()
{
    static const QStringList list{QStringLiteral("http"), QStringLiteral("https"),
                                  QStringLiteral("file")};
    return list;
}
} // namespace

UrlCatcher::UrlCatcher()
{
    for (const QString &scheme : schemes()) {
        QDesktopServices::setUrlHandler(scheme, this, "open");
    }
}

UrlCatcher::~UrlCatcher()
{
    for (const QString &scheme : schemes()) {
        QDesktopServices::unsetUrlHandler(scheme);
    }
}

void UrlCatcher::open(const QUrl &url)
{
    opened << url;
}
