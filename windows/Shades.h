#pragma once

#include "platform/Appearance.h"

#include <QColor>

// All colours of the windows, in the four looks that a desktop can request. Each text has a contrast of at
// least 4.5 to 1, and 7 to 1 in high contrast, against every background it is shown on, including a
// selection. User interface thread only.

namespace quorvane::windows {

// A colour that depends on the look. Converts to the QColor of the look at that moment.
class Shade {
public:
    constexpr Shade(QRgb light, QRgb dark, QRgb lightInHighContrast, QRgb darkInHighContrast)
        : m_light(light)
        , m_dark(dark)
        , m_lightInHighContrast(lightInHighContrast)
        , m_darkInHighContrast(darkInHighContrast)
    {
    }

    QColor in(platform::Appearance look) const
    {
        if (look.hasHighContrast)
            return QColor(look.isDark ? m_darkInHighContrast : m_lightInHighContrast);
        return QColor(look.isDark ? m_dark : m_light);
    }
    operator QColor() const { return in(presentLook()); }

    static platform::Appearance presentLook() { return s_presentLook; }
    // For WindowLook, which updates the windows.
    static void setPresentLook(platform::Appearance look) { s_presentLook = look; }

private:
    inline static platform::Appearance s_presentLook;

    QRgb m_light;
    QRgb m_dark;
    QRgb m_lightInHighContrast;
    QRgb m_darkInHighContrast;
};

namespace shades {

// Texts.
inline constexpr Shade text(0x202024, 0xececf0, 0x000000, 0xffffff);
inline constexpr Shade faintText(
    0x63636b, 0xb4b4be, 0x3c3c42, 0xd8d8de); // hints, column titles, read-only texts
inline constexpr Shade failureText(0xb00020, 0xff8a94, 0x8a0018, 0xffb0b6);

// Texts of cells, by colour name.
inline constexpr Shade black(0x000000, 0xf4f4f6, 0x000000, 0xffffff);
inline constexpr Shade red(0xcc0000, 0xff8a80, 0x940000, 0xffaaa2);
inline constexpr Shade orange(0xb04600, 0xffa552, 0x703000, 0xffc080);
inline constexpr Shade blue(0x0000ff, 0x9dbcff, 0x0000b4, 0xbcd4ff);
inline constexpr Shade grey(0x63636b, 0xb4b4be, 0x3c3c42, 0xd8d8de);

// Texts of additions, removals and changes, which are also stated in words.
inline constexpr Shade added(0x14662e, 0x7fd99a, 0x064a1c, 0xa6f0bc);
inline constexpr Shade removed(0xa81024, 0xff9aa4, 0x86001a, 0xffb8bf);
inline constexpr Shade changed(0x8a4b00, 0xf2bd6b, 0x5c3000, 0xffd591);

// Backgrounds.
inline constexpr Shade table(0xffffff, 0x1d1d20, 0xffffff, 0x000000);
inline constexpr Shade band(
    0xf5f5f5, 0x27272b, 0xf5f5f5, 0x17171a); // light: white of level 0.8, a fifth opaque, on the table
inline constexpr Shade selection(0xdceafc, 0x283e60, 0xd0e4ff, 0x142c50);
inline constexpr Shade addedBand(0xe8f7ec, 0x1c3324, 0xe8f7ec, 0x0c2414);
inline constexpr Shade removedBand(0xfdeaec, 0x40222a, 0xfdeaec, 0x300f16);
inline constexpr Shade changedBand(0xfdf4df, 0x3a2f1a, 0xfdf4df, 0x2a2008);
inline constexpr Shade window(0xf7f7f8, 0x2a2a2e, 0xffffff, 0x000000);
inline constexpr Shade button(0xf2f2f4, 0x36363c, 0xf2f2f4, 0x1a1a1e);
inline constexpr Shade sheet(0xf6f6f8, 0x2a2a2e, 0xffffff, 0x000000);
inline constexpr Shade notice(0xfff3cd, 0x4a4016, 0xfff3cd, 0x302800);

// Lines.
inline constexpr Shade line(0xd8d8dc, 0x45454b, 0x4a4a4a, 0xc8c8c8);
inline constexpr Shade faintLine(0xe6e6ea, 0x38383d, 0x8a8a8a, 0x8a8a8a);
inline constexpr Shade keyboardFrame(0x5b8dc9, 0x6f9fda, 0x003a8c, 0x9cc4ff);

} // namespace shades

} // namespace quorvane::windows
