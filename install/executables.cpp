#include "install/executables.h"

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

QStringList Executables::filters(const QString &client)
{
    return askForEngine(client) ? QStringList{directX(), openGl()} : QStringList{any()};
}
