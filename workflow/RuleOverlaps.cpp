#include "workflow/RuleOverlaps.h"

#include "rules/ApplicationIdentity.h"
#include "rules/Hashing.h"
#include "rules/PathCover.h"
#include "rules/RuleCodes.h"
#include "workflow/ApplicationValidation.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>

// How overlaps are found without comparing all pairs:
//
// The rules are taken in their order. Each leaves its number under every key that a rule overlapping it could
// ask for, unless an earlier one stands there; and first it asks under every key of its own, and keeps the
// smallest answer. A key says which programs and what about the path, for one operation and one class.
//
// Programs: a rule of one head is found under that head and under all heads; it asks under its own head and
// under "any". One of any head is found under "any" and under all heads, and asks under all heads. Parents
// and constraints likewise. Paths: a prefix rule covers a text when its own is a beginning of it. So a rule
// leaves its number with every beginning of its path that is the path of some prefix rule of the other class,
// for these to ask there; and asks at the same beginnings for these. Ends and suffix rules likewise. What
// nobody of the other class will ask for is not left.

namespace quorvane::workflow {

namespace {

bool takesPart(const rules::PolicyRuleFields& rule)
{
    return !rule.path.isNull()
        && (rule.policyClass == rules::PolicyClass::allow || rule.policyClass == rules::PolicyClass::deny);
}

// Which processes a rule is for. No head: any. No parent: all of them will do.
struct Process {
    std::optional<std::string> head;
    std::optional<std::string> parent;
};

std::optional<std::string> unlessAny(std::optional<std::string> text)
{
    return text == "any" ? std::nullopt : std::move(text);
}

Process processOf(const rules::PolicyRuleFields& rule)
{
    std::string head = applicationPathForProcess(rule.processName);
    if (head.starts_with(rules::ProcessForm::anyAncestor))
        return {};
    if (head.starts_with(rules::ProcessForm::anyVia))
        return {std::nullopt, head.substr(rules::ProcessForm::anyVia.size())};
    return {unlessAny(std::move(head)), unlessAny(applicationParentPathForProcess(rule.processName))};
}

// What a constraint pins, as far as two of the same kind cannot hold for one program.
ConstraintKind pinnedBy(const rules::NullableText& constraint)
{
    return constraint.view() == platformMarker ? ConstraintKind::none : constraintKind(constraint.view());
}

bool mayBeTheSame(const std::optional<std::string>& a, const std::optional<std::string>& b)
{
    return !a || !b || *a == *b;
}

bool mayBothHold(const rules::NullableText& a, const rules::NullableText& b)
{
    const ConstraintKind kind = pinnedBy(a);
    return kind == ConstraintKind::none || kind != pinnedBy(b) || a.view() == b.view();
}

bool pathsOverlap(const rules::PolicyRuleFields& a, const rules::PolicyRuleFields& b)
{
    const bool isSuffixAndPrefix
        = (a.policyType == rules::PolicyType::suffix && b.policyType == rules::PolicyType::prefix)
        || (a.policyType == rules::PolicyType::prefix && b.policyType == rules::PolicyType::suffix);
    return isSuffixAndPrefix || coversPath(a, b.path.view()) || coversPath(b, a.path.view());
}

// Texts, and which of them are beginnings of another text.
class Beginnings {
public:
    static constexpr std::uint32_t none = UINT32_MAX;

    void add(std::string text) { m_texts.push_back(std::move(text)); }

    // When all texts are there.
    void arrange()
    {
        std::sort(m_texts.begin(), m_texts.end());
        m_texts.erase(std::unique(m_texts.begin(), m_texts.end()), m_texts.end());
        m_longestBeginnings.reserve(m_texts.size());
        for (std::uint32_t number = 0; number < m_texts.size(); ++number)
            m_longestBeginnings.push_back(number == 0 ? none : beginningFrom(number - 1, m_texts[number]));
    }

    // Calls `use` with the number of every text that is a beginning of `text`, equal ones first.
    template <class Use> void forEachBeginningOf(std::string_view text, const Use& use) const
    {
        // All of them are beginnings of the last text that is not behind `text` in order.
        const auto behind = std::upper_bound(m_texts.begin(), m_texts.end(), text);
        if (behind == m_texts.begin())
            return;
        for (auto number = beginningFrom(static_cast<std::uint32_t>(behind - m_texts.begin() - 1), text);
             number != none; number = m_longestBeginnings[number])
            use(number);
    }

