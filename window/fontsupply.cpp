#include "window/fontsupply.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>
#include <QFont>
#include <QFontDatabase>

QString FontSupply::shippedFolder()
{
    return QDir(QCoreApplication::applicationDirPath()).filePath(QStringLiteral("fonts"));
}

void FontSupply::provide(const QString &folder)
{
    const QString family = QStringLiteral("Lato");
    // The slides' titles ask for the bold face as if it were a family, which no system has.
    QFont::insertSubstitution(QStringLiteral("Lato Bold"), family);
    if (QFontDatabase().hasFamily(family)) {
        return;
    }
    // Bold is what a document's markup asks for.
    for (const QString &file :
         {QStringLiteral("Lato-Regular.ttf"), QStringLiteral("Lato-Bold.ttf")}) {
        const QString path = QDir(folder).filePath(file);
        if (QFileInfo(path).isFile()) {
            // Where it is refused, the substitute stays.
            (void)QFontDatabase::addApplicationFont(path);
        }
    }
}
