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
    enum Reason { EndOfDocument, NotXml, EnoughNews, BrokenElement };
    Reason reason = EndOfDocument;
    QString error; // the reader's words when the text is not XML
    int line = 0;
    int column = 0;
};

// Receives what the launcher document says, element by element, while it is read.
class LauncherDocumentHandler
{
public:
    LauncherDocumentHandler() = default;
    LauncherDocumentHandler(const LauncherDocumentHandler &) = delete;
    LauncherDocumentHandler &operator=(const LauncherDocumentHandler &) = delete;
    virtual ~LauncherDocumentHandler() = default;

    // Every start element, known or not, before it is looked at.
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

    // What an operator wants to know beyond what a player sees; the window does not ask.

    // Every start element that is read, before anything else is said of it; only for handlers that
    // want it, since finding an element's place costs about as much as reading it.
    virtual bool wantsElements() const { return false; }
    virtual void elementWritten(const DocumentElement &) {}
    // A client entry that the code keeps from the player.
    virtual void hiddenClient(const ClientInfo &) {}
    // Once, when reading ends.
    virtual void readingEnded(const DocumentEnd &) {}
    // Whether to look through the rest for elements that are lost behind a broken one or behind the
    // last slide or tile. Nothing but these two follows then, the error at most once.
    virtual bool wantsTheRest() const { return false; }
    virtual void elementLost(const DocumentElement &) {}
    virtual void restIsNotXml(const DocumentEnd &) {}
};

// Reads the launcher document from its decoded text. authCode is the player's authentication code.
// Ends at the end of the document, after nine slides and tiles together, at a broken element or
// where the text stops being XML; what was reported before stands.
void readLauncherDocument(const QString &text, const QString &authCode,
                          LauncherDocumentHandler &handler);

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
