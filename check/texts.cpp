#include "check/texts.h"

#include "base/documentlimits.h"
#include "base/simplemarkup.h"
#include "check/shownmarkup.h"
#include "check/textroom.h"

#include <QRegularExpression>
#include <QTextCodec>

#include <algorithm>

namespace
{
// The big one and the medium ones; the small ones have theirs beside the picture, as slides have.
constexpr int tilesWithTextsWithin = 3;

struct ShownText {
    Place place;
    QString what; // names it for the reader
    QString text;
    bool lostLetters = false; // before it was saved
    TextRoom room;
    bool onPicture = false; // otherwise on the window's own ground, which is dark
};

bool isOfOneLine(const ShownText &shown)
{
    return shown.room.height == 0;
}

void checkRoom(const ShownText &shown, const QString &read, Findings &findings)
{
    const int fits = charactersThatFit(read, shown.room);
    if (fits < read.size()) {
        const QString end = read.left(fits).right(20);
        findings << warningAt(
            shown.place, "text-clipped",
            QStringLiteral("%1 is cut off at about character %2 of %3, behind %4: its place is %5 "
                           "pixels wide")
                .arg(shown.what)
                .arg(fits + 1)
                .arg(read.size())
                .arg(quoted(end))
                .arg(shown.room.width),
            QStringLiteral("say it in fewer words"));
    }
}

// A line break written as one, and one that became a blank with those that indented the next line.
void checkLines(const ShownText &shown, const QString &read, bool isMarkup, Findings &findings)
{
    static const QRegularExpression gap(QStringLiteral("\\S([ \\t]{2,})\\S"));
    const QRegularExpressionMatch found = gap.match(read);
    if (isOfOneLine(shown) && read.trimmed().contains(QLatin1Char('\n'))) {
        findings << warningAt(shown.place, "line-break",
                              shown.what + QStringLiteral(" has a line break, and its place is one "
                                                          "line high: both lines are cut"),
                              QStringLiteral("write it as one line"));
    } else if (!isMarkup && found.hasMatch()) {
        findings << warningAt(shown.place, "line-break",
                              QStringLiteral("%1 has a gap of %2 blanks: XML makes a blank of a "
                                             "line break in an attribute, and players see all")
                                  .arg(shown.what)
                                  .arg(found.capturedLength(1)),
                              QStringLiteral("write it on one line, or \"&#10;\" for a line break "
                                             "in a slide's description"));
    }
}

bool isUtf8OfSeveralBytes(const QByteArray &bytes)
{
    QTextCodec::ConverterState state;
    const QString text =
        QTextCodec::codecForName("UTF-8")->toUnicode(bytes.constData(), bytes.size(), &state);
    return state.invalidChars == 0 && state.remainingChars == 0 && text.size() < bytes.size();
}

// What the text was before somebody took its UTF-8 for the system's encoding; empty when nobody
// has.
QString beforeTheDamage(const QString &text)
{
    static const QRegularExpression beyondAscii(QStringLiteral("[^\\x00-\\x7F]{2,}"));
    QString mended = text;
    auto runs = beyondAscii.globalMatch(text);
    while (runs.hasNext()) {
        const QString run = runs.next().captured();
        for (const char *encoding : {"windows-1252", "ISO-8859-1"}) {
            QTextCodec *codec = QTextCodec::codecForName(encoding);
            const QByteArray bytes = codec->fromUnicode(run);
            if (codec->toUnicode(bytes) == run && isUtf8OfSeveralBytes(bytes)) {
                mended.replace(run, QString::fromUtf8(bytes));
                break;
            }
        }
    }
    return mended == text ? QString() : mended;
}

void checkEncoding(const ShownText &shown, Findings &findings)
{
    const QString before = beforeTheDamage(shown.text);
    if (!before.isEmpty()) {
        findings << warningAt(
            shown.place, "wrong-encoding",
            QStringLiteral("%1 reads %2 and seems to have been %3: some program took UTF-8 for "
                           "another encoding")
                .arg(shown.what, quoted(shown.text), quoted(before)),
            QStringLiteral("write the text anew, with a program that reads and saves UTF-8"));
    } else if (shown.lostLetters) {
        findings << warningAt(shown.place, "wrong-encoding",
                              shown.what + QStringLiteral(" holds a replacement mark: a letter was "
                                                          "lost before the document was saved"),
                              QStringLiteral("write the letter anew"));
    }
}

void checkEntities(const ShownText &shown, const QString &read, Findings &findings)
{
    static const QRegularExpression entity(
        QStringLiteral("&(#[0-9]{1,6}|#[xX][0-9A-Fa-f]{1,6}|[A-Za-z][A-Za-z0-9]{1,8});"));
    const QRegularExpressionMatch found = entity.match(read);
    if (found.hasMatch()) {
        findings << warningAt(
            shown.place, "entity-as-letters",
            shown.what + QStringLiteral(" was escaped twice: players read %1, letter by letter")
                             .arg(quoted(found.captured())),
            QStringLiteral("escape it once, as in \"&amp;\" for a single \"&\""));
    }
}

void checkMarkup(const ShownText &shown, Findings &findings)
{
    const QStringList unclosed = unclosedElements(shown.text);
    if (!unclosed.isEmpty()) {
        findings << warningAt(
            shown.place, "taken-as-markup",
            shown.what +
                QStringLiteral(" has no end of %1: the window takes it for markup, and "
                               "players do not read it")
                    .arg(quoted(QLatin1Char('<') + unclosed.constFirst() + QLatin1Char('>'))),
            QStringLiteral("end the element, or write the sign in another way than \"<\""));
    }
}

void checkColours(const ShownText &shown, Findings &findings)
{
    const QString colour = darkColour(shown.text);
    if (colour.isEmpty()) {
        return;
    }
    const QString letters = shown.what + QStringLiteral(" has letters of %1").arg(quoted(colour));
    const QString mend = QStringLiteral("give them a light colour, or none");
    if (shown.onPicture) {
        findings << noteAt(shown.place, "dark-letters",
                           letters + QStringLiteral(": players read them only if the picture "
                                                    "behind them is light"),
                           mend);
    } else {
        findings << warningAt(shown.place, "dark-letters",
                              letters + QStringLiteral(", and its ground is dark: players do not "
                                                       "read them"),
                              mend);
    }
}

void checkDirection(const ShownText &shown, const QString &read, Findings &findings)
{
    // They reorder what stands behind them, and show nothing themselves.
    static const QRegularExpression sign(
        QStringLiteral("[\\x{202A}-\\x{202E}\\x{2066}-\\x{2069}]"));
    if (sign.match(read).hasMatch()) {
        findings << warningAt(shown.place, "direction",
                              shown.what + QStringLiteral(" holds an invisible sign that turns the "
                                                          "direction of what follows"),
                              QStringLiteral("leave it out"));
    }
}

void checkText(const ShownText &shown, Findings &findings)
{
    const bool isMarkup = isShownAsMarkup(shown.text);
    const QString read = isMarkup ? readFromMarkup(shown.text) : shown.text;
    checkEncoding(shown, findings);
    checkEntities(shown, isMarkup ? QString() : read, findings);
    if (isMarkup) {
        checkMarkup(shown, findings);
        checkColours(shown, findings);
    }
    checkLines(shown, read, isMarkup, findings);
    checkDirection(shown, read, findings);
    // Much longer ones have another finding.
    if (shownPartOf(shown.text) == shown.text) {
        checkRoom(shown, read, findings);
    }
}

bool holdsMark(const QString &text)
{
    return text.contains(QChar(QChar::ReplacementCharacter));
}

struct Rooms {
    TextRoom title;
    TextRoom description;
    bool onPicture = false;
};

// Marks that reading puts in the place of bad bytes have a finding of their own.
void checkItem(const NewsItem &item, const Rooms &rooms, bool marksAreWritten, Findings &findings)
{
    checkText({item.place, QStringLiteral("the title"), item.shown.title,
               marksAreWritten && holdsMark(item.title), rooms.title, rooms.onPicture},
              findings);
    checkText({item.place, QStringLiteral("the description"), item.shown.description,
               marksAreWritten && holdsMark(item.description), rooms.description, rooms.onPicture},
              findings);
}
} // namespace

void checkTexts(const DocumentContent &content, Findings &findings)
{
    const bool marksAreWritten = !content.firstBadByte;
    const QVector<NewsItem> slides = content.slides.mid(0, DocumentLimits::slides);
    for (const NewsItem &item : slides) {
        checkItem(item, {roomOfSlide(TextPart::Title), roomOfSlide(TextPart::Description)},
                  marksAreWritten, findings);
    }
    const QVector<NewsItem> tiles = content.tiles.mid(0, DocumentLimits::tiles);
    for (const NewsItem &item : tiles) {
        checkItem(item,
                  {roomOfTile(item.index, TextPart::Title),
                   roomOfTile(item.index, TextPart::Description),
                   item.index < tilesWithTextsWithin},
                  marksAreWritten, findings);
    }
}