    std::uint32_t numberOf(std::string_view text) const
    {
        const auto found = std::lower_bound(m_texts.begin(), m_texts.end(), text);
        return found == m_texts.end() || *found != text ? none
                                                        : static_cast<std::uint32_t>(found - m_texts.begin());
    }

private:
    // The first of `number` and its beginnings that is one of `text`, too.
    std::uint32_t beginningFrom(std::uint32_t number, std::string_view text) const
    {
        while (number != none && !text.starts_with(m_texts[number]))
            number = m_longestBeginnings[number];
        return number;
    }

    std::vector<std::string> m_texts;
    std::vector<std::uint32_t> m_longestBeginnings; // of each text, other than itself
};

std::string reversed(std::string_view text)
{
    return {text.rbegin(), text.rend()};
}

// What is kept at a text, or for all of them.
enum class Relation : std::uint64_t {
    everything, // all rules
    everyPath, // rules whose path stands for all
    allPrefixes, // all prefix rules
    allSuffixes, // all suffix rules
    prefixAt, // prefix rules of that text
    beginsWith, // rules whose path begins with that text
    suffixAt, // suffix rules of that text
    endsWith, // rules whose path ends with that text
    pathAt, // path rules of that text
    equals, // rules of that text, whatever their type
};

std::uint64_t placeOf(Relation relation, std::uint32_t text = 0)
{
    return static_cast<std::uint64_t>(relation) << 32U | text;
}

// Numbers, from 0, for keys.
template <class Key, class Hash> class Numbers {
public:
    std::uint32_t of(const Key& key)
    {
        return m_numbers.emplace(key, static_cast<std::uint32_t>(m_numbers.size())).first->second;
    }
    std::size_t size() const { return m_numbers.size(); }

private:
    std::unordered_map<Key, std::uint32_t, Hash> m_numbers;
};

// The paths of one class of rules.
struct Paths {
    Beginnings ofPrefixRules;
    Beginnings ofSuffixRules; // written backwards
    Beginnings ofPathRules;
};

// What is asked for, and what a number is left under: a combination of programs, an operation of one class,
// and a relation to a path.
struct Key {
    std::uint32_t programs;
    std::uint32_t operation;
    std::uint64_t place;
    bool operator==(const Key&) const = default;
};
struct KeyHash {
    std::size_t operator()(const Key& key) const
    {
        return rules::combinedHash(
            rules::combinedHash(0, std::uint64_t{key.programs} << 32U | key.operation), key.place);
    }
};

// Numbers for head, parent and constraint, each also standing for any or all.
struct Programs {
    std::uint32_t head;
    std::uint32_t parent;
    std::uint32_t constraint;
    bool operator==(const Programs&) const = default;
};
struct ProgramsHash {
    std::size_t operator()(const Programs& programs) const
    {
        return rules::combinedHash(
            rules::combinedHash(0, std::uint64_t{programs.head} << 32U | programs.parent),
            programs.constraint);
    }
};

// The numbers under which one property of a rule, or all of them together, are asked for and left.
struct Choices {
    std::vector<std::uint32_t> asked;
    std::vector<std::uint32_t> left;
};

constexpr std::uint32_t forAny = UINT32_MAX; // rules for any
constexpr std::uint32_t forAll = UINT32_MAX - 1; // rules for whatever it is

std::size_t classIndex(const rules::PolicyRuleFields& rule)
{
    return rule.policyClass == rules::PolicyClass::allow ? 0 : 1;
}

// Calls `use` with a number for each operation of a rule, when it is done by rules of that class.
template <class Use>
void forEachOperation(const rules::PolicyRuleFields& rule, std::size_t ofClass, const Use& use)
{
    for (std::uint32_t bit = 0; bit < 32; ++bit) {
        if ((rule.operations >> bit & 1U) != 0)
            use(bit << 1U | static_cast<std::uint32_t>(ofClass));
    }
}

class Overlaps {
public:
    Overlaps(const std::vector<const rules::PolicyRuleFields*>& rules, const std::stop_token& stop)
    {
        for (const rules::PolicyRuleFields* rule : rules) {
            if (rule != nullptr && takesPart(*rule) && !stop.stop_requested())
                expect(*rule);
        }
        for (Paths& paths : m_paths) {
            for (Beginnings* texts : {&paths.ofPrefixRules, &paths.ofSuffixRules, &paths.ofPathRules})
                texts->arrange();
        }
    }

