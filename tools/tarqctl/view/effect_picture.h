// A lamp effect as pictures: the LEDs as discs in a ring, the first one on top and the others
// clockwise, and below it what the numbers of the effect mean.
#pragma once

#include <stdint.h>

#include <complex>
#include <map>
#include <string>
#include <vector>

#include "host/board/leds/led_effect.h"
#include "tools/tarqctl/session.h"

namespace tarq::tools {

// What is shown for some time, in ms; a colour RRGGBB for each LED.
struct EffectFrame {
    int64_t time;
    std::vector<uint32_t> colours;
};

// The effect once through, or the first minute of it. Time is cut into 20 ms, the shortest that
// programs show a frame of a GIF. leds: how many the picture is to have. One that the effect does
// not name stays dark.
std::vector<EffectFrame> framesOf(const board::LedEffect& effect, size_t leds);

// What the picture does not show of the effect as it is, a sentence each.
std::vector<std::string> lacksOf(const board::LedEffect& effect,
                                 const std::vector<EffectFrame>& frames);

// The lines below the ring. Printable ASCII alone, as the font has no other characters.
std::vector<std::string> captionOf(const board::LedEffect& effect, const std::string& title,
                                   const std::vector<std::string>& lacks);

// The frames of one effect in one size and with one palette. All that does not change from frame to
// frame is worked out once, when it is made.
class EffectPicture {
  public:
    EffectPicture(const std::vector<EffectFrame>& frames, const std::vector<std::string>& caption);

    size_t width() const { return mWidth; }
    size_t height() const { return mHeight; }
    // RRGGBB, 256 at most; the first one is in no picture.
    const std::vector<uint32_t>& palette() const { return mPalette; }
    // Row by row, places in the palette.
    std::vector<uint8_t> draw(const std::vector<uint32_t>& colours) const;

  private:
    using Point = std::complex<double>;
    struct Ring;
    struct Light {  // what falls on a pixel
        uint8_t led;
        uint8_t shade;  // of its colour; 0 is none
    };
    static constexpr size_t kLine = 13;  // from one line of the caption to the next, in pixels

    void choosePalette(const std::vector<EffectFrame>& frames);
    void placeLeds(const Ring& ring);
    void placeIds(const Ring& ring);
    void placeCaption(const std::vector<std::string>& lines, size_t longest);
    void write(const std::string& text, Point middle, uint8_t colour);

    size_t mWidth = 0;
    size_t mHeight = 0;
    Point mCentre;  // of the ring
    std::vector<uint32_t> mPalette;
    size_t mShades = 0;                   // that each colour has in the palette
    uint32_t mMask = 0xffffff;            // what is looked at of a colour
    std::map<uint32_t, uint8_t> mPlaces;  // of the first shade of a masked colour
    std::vector<Light> mLights;           // by pixel
    std::vector<uint8_t> mStanding;       // the pixels without any light
};

// ---- the whole of it, for a command ----

// Draws the effect of the file, or without one the effect that the board plays, into a moving GIF.
// Without a board the LEDs that the file names are drawn. What is left out and what the picture
// lacks is noticed. Throws a Failure when the driver does not take all of it.
void drawEffect(Session& session, const std::string& effectFile, const std::string& gifFile);

}  // namespace tarq::tools
