#include "check/news.h"

#include "base/documentlimits.h"
#include "base/simplemarkup.h"
#include "check/addresses.h"

#include <QRegularExpression>

namespace
{
static_assert(DocumentLimits::newsElements == 9, "the findings say nine");

struct NewsKind {
    QString name;
    const char *tooMany; // the finding's id
    int room;
    bool losesLetters; // on the way of slides through Latin-1
};

// Whether letters are lost on the way. Those that are written as the bytes of UTF-8 are not: there
// is no other way to get an accent into a slide.
bool isDamaged(const QString &arrived, const QString &written)
{
    const auto marks = [](const QString &text) {
        return text.count(QLatin1Char('?')) + text.count(QChar(QChar::ReplacementCharacter));
    };
    return marks(arrived) != marks(written);
}

void checkText(const NewsItem &item, const QString &attribute, const QString &written,
               bool losesLetters, Findings &findings)
{
    if (losesLetters && isDamaged(throughLatin1(written), written)) {
        findings << errorAt(item.place, "latin1-damage",
                            QStringLiteral("players see the %1 %2 as %3")
                                .arg(attribute, quoted(written),
                                     quoted(withoutLeadingQuestionMark(throughLatin1(written)))),
                            QStringLiteral("use plain ASCII letters in the texts of slides, or "
                                           "write each accented letter as the two of its UTF-8 "
                                           "bytes, as in \"Caf&#xC3;&#xA9;\""));
    } else if (withoutLeadingQuestionMark(written) != written) {
        findings << warningAt(
            item.place, "leading-question-mark",
            QStringLiteral("the %1 loses the \"?\" at its beginning").arg(attribute),
            QStringLiteral("begin with another character, or write \"??\""));
    }
}

// What the window does with a text that it shows.
void checkShownText(const NewsItem &item, const QString &attribute, const QString &shown,
                    Findings &findings)
{
    static const QRegularExpression tag(QStringLiteral("<[/!?]?[A-Za-z]"));
    if (!isSimpleMarkup(shown) && tag.match(shown).hasMatch()) {
        findings << warningAt(
            item.place, "markup-as-letters",
            QStringLiteral("the %1's markup is not simple: players read its tags, letter by letter")
                .arg(attribute),
            QStringLiteral("use nothing but b, i, u, s, em, strong, br, p, span, font, ul, ol and "
                           "li, well formed, with attributes that only say how letters look"));
    }
    // What forums and some editors write, and the window does not know.
    static const QRegularExpression otherMarkup(
        QStringLiteral("\\[/(b|i|u|s|url|img|color|size|font|center|quote|list)\\]|"
                       "(?<!\\w)\\*\\*[^*\\s][^*]*\\*\\*(?!\\w)|\\]\\(https?:"),
        QRegularExpression::CaseInsensitiveOption);
    const QRegularExpressionMatch found = otherMarkup.match(shown);
    if (found.hasMatch()) {
        findings << warningAt(
            item.place, "markup-as-letters",
            QStringLiteral("the %1 holds %2, which is no markup here: players "
                           "read it, letter by letter")
                .arg(attribute, quoted(found.captured())),
            QStringLiteral("leave it out, or write &lt;b&gt;, &lt;i&gt; and so on in "
                           "the document"));
    }
    if (shownPartOf(shown) != shown) {
        findings << warningAt(item.place, "text-cut",
                              QStringLiteral("players see only the first %1 characters of the %2")
                                  .arg(shownPartOf(shown).size())
                                  .arg(attribute),
                              QStringLiteral("say it in fewer words"));
    }
}

void checkItem(const NewsItem &item, const NewsKind &kind, Findings &findings)
{
    if (item.index >= kind.room) {
        findings << errorAt(item.place, kind.tooMany,
                            QStringLiteral("the window has room for %1 %2s; this one is not shown, "
                                           "but counts toward the nine that are read")
                                .arg(kind.room)
                                .arg(kind.name),
                            QStringLiteral("remove it"));
        return;
    }
    checkText(item, QStringLiteral("title"), item.title, kind.losesLetters, findings);
    checkText(item, QStringLiteral("description"), item.description, kind.losesLetters, findings);
    checkShownText(item, QStringLiteral("title"), item.shown.title, findings);
    checkShownText(item, QStringLiteral("description"), item.shown.description, findings);
    checkOptionalAddress(item.place, QStringLiteral("imageUrl"), item.shown.imageUrl,
                         QStringLiteral("there is no picture"), findings);
    checkPageAddress(item.place, QStringLiteral("clickUrl"), item.shown.clickUrl, findings);
}
} // namespace

void checkNews(const DocumentContent &content, Findings &findings)
{
    const NewsKind slide{QStringLiteral("slide"), "too-many-slides", DocumentLimits::slides, true};
    const NewsKind tile{QStringLiteral("tile"), "too-many-tiles", DocumentLimits::tiles, false};
    for (const NewsItem &item : content.slides) {
        checkItem(item, slide, findings);
    }
    for (const NewsItem &item : content.tiles) {
        checkItem(item, tile, findings);
    }
}
