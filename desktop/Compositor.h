#pragma once

namespace quorvane::desktop {

// True when the desktop blends windows, so that one may be translucent. User interface thread only; asks the
// display server, which answers at once.
bool isDesktopComposited();

} // namespace quorvane::desktop
