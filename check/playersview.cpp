#include "check/playersview.h"

#include "base/documentlimits.h"

#include <algorithm>
#include <iterator>

namespace
{
const char *const tilePlaces[] = {"big", "medium 1", "medium 2", "small 1", "small 2", "small 3"};
static_assert(std::size(tilePlaces) == DocumentLimits::tiles, "every tile needs its place's name");
} // namespace

QString tilePlace(int index)
{
    return QLatin1String(tilePlaces[index]);
}

PlayersView playersViewOf(const DocumentContent &content)
{
    PlayersView view;
    view.connected = !content.text.isEmpty();
    view.outdated = std::any_of(content.launchers.begin(), content.launchers.end(),
                                [](const LauncherElement &element) {
                                    return element.version > DocumentLimits::launcherVersion;
                                });

    ClientInfoTable table;
    for (const ClientEntry &entry : content.clients) {
        if (entry.visible) {
            table[entry.info.server][entry.info.client] = entry.info;
        } else {
            view.hidden << entry;
        }
    }
    const QStringList servers = ServerPanel::orderedNames(table.keys());
    for (const QString &server : servers) {
        const QHash<QString, ClientInfo> clients = table.value(server);
        view.columns << PlayersView::Column{server, ServerPanel::clientButtons(clients.keys()),
                                            clients.value(QStringLiteral("Official")).version,
                                            clients.value(QStringLiteral("Beta")).version};
    }
    view.slides = content.slides.mid(0, DocumentLimits::slides);
    view.tiles = content.tiles.mid(0, DocumentLimits::tiles);
    return view;
}
