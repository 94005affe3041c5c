#pragma once

#include <QString>

// Names that are not what they look like.

// The text in small letters, with Latin ones in place of those of other scripts that look the same,
// and without what nobody sees. Two names that look alike are equal then.
QString lookOf(const QString &text);

// Whether somebody who wrote this name may have meant the other one: in other letter case, with
// letters that only look like its own, with a namespace or signs between, or with a slip of the
// fingers.
bool isAlmost(const QString &written, const QString &meant);

// The first word that has Latin letters as well as others that look like Latin ones; empty when
// there is none.
QString mixedWord(const QString &text);

// Whether a character is there that nobody sees, or a blank that is none: no-break, of no width,
// or one that turns the direction of writing.
bool holdsInvisible(const QString &text);
