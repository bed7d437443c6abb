#include "platform/Log.h"
#include "rules/RuleManager.h"

#include <cstdio>
#include <functional>
#include <map>
#include <memory>
#include <string>

// guard_steps STEP FILE: one step with the rules of FILE, all of whose work is inside guardedStep(), so that
// a profiler can count its instructions apart from what precedes it. Prints a number that depends on the
// result.

using namespace quorvane;

// Not inlined, and a name that the profiler can be given.
extern "C" [[gnu::noinline, gnu::used]] void guardedStep(const std::function<void()>& step)
{
    step();
}

namespace {

class Steps {
public:
    explicit Steps(std::string file)
        : m_file(std::move(file))
    {
    }

    std::size_t load()
    {
        guardedStep([this] { read(); });
        return m_store->totalRules(true);
    }

    std::size_t searchFirst()
    {
        read();
        guardedStep([this] { search("d"); });
        return m_store->totalRules(true);
    }

    std::size_t searchNext()
    {
        read();
        search("d");
        guardedStep([this] { search("do"); });
        return m_store->totalRules(true);
    }

    std::size_t sort()
    {
        read();
        guardedStep([this] { sortByPath(); });
        return m_store->totalRules(true);
    }

    // One tag in the sorted rows, and the copy of all rules for the thread that writes them.
    std::size_t edit()
    {
        read();
        sortByPath();
        m_store->userRulesSnapshot();
        const rules::RuleRef rule = m_store->ruleAtIndex(m_store->totalRules(true) / 2, true);
        rules::RuleValue after = rules::askValue(valueOf(rule), [](auto fields) {
            fields.tag = rules::NullableText("guarded");
            return rules::RuleValue(makeRuleValue(std::move(fields)));
        });
        std::size_t written = 0;
        guardedStep([&] {
            m_store->apply({.changed = {{rule, {}, after}}});
            m_store->totalRules(true);
            written = m_store->userRulesSnapshot().size();
        });
        return written;
    }

private:
    void read()
    {
        m_store = rules::RuleManager::initWithContentsOfFile(
            m_file, false, platform::Locations("/nonexistent", "bench"), m_log);
        m_store->totalRules(true);
    }
    void search(const char* text)
    {
        m_store->applyFilterWithString(text);
        m_store->totalRules(true);
    }
    void sortByPath()
    {
        m_store->sortIndexUsingDescriptors({{rules::SortKey::path, true}});
        m_store->totalRules(true);
    }

    const std::string m_file;
    platform::Log m_log{{}};
    std::unique_ptr<rules::RuleManager> m_store;
};

} // namespace

int main(int argumentCount, char** arguments)
{
    const std::map<std::string, std::size_t (Steps::*)()> steps{{"load", &Steps::load},
        {"search-first", &Steps::searchFirst}, {"search-next", &Steps::searchNext}, {"sort", &Steps::sort},
        {"edit", &Steps::edit}};
    const auto step = argumentCount == 3 ? steps.find(arguments[1]) : steps.end();
    if (step == steps.end()) {
        std::fputs("usage: guard_steps load|search-first|search-next|sort|edit FILE\n", stderr);
        return 2;
    }
    Steps with(arguments[2]);
    std::printf("%zu\n", (with.*step->second)());
    return 0;
}
