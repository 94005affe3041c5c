#include "news/news.h"

#include "base/console.h"
#include "base/labeltext.h"
#include "fetch/imagedownloader.h"
#include "news/tiletext.h"

#include <QLabel>
#include <QStringList>

#include <utility>

News::News(QString t, QString d, QString i)
    : title(std::move(t))
    , description(std::move(d))
    , imageUrl(std::move(i))
{
}

News::News(QString t, QString d, QString i, QString nu, QLabel *il, QLabel *it, QLabel *ist)
    : title(std::move(t))
    , description(std::move(d))
    , imageUrl(std::move(i))
    , newsUrl(std::move(nu))
    , imageLabel(il)
    , labelTitle(it)
    , labelSubtitle(ist)
{
    createDownloader();
}

void News::createDownloader()
{
    imageDownloader = new ImageDownloader(QUrl(imageUrl), imageLabel);
    // The item is copied freely and frees nothing; the label it was made for outlives its use.
    imageDownloader->setParent(imageLabel);
    fullyInitialized = true;
}

void News::loadNews(bool isBuffer)
{
    if (!fullyInitialized) {
        try {
            createDownloader();
        } catch (...) {
            Console::error(QStringLiteral("ERROR: News: variables aren't complete\n"));
            return;
        }
    }
    if (isBuffer) {
        imageDownloader->loadBuffer();
    } else {
        imageDownloader->downloadImage();
    }
    showDocumentText(*labelTitle, title);
    showDocumentText(*labelSubtitle, description);
    TileText::keepInTile(*labelTitle);
    TileText::keepInTile(*labelSubtitle);
}

QPixmap *News::getOriginalPixmap() const
{
    return imageDownloader != nullptr ? imageDownloader->getOriginalPixmap() : nullptr;
}

QString News::toString() const
{
    return QStringList{title, description, imageUrl, newsUrl}.join(QStringLiteral(", "));
}

void News::setEnableLoadBuffer(bool b)
{
    enableLoadBuffer = b;
}
