#include "check/news.h"

#include "base/documentlimits.h"
#include "check/addresses.h"

namespace
{
static_assert(DocumentLimits::newsElements == 9, "the findings say nine");

struct NewsKind {
    QString name;
    const char *tooMany; // the finding's id
    int room;
    bool losesLetters; // on the way of slides through Latin-1
};

void checkText(const NewsItem &item, const QString &attribute, const QString &written,
               bool losesLetters, Findings &findings)
{
    if (losesLetters && throughLatin1(written) != written) {
        findings << errorAt(item.place, "latin1-damage",
                            QStringLiteral("players see the %1 %2 as %3")
                                .arg(attribute, quoted(written),
                                     quoted(withoutLeadingQuestionMark(throughLatin1(written)))),
                            QStringLiteral("use plain ASCII letters in the texts of slides"));
    } else if (withoutLeadingQuestionMark(written) != written) {
        findings << warningAt(
            item.place, "leading-question-mark",
            QStringLiteral("the %1 loses the \"?\" at its beginning").arg(attribute),
            QStringLiteral("begin with another character, or write \"??\""));
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
    checkAddress(item.place, QStringLiteral("imageUrl"), QUrl(item.shown.imageUrl),
                 QStringLiteral("there is no picture"), findings);
    checkAddress(item.place, QStringLiteral("clickUrl"), QUrl(item.shown.clickUrl),
                 QStringLiteral("a click opens nothing"), findings);
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
