#include "rules/RulesParser.h"

#include "rules/LineWalker.h"
#include "rules/RuleIdentity.h"
#include "rules/RuleLine.h"

#include <algorithm>
#include <deque>
#include <future>
#include <memory>
#include <thread>
#include <utility>

namespace quorvane::rules {

namespace {

constexpr std::size_t chunkLength = 1U << 20U; // bytes, about; far more than a thread costs to start
constexpr std::size_t usualLine = 128; // bytes
constexpr std::size_t mostInBatch = 256; // few enough that a removed rule does not keep much memory

// Removes the next chunk of whole lines from the front of `text`. A line feed always ends a line.
std::string_view takeChunk(std::string_view& text)
{
    const std::size_t lineFeed = text.find('\n', std::min(chunkLength, text.size()));
    const std::string_view chunk
        = text.substr(0, lineFeed == std::string_view::npos ? lineFeed : lineFeed + 1);
    text.remove_prefix(chunk.size());
    return chunk;
}

// A parser and its chunk, perhaps on another thread.
struct Worker {
    Worker(RulesFileKind kind, std::size_t usualLength)
        : parser(kind, usualLength)
    {
    }
    void start(std::string_view next)
    {
        // Falls back to the calling thread when no thread can be created.
        constexpr auto policy = std::launch::async | std::launch::deferred;
        chunk = next;
        records = std::async(policy, [this, next, out = std::exchange(room, {})]() mutable {
            parser.parse(next, out);
            return std::move(out);
        });
    }

    RulesParser parser;
    std::string_view chunk;
    std::future<std::vector<ParsedLine>> records;
    std::vector<ParsedLine> room; // empty; its memory serves again
};

} // namespace

RulesParser::RulesParser(RulesFileKind kind, std::size_t usualLength)
    : m_kind(kind)
    , m_pool(usualLength / 16 + 1)
    , m_policyRules(std::min(usualLength / usualLine + 1, mostInBatch))
    , m_watchRules(std::min(usualLength / usualLine + 1, mostInBatch))
{
}

std::vector<ParsedLine> RulesParser::parse(std::string_view text)
{
    std::vector<ParsedLine> records;
    parse(text, records);
    return records;
}

void RulesParser::parse(std::string_view text, std::vector<ParsedLine>& records)
{
    records.reserve(records.size() + text.size() / usualLine + 1);
    LineWalker lines(text);
    while (const auto line = lines.next()) {
        if (!line->empty() && line->front() != ';')
            parseLine(*line, records);
    }
}

void RulesParser::parseLine(std::string_view line, std::vector<ParsedLine>& out)
{
    const auto& tokens = m_tokenizer.tokens(line, mostTokensOfALine);
    switch (kindOfLine(tokens, m_kind.optionsAllowed)) {
    case LineKind::unusable:
        return;
    case LineKind::option:
        out.push_back({optionFromTokens(tokens), 0, {}});
        return;
    case LineKind::watchRule: {
        auto rule = m_watchRules.make(watchRuleFromTokens(tokens, m_kind.system, m_pool));
        const std::uint64_t hash = identityHash(*rule);
        out.push_back({std::move(rule), hash, m_pool.text(tokens[4])});
        return;
    }
    case LineKind::policyRule: {
        auto rule = m_policyRules.make(policyRuleFromTokens(tokens, m_kind.system, m_pool));
        const std::uint64_t hash = identityHash(*rule);
        out.push_back({std::move(rule), hash, {}});
        return;
    }
    }
}

void useParsedLines(std::string_view text, RulesFileKind kind,
    const std::function<void(std::vector<ParsedLine>&)>& use,
    const std::function<void(std::string_view)>& discard)
{
    if (text.size() <= 2 * chunkLength) {
        std::vector<ParsedLine> records = RulesParser(kind, text.size()).parse(text);
        if (discard)
            discard(text);
        use(records);
        return;
    }
    std::deque<Worker> workers;
    for (unsigned number = std::max(std::thread::hardware_concurrency(), 1U); number > 0; --number)
        workers.emplace_back(kind, chunkLength).start(takeChunk(text));
    std::size_t busy = workers.size();
    for (std::size_t next = 0; busy > 0; next = (next + 1) % workers.size()) {
        Worker& worker = workers[next];
        std::vector<ParsedLine> records = worker.records.get();
        if (discard)
            discard(worker.chunk);
        if (text.empty())
            --busy;
        else
            worker.start(takeChunk(text));
        use(records);
        records.clear();
        worker.room = std::move(records);
    }
}

} // namespace quorvane::rules
