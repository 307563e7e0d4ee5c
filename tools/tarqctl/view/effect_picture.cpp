// A picture is made in three steps that are kept apart: when (frames, of which equal ones are one),
// where (for each pixel once, which LED lights it and how much) and in which colours (one palette
// for the whole GIF, with shades from the background to each colour of an LED).
#include "tools/tarqctl/view/effect_picture.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <set>

#include "tools/tarqctl/view/gif.h"

namespace tarq::tools {

using Colours = std::vector<uint32_t>;

// ---- time ----

static constexpr int64_t kShortest = 20;     // of a frame, in ms
static constexpr int64_t kLongest = 60'000;  // of all
static constexpr size_t kMostColours = 63;   // with four shades each, and those that stand

static Colours coloursAt(const board::LedEffect& effect, size_t leds, int64_t ms) {
    Colours colours(leds);
    for (size_t led = 0; led < leds; ++led) {
        if (effect.names(led)) colours[led] = effect.colour(led, ms);
    }
    return colours;
}

std::vector<EffectFrame> framesOf(const board::LedEffect& effect, size_t leds) {
    const int64_t end = std::min(effect.duration(), kLongest);
    std::vector<EffectFrame> frames;
    for (int64_t ms = 0; ms < end; ms += kShortest) {
        Colours colours = coloursAt(effect, leds, ms);
        if (frames.empty() || frames.back().colours != colours) {
            frames.push_back({0, std::move(colours)});
        }
        frames.back().time += kShortest;
    }
    return frames;
}

// ---- words ----

static std::set<uint32_t> coloursOf(const std::vector<EffectFrame>& frames) {
    std::set<uint32_t> all;
    for (const EffectFrame& frame : frames) all.insert(frame.colours.begin(), frame.colours.end());
    return all;
}

std::vector<std::string> lacksOf(const board::LedEffect& effect,
                                 const std::vector<EffectFrame>& frames) {
    std::vector<std::string> lacks;
    if (effect.duration() > kLongest) lacks.emplace_back("The first minute of it is shown.");
    if (effect.shortestStep() < kShortest) {
        lacks.emplace_back("Not all is shown: it has steps shorter than 20 ms.");
    }
    const size_t colours = coloursOf(frames).size();
    if (colours > kMostColours) {
        lacks.push_back("Its " + std::to_string(colours) +
                        " colours are rounded: a GIF has fewer.");
    }
    return lacks;
}

std::vector<std::string> captionOf(const board::LedEffect& effect, const std::string& title,
                                   const std::vector<std::string>& lacks) {
    const std::string interval = std::to_string(effect.interval()) + " ms";
    const std::string duration = std::to_string(effect.duration()) + " ms";
    const std::string s = std::to_string(effect.firstS());
    const std::string step = std::to_string(effect.firstS() * effect.interval()) + " ms";
    const auto row = [&](const char* name, std::string value, const std::string& meaning) {
        value.resize(std::max(interval.size(), duration.size()), ' ');
        return std::string(name) + "  " + value + "  " + meaning;
    };
    std::vector<std::string> lines = {
            title + ", played by the virtual board",
            row("interval", interval, "s=" + s + " shows a step's RRGGBB for " + step),
            row("duration", duration, "each LED repeats its steps that long"),
            row("loop    ", effect.loops() ? "1" : "0",
                effect.loops() ? "again and again until stopped"
                               : "once, then the last colours stay")};
    lines.insert(lines.end(), lacks.begin(), lacks.end());
    for (std::string& line : lines) {
        for (char& byte : line) byte = byte >= ' ' && byte <= '~' ? byte : '?';
    }
    return lines;
}

// ---- colours ----

enum Place : uint8_t { kBackground = Gif::kTransparent + 1, kText, kGrey, kFirstShade };
static constexpr uint32_t kFixed[] = {0, 0x101318, 0xdfe3ea, 0x6a7280};
static constexpr size_t kMostShades = 16;

// An LED that is off can still be seen.
static uint32_t channelOfLed(uint32_t value) {
    static constexpr uint32_t kDark = 0x24;
    return kDark + value * (0xff - kDark) / 0xff;
}

// The nearest thing to a colour of which some low bits were not looked at; white stays white.
static uint32_t filled(uint32_t colour, uint32_t mask) {
    uint32_t result = 0;
    for (const int shift : {16, 8, 0}) {
        result |= (colour >> shift & 0xff) * 0xff / (mask >> shift & 0xff) << shift;
    }
    return result;
}

// Each colour that an LED has gets some shades between the background and itself. With too many
// colours for that, they are looked at more and more coarsely.
void EffectPicture::choosePalette(const std::vector<EffectFrame>& frames) {
    const std::set<uint32_t> all = coloursOf(frames);
    std::set<uint32_t> colours = all;
    for (int bits = 7; colours.size() > kMostColours; --bits) {
        mMask = (0xff00u >> bits & 0xff) * 0x010101;
        colours.clear();
        for (const uint32_t colour : all) colours.insert(colour & mMask);
    }
    mPalette.assign(std::begin(kFixed), std::end(kFixed));
    mShades = std::min((256 - kFirstShade) / colours.size(), kMostShades);
    for (const uint32_t colour : colours) {
        mPlaces[colour] = static_cast<uint8_t>(mPalette.size());
        for (size_t shade = 1; shade <= mShades; ++shade) {
            uint32_t mixture = 0;
            for (const int shift : {16, 8, 0}) {
                const size_t from = kFixed[kBackground] >> shift & 0xff;
                const size_t to = channelOfLed(filled(colour, mMask) >> shift & 0xff);
                const size_t sum = from * (mShades - shade) + to * shade;
                mixture |= static_cast<uint32_t>(sum / mShades) << shift;
            }
            mPalette.push_back(mixture);
        }
    }
}

// ---- places ----

static constexpr double kTurn = 2 * 3.14159265358979;

// Lengths are in pixels.
struct EffectPicture::Ring {
    explicit Ring(size_t leds)
        : count(static_cast<double>(leds)),
          radius(std::clamp(count * 6, 96.0, 200.0)),
          disc(std::min(17.0, 0.36 * kTurn * radius / count)),
          glow(std::min(2.1 * disc, 0.48 * kTurn * radius / count)) {}

