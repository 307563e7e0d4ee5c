// ash [FILE]: the frames of a serial line to a Zigbee co-processor that are given in hexadecimal,
// or as the lines of `serial --json`. They are decoded while they come, so that a live capture can
// be watched, and nothing but an unfinished frame or line is kept.
#include <unistd.h>

#include <CLI/App.hpp>
#include <stdexcept>
#include <string_view>

#include "host/run/records.h"
#include "host/run/text.h"
#include "tools/tarqctl/commands.h"
#include "tools/tarqctl/user_input.h"
#include "tools/tarqctl/view/frames.h"
#include "tools/tarqctl/view/hex_text.h"

namespace tarq::tools {

namespace {

using board::ash::Bytes;

// A frame has at most 300 bytes on the line, so a line of `serial --json` is far below that.
constexpr size_t kMaxJsonLine = 65536;  // in bytes

struct Options {
    std::string file = "-";
    std::vector<std::string> more;  // what else was given, by mistake
};

// The bytes of marks that editors put in front of UTF-8, UTF-16 and UTF-32.
constexpr std::string_view kOfMarks("\xef\xbb\xbf\xff\xfe\0", 6);

// A line that begins with a brace is JSON, all else is hexadecimal; the two may be mixed line by
// line.
class Capture {
  public:
    explicit Capture(const Session& session) : mPrinter(session, {}) {}

    // The next character. Throws std::invalid_argument, "LINE:COLUMN: what is wrong" or "LINE: …".
    void take(char c) {
        const bool mayBeMark = mHasMark && mMark.size() < 4 && kOfMarks.find(c) != kOfMarks.npos;
        if (mayBeMark) {
            mMark += c;
            return;
        }
        if (mHasMark) endMark();
        takeText(c);
    }
    void finish() {
        if (mHasMark) endMark();
        if (!mJson.empty()) endJson();
        mHex.finish();
        mPrinter.finish();
    }
    // That of the text, if its first bytes tell one that is not read.
    std::string encoding() const { return wideEncodingOf(mMark); }

  private:
    // A text may begin with the mark of UTF-8, and with no other.
    void endMark() {
        mHasMark = false;
        if (!encoding().empty()) throw std::invalid_argument("1: it is text in " + encoding());
        if (mMark == kByteOrderMark) return;
        for (const char c : mMark) takeText(c);
    }
    void takeText(char c) {
        const bool isJson = !mJson.empty() || (c == '{' && mIsLineBlank);
        mIsLineBlank = c == '\n' || (mIsLineBlank && (c == ' ' || c == '\t'));
        if (isJson) return takeJson(c);
        takeHex(c);
    }
    void takeHex(char c) {
        uint8_t byte = 0;
        if (mHex.take(c, &byte)) mPrinter.take({}, {byte});
    }
    void takeJson(char c) {
        if (c != '\n') mJson += c;
        if (mJson.size() > kMaxJsonLine) fail("the line is too long");
        if (c != '\n') return;
        endJson();
        takeHex(c);  // which counts the lines
    }
    void endJson();
    [[noreturn]] void fail(const std::string& why) const {
        throw std::invalid_argument(std::to_string(mHex.line()) +
                                    ": no line of tarqctl serial --json: " + why);
    }

    FramePrinter mPrinter;
    HexText mHex;
    std::string mMark;     // the first characters, as long as they may be a mark
    bool mHasMark = true;  // or may have one
    std::string mJson;     // the line so far
    bool mIsLineBlank = true;
};

// What else such a line tells of a frame follows from its bytes.
void Capture::endJson() {
    const Json object = Json::parse(std::exchange(mJson, {}), nullptr, false);
    if (!object.is_object()) fail("no JSON object");
    const auto text = [&](const char* name) {
        const Json value = object.value(name, Json(""));
        if (!value.is_string()) fail(std::string(name) + " is no text");
        return value.get<std::string>();
    };
    std::string bytes;
    if (object.count("bytes") == 0) fail("it has no bytes");
    if (const std::string why = host::parseHex(text("bytes"), &bytes); !why.empty()) fail(why);
    std::optional<FrameOrigin> origin;
    if (object.count("from") > 0) {
        origin = {text("from"), {}, host::escaped(text("time"))};
        const Json ms = object.value("ms", Json());
        if (ms.is_number_integer()) origin->ms = ms.get<int64_t>();
        if (origin->sender != host::senderName(true) && origin->sender != host::senderName(false)) {
            fail("from is neither host nor coprocessor");
        }
    }
    mPrinter.take(origin, Bytes(bytes.begin(), bytes.end()));
}

// People give the bytes themselves where a file is expected. What can be read as bytes and is no
// file is answered with the command line that was meant.
void refuseBytesAsFile(const Session& session, const Options& options) {
    std::vector<std::string> words = options.more;
    words.insert(words.begin(), options.file);
    const std::string text = joined(words);
    const bool isFile = options.file == "-" || access(options.file.c_str(), F_OK) == 0;
    if (options.more.empty() && isFile) return;
    const bool isOne = options.more.empty();
    try {
        if (bytesFromText(text).empty()) return;
    } catch (const std::invalid_argument&) {
        if (isOne) return;
        throw session.failure("usage",
                              "one file is read, " + std::to_string(words.size()) + " were given",
                              session.help());
    }
    throw session.failure("usage", "there is no file of that name; bytes come on standard input",
                          "echo " + shellQuoted(text) + " | tarqctl ash");
}

int print(const Session& session, const Options& options) {
    refuseBytesAsFile(session, options);
    Capture capture(session);
    try {
        readCharacters(session, options.file, [&](char c) {
            capture.take(c);
            return session.out.good();
        });
        capture.finish();
    } catch (const std::invalid_argument& wrong) {
        const std::string wide = capture.encoding();
        const std::string read = options.file == "-" ? "FILE" : shellQuoted(options.file);
        throw session.failure(
                "bad_hex", options.file + ":" + wrong.what(),
                wide.empty() ? session.help()
                             : "iconv -f " + wide + " -t UTF-8 " + read + " | tarqctl ash");
    }
    return kDone;
}

}  // namespace

Run declareAsh(CLI::App& app) {
    const auto options = std::make_shared<Options>();
    app.add_option("FILE", options->file,
                   "bytes of two digits, with or without 0x, \\x, blanks, commas, colons\n"
                   "and dashes, and # before a comment; or the lines of tarqctl serial\n"
                   "--json. Standard input, as it comes, when it is - or left out");
    app.add_option("MORE", options->more)->group(kHidden);
    return [options](Session& session) { return print(session, *options); };
}

}  // namespace tarq::tools
