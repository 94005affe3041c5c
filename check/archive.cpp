#include "check/archive.h"

#include "extract/verdict.h"

namespace
{
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
    archive.unpackedSize += static_cast<qint64>(member.size);
    const QString top = name.section(QLatin1Char('/'), 0, 0);
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
        for (const Extract::JudgedMember &member : verdict.members) {
            take(archive, member);
        }
    } else {
        archive.refusal = wordsOf(verdict);
        archive.refused = !verdict.member.empty();
    }
    return archive;
}

QString testArchive(const QString &file, const QString &password)
{
    const Extract::Verdict verdict = Extract::verified(file.toStdString(), password.toStdString());
    return verdict.accepted ? QString() : wordsOf(verdict);
}
