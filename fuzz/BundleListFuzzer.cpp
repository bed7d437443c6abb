#include "codesign/InfoPlist.h"
#include "codesign/SealRules.h"
#include "platform/PropertyListReader.h"

#include <cstdint>
#include <cstdlib>

// Any bytes as the property lists of a bundle. An executable's name must never lead out of its folder.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace quorvane;
    const auto info = parseInfoPlist(codesign::ByteView(data, size));
    if (info && info->executable && info->executable->find('/') != std::string::npos)
        std::abort();
    const auto list = platform::readPropertyList(codesign::ByteView(data, size).text());
    const auto* dictionary = list ? list->as<platform::PropertyValue::Dictionary>() : nullptr;
    if (const auto rules = dictionary != nullptr ? codesign::SealRules::parse(*dictionary) : std::nullopt)
        rules->mayBeUnsealed("Contents/Resources/en.lproj/.DS_Store");
    return 0;
}
