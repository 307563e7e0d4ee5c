#include "host/board/view/effect_picture.h"

#include <gif_lib.h>
#include <stdio.h>

#include <algorithm>
#include <cmath>
#include <set>

namespace tarq::board {

using Colours = std::vector<uint32_t>;

// ---- time ----

static constexpr int64_t kShortest = 20;     // of a frame, in ms
static constexpr int64_t kLongest = 60'000;  // of all

static Colours coloursAt(const LedEffect& effect, size_t leds, int64_t ms) {
    Colours colours(leds);
    for (size_t led = 0; led < leds; ++led) {
        if (effect.names(led)) colours[led] = effect.colour(led, ms);
    }
    return colours;
}

std::vector<EffectFrame> framesOf(const LedEffect& effect, size_t leds) {
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

std::vector<std::string> captionOf(const LedEffect& effect, const std::string& title) {
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
    if (effect.duration() > kLongest) lines.emplace_back("The first minute of it is shown.");
    for (std::string& line : lines) {
        for (char& byte : line) byte = byte >= ' ' && byte <= '~' ? byte : '?';
    }
    return lines;
}

// ---- colours ----

enum Place : uint8_t { kBackground = 0, kText = 2, kId = 3, kFirstShade = 4 };
static const Colours kFixed = {0x101318, 0x000000, 0xdfe3ea, 0x6a7280};
static constexpr uint32_t kDark = 0x22262e;  // an LED that is off can still be seen
static constexpr size_t kFewestShades = 4;
static constexpr size_t kMostShades = 16;
static constexpr size_t kFewestOfGlow = 8;  // of fewer it would be made of rings

template <typename Channel>
static uint32_t forChannels(const Channel& channel) {
    return channel(16) << 16 | channel(8) << 8 | channel(0);
}

// From the background, at part 0, to a colour, at whole.
static uint32_t mixture(uint32_t colour, size_t part, size_t whole) {
    return forChannels([&](int shift) {
        const size_t from = kFixed[kBackground] >> shift & 0xff, to = colour >> shift & 0xff;
        return static_cast<uint32_t>((from * (whole - part) + to * part) / whole);
    });
}

static uint32_t withoutDarkness(uint32_t colour) {
    return forChannels([&](int shift) {
        const uint32_t least = kDark >> shift & 0xff;
        return least + (colour >> shift & 0xff) * (255 - least) / 255;
    });
}

// Each colour that an LED has gets some shades from the background up to itself. With too many
// colours for that, they are looked at more and more coarsely.
void EffectPicture::choosePalette(const std::vector<EffectFrame>& frames) {
    std::set<uint32_t> all;
    for (const EffectFrame& frame : frames) all.insert(frame.colours.begin(), frame.colours.end());
    std::set<uint32_t> colours = all;
    const size_t most = (256 - kFirstShade) / kFewestShades;
    for (int bits = 7; colours.size() > most; --bits) {
        mMask = (0xff00u >> bits & 0xff) * 0x010101;
        colours.clear();
        for (const uint32_t colour : all) colours.insert(colour & mMask);
    }
    mPalette = kFixed;
    mShades = std::min((256 - kFirstShade) / colours.size(), kMostShades);
    for (const uint32_t colour : colours) {
        mPlaces[colour] = static_cast<uint8_t>(mPalette.size());
        for (size_t shade = 1; shade <= mShades; ++shade) {
            mPalette.push_back(mixture(withoutDarkness(colour), shade, mShades));
        }
    }
}

// ---- places ----

static constexpr double kPi = 3.14159265358979;
static constexpr double kGlow = 0.4;  // at the edge of a disc; 1 is its inside

struct EffectPicture::Ring {
    explicit Ring(size_t leds)
        : count(static_cast<double>(leds)),
          radius(std::clamp(count * 6, 96.0, 200.0)),
          disc(std::min(17.0, 0.36 * 2 * kPi * radius / count)),
          glow(std::min(2.1 * disc, 0.48 * 2 * kPi * radius / count)),
          size(2 * (radius + 36)) {}

    double angle(double led) const { return led * 2 * kPi / count; }
    // Across and down from the centre, at that distance from it in the direction of an LED.
    double across(double led, double distance) const { return distance * std::sin(angle(led)); }
    double down(double led, double distance) const { return -distance * std::cos(angle(led)); }

    // How much of an LED's light is seen that far from its centre.
    double light(double distance, bool glows) const {
        const double nearness = std::clamp((glow - distance) / (glow - disc), 0.0, 1.0);
        const double outside = glows ? kGlow * nearness * nearness : 0;
        const double inside = std::clamp(disc + 0.5 - distance, 0.0, 1.0);
        return inside + (1 - inside) * outside;
    }

    const double count;
    const double radius;  // in pixels, as all of them
    const double disc;
    const double glow;  // where it ends
    const double size;  // of the square with the ring
};

void EffectPicture::placeLeds(const Ring& ring) {
    const double centre = static_cast<double>(mWidth) / 2;
    for (size_t i = 0; i < mLights.size(); ++i) {
        const double across = static_cast<double>(i % mWidth) + 0.5 - centre;
        const double down = static_cast<double>(i / mWidth) + 0.5 - ring.size / 2;
        const double turn = std::atan2(across, -down) / (2 * kPi) + 1;
        const double led = std::fmod(std::round(turn * ring.count), ring.count);
        const double distance = std::hypot(across - ring.across(led, ring.radius),
                                           down - ring.down(led, ring.radius));
        const double light = ring.light(distance, mShades >= kFewestOfGlow);
        const double shade = std::round(light * static_cast<double>(mShades));
        mLights[i] = {static_cast<uint8_t>(led), static_cast<uint8_t>(shade)};
    }
}

// The place is the middle of the text.
void EffectPicture::write(const std::string& text, double x, double y, uint8_t colour) {
    SavedImage image = {};
    image.ImageDesc.Width = static_cast<int>(mWidth);
    image.ImageDesc.Height = static_cast<int>(mHeight);
    image.RasterBits = mStanding.data();
    const double left = x - GIF_FONT_WIDTH * static_cast<double>(text.size()) / 2;
    GifDrawText8x8(&image, static_cast<int>(std::lround(left)),
                   static_cast<int>(std::lround(y - GIF_FONT_HEIGHT / 2.0)), text.c_str(), colour);
}

// ---- all together ----

EffectPicture::EffectPicture(const std::vector<EffectFrame>& frames,
                             const std::vector<std::string>& caption) {
    static constexpr size_t kMargin = 12, kLine = 13;
    const size_t leds = frames.front().colours.size();
    const Ring ring(leds);
    size_t longest = 0;
    for (const std::string& line : caption) longest = std::max(longest, line.size());
    const auto size = static_cast<size_t>(ring.size);
    mWidth = std::max(size, GIF_FONT_WIDTH * longest + 2 * kMargin);
    mHeight = size + kLine * caption.size() + kMargin;

    choosePalette(frames);
    mLights.resize(mWidth * mHeight);
    mStanding.resize(mWidth * mHeight);
    placeLeds(ring);
    const double centre = static_cast<double>(mWidth) / 2;
    double y = ring.size + kLine / 2.0;
    for (const std::string& line : caption) {
        const bool isTitle = &line == &caption.front();
        // The rows of a table begin at the same place.
        const double shift = (static_cast<double>(longest) - static_cast<double>(line.size())) / 2;
        write(line, centre - (isTitle ? 0 : shift * GIF_FONT_WIDTH), y, isTitle ? kText : kId);
        y += kLine;
    }
    static constexpr size_t kMostIds = 32;  // for more there is no space
    for (size_t led = 0; led < leds && leds <= kMostIds; ++led) {
        const double inwards = ring.radius - ring.disc - 22;
        const auto place = static_cast<double>(led);
        char id[20];
        snprintf(id, sizeof(id), "%zx", led);
        write(id, centre + ring.across(place, inwards), ring.size / 2 + ring.down(place, inwards),
              kId);
    }
}

std::vector<uint8_t> EffectPicture::draw(const Colours& colours) const {
    Colours places;  // the darkest shade of each LED's colour
    for (const uint32_t colour : colours) places.push_back(mPlaces.at(colour & mMask));
    std::vector<uint8_t> pixels = mStanding;
    for (size_t i = 0; i < pixels.size(); ++i) {
        const Light light = mLights[i];
        if (light.shade != 0) pixels[i] = static_cast<uint8_t>(places[light.led] + light.shade - 1);
    }
    return pixels;
}

}  // namespace tarq::board
