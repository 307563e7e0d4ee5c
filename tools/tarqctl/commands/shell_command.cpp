// shell CMDLINE: runs in the daemon, as the daemon's user. How the command ended is not told to
// anybody: what comes back is its output, cut at the service's limit.
#include <unistd.h>

#include <com/tarq/shell/IShellService.h>
#include <CLI/App.hpp>
#include <ostream>

#include "tools/tarqctl/ask/daemon.h"
#include "tools/tarqctl/commands.h"
#include "tools/tarqctl/user_input.h"

namespace tarq::tools {

using android::String16;
using android::String8;
using android::binder::Status;
using com::tarq::shell::IShellService;

namespace {

// The service keeps at most this many bytes of the output.
constexpr size_t kMaxOutput = 1023;

// Android's AID_SYSTEM.
constexpr uid_t kSystemUid = 1000;

constexpr char kWords[] =
        "all words that follow, options too, joined by a space. The command\n"
        "sees the host's real files. At most 1023 bytes of its standard\n"
        "output come back; when they do not end with a whole character, none.\n"
        "Its exit status and its standard error are lost: to see them, give\n"
        "'(CMDLINE) 2>&1; echo $?'. Only root and system (uid 1000) may.";

// The daemon goes by the effective uid, and has one status for whatever keeps it from running a
// command. A failure of another kind is left to the caller.
void expectPermission(const Session& session, const Status& status) {
    if (status.transactionError() != android::PERMISSION_DENIED) return;
    const uid_t uid = geteuid();
    if (uid != 0 && uid != kSystemUid) {
        throw session.failure("refused",
                              "uid " + std::to_string(uid) + " is neither root nor system",
                              session.asRoot(), kServiceSaidNo);
    }
    throw session.failure("refused", "the daemon could not start the command", session.next("log"),
                          kServiceSaidNo);
}

// The service runs one command at a time and lets all others wait, which nobody is told. A text
// that is no UTF-8 never gets here, as the command line was checked.
std::string ask(Session& session, const std::string& command) {
    const Daemon daemon(session,
                        "another command may be running, one runs at a time; or this one takes "
                        "longer, and still runs");
    const auto service = daemon.service<IShellService>();
    const std::chrono::seconds patience(2);
    // To a user a command line that waits for its turn looks like one that hangs.
    const Timer stillWaiting(patience, [&] {
        if (session.timeout <= patience) return;
        session.notice("no answer after 2 s: another command may be running, waiting on");
    });
    std::vector<String16> output;
    int32_t meaningless = 0;
    const Status status = service->executeCommand(String16(command.c_str()), &output, &meaningless);
    expectPermission(session, status);
    daemon.expectOk(status);
    if (output.empty()) {
        throw session.failure("no_output", "the answer has no output in it, not even an empty one",
                              session.next("log"));
    }
    const String8 text(output[0]);
    return {text.string(), text.size()};
}

}  // namespace

Run declareShell(CLI::App& app) {
    const auto command = std::make_shared<std::string>();
    app.add_option("CMDLINE", *command, kWords)->required()->check(checkUtf8);
    return [command](Session& session) -> int {
        const std::string output = ask(session, *command);
        // Longer ones happen: a byte that is no UTF-8 may come back as two.
        if (output.size() >= kMaxOutput) {
            session.notice("no more than 1023 bytes of the output come back: it may be cut");
        }
        if (output.empty() && isatty(STDOUT_FILENO) == 1) {
            session.notice(
                    "no standard output came back; how the command ended is not told, and its "
                    "standard error does not come back");
        }
        if (session.json) {
            printJson(session.out, {{"output", output}});
        } else {
            session.out << output << std::flush;
        }
        return kDone;
    };
}

}  // namespace tarq::tools
