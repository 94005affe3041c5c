#include "support/httpserver.h"

#include <algorithm>
#include <condition_variable>
#include <cstdlib>
#include <httplib.h>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace
{
enum class Kind { Plain, WithoutLength, Cut, Held, Large };

struct Answer {
    Kind kind = Kind::Plain;
    int status = 200;
    std::string body;
    std::string location;
    std::size_t bytes = 0;
    std::string encoding;
    std::vector<std::string> challenges = {};
};

struct Seen {
    std::string path;
    std::vector<std::string> headers;
};

// Without what the server's library adds about the connection.
std::vector<std::string> headerLines(const httplib::Request &request)
{
    std::vector<std::string> lines;
    for (const auto &[name, value] : request.headers) {
        if (name.rfind("REMOTE_", 0) != 0 && name.rfind("LOCAL_", 0) != 0) {
            lines.push_back(name + ": " + value);
        }
    }
    std::sort(lines.begin(), lines.end());
    return lines;
}

std::string key(const QString &path)
{
    return '/' + path.toStdString();
}
} // namespace

struct HttpServer::Private {
    httplib::Server server;
    std::thread thread;
    int port = 0;

    std::mutex mutex;
    std::condition_variable released;
    std::map<std::string, Answer> answers;
    std::map<std::string, bool> open;
    std::vector<Seen> log;
    bool stopping = false;

    void set(const QString &path, Answer answer)
    {
        const std::lock_guard<std::mutex> lock(mutex);
        answers[key(path)] = std::move(answer);
        open[key(path)] = false;
    }

    void waitForRelease(const std::string &path)
    {
        std::unique_lock<std::mutex> lock(mutex);
        released.wait(lock, [this, &path] { return stopping || open[path]; });
    }

    void answer(const httplib::Request &request, httplib::Response &response)
    {
        Answer found;
        {
            const std::lock_guard<std::mutex> lock(mutex);
            log.push_back({request.path, headerLines(request)});
            const auto place = answers.find(request.path);
            if (place == answers.end()) {
                response.status = 404;
                return;
            }
            found = place->second;
        }
        response.status = found.status;
        if (!found.location.empty()) {
            response.set_header("Location", found.location);
        }
        if (!found.encoding.empty()) {
            response.set_header("Content-Encoding", found.encoding);
        }
        for (const std::string &challenge : found.challenges) {
            response.headers.emplace("WWW-Authenticate", challenge);
        }
        send(request.path, found, response);
    }

    void send(const std::string &path, const Answer &found, httplib::Response &response)
    {
        const char type[] = "application/octet-stream";
        const std::string body = found.body;
        const std::size_t limit = found.bytes;
        switch (found.kind) {
        case Kind::Plain:
            response.set_content(body, type);
            return;
        case Kind::WithoutLength:
            response.set_content_provider(
                type, [body](std::size_t offset, httplib::DataSink &sink) {
                    const std::size_t step = std::min<std::size_t>(body.size() - offset, 16384);
                    if (step > 0) {
                        sink.write(body.data() + offset, step);
                    } else {
                        sink.done();
                    }
                    return true;
                });
            return;
        case Kind::Cut:
            response.set_content_provider(
                body.size(), type,
                [body, limit](std::size_t offset, std::size_t, httplib::DataSink &sink) {
                    if (offset >= limit) {
                        return false;
                    }
                    sink.write(body.data() + offset, limit - offset);
                    return true;
                });
            return;
        case Kind::Held:
            response.set_content_provider(body.size(), type,
                                          [this, path, body, limit](std::size_t offset, std::size_t,
                                                                    httplib::DataSink &sink) {
                                              if (offset < limit) {
                                                  sink.write(body.data() + offset, limit - offset);
                                                  return true;
                                              }
                                              waitForRelease(path);
                                              sink.write(body.data() + offset,
                                                         body.size() - offset);
                                              return true;
                                          });
            return;
        case Kind::Large:
            response.set_content_provider(
                limit, type, [](std::size_t, std::size_t length, httplib::DataSink &sink) {
                    static const std::string block(1024 * 1024, 'e');
                    sink.write(block.data(), std::min(length, block.size()));
                    return true;
                });
            return;
        }
    }
};

