#pragma once

#include <QByteArray>
#include <QMap>
#include <QString>

// Client archives and extractors, made with the distribution's own zip and unzip.
namespace Archives
{
// A zip archive with these files, encrypted when a password is given.
QByteArray zip(const QMap<QString, QByteArray> &files, const QString &password = {});

// Puts the distribution's unzip into the working directory as "unzip.exe".
void provideExtractor();
// Puts a shell script there instead.
void provideExtractorScript(const QByteArray &script);
} // namespace Archives
