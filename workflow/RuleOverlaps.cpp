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
// The rules are processed in order. Each first queries all of its query keys for the smallest number stored
// there; then it stores its own number under every key that a rule overlapping it could query, unless an
// earlier number is there. A key combines programs and a relation to a path, for one operation and one class.
//
// Programs: a rule of one head stores under that head and under "all heads"; it queries its own head and
// "any". One of any head stores under "any" and "all heads", and queries "all heads". Parents and constraints
// likewise. Paths: a prefix rule covers a text when its own is a prefix of it. So a rule stores its number
// with every prefix of its path that is the path of some prefix rule of the other class, for these to query;
// and queries the same prefixes for these. Suffixes and suffix rules likewise. Keys that no rule of the other
// class will query are not stored.

namespace quorvane::workflow {

namespace {

bool takesPart(const rules::PolicyRuleFields& rule)
{
    return !rule.path.isNull()
        && (rule.policyClass == rules::PolicyClass::allow || rule.policyClass == rules::PolicyClass::deny);
}

// The processes that a rule applies to. No head: any. No parent: any parent or none.
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

// The kind of a constraint if two different ones of that kind cannot hold for the same program.
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

// A set of texts that finds those that are prefixes of another text.
class PrefixSet {
public:
    static constexpr std::uint32_t none = UINT32_MAX;

    void add(std::string text) { m_texts.push_back(std::move(text)); }

    // Call it when all texts have been added.
    void arrange()
    {
        std::sort(m_texts.begin(), m_texts.end());
        m_texts.erase(std::unique(m_texts.begin(), m_texts.end()), m_texts.end());
        m_longestPrefixes.reserve(m_texts.size());
        for (std::uint32_t number = 0; number < m_texts.size(); ++number)
            m_longestPrefixes.push_back(number == 0 ? none : longestPrefixFrom(number - 1, m_texts[number]));
    }

    // Calls `use` with the number of every text that is a prefix of `text`, longest first.
    template <class Use> void forEachPrefixOf(std::string_view text, const Use& use) const
    {
        // All of them are prefixes of the last text not greater than `text`, or that text itself.
        const auto behind = std::upper_bound(m_texts.begin(), m_texts.end(), text);
        if (behind == m_texts.begin())
            return;
        for (auto number = longestPrefixFrom(static_cast<std::uint32_t>(behind - m_texts.begin() - 1), text);
             number != none; number = m_longestPrefixes[number])
            use(number);
    }

    std::uint32_t numberOf(std::string_view text) const
    {
        const auto found = std::lower_bound(m_texts.begin(), m_texts.end(), text);
        return found == m_texts.end() || *found != text ? none
                                                        : static_cast<std::uint32_t>(found - m_texts.begin());
    }

private:
    // The longest of text `number` and its prefixes that is also a prefix of `text`.
    std::uint32_t longestPrefixFrom(std::uint32_t number, std::string_view text) const
    {
        while (number != none && !text.starts_with(m_texts[number]))
            number = m_longestPrefixes[number];
        return number;
    }

