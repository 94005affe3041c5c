#pragma once

#include "extract/folder.h"

#include <memory>
#include <string>
#include <vector>

namespace Extract
{
// The folder that an archive's content is for. Until take() files in it stay as they are; without
// take() it is not there in the end, if nothing was in it.
class Destination
{
public:
    explicit Destination(const std::string &path);
    ~Destination();
    Destination(const Destination &) = delete;
    Destination &operator=(const Destination &) = delete;

    // The folder around it.
    const Folder &around() const { return *m_around; }

    // What the launcher makes just before the call counts as an installed version, and would go on
    // counting if this process were killed: it goes when unpacking begins.
    void removeEmpty() const;

    // A folder of that name beside it takes its place. Where it holds files already, those of the
    // same name are replaced and the others stay, which no system does in one step.
    void take(const std::string &name);

private:
    bool holdsSomething() const;

    const Place m_place;
    std::vector<std::string> m_made;
    std::unique_ptr<Folder> m_around;
    bool m_taken = false;
};
} // namespace Extract