    // The first of the rules passed before that this one overlaps. Rules are passed in order.
    std::size_t pass(const rules::PolicyRuleFields& rule, std::size_t number)
    {
        if (!takesPart(rule))
            return noOverlap;
        const Choices programs = programsOf(rule);
        const std::size_t first = firstFound(rule, programs.asked);
        leave(rule, programs.left, number);
        return first;
    }

private:
    void expect(const rules::PolicyRuleFields& rule)
    {
        Paths& paths = m_paths[classIndex(rule)];
        const std::string_view path = rule.path.view();
        if (rule.policyType == rules::PolicyType::prefix)
            paths.ofPrefixRules.add(std::string(path));
        else if (rule.policyType == rules::PolicyType::suffix)
            paths.ofSuffixRules.add(reversed(path));
        else if (rule.policyType == rules::PolicyType::path)
            paths.ofPathRules.add(std::string(path));
        const Choices programs = programsOf(rule);
        std::vector<bool>& asked = m_askedBy[classIndex(rule)];
        asked.resize(m_programs.size());
        for (const std::uint32_t number : programs.asked)
            asked[number] = true;
    }

    std::size_t firstFound(const rules::PolicyRuleFields& rule, const std::vector<std::uint32_t>& asked) const
    {
        const std::vector<std::uint64_t> places = askedPlaces(rule);
        std::size_t first = noOverlap;
        for (const std::uint32_t programs : asked) {
            forEachOperation(rule, 1 - classIndex(rule), [&](std::uint32_t operation) {
                for (const std::uint64_t place : places) {
                    const auto found = m_first.find({programs, operation, place});
                    if (found != m_first.end())
                        first = std::min(first, found->second);
                }
            });
        }
        return first;
    }

    void leave(
        const rules::PolicyRuleFields& rule, const std::vector<std::uint32_t>& left, std::size_t number)
    {
        const std::vector<bool>& asked = m_askedBy[1 - classIndex(rule)];
        const std::vector<std::uint64_t> places = leftPlaces(rule);
        for (const std::uint32_t programs : left) {
            if (programs >= asked.size() || !asked[programs])
                continue;
            forEachOperation(rule, classIndex(rule), [&](std::uint32_t operation) {
                for (const std::uint64_t place : places)
                    m_first.try_emplace({programs, operation, place}, number);
            });
        }
    }

    std::vector<std::uint64_t> askedPlaces(const rules::PolicyRuleFields& rule) const
    {
        if (isEveryPath(rule.path))
            return {placeOf(Relation::everything)};
        const std::string_view path = rule.path.view();
        const Paths& own = m_paths[classIndex(rule)];
        std::vector<std::uint64_t> places{placeOf(Relation::everyPath)};
        forEachShared(rule, [&places](Relation relation, Relation, std::uint32_t text) {
            places.push_back(placeOf(relation, text));
        });
        if (rule.policyType == rules::PolicyType::prefix) {
            places.push_back(placeOf(Relation::allSuffixes));
            places.push_back(placeOf(Relation::beginsWith, own.ofPrefixRules.numberOf(path)));
        } else if (rule.policyType == rules::PolicyType::suffix) {
            places.push_back(placeOf(Relation::allPrefixes));
            places.push_back(placeOf(Relation::endsWith, own.ofSuffixRules.numberOf(reversed(path))));
        } else if (rule.policyType == rules::PolicyType::path) {
            places.push_back(placeOf(Relation::equals, own.ofPathRules.numberOf(path)));
        }
        return places;
    }

    std::vector<std::uint64_t> leftPlaces(const rules::PolicyRuleFields& rule) const
    {
        std::vector<std::uint64_t> places{placeOf(Relation::everything)};
        if (isEveryPath(rule.path)) {
            places.push_back(placeOf(Relation::everyPath));
            return places;
        }
        const std::string_view path = rule.path.view();
        const Paths& own = m_paths[classIndex(rule)];
        forEachShared(rule, [&places](Relation, Relation relation, std::uint32_t text) {
            places.push_back(placeOf(relation, text));
        });
        if (rule.policyType == rules::PolicyType::prefix) {
            places.push_back(placeOf(Relation::allPrefixes));
            places.push_back(placeOf(Relation::prefixAt, own.ofPrefixRules.numberOf(path)));
        } else if (rule.policyType == rules::PolicyType::suffix) {
            places.push_back(placeOf(Relation::allSuffixes));
            places.push_back(placeOf(Relation::suffixAt, own.ofSuffixRules.numberOf(reversed(path))));
        } else if (rule.policyType == rules::PolicyType::path) {
            places.push_back(placeOf(Relation::pathAt, own.ofPathRules.numberOf(path)));
        }
        return places;
    }

