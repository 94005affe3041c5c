#include "info/clientinfo.h"

#include <utility>

ClientInfo::ClientInfo(QString theVersion, QString theUrl, QString theClient, QString theServer,
                       QString theAuth)
    : version(std::move(theVersion))
    , url(std::move(theUrl))
    , client(std::move(theClient))
    , server(std::move(theServer))
    , auth(std::move(theAuth))
{
}
