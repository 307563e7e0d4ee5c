// Bytes go through stages, a chunk at a time: what is gzip is inflated, what is UTF-16 becomes
// UTF-8, what has a mark loses it, and the rest is cut into lines. What a stage is to do it tells
// from the first bytes. An archive needs to be read from its end, so it is the one thing that is
// kept whole, packed.
#include "tools/tarqctl/match/log_source.h"

#include <errno.h>
#include <string.h>
#include <zip.h>
#include <zlib.h>

#include <algorithm>
#include <iterator>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string_view>
#include <utility>

#include "host/run/text.h"

namespace tarq::tools {

namespace {

constexpr size_t kMaxLine = 1 << 16;  // bytes; an entry of a log has at most 4068

// ---- lines ----

class Lines {
  public:
    explicit Lines(const LogSink& sink) : mSink(sink) {}

    void put(std::string_view bytes) {
        while (!bytes.empty()) {
            const size_t end = std::min(bytes.find('\n'), bytes.size());
            mLine.append(
                    bytes.substr(0, std::min(end, kMaxLine - std::min(kMaxLine, mLine.size()))));
            if (end == bytes.size()) return;
            finishLine();
            bytes.remove_prefix(end + 1);
        }
    }
    void finish() {
        if (!mLine.empty()) finishLine();
    }

  private:
    // A CR is the end of a line only where the first line has one, too.
    void finishLine() {
        const bool endsInCr = !mLine.empty() && mLine.back() == '\r';
        if (!mHasCr) mHasCr = endsInCr;
        if (*mHasCr && endsInCr) mLine.pop_back();
        mSink.take(mLine);
        mLine.clear();
    }

    const LogSink& mSink;
    std::string mLine;
    std::optional<bool> mHasCr;
};

// ---- characters ----

void appendUtf8(uint32_t c, std::string* out) {
    if (c < 0x80) {
        *out += static_cast<char>(c);
        return;
    }
    const int more = c < 0x800 ? 1 : c < 0x10000 ? 2 : 3;
    constexpr uint8_t kFirst[] = {0, 0xc0, 0xe0, 0xf0};
    *out += static_cast<char>(kFirst[more] | c >> (6 * more));
    for (int i = more - 1; i >= 0; --i) *out += static_cast<char>(0x80 | (c >> (6 * i) & 0x3f));
}

// Takes UTF-16 in pieces of any size. Half a pair becomes U+FFFD.
class Utf16 {
  public:
    explicit Utf16(bool bigEndian) : mFirstShift(bigEndian ? 8 : 0) {}

    std::string decode(std::string_view bytes) {
        std::string text;
        for (const char c : bytes) {
            const auto byte = static_cast<uint8_t>(c);
            if (mHasHalf) take(static_cast<uint32_t>(mHalf | byte << (8 - mFirstShift)), &text);
            mHalf = static_cast<uint32_t>(byte) << mFirstShift;
            mHasHalf = !mHasHalf;
        }
        return text;
    }

  private:
    void take(uint32_t unit, std::string* text) {
        const bool isLow = unit >= 0xdc00 && unit < 0xe000;
        if (mHigh != 0 && isLow) {
            appendUtf8(0x10000 + ((mHigh - 0xd800) << 10) + (unit - 0xdc00), text);
        } else {
            if (mHigh != 0) appendUtf8(0xfffd, text);
            if (isLow) appendUtf8(0xfffd, text);
        }
        const bool isHigh = unit >= 0xd800 && unit < 0xdc00;
        if (!isHigh && !isLow) appendUtf8(unit, text);
        mHigh = isHigh ? unit : 0;
    }

    const int mFirstShift;  // of the first byte of a unit
    bool mHasHalf = false;
    uint32_t mHalf = 0;
    uint32_t mHigh = 0;  // the first half of a pair that waits for the second
};

class Characters {
  public:
    explicit Characters(const LogSink& sink) : mLines(sink) {}

    void put(std::string_view bytes) {
        if (!mBegun) {
            mStart.append(bytes);
            if (mStart.size() < 3) return;
            begin();
        } else {
            pass(bytes);
        }
    }
    void finish() {
        if (!mBegun) begin();
        mLines.finish();
    }

