#pragma once

#include "fetch/filedownloader.h"
#include "fetch/imagedownloader.h"
#include "info/serverbutton.h"
#include "news/newsworld.h"
#include "support/messagelog.h"
#include "support/scratchfolder.h"
#include "support/windowdriver.h"
#include "ui_testform.h"
#include "window/testform.h"

#include <QGroupBox>
#include <QLabel>
#include <QLayout>
#include <QTest>
#include <QThreadPool>
#include <QTimer>
#include <QVector>

#include <memory>

// For tests of the whole window in a world that is broken: each test function has an installation
// folder of its own, outside of which nothing may change.
class BadInputTest : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_folder = std::make_unique<ScratchFolder>();
        m_log = std::make_unique<MessageLog>();
        ScratchFolder::write(m_folder->outside() + QStringLiteral("/precious.png"), "precious");
        m_outside = m_folder->treeOutside();
    }

    // Whatever was published: nothing outside the installation folder has changed.
    void cleanup()
    {
        QThreadPool::globalInstance()->waitForDone();
        const QStringList outside = m_folder->treeOutside();
        const QByteArray precious =
            ScratchFolder::read(m_folder->outside() + QStringLiteral("/precious.png"));
        // Ahead of the checks: one that fails returns.
        m_log.reset();
        m_folder.reset();
        QCOMPARE(outside, m_outside);
        QCOMPARE(precious, QByteArray("precious"));
    }

protected:
    static constexpr int limit = 15000; // milliseconds

    // Ways in which something published can be bad.
    enum class Fault {
        Refused,
        NotFound,
        NotFoundWithPage,
        ServerError,
        ServerErrorWithPage,
        Redirect,
        Empty,
        Text,
        NulBytes,
        HalfSent,
        ConnectionCut
    };

    static void serveFaulty(HttpServer &server, const QString &path, const QByteArray &good,
                            Fault fault)
    {
        const QByteArray page = "<html><body>out of order</body></html>";
        switch (fault) {
        case Fault::Refused: // up to who names the address
            return;
        case Fault::NotFound:
            server.serve(path, {}, 404);
            return;
        case Fault::NotFoundWithPage:
            server.serve(path, page, 404);
            return;
        case Fault::ServerError:
            server.serve(path, {}, 500);
            return;
        case Fault::ServerErrorWithPage:
            server.serve(path, page, 500);
            return;
        case Fault::Redirect:
            server.serve(QStringLiteral("target"), good);
            server.redirect(path, server.url(QStringLiteral("target")));
            return;
        case Fault::Empty:
            server.serve(path, {});
            return;
        case Fault::Text:
            server.serve(path, "this is not what you wanted");
            return;
        case Fault::NulBytes:
            server.serve(path, QByteArray(100, '\0'));
            return;
        case Fault::HalfSent:
            server.serve(path, good.left(good.size() / 2));
            return;
        case Fault::ConnectionCut:
            server.serveCut(path, good, good.size() / 2);
            return;
        }
    }

    static void addFaultRows(const QVector<QPair<const char *, Fault>> &rows)
    {
        QTest::addColumn<int>("fault");
        for (const auto &row : rows) {
            QTest::newRow(row.first) << static_cast<int>(row.second);
        }
    }

    static inline const QString alpha = QStringLiteral("Alpha");
    static inline const QString omega = QStringLiteral("Omega");

    static QStringList twoClients()
    {
        return {Documents::client(alpha, QStringLiteral("Official"), QStringLiteral("1.0")),
                Documents::client(omega, QStringLiteral("Official"), QStringLiteral("2.0"))};
    }

    static QPixmap pictureOf(const testform &window, const NewsWorld::Item &item)
    {
        return NewsWorld::labelOf(window, item.image)->pixmap(Qt::ReturnByValue);
    }

    static bool showsItsPicture(const testform &window, const NewsWorld::Item &item)
    {
        const QImage picture = pictureOf(window, item).toImage();
        return picture.size() == NewsWorld::labelOf(window, item.image)->size() &&
               picture.pixel(picture.rect().center()) == item.colour;
    }

    static int columns(const testform &window)
    {
        const QLayout *row = window.ui->serverButtonsGroup->layout();
        return row != nullptr ? row->count() : 0;
    }

    static bool hasLogo(const testform &window, const QString &server)
    {
        const QIcon icon = window.serverButtons.value(server)->getButton()->icon();
        return !icon.pixmap(16, 16).isNull();
    }

    static bool allPicturesAreAnswered(testform &window)
    {
        for (const NewsWorld::Item &item : NewsWorld::items) {
            const ImageDownloader *const downloader =
                NewsWorld::itemOf(window, item).imageDownloader;
            if (downloader == nullptr || !downloader->isDownloaded) {
                return false;
            }
        }
        for (ServerButton *server : qAsConst(window.serverButtons)) {
            if (!server->getImageDownloader()->isDownloaded) {
                return false;
            }
        }
        return QThreadPool::globalInstance()->waitForDone(limit);
    }

    static QStringList sorted(QStringList names)
    {
        names.sort();
        return names;
    }

    static QString logoPath(const QString &server) { return server + QStringLiteral(".png"); }

    // Every item but one shows its texts and its picture; that one shows its texts alone.
    void expectRestOfThePage(testform &window, int except)
    {
        for (int number = 0; number < NewsWorld::numItems; ++number) {
            const NewsWorld::Item &item = NewsWorld::itemNumber(number);
            QCOMPARE(NewsWorld::labelOf(window, item.title)->text(), NewsWorld::titleOf(item));
            QCOMPARE(NewsWorld::labelOf(window, item.subtitle)->text(),
                     NewsWorld::subtitleOf(item));
            const QByteArray cached = ScratchFolder::read(NewsWorld::cacheFile(item));
            if (number == except) {
                QVERIFY2(pictureOf(window, item).isNull(), item.image);
                QCOMPARE(cached, QByteArray());
            } else {
                QVERIFY2(showsItsPicture(window, item), item.image);
                QCOMPARE(cached, Documents::png(40, 30, item.colour));
            }
        }
        QVERIFY(window.ui->labelConnecting->isHidden());
        QVERIFY(window.ui->serverButtonsGroup->isVisible());
    }

    // A shown window whose event loop is counted: a window that hangs stops counting.
    class Session
    {
    public:
        Session()
        {
            QObject::connect(window.infoDownloader, &FileDownloader::downloaded, &m_timer,
                             [this] { ++m_answers; });
            QObject::connect(&m_timer, &QTimer::timeout, &m_timer, [this] { ++m_turns; });
            m_timer.start(0);
        }

        bool show() { return WindowDriver::show(window); }
        bool documentIsAnswered()
        {
            return QTest::qWaitFor([this] { return m_answers > 0; }, limit);
        }
        bool turnsOn()
        {
            const int before = m_turns;
            return QTest::qWaitFor([this, before] { return m_turns > before + 10; }, limit);
        }

        testform window;

    private:
        QTimer m_timer;
        int m_turns = 0;
        int m_answers = 0;
    };

    std::unique_ptr<ScratchFolder> m_folder;
    std::unique_ptr<MessageLog> m_log;
    QStringList m_outside;
};
