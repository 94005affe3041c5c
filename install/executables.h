#pragma once

#include <QString>
#include <QStringList>

// Which file of an installed client Play starts: the first that matches a name filter.
namespace Executables
{
// Whether Play asks for the graphics engine first.
bool askForEngine(const QString &client);

QString any();
QString directX();
QString openGl();

// The one that Play starts of what lies in the client's folder, in the order in which the folder is
// listed: by name, whatever the case. Empty when there is none.
QString firstOf(const QStringList &names, const QString &filter);

// All filters that Play may look with for a client of this kind; each must find something.
QStringList filters(const QString &client);
} // namespace Executables