HttpServer::HttpServer()
    : d(std::make_unique<Private>())
{
    // An answer without a length ends with its connection.
    d->server.set_keep_alive_max_count(1);
    // A held answer holds a thread, and a window asks for more than ten things at once.
    d->server.new_task_queue = [] { return new httplib::ThreadPool(64); };
    d->server.set_pre_routing_handler(
        [this](const httplib::Request &request, httplib::Response &response) {
            d->answer(request, response);
            return httplib::Server::HandlerResponse::Handled;
        });
    d->port = d->server.bind_to_any_port("127.0.0.1");
    if (d->port <= 0) {
        std::abort();
    }
    d->thread = std::thread([this] { d->server.listen_after_bind(); });
    while (!d->server.is_running()) {
        std::this_thread::yield();
    }
}

HttpServer::~HttpServer()
{
    {
        const std::lock_guard<std::mutex> lock(d->mutex);
        d->stopping = true;
    }
    d->released.notify_all();
    d->server.stop();
    d->thread.join();
}

QString HttpServer::url(const QString &path) const
{
    return QStringLiteral("http://127.0.0.1:%1/%2").arg(d->port).arg(path);
}

void HttpServer::serve(const QString &path, const QByteArray &body, int status)
{
    d->set(path, {Kind::Plain, status, body.toStdString(), {}, 0, {}});
}

void HttpServer::redirect(const QString &path, const QString &target, const QByteArray &body)
{
    d->set(path, {Kind::Plain, 302, body.toStdString(), target.toStdString(), 0, {}});
}

void HttpServer::serveEncoded(const QString &path, const QByteArray &body,
                              const QByteArray &encoding)
{
    d->set(path, {Kind::Plain, 200, body.toStdString(), {}, 0, encoding.toStdString()});
}

void HttpServer::serveChallenges(const QString &path, const QList<QByteArray> &challenges,
                                 const QByteArray &body)
{
    Answer answer{Kind::Plain, 401, body.toStdString(), {}, 0, {}, {}};
    for (const QByteArray &challenge : challenges) {
        answer.challenges.push_back(challenge.toStdString());
    }
    d->set(path, answer);
}

void HttpServer::serveWithoutLength(const QString &path, const QByteArray &body)
{
    d->set(path, {Kind::WithoutLength, 200, body.toStdString(), {}, 0, {}});
}

void HttpServer::serveCut(const QString &path, const QByteArray &body, int bytes)
{
    d->set(path, {Kind::Cut, 200, body.toStdString(), {}, static_cast<std::size_t>(bytes), {}});
}

void HttpServer::serveHeld(const QString &path, const QByteArray &body, int bytes)
{
    d->set(path, {Kind::Held, 200, body.toStdString(), {}, static_cast<std::size_t>(bytes), {}});
}

void HttpServer::serveLarge(const QString &path, qint64 bytes)
{
    d->set(path, {Kind::Large, 200, {}, {}, static_cast<std::size_t>(bytes), {}});
}

void HttpServer::release(const QString &path)
{
    {
        const std::lock_guard<std::mutex> lock(d->mutex);
        d->open[key(path)] = true;
    }
    d->released.notify_all();
}

void HttpServer::setEncoding(const QString &path, const QByteArray &encoding)
{
    const std::lock_guard<std::mutex> lock(d->mutex);
    d->answers[key(path)].encoding = encoding.toStdString();
}

int HttpServer::requests(const QString &path) const
{
    const std::lock_guard<std::mutex> lock(d->mutex);
    return static_cast<int>(
        std::count_if(d->log.begin(), d->log.end(),
                      [asked = key(path)](const Seen &seen) { return seen.path == asked; }));
}

QList<QStringList> HttpServer::headers(const QString &path) const
{
    const std::lock_guard<std::mutex> lock(d->mutex);
    QList<QStringList> requests;
    for (const Seen &seen : d->log) {
        if (seen.path == key(path)) {
            QStringList lines;
            for (const std::string &line : seen.headers) {
                lines << QString::fromStdString(line);
            }
            requests << lines;
        }
    }
    return requests;
}

QStringList HttpServer::log() const
{
    const std::lock_guard<std::mutex> lock(d->mutex);
    QStringList paths;
    for (const Seen &seen : d->log) {
        paths << QString::fromStdString(seen.path);
    }
    return paths;
}
