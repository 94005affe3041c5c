#include "extract/extraction.h"

#include "extract/bytesource.h"
#include "extract/destination.h"
#include "extract/plan.h"
#include "extract/refusal.h"
#include "extract/staging.h"
#include "extract/workers.h"

namespace Extract
{
namespace
{
// Writes members into the folder. A file is made when there is something to write, which for all
// but the large ones is when its content is known to be right.
class FileSink : public Sink
{
public:
    FileSink(const Directory &directory, const Folder &folder)
        : m_directory(directory)
        , m_folder(folder)
    {
    }

    void begin(const Member &member) override
    {
        // What a damaged member left is removed with all the rest.
        m_file.reset();
        m_member = &member;
    }

    void take(const unsigned char *bytes, std::size_t length) override
    {
        make();
        m_file->write(bytes, length);
    }

    void startAgain() override
    {
        if (m_file) {
            m_file->empty();
        }
    }

    void end() override
    {
        make();
        m_file->close(m_member->modified);
        m_file.reset();
    }

private:
    void make()
    {
        if (!m_file) {
            m_file = m_folder.createFile(m_directory.nameOf(*m_member), m_member->executable);
        }
    }

    const Directory &m_directory;
    const Folder &m_folder;
    const Member *m_member = nullptr;
    std::unique_ptr<OutputFile> m_file;
};

void checkRoom(const Folder &folder, std::uint64_t needed)
{
    const std::optional<std::uint64_t> there = folder.freeBytes();
    if (there && needed > *there) {
        throw NotWritten("needs " + std::to_string(needed >> 20U) + " MiB, and the disk has " +
                         std::to_string(*there >> 20U) + " MiB left");
    }
}

// Writing into a folder changes its time, so these come last.
void setTimesOfFolders(const Directory &directory, const Folder &folder)
{
    for (const Member &member : directory.members) {
        if (member.folder) {
            folder.setModified(directory.nameOf(member), member.modified);
        }
    }
}

void unpackInto(const Folder &folder, const ByteSource &archive, const Directory &directory,
                const Plan &plan, const std::string &password)
{
    for (const FolderName &each : plan.folders) {
        (void)folder.make(directory.names.substr(each.at, each.length));
    }
    unpackFiles(archive, directory, plan, password,
                [&] { return std::make_unique<FileSink>(directory, folder); });
    setTimesOfFolders(directory, folder);
}
} // namespace

void extract(const Order &order)
{
    Destination destination(order.folder);
    // Whatever comes of this archive; and what they take is room that it may need.
    Staging::removeLeftovers(destination.around());
    const FileBytes archive(order.archive);
    Directory directory = readDirectory(archive);
    const Plan plan = planOf(directory);
    checkRoom(destination.around(), plan.room);
    const Staging staging(destination.around());
    destination.removeEmpty();
    {
        const Folder folder(destination.around().pathOf(staging.name()));
        unpackInto(folder, archive, directory, plan, order.password);
    }
    destination.take(staging.name());
}
} // namespace Extract
