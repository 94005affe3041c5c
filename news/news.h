#pragma once

#include <QString>

class ImageDownloader;
class QLabel;
class QPixmap;

// One slide or tile: its texts and links, and the three labels that show it. A plain value; copies
// share the downloader and the labels, none of which the item owns.
class News
{
public:
    News() = default;
    News(QString t, QString d, QString i);
    // Also makes the downloader; throws std::invalid_argument without a picture label.
    News(QString t, QString d, QString i, QString nu, QLabel *il, QLabel *it, QLabel *ist);

    // Shows the texts and starts the picture: from its cache file, or from the network. Without a
    // picture label it says so on the console and leaves the labels alone.
    void loadNews(bool isBuffer = false);
    // The unscaled picture, owned by the downloader; null until one was loaded.
    QPixmap *getOriginalPixmap() const;
    // For diagnostics: title, description, picture URL and page URL joined by ", ".
    QString toString() const;
    void setEnableLoadBuffer(bool b);
    // Empty; the switch and the state that count are the downloader's.
    void getEnableLoadBuffer() const {}
    void isDownloaded() const {}

    QString title;
    QString description;
    QString imageUrl;
    QString newsUrl; // page opened by a click
    QLabel *imageLabel = nullptr;
    QLabel *labelTitle = nullptr;
    QLabel *labelSubtitle = nullptr;
    ImageDownloader *imageDownloader = nullptr; // belongs to the picture label
    bool fullyInitialized = false;              // the downloader exists
    bool enableLoadBuffer = false;              // nobody reads it

private:
    void createDownloader();
};
