#include "check/archive.h"

#include "extract/bytesource.h"
#include "extract/content.h"
#include "extract/plan.h"
#include "extract/refusal.h"

namespace
{
// Members up to this size are unpacked at once, larger ones in pieces.
constexpr std::size_t heldInMemory = std::size_t(16) * 1024 * 1024;

class Nowhere : public Extract::Sink
{
public:
    void begin(const Extract::Member &) override {}
    void take(const unsigned char *, std::size_t) override {}
    void startAgain() override {}
    void end() override {}
};

QString wordsOf(const Extract::Refusal &refusal)
{
    const QString member = QString::fromStdString(refusal.member());
    const QString reason = QString::fromUtf8(refusal.what());
    return member.isEmpty() ? reason : member + QStringLiteral(": ") + reason;
}

void take(Archive &archive, const Extract::Member &member, const QString &name)
{
    archive.files += member.folder ? 0 : 1;
    archive.encryptedFiles += member.folder || member.lock == Extract::Lock::None ? 0 : 1;
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
    Archive archive;
    try {
        const Extract::FileBytes bytes(file.toStdString());
        Extract::Directory directory = Extract::readDirectory(bytes);
        (void)Extract::planOf(directory); // for what it refuses
        for (const Extract::Member &member : directory.members) {
            take(archive, member, QString::fromStdString(directory.nameOf(member)));
        }
        archive.opens = true;
    } catch (const Extract::Refusal &refusal) {
        archive.refusal = wordsOf(refusal);
        archive.refused = !refusal.member().empty();
    }
    return archive;
}

QString testArchive(const QString &file, const QString &password)
{
    try {
        const Extract::FileBytes bytes(file.toStdString());
        Extract::Directory directory = Extract::readDirectory(bytes);
        const Extract::Plan plan = Extract::planOf(directory);
        Extract::ContentReader reader(bytes, {password.toStdString()}, heldInMemory);
        Nowhere nowhere;
        for (const std::uint32_t member : plan.files) {
            reader.unpack(directory.members[member], nowhere);
        }
    } catch (const Extract::Refusal &refusal) {
        return wordsOf(refusal);
    }
    return {};
}
