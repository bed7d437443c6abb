#pragma once

namespace quorvane::desktop {

// True when the desktop blends windows, so that one may be translucent. User interface thread only; one quick
// round trip to the display server.
bool isDesktopComposited();

} // namespace quorvane::desktop