  private:
    void begin() {
        mBegun = true;
        std::string_view start = mStart;
        if (start.substr(0, 2) == "\xff\xfe" || start.substr(0, 2) == "\xfe\xff") {
            mUtf16.emplace(start[0] == '\xfe');
            start.remove_prefix(2);
        } else if (start.substr(0, 3) == "\xef\xbb\xbf") {
            start.remove_prefix(3);
        }
        pass(start);
    }
    void pass(std::string_view bytes) { mLines.put(mUtf16 ? mUtf16->decode(bytes) : bytes); }

    Lines mLines;
    bool mBegun = false;
    std::string mStart;
    std::optional<Utf16> mUtf16;
};

// ---- packed bytes ----

// How much may still come out of all that is packed.
class Budget {
  public:
    explicit Budget(uint64_t limit) : mLimit(limit), mLeft(limit) {}
    void take(uint64_t size) {
        if (size <= mLeft) {
            mLeft -= size;
            return;
        }
        throw std::runtime_error(
                "it unpacks to more than " +
                (mLimit == kMaxUnpacked ? "1 GiB" : std::to_string(mLimit) + " bytes"));
    }

  private:
    const uint64_t mLimit;
    uint64_t mLeft;
};

// Inflates what begins like gzip, also several one behind the other, and passes on all else.
class Gzip {
  public:
    Gzip(const LogSink& sink, Budget* budget) : mNext(sink), mBudget(budget) {}
    ~Gzip() { inflateEnd(&mStream); }
    Gzip(const Gzip&) = delete;
    Gzip& operator=(const Gzip&) = delete;

    void put(std::string_view bytes) {
        if (mIsPacked) return mIsPacked.value() ? inflateAll(bytes) : mNext.put(bytes);
        mStart.append(bytes);
        if (mStart.size() >= 2) begin();
    }
    void finish() {
        if (!mIsPacked) begin();
        if (*mIsPacked && !mIsWhole) throw std::runtime_error("its gzip data is cut off");
        mNext.finish();
    }

  private:
    void begin() {
        mIsPacked = mStart.rfind("\x1f\x8b", 0) == 0;
        if (*mIsPacked && inflateInit2(&mStream, MAX_WBITS + 16) != Z_OK) throw std::bad_alloc();
        put(std::exchange(mStart, {}));
    }

    void inflateAll(std::string_view bytes) {
        mStream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(bytes.data()));
        mStream.avail_in = static_cast<uInt>(bytes.size());
        do {
            if (mIsWhole && mStream.avail_in > 0) inflateReset(&mStream);
            mStream.next_out = reinterpret_cast<Bytef*>(mOut);
            mStream.avail_out = sizeof(mOut);
            const int result = inflate(&mStream, Z_NO_FLUSH);
            mIsWhole = result == Z_STREAM_END;
            if (result != Z_OK && result != Z_STREAM_END && result != Z_BUF_ERROR) {
                throw std::runtime_error("its gzip data is damaged");
            }
            const size_t size = sizeof(mOut) - mStream.avail_out;
            mBudget->take(size);
            mNext.put({mOut, size});
        } while (mStream.avail_in > 0 || mStream.avail_out == 0);
    }

