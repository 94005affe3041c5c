// The selection panel: one column per server, and applying the player's choice.

#include "fetch/imagedownloader.h"
#include "info/panelcolumn.h"
#include "info/panelrow.h"
#include "info/serverbutton.h"
#include "info/serverpanel.h"
#include "ui_testform.h"
#include "window/testform.h"

#include <QPixmap>
#include <QSignalMapper>

namespace
{
QPushButton *makeClientButton(const QString &styleSheet)
{
    auto *button = new QPushButton;
    button->setFlat(true);
    button->setStyleSheet(styleSheet);
    // Its column places it; the sheet would give its size only where the toolkit accepts it, and
    // the placeholder's is rejected.
    button->resize(ServerPanel::clientButtonSize);
    return button;
}
} // namespace

void testform::createServerButtons()
{
    // The panel is built once. A second document would find its layout in place.
    if (ui->serverButtonsGroup->layout() != nullptr) {
        return;
    }
    auto *row = new PanelRow;
    const QStringList names = ServerPanel::shownNames(clientInfos.keys());
    const QSize logo = ServerPanel::logoSize(names.size());
    for (const QString &name : names) {
        row->addWidget(createServerColumn(name, logo), 0, Qt::AlignCenter);
    }
    ui->serverButtonsGroup->setLayout(row);
    keepKeyboardInStep();
}

// Returns the column's container, to be given a parent by the row.
QGroupBox *testform::createServerColumn(const QString &name, QSize logo)
{
    auto *server = new ServerButton(name, BASE_URL + ServerPanel::logoFileName(name), logo);
    auto *column = new PanelColumn(server);
    column->setSpacing(0);
    // The column's fixed height is that of its contents alone.
    column->setContentsMargins(0, 0, 0, 0);

    server->setParent(this);
    server->getImageDownloader()->setParent(this);
    server->load(false);
    serverButtons[name] = server;
    // A picture, though it is shown on a button.
    server->getButton()->setFocusPolicy(Qt::NoFocus);
    server->getButton()->setAccessibleName(tr("Logo of %1").arg(name));
    column->addWidget(server->getButton(), 0, Qt::AlignTop);

    addClientButtons(column, name);

    auto *container = new QGroupBox;
    container->setStyleSheet(QStringLiteral("border: 0px solid black;"));
    container->setAccessibleName(name);
    container->setLayout(column);
    container->setFixedHeight(ServerPanel::columnHeight(logo));
    return container;
}

void testform::addClientButtons(QVBoxLayout *column, const QString &server)
{
    auto *mapper = new QSignalMapper(this);
    const ServerPanel::ClientButtons buttons =
        ServerPanel::clientButtons(clientInfos.value(server).keys());

    QPushButton *official = makeClientButton(ServerPanel::officialStyleSheet());
    QPushButton *beta = makeClientButton(ServerPanel::betaStyleSheet());
    const auto connectToMapper = [mapper](QPushButton *button) {
        connect(button, &QPushButton::clicked, mapper, qOverload<>(&QSignalMapper::map));
    };
    if (buttons.official) {
        if (buttons.beta) {
            connectToMapper(beta);
        } else {
            beta->setStyleSheet(ServerPanel::placeholderStyleSheet());
        }
        connectToMapper(official);
        column->addWidget(official, 0, Qt::AlignCenter);
        column->addWidget(beta, 0, Qt::AlignCenter);
    } else {
        official->setStyleSheet(ServerPanel::placeholderStyleSheet());
        connectToMapper(beta);
        // The live button stands on top.
        column->addWidget(beta, 0, Qt::AlignCenter);
        column->addWidget(official, 0, Qt::AlignCenter);
    }

    const auto name = [this, &server](QPushButton *button, const QString &client, bool live) {
        if (live) {
            explainButton(button, server + QStringLiteral(", ") + client);
        } else {
            // An empty space: there is nothing to press.
            button->setFocusPolicy(Qt::NoFocus);
            button->setAccessibleName(tr("%1 has no %2").arg(server, client));
        }
    };
    name(official, QStringLiteral("Official"), buttons.official);
    name(beta, QStringLiteral("Beta"), buttons.beta);

    mapper->setMapping(official, ServerPanel::selectionKey(server, QStringLiteral("Official")));
    mapper->setMapping(beta, ServerPanel::selectionKey(server, QStringLiteral("Beta")));
    connect(mapper, SIGNAL(mapped(QString)), this, SLOT(onServerSelect(QString)));
}

