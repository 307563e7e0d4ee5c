// The daemon takes a description file or a boot effect that is no XML for an empty one, and its log
// has no cause and no line. So the files are looked at before it starts, and a finding is said but
// stops nothing, as it stops nothing on a device.
#include "tools/tarqctl/up/folder.h"

#include <cutils/properties.h>
#include <string.h>

#include <filesystem>
#include <set>

#include "common/device_file.h"
#include "host/run/xml_error.h"
#include "tools/tarqctl/session.h"

namespace tarq::tools {

namespace fs = std::filesystem;

// Where they lie is known from the build, so on another machine the tool knows none.
static std::string knownBoards() {
    std::set<std::string> names;
    std::error_code unreadable;  // the same as empty
    for (const auto& entry : fs::directory_iterator(TARQ_BOARDS, unreadable)) {
        names.insert(entry.path().filename());
    }
    std::string text;
    for (const std::string& name : names) text += (text.empty() ? "" : ", ") + name;
    return text;
}

std::string boardFolder(const std::string& nameOrFolder) {
    std::error_code error;
    for (const fs::path& folder : {fs::path(TARQ_BOARDS) / nameOrFolder, fs::path(nameOrFolder)}) {
        if (fs::is_regular_file(folder / "build.prop", error)) return fs::absolute(folder);
    }
    const bool isFolder = fs::is_directory(nameOrFolder, error);
    const bool isMissing = error == std::errc::no_such_file_or_directory;
    throw Failure{"no_board", "up",
                  nameOrFolder +
                          (isFolder              ? " is no board, it has no build.prop"
                           : error && !isMissing ? ": " + error.message()
                                                 : " is neither a known board nor a folder") +
                          "; there are: " + knownBoards(),
                  "tarqctl up --board demo_panel"};
}

static constexpr char kNothingPlayed[] = "no effect is played at the start";

static void tellBrokenFile(const std::string& path, const std::string& consequence,
                           const std::function<void(const std::string&)>& say) {
    const host::XmlError error = host::findXmlError(deviceFile(path));
    if (!error.cause.empty()) say(error.describe(path) + "; " + consequence);
}

void tellBrokenFiles(const std::function<void(const std::string&)>& say) {
    tellBrokenFile("/vendor/etc/hardwareInfo.xml",
                   "nothing is known of the board's parts, so that every package fits", say);
    char effect[PROPERTY_VALUE_MAX] = {};
    const bool isChosen = property_get("vendor.boot.led_effect", effect, "") > 0;
    if (!isChosen) strcpy(effect, "/vendor/etc/leds/wave_fast.xml");
    // A board without LEDs has no use for one.
    std::error_code unreadable;
    const bool hasLeds = fs::exists(deviceFile("/sys/class/rgbled/set_color"), unreadable);
    if (!isChosen && !fs::exists(deviceFile(effect), unreadable)) {
        if (hasLeds) say("the board has no " + std::string(effect) + ", " + kNothingPlayed);
        return;
    }
    tellBrokenFile(effect, kNothingPlayed, say);
}

}  // namespace tarq::tools
