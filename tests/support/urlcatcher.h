#pragma once

#include <QList>
#include <QObject>
#include <QUrl>

// Stands in for the desktop's opener as long as it lives: web pages and local files that the
// program asks the desktop to open are noted here instead.
class UrlCatcher : public QObject
{
    Q_OBJECT

public:
    UrlCatcher();
    ~UrlCatcher() override;

    QList<QUrl> opened;

public slots:
    void open(const QUrl &url);
};
