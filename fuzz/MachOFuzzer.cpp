#include "codesign/ProgramCode.h"
#include "codesign/SignatureQueries.h"

#include <cstdint>
#include <cstdlib>
#include <string>

#include <sys/mman.h>
#include <unistd.h>

// The whole query: any bytes as a program file. Besides not crashing, a program that passes all checks must
// pass the basic ones, and none may have a team unless its signer is proven.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace quorvane;
    const platform::FileDescriptor file(memfd_create("program", MFD_CLOEXEC));
    if (!file || write(file.get(), data, size) != static_cast<ssize_t>(size))
        return 0;
    const auto code = codesign::ProgramCode::atPath("/proc/self/fd/" + std::to_string(file.get()));
    const std::int32_t basic = codeSignState(code.get(), codesign::basicFlags);
    const std::int32_t strict = codeSignState(code.get(), codesign::strictFlags);
    codeSignState(code.get(), 0);
    if (basic < 1 || basic > 6
        || (strict == codesign::signatureState::valid && basic != codesign::signatureState::valid))
        std::abort();
    if (codeSignText(code.get(), codesign::kSecCodeInfoTeamIdentifier)
        && code->signingInformation().certificates.empty())
        std::abort();
    codeSignCertInfo(code.get());
    return 0;
}
