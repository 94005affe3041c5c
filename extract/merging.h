#pragma once

#include "extract/folder.h"
#include "extract/staging.h"

#include <string>
#include <vector>

namespace Extract
{
// Moves what is in one folder into another that holds files already: those of the same name are
// replaced, the others stay. What cannot be done to the end is taken back. A process that is killed
// meanwhile leaves some new files beside some old ones, each of them whole; where files cannot have
// two names (Windows, simple disks), one of the old ones may be missing then.
class Merging
{
public:
    // Both folders lie in this one.
    explicit Merging(const Folder &around);
    ~Merging();
    Merging(const Merging &) = delete;
    Merging &operator=(const Merging &) = delete;

    // Throws NotWritten where something stands in the way.
    void move(const std::string &from, const std::string &to);

private:
    struct Step {
        std::string target;
        std::string old; // where it is kept; empty where nothing was
    };

    void checkFit(const std::string &from, const std::string &to) const;
    void moveContent(const std::string &from, const std::string &to);
    void replace(const std::string &source, const std::string &target);
    void takeBack() const;

    const Folder &m_around;
    const Staging m_kept;
    std::vector<Step> m_steps;
    bool m_done = false;
};
} // namespace Extract
