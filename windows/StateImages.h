#pragma once

#include <QIcon>

namespace quorvane::windows {

constexpr int stateImageSize = 12; // logical pixels

// The small marks of rules, slightly faded so that the texts beside them stand out.
const QIcon& systemRuleImage();
const QIcon& recentRuleImage();

// A faint placeholder for the icon of a missing program.
const QIcon& missingProgramImage();

} // namespace quorvane::windows
