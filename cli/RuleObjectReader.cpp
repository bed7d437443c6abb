#include "cli/RuleObjectReader.h"

#include "rules/RuleCodes.h"

#include <array>
#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <variant>

#include <nlohmann/json.hpp>

namespace quorvane::cli {

namespace {

enum Key : std::size_t {
    kind,
    policyClass,
    policyType,
    path,
    processName,
    tag,
    constraint,
    operations,
    created,
    keyCount
};

constexpr std::array<std::string_view, keyCount> keyNames{
    "kind", "policyClass", "policyType", "path", "processName", "tag", "constraint", "operations", "created"};

std::string quotedName(Key key)
{
    return "\"" + std::string(keyNames[key]) + "\"";
}

// The value of a key: absent, null, a number, a text, or a type that no key of a rule has.
struct Absent { };
struct Null { };
struct Other {
    const char* name;
};
using Value = std::variant<Absent, Null, std::uint64_t, std::string, Other>;

struct NameOfValue {
    std::string operator()(Absent) const { return "nothing"; }
    std::string operator()(Null) const { return "null"; }
    std::string operator()(std::uint64_t number) const { return std::to_string(number); }
    std::string operator()(const std::string&) const { return "a string"; }
    std::string operator()(const Other& other) const { return other.name; }
};

// Receives the parser's events without building a tree, so that deep nesting does no harm.
class ObjectReader : public nlohmann::json_sax<nlohmann::json> {
public:
    std::array<Value, keyCount> values{};

    bool null() override { return take(Null()); }
    bool boolean(bool /*value*/) override { return take(Other{"a boolean"}); }
    bool number_integer(number_integer_t /*value*/) override { return take(Other{"a negative number"}); }
    bool number_unsigned(number_unsigned_t value) override { return take(value); }
    bool number_float(number_float_t /*value*/, const string_t& /*text*/) override
    {
        return take(Other{"a number that is not whole, or too large"});
    }
    bool string(string_t& value) override { return take(std::move(value)); }
    bool binary(binary_t& /*value*/) override { return take(Other{"bytes"}); }

    bool start_object(std::size_t /*size*/) override
    {
        if (m_depth > 0)
            take(Other{"an object"});
        ++m_depth;
        return true;
    }
    bool start_array(std::size_t /*size*/) override
    {
        take(Other{"an array"});
        ++m_depth;
        return true;
    }
    bool end_object() override { return leave(); }
    bool end_array() override { return leave(); }

    bool key(string_t& name) override
    {
        if (m_depth > 1)
            return true;
        if (!m_names.insert(name).second)
            throw NoRuleError("the key \"" + name + "\" occurs twice");
        m_key.reset();
        for (std::size_t number = 0; number < keyCount; ++number) {
            if (keyNames[number] == name)
                m_key = number;
        }
        return true;
    }

    bool parse_error(std::size_t place, const std::string& /*token*/,
        const nlohmann::detail::exception& /*error*/) override
    {
        throw NoRuleError("expected a JSON object, whole and alone on its line: it is wrong at byte "
            + std::to_string(place));
    }

private:
    bool take(Value value)
    {
        if (m_depth == 0)
            throw NoRuleError("expected a JSON object, not " + std::visit(NameOfValue(), value));
        if (m_depth == 1 && m_key)
            values[*m_key] = std::move(value);
        return true;
    }
    bool leave()
    {
        --m_depth;
        return true;
    }

    std::size_t m_depth = 0;
    std::optional<std::size_t> m_key; // current key of the top-level object, if it is one of a rule's
    std::set<std::string> m_names;
};

// Typed access to the values of an object.
class RuleObject {
public:
    explicit RuleObject(const std::array<Value, keyCount>& values)
        : m_values(values)
    {
    }

    bool has(Key key) const
    {
        return !std::holds_alternative<Absent>(m_values[key]) && !std::holds_alternative<Null>(m_values[key]);
    }

    const std::string& text(Key key) const
    {
        if (const auto* text = std::get_if<std::string>(&m_values[key]))
            return *text;
        throw expected("a string", key);
    }
    std::string textOrEmpty(Key key) const { return has(key) ? text(key) : std::string(); }

    std::uint64_t number(Key key, std::uint64_t least, std::uint64_t most) const
    {
        const auto* number = std::get_if<std::uint64_t>(&m_values[key]);
        if (number != nullptr && *number >= least && *number <= most)
            return *number;
        const std::string low = std::to_string(least);
        throw expected(
            least == most ? low : "a whole number from " + low + " to " + std::to_string(most), key);
    }

    NoRuleError expected(const std::string& what, Key key) const
    {
        return NoRuleError("expected " + what + " for " + quotedName(key) + ", not "
            + std::visit(NameOfValue(), m_values[key]));
    }

private:
    const std::array<Value, keyCount>& m_values;
};

// The format cannot represent quotes in a tag and drops them.
std::string tagOf(const RuleObject& object)
{
    std::string text = object.textOrEmpty(tag);
    std::erase(text, '"');
    return text;
}

template <class Fields> void setCommonFields(Fields& rule, const RuleObject& object)
{
    rule.policyType = static_cast<std::int32_t>(
        object.number(policyType, rules::PolicyType::prefix, rules::PolicyType::suffix));
    rule.path = object.text(path);
    rule.processName = object.text(processName);
    rule.tag = tagOf(object);
    rule.operations = static_cast<std::uint32_t>(object.number(operations, 1, 31));
}

rules::RuleValue watchRuleOf(const RuleObject& object)
{
    rules::WatchRuleFields rule;
    object.number(policyClass, rules::PolicyClass::watch, rules::PolicyClass::watch);
    setCommonFields(rule, object);
    if (!object.textOrEmpty(constraint).empty())
        throw NoRuleError(
            object.expected("null", constraint).what() + std::string(": a watch rule has no constraint"));
    if (object.has(created))
        object.number(created, 0, 0); // a watch rule has no creation time
    return makeRuleValue(std::move(rule));
}

rules::RuleValue policyRuleOf(const RuleObject& object)
{
    rules::PolicyRuleFields rule;
    rule.policyClass = static_cast<std::int32_t>(
        object.number(policyClass, rules::PolicyClass::allow, rules::PolicyClass::deny));
    setCommonFields(rule, object);
    rule.constraint = object.textOrEmpty(constraint);
    if (object.has(created))
        rule.created = object.number(created, 0, UINT64_MAX);
    return makeRuleValue(std::move(rule));
}

} // namespace

workflow::WantedRule ruleOfJson(std::string_view line)
{
    ObjectReader reader;
    nlohmann::json::sax_parse(line, &reader);
    const RuleObject object(reader.values);
    const std::string& name = object.text(kind);
    if (name != "policy" && name != "watch")
        throw NoRuleError("expected \"policy\" or \"watch\" for \"kind\", not \"" + name + "\"");
    return {
        name == "watch" ? watchRuleOf(object) : policyRuleOf(object), object.has(tag), object.has(created)};
}

} // namespace quorvane::cli
