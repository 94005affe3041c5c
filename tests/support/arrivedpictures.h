#pragma once

#include "fetch/imagedownloader.h"
#include "info/serverbutton.h"
#include "window/testform.h"

#include <QPixmap>

#include <algorithm>
#include <iterator>

// How many of the pictures that a document names have come to the window.
namespace ArrivedPictures
{
inline bool isThere(const QPixmap *picture)
{
    return picture != nullptr && !picture->isNull();
}

// Of the slides and tiles.
inline int news(const testform &window)
{
    const auto shown = [](const News &item) { return isThere(item.getOriginalPixmap()); };
    return int(std::count_if(std::begin(window.homeNews), std::end(window.homeNews), shown) +
               std::count_if(std::begin(window.news), std::end(window.news), shown));
}

// Of the servers.
inline int logos(const testform &window)
{
    return int(
        std::count_if(window.serverButtons.cbegin(), window.serverButtons.cend(),
                      [](const ServerButton *server) { return isThere(server->getPixmap()); }));
}

// Every slide and tile has its picture, and every server its logo.
inline bool isComplete(const testform &window)
{
    return news(window) == int(std::size(window.homeNews) + std::size(window.news)) &&
           logos(window) == window.serverButtons.size();
}
} // namespace ArrivedPictures
