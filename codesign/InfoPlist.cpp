#include "codesign/InfoPlist.h"

#include "codesign/BinaryPropertyList.h"
#include "codesign/XmlPropertyList.h"

namespace quorvane {

namespace {

constexpr std::string_view executableKey = "CFBundleExecutable";

bool isPlainFileName(const std::string& name)
{
    return !name.empty() && name != "." && name != ".." && name.find('/') == std::string::npos
        && name.find('\0') == std::string::npos;
}

} // namespace

std::optional<InfoPlist> parseInfoPlist(ByteView bytes)
{
    InfoPlist info;
    if (isBinaryPropertyList(bytes)) {
        if (!readTextFromBinaryPropertyList(bytes, executableKey, info.executable))
            return std::nullopt;
    } else {
        const auto list = parseXmlPropertyList(bytes);
        if (!list || list->kind != PropertyValue::Kind::dictionary)
            return std::nullopt;
        const PropertyValue* name = list->find(executableKey);
        if (name != nullptr && name->kind == PropertyValue::Kind::string)
            info.executable = name->text;
    }
    if (info.executable && !isPlainFileName(*info.executable))
        return std::nullopt;
    return info;
}

} // namespace quorvane
