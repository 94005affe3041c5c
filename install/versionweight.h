#pragma once

#include <QString>
#include <QStringList>

// The weight by which installed versions are compared: the parts between the dots count
// 100000000, 1000000, 10000, 100 and 1, later ones nothing; a part that is no number counts 0.
qint32 versionWeight(const QString &version);

// Whether that weight is not what the parts add up to, because it does not fit into 32 bits.
bool versionWeightWraps(const QString &version);

// The name with the greatest weight above 0, the first of equals; empty when there is none.
QString greatestVersion(const QStringList &names);

// Colour word of the version label: red (nothing installed), green (current) or orange.
QString versionColour(const QString &installed, const QString &offered);
