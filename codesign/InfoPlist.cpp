#include "codesign/InfoPlist.h"

#include "platform/PropertyListReader.h"

namespace quorvane::codesign {

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
    const auto list = platform::readPropertyList(bytes.text());
    if (!list || list->as<platform::PropertyValue::Dictionary>() == nullptr)
        return std::nullopt;
    InfoPlist info;
    if (const auto* name = list->find<std::string>(executableKey))
        info.executable = *name;
    if (info.executable && !isPlainFileName(*info.executable))
        return std::nullopt;
    return info;
}

} // namespace quorvane::codesign
