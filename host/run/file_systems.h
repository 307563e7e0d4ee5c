// The file systems that a board needs: the one below its directory, which may be full, and the one
// that is mounted in it, which may have been left by a kill.
#pragma once

#include <filesystem>
#include <string>

#include "host/run/board.h"

namespace tarq::host {

// 0, or the errno with which the switched on board, its daemon and its properties cannot write any
// more, such as ENOSPC; ENOENT where run/ is gone, as of a board that is just being switched off.
// Cheap enough for every turn of a loop, and leaves nothing behind.
int writeError(const Board& board);

// Throws it as a std::system_error; nothing where a board is being switched off. A caller that
// fails for want of room does better with this error than with its own, which may be any.
void requireRoom(const Board& board);

// What it means: "DIR cannot be written: No space left on device; make room, or …". Only a disk
// that is full, or a quota that is used up, has the advice.
std::string cannotBeWritten(const Board& board, int error);

// Takes away a mount that a killed board left, if there is one. Until then every look at the place
// fails (ENOTCONN), and a directory that holds it cannot be removed. Nothing tells whether it
// worked: whoever needs the place finds out, and root may be needed for a mount of root's.
void clearStaleMount(const std::filesystem::path& mountPoint);

}  // namespace tarq::host
