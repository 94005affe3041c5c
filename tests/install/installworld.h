#pragma once

#include "support/archives.h"
#include "support/documents.h"
#include "support/publishedworld.h"
#include "support/scratchfolder.h"
#include "support/windowdriver.h"
#include "ui_testform.h"
#include "window/testform.h"

#include <QFile>
#include <QRegularExpression>
#include <QTest>

#include <memory>

// A player's installation folder, an operator's server and the launcher between them. The launcher
// reads its document from the server and remembers the choice of server "Alpha", so that it shows
// the action buttons as soon as the document has arrived.
class InstallWorld : public PublishedWorld
{
public:
    // Offers this version of the client kind under the address of the archive. A code locks it.
    void offer(const QString &kind, const QString &version, const QString &code = {})
    {
        m_kind = kind;
        const QString auth = code.isEmpty() ? QString() : Documents::sumOf(code);
        publish(
            {Documents::client(QStringLiteral("Alpha"), kind, version, server.url(archive), auth)});
    }

    // Installs a version of the offered kind with these files.
    void install(const QString &version, const QStringList &files = {QStringLiteral("game.exe")})
    {
        const QString place = QStringLiteral("Alpha/%1/%2").arg(m_kind, version);
        ScratchFolder::makeFolder(place);
        for (const QString &file : files) {
            ScratchFolder::write(place + QLatin1Char('/') + file, "program");
        }
    }

    // Starts the launcher and waits until it shows the choice. False when it does not come to that.
    bool start()
    {
        ScratchFolder::write(
            QStringLiteral("settings.txt"),
            QStringLiteral("Alpha|%1|true|%2").arg(m_kind, typedCode).toLocal8Bit());
        window = std::make_unique<testform>();
        return WindowDriver::show(*window) &&
               QTest::qWaitFor([this] { return window->selectedClientInfo.client == m_kind; });
    }

    // Chooses the same client once more.
    void chooseAgain() { window->onServerSelect(QStringLiteral("Alpha|") + m_kind); }

    // Visible buttons by name, each with "-" behind it when it is disabled.
    QString buttons() const
    {
        QStringList names;
        const QWidget *const all[] = {window->ui->btnDownload, window->ui->btnUpdate,
                                      window->ui->btnPlay, window->ui->btnPlay_2};
        for (const QWidget *button : all) {
            if (!button->isHidden()) {
                names << button->objectName().mid(3) +
                             (button->isEnabled() ? QString() : QStringLiteral("-"));
            }
        }
        return names.join(QLatin1Char(' '));
    }

    QString progressText() const { return window->ui->downloadProgressText->text(); }

    QString versionSheet() const { return window->ui->labelClientVersion->styleSheet(); }
    QString versionText() const { return window->ui->labelClientVersion->text(); }

    // Waits until the progress bar is gone.
    bool waitForTheEnd() const
    {
        return QTest::qWaitFor([this] { return window->ui->downloadProgressBar->isHidden(); },
                               30000);
    }

    // What lies below the server's folder.
    static QStringList clients()
    {
        return ScratchFolder::tree().filter(QRegularExpression(QStringLiteral("^Alpha/.")));
    }
    // The archives and whatever is named like one, in the installation folder itself.
    static QStringList archives()
    {
        return ScratchFolder::tree().filter(QRegularExpression(QStringLiteral("^[^/]*\\.zip/?$")));
    }

    ScratchFolder folder;
    QString archive = QStringLiteral("files/client.zip"); // its path on the server
    QString typedCode;                                    // the player's authentication code
    std::unique_ptr<testform> window;

private:
    QString m_kind;
};
