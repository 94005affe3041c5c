#pragma once

#include <QByteArray>
#include <QMap>
#include <QString>

// Real client archives and the extractor that unpacks them.
namespace Archives
{
// A zip file with these contents by path, encrypted when there is a password.
QByteArray zip(const QMap<QString, QByteArray> &files, const QString &password = {});

enum class Extractor {
    Ours,
    // Another implementation behind the same call, which leaves what it could unpack. Not on
    // Windows.
    OfTheDistribution,
};

// Puts a real extractor into the working directory, as the player has it.
void provideExtractor(Extractor which = Extractor::Ours);
// Puts a stand-in there instead, which carries out these orders (standin.cpp lists them).
void provideExtractorScript(const QByteArray &orders);
// Puts such a stand-in under any name (on Windows without ".exe") beside or below the working
// directory and returns its full path.
QString provideStandin(const QString &name, const QByteArray &orders);
} // namespace Archives
