#include "check/textroom.h"

#include "base/documentlimits.h"

#include <algorithm>
#include <array>

namespace
{
// By how much the toolkit may draw a text narrower than it is measured here. Over several lines
// that evens out.
constexpr double tolerance = 1.04;
// Of the form's font, in letter heights.
constexpr double lineSpacing = 1.2;
// What no table has: mostly letters of other scripts, about as wide as high.
constexpr int widthOfOthers = LetterWidths::unitsOfEm;

struct RoomsOfTile {
    TextRoom title;
    TextRoom description;
};

// Where the label is wider than the tile that it lies in, the tile's edge cuts the text.
constexpr RoomsOfTile big{{500, 0, 15, LetterWidths::Regular}, {500, 0, 20, LetterWidths::Regular}};
constexpr RoomsOfTile medium{{270, 0, 13, LetterWidths::Regular},
                             {270, 0, 15, LetterWidths::Regular}};
constexpr RoomsOfTile small{{132, 0, 15, LetterWidths::Regular},
                            {132, 0, 13, LetterWidths::Regular}};
constexpr std::array<const RoomsOfTile *, DocumentLimits::tiles> tiles{&big,   &medium, &medium,
                                                                       &small, &small,  &small};

double widthOf(QChar letter, const TextRoom &room)
{
    // They stand above the letter before, or are not drawn.
    if (letter.isMark() || letter.category() == QChar::Other_Format || letter.isLowSurrogate()) {
        return 0;
    }
    const int units = LetterWidths::ofLetter(letter.unicode(), room.weight);
    return double(units == 0 ? widthOfOthers : units) * room.letterHeight / LetterWidths::unitsOfEm;
}

int charactersOfOneLine(const QString &text, const TextRoom &room)
{
    double width = 0;
    for (int i = 0; i < text.size(); ++i) {
        width += widthOf(text.at(i), room);
        if (width > room.width * tolerance) {
            return i;
        }
    }
    return text.size();
}

// Breaks lines as the toolkit does: behind a blank, or where a word is wider than the place.
int charactersOfLines(const QString &text, const TextRoom &room)
{
    const int lines = int(room.height / (room.letterHeight * lineSpacing));
    int begin = 0;
    for (int line = 0; line < lines && begin < text.size(); ++line) {
        double width = 0;
        int end = begin;
        int behindBlank = begin;
        for (; end < text.size() && text.at(end) != QLatin1Char('\n'); ++end) {
            const bool blank = text.at(end).isSpace();
            width += widthOf(text.at(end), room);
            if (!blank && width > room.width) {
                break;
            }
            behindBlank = blank ? end + 1 : behindBlank;
        }
        const bool isWhole = end == text.size() || text.at(end) == QLatin1Char('\n');
        const bool breaksWord = !isWhole && behindBlank == begin;
        begin = isWhole ? end + 1 : breaksWord ? std::max(end, begin + 1) : behindBlank;
    }
    return std::min(begin, text.size());
}
} // namespace

TextRoom roomOfSlide(TextPart part)
{
    return part == TextPart::Title ? TextRoom{339, 0, 30, LetterWidths::Bold}
                                   : TextRoom{339, 235, 15, LetterWidths::Regular};
}

TextRoom roomOfTile(int index, TextPart part)
{
    const RoomsOfTile &rooms = *tiles.at(static_cast<std::size_t>(index));
    return part == TextPart::Title ? rooms.title : rooms.description;
}

double widthOf(const QString &text, const TextRoom &room)
{
    double width = 0;
    for (const QChar letter : text) {
        width += widthOf(letter, room);
    }
    return width;
}

int charactersThatFit(const QString &text, const TextRoom &room)
{
    return room.height == 0 ? charactersOfOneLine(text, room) : charactersOfLines(text, room);
}
