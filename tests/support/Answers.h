#pragma once

#include "codesign/CodeObject.h"
#include "codesign/TrustAnchor.h"
#include "tests/support/CmsBuilder.h"
#include "tests/support/MachOBuilder.h"

#include <string>

namespace quorvane::test {

// The root of the test authority as the one trusted certificate.
codesign::TrustAnchor testAnchor();

// All that is asked of a program, as one text: "basic 2, strict 2, com.example.tool, TEAM, platform 0,
// CERTIFICATE TEXT"; "none" stands for a text that is absent.
std::string answers(const codesign::CodeObject* code);
std::string answersAt(const std::string& path);
std::string answers(const codesign::Bytes& program);

// The two states alone: "2 3".
std::string states(const codesign::Bytes& program);

// The state by a flag word of one's own.
std::int32_t stateAt(const std::string& path, std::uint32_t flags);

// A plan signed by the test authority's signer, with its team.
SignaturePlan signedPlan(const CmsPlan& cms = {});
codesign::Bytes signedProgram(const CmsPlan& cms = {});

// A program of the usual kind with this signature.
codesign::Bytes programOf(const SignaturePlan& signature);

// The answers for the signed program under the test anchor, and what is left of them when its signer is not
// proven and both states are `state`.
inline constexpr const char* signedAnswers
    = "basic 2, strict 2, com.example.tool, TEAM123456, platform 0, Test Signer (TEAM123456)";
std::string unproven(const std::string& state);

} // namespace quorvane::test
