#include "codesign/InfoPlist.h"
#include "codesign/SealRules.h"
#include "codesign/XmlPropertyList.h"

#include <cstdint>
#include <cstdlib>

// Any bytes as the property lists of a bundle. An executable's name must never lead out of its folder.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace quorvane;
    const auto info = parseInfoPlist(ByteView(data, size));
    if (info && info->executable && info->executable->find('/') != std::string::npos)
        std::abort();
    const auto list = parseXmlPropertyList(ByteView(data, size));
    if (list && list->kind == PropertyValue::Kind::dictionary && list->keys.size() != list->items.size())
        std::abort();
    if (const auto rules = list ? SealRules::parse(*list) : std::nullopt)
        rules->mayBeUnsealed("Contents/Resources/en.lproj/.DS_Store");
    return 0;
}
