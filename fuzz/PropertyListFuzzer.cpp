#include "platform/PropertyList.h"
#include "platform/PropertyListReader.h"
#include "platform/PropertyListWriter.h"

#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

namespace {

using namespace quorvane;

// What was written reads back as it was: written once more it gives the same bytes.
template <class Write> void readBack(const PropertyValue& list, const Write& write)
{
    const auto bytes = write(list, largestPropertyList);
    if (!bytes)
        return;
    const auto again = readPropertyList(*bytes);
    if (!again || write(*again, largestPropertyList) != bytes)
        std::abort();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    if (const auto value = readPropertyList(bytes)) {
        readBack(*value, xmlPropertyList);
        readBack(*value, binaryPropertyList);
    }
    if (const auto list = PropertyList::parse(bytes)) {
        list->description();
        for (const char* key : {"a", "access.user.create", "policy.global.paranoid"}) {
            list->boolForKey(key);
            list->integerForKey(key);
            list->stringForKey(key);
        }
    }
    return 0;
}
