#pragma once

#include "extract/filelock.h"
#include "extract/folder.h"

#include <memory>
#include <string>

namespace Extract
{
// The folder that an archive is unpacked into, beside the one that gets its content. Its name
// begins with a dot and weighs nothing as a version of the game, so that what a killed run leaves
// counts for nothing; the next run removes it.
class Staging
{
public:
    // Removes what interrupted runs have left in a folder, and nothing that another process is
    // still filling.
    static void removeLeftovers(const Folder &parent);

    explicit Staging(const Folder &parent);
    // Removes itself, unless it has been moved away.
    ~Staging();
    Staging(const Staging &) = delete;
    Staging &operator=(const Staging &) = delete;

    const std::string &name() const { return m_name; }

private:
    const Folder &m_parent;
    std::string m_name;
    std::unique_ptr<FileLock> m_lock;
};
} // namespace Extract
