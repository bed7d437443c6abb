#include "rules/ApplicationIdentity.h"

#include "platform/PathComponents.h"

#include <cstddef>
#include <string_view>

namespace quorvane::rules {

namespace {

constexpr std::string_view viaPath = " via /";
constexpr std::string_view viaAny = " via any";
constexpr std::size_t viaLength = 5; // of " via "
constexpr std::string_view anyProcess = "Any Process";

struct ProcessParts {
    std::string_view head;
    std::optional<std::string_view> parent;
};

ProcessParts partsOf(std::string_view process)
{
    std::size_t end = process.find(viaPath);
    if (end == std::string_view::npos && process.ends_with(viaAny))
        end = process.size() - viaAny.size();
    if (end == std::string_view::npos)
        return {process, std::nullopt};
    return {process.substr(0, end), process.substr(end + viaLength)};
}

std::string joined(std::string_view start, std::string_view rest)
{
    std::string text(start);
    return text.append(rest);
}

// The text for the two special forms, with `shorten` applied to the path or name in them.
template <class Shorten> std::optional<std::string> ownForm(std::string_view head, Shorten shorten)
{
    if (head.starts_with(ProcessForm::anyVia))
        return joined("Any Process via ", shorten(head.substr(ProcessForm::anyVia.size())));
    if (head.starts_with(ProcessForm::anyAncestor))
        return joined("Any Process with ancestor ", shorten(head.substr(ProcessForm::anyAncestor.size())));
    return std::nullopt;
}

std::string_view headOrAnyProcess(std::string_view head)
{
    return head == ProcessForm::any ? anyProcess : head;
}

} // namespace

std::string applicationNameForProcess(const NullableText& process)
{
    const std::string_view head = headOrAnyProcess(partsOf(process.view()).head);
    if (auto text = ownForm(head, platform::lastPathComponent))
        return *text;
    return std::string(platform::lastPathComponent(head));
}

std::string applicationGroupIdentityForProcess(const NullableText& process, const NullableText& constraint)
{
    const ProcessParts parts = partsOf(process.written());
    const std::string_view head = headOrAnyProcess(parts.head);
    if (auto text = ownForm(head, [](std::string_view whole) { return whole; }))
        return *text;
    const std::string_view name = platform::lastPathComponent(head);
    const std::string_view parent = parts.parent.value_or("(null)");
    std::string key;
    key.reserve(name.size() + head.size() + parent.size() + constraint.written().size() + 3);
    key.append(name).append(":").append(head).append(":").append(parent).append(":");
    return key.append(constraint.written());
}

std::string applicationHeadForProcess(const NullableText& process)
{
    return std::string(partsOf(process.view()).head);
}

std::string applicationPathForProcess(const NullableText& process)
{
    const std::string_view head = partsOf(process.view()).head;
    return std::string(head.substr(0, head.find(" (-")));
}

std::optional<std::string> applicationParentPathForProcess(const NullableText& process)
{
    const auto parent = partsOf(process.view()).parent;
    return parent ? std::optional<std::string>(*parent) : std::nullopt;
}

std::optional<std::string> applicationParentNameForProcess(const NullableText& process)
{
    const auto parent = partsOf(process.view()).parent;
    return parent ? std::optional<std::string>(platform::lastPathComponent(*parent)) : std::nullopt;
}

std::string applicationBundlePathForPath(const NullableText& process)
{
    constexpr std::string_view bundleEnd = ".app/";
    const std::string_view head = partsOf(process.view()).head;
    const std::size_t found = head.find(bundleEnd);
    return std::string(found == std::string_view::npos ? head : head.substr(0, found + bundleEnd.size() - 1));
}

} // namespace quorvane::rules
