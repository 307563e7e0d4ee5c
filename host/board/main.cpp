// The command line of the virtual board, which has one command: the board only plays, until it is
// told to end. What is done to it meanwhile, and what it has recorded, is asked of it by tarqctl.
#include <stdio.h>

#include <CLI/CLI.hpp>

#include "host/board/serve.h"
#include "host/run/text.h"
#include "host/run/standard_descriptors.h"

static constexpr int kCouldNot = 2;  // play the board, or understand the command line

static int run(int argc, char** argv) {
    CLI::App app{"Plays the hardware of a device on a plain Linux machine.", "virtual_board"};
    app.footer("What is done to a running board is a command of tarqctl.");
    app.require_subcommand(1);
    std::string folder;
    std::string directory;
    tarq::board::ServeOptions options;
    CLI::App* serve = app.add_subcommand(
            "serve",
            "Plays a board until it is told to end; prints \"ready\" when programs can be started "
            "with TARQ_BOARD=DIR");
    serve->add_option("BOARD", folder, "the folder that describes it")->required();
    serve->add_option("DIR", directory, "where it runs")->required();
    serve->add_flag("--shared", options.isShared,
                    "lets other users of this machine talk to the board's daemon");
    app.set_version_flag("--version", "virtual_board " TARQ_VERSION, "Print the version and exit");
    serve->add_flag("--require-fuse", options.requiresFuse,
                    "does not start without FUSE, where else plain files stand for the hardware");
    try {
        app.parse(argc, argv);
    } catch (const CLI::CallForHelp&) {
        fputs(app.help().c_str(), stdout);
        return 0;
    } catch (const CLI::CallForVersion& version) {
        puts(version.what());
        return 0;
    } catch (const CLI::ParseError& error) {
        const std::string word = argc > 1 && argv[1][0] != '-' ? argv[1] : "";
        std::string why = error.what();
        if (argc == 1) why = "no command is given; there is serve";
        if (!word.empty() && !app.got_subcommand(serve)) {
            why = word + ": " + tarq::host::noSuchCommand(word, {"serve"});
        }
        fprintf(stderr,
                "virtual_board: %s\nhint: virtual_board --help\n"
                "usage: virtual_board serve [OPTIONS] BOARD DIR\n",
                why.c_str());
        return kCouldNot;
    }
    tarq::board::serve(folder, directory, options);
    return 0;
}

// Exit codes: 0 ended as told, else kCouldNot.
int main(int argc, char** argv) {
    tarq::host::openStandardDescriptors();
    try {
        return run(argc, argv);
    } catch (const std::exception& error) {
        fprintf(stderr, "virtual_board: %s\n", error.what());
    }
    return kCouldNot;
}
