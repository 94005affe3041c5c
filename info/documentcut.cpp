#include "info/documentcut.h"

#include "base/documentlimits.h"

#include <utility>

namespace
{
class Finder
{
public:
    explicit Finder(QString text)
        : m_text(std::move(text))
    {
    }

    DocumentCut find()
    {
        for (m_at = m_text.indexOf(QLatin1Char('<')); m_at >= 0;
             m_at = m_text.indexOf(QLatin1Char('<'), m_at)) {
            const int begin = m_at;
            const DocumentCut::Reason reason = reasonToCutHere();
            if (reason != DocumentCut::Nothing) {
                return {reason, begin};
            }
            if (m_at < 0) {
                break;
            }
        }
        return {};
    }

private:
    // Passes what stands here.
    DocumentCut::Reason reasonToCutHere()
    {
        if (++m_markup > DocumentLimits::markup) {
            return DocumentCut::Markup;
        }
        if (skipUnread()) {
            return DocumentCut::Nothing;
        }
        if (startsHere(QLatin1String("<!DOCTYPE"))) {
            return typeDeclares() ? DocumentCut::DeclaringType : DocumentCut::Nothing;
        }
        return hasTooManyAttributes() ? DocumentCut::Attributes : DocumentCut::Nothing;
    }

    bool startsHere(QLatin1String begin) const
    {
        return QStringView(m_text).mid(m_at, begin.size()) == begin;
    }

    // Passes what may hold quotes and brackets that mean nothing.
    bool skipUnread()
    {
        return skip("<!--", "-->") || skip("<![CDATA[", "]]>") || skip("<?", "?>");
    }

    bool skip(const char *begin, const char *end)
    {
        const QLatin1String first(begin);
        if (!startsHere(first)) {
            return false;
        }
        goBehind(m_text.indexOf(QLatin1String(end), m_at + first.size()),
                 static_cast<int>(qstrlen(end)));
        return true;
    }

    void goBehind(int place, int length) { m_at = place < 0 ? -1 : place + length; }

    // Passes a quoted value.
    bool skipQuoted()
    {
        const QChar letter = m_text.at(m_at);
        if (letter != QLatin1Char('"') && letter != QLatin1Char('\'')) {
            return false;
        }
        goBehind(m_text.indexOf(letter, m_at + 1), 1);
        return true;
    }

    bool isWithin() const { return m_at >= 0 && m_at < m_text.size(); }

    // The address of one that lies elsewhere, which nobody loads, may hold brackets.
    bool typeDeclares()
    {
        ++m_at;
        while (isWithin()) {
            if (skipQuoted()) {
                continue;
            }
            const QChar letter = m_text.at(m_at++);
            if (letter == QLatin1Char('[') || letter == QLatin1Char('<')) {
                return true;
            }
            if (letter == QLatin1Char('>')) {
                break;
            }
        }
        return false;
    }

    bool hasTooManyAttributes()
    {
        ++m_at;
        int count = 0;
        while (isWithin() && count <= DocumentLimits::attributes) {
            if (skipQuoted()) {
                ++count;
                continue;
            }
            const QChar letter = m_text.at(m_at);
            // No element holds another's beginning; what begins here is looked at by itself.
            if (letter == QLatin1Char('<')) {
                break;
            }
            ++m_at;
            if (letter == QLatin1Char('>')) {
                break;
            }
        }
        return count > DocumentLimits::attributes;
    }

    const QString m_text;
    int m_at = 0;
    int m_markup = 0;
};
} // namespace

DocumentCut findDocumentCut(const QString &text)
{
    return Finder(text).find();
}
