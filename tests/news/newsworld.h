#pragma once

#include "support/documents.h"
#include "support/httpserver.h"
#include "support/publishedworld.h"
#include "window/testform.h"

#include <QColor>
#include <QLabel>
#include <QString>
#include <QStringList>

#include <array>

// A published world with three slides and six tiles: where each item is shown, what it says, and
// the servers that hand it out.
class NewsWorld : public PublishedWorld
{
public:
    struct Item {
        const char *description; // for a row's name
        bool isSlide;
        int index; // among the slides or the tiles
        const char *image;
        const char *title;
        const char *subtitle;
        const char *button; // its click area
        QRgb colour;        // of its picture
    };

    static constexpr int numItems = 9;
    static constexpr std::array<Item, numItems> items{{
        {"the first slide", true, 0, "homeNewsImageBackground", "homeNewsTitle",
         "homeNewsDescription", "btnHomeNews", 0xff102030},
        {"the second slide", true, 1, "homeNewsImageBackground2", "homeNewsTitle2",
         "homeNewsDescription2", "btnHomeNews", 0xff402030},
        {"the third slide", true, 2, "homeNewsImageBackground3", "homeNewsTitle3",
         "homeNewsDescription3", "btnHomeNews", 0xff702030},
        {"the big tile", false, 0, "newsBigBackground", "titleNewsBig", "subtitleNewsBig",
         "btnNewsBig", 0xffa02030},
        {"the first medium tile", false, 1, "newsMedium1Background", "titleNewsMedium1",
         "subtitleNewsMedium1", "btnNewsMedium1", 0xffd02030},
        {"the second medium tile", false, 2, "newsMedium2Background", "titleNewsMedium2",
         "subtitleNewsMedium2", "btnNewsMedium2", 0xff108030},
        {"the first small tile", false, 3, "newsSmall1Background", "titleNewsSmall1",
         "subtitleNewsSmall1", "btnNewsSmall1", 0xff408030},
        {"the second small tile", false, 4, "newsSmall2Background", "titleNewsSmall2",
         "subtitleNewsSmall2", "btnNewsSmall2", 0xff708030},
        {"the third small tile", false, 5, "newsSmall3Background", "titleNewsSmall3",
         "subtitleNewsSmall3", "btnNewsSmall3", 0xffa08030},
    }};

    // Serves every picture; the document is yet to be published.
    NewsWorld()
    {
        for (const Item &item : items) {
            pictures(item).serve(path(item), Documents::png(40, 30, item.colour));
        }
    }

    static const Item &itemNumber(int number) { return items[static_cast<std::size_t>(number)]; }
    // The window's own: the item, and the label of that name.
    static News &itemOf(testform &window, const Item &item)
    {
        return item.isSlide ? window.homeNews[item.index] : window.news[item.index];
    }
    static QLabel *labelOf(const testform &window, const char *name)
    {
        return window.findChild<QLabel *>(QLatin1String(name));
    }

    static QString titleOf(const Item &item) { return text("Title of ", item); }
    static QString subtitleOf(const Item &item) { return text("About ", item); }
    static QString pageOf(const Item &item)
    {
        return QStringLiteral("https://news.emberwake.test/") + QLatin1String(item.image);
    }
    static QString path(const Item &item)
    {
        return QLatin1String(item.image) + QStringLiteral(".bin");
    }
    static QString cacheFile(const Item &item)
    {
        return QLatin1String(item.image) + QStringLiteral(".png");
    }
    static QStringList cacheFiles()
    {
        QStringList names;
        for (const Item &item : items) {
            names << cacheFile(item);
        }
        return names;
    }

    HttpServer &pictures(const Item &item) { return item.isSlide ? slides : tiles; }
    QString pictureUrl(const Item &item) { return pictures(item).url(path(item)); }

    // The elements of all nine items, slides first.
    QStringList elements()
    {
        QStringList list;
        for (const Item &item : items) {
            list << Documents::news(
                item.isSlide ? QStringLiteral("homenews") : QStringLiteral("news"), titleOf(item),
                subtitleOf(item), pictureUrl(item), pageOf(item));
        }
        return list;
    }

    // Three servers: each fetch keeps its connection for a while, and one server answers only so
    // many connections at the same time.
    // "server" hands out document and logos.
    HttpServer slides;
    HttpServer tiles;

private:
    static QString text(const char *start, const Item &item)
    {
        return QLatin1String(start) + QLatin1String(item.description);
    }
};
