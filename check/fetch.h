#pragma once

#include "fetch/filedownloader.h"
#include "fetch/networkaccess.h"

#include <QString>
#include <QUrl>
#include <QVector>

class QIODevice;

// What came of one request, made as the launcher makes it: redirects are not followed.
struct Fetched {
    bool arrived = false;    // whole, with a good status
    bool redirected = false; // to the target
    bool distrusted = false; // the server's certificate is no good
    bool sizeStated = false;
    QString target;
    QString error; // why it did not arrive, and of which kind that is
    enum Failure {
        Other,
        CutShort,
        Silent,
        TooMuch,
        Forbidden,
        Missing,
        ServerFault,
        NoHost,
        NobodyListens,
    } failure = Other;
};

// What one fetch took.
struct Transfer {
    QUrl url;
    qint64 bytes = 0; // that were taken
    qint64 milliseconds = 0;
    bool arrived = false;
};

// Fetches one resource after the other. Never waits for ever: not for a silent server, and not for
// one that sends without end.
class Fetcher
{
public:
    struct Limits {
        qint64 bytes = 0;
        int seconds = 0;
    };
    // As much as the launcher takes of one.
    static constexpr Limits smallThings{FileDownloader::largestBody, 120};
    static constexpr Limits archives{64LL * 1024 * 1024 * 1024, 4 * 3600};

    // Gives a fetch up after so many seconds without a byte.
    explicit Fetcher(int secondsOfSilence);

    // Waits until the body has been written to the device. The body of a redirect or of an error
    // arrives, too, as it does in the launcher.
    Fetched fetch(const QUrl &url, QIODevice &to, Limits limits);

    // All so far, in their order.
    const QVector<Transfer> &transfers() const { return m_transfers; }

private:
    NetworkAccess m_network;
    int m_secondsOfSilence;
    QVector<Transfer> m_transfers;
};
