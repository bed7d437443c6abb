#include "cli/Commands.h"
#include "cli/Output.h"
#include "codesign/Digests.h"

namespace quorvane {

int digestCommand(const std::vector<std::string>& paths)
{
    Output output;
    bool allRead = true;
    for (const std::string& path : paths) {
        const std::string name = printable(path);
        if (const auto digests = digestsOfFile(path)) {
            output.write("SHA1 (" + name + ") = " + digests->sha1 + "\n");
            output.write("SHA256 (" + name + ") = " + digests->sha256 + "\n");
        } else {
            complain("cannot read " + name + ": it is missing, unreadable or no regular file");
            allRead = false;
        }
    }
    return output.finish() && allRead ? 0 : 1;
}

} // namespace quorvane
