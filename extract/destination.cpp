#include "extract/destination.h"

#include "extract/refusal.h"
#include "extract/systemtext.h"

namespace Extract
{
Destination::Destination(const std::string &path)
    : m_place(placeOf(path))
    , m_made(makePath(m_place.parent))
    , m_around(std::make_unique<Folder>(m_place.parent))
{
    if (m_place.name.empty()) {
        throw NotWritten(path + " cannot be the folder of an archive");
    }
    const Kind kind = m_around->kindOf(m_place.name);
    if (kind != Kind::Nothing && kind != Kind::Folder) {
        throw NotWritten(path + (kind == Kind::Link ? " is a link" : " is no folder"));
    }
}

Destination::~Destination()
{
    if (!m_taken) {
        if (m_around->kindOf(m_place.name) == Kind::Folder) {
            (void)m_around->removeEmptyFolder(m_place.name);
        }
        removeMadePath(m_made);
    }
}

bool Destination::holdsSomething() const
{
    return m_around->kindOf(m_place.name) == Kind::Folder &&
           !m_around->namesIn(m_place.name).empty();
}

void Destination::take(const std::string &name)
{
    if (holdsSomething()) {
        checkFit(name, m_place.name);
        merge(name, m_place.name);
    } else if (!m_around->move(name, m_place.name)) {
        throw NotWritten(m_place.name + " cannot take the content: " + lastError());
    }
    m_taken = true;
}

void Destination::checkFit(const std::string &from, const std::string &to) const
{
    for (const std::string &each : m_around->namesIn(from)) {
        const std::string source = inFolder(from, each);
        const std::string target = inFolder(to, each);
        const bool folder = m_around->kindOf(source) == Kind::Folder;
        const Kind there = m_around->kindOf(target);
        if (there == Kind::Nothing) {
            continue;
        }
        if (folder != (there == Kind::Folder)) {
            throw NotWritten(target + " is in the way");
        }
        if (folder) {
            checkFit(source, target);
        }
    }
}

void Destination::merge(const std::string &from, const std::string &to) const
{
    for (const std::string &each : m_around->namesIn(from)) {
        const std::string source = inFolder(from, each);
        const std::string target = inFolder(to, each);
        if (m_around->kindOf(target) == Kind::Folder) {
            merge(source, target);
        } else if (!m_around->move(source, target)) {
            throw NotWritten(target + " cannot be replaced: " + lastError());
        }
    }
}
} // namespace Extract
