#pragma once

#include "rules/NullableText.h"

#include <optional>
#include <string>
#include <string_view>

// The application that a rule's process string identifies. Pure functions.
//
// A process string is a head, which is an executable path or "any", optionally followed by a parent part:
// " via " and the path of the program it was started through, or " via any" at the very end. Two special
// forms: "any ancestor PATH" and "any via NAME", where NAME does not begin with "/".

namespace quorvane::rules {

// The beginnings of process strings that match more than one program.
namespace ProcessForm {
inline constexpr std::string_view any = "any";
inline constexpr std::string_view anyVia = "any via ";
inline constexpr std::string_view anyAncestor = "any ancestor ";
} // namespace ProcessForm

// The short display name: "Mail" for ".../MacOS/Mail", "Any Process" for "any". Never names the parent.
std::string applicationNameForProcess(const NullableText& process);

// The key under which policy rules are stored and banded: "name:head:parent:constraint", in which a missing
// parent is "(null)"; the special forms make a key without parent and constraint.
std::string applicationGroupIdentityForProcess(const NullableText& process, const NullableText& constraint);

// The head: the text before the parent part.
std::string applicationHeadForProcess(const NullableText& process);

// The head, cut before " (-" if present.
std::string applicationPathForProcess(const NullableText& process);

// The parent: a path, or "any"; none when the string has no parent part.
std::optional<std::string> applicationParentPathForProcess(const NullableText& process);

// The parent's last path component.
std::optional<std::string> applicationParentNameForProcess(const NullableText& process);

// The outermost ".app" bundle in the head, which is the one the user knows; the head when it contains none.
std::string applicationBundlePathForPath(const NullableText& process);

// The same for a rule of either kind; call them on the thread that owns the rule.

template <class Rule> std::string applicationNameForRule(const Rule& rule)
{
    return applicationNameForProcess(rule.fields().processName);
}

template <class Fields> std::string applicationGroupIdentityForFields(const Fields& rule)
{
    if constexpr (requires { rule.constraint; })
        return applicationGroupIdentityForProcess(rule.processName, rule.constraint);
    else
        return applicationGroupIdentityForProcess(rule.processName, "");
}

template <class Rule> std::string applicationGroupIdentityForRule(const Rule& rule)
{
    return applicationGroupIdentityForFields(rule.fields());
}

template <class Rule> std::string applicationPathForRule(const Rule& rule)
{
    return applicationPathForProcess(rule.fields().processName);
}

template <class Rule> std::optional<std::string> applicationParentPathForRule(const Rule& rule)
{
    return applicationParentPathForProcess(rule.fields().processName);
}

template <class Rule> std::optional<std::string> applicationParentNameForRule(const Rule& rule)
{
    return applicationParentNameForProcess(rule.fields().processName);
}

template <class Rule> std::string applicationBundlePathForRule(const Rule& rule)
{
    return applicationBundlePathForPath(rule.fields().processName);
}

// The name as lists of rules show it: with " via " and the parent's name.
template <class Rule> std::string shownApplicationNameForRule(const Rule& rule)
{
    std::string name = applicationNameForRule(rule);
    if (const auto parent = applicationParentNameForRule(rule))
        name.append(" via ").append(*parent);
    return name;
}

} // namespace quorvane::rules
