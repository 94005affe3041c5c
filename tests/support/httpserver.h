#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>

#include <memory>

// A real web server on a free port of the loopback, with faults on order. Paths are given without
// the leading slash; what was not set answers 404 with an empty body.
class HttpServer
{
public:
    HttpServer();
    // Lets go of every held answer and stops.
    ~HttpServer();
    HttpServer(const HttpServer &) = delete;
    HttpServer &operator=(const HttpServer &) = delete;

    // "http://127.0.0.1:<port>/" + path
    QString url(const QString &path = {}) const;

    void serve(const QString &path, const QByteArray &body, int status = 200);
    void redirect(const QString &path, const QString &target, const QByteArray &body = {});
    // The bytes as they are, with a Content-Encoding that tells how to unpack them.
    void serveEncoded(const QString &path, const QByteArray &body, const QByteArray &encoding);
    // Asks for credentials, once for each challenge ("Basic realm=..."), with a body.
    void serveChallenges(const QString &path, const QList<QByteArray> &challenges,
                         const QByteArray &body);
    // Without a Content-Length.
    void serveWithoutLength(const QString &path, const QByteArray &body);
    // Announces the whole body and drops the connection after so many bytes of it.
    void serveCut(const QString &path, const QByteArray &body, int bytes);
    // Sends so many bytes of the body, then waits for release().
    void serveHeld(const QString &path, const QByteArray &body, int bytes = 0);
    void release(const QString &path);
    // Adds a Content-Encoding to the answer that was set.
    void setEncoding(const QString &path, const QByteArray &encoding);
    // Announces and sends that many bytes of a repeating pattern, as fast as they are taken.
    void serveLarge(const QString &path, qint64 bytes);

    int requests(const QString &path) const;
    // The header lines of every request for it, sorted, one list for each request.
    QList<QStringList> headers(const QString &path) const;
    // Paths in the order of arrival, each with its leading slash.
    QStringList log() const;

private:
    struct Private;
    std::unique_ptr<Private> d;
};
