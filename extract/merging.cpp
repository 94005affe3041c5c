#include "extract/merging.h"

#include "extract/refusal.h"
#include "extract/systemtext.h"

namespace Extract
{
Merging::Merging(const Folder &around)
    : m_around(around)
    , m_kept(around)
{
}

Merging::~Merging()
{
    if (!m_done) {
        takeBack();
    }
}

void Merging::move(const std::string &from, const std::string &to)
{
    checkFit(from, to);
    moveContent(from, to);
    m_done = true;
}

void Merging::checkFit(const std::string &from, const std::string &to) const
{
    for (const std::string &each : m_around.namesIn(from)) {
        const std::string source = inFolder(from, each);
        const std::string target = inFolder(to, each);
        const bool folder = m_around.kindOf(source) == Kind::Folder;
        const Kind there = m_around.kindOf(target);
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

void Merging::moveContent(const std::string &from, const std::string &to)
{
    for (const std::string &each : m_around.namesIn(from)) {
        const std::string source = inFolder(from, each);
        const std::string target = inFolder(to, each);
        if (m_around.kindOf(target) == Kind::Folder) {
            moveContent(source, target);
        } else {
            replace(source, target);
        }
    }
}

void Merging::replace(const std::string &source, const std::string &target)
{
    Step step{target, {}};
    const auto refuse = [&target] {
        throw NotWritten(target + " cannot be replaced: " + lastError());
    };
    if (m_around.kindOf(target) != Kind::Nothing) {
        step.old = inFolder(m_kept.name(), std::to_string(m_steps.size()));
        // By a second name the old file stays in its place until the new one is there.
        if (!m_around.link(target, step.old) && !m_around.move(target, step.old)) {
            refuse();
        }
    }
    m_steps.push_back(step);
    if (!m_around.move(source, target)) {
        refuse();
    }
}

void Merging::takeBack() const
{
    for (auto step = m_steps.rbegin(); step != m_steps.rend(); ++step) {
        if (step->old.empty()) {
            m_around.removeTree(step->target);
        } else {
            (void)m_around.move(step->old, step->target);
        }
    }
}
} // namespace Extract
