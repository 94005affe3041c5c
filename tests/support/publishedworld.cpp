#include "support/publishedworld.h"

#include "fetch/filedownloader.h"
#include "support/documents.h"
#include "window/testform.h"

#include <QSignalSpy>

PublishedWorld::PublishedWorld()
{
    TestSettings::setBaseUrl(server.url());
}

PublishedWorld::~PublishedWorld()
{
    TestSettings::setBaseUrl(QLatin1String(TestSettings::nobodyListens));
}

void PublishedWorld::publish(const QStringList &elements, const QString &version)
{
    server.serve(documentPath(), Documents::launcher(elements, version));
}

bool PublishedWorld::answered(testform &window, int limit)
{
    // Connected after the window's own slot, and so called after it.
    QSignalSpy spy(window.infoDownloader, &FileDownloader::downloaded);
    return spy.wait(limit);
}
