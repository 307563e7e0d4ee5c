package com.tarq.rgbleds;

/** Implemented by an application that wants to know when LED operations were carried out. */
oneway interface IRgbLedsCallbacks {
    /**
     * The value names the operation, not an LED state: 64 setRgbColor, 82 setRgbBrightness,
     * 101 getRgbColor, 124 getRgbBrightness.
     */
    void onValueChange(int value);
}