    std::vector<std::string> m_texts;
    std::vector<std::uint32_t> m_longestPrefixes; // the longest proper prefix of each text
};

std::string reversed(std::string_view text)
{
    return {text.rbegin(), text.rend()};
}

// What is indexed at a text, or for all of them.
enum class Relation : std::uint64_t {
    everything, // all rules
    everyPath, // rules whose path matches every path
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
    PrefixSet ofPrefixRules;
    PrefixSet ofSuffixRules; // reversed
    PrefixSet ofPathRules;
};

// A key for queries and stored numbers: a combination of programs, an operation of one class, and a relation
// to a path.
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

// Numbers for head, parent and constraint, each of which can also be "any" or "all".
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

// The numbers under which one property of a rule, or all of them combined, are queried and stored.
struct Choices {
    std::vector<std::uint32_t> queried;
    std::vector<std::uint32_t> stored;
};

constexpr std::uint32_t forAny = UINT32_MAX; // rules for any
constexpr std::uint32_t forAll = UINT32_MAX - 1; // all rules, whatever their value

std::size_t classIndex(const rules::PolicyRuleFields& rule)
{
    return rule.policyClass == rules::PolicyClass::allow ? 0 : 1;
}

// Calls `use` with a number for each operation of a rule, combined with that class.
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
            for (PrefixSet* texts : {&paths.ofPrefixRules, &paths.ofSuffixRules, &paths.ofPathRules})
                texts->arrange();
        }
    }

    // Processes the next rule: returns the first of the rules passed before that it overlaps.
    std::size_t pass(const rules::PolicyRuleFields& rule, std::size_t number)
    {
        if (!takesPart(rule))
            return noOverlap;
        const Choices programs = programsOf(rule);
        const std::size_t first = firstFound(rule, programs.queried);
        storeUnder(rule, programs.stored, number);
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
        std::vector<bool>& queried = m_queriedBy[classIndex(rule)];
        queried.resize(m_programs.size());
        for (const std::uint32_t number : programs.queried)
            queried[number] = true;
    }

    std::size_t firstFound(
        const rules::PolicyRuleFields& rule, const std::vector<std::uint32_t>& queried) const
    {
        const std::vector<std::uint64_t> places = askedPlaces(rule);
        std::size_t first = noOverlap;
        for (const std::uint32_t programs : queried) {
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

    void storeUnder(
        const rules::PolicyRuleFields& rule, const std::vector<std::uint32_t>& stored, std::size_t number)
    {
        const std::vector<bool>& queried = m_queriedBy[1 - classIndex(rule)];
        const std::vector<std::uint64_t> places = leftPlaces(rule);
        for (const std::uint32_t programs : stored) {
            if (programs >= queried.size() || !queried[programs])
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

    // Calls `use` with each text of the other class that covers the rule's, and what to query and store
    // there.
    template <class Use> void forEachShared(const rules::PolicyRuleFields& rule, const Use& use) const
    {
        const std::string_view path = rule.path.view();
        const Paths& others = m_paths[1 - classIndex(rule)];
        others.ofPrefixRules.forEachPrefixOf(
            path, [&use](std::uint32_t text) { use(Relation::prefixAt, Relation::beginsWith, text); });
        others.ofSuffixRules.forEachPrefixOf(reversed(path),
            [&use](std::uint32_t text) { use(Relation::suffixAt, Relation::endsWith, text); });
        if (const auto text = others.ofPathRules.numberOf(path); text != PrefixSet::none)
            use(Relation::pathAt, Relation::equals, text);
    }

    Choices programsOf(const rules::PolicyRuleFields& rule)
    {
        const Process process = processOf(rule);
        const Choices heads = choicesOf(process.head, m_names);
        const Choices parents = choicesOf(process.parent, m_names);
        const Choices constraints = constraintChoices(rule.constraint);
        return {numbered(heads.queried, parents.queried, constraints.queried),
            numbered(heads.stored, parents.stored, constraints.stored)};
    }

    using TextNumbers = Numbers<std::string, rules::TextHash>;

    static Choices choicesOf(const std::optional<std::string>& name, TextNumbers& numbers)
    {
        if (!name)
            return {{forAll}, {forAny, forAll}};
        const std::uint32_t own = numbers.of(*name);
        return {{own, forAny}, {own, forAll}};
    }

    // A constraint queries itself and all of the other kinds.
    Choices constraintChoices(const rules::NullableText& constraint)
    {
        const ConstraintKind pinned = pinnedBy(constraint);
        const auto ofKind = [](ConstraintKind kind) { return forAll - static_cast<std::uint32_t>(kind); };
        Choices choices{{}, {ofKind(pinned)}};
        for (const ConstraintKind kind :
            {ConstraintKind::none, ConstraintKind::sha1, ConstraintKind::sha256, ConstraintKind::team}) {
            if (kind != pinned || kind == ConstraintKind::none)
                choices.queried.push_back(ofKind(kind));
        }
        if (pinned != ConstraintKind::none) {
            const std::uint32_t own = m_names.of(std::string(constraint.view()));
            choices.queried.push_back(own);
            choices.stored.push_back(own);
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
    std::array<std::vector<bool>, 2> m_queriedBy; // by class, then by number of programs
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
