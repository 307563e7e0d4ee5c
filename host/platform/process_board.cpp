#include <host/process_board.h>

#include <stdlib.h>

namespace tarq::host {

static Board& instance() {
    static Board& board = *new Board([]() -> Board {
        const char* directory = getenv("TARQ_BOARD");
        return {directory != nullptr ? directory : ""};
    }());
    return board;
}

const Board& processBoard() {
    return instance();
}

void setProcessBoard(const Board& board) {
    instance() = board;
}

}  // namespace tarq::host
