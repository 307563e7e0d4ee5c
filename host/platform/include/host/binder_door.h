// For who wants to know why no daemon answers, where libbinder only waits for one.
#pragma once

namespace tarq::host {

// Opens this process's connection to the daemon of its board, unless it is open already. 0, or an
// errno: EMFILE where the user has as many connections as one may, EPROTONOSUPPORT for a daemon of
// another build, else what connect() says. May wait for the daemon's answer. Any thread.
int openBinder();

}  // namespace tarq::host
