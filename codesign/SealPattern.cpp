#include "codesign/SealPattern.h"

#include <utility>

namespace quorvane {

namespace {

constexpr std::size_t longestPattern = 1024;
constexpr int deepestNesting = 16;

} // namespace

// Compiles from the end: each part is given the instruction that follows it.
class SealPatternCompiler {
public:
    using Step = SealPattern::Step;

    explicit SealPatternCompiler(std::string_view pattern)
        : m_pattern(pattern)
    {
    }

    std::optional<SealPattern> compile()
    {
        const std::size_t found = add({});
        const Part whole = alternatives(0);
        if (m_failed || m_at != m_pattern.size())
            return std::nullopt;
        connect(whole, found);
        m_result.m_start = whole.start;
        return std::move(m_result);
    }

private:
    // A piece of the program: where it begins, and the empty fork that it ends at.
    struct Part {
        std::size_t start;
        std::size_t end;
    };

    std::size_t add(SealPattern::Instruction instruction)
    {
        m_result.m_program.push_back(instruction);
        return m_result.m_program.size() - 1;
    }
    // An instruction that does nothing but lead on.
    std::size_t addJunction()
    {
        const std::size_t at = add({Step::fork, {}, 0, 0});
        connectTo(at, at);
        return at;
    }
    void connectTo(std::size_t junction, std::size_t target)
    {
        m_result.m_program[junction].next = target;
        m_result.m_program[junction].other = target;
    }
    void connect(const Part& part, std::size_t target) { connectTo(part.end, target); }

    bool ahead(char character) const { return m_at < m_pattern.size() && m_pattern[m_at] == character; }
    bool take(char character)
    {
        const bool there = ahead(character);
        m_at += there ? 1 : 0;
        return there;
    }

    Part alternatives(int depth)
    {
        if (depth > deepestNesting)
            m_failed = true;
        Part part = sequence(depth);
        while (!m_failed && take('|')) {
            const Part other = sequence(depth);
            const std::size_t fork = add({Step::fork, {}, part.start, other.start});
            const std::size_t end = addJunction();
            connect(part, end);
            connect(other, end);
            part = {fork, end};
        }
        return part;
    }

    Part sequence(int depth)
    {
        const std::size_t start = addJunction();
        Part part{start, start};
        while (!m_failed && m_at < m_pattern.size() && !ahead('|') && !ahead(')')) {
            const Part next = repeated(depth);
            connect(part, next.start);
            part.end = next.end;
        }
        return part;
    }

    Part repeated(int depth)
    {
        Part part = atom(depth);
        for (;;) {
            const bool star = take('*');
            const bool plus = !star && take('+');
            const bool option = !star && !plus && take('?');
            if (!star && !plus && !option)
                return part;
            const std::size_t end = addJunction();
            const std::size_t fork = add({Step::fork, {}, part.start, end});
            connect(part, option ? end : fork);
            part = {plus ? part.start : fork, end};
        }
    }

    Part single(SealPattern::Instruction instruction)
    {
        const std::size_t end = addJunction();
        instruction.next = end;
        return {add(instruction), end};
    }

    Part atom(int depth)
    {
        const char character = m_pattern[m_at++];
        switch (character) {
        case '(': {
            const Part group = alternatives(depth + 1);
            m_failed = m_failed || !take(')');
            return group;
        }
        case '^':
            return single({Step::atStart, {}, 0, 0});
        case '$':
            return single({Step::atEnd, {}, 0, 0});
        case '.':
            return single({Step::characters, std::bitset<256>().set(), 0, 0});
        case '[':
            return single({Step::characters, set(), 0, 0});
        case '*':
        case '+':
        case '?':
        case '{':
            m_failed = true;
            return single({});
        case '\\':
            return single({Step::characters, only(escaped()), 0, 0});
        default:
            return single({Step::characters, only(character), 0, 0});
        }
    }

    // Only what is no letter or digit may be escaped: before those "\" means something else.
    char escaped()
    {
        const char character = m_at < m_pattern.size() ? m_pattern[m_at++] : 'x';
        const bool letterOrDigit = (character >= 'a' && character <= 'z')
            || (character >= 'A' && character <= 'Z') || (character >= '0' && character <= '9');
        m_failed = m_failed || letterOrDigit;
        return character;
    }

    static std::bitset<256> only(char character)
    {
        return std::bitset<256>().set(static_cast<unsigned char>(character));
    }

    std::bitset<256> set()
    {
        std::bitset<256> characters;
        const bool inverted = take('^');
        bool first = true;
        while (m_at < m_pattern.size() && (first || !ahead(']'))) {
            first = false;
            const auto from = static_cast<unsigned char>(m_pattern[m_at++]);
            auto until = from;
            if (ahead('-') && m_at + 1 < m_pattern.size() && m_pattern[m_at + 1] != ']') {
                until = static_cast<unsigned char>(m_pattern[m_at + 1]);
                m_at += 2;
            }
            for (unsigned character = from; character <= until; ++character)
                characters.set(character);
        }
        m_failed = m_failed || !take(']');
        return inverted ? ~characters : characters;
    }

    std::string_view m_pattern;
    std::size_t m_at = 0;
    bool m_failed = false;
    SealPattern m_result;
};

std::optional<SealPattern> SealPattern::compile(std::string_view pattern)
{
    return pattern.size() <= longestPattern ? SealPatternCompiler(pattern).compile() : std::nullopt;
}

// The places in the program that the text so far can have led to.
struct SealPattern::Threads {
    std::vector<std::size_t> waiting; // at an instruction that takes a character
    std::vector<bool> visited;
    bool found = false;
};

void SealPattern::follow(
    std::size_t instruction, std::size_t position, std::size_t length, Threads& threads) const
{
    std::vector<std::size_t> open{instruction};
    while (!open.empty()) {
        const std::size_t at = open.back();
        open.pop_back();
        if (threads.visited[at])
            continue;
        threads.visited[at] = true;
        const Instruction& here = m_program[at];
        switch (here.step) {
        case Step::characters:
            threads.waiting.push_back(at);
            break;
        case Step::fork:
            open.push_back(here.next);
            open.push_back(here.other);
            break;
        case Step::atStart:
            if (position == 0)
                open.push_back(here.next);
            break;
        case Step::atEnd:
            if (position == length)
                open.push_back(here.next);
            break;
        case Step::found:
            threads.found = true;
            break;
        }
    }
}

bool SealPattern::isFoundIn(std::string_view text) const
{
    Threads now;
    for (std::size_t position = 0; position <= text.size(); ++position) {
        now.visited.resize(m_program.size());
        follow(m_start, position, text.size(), now);
        if (now.found || position == text.size())
            return now.found;
        Threads next;
        next.visited.resize(m_program.size());
        for (const std::size_t at : now.waiting) {
            if (m_program[at].characters.test(static_cast<unsigned char>(text[position])))
                follow(m_program[at].next, position + 1, text.size(), next);
        }
        now = std::move(next);
    }
    return false;
}

} // namespace quorvane
