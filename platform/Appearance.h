#pragma once

namespace quorvane::platform {

// How the user wants windows to look. A value object.
struct Appearance {
    bool isDark = false;
    bool hasHighContrast = false;

    friend bool operator==(const Appearance&, const Appearance&) = default;
};

} // namespace quorvane::platform
