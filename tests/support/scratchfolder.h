#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

// A fresh folder that is the working directory as long as the object lives. Its name holds a blank
// and letters beyond Latin-1, as a player's folder may.
class ScratchFolder
{
public:
    ScratchFolder();
    // Waits for the thread pool (pictures are written there), leaves and removes the folder.
    ~ScratchFolder();
    ScratchFolder(const ScratchFolder &) = delete;
    ScratchFolder &operator=(const ScratchFolder &) = delete;

    // The installation folder: the working directory itself, absolute.
    QString path() const;
    // The folder around it; nothing outside the installation folder may change.
    QString outside() const;

    // Files relative to the working directory; folders are made as needed.
    static void write(const QString &name, const QByteArray &content = {});
    static QByteArray read(const QString &name);
    static void makeFolder(const QString &name);

    // Everything below the working directory, sorted, folders with a "/" at the end.
    static QStringList tree();
    // The same for the folder around it, without what lies in the installation folder.
    QStringList treeOutside() const;

private:
    QTemporaryDir m_folder;
    QString m_previous;
};