// A rescale knows no design geometry of the columns and leaves them without size. If the panel is
// open they are placed anew in the next turn of the event loop, otherwise before it is shown.
void testform::placeServerColumnsAnew()
{
    if (QLayout *row = ui->serverButtonsGroup->layout()) {
        row->update();
    }
}

// Applies the remembered choice if the document offers it, otherwise asks for one.
void testform::applyRememberedSelection()
{
    const bool remembered = settings.rememberSettings && !settings.server.isEmpty() &&
                            !settings.client.isEmpty() &&
                            clientInfos.value(settings.server).contains(settings.client);
    if (remembered) {
        onServerSelect(ServerPanel::selectionKey(settings.server, settings.client));
    } else {
        ui->serverButtonsGroup->show();
    }
}

void testform::onServerSelect(QString args)
{
    const ServerPanel::Selection selection = ServerPanel::parseSelectionKey(args);
    // kept: a pair that is not in the table is added to it as an empty entry.
    selectedClientInfo = clientInfos[selection.server][selection.client];
    if (ui->rememberCheckBox->isChecked()) {
        settings.server = selection.server;
        settings.client = selection.client;
        settings.rememberSettings = true;
    } else {
        settings.rememberSettings = false;
    }
    writeSettings();
    serverSelectCallback();
}

void testform::serverSelectCallback()
{
    panelOpenedAgain = false;
    ui->serverButtonsGroup->hide();

    const QString installed = getInstalledVersion();
    showClientVersion(installed.isEmpty() ? selectedClientInfo.version : installed, installed);
    ui->labelServer->setStyleSheet(QStringLiteral("background-color: rgba(0,0,0,0);"));
    ui->labelServer->setAccessibleName(selectedClientInfo.server);
    showServerLogo();

    ui->downloadProgressText->clear();
    updateButtonStates(QStringLiteral("serverSelect"));
    setMenuState(0);
    offerActionToKeyboard();
}

// A logo neither downloaded nor cached leaves the label as it was, until it arrives.
void testform::showServerLogo()
{
    // Only the server that was chosen last is still waited for.
    for (ServerButton *earlier : qAsConst(serverButtons)) {
        earlier->setTargetLabel(nullptr);
    }
    ServerButton *server = serverButtons.value(selectedClientInfo.server, nullptr);
    if (server == nullptr) {
        return;
    }
    // What has arrived is newer than any file.
    server->getImageDownloader()->loadArrived();
    if (server->getPixmap() == nullptr) {
        server->load(true);
    }
    if (const QPixmap *logo = server->getPixmap()) {
        ui->labelServer->setPixmap(
            scaledToSize(*logo, ui->labelServer->size(), ui->labelServer->devicePixelRatioF()));
    }
    // A cached one too is only shown until then.
    if (!server->getImageDownloader()->isDownloaded) {
        server->setTargetLabel(ui->labelServer);
    }
}

// In the size it has, which is not always the label's.
void testform::remakeServerLogo()
{
    const QPixmap shown = ui->labelServer->pixmap(Qt::ReturnByValue);
    ServerButton *server = serverButtons.value(selectedClientInfo.server, nullptr);
    if (shown.isNull() || server == nullptr || server->getPixmap() == nullptr) {
        return;
    }
    ui->labelServer->setPixmap(scaledToSize(*server->getPixmap(),
                                            shown.size() / shown.devicePixelRatio(),
                                            ui->labelServer->devicePixelRatioF()));
}

void testform::on_btnSelectServer_clicked()
{
    // A screen reader presses it behind the first panel as well.
    panelOpenedAgain = panelOpenedAgain || ui->serverButtonsGroup->isHidden();
    ui->serverButtonsGroup->show();
}

void testform::on_rememberCheckBox_clicked()
{
    // Reaches the file with the next write.
    settings.rememberSettings = ui->rememberCheckBox->isChecked();
}
