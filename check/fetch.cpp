#include "check/fetch.h"

#include "check/terminal.h"
#include "fetch/replybody.h"

#include <QElapsedTimer>
#include <QEventLoop>
#include <QIODevice>
#include <QNetworkReply>
#include <QNetworkRequest>
#include <QTimer>

namespace
{
constexpr int millisecondsPerSecond = 1000;
constexpr int pieceSize = 64 * 1024;

// Takes over what has arrived. Returns why it cannot go on, or an empty text.
QString takeBytes(ReplyBody &body, QIODevice &to, qint64 &taken, qint64 limit)
{
    QByteArray piece(pieceSize, Qt::Uninitialized);
    for (;;) {
        const qint64 count = body.read(piece.data(), piece.size());
        taken += count;
        if (taken > limit) {
            return QStringLiteral("it is longer than %1 MiB").arg(limit / 1024 / 1024);
        }
        if (to.write(piece.constData(), count) != count) {
            return QStringLiteral("it cannot be kept: ") + to.errorString();
        }
        if (body.isBroken()) {
            return QStringLiteral("what the server packed for the way cannot be unpacked");
        }
        if (count == 0) {
            return {};
        }
    }
}
// With a length or without one.
bool isCutShort(const QNetworkReply &reply, const ReplyBody &body)
{
    return reply.error() == QNetworkReply::NoError
               ? body.isCutShort()
               : reply.error() == QNetworkReply::RemoteHostClosedError &&
                     reply.attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt() < 400 &&
                     reply.attribute(QNetworkRequest::HttpStatusCodeAttribute).isValid();
}

Fetched::Failure failureOf(QNetworkReply::NetworkError error, int status)
{
    if (error == QNetworkReply::HostNotFoundError) {
        return Fetched::NoHost;
    }
    if (error == QNetworkReply::ConnectionRefusedError) {
        return Fetched::NobodyListens;
    }
    if (status == 401 || status == 403 || status == 407) {
        return Fetched::Forbidden;
    }
    if (status == 404 || status == 410) {
        return Fetched::Missing;
    }
    return status >= 500 ? Fetched::ServerFault : Fetched::Other;
}
} // namespace

Fetcher::Fetcher(int secondsOfSilence)
    : m_secondsOfSilence(secondsOfSilence)
{
    m_network.setTransferTimeout(secondsOfSilence * millisecondsPerSecond);
}

Fetched Fetcher::fetch(const QUrl &url, QIODevice &to, Limits limits)
{
    QElapsedTimer time;
    time.start();
    QNetworkReply *reply = m_network.get(QNetworkRequest(url));
    reply->setReadBufferSize(NetworkAccess::receiveBufferSize);
    ReplyBody body(reply);
    QEventLoop loop;
    QString givenUp;
    qint64 taken = 0;
    const auto take = [&] {
        const QString problem = takeBytes(body, to, taken, limits.bytes);
        if (givenUp.isEmpty() && !problem.isEmpty()) {
            givenUp = problem;
            reply->abort();
        }
    };
    QObject::connect(reply, &QNetworkReply::readyRead, &loop, take);
    QObject::connect(reply, &QNetworkReply::finished, &loop, &QEventLoop::quit);
    QObject::connect(reply, &QNetworkReply::downloadProgress, &loop,
                     [&url](qint64 received, qint64 total) {
                         Terminal::showProgress(url.toString(), received, total);
                     });
    QTimer::singleShot(limits.seconds * millisecondsPerSecond, &loop, [&] {
        givenUp = QStringLiteral("it takes longer than %1 seconds").arg(limits.seconds);
        reply->abort();
    });
    if (!reply->isFinished()) {
        loop.exec();
    }
    if (givenUp.isEmpty()) {
        take();
    }
    Terminal::clearProgress();

    Fetched result;
    const QVariant target = reply->attribute(QNetworkRequest::RedirectionTargetAttribute);
    const int status = reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    result.redirected = target.isValid();
    result.target = url.resolved(target.toUrl()).toString();
    result.distrusted = reply->error() == QNetworkReply::SslHandshakeFailedError;
    result.sizeStated = reply->header(QNetworkRequest::ContentLengthHeader).isValid();
    if (!givenUp.isEmpty()) {
        result.error = givenUp;
        result.failure = Fetched::TooMuch;
    } else if (isCutShort(*reply, body)) {
        result.error = QStringLiteral("the server closed before the end");
        result.failure = Fetched::CutShort;
    } else if (reply->error() == QNetworkReply::OperationCanceledError) {
        result.error = QStringLiteral("nothing came for %1 seconds").arg(m_secondsOfSilence);
        result.failure = Fetched::Silent;
    } else if (reply->error() != QNetworkReply::NoError) {
        result.error = status >= 400 ? QStringLiteral("the server answers %1").arg(status)
                                     : reply->errorString();
        result.failure = failureOf(reply->error(), status);
    }
    result.arrived = result.error.isEmpty() && !result.redirected;
    delete reply;
    m_transfers << Transfer{url, taken, time.elapsed(), result.arrived};
    return result;
}
