#include "cli/FindingOptions.h"

#include <vector>

#include <CLI/CLI.hpp>

namespace quorvane::cli {

namespace {

// The words between the commas; an empty text is one empty word.
std::vector<std::string> wordsOf(const std::string& list)
{
    std::vector<std::string> words;
    std::size_t begin = 0;
    for (std::size_t comma = 0; comma != std::string::npos; begin = comma + 1) {
        comma = list.find(',', begin);
        words.push_back(list.substr(begin, comma - begin));
    }
    return words;
}

std::string knownKinds()
{
    std::string names;
    for (const workflow::FindingKind kind : workflow::allFindingKinds)
        names.append(names.empty() ? "" : ", ").append(findingName(kind));
    return names;
}

workflow::FindingKind findingKindGiven(const std::string& option, const std::string& name)
{
    const auto kind = workflow::findingKindNamed(name);
    if (!kind)
        throw CLI::ValidationError(option, "'" + name + "' is no finding; there are " + knownKinds());
    return *kind;
}

workflow::FindingKinds onlyKinds(const std::string& list, bool isNowhere)
{
    workflow::FindingKinds kinds;
    for (const std::string& word : wordsOf(list)) {
        if (word == "all") {
            kinds = workflow::FindingKinds::all();
            continue;
        }
        kinds.add(findableKindGiven("--only", word, isNowhere));
    }
    return kinds;
}

} // namespace

void FindingOptions::addTo(CLI::App& command)
{
    const auto into = [](std::optional<std::string>& list) {
        return [&list](const std::string& given) { list = given; };
    };
    auto* only = command
                     .add_option_function<std::string>("--only", into(m_only),
                         "Look for these findings alone: " + knownKinds() + ", or all")
                     ->type_name("KIND,...");
    command.add_option_function<std::string>("--skip", into(m_skipped), "Do not look for these findings")
        ->type_name("KIND,...")
        ->excludes(only);
}

workflow::FindingKinds FindingOptions::kinds(bool isNowhere) const
{
    if (m_only)
        return onlyKinds(*m_only, isNowhere);
    workflow::FindingKinds kinds = workflow::FindingKinds::usual();
    for (const std::string& word : m_skipped ? wordsOf(*m_skipped) : std::vector<std::string>())
        kinds.remove(findingKindGiven("--skip", word));
    return kinds;
}

workflow::FindingKind findableKindGiven(const std::string& option, const std::string& name, bool isNowhere)
{
    const workflow::FindingKind kind = findingKindGiven(option, name);
    if (isNowhere && needsPlace(kind))
        throw CLI::ValidationError(option, "'" + name + "' cannot be found with --no-target");
    return kind;
}

} // namespace quorvane::cli
