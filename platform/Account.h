#pragma once

#include <string>

// The account of the user the program runs for. Safe from any thread.

namespace quorvane::platform {

// The login name of the real user id; its digits when the account database has no such user.
std::string loginName();

// The home folder: the variable HOME when set, else the account's. Empty when neither is known.
std::string homeDirectory();

// Whether the real user's account belongs to `group`, as its primary or a supplementary group. False when
// there is no such group or no such account.
bool isMemberOfGroup(const std::string& group);

} // namespace quorvane::platform
