#include "tests/support/Answers.h"

#include "codesign/ProgramCode.h"
#include "codesign/SignatureQueries.h"
#include "tests/support/TemporaryFolder.h"

#include <algorithm>

namespace quorvane::test {

codesign::TrustAnchor testAnchor()
{
    codesign::TrustAnchor anchor{};
    const auto root = codesign::Certificate::parse(testAuthority().root.encoded());
    const codesign::HashValue fingerprint = root->fingerprint();
    std::copy_n(fingerprint.bytes.begin(), anchor.fingerprint.size(), anchor.fingerprint.begin());
    return anchor;
}

std::string answers(const codesign::CodeObject* code)
{
    return "basic " + std::to_string(codeSignState(code, codesign::basicFlags)) + ", strict "
        + std::to_string(codeSignState(code, codesign::strictFlags)) + ", "
        + codeSignText(code, codesign::kSecCodeInfoIdentifier).value_or("none") + ", "
        + codeSignText(code, codesign::kSecCodeInfoTeamIdentifier).value_or("none") + ", platform "
        + std::to_string(codeSignPlatformIdentifier(code)) + ", " + codeSignCertInfo(code);
}

std::string answersAt(const std::string& path)
{
    return answers(codesign::ProgramCode::atPath(path, testAnchor()).get());
}

std::string answers(const codesign::Bytes& program)
{
    const TemporaryFolder folder;
    return answersAt(folder.write("program", program));
}

std::string states(const codesign::Bytes& program)
{
    const TemporaryFolder folder;
    const auto code = codesign::ProgramCode::atPath(folder.write("program", program), testAnchor());
    return std::to_string(codeSignState(code.get(), codesign::basicFlags)) + " "
        + std::to_string(codeSignState(code.get(), codesign::strictFlags));
}

std::int32_t stateAt(const std::string& path, std::uint32_t flags)
{
    return codeSignState(codesign::ProgramCode::atPath(path, testAnchor()).get(), flags);
}

SignaturePlan signedPlan(const CmsPlan& cms)
{
    SignaturePlan plan;
    plan.directories.front().flags = 0;
    plan.directories.front().team = "TEAM123456";
    plan.sign = [cms](const std::vector<codesign::Bytes>& directories) { return makeCms(cms, directories); };
    return plan;
}

codesign::Bytes signedProgram(const CmsPlan& cms)
{
    return programOf(signedPlan(cms));
}

codesign::Bytes programOf(const SignaturePlan& signature)
{
    ProgramPlan plan;
    plan.signature = signature;
    return makeProgram(plan);
}

std::string unproven(const std::string& state)
{
    return "basic " + state + ", strict " + state
        + ", com.example.tool, none, platform 0, Self-Signed Certificate";
}

} // namespace quorvane::test
