#include "platform/PropertyList.h"

#include "platform/FileBytes.h"
#include "platform/NumberText.h"
#include "platform/PropertyListReader.h"
#include "platform/PropertyListText.h"
#include "platform/PropertyListWriter.h"

#include <algorithm>
#include <cmath>
#include <type_traits>
#include <utility>

namespace quorvane::platform {

namespace {

bool boolFromText(std::string_view text)
{
    const std::size_t start = text.find_first_not_of(" \t\n\r");
    text.remove_prefix(std::min(start, text.size()));
    if (!text.empty() && (text.front() == '+' || text.front() == '-'))
        text.remove_prefix(1);
    text.remove_prefix(std::min(text.find_first_not_of('0'), text.size()));
    return !text.empty() && std::string_view("YyTt123456789").find(text.front()) != std::string_view::npos;
}

std::int32_t low32Bits(std::uint64_t number)
{
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(number));
}

std::int32_t cutReal(double number)
{
    constexpr double bound = 9.2e18; // within 64 bits
    if (std::isnan(number))
        return 0;
    return low32Bits(
        static_cast<std::uint64_t>(static_cast<std::int64_t>(std::clamp(number, -bound, bound))));
}

} // namespace

PropertyList::PropertyList(PropertyValue root)
    : m_root(std::move(root))
{
}

std::optional<PropertyList> PropertyList::read(const std::string& path)
{
    std::error_code ignored;
    return read(path, ignored);
}

std::optional<PropertyList> PropertyList::read(const std::string& path, std::error_code& error)
{
    const auto bytes = readSmallFile(path, largestPropertyList, error);
    return bytes ? parse(*bytes) : std::nullopt;
}

std::optional<PropertyList> PropertyList::parse(std::string_view bytes)
{
    auto root = readPropertyList(bytes);
    if (!root || root->as<PropertyValue::Dictionary>() == nullptr)
        return std::nullopt;
    return PropertyList(std::move(*root));
}

bool PropertyList::boolForKey(const std::string& key) const
{
    const PropertyValue* found = m_root.find(key);
    const auto asBool = [](const auto& value) {
        using Value = std::decay_t<decltype(value)>;
        if constexpr (std::is_arithmetic_v<Value>)
            return value != Value(0);
        else if constexpr (std::is_same_v<Value, std::string>)
            return boolFromText(value);
        else
            return false;
    };
    return found != nullptr && std::visit(asBool, found->value);
}

std::optional<std::string> PropertyList::stringForKey(const std::string& key) const
{
    const auto* text = m_root.find<std::string>(key);
    return text == nullptr ? std::nullopt : std::optional(*text);
}

std::int32_t PropertyList::integerForKey(const std::string& key) const
{
    const PropertyValue* found = m_root.find(key);
    const auto asInteger = [](const auto& value) -> std::int32_t {
        using Value = std::decay_t<decltype(value)>;
        if constexpr (std::is_same_v<Value, double>)
            return cutReal(value);
        else if constexpr (std::is_arithmetic_v<Value>)
            return low32Bits(static_cast<std::uint64_t>(value));
        else if constexpr (std::is_same_v<Value, std::string>)
            return static_cast<std::int32_t>(
                std::clamp<std::int64_t>(leadingInteger(value), INT32_MIN, INT32_MAX));
        else
            return 0;
    };
    return found == nullptr ? 0 : std::visit(asInteger, found->value);
}

void PropertyList::set(const std::string& key, PropertyValue value)
{
    auto& entries = std::get<PropertyValue::Dictionary>(m_root.value);
    const auto found = std::find_if(entries.begin(), entries.end(),
        [&key](const PropertyValue::Entry& entry) { return entry.key == key; });
    if (found == entries.end())
        entries.push_back({key, std::move(value)});
    else
        found->value = std::move(value);
}

void PropertyList::setBool(const std::string& key, bool value)
{
    set(key, PropertyValue{value});
}

void PropertyList::setInteger(const std::string& key, std::int32_t value)
{
    set(key, PropertyValue{std::int64_t{value}});
}

std::optional<std::string> PropertyList::fileBytes() const
{
    auto bytes = xmlPropertyList(m_root, largestPropertyList);
    return bytes ? std::move(bytes) : binaryPropertyList(m_root, largestPropertyList);
}

std::string PropertyList::description() const
{
    return propertyListText(m_root);
}

bool PropertyList::writeToFile(const std::string& path) const
{
    const auto bytes = fileBytes();
    return bytes && writeFileInPlace(path, *bytes);
}

} // namespace quorvane::platform
