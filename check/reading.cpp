#include "check/reading.h"

#include "base/documentlimits.h"

#include <QHash>
#include <QRegularExpression>

#include <algorithm>

namespace
{
QString lostThings(const DocumentContent &content)
{
    QHash<QString, int> counts;
    for (const DocumentElement &element : content.lost) {
        ++counts[element.name];
    }
    QStringList words;
    for (const char *name : {"client", "homenews", "news"}) {
        if (const int count = counts.value(QLatin1String(name))) {
            words << QStringLiteral("%1 %2").arg(count).arg(QLatin1String(name));
        }
    }
    return words.join(QStringLiteral(", "));
}

Place placeOf(const DocumentElement &element)
{
    return {element.line, element.column};
}

bool hasAnyOf(const QXmlStreamAttributes &attributes, const QStringList &names)
{
    return std::any_of(attributes.begin(), attributes.end(),
                       [&names](const QXmlStreamAttribute &attribute) {
                           return names.contains(attribute.name().toString().toLower());
                       });
}

// Whether a slip of the pen made it a stranger: it says what only an element of ours says, or has
// nearly the name of one. Anything else hides nothing from players.
bool isMeantForUs(const DocumentElement &element)
{
    static const QStringList onlyOurs{QStringLiteral("auth"), QStringLiteral("imageurl"),
                                      QStringLiteral("clickurl")};
    static const QStringList ours{QStringLiteral("version"), QStringLiteral("url"),
                                  QStringLiteral("server"),  QStringLiteral("name"),
                                  QStringLiteral("title"),   QStringLiteral("description")};
    static const QRegularExpression nearly(
        QStringLiteral("launcher|cl[ie]+nt|c[li]{2}ent|home[-_]?news?|^news?$"),
        QRegularExpression::CaseInsensitiveOption);
    const QXmlStreamAttributes &attributes = element.attributes;
    const bool isClient = hasAnyOf(attributes, {QStringLiteral("version")}) &&
                          hasAnyOf(attributes, {QStringLiteral("url")});
    return isClient || hasAnyOf(attributes, onlyOurs) ||
           (nearly.match(element.name).hasMatch() && hasAnyOf(attributes, ours));
}

QString mendOfXml()
{
    return QStringLiteral("mend the text here or shortly before; in texts and addresses write "
                          "\"&amp;\" for \"&\", \"&lt;\" for \"<\" and \"&quot;\" for a quotation "
                          "mark");
}

Finding stopsBeingXml(const DocumentEnd &end)
{
    return errorAt({end.line, end.column}, "not-well-formed",
                   QStringLiteral("the text stops being XML, and what follows is lost: ") +
                       end.error,
                   mendOfXml());
}

// The same behind what is read, where it does no harm yet.
Finding restStopsBeingXml(const DocumentEnd &end)
{
    return warningAt({end.line, end.column}, "not-well-formed",
                     QStringLiteral("the text stops being XML behind what the launcher reads: ") +
                         end.error,
                     mendOfXml());
}

Finding missesAttributes(const DocumentElement &broken, const QString &lost)
{
    const QStringList missing = missingAttributes(broken.name, broken.attributes);
    return errorAt(placeOf(broken), "missing-attribute",
                   QStringLiteral("the %1 element lacks %2: it is lost")
                           .arg(broken.name, missing.join(QStringLiteral(", "))) +
                       (lost.isEmpty() ? QString()
                                       : QStringLiteral(", and so is what follows (%1)").arg(lost)),
                   missing.contains(QStringLiteral("version")) ||
                           missing.contains(QStringLiteral("url"))
                       ? QStringLiteral("add it: a client needs a version above 0 and the address "
                                        "of an archive")
                       : QStringLiteral("add the attribute, empty if need be"));
}

Finding hasTooManyAttributes(const DocumentEnd &end)
{
    return errorAt({end.line, end.column}, "too-many-attributes",
                   QStringLiteral("the element has more than %1 attributes: it is lost, and so is "
                                  "what follows")
                       .arg(DocumentLimits::attributes),
                   QStringLiteral("leave out the attributes that the launcher does not know"));
}

Finding asksForTooMuch(const DocumentEnd &end)
{
    return errorAt(
        {end.line, end.column}, "too-many-elements",
        QStringLiteral("up to here the document has more than %1 elements, %2 attributes, "
                       "%3 namespaces or %4 pieces of markup, or lies deeper than %5 elements: "
                       "what follows is lost")
            .arg(DocumentLimits::elements)
            .arg(DocumentLimits::allAttributes)
            .arg(DocumentLimits::namespaces)
            .arg(DocumentLimits::markup)
            .arg(DocumentLimits::depth),
        QStringLiteral("leave out what the launcher does not know"));
}

Finding declares(const DocumentEnd &end)
{
    return errorAt({end.line, end.column}, "document-type",
                   QStringLiteral("the document type declares something: nothing from here on is "
                                  "read"),
                   QStringLiteral("leave out what stands in brackets, or the whole <!DOCTYPE>"));
}

Finding isBehindTheNinth(const DocumentElement &first, const QString &lost)
{
    static_assert(DocumentLimits::newsElements == 9, "the finding says ninth");
    return errorAt(placeOf(first), "after-ninth-news",
                   QStringLiteral("the launcher reads no further than the ninth homenews or news "
                                  "element; lost from here on: ") +
                       lost,
                   QStringLiteral("put client elements first, and no more than nine homenews and "
                                  "news elements"));
}
} // namespace

