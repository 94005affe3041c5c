#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

class QImage;

// Builds launcher documents, attribute by attribute, as an operator would write them.
namespace Documents
{
// One client element; without auth when that is null.
QString client(const QString &server, const QString &name, const QString &version,
               const QString &url = QStringLiteral("http://127.0.0.1:9/client.zip"),
               const QString &auth = {});
// A "homenews" or "news" element with all five attributes.
QString news(const QString &element, const QString &title, const QString &description = {},
             const QString &imageUrl = {}, const QString &clickUrl = {});
// The whole document, UTF-8, with the launcher version 1 or the one given.
QByteArray launcher(const QStringList &elements, const QString &version = QStringLiteral("1"));
// The hex SHA-1 of a code, as an auth attribute holds it.
QString sumOf(const QString &code);
// A PNG picture of one colour, and one of an image. Rule tests, which have no pictures, go without.
QByteArray png(int width, int height, unsigned int colour);
QByteArray png(const QImage &image);
} // namespace Documents
