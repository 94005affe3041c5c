#pragma once

#include <QString>

// The addresses fixed when the product is built (see cmake/ProductSettings.cmake). Nothing at run
// time changes them.
namespace BuildSettings
{
// Where launcher.xml and the server logos lie; ends in "/".
QString baseUrl();
QString websiteUrl();
QString discordUrl();
QString facebookUrl();
} // namespace BuildSettings