    // Calls `use` with each text of the other class that covers the rule's, and what is asked and left there.
    template <class Use> void forEachShared(const rules::PolicyRuleFields& rule, const Use& use) const
    {
        const std::string_view path = rule.path.view();
        const Paths& others = m_paths[1 - classIndex(rule)];
        others.ofPrefixRules.forEachBeginningOf(
            path, [&use](std::uint32_t text) { use(Relation::prefixAt, Relation::beginsWith, text); });
        others.ofSuffixRules.forEachBeginningOf(reversed(path),
            [&use](std::uint32_t text) { use(Relation::suffixAt, Relation::endsWith, text); });
        if (const auto text = others.ofPathRules.numberOf(path); text != Beginnings::none)
            use(Relation::pathAt, Relation::equals, text);
    }

    Choices programsOf(const rules::PolicyRuleFields& rule)
    {
        const Process process = processOf(rule);
        const Choices heads = choicesOf(process.head, m_names);
        const Choices parents = choicesOf(process.parent, m_names);
        const Choices constraints = constraintChoices(rule.constraint);
        return {numbered(heads.asked, parents.asked, constraints.asked),
            numbered(heads.left, parents.left, constraints.left)};
    }

    using TextNumbers = Numbers<std::string, rules::TextHash>;

    static Choices choicesOf(const std::optional<std::string>& name, TextNumbers& numbers)
    {
        if (!name)
            return {{forAll}, {forAny, forAll}};
        const std::uint32_t own = numbers.of(*name);
        return {{own, forAny}, {own, forAll}};
    }

    // A constraint asks for itself and for all of the other kinds.
    Choices constraintChoices(const rules::NullableText& constraint)
    {
        const ConstraintKind pinned = pinnedBy(constraint);
        const auto ofKind = [](ConstraintKind kind) { return forAll - static_cast<std::uint32_t>(kind); };
        Choices choices{{}, {ofKind(pinned)}};
        for (const ConstraintKind kind :
            {ConstraintKind::none, ConstraintKind::sha1, ConstraintKind::sha256, ConstraintKind::team}) {
            if (kind != pinned || kind == ConstraintKind::none)
                choices.asked.push_back(ofKind(kind));
        }
        if (pinned != ConstraintKind::none) {
            const std::uint32_t own = m_names.of(std::string(constraint.view()));
            choices.asked.push_back(own);
            choices.left.push_back(own);
        }
        return choices;
    }

    std::vector<std::uint32_t> numbered(const std::vector<std::uint32_t>& heads,
        const std::vector<std::uint32_t>& parents, const std::vector<std::uint32_t>& constraints)
    {
        std::vector<std::uint32_t> numbers;
        for (const std::uint32_t head : heads) {
            for (const std::uint32_t parent : parents) {
                for (const std::uint32_t constraint : constraints)
                    numbers.push_back(m_programs.of({head, parent, constraint}));
            }
        }
        return numbers;
    }

    std::array<Paths, 2> m_paths; // by class
    std::array<std::vector<bool>, 2> m_askedBy; // by class, then by number of programs
    TextNumbers m_names; // of heads, parents and constraints
    Numbers<Programs, ProgramsHash> m_programs;
    std::unordered_map<Key, std::size_t, KeyHash> m_first;
};

} // namespace

bool rulesOverlap(const rules::PolicyRuleFields& a, const rules::PolicyRuleFields& b)
{
    if (!takesPart(a) || !takesPart(b) || a.policyClass == b.policyClass
        || (a.operations & b.operations) == 0)
        return false;
    const Process one = processOf(a);
    const Process other = processOf(b);
    return mayBeTheSame(one.head, other.head) && mayBeTheSame(one.parent, other.parent)
        && mayBothHold(a.constraint, b.constraint) && pathsOverlap(a, b);
}

std::vector<std::size_t> firstOverlaps(
    const std::vector<const rules::PolicyRuleFields*>& rules, const std::stop_token& stop)
{
    Overlaps overlaps(rules, stop);
    std::vector<std::size_t> firsts;
    firsts.reserve(rules.size());
    for (const rules::PolicyRuleFields* rule : rules)
        firsts.push_back(
            rule == nullptr || stop.stop_requested() ? noOverlap : overlaps.pass(*rule, firsts.size()));
    return firsts;
}

} // namespace quorvane::workflow
