// Who may have how many of the daemon's descriptors, and how often may be complained of them.
#pragma once

#include <sys/socket.h>
#include <sys/types.h>

namespace android::host {

// The most descriptors of the daemon, where the system allows as many. Half of them are one user's
// at most: ProcessState.h tells clients so.
constexpr unsigned kMaxDescriptors = 8192;

// Counts one more connection of the user. False if that would be more than half of the process's
// descriptors, or, unless it is root or the daemon's own user, would leave fewer than 64 of them.
bool takeShare(uid_t user);
void giveShareBack(uid_t user);

// Logs what is wrong with a peer, ten times a second at most: it can do wrong as often as it likes.
// What was left out is counted, and told with the next one.
void complain(const ucred& peer, const char* what);

}  // namespace android::host
