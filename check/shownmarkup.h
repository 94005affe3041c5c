#pragma once

#include <QString>
#include <QStringList>

// Whether a label shows the text as markup: by its first sign that looks like it, as the toolkit
// guesses. Of a text that the launcher lets it guess at all.
bool isShownAsMarkup(const QString &text);

// What players read of a text that is shown as markup: without tags, and with the letters that
// entities stand for. Its lines are separated by line ends.
QString readFromMarkup(const QString &text);

// The names of the text's elements that begin and do not end, in the order of the text. Paragraphs
// and items of lists need no end.
QStringList unclosedElements(const QString &text);

// The colour of letters that cannot be told from a dark ground, as the text names it; empty when
// there is none, or when the text has a ground of its own.
QString darkColour(const QString &text);
