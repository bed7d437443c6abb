#pragma once

#include <QIcon>

namespace quorvane {

constexpr int stateImageSize = 12; // logical pixels

// The small marks of rules, a little faded so that the texts beside them come first.
const QIcon& systemRuleImage();
const QIcon& recentRuleImage();

} // namespace quorvane
