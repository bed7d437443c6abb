#pragma once

#include "codesign/CodeObject.h"
#include "codesign/TrustAnchor.h"
#include "tests/support/CmsBuilder.h"
#include "tests/support/MachOBuilder.h"

#include <string>

namespace quorvane::test {

// The root of the test authority as the one trusted certificate.
codesign::TrustAnchor testAnchor();

// All query results for a program, as one text: "basic 2, strict 2, com.example.tool, TEAM, platform 0,
// CERTIFICATE TEXT"; "none" for an absent text.
std::string answers(const codesign::CodeObject* code);
std::string answersAt(const std::string& path);
std::string answers(const codesign::Bytes& program);

// Only the two states: "2 3".
std::string states(const codesign::Bytes& program);

// The state for a given flag word.
std::int32_t stateAt(const std::string& path, std::uint32_t flags);

// A plan signed by the test authority's signer, with its team.
SignaturePlan signedPlan(const CmsPlan& cms = {});
codesign::Bytes signedProgram(const CmsPlan& cms = {});

// A program of the usual kind with this signature.
codesign::Bytes programOf(const SignaturePlan& signature);

// The answers for the signed program under the test anchor, and those when its signer is not proven and both
// states are `state`.
inline constexpr const char* signedAnswers
    = "basic 2, strict 2, com.example.tool, TEAM123456, platform 0, Test Signer (TEAM123456)";
std::string unproven(const std::string& state);

} // namespace quorvane::test
