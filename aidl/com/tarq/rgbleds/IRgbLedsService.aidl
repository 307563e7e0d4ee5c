package com.tarq.rgbleds;

import com.tarq.rgbleds.IRgbLedsCallbacks;

/**
 * Colour, brightness and effects of the device's RGB LEDs. Registered under its descriptor.
 *
 * What the numbers mean, and which are valid, is the LED driver's business: they are handed on
 * unchecked, all 32 bits in hexadecimal (-1 as ffffffff), cont alone in decimal. A result tells
 * whether the driver's attribute could be opened, not what the driver said to the numbers.
 */
interface IRgbLedsService {
    /** color: RRGGBB, 0xff0000 is red. True when the attribute could be opened. */
    boolean setRgbColor(int id, int color);
    /** True when the attribute could be opened. */
    boolean setRgbBrightness(int id, int brightness);
    /** Plays an effect file, by an absolute path that the daemon can read. 0, whatever comes. */
    int loadXmlFile(String path);
    /** 1, or 0 when the attribute could not be opened; 1 as well when no effect was playing. */
    int stopLampEffect();
    /**
     * As the driver tells it; 0 when nothing can be read, and that of another LED when the driver
     * refuses this one.
     */
    int getRgbBrightness(int id);
    /** The same, RRGGBB. What an effect shows meanwhile is not in it. */
    int getRgbColor(int id);
    /**
     * What the LED shows while no effect file plays on it: type, cont and val are the driver's own.
     * 1, or 0 when the attribute could not be opened.
     */
    int setRgbEffect(int id, int type, int color, int brightness, int cont, int val);
    /**
     * One LED after the other, its colour and then its brightness. Whether the attribute could be
     * opened for the last brightness; false for an empty list.
     */
    boolean setLedList(in int[] ids, int color, int brightness);
    /** There is one slot: the last registration wins. */
    void registerRgbLedsCallbacks(IRgbLedsCallbacks callback);
}
