#include "check/webpage.h"

#include <QByteArray>
#include <QRegularExpression>

bool isWebPage(const QByteArray &bytes)
{
    constexpr int enough = 512;
    static const QRegularExpression beginning(
        QStringLiteral(
            "^(\\xEF\\xBB\\xBF)?\\s*(?:<!--.*?-->\\s*)*+<(!doctype\\s+html|html|head|body)\\b"),
        QRegularExpression::CaseInsensitiveOption | QRegularExpression::DotMatchesEverythingOption);
    return beginning.match(QString::fromLatin1(bytes.left(enough))).hasMatch();
}
