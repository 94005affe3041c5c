#include "support/scratchfolder.h"

#include <QCoreApplication>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QThreadPool>

namespace
{
QStringList treeOf(const QString &root)
{
    QStringList names;
    QDirIterator entries(root,
                         QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                         QDirIterator::Subdirectories);
    while (entries.hasNext()) {
        const QString path = entries.next();
        names << QDir(root).relativeFilePath(path) +
                     (entries.fileInfo().isDir() ? QStringLiteral("/") : QString());
    }
    names.sort();
    return names;
}

const QString &installationName()
{
    static const QString name = QString::fromUtf8("Ember wake \xD0\xB8\xD0\xB3\xD1\x80\xD0\xB0");
    return name;
}
} // namespace

ScratchFolder::ScratchFolder()
    : m_previous(QDir::currentPath())
{
    if (!m_folder.isValid() || !QDir(m_folder.path()).mkdir(installationName()) ||
        !QDir::setCurrent(m_folder.filePath(installationName()))) {
        qFatal("no scratch folder: %s", qPrintable(m_folder.errorString()));
    }
}

ScratchFolder::~ScratchFolder()
{
    // The pool ends with the application, where there was one.
    if (QCoreApplication::instance() != nullptr) {
        QThreadPool::globalInstance()->waitForDone();
    }
    QDir::setCurrent(m_previous);
}

QString ScratchFolder::path() const
{
    return m_folder.filePath(installationName());
}

QString ScratchFolder::outside() const
{
    return m_folder.path();
}

void ScratchFolder::write(const QString &name, const QByteArray &content)
{
    makeFolder(QFileInfo(name).path());
    QFile file(name);
    if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size()) {
        qFatal("cannot write %s", qPrintable(name));
    }
}

QByteArray ScratchFolder::read(const QString &name)
{
    QFile file(name);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void ScratchFolder::makeFolder(const QString &name)
{
    if (!QDir::current().mkpath(name)) {
        qFatal("cannot make %s", qPrintable(name));
    }
}

QStringList ScratchFolder::tree()
{
    return treeOf(QDir::currentPath());
}

QStringList ScratchFolder::treeOutside() const
{
    QStringList names;
    const QStringList all = treeOf(m_folder.path());
    for (const QString &name : all) {
        if (!name.startsWith(installationName() + QLatin1Char('/'))) {
            names << name;
        }
    }
    return names;
}
