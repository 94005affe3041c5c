#include "check/archive.h"

#include "extract/verdict.h"

#include <QCryptographicHash>
#include <QFile>
#include <QRegularExpression>

namespace
{
const char pointerBegin[] = "version https://git-lfs.";

bool isProgramAtTheTop(const QString &name)
{
    return !name.contains(QLatin1Char('/')) &&
           name.endsWith(QLatin1String(".exe"), Qt::CaseInsensitive);
}

void takeKind(Archive &archive, const QString &name)
{
    static const QRegularExpression save(
        QStringLiteral(
            "(^|/)(save|saves|saved|savegames?|saved games|screenshots)/|\\.(sav|save)$"),
        QRegularExpression::CaseInsensitiveOption);
    static const QRegularExpression stray(
        QStringLiteral("(^|/)(__MACOSX|\\.git|\\.svn|\\.hg)/|(^|/)(\\.DS_Store|Thumbs\\.db|"
                       "desktop\\.ini)$|\\.pdb$"),
        QRegularExpression::CaseInsensitiveOption);
    if (save.match(name).hasMatch()) {
        archive.saves << name;
    } else if (stray.match(name).hasMatch()) {
        archive.strays << name;
    }
}

QByteArray sumOf(const QString &fileName)
{
    QFile file(fileName);
    QCryptographicHash sum(QCryptographicHash::Sha256);
    return file.open(QIODevice::ReadOnly) && sum.addData(&file) ? sum.result() : QByteArray();
}

QString wordsOf(const Extract::Verdict &verdict)
{
    const QString member = QString::fromStdString(verdict.member);
    const QString reason = QString::fromStdString(verdict.reason);
    return member.isEmpty() ? reason : member + QStringLiteral(": ") + reason;
}

void take(Archive &archive, const Extract::JudgedMember &member)
{
    const QString name = QString::fromStdString(member.name);
    archive.files += member.folder ? 0 : 1;
    archive.encryptedFiles += !member.folder && member.encrypted ? 1 : 0;
    const QString top = name.section(QLatin1Char('/'), 0, 0);
    archive.unpackedSize += static_cast<qint64>(member.size);
    if (name.size() > archive.longest.size()) {
        archive.longest = name;
    }
    if (!member.folder) {
        archive.names << name;
        takeKind(archive, name);
    }
    const bool isFolder = member.folder || top.size() != name.size();
    if (!isFolder) {
        archive.top << top;
    } else if (!archive.topFolders.contains(top)) {
        archive.topFolders << top;
        archive.top << top;
    }
}
} // namespace

Archive openArchive(const QString &file)
{
    const Extract::Verdict verdict = Extract::judged(file.toStdString());
    Archive archive;
    archive.opens = verdict.accepted;
    if (archive.opens) {
        archive.sum = sumOf(file);
        for (const Extract::JudgedMember &member : verdict.members) {
            take(archive, member);
        }
    } else {
        archive.refusal = wordsOf(verdict);
        archive.refused = !verdict.member.empty();
    }
    return archive;
}

QString testArchive(const QString &file, const QString &password, Archive &archive)
{
    const Extract::Verdict verdict =
        Extract::verified(file.toStdString(), password.toStdString(),
                          [&archive](const std::string &member, const std::string &beginning) {
                              const QString name = QString::fromStdString(member);
                              const QByteArray bytes = QByteArray::fromStdString(beginning);
                              if (isProgramAtTheTop(name)) {
                                  archive.programs.insert(name, bytes);
                              }
                              if (bytes.startsWith(pointerBegin)) {
                                  archive.pointers << name;
                              }
                          });
    archive.pointers.sort();
    return verdict.accepted ? QString() : wordsOf(verdict);
}
