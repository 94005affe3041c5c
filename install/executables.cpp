#include "install/executables.h"

#include <QDir>

bool Executables::askForEngine(const QString &client)
{
    return client == QLatin1String("Beta");
}

QString Executables::any()
{
    return QStringLiteral("*.exe");
}

QString Executables::directX()
{
    return QStringLiteral("*_dx.exe");
}

QString Executables::openGl()
{
    return QStringLiteral("*_gl.exe");
}

QString Executables::firstOf(const QStringList &names, const QString &filter)
{
    QString first;
    for (const QString &name : names) {
        if (QDir::match(filter, name) && (first.isEmpty() || name.toLower() < first.toLower())) {
            first = name;
        }
    }
    return first;
}

QStringList Executables::filters(const QString &client)
{
    return askForEngine(client) ? QStringList{directX(), openGl()} : QStringList{any()};
}
