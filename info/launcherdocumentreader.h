#pragma once

#include "info/clientinfo.h"

#include <QString>
#include <QStringList>
#include <QXmlStreamAttributes>

// The texts of one slide or tile, ready to show.
struct NewsEntry {
    QString title;
    QString description;
    QString imageUrl;
    QString clickUrl;
};

// One start element as it is written.
struct DocumentElement {
    QString name;
    QXmlStreamAttributes attributes;
    int line = 0; // of its "<", both from 1; columns are counted in characters
    int column = 0;
};

// Why and where reading ended.
struct DocumentEnd {
    enum Reason {
        EndOfDocument,
        NotXml,
        EnoughNews,
        BrokenElement,
        TooManyAttributes, // of one element
        TooManyElements,   // or attributes, or levels, of the whole document
        DeclaringType,     // a document type with declarations
    };
    Reason reason = EndOfDocument;
    QString error; // the reader's words when the text is not XML
    int line = 0;
    int column = 0;
};

// Receives what a player sees of the launcher document, element by element, while it is read.
class LauncherDocumentHandler
{
public:
    LauncherDocumentHandler() = default;
    LauncherDocumentHandler(const LauncherDocumentHandler &) = delete;
    LauncherDocumentHandler &operator=(const LauncherDocumentHandler &) = delete;
    virtual ~LauncherDocumentHandler() = default;

    // Every start element that is read, known or not, before anything else is said of it.
    virtual void elementStarted(const QString &name) = 0;
    // The newest launcher version; 0 when missing or not a number.
    virtual void launcherVersion(int version) = 0;
    // A client entry that the authentication code lets the player see.
    virtual void client(const ClientInfo &info) = 0;
    // A slide or tile; the index counts from 0 within its kind and may exceed what is shown.
    virtual void homeNews(int index, const NewsEntry &entry) = 0;
    virtual void news(int index, const NewsEntry &entry) = 0;
    // A client, or a slide or tile, lacks a required attribute; reading ends with it.
    virtual void brokenClient() = 0;
    virtual void brokenNews() = 0;
};

// Receives what an operator wants to know beyond what a player sees.
class LauncherDocumentObserver
{
public:
    LauncherDocumentObserver() = default;
    LauncherDocumentObserver(const LauncherDocumentObserver &) = delete;
    LauncherDocumentObserver &operator=(const LauncherDocumentObserver &) = delete;
    virtual ~LauncherDocumentObserver() = default;

    // The element that the handler was just told of, before it is told what the element says.
    virtual void elementWritten(const DocumentElement &element) = 0;
    // A client entry that the code keeps from the player.
    virtual void hiddenClient(const ClientInfo &info) = 0;
    // Once, when reading ends. Nothing but the two below follows.
    virtual void readingEnded(const DocumentEnd &end) = 0;
    // An element that is lost behind a broken one or behind the last slide or tile.
    virtual void elementLost(const DocumentElement &element) = 0;
    // Where the text stops being XML behind these; at most once, and last.
    virtual void restIsNotXml(const DocumentEnd &end) = 0;
};

// Reads the launcher document from its decoded text. authCode is the player's authentication code.
// Ends at the end of the document, after nine slides and tiles together, at a broken element,
// before a document type that declares anything, before an element with which the document asks for
// more than DocumentLimits allows, or where the text stops being XML; what was reported before
// stands. Without an observer nobody looks for the places of elements, which costs about as
// much as reading them, nor behind the end.
void readLauncherDocument(const QString &text, const QString &authCode,
                          LauncherDocumentHandler &handler,
                          LauncherDocumentObserver *observer = nullptr);

// The attributes without which a client element, or any other of ours, ends the reading.
QStringList missingAttributes(const QString &element, const QXmlStreamAttributes &attributes);

// The document's text from its bytes: UTF-8, up to the first NUL byte.
QString decodeLauncherDocument(const QByteArray &body);

// The text without its first character if that is "?" (only one is removed).
QString withoutLeadingQuestionMark(const QString &text);

// The damage that slide texts take: to Latin-1 and back as UTF-8.
QString throughLatin1(const QString &text);

// What an entry's auth attribute holds, in lower case, when this code unlocks it: SHA-1 in hex.
QString authCodeSum(const QString &authCode);
