#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace Extract
{
enum class Kind { Nothing, File, Folder, Link, Other };

// A file that is being written for the first time.
class OutputFile
{
public:
    explicit OutputFile(std::intptr_t file)
        : m_file(file)
    {
    }
    ~OutputFile();
    OutputFile(const OutputFile &) = delete;
    OutputFile &operator=(const OutputFile &) = delete;

    void write(const unsigned char *bytes, std::size_t length);
    void empty();
    // Seconds since 1970; negative: as it is.
    void close(std::int64_t modified);

private:
    std::intptr_t m_file;
};

std::string inFolder(const std::string &folder, const std::string &name);

// A folder and what lies below it. Names are relative to it, with "/" between their parts; links
// are followed on the way to the folder, and none below it is.
class Folder
{
public:
    explicit Folder(const std::string &path);
    ~Folder();
    Folder(const Folder &) = delete;
    Folder &operator=(const Folder &) = delete;

    Kind kindOf(const std::string &name) const;
    // Of the folder itself when the name is empty.
    std::vector<std::string> namesIn(const std::string &name) const;
    // False where something of this name is there already.
    bool make(const std::string &name) const;
    std::unique_ptr<OutputFile> createFile(const std::string &name, bool executable) const;
    void setModified(const std::string &name, std::int64_t modified) const;
    // What is in the place of the new name goes, unless it is a folder that holds something.
    bool move(const std::string &from, const std::string &to) const;
    // Gives a file a second name. False where the disk or the system does not.
    bool link(const std::string &from, const std::string &to) const;
    bool removeFile(const std::string &name) const;
    bool removeEmptyFolder(const std::string &name) const;
    void removeTree(const std::string &tree) const;
    // Nothing where the disk does not tell.
    std::optional<std::uint64_t> freeBytes() const;
    // Whole path of what lies in the folder.
    std::string pathOf(const std::string &name) const;

private:
    std::string m_path;
    std::intptr_t m_folder = -1;
};

// A path's last name and the folder that this lies in.
struct Place {
    std::string parent;
    std::string name;
};
Place placeOf(const std::string &path);

// By paths, for what is needed around a folder. Links are followed.
bool folderExists(const std::string &path);
bool makeFolderAt(const std::string &path);
bool removeFolderAt(const std::string &path);

// Makes a folder and all that are missing around it. Returns those that it made, the outer ones
// first.
std::vector<std::string> makePath(const std::string &path);
void removeMadePath(const std::vector<std::string> &made);
} // namespace Extract
