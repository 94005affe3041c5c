#include "check/findingids.h"

namespace
{
const char *const ids[] = {
    "after-ninth-news",
    "archive-broken",
    "archive-damaged",
    "archive-locked",
    "archive-name-collides",
    "archive-name-refused",
    "archive-not-zip",
    "archive-open",
    "archive-refused",
    "archive-url-ends-in-slash",
    "archive-url-fragment",
    "archive-without-executable",
    "auth-not-sha1",
    "auth-of-no-code",
    "bar-in-name",
    "code-opens-nothing",
    "direction",
    "document-type",
    "dot-name",
    "duplicate-client",
    "empty-beta-button",
    "empty-document",
    "empty-server",
    "entity-as-letters",
    "forbidden-character",
    "http",
    "in-comment",
    "latin1-damage",
    "launcher-version",
    "leading-question-mark",
    "line-break",
    "long-address",
    "markup-as-letters",
    "missing-attribute",
    "newer-launcher",
    "no-size",
    "not-a-picture",
    "not-switched-off",
    "not-utf8",
    "not-well-formed",
    "nul-byte",
    "other-program",
    "picture-animated",
    "picture-cut",
    "picture-oversized",
    "picture-shape",
    "picture-too-large",
    "placeholder",
    "redirect",
    "reserved-name",
    "same-folder",
    "slash-in-name",
    "taken-as-markup",
    "text-between-elements",
    "text-clipped",
    "text-cut",
    "tls-error",
    "too-many-attributes",
    "too-many-elements",
    "too-many-servers",
    "too-many-slides",
    "too-many-tiles",
    "trailing-dot-or-blank",
    "unknown-element",
    "unknown-kind",
    "unreachable",
    "unusable-address",
    "version-equal",
    "version-lower",
    "version-negative",
    "version-parts",
    "version-wraps",
    "version-zero",
    "wrong-encoding",
};
} // namespace

const QStringList &findingIds()
{
    static const QStringList all = [] {
        QStringList list;
        for (const char *id : ids) {
            list << QLatin1String(id);
        }
        return list;
    }();
    return all;
}
