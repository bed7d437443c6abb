#include "platform/PropertyList.h"

#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const auto list = quorvane::PropertyList::parse({reinterpret_cast<const char*>(data), size});
    if (list) {
        // What can be written reads back as it was.
        const std::string xml = list->xml();
        const auto again = quorvane::PropertyList::parse(xml);
        if (again && again->xml() != xml)
            std::abort();
        list->description();
        for (const char* key : {"a", "access.user.create", "policy.global.paranoid"}) {
            list->boolForKey(key);
            list->integerForKey(key);
            list->stringForKey(key);
        }
    }
    return 0;
}
