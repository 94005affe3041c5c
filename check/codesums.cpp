#include "check/codesums.h"

#include "info/launcherdocumentreader.h"

#include <QCryptographicHash>
#include <QStringList>
#include <QTextCodec>
#include <QVector>

#include <algorithm>

namespace
{
struct Variant {
    QByteArray bytes;
    QString words;
};

bool isSumOf(const QString &sum, const QByteArray &bytes)
{
    return QString::fromLatin1(QCryptographicHash::hash(bytes, QCryptographicHash::Sha1).toHex()) ==
           sum;
}

QByteArray encoded(const char *encoding, const QString &text)
{
    QTextCodec::ConverterState state(QTextCodec::IgnoreHeader);
    return QTextCodec::codecForName(encoding)->fromUnicode(text.constData(), text.size(), &state);
}

QString words(const QVector<Variant> &variants, const QString &sum)
{
    const auto *const found =
        std::find_if(variants.begin(), variants.end(),
                     [&sum](const Variant &variant) { return isSumOf(sum, variant.bytes); });
    return found == variants.end() ? QString() : found->words;
}

// With the ends that shells and editors put behind a text.
void addWithEnds(QVector<Variant> &variants, const QByteArray &bytes, const QString &what)
{
    const QString lineEnd = QStringLiteral(" with a line end behind it");
    variants << Variant{bytes, what} << Variant{bytes + "\n", what + lineEnd}
             << Variant{bytes + "\r\n", what + lineEnd} << Variant{bytes + "\r", what + lineEnd}
             << Variant{bytes + " ", what + QStringLiteral(" with a blank behind it")}
             << Variant{bytes + " \n", what + QStringLiteral(" with a blank and a line end")}
             << Variant{bytes + " \r\n", what + QStringLiteral(" with a blank and a line end")}
             << Variant{" " + bytes, what + QStringLiteral(" with a blank before it")}
             << Variant{"\"" + bytes + "\"", what + QStringLiteral(" in quotes")}
             << Variant{"'" + bytes + "'", what + QStringLiteral(" in quotes")}
             << Variant{"-n " + bytes + "\n", what + QStringLiteral(" behind an -n, as some echo "
                                                                    "prints it")};
}

void addInEncoding(QVector<Variant> &variants, const QByteArray &mark, const char *encoding,
                   const QString &code)
{
    const QString what = QStringLiteral("the code in ") + QLatin1String(encoding);
    for (const QString &text :
         {code, code + QLatin1Char('\n'), code + QStringLiteral("\r\n"), code + QLatin1Char(' ')}) {
        variants << Variant{mark + encoded(encoding, text), what};
    }
}
} // namespace

QString CodeSums::blankOf(const QString &sum)
{
    const QString lineEnd = QStringLiteral("a line end");
    const QString blank = QStringLiteral("a blank");
    static const QVector<Variant> variants{{"\n", lineEnd},
                                           {"\r\n", lineEnd},
                                           {"\r", lineEnd},
                                           {" ", blank},
                                           {"  ", blank},
                                           {"\t", blank},
                                           {" \n", blank},
                                           {" \r\n", blank},
                                           {"-n \n", lineEnd},
                                           {"\n\n", lineEnd},
                                           {"\"\"", QStringLiteral("a pair of quotes")},
                                           {"\xEF\xBB\xBF", QStringLiteral("a byte order mark")}};
    return words(variants, sum);
}

QString CodeSums::variantOf(const QString &sum, const QString &code)
{
    if (code.isEmpty() || sum == authCodeSum(code)) {
        return {};
    }
    QVector<Variant> variants;
    addWithEnds(variants, code.toUtf8(), QStringLiteral("the code"));
    addInEncoding(variants, "\xEF\xBB\xBF", "UTF-8", code);
    addInEncoding(variants, {}, "ISO-8859-1", code);
    addInEncoding(variants, {}, "Windows-1252", code);
    addInEncoding(variants, {}, "Windows-1251", code);
    addInEncoding(variants, {}, "UTF-16LE", code);
    addInEncoding(variants, "\xFF\xFE", "UTF-16LE", code);
    for (const QString &other : {code.toLower(), code.toUpper()}) {
        addWithEnds(variants, other.toUtf8(), QStringLiteral("the code in other letter case"));
    }
    addWithEnds(variants, code.trimmed().toUtf8(), QStringLiteral("the code without its blanks"));
    for (const auto form : {QString::NormalizationForm_C, QString::NormalizationForm_D}) {
        addWithEnds(variants, code.normalized(form).toUtf8(),
                    QStringLiteral("the code with its accents in another form"));
    }
    return words(variants, sum);
}

bool CodeSums::isGuessable(const QString &sum, const ClientInfo &info)
{
    static const QStringList tried{
        QStringLiteral("beta"),      QStringLiteral("alpha"),    QStringLiteral("test"),
        QStringLiteral("tester"),    QStringLiteral("testing"),  QStringLiteral("password"),
        QStringLiteral("secret"),    QStringLiteral("admin"),    QStringLiteral("auth"),
        QStringLiteral("emberwake"), QStringLiteral("launcher"), QStringLiteral("qwerty"),
        QStringLiteral("123"),       QStringLiteral("1234"),     QStringLiteral("12345"),
        QStringLiteral("123456"),    QStringLiteral("12345678")};
    const QStringList words =
        tried + QStringList{info.server, info.client, info.version, info.server + info.client};
    return std::any_of(words.begin(), words.end(), [&sum](const QString &word) {
        return sum == authCodeSum(word) || sum == authCodeSum(word.toLower()) ||
               sum == authCodeSum(word.toUpper());
    });
}
