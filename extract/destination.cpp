#include "extract/destination.h"

#include "extract/merging.h"
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
        removeEmpty();
        removeMadePath(m_made);
    }
}

void Destination::removeEmpty() const
{
    if (m_around->kindOf(m_place.name) == Kind::Folder) {
        (void)m_around->removeEmptyFolder(m_place.name);
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
        Merging(*m_around).move(name, m_place.name);
    } else if (!m_around->move(name, m_place.name)) {
        throw NotWritten(m_place.name + " cannot take the content: " + lastError());
    }
    m_taken = true;
}
} // namespace Extract
