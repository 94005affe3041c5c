#include "install/textprogressbar.h"

#include "base/console.h"

#include <algorithm>
#include <limits>

void TextProgressBar::clear()
{
    Console::out(QStringLiteral("\n"));
    iteration = 0;
    value = 0;
    maximum = -1;
}

void TextProgressBar::update()
{
    ++iteration;
    if (maximum <= 0) {
        Console::out(movingBar());
        return;
    }
    const int percent = getProgress();
    // kept: the bar outgrows its field when more comes than was announced. There is an end to it:
    // a server may announce one byte and send a gigabyte.
    constexpr int longest = 1000;
    QString bar(std::clamp(percent / 2, 0, longest), QLatin1Char('#'));
    if (percent % 2 != 0) {
        bar += QLatin1Char('>');
    }
    Console::out(
        QStringLiteral("\r[%1] %2% %3     ")
            .arg(bar.leftJustified(50), QString::number(percent).rightJustified(3), message));
}

void TextProgressBar::setMessage(const QString &newMessage)
{
    message = newMessage;
}

QString TextProgressBar::getMessage() const
{
    if (maximum <= 0) {
        return movingBar();
    }
    return QStringLiteral("%1% %2     ")
        .arg(QString::number(getProgress()).rightJustified(3), message);
}

void TextProgressBar::setStatus(qint64 newValue, qint64 newMaximum)
{
    value = newValue;
    maximum = newMaximum;
}

int TextProgressBar::getProgress() const
{
    if (maximum <= 0) {
        return 0;
    }
    // Beyond that only a broken server announces sizes, and the product would not fit.
    constexpr qint64 largest = std::numeric_limits<qint64>::max() / 100;
    const bool fits = value >= -largest && value <= largest;
    return static_cast<int>(fits ? value * 100 / maximum
                                 : value / std::max<qint64>(maximum / 100, 1));
}

// kept: the bracketed field widens and narrows with the bar instead of keeping its width, and the
// carriage return stands in the window's text too.
QString TextProgressBar::movingBar() const
{
    const int center = iteration % 48 + 1;
    const QString before(std::max(center - 2, 0), QLatin1Char(' '));
    const QString after(center + 2, QLatin1Char(' '));
    return QStringLiteral("\r[%1###%2]      %3      ").arg(before, after, message);
}
