#include "host/board/view/gif.h"

#include <algorithm>
#include <stdexcept>

namespace tarq::board {

static int append(GifFileType* encoder, const GifByteType* bytes, int size) {
    static_cast<std::string*>(encoder->UserData)
            ->append(reinterpret_cast<const char*>(bytes), static_cast<size_t>(size));
    return size;
}

static void close(GifFileType* encoder) {
    EGifCloseFile(encoder, nullptr);
}

void Gif::check(int result) {
    if (result != GIF_OK) throw std::runtime_error("there is not enough memory for the picture");
}

Gif::Gif(size_t width, size_t height, const std::vector<uint32_t>& palette, uint8_t transparent,
         bool loops)
    : mWidth(width),
      mHeight(height),
      mTransparent(transparent),
      mEncoder(EGifOpen(&mBytes, append, nullptr), close) {
    check(mEncoder != nullptr ? GIF_OK : GIF_ERROR);
    EGifSetGifVersion(mEncoder.get(), true);
    putScreen(palette);
    if (loops) putLooping();
}

void Gif::putScreen(const std::vector<uint32_t>& palette) {
    const std::unique_ptr<ColorMapObject, void (*)(ColorMapObject*)> map(
            GifMakeMapObject(256, nullptr), GifFreeMapObject);
    check(map != nullptr ? GIF_OK : GIF_ERROR);
    for (size_t i = 0; i < palette.size(); ++i) {
        map->Colors[i] = {static_cast<GifByteType>(palette[i] >> 16),
                          static_cast<GifByteType>(palette[i] >> 8),
                          static_cast<GifByteType>(palette[i])};
    }
    check(EGifPutScreenDesc(mEncoder.get(), static_cast<int>(mWidth), static_cast<int>(mHeight), 8,
                            0, map.get()));
}

// Without this extension a GIF is shown once.
void Gif::putLooping() {
    static constexpr uint8_t kForEver[] = {1, 0, 0};
    check(EGifPutExtensionLeader(mEncoder.get(), APPLICATION_EXT_FUNC_CODE));
    check(EGifPutExtensionBlock(mEncoder.get(), 11, "NETSCAPE2.0"));
    check(EGifPutExtensionBlock(mEncoder.get(), sizeof(kForEver), kForEver));
    check(EGifPutExtensionTrailer(mEncoder.get()));
}

void Gif::putControl(int64_t time) {
    const GraphicsControlBlock control = {DISPOSE_DO_NOT, false, static_cast<int>(time / 10),
                                          mTransparent};
    GifByteType bytes[4];
    const size_t size = EGifGCBToExtension(&control, bytes);
    check(EGifPutExtension(mEncoder.get(), GRAPHICS_EXT_FUNC_CODE, static_cast<int>(size), bytes));
}

void Gif::add(const std::vector<uint8_t>& pixels, int64_t time) {
    size_t left = 0, top = 0, right = mWidth, bottom = mHeight;  // of what differs
    if (!mBefore.empty()) {
        left = mWidth, top = mHeight, right = 1, bottom = 1;
        for (size_t i = 0; i < pixels.size(); ++i) {
            if (pixels[i] == mBefore[i]) continue;
            left = std::min(left, i % mWidth), right = std::max(right, i % mWidth + 1);
            top = std::min(top, i / mWidth), bottom = std::max(bottom, i / mWidth + 1);
        }
        left = std::min(left, right - 1), top = std::min(top, bottom - 1);  // nothing does
    }
    putControl(time);
    check(EGifPutImageDesc(mEncoder.get(), static_cast<int>(left), static_cast<int>(top),
                           static_cast<int>(right - left), static_cast<int>(bottom - top), false,
                           nullptr));
    std::vector<uint8_t> line(right - left);
    for (size_t y = top; y < bottom; ++y) {
        for (size_t x = left; x < right; ++x) {
            const size_t i = y * mWidth + x;
            const bool isNew = mBefore.empty() || pixels[i] != mBefore[i];
            line[x - left] = isNew ? pixels[i] : mTransparent;
        }
        check(EGifPutLine(mEncoder.get(), line.data(), static_cast<int>(line.size())));
    }
    mBefore = pixels;
}

std::string Gif::finish() {
    check(EGifCloseFile(mEncoder.release(), nullptr));
    return mBytes;
}

}  // namespace tarq::board
