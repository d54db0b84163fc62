// What a copy takes from its source besides the content. What the target can't hold is left out.
#pragma once

#include <sys/stat.h>

#include "platform/linux/native_file.h"

namespace trelvin {

// The owner, where the system lets the program give files away, else the group.
void giveOwner(const Descriptor& target, const struct stat& status);
// Attributes of the user.* kind, but none of user.trelvin.*.
void giveUserAttributes(const Descriptor& source, const Descriptor& target);
void giveTimes(const Descriptor& target, const struct stat& status);

}  // namespace trelvin
