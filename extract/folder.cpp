#include "extract/folder.h"

#include "extract/refusal.h"

namespace Extract
{
std::string inFolder(const std::string &folder, const std::string &name)
{
    std::string path = folder;
    path += '/';
    path += name;
    return path;
}

// What is the same on every system: the rest stands in a file for each.
void Folder::removeTree(const std::string &tree) const
{
    if (kindOf(tree) != Kind::Folder) {
        (void)removeFile(tree);
        return;
    }
    for (const std::string &each : namesIn(tree)) {
        removeTree(inFolder(tree, each));
    }
    (void)removeEmptyFolder(tree);
}

std::vector<std::string> makePath(const std::string &path)
{
    std::vector<std::string> made;
    std::vector<std::string> missing;
    for (std::string each = path; !folderExists(each);) {
        missing.push_back(each);
        const std::string around = placeOf(each).parent;
        if (around == each) {
            break;
        }
        each = around;
    }
    for (auto each = missing.rbegin(); each != missing.rend(); ++each) {
        if (makeFolderAt(*each)) {
            made.push_back(*each);
        } else if (!folderExists(*each)) {
            removeMadePath(made);
            throw NotWritten(*each + " cannot be made");
        }
    }
    return made;
}

void removeMadePath(const std::vector<std::string> &made)
{
    for (auto each = made.rbegin(); each != made.rend(); ++each) {
        if (!removeFolderAt(*each)) {
            break;
        }
    }
}
} // namespace Extract
