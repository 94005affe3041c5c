#pragma once

#include <QIcon>
#include <QObject>
#include <QPointer>
#include <QPushButton>
#include <QSize>
#include <QString>

class ImageDownloader;
class QLabel;
class QPixmap;

// The logo of one server: fetches and caches the picture and shows it on a flat button. Made
// without a parent; the window takes it over.
class ServerButton : public QObject
{
public:
    // size: of the logo, in pixels. The picture's cache file is serverName + ".png" in the working
    // directory.
    ServerButton(QString serverName, QString logoUrl, QSize size);
    // Deletes the button, but not the downloader: a picture may still be on its way to it.
    ~ServerButton() override;

    // Starts the download, or shows the cached picture now if there is one.
    void load(bool fromCache);

    // The full-size logo, owned by the downloader; null before a picture arrived. A failed
    // download arrives as an empty picture.
    QPixmap *getPixmap() const { return pixmap; }
    // Owned by this object until a layout gives it a parent widget; deleted with either.
    QPushButton *getButton() const { return button; }
    // Made without a parent: whoever makes the server button gives it an owner.
    ImageDownloader *getImageDownloader() const { return imageDownloader; }

    // The label that is to get the next picture that arrives; null for none. It must live as long
    // as it is named here.
    void setTargetLabel(QLabel *label) { targetLabel = label; }

    // Shows the picture at this size in pixels; does nothing before one arrived.
    void showAt(QSize size);

    void onImageLoaded();
    // The icon anew, for a screen of another density; does nothing before a picture arrived.
    void remakeIcon();

private:
    ImageDownloader *imageDownloader;
    QPointer<QPushButton> button;
    QLabel *targetLabel = nullptr;
    QPixmap *pixmap = nullptr; // the downloader's, not a copy
    QIcon icon;
    QSize iconSize;
    QSize m_shownSize; // the icon's now
    QString name;
    QString url;
};
