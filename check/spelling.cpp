#include "check/spelling.h"

#include <QRegularExpression>
#include <QVector>

#include <algorithm>

namespace
{
constexpr ushort firstBeyondAscii = 0x80;

bool isInvisible(QChar letter)
{
    const QChar::Category category = letter.category();
    const bool blank = category == QChar::Separator_Space || category == QChar::Separator_Line ||
                       category == QChar::Separator_Paragraph;
    return category == QChar::Other_Format || (blank && letter != QLatin1Char(' ')) ||
           letter == QChar(0x2800) || letter == QChar(0x3164) || letter == QChar(0x115F);
}

// The small Latin letter that a small letter of another script cannot be told from.
QChar latinFor(QChar letter)
{
    static const QString others = QStringLiteral(
        "\u0430\u0435\u043E\u0440\u0441\u0443\u0445\u0456\u0458\u0455\u0501\u04BB\u0432\u043A\u043C"
        "\u043D\u0442\u0433\u051B\u051D\u04CF"
        "\u03B1\u03BF\u03C1\u03C5\u03BD\u03B9\u03BA\u03C4\u03B2\u03B5\u03B7\u03BC\u03C7\u03B3\u03B6"
        "\u0131\u0261\u0251");
    static const QString latin = QStringLiteral("aeopcyxijsdhbkmhtrqwl"
                                                "aopuvikrbehmxyz"
                                                "iga");
    Q_ASSERT(others.size() == latin.size());
    const int place = others.indexOf(letter);
    return place < 0 ? letter : latin.at(place);
}

// How many letters have to be put in, taken out, exchanged or swapped with their neighbours.
int slips(const QString &a, const QString &b)
{
    const int width = b.size() + 1;
    QVector<int> cost((a.size() + 1) * width);
    for (int i = 0; i <= a.size(); ++i) {
        for (int j = 0; j <= b.size(); ++j) {
            int &here = cost[i * width + j];
            if (i == 0 || j == 0) {
                here = i + j;
                continue;
            }
            const int exchanged = a.at(i - 1) == b.at(j - 1) ? 0 : 1;
            here = std::min({cost.at((i - 1) * width + j) + 1, cost.at(i * width + j - 1) + 1,
                             cost.at((i - 1) * width + j - 1) + exchanged});
            const bool swapped =
                i > 1 && j > 1 && a.at(i - 1) == b.at(j - 2) && a.at(i - 2) == b.at(j - 1);
            if (swapped) {
                here = std::min(here, cost.at((i - 2) * width + j - 2) + 1);
            }
        }
    }
    return cost.constLast();
}
} // namespace

QString lookOf(const QString &text)
{
    QString look;
    const QString whole = text.normalized(QString::NormalizationForm_KC).toLower();
    for (const QChar letter : whole) {
        if (!isInvisible(letter) || letter.category() == QChar::Separator_Space) {
            look +=
                letter.category() == QChar::Separator_Space ? QLatin1Char(' ') : latinFor(letter);
        }
    }
    return look.simplified();
}

bool isAlmost(const QString &written, const QString &meant)
{
    constexpr int longestSlip = 4;
    if (written == meant || written.size() > 4 * meant.size() + longestSlip) {
        return false;
    }
    QString name;
    const QString look = lookOf(written.section(QLatin1Char(':'), -1));
    std::copy_if(look.begin(), look.end(), std::back_inserter(name),
                 [](QChar letter) { return letter.isLetterOrNumber(); });
    const QString wanted = meant.toLower();
    return slips(name, wanted) <= (wanted.size() > longestSlip ? 2 : 1);
}

bool holdsInvisible(const QString &text)
{
    return std::any_of(text.begin(), text.end(), [](QChar letter) {
        return letter.unicode() >= firstBeyondAscii && isInvisible(letter);
    });
}

QString mixedWord(const QString &text)
{
    static const QRegularExpression words(QStringLiteral("[\\p{L}\\p{M}]+"),
                                          QRegularExpression::UseUnicodePropertiesOption);
    for (auto found = words.globalMatch(text); found.hasNext();) {
        QString word = found.next().captured();
        const QString small = word.toLower();
        const bool hasLatin = std::any_of(small.begin(), small.end(), [](QChar letter) {
            return letter >= QLatin1Char('a') && letter <= QLatin1Char('z');
        });
        const bool hasOthers = std::any_of(small.begin(), small.end(),
                                           [](QChar letter) { return latinFor(letter) != letter; });
        if (hasLatin && hasOthers) {
            return word;
        }
    }
    return {};
}
