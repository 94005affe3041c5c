#include "base/plainname.h"

#include <QStringList>

#include <algorithm>

namespace
{
// On Windows; elsewhere as many bytes at most.
constexpr int longestName = 255;

bool isControlCharacter(QChar letter)
{
    return letter.category() == QChar::Other_Control;
}

// Windows takes the raised digits for digits.
bool isPortNumber(QChar letter)
{
    return (letter >= QLatin1Char('0') && letter <= QLatin1Char('9')) ||
           QStringLiteral("\u00B9\u00B2\u00B3").contains(letter);
}
} // namespace

bool isPlainName(const QString &name)
{
    const bool plain = !name.isEmpty() && !isDots(name) && !name.contains(QLatin1Char('/')) &&
                       !isTooLongForAName(name) && !holdsControlCharacter(name);
#ifdef Q_OS_WIN
    return plain && isPlainOnWindows(name);
#else
    return plain;
#endif
}

bool isPlainWay(const QString &path, int mostNames)
{
    const QStringList names = path.split(QLatin1Char('/'));
    return names.size() <= mostNames && std::all_of(names.begin(), names.end(), isPlainName);
}

bool isPlainOnWindows(const QString &name)
{
    return !name.contains(QLatin1Char('\\')) && !holdsLetterForbiddenOnWindows(name) &&
           !isDeviceOnWindows(name) && !isCutByWindows(name);
}

bool isDots(const QString &name)
{
    return name == QLatin1String(".") || name == QLatin1String("..");
}

bool isTooLongForAName(const QString &name)
{
    return name.size() > longestName;
}

bool holdsControlCharacter(const QString &name)
{
    return std::any_of(name.begin(), name.end(), isControlCharacter);
}

bool holdsLetterForbiddenOnWindows(const QString &name)
{
    return std::any_of(name.begin(), name.end(),
                       [](QChar letter) { return QStringLiteral("<>:\"|?*").contains(letter); });
}

bool isDeviceOnWindows(const QString &name)
{
    const QString stem = name.section(QLatin1Char('.'), 0, 0).trimmed().toUpper();
    if (stem.size() == 4 && isPortNumber(stem.at(3))) {
        return stem.startsWith(QLatin1String("COM")) || stem.startsWith(QLatin1String("LPT"));
    }
    return stem == QLatin1String("CON") || stem == QLatin1String("PRN") ||
           stem == QLatin1String("AUX") || stem == QLatin1String("NUL") ||
           stem == QLatin1String("CONIN$") || stem == QLatin1String("CONOUT$");
}

bool isCutByWindows(const QString &name)
{
    return name.endsWith(QLatin1Char('.')) || name.endsWith(QLatin1Char(' '));
}
