#include "platform/PropertyList.h"

#include "platform/BinaryListShape.h"
#include "platform/FileBytes.h"
#include "platform/NumberText.h"
#include "platform/PropertyListText.h"

#include <algorithm>
#include <clocale>
#include <cmath>
#include <utility>

#include <plist/plist.h>
#include <unicode/unistr.h>

namespace quorvane {

namespace {

// The library takes nested lists apart by recursion; this keeps the deepest nesting that fits in a file well
// within a thread's stack. Real preferences are a few kilobytes.
constexpr std::size_t largestFile = 128U << 10U;

// While it lives, this thread reads and writes numbers with a point: the library goes by the locale, and in
// some of them it would read 2.5 as 2.
class PlainNumbers {
public:
    PlainNumbers()
        : m_plain(newlocale(LC_ALL_MASK, "C", nullptr))
        , m_before(uselocale(m_plain))
    {
    }
    ~PlainNumbers()
    {
        uselocale(m_before);
        freelocale(m_plain);
    }
    PlainNumbers(const PlainNumbers&) = delete;
    PlainNumbers& operator=(const PlainNumbers&) = delete;

private:
    locale_t m_plain;
    locale_t m_before;
};

bool startsWith(std::string_view text, std::string_view start)
{
    return text.substr(0, start.size()) == start;
}

// The library knows neither byte order marks nor UTF-16.
std::string withoutByteOrderMark(std::string_view bytes)
{
    if (startsWith(bytes, "\xEF\xBB\xBF"))
        return std::string(bytes.substr(3));
    const bool littleEndian = startsWith(bytes, "\xFF\xFE");
    if (!littleEndian && !startsWith(bytes, "\xFE\xFF"))
        return std::string(bytes);
    const icu::UnicodeString decoded(bytes.data() + 2, static_cast<std::int32_t>(bytes.size() - 2),
        littleEndian ? "UTF-16LE" : "UTF-16BE");
    std::string text;
    return decoded.toUTF8String(text);
}

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

bool boolValue(plist_t node)
{
    std::uint8_t flag = 0;
    plist_get_bool_val(node, &flag);
    return flag != 0;
}

// Negative numbers arrive as their 64 bits.
std::uint64_t integerValue(plist_t node)
{
    std::uint64_t number = 0;
    plist_get_uint_val(node, &number);
    return number;
}

double realValue(plist_t node)
{
    double real = 0;
    plist_get_real_val(node, &real);
    return real;
}

std::string_view stringValue(plist_t node)
{
    std::uint64_t length = 0;
    const char* text = plist_get_string_ptr(node, &length);
    return text == nullptr ? std::string_view() : std::string_view(text, length);
}

} // namespace

void PropertyList::Free::operator()(Node root) const
{
    plist_free(root);
}

PropertyList::PropertyList()
    : m_root(plist_new_dict())
{
}

PropertyList::PropertyList(Root root)
    : m_root(std::move(root))
{
}

std::optional<PropertyList> PropertyList::read(const std::string& path)
{
    const auto bytes = readSmallFile(path, largestFile);
    return bytes ? parse(*bytes) : std::nullopt;
}

std::optional<PropertyList> PropertyList::parse(std::string_view bytes)
{
    if (bytes.size() > largestFile)
        return std::nullopt;
    const std::string plain = withoutByteOrderMark(bytes);
    // The library would unfold shared containers without end.
    if (startsWith(plain, "bplist") && !unfoldsWithinBounds(plain))
        return std::nullopt;
    plist_t root = nullptr;
    const PlainNumbers plainNumbers;
    plist_from_memory(plain.data(), static_cast<std::uint32_t>(plain.size()), &root);
    Root owned(root);
    if (root == nullptr || plist_get_node_type(root) != PLIST_DICT)
        return std::nullopt;
    return PropertyList(std::move(owned));
}

PropertyList::Node PropertyList::nodeForKey(const std::string& key) const
{
    return plist_dict_get_item(m_root.get(), key.c_str());
}

bool PropertyList::boolForKey(const std::string& key) const
{
    plist_t node = nodeForKey(key);
    switch (plist_get_node_type(node)) {
    case PLIST_BOOLEAN:
        return boolValue(node);
    case PLIST_UINT:
        return integerValue(node) != 0;
    case PLIST_REAL:
        return realValue(node) != 0;
    case PLIST_STRING:
        return boolFromText(stringValue(node));
    default:
        return false;
    }
}

std::optional<std::string> PropertyList::stringForKey(const std::string& key) const
{
    plist_t node = nodeForKey(key);
    if (plist_get_node_type(node) != PLIST_STRING)
        return std::nullopt;
    return std::string(stringValue(node));
}

std::int32_t PropertyList::integerForKey(const std::string& key) const
{
    plist_t node = nodeForKey(key);
    switch (plist_get_node_type(node)) {
    case PLIST_BOOLEAN:
        return boolValue(node) ? 1 : 0;
    case PLIST_UINT:
        return low32Bits(integerValue(node));
    case PLIST_REAL:
        return cutReal(realValue(node));
    case PLIST_STRING:
        return static_cast<std::int32_t>(
            std::clamp<std::int64_t>(leadingInteger(stringValue(node)), INT32_MIN, INT32_MAX));
    default:
        return 0;
    }
}

void PropertyList::setBool(const std::string& key, bool value)
{
    plist_dict_set_item(m_root.get(), key.c_str(), plist_new_bool(value ? 1 : 0));
}

void PropertyList::setInteger(const std::string& key, std::int32_t value)
{
    plist_dict_set_item(m_root.get(), key.c_str(), plist_new_uint(static_cast<std::uint64_t>(value)));
}

std::string PropertyList::xml() const
{
    char* text = nullptr;
    std::uint32_t length = 0;
    const PlainNumbers plainNumbers;
    plist_to_xml(m_root.get(), &text, &length);
    std::string xml(text == nullptr ? "" : text, text == nullptr ? 0 : length);
    plist_to_xml_free(text);
    return xml;
}

std::string PropertyList::description() const
{
    return propertyListText(m_root.get());
}

bool PropertyList::writeToFile(const std::string& path) const
{
    const std::string bytes = xml();
    return parse(bytes) && writeFileInPlace(path, bytes);
}

} // namespace quorvane
