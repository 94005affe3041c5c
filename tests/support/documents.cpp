#include "support/documents.h"

#include <QCryptographicHash>

namespace
{
QString attribute(const char *name, const QString &value)
{
    return QStringLiteral(" %1=\"%2\"").arg(QLatin1String(name), value.toHtmlEscaped());
}
} // namespace

QString Documents::client(const QString &server, const QString &name, const QString &version,
                          const QString &url, const QString &auth)
{
    QString element = QStringLiteral("<client") + attribute("server", server) +
                      attribute("name", name) + attribute("version", version) +
                      attribute("url", url);
    if (!auth.isNull()) {
        element += attribute("auth", auth);
    }
    return element + QStringLiteral("/>");
}

QString Documents::news(const QString &element, const QString &title, const QString &description,
                        const QString &imageUrl, const QString &clickUrl)
{
    return QLatin1Char('<') + element + attribute("id", QStringLiteral("1")) +
           attribute("title", title) + attribute("description", description) +
           attribute("imageUrl", imageUrl) + attribute("clickUrl", clickUrl) + QStringLiteral("/>");
}

QByteArray Documents::launcher(const QStringList &elements, const QString &version)
{
    return (QStringLiteral("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<launcher") +
            attribute("version", version) + QStringLiteral(">\n") +
            elements.join(QLatin1Char('\n')) + QStringLiteral("\n</launcher>\n"))
        .toUtf8();
}

QString Documents::sumOf(const QString &code)
{
    return QString::fromLatin1(
        QCryptographicHash::hash(code.toUtf8(), QCryptographicHash::Sha1).toHex());
}
