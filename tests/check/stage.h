#pragma once

#include "check/deepcheck.h"
#include "check/documentcontent.h"
#include "check/fetch.h"
#include "check/rules.h"
#include "support/archives.h"
#include "support/documents.h"
#include "support/publishedworld.h"
#include "support/scratchfolder.h"
#include "ui_testform.h"
#include "window/testform.h"

#include <QLayout>
#include <QPushButton>
#include <QTest>

#include <memory>

// One document, put before the checker and before the real window. The player's folder is fresh,
// and the server has a client archive that unpacks and starts.
class Stage : public PublishedWorld
{
public:
    Stage()
    {
        Archives::provideExtractor();
        server.serve(QStringLiteral("files/client.zip"), game());
    }

    // What the checker takes for something that can be started somewhere.
    static constexpr char script[] = "#!game";

    static QByteArray game(const QString &password = {})
    {
        return Archives::zip({{QStringLiteral("game.exe"), script}}, password);
    }

    QString archive() const { return server.url(QStringLiteral("files/client.zip")); }

    // A client element; server "S", client "Official", version "1.0" and the good archive unless
    // something else is given.
    struct Client {
        QString server = QStringLiteral("S");
        QString kind = QStringLiteral("Official");
        QString version = QStringLiteral("1.0");
        QString url = {};
        QString auth = {};
    };
    QString element(const Client &client) const
    {
        return Documents::client(client.server, client.kind, client.version,
                                 client.url.isNull() ? archive() : client.url, client.auth);
    }
    QString ofServer(const QString &name) const
    {
        Client client;
        client.server = name;
        return element(client);
    }
    QString ofVersion(const QString &version) const
    {
        Client client;
        client.version = version;
        return element(client);
    }
    QString ofUrl(const QString &url) const
    {
        Client client;
        client.url = url;
        return element(client);
    }

    // Checks the document and loads it into a new window of a player with this code. False when the
    // window never dealt with it.
    bool load(const QByteArray &body, const QString &code = {})
    {
        m_content = readContent(body, code);
        m_code = code;
        m_ids = idsOf(findingsOf(m_content, m_previous ? &*m_previous : nullptr));
        server.serve(documentPath(), body);
        ScratchFolder::write(QStringLiteral("settings.txt"), "||true|" + code.toUtf8());
        window = std::make_unique<testform>();
        return answered(*window);
    }
    bool load(const QStringList &elements, const QString &code = {})
    {
        return load(Documents::launcher(elements), code);
    }
    // What players had before.
    void setPrevious(const QStringList &elements)
    {
        m_previous = readContent(Documents::launcher(elements), {});
    }

    QStringList ids() const { return m_ids; }
    bool warnedOf(const char *id) const { return m_ids.contains(QLatin1String(id)); }
    QStringList deepIds()
    {
        Fetcher fetcher(10);
        const DeepResult result = checkDeeply(m_content, server.url(), m_code, fetcher,
                                              m_previous ? &*m_previous : nullptr);
        started = result.started;
        return idsOf(result.findings);
    }
    bool deeplyWarnedOf(const char *id) { return deepIds().contains(QLatin1String(id)); }

    // The button in this row (0 is the logo) of this column of the selection panel.
    QPushButton *button(int column, int row) const
    {
        QLayout *columns = window->ui->serverButtonsGroup->layout();
        return qobject_cast<QPushButton *>(
            columns->itemAt(column)->widget()->layout()->itemAt(row)->widget());
    }

    // Puts a version into the player's folder.
    static void install(const QString &version)
    {
        ScratchFolder::write(QStringLiteral("S/Official/%1/game.exe").arg(version), "game");
    }

    // Chooses by the first column's upper button, downloads, and returns what the window says at
    // the end.
    QString download()
    {
        button(0, 1)->click();
        window->on_btnDownload_clicked();
        if (!QTest::qWaitFor([this] { return window->ui->downloadProgressBar->isHidden(); },
                             30000)) {
            return QStringLiteral("the download never ends");
        }
        return window->ui->downloadProgressText->text();
    }

    // The colour of the version label.
    QString colour() const
    {
        const QString sheet = window->ui->labelClientVersion->styleSheet();
        return sheet.section(QLatin1Char(' '), 1, 1).remove(QLatin1Char(';'));
    }
    bool offersPlay() const { return !window->ui->btnPlay->isHidden(); }

    // Whether a game lies anywhere in the player's folder.
    static bool hasGame()
    {
        return !ScratchFolder::tree().filter(QStringLiteral("game.exe")).isEmpty();
    }

    ScratchFolder folder;
    std::unique_ptr<testform> window;
    QVector<PlayersView::Started> started; // by the last deep look

private:
    static QStringList idsOf(const Findings &findings)
    {
        QStringList ids;
        for (const Finding &finding : findings) {
            ids << finding.id;
        }
        return ids;
    }

    DocumentContent m_content;
    std::optional<DocumentContent> m_previous;
    QStringList m_ids;
    QString m_code;
};