void checkBytes(const DocumentContent &content, Findings &findings)
{
    if (content.text.isEmpty()) {
        findings << errorAt({}, "empty-document",
                            QStringLiteral("the document is empty: players stay at \"Connecting "
                                           "to server...\""),
                            QStringLiteral("publish the document"));
    }
    if (content.cutByNul) {
        findings << errorAt({content.text.count(QLatin1Char('\n')) + 1, 0}, "nul-byte",
                            QStringLiteral("a zero byte ends the document here"),
                            QStringLiteral("save the document as UTF-8, not as UTF-16"));
    }
    if (content.firstBadByte) {
        findings << errorAt(*content.firstBadByte, "not-utf8",
                            QStringLiteral("this is not UTF-8; players see a replacement mark"),
                            QStringLiteral("save the document as UTF-8, whatever its first line "
                                           "says"));
    }
}

void checkLaunchers(const DocumentContent &content, Findings &findings)
{
    for (const LauncherElement &element : content.launchers) {
        if (element.version > DocumentLimits::launcherVersion) {
            findings << warningAt(
                element.place, "newer-launcher",
                QStringLiteral("launchers up to version %1 show a warning, open the website and "
                               "end")
                    .arg(DocumentLimits::launcherVersion),
                QStringLiteral("ask for version %1 until a newer launcher can be had")
                    .arg(DocumentLimits::launcherVersion));
        }
        bool isNumber = false;
        (void)element.written.toInt(&isNumber);
        if (element.hasVersion && !isNumber) {
            findings << warningAt(
                element.place, "launcher-version",
                QStringLiteral("the launcher's version %1 is no whole number and counts as 0")
                    .arg(quoted(element.written)),
                QStringLiteral("write a whole number"));
        }
    }
}

void checkStrangers(const DocumentContent &content, Findings &findings)
{
    for (const DocumentElement &element : content.strangers) {
        const QString text =
            QStringLiteral("the launcher does not know the element %1 and skips it")
                .arg(quoted(element.name));
        if (isMeantForUs(element)) {
            findings << warningAt(
                placeOf(element), "unknown-element", text,
                QStringLiteral("write launcher, client, homenews or news, in these letters"));
        } else if (!element.attributes.isEmpty()) {
            findings << noteAt(placeOf(element), "unknown-element", text,
                               QStringLiteral("leave it as it is, if it is meant for others"));
        }
    }
}

void checkEnd(const DocumentContent &content, Findings &findings)
{
    const QString lost = lostThings(content);
    if (content.end.reason == DocumentEnd::NotXml) {
        findings << stopsBeingXml(content.end);
    } else if (content.end.reason == DocumentEnd::BrokenElement) {
        findings << missesAttributes(content.broken, lost);
    } else if (content.end.reason == DocumentEnd::TooManyAttributes) {
        findings << hasTooManyAttributes(content.end);
    } else if (content.end.reason == DocumentEnd::TooManyElements) {
        findings << asksForTooMuch(content.end);
    } else if (content.end.reason == DocumentEnd::DeclaringType) {
        findings << declares(content.end);
    } else if (content.end.reason == DocumentEnd::EnoughNews && !lost.isEmpty()) {
        findings << isBehindTheNinth(content.lost.constFirst(), lost);
    }
    if (content.restIsNotXml) {
        findings << restStopsBeingXml(*content.restIsNotXml);
    }
}
