#include "platform/PropertyListReader.h"

#include "platform/BinaryPropertyList.h"
#include "platform/Unicode.h"
#include "platform/XmlPropertyList.h"

namespace quorvane::platform {

std::optional<PropertyValue> readPropertyList(std::string_view bytes)
{
    constexpr std::string_view utf8Mark = "\xEF\xBB\xBF";
    if (bytes.size() > largestPropertyList)
        return std::nullopt;
    if (isBinaryPropertyList(bytes))
        return readBinaryPropertyList(bytes);
    const bool littleEndian = bytes.starts_with("\xFF\xFE");
    if (littleEndian || bytes.starts_with("\xFE\xFF")) {
        const auto text = textFromUtf16(bytes.substr(2), littleEndian);
        return text ? readXmlPropertyList(*text) : std::nullopt;
    }
    if (bytes.starts_with(utf8Mark))
        bytes.remove_prefix(utf8Mark.size());
    return isValidUtf8(bytes) ? readXmlPropertyList(bytes) : std::nullopt;
}

} // namespace quorvane::platform
