#include "info/serverbutton.h"

#include "fetch/imagedownloader.h"

#include <QLabel>
#include <QPixmap>
#include <QUrl>

#include <utility>

ServerButton::ServerButton(QString serverName, QString logoUrl, QSize size)
    : imageDownloader(new ImageDownloader(QUrl(logoUrl), serverName))
    , button(new QPushButton)
    , iconSize(size)
    , name(std::move(serverName))
    , url(std::move(logoUrl))
{
    button->setFlat(true);
    connect(imageDownloader, &ImageDownloader::loadedImage, this, &ServerButton::onImageLoaded);
}

ServerButton::~ServerButton()
{
    delete button;
}

void ServerButton::load(bool fromCache)
{
    if (fromCache) {
        imageDownloader->loadBuffer();
    } else {
        imageDownloader->downloadImage();
    }
}

void ServerButton::onImageLoaded()
{
    pixmap = imageDownloader->getOriginalPixmap();
    if (button != nullptr) {
        icon.addPixmap(scaledToSize(*pixmap, iconSize, button->devicePixelRatioF()));
        button->setIcon(icon);
        button->setIconSize(iconSize);
        m_shownSize = iconSize;
    }
    if (targetLabel != nullptr) {
        // One that could not be had takes nobody's place.
        if (!pixmap->isNull()) {
            targetLabel->setPixmap(
                scaledToSize(*pixmap, targetLabel->size(), targetLabel->devicePixelRatioF()));
        }
        targetLabel = nullptr;
    }
}

void ServerButton::showAt(QSize size)
{
    if (pixmap == nullptr || button == nullptr) {
        return;
    }
    if (m_shownSize != size) {
        m_shownSize = size;
        remakeIcon();
    }
    button->setIconSize(size);
}

void ServerButton::remakeIcon()
{
    if (pixmap != nullptr && button != nullptr) {
        icon = QIcon(scaledToSize(*pixmap, m_shownSize, button->devicePixelRatioF()));
        button->setIcon(icon);
    }
}
