// giflib does the encoding; added here is that a frame holds only the rows and pixels that changed,
// which makes a picture of an effect some tens of kilobytes instead of megabytes.
#include "tools/tarqctl/view/gif.h"

#include <algorithm>
#include <new>

namespace tarq::tools {

// The encoder writes into memory, which is all that it can lack.
static void check(int result) {
    if (result != GIF_OK) throw std::bad_alloc();
}

// The encoder has no file: what it writes is gathered in the string that it was given.
static int append(GifFileType* encoder, const GifByteType* bytes, int size) {
    static_cast<std::string*>(encoder->UserData)->append(bytes, bytes + size);
    return size;
}

// The colour table of a GIF has a power of two of entries: those that are not used are black.
Gif::Gif(size_t width, size_t height, const std::vector<uint32_t>& palette, bool loops)
    : mWidth(static_cast<int>(width)),
      mHeight(static_cast<int>(height)),
      mEncoder(EGifOpen(&mBytes, append, nullptr),
               [](GifFileType* encoder) { EGifCloseFile(encoder, nullptr); }) {
    check(mEncoder != nullptr ? GIF_OK : GIF_ERROR);
    EGifSetGifVersion(mEncoder.get(), true);
    std::vector<GifColorType> colours(256);
    for (size_t i = 0; i < palette.size(); ++i) {
        const auto channel = [&](int shift) { return static_cast<uint8_t>(palette[i] >> shift); };
        colours[i] = {channel(16), channel(8), channel(0)};
    }
    ColorMapObject map = {256, 8, false, colours.data()};
    check(EGifPutScreenDesc(mEncoder.get(), mWidth, mHeight, 8, 0, &map));
    if (!loops) return;
    static constexpr uint8_t kForEver[] = {1, 0, 0};  // without this extension it is shown once
    check(EGifPutExtensionLeader(mEncoder.get(), APPLICATION_EXT_FUNC_CODE));
    check(EGifPutExtensionBlock(mEncoder.get(), 11, "NETSCAPE2.0"));
    check(EGifPutExtensionBlock(mEncoder.get(), sizeof(kForEver), kForEver));
    check(EGifPutExtensionTrailer(mEncoder.get()));
}

// The first frame is drawn whole. Of a later one the rows between the first and the last change
// are, and what is the same in them is transparent, which packs well.
void Gif::add(const std::vector<uint8_t>& pixels, int64_t time) {
    const GraphicsControlBlock control = {DISPOSE_DO_NOT, false, static_cast<int>(time / 10),
                                          kTransparent};
    GifByteType bytes[4];
    EGifGCBToExtension(&control, bytes);
    check(EGifPutExtension(mEncoder.get(), GRAPHICS_EXT_FUNC_CODE, sizeof(bytes), bytes));

    std::vector<uint8_t> news = pixels;
    int top = mSeen.empty() ? 0 : mHeight - 1;
    int bottom = mSeen.empty() ? mHeight : top + 1;
    for (size_t i = 0; i < mSeen.size(); ++i) {
        const int y = static_cast<int>(i) / mWidth;
        if (pixels[i] == mSeen[i]) {
            news[i] = kTransparent;
        } else {
            top = std::min(top, y);
            bottom = std::max(bottom, y + 1);
        }
    }
    check(EGifPutImageDesc(mEncoder.get(), 0, top, mWidth, bottom - top, false, nullptr));
    check(EGifPutLine(mEncoder.get(), news.data() + static_cast<ptrdiff_t>(top) * mWidth,
                      (bottom - top) * mWidth));
    mSeen = pixels;
}

std::string Gif::finish() {
    check(EGifCloseFile(mEncoder.release(), nullptr));
    return mBytes;
}

}  // namespace tarq::tools
