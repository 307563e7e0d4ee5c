// Bytes go through stages, a chunk at a time: what is gzip is inflated, and what comes out is text,
// whatever its encoding. What a stage is to do it tells from the first bytes. An archive needs to
// be read from its end, so it is the one thing that is kept whole, packed.
#include "tools/tarqctl/log/log_source.h"

#include <ctype.h>
#include <errno.h>
#include <string.h>
#include <zip.h>
#include <zlib.h>

#include <algorithm>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string_view>
#include <utility>

#include "host/run/text.h"
#include "tools/tarqctl/user_input.h"

namespace tarq::tools {

namespace {

// ---- packed bytes ----

// How much may still come out of all that is packed. One for all members of an archive, so that
// many small bombs are no better than a large one.
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
    Gzip(const LogSink& sink, Budget* budget) : mNext(sink.take), mBudget(budget) {}
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

    // One gzip file may be several joined, as cat makes them, so what follows an end begins anew.
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

    LogText mNext;
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

// The bytes have to outlive it: nothing is copied.
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

// A member may be gzip again, as bug reports have them.
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

// Only for a message to somebody whose file holds no log, so a guess by the first bytes is good
// enough.
std::string kindOf(const std::string& start) {
    if (start.empty()) return "empty";
    for (const Kind& kind : kKinds) {
        if (start.rfind(kind.start, 0) == 0) return kind.name;
    }
    if (const std::string wide = wideEncodingOf(start); !wide.empty()) return "text in " + wide;
    const auto isOfNoText = [](unsigned char c) {
        return iscntrl(c) != 0 && isspace(c) == 0 && c != '\x1b';
    };
    if (std::any_of(start.begin(), start.end(), isOfNoText)) {
        return "no text, its first bytes are " + host::hexOf(start.substr(0, 8));
    }
    return "text that begins with \"" + host::escaped(start.substr(0, start.find('\n'))) + "\"";
}

}  // namespace

// The first chunk tells what it is; a pipe cannot be read twice, so that chunk goes the way of all
// others.
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
