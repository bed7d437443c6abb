#include "rules/FileLines.h"

#include "rules/Hashing.h"
#include "rules/JoinedLines.h"
#include "rules/LineWalker.h"
#include "rules/RuleCodes.h"
#include "rules/RuleIdentity.h"

#include <algorithm>
#include <future>
#include <memory>
#include <new>
#include <thread>
#include <utility>

namespace quorvane::rules {

namespace {

template <class Fields> std::optional<RuleValue> ruleIn(const std::shared_ptr<Fields>& rule)
{
    return RuleValue(std::shared_ptr<const Fields>(rule));
}

std::optional<RuleValue> ruleIn(const FilterOption& /*option*/)
{
    return std::nullopt;
}

bool isUsable(const RuleValue& rule)
{
    const auto* policy = std::get_if<PolicyValue>(&rule);
    return (policy == nullptr || (*policy)->policyClass != unknownCode)
        && askValue(rule,
            [](const auto& fields) { return fields.policyType != unknownCode && fields.operations != 0; });
}

} // namespace

std::vector<FileLine> fileLines(std::string_view text)
{
    std::vector<FileLine> lines;
    LineWalker walker(text);
    const char* const textEnd = text.data() + text.size();
    for (auto line = walker.next(); line;) {
        const char* const end = line->data() + line->size();
        auto next = walker.next();
        if (next && next->empty() && std::string_view(end, textEnd).starts_with("\r\n"))
            next = walker.next();
        const char* const behind = next ? next->data() : textEnd;
        if (line->data() != textEnd)
            lines.push_back({*line, std::string_view(end, behind)});
        line = next;
    }
    return lines;
}

RuleReader::RuleReader(RuleLines lines)
    : m_lines(lines)
    , m_parser({.system = false, .optionsAllowed = lines == RuleLines::usable})
{
}

std::optional<RuleValue> RuleReader::ruleOf(std::string_view line)
{
    const std::vector<ParsedLine> parsed = m_parser.parse(line);
    if (parsed.empty())
        return std::nullopt;
    auto rule = std::visit([](const auto& content) { return ruleIn(content); }, parsed.front().content);
    const bool counts = m_lines == RuleLines::all || (rule && isUsable(*rule) && !isJoinedLine(line));
    return counts ? std::move(rule) : std::nullopt;
}

// The result of parsing a line, without the rule itself.
struct LineCatalogue::ReadLine {
    bool isRule = false;
    bool isWatchRule = false;
    std::uint64_t hash = 0;
};

std::vector<std::uint32_t> LineCatalogue::numbersOf(const std::vector<FileLine>& lines)
{
    const std::size_t first = m_entries.size();
    std::vector<std::uint32_t> numbers;
    numbers.reserve(lines.size());
    // Compared files have most lines in common, in the same order: the next known line is usually the right
    // one.
    std::uint32_t guess = 0;
    for (const FileLine& line : lines) {
        numbers.push_back(numberOf(line.text, guess));
        guess = numbers.back() + 1;
    }
    const std::vector<ReadLine> read = readFrom(first);
    for (std::size_t i = 0; i < read.size(); ++i) {
        if (read[i].isRule)
            m_entries[first + i].rule = numberOfRule(static_cast<std::uint32_t>(first + i), read[i]);
    }
    return numbers;
}

std::uint32_t LineCatalogue::numberOf(std::string_view line, std::uint32_t guess)
{
    if (guess < m_entries.size() && m_entries[guess].text == line)
        return guess;
    const std::uint64_t hash = combinedHash(0, line);
    for (auto slot = m_lineSlots.first(hash); slot != SlotChains::none; slot = m_lineSlots.next(slot)) {
        if (m_entries[m_lineSlots.slot(slot)].text == line)
            return m_lineSlots.slot(slot);
    }
    if (m_entries.size() == none)
        throw std::bad_alloc();
    m_lineSlots.insert(hash, static_cast<std::uint32_t>(m_entries.size()));
    m_entries.push_back({line, none});
    return static_cast<std::uint32_t>(m_entries.size() - 1);
}

// Parses the lines from number `first` on, one chunk per thread.
std::vector<LineCatalogue::ReadLine> LineCatalogue::readFrom(std::size_t first) const
{
    constexpr std::size_t leastChunk = 4096; // lines; a smaller chunk is not worth a thread
    std::vector<ReadLine> read(m_entries.size() - first);
    const auto readChunk = [this, first, &read](std::size_t begin, std::size_t end) {
        RuleReader reader(m_lines);
        for (std::size_t i = begin; i < end; ++i) {
            if (const auto rule = reader.ruleOf(m_entries[first + i].text))
                read[i] = {true, std::holds_alternative<WatchValue>(*rule), identityHash(*rule)};
        }
    };
    const std::size_t threads = std::max(std::thread::hardware_concurrency(), 1U);
    const std::size_t chunk = std::max(read.size() / threads + 1, leastChunk);
    // std::async falls back to the calling thread when no thread can be created.
    std::vector<std::future<void>> others;
    for (std::size_t begin = chunk; begin < read.size(); begin += chunk)
        others.push_back(std::async(std::launch::async | std::launch::deferred, readChunk, begin,
            std::min(begin + chunk, read.size())));
    readChunk(0, std::min(chunk, read.size()));
    for (std::future<void>& other : others)
        other.get();
    return read;
}

std::uint32_t LineCatalogue::numberOfRule(std::uint32_t line, const ReadLine& read)
{
    for (auto slot = m_ruleSlots.first(read.hash); slot != SlotChains::none; slot = m_ruleSlots.next(slot)) {
        const std::uint32_t number = m_ruleSlots.slot(slot);
        if (isEqualRule(ruleOf(line), ruleOf(m_rules[number].line)))
            return number;
    }
    const auto number = static_cast<std::uint32_t>(m_rules.size());
    m_rules.push_back({line, read.isWatchRule});
    m_ruleSlots.insert(read.hash, number);
    return number;
}

} // namespace quorvane::rules
