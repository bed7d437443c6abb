#include "codesign/CertificateChain.h"

#include <algorithm>

namespace quorvane::codesign {

namespace {

constexpr std::size_t longestChain = 10;
constexpr int mostWrongIssuers = 200;

} // namespace

bool CertificateChain::issuersAreAuthorities() const
{
    for (std::size_t i = 1; i + 1 < certificates.size(); ++i) {
        if (!certificates[i].isAuthority())
            return false;
    }
    return true;
}

bool CertificateChain::isValidAt(std::time_t time) const
{
    return std::all_of(certificates.begin(), certificates.end(),
        [time](const Certificate& one) { return one.isValidAt(time); });
}

// Extends the chain by the first unused certificate that issued the last one. Never backtracks, so that the
// number of signature checks is bounded.
CertificateChain buildChain(const Certificate& leaf, const std::vector<Certificate>& others)
{
    CertificateChain chain;
    chain.certificates.push_back(leaf);
    int attemptsLeft = mostWrongIssuers;
    while (chain.certificates.size() <= longestChain) {
        const Certificate last = chain.certificates.back();
        if (last.isSelfSigned()) {
            chain.endsSelfSigned = true;
            break;
        }
        const auto issuer = std::find_if(others.begin(), others.end(), [&](const Certificate& candidate) {
            const bool taken = std::any_of(chain.certificates.begin(), chain.certificates.end(),
                [&](const Certificate& one) { return one.isSameAs(candidate); });
            return !taken && last.namesAsIssuer(candidate) && attemptsLeft-- > 0
                && last.isIssuedBy(candidate);
        });
        if (issuer == others.end())
            break;
        chain.certificates.push_back(*issuer);
    }
    return chain;
}

} // namespace quorvane::codesign
