#include "fetch/networkaccess.h"

#include <QNetworkRequest>

QNetworkReply *NetworkAccess::createRequest(Operation operation, const QNetworkRequest &request,
                                            QIODevice *outgoingData)
{
    QNetworkRequest guarded(request);
    // What the toolkit sends in any case. Said here, it leaves the unpacking to us: by itself it
    // unpacks all that the system has received, before anybody can say that it is enough. Four
    // megabytes of zeros took four gigabytes of memory.
    guarded.setRawHeader("Accept-Encoding", "gzip, deflate");
    // On Windows the toolkit answers the challenge of any host with the account of the player who
    // is logged in; elsewhere with the tickets of one. An address with a name of its own is let
    // through: it may be what its operator protected an archive with.
    if (request.url().userInfo().isEmpty()) {
        guarded.setAttribute(QNetworkRequest::AuthenticationReuseAttribute,
                             QNetworkRequest::Manual);
    }
    return QNetworkAccessManager::createRequest(operation, guarded, outgoingData);
}
