#include <CLI/CLI.hpp>
#include <memory>

#include "host/board/view/serial_views.h"

namespace tarq::board {

void declareSerialViews(CLI::App& app, std::function<void(const std::string& board)>* showBoard,
                        std::function<void()>* show) {
    CLI::App* serial = app.add_subcommand(
            "serial", "Prints the frames on the line to the Zigbee co-processor, both ways");
    const auto follows = std::make_shared<bool>(false);
    const auto asJson = std::make_shared<bool>(false);
    serial->add_flag("-f", *follows, "go on with what is added, until Ctrl-C");
    serial->add_flag("--json", *asJson, "as JSON Lines, with times in ms");
    serial->callback([=] {
        *showBoard = [=](const std::string& board) { printSerial(board, *follows, *asJson); };
    });
    CLI::App* ash = app.add_subcommand(
            "ash", "Prints the frames of such a line that are given in hexadecimal");
    const auto file = std::make_shared<std::string>("-");
    ash->add_option("FILE", *file, "the text; \"-\", or none: standard input");
    ash->add_flag("--json", *asJson, "as JSON Lines");
    ash->callback([=] { *show = [=] { printAsh(*file, *asJson); }; });
}

}  // namespace tarq::board