    // From the centre, x to the right and y downwards.
    Point led(double number, double distance) const {
        return std::polar(distance, (number / count - 0.25) * kTurn);
    }
    double nearestLed(Point point) const {
        return std::fmod(std::round((std::arg(point) / kTurn + 1.25) * count), count);
    }

    // How much of an LED's light is seen that far from its centre.
    double light(double distance, bool glows) const {
        const double inside = std::clamp(disc + 0.5 - distance, 0.0, 1.0);
        const double nearness = std::clamp((glow - distance) / (glow - disc), 0.0, 1.0);
        return std::max(inside, glows ? 0.4 * nearness * nearness : 0);
    }

    const double count;
    const double radius;
    const double disc;  // its radius
    const double glow;  // where it ends
};

void EffectPicture::placeLeds(const Ring& ring) {
    const bool glows = mShades >= 8;  // with fewer it would be made of rings
    for (size_t y = 0, i = 0; y < mHeight; ++y) {
        for (size_t x = 0; x < mWidth; ++x, ++i) {
            const Point pixel(static_cast<double>(x) + 0.5, static_cast<double>(y) + 0.5);
            const double led = ring.nearestLed(pixel - mCentre);
            const double distance = std::abs(pixel - mCentre - ring.led(led, ring.radius));
            const double light = ring.light(distance, glows) * static_cast<double>(mShades);
            mLights[i] = {static_cast<uint8_t>(led), static_cast<uint8_t>(std::lround(light))};
        }
    }
}

void EffectPicture::placeIds(const Ring& ring) {
    static constexpr double kMost = 32;  // for more there is no space
    for (double led = 0; led < ring.count && ring.count <= kMost; ++led) {
        write(std::to_string(std::lround(led)),
              mCentre + ring.led(led, ring.radius - ring.disc - 22), kGrey);
    }
}

// A title, and a table whose rows begin at the same place.
void EffectPicture::placeCaption(const std::vector<std::string>& lines, size_t longest) {
    Point place = {mCentre.real(), 2 * mCentre.imag() + kLine / 2.0};
    for (const std::string& line : lines) {
        const bool isTitle = &line == &lines.front();
        const std::string filled = line + std::string(longest - line.size(), ' ');
        write(isTitle ? line : filled, place, isTitle ? kText : kGrey);
        place += Point(0, kLine);
    }
}

void EffectPicture::write(const std::string& text, Point middle, uint8_t colour) {
    SavedImage image = {};
    image.ImageDesc.Width = static_cast<int>(mWidth);
    image.ImageDesc.Height = static_cast<int>(mHeight);
    image.RasterBits = mStanding.data();
    const double left = middle.real() - GIF_FONT_WIDTH * static_cast<double>(text.size()) / 2;
    const double top = middle.imag() - GIF_FONT_HEIGHT / 2.0;
    GifDrawText8x8(&image, static_cast<int>(std::lround(left)), static_cast<int>(std::lround(top)),
                   text.c_str(), colour);
}

// ---- all together ----

// The ring needs room for its light and the numbers in it, the caption for its longest line.
EffectPicture::EffectPicture(const std::vector<EffectFrame>& frames,
                             const std::vector<std::string>& caption) {
    const Ring ring(frames.front().colours.size());
    const auto ringSize = 2 * static_cast<size_t>(ring.radius + 36);
    size_t longest = 0;
    for (const std::string& line : caption) longest = std::max(longest, line.size());
    mWidth = std::max(ringSize, GIF_FONT_WIDTH * (longest + 3));
    mHeight = ringSize + kLine * (caption.size() + 1);
    mCentre = {static_cast<double>(mWidth) / 2, static_cast<double>(ringSize) / 2};
    mLights.resize(mWidth * mHeight);
    mStanding.resize(mWidth * mHeight, kBackground);
    choosePalette(frames);
    placeLeds(ring);
    placeIds(ring);
    placeCaption(caption, longest);
}

// An LED's shades stand behind each other in the palette, so a pixel is the place of the first and
// how much light falls on it.
std::vector<uint8_t> EffectPicture::draw(const Colours& colours) const {
    std::vector<uint8_t> places;  // of the first shade of each LED's colour
    for (const uint32_t colour : colours) places.push_back(mPlaces.at(colour & mMask));
    std::vector<uint8_t> pixels = mStanding;
    for (size_t i = 0; i < pixels.size(); ++i) {
        const Light light = mLights[i];
        if (light.shade != 0) pixels[i] = static_cast<uint8_t>(places[light.led] + light.shade - 1);
    }
    return pixels;
}

}  // namespace tarq::tools