    Characters mNext;
    Budget* const mBudget;
    std::string mStart;
    std::optional<bool> mIsPacked;
    z_stream mStream = {};
    bool mIsWhole = false;
    char mOut[1 << 16];
};

// ---- archives ----

std::string textOf(const zip_error_t& error) {
    return zip_error_strerror(const_cast<zip_error_t*>(&error));
}

using Archive = std::unique_ptr<zip_t, decltype(&zip_discard)>;

Archive openArchive(const std::string& packed) {
    zip_error_t error;
    zip_error_init(&error);
    zip_source_t* source = zip_source_buffer_create(packed.data(), packed.size(), 0, &error);
    zip_t* archive = source != nullptr ? zip_open_from_source(source, ZIP_RDONLY, &error) : nullptr;
    if (archive == nullptr) {
        zip_source_free(source);
        throw std::runtime_error("its zip archive is damaged or cut off: " + textOf(error));
    }
    return {archive, zip_discard};
}

void readMember(zip_t* archive, zip_uint64_t index, const LogSink& sink, Budget* budget) {
    const char* name = zip_get_name(archive, index, 0);
    const std::string member = name != nullptr ? name : "?";
    const std::unique_ptr<zip_file_t, decltype(&zip_fclose)> file(
            zip_fopen_index(archive, index, 0), zip_fclose);
    if (!file) throw std::runtime_error(member + ": " + zip_strerror(archive));
    sink.begin(member);
    Gzip gzip(sink, budget);
    char buffer[1 << 16];
    zip_int64_t size;
    while ((size = zip_fread(file.get(), buffer, sizeof(buffer))) > 0) {
        budget->take(static_cast<uint64_t>(size));
        gzip.put({buffer, static_cast<size_t>(size)});
    }
    if (size < 0) throw std::runtime_error(member + ": " + zip_file_strerror(file.get()));
    gzip.finish();
}

void readArchive(const std::string& packed, const LogSink& sink, Budget* budget) {
    const Archive archive = openArchive(packed);
    const zip_int64_t count = zip_get_num_entries(archive.get(), 0);
    for (zip_int64_t i = 0; i < count; ++i) {
        readMember(archive.get(), static_cast<zip_uint64_t>(i), sink, budget);
    }
}

// ---- what it is ----

struct Kind {
    std::string_view start;
    const char* name;
};
constexpr Kind kKinds[] = {
        {"PK\3\4", "a zip archive"},
        {"PK\5\6", "an empty zip archive"},
        {"\x1f\x8b", "gzip"},
        {"\xfd"
         "7zXZ",
         "xz, unpack it first"},
        {"BZh", "bzip2, unpack it first"},
        {"\x28\xb5\x2f\xfd", "zstd, unpack it first"},
        {"7z\xbc\xaf", "7z, unpack it first"},
        {"%PDF", "PDF"},
        {"\x89PNG", "a PNG picture"},
        {"\xff\xd8\xff", "a JPEG picture"},
        {"\x7f"
         "ELF",
         "a program"},
        {"<", "HTML or XML"},
        {"{", "JSON"},
};

std::string kindOf(const std::string& start) {
    if (start.empty()) return "empty";
    for (const Kind& kind : kKinds) {
        if (start.rfind(kind.start, 0) == 0) return kind.name;
    }
    if (start.rfind("\xff\xfe", 0) == 0 || start.rfind("\xfe\xff", 0) == 0) return "text in UTF-16";
    if (start.find('\0') != std::string::npos) {
        return "no text, its first bytes are " + host::hexOf(start.substr(0, 8));
    }
    return "text that begins with \"" + host::escaped(start.substr(0, start.find('\n'))) + "\"";
}

}  // namespace

std::string readLog(std::istream& in, const LogSink& sink, uint64_t maxUnpacked) {
    constexpr size_t kShown = 60;
    char buffer[1 << 16];
    Budget budget(maxUnpacked);
    in.read(buffer, sizeof(buffer));
    auto size = static_cast<size_t>(in.gcount());
    const std::string start(buffer, std::min(size, kShown));
    if (start.rfind("PK\3\4", 0) == 0) {
        std::string packed(buffer, size);
        for (; in.read(buffer, sizeof(buffer)), in.gcount() > 0;) {
            packed.append(buffer, static_cast<size_t>(in.gcount()));
            if (packed.size() > maxUnpacked) budget.take(packed.size());
        }
        readArchive(packed, sink, &budget);
        return kindOf(start);
    }
    sink.begin("");
    Gzip gzip(sink, &budget);
    for (; size > 0; size = static_cast<size_t>(in.gcount())) {
        gzip.put({buffer, size});
        in.read(buffer, sizeof(buffer));
    }
    if (in.bad()) throw std::runtime_error(strerror(errno != 0 ? errno : EIO));
    gzip.finish();
    return kindOf(start);
}

}  // namespace tarq::tools
