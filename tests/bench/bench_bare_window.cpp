// The yardstick of the launcher's start and of its rescaling: the smallest program of the toolkit
// that shows one window with the launcher's background picture, as the launcher packs it or from a
// file. Tells when that was painted, and ends: bench_bare_window [PICTURE.png [text] | pulled |
// URL]. With "text" the window also has the launcher's icon, and one text in its font. With
// "pulled" it is pulled larger and smaller again, and tells the turns of its event loop. With an
// address it fetches that, tells when it is there, and goes on until it is ended from outside.

#include "bench/measuring.h"
#include "bench/turns.h"

#include <QApplication>
#include <QFont>
#include <QIcon>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QPainter>
#include <QPixmap>
#include <QTimer>
#include <QWidget>

#include <functional>
#include <utility>

namespace
{
void tell()
{
    Measuring::report({{QStringLiteral("at"), Measuring::milliseconds()},
                       {QStringLiteral("processor"), Measuring::processorMilliseconds()},
                       {QStringLiteral("peak"), Measuring::memory("VmHWM")},
                       {QStringLiteral("anonymous"), Measuring::memory("RssAnon")}});
}

class BareWindow : public QWidget
{
public:
    BareWindow(const QString &picture, QString text)
        : QWidget(nullptr, Qt::FramelessWindowHint)
        , m_text(std::move(text))
        , m_background(picture)
    {
    }

    // Done once, when the window has been painted for the first time.
    void whenPainted(std::function<void()> work) { m_painted = std::move(work); }

protected:
    void paintEvent(QPaintEvent *) override
    {
        QPainter painter(this);
        painter.setRenderHint(QPainter::SmoothPixmapTransform);
        painter.drawPixmap(rect(), m_background);
        if (!m_text.isEmpty()) {
            painter.drawText(rect(), Qt::AlignCenter, m_text);
        }
        // In the next turn the picture has reached the screen.
        if (const auto painted = std::exchange(m_painted, nullptr)) {
            QTimer::singleShot(0, this, painted);
        }
    }

private:
    const QString m_text;
    std::function<void()> m_painted;
    const QPixmap m_background;
};
} // namespace

int main(int argc, char *argv[])
{
    Measuring::silenceConsole();
    const QApplication application(argc, argv);
    const QString argument = QCoreApplication::arguments().value(1);
    const bool hasText = QCoreApplication::arguments().value(2) == QStringLiteral("text");
    const bool hasPicture = argument.endsWith(QStringLiteral(".png"));
    const bool isPulled = argument == QStringLiteral("pulled");
    const bool fetches = !argument.isEmpty() && !hasPicture && !isPulled;
    BareWindow window(hasPicture ? argument : QStringLiteral(":/background.png"),
                      hasText ? QStringLiteral("Connecting to server...") : QString());
    Pull pull([&window](QSize size) { window.resize(size); });
    if (isPulled) {
        // As the launcher's panel: what it covers need not be painted.
        window.setAttribute(Qt::WA_OpaquePaintEvent);
        window.whenPainted([&pull] { pull.start(); });
    } else if (!fetches) {
        window.whenPainted([] {
            tell();
            Measuring::endHere();
        });
    }
    if (hasText) {
        QApplication::setWindowIcon(QIcon(QStringLiteral(":/clienticon.ico")));
        window.setFont(QFont(QStringLiteral("Lato"), 20));
    }
    window.resize(974, 571);
    window.show();
    if (fetches) {
        // Lives as long as the window, as the launcher's do.
        auto *manager = new QNetworkAccessManager(&window);
        QNetworkReply *reply = manager->get(QNetworkRequest(QUrl(argument)));
        QObject::connect(reply, &QNetworkReply::finished, reply, [reply] {
            (void)reply->readAll();
            reply->deleteLater();
            tell();
        });
    }
    return QApplication::exec();
}
