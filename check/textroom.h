#pragma once

#include "check/letterwidths.h"

#include <QString>

// The place that the window has for a text, at the design size.
struct TextRoom {
    int width = 0;  // pixels that are seen
    int height = 0; // of a place where the text is broken into lines; 0: there is one line
    int letterHeight = 0;
    LetterWidths::Weight weight = LetterWidths::Regular;
};

enum class TextPart { Title, Description };

// Of a slide, and of the tile with this index.
TextRoom roomOfSlide(TextPart part);
TextRoom roomOfTile(int index, TextPart part);

// How many pixels wide a text of one line is. The toolkit moves some pairs of letters together and
// rounds each to whole pixels: it may be a few in a hundred more or less.
double widthOf(const QString &text, const TextRoom &room);

// About how many characters of the text can be seen: all of them, where it fits or nearly does.
int charactersThatFit(const QString &text, const TextRoom &room);
