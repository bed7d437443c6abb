#pragma once

#include <QIcon>

namespace quorvane::windows {

constexpr int stateImageSize = 12; // logical pixels

// The small marks of rules, a little faded so that the texts beside them come first.
const QIcon& systemRuleImage();
const QIcon& recentRuleImage();

// Stands faintly where a program's icon would, when there is no such program.
const QIcon& missingProgramImage();

} // namespace quorvane::windows
