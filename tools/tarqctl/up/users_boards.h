// The directory of a board that `up` starts, below the one of all the user's boards.
#pragma once

#include <functional>
#include <string>

#include "host/run/board.h"
#include "tools/tarqctl/session.h"

namespace tarq::tools {

// Made for one board, and removed with it. Until letOthersStart() all other starts of this user
// wait.
class BoardDirectory {
  public:
    // Takes away what was left by a kill, and makes a directory of that name. Calls pause() while
    // another start is on its way. shared: other users may look into it. Throws a Failure.
    BoardDirectory(const std::string& name, bool shared, const std::function<void()>& pause);
    // Also takes away the mount of a board that was killed.
    ~BoardDirectory();
    BoardDirectory(const BoardDirectory&) = delete;
    BoardDirectory& operator=(const BoardDirectory&) = delete;

    const host::Board& board() const { return mBoard; }

    // Lets others start, once the board is there.
    void letOthersStart();

  private:
    bool lockAll(const std::string& directory);
    bool makeOwn(const std::string& name);

    int mLock = -1;
    int mOwn = -1;  // locked for the life of this, also when its board has ended
    host::Board mBoard;
};

}  // namespace tarq::tools
