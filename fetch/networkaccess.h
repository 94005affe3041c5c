#pragma once

#include <QNetworkAccessManager>

// The toolkit's network, told what it must not do by itself when a hostile host asks for it: answer
// with the player's own account, or unpack more than memory holds. On the wire its requests are the
// toolkit's own. Read bodies through a ReplyBody, which unpacks what the toolkit then does not.
class NetworkAccess : public QNetworkAccessManager
{
    Q_OBJECT

public:
    // How much the toolkit keeps of a body before it is taken over, in bytes: with this as the
    // reply's read buffer it waits then.
    static constexpr qint64 receiveBufferSize = 1024 * 1024;

    using QNetworkAccessManager::QNetworkAccessManager;

protected:
    QNetworkReply *createRequest(Operation operation, const QNetworkRequest &request,
                                 QIODevice *outgoingData) override;
};
