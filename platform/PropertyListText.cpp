#include "platform/PropertyListText.h"

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <sstream>
#include <string_view>

#include <plist/plist.h>

namespace quorvane {

namespace {

constexpr int deepestShown = 64;

using OwnedByLibrary = std::unique_ptr<void, decltype(&std::free)>;

void appendValue(std::ostream& out, plist_t node, int depth);

void appendQuoted(std::ostream& out, std::string_view text)
{
    out << '"';
    for (const char c : text) {
        if (c == '"' || c == '\\')
            out << '\\' << c;
        else if (c == '\n')
            out << "\\n";
        else
            out << c;
    }
    out << '"';
}

void appendData(std::ostream& out, plist_t node)
{
    constexpr std::string_view digits = "0123456789abcdef";
    std::uint64_t length = 0;
    const char* bytes = plist_get_data_ptr(node, &length);
    out << '<';
    for (const char byte : std::string_view(bytes, bytes == nullptr ? 0 : length)) {
        const auto value = static_cast<unsigned char>(byte);
        out << digits[value >> 4U] << digits[value & 0xFU];
    }
    out << '>';
}

void appendArray(std::ostream& out, plist_t array, int depth)
{
    const char* separator = "";
    plist_array_iter iterator = nullptr;
    plist_array_new_iter(array, &iterator);
    const OwnedByLibrary owned(iterator, &std::free);
    plist_t item = nullptr;
    out << '(';
    for (plist_array_next_item(array, iterator, &item); item != nullptr;
         plist_array_next_item(array, iterator, &item)) {
        out << separator;
        appendValue(out, item, depth + 1);
        separator = ", ";
    }
    out << ')';
}

void appendDictionary(std::ostream& out, plist_t dictionary, int depth)
{
    const char* separator = "";
    plist_dict_iter iterator = nullptr;
    plist_dict_new_iter(dictionary, &iterator);
    const OwnedByLibrary owned(iterator, &std::free);
    char* key = nullptr;
    plist_t item = nullptr;
    out << '{';
    for (plist_dict_next_item(dictionary, iterator, &key, &item); item != nullptr;
         plist_dict_next_item(dictionary, iterator, &key, &item)) {
        const OwnedByLibrary ownedKey(key, &std::free);
        out << separator;
        appendQuoted(out, key);
        out << " = ";
        appendValue(out, item, depth + 1);
        separator = "; ";
    }
    out << '}';
}

void appendValue(std::ostream& out, plist_t node, int depth)
{
    if (depth > deepestShown) {
        out << "...";
        return;
    }
    switch (plist_get_node_type(node)) {
    case PLIST_BOOLEAN: {
        std::uint8_t flag = 0;
        plist_get_bool_val(node, &flag);
        out << (flag != 0 ? 1 : 0);
        break;
    }
    case PLIST_UINT: {
        std::uint64_t number = 0;
        plist_get_uint_val(node, &number);
        out << static_cast<std::int64_t>(number); // negative numbers arrive as their 64 bits
        break;
    }
    case PLIST_REAL: {
        double real = 0;
        plist_get_real_val(node, &real);
        out << real;
        break;
    }
    case PLIST_STRING: {
        std::uint64_t length = 0;
        const char* text = plist_get_string_ptr(node, &length);
        appendQuoted(out, std::string_view(text, text == nullptr ? 0 : length));
        break;
    }
    case PLIST_DATE: {
        std::int32_t seconds = 0;
        std::int32_t microseconds = 0;
        plist_get_date_val(node, &seconds, &microseconds);
        out << seconds;
        break;
    }
    case PLIST_UID: {
        std::uint64_t number = 0;
        plist_get_uid_val(node, &number);
        out << number;
        break;
    }
    case PLIST_DATA:
        appendData(out, node);
        break;
    case PLIST_ARRAY:
        appendArray(out, node, depth);
        break;
    case PLIST_DICT:
        appendDictionary(out, node, depth);
        break;
    default:
        break;
    }
}

} // namespace

std::string propertyListText(void* node)
{
    std::ostringstream out;
    appendValue(out, node, 0);
    return out.str();
}

} // namespace quorvane
