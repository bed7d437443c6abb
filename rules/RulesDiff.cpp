#include "rules/RulesDiff.h"

#include "rules/RuleMarks.h"
#include "rules/RuleNumbering.h"

namespace quorvane::rules {

RulesDifference rulesDifference(const std::vector<RuleValue>& before, const std::vector<RuleValue>& after)
{
    RulesDifference difference;
    RuleNumbering numbering;
    std::vector<const RuleValue*> earlier; // by number: the first rule of it
    for (const RuleValue& rule : before) {
        if (numbering.numberOf(rule) == earlier.size())
            earlier.push_back(&rule);
    }
    std::vector<bool> isMet(earlier.size()); // by number: is in the later list
    for (const RuleValue& rule : after) {
        const std::uint32_t number = numbering.numberOf(rule);
        if (number == isMet.size())
            difference.added.push_back(rule);
        else if (isMet[number])
            continue;
        else if (!hasSameMarks(*earlier[number], rule))
            difference.changed.emplace_back(*earlier[number], rule);
        isMet.resize(numbering.size());
        isMet[number] = true;
    }
    for (std::size_t number = 0; number < earlier.size(); ++number) {
        if (!isMet[number])
            difference.removed.push_back(*earlier[number]);
    }
    return difference;
}

} // namespace quorvane::rules
