#include "platform/PropertyList.h"
#include "platform/PropertyListReader.h"
#include "platform/PropertyListWriter.h"

#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

namespace {

using namespace quorvane;

// A written list must read back unchanged: written again it gives the same bytes.
template <class Write> void readBack(const platform::PropertyValue& list, const Write& write)
{
    const auto bytes = write(list, platform::largestPropertyList);
    if (!bytes)
        return;
    const auto again = platform::readPropertyList(*bytes);
    if (!again || write(*again, platform::largestPropertyList) != bytes)
        std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    if (const auto value = platform::readPropertyList(bytes)) {
        readBack(*value, platform::xmlPropertyList);
        readBack(*value, platform::binaryPropertyList);
    }
    if (const auto list = platform::PropertyList::parse(bytes)) {
        list->description();
        for (const char* key : {"a", "access.user.create", "policy.global.paranoid"}) {
            list->boolForKey(key);
            list->integerForKey(key);
            list->stringForKey(key);
        }
    }
    return 0;
}
