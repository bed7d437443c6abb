#include "rules/RulesSnapshot.h"

#include "rules/RuleMarks.h"

#include <algorithm>

namespace quorvane::rules {

namespace {

// How far behind the last rule found the next one is looked for. Rules are further apart only where many
// lines in a row were joined; what follows is then held anew.
constexpr std::size_t farthest = 64;

} // namespace

// A file reads as the rules that were written to it, in their order, save that some read as others and that
// some are missing.
RulesSnapshot RulesSnapshot::ofRead(const std::vector<RuleValue>& read, const RulesSnapshot& meant)
{
    const std::size_t missing = meant.size() - std::min(meant.size(), read.size());
    std::size_t next = 0; // in `meant`
    const auto isMeant = [&](const RuleValue& rule, std::size_t place) {
        const std::size_t end = std::min({meant.size(), place + missing + 1, next + farthest});
        for (std::size_t at = next; at < end; ++at) {
            if (isEqualWithMarks(meant.at(at), rule)) {
                next = at;
                return true;
            }
        }
        return false;
    };
    RulesSnapshot snapshot;
    snapshot.m_values = meant.m_values;
    std::vector<RuleValue> others = meant.m_others ? *meant.m_others : std::vector<RuleValue>();
    std::vector<std::uint32_t> order;
    order.reserve(read.size());
    const std::size_t shared = meant.m_values.size();
    for (std::size_t place = 0; place < read.size(); ++place, ++next) {
        if (isMeant(read[place], place)) {
            order.push_back((*meant.m_order)[next]);
        } else {
            order.push_back(static_cast<std::uint32_t>(shared + others.size()));
            others.push_back(read[place]);
        }
    }
    snapshot.m_others = std::make_shared<const std::vector<RuleValue>>(std::move(others));
    snapshot.m_order = std::make_shared<const std::vector<std::uint32_t>>(std::move(order));
    return snapshot;
}

} // namespace quorvane::rules
