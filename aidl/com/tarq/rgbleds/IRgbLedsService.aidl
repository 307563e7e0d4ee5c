package com.tarq.rgbleds;

import com.tarq.rgbleds.IRgbLedsCallbacks;

/** Colour, brightness and effects of the device's RGB LEDs. Registered under its descriptor. */
interface IRgbLedsService {
    boolean setRgbColor(int id, int color);
    boolean setRgbBrightness(int id, int brightness);
    int loadXmlFile(String path);
    int stopLampEffect();
    int getRgbBrightness(int id);
    int getRgbColor(int id);
    int setRgbEffect(int id, int type, int color, int brightness, int cont, int val);
    boolean setLedList(in int[] ids, int color, int brightness);
    /** There is one slot: the last registration wins. */
    void registerRgbLedsCallbacks(IRgbLedsCallbacks callback);
}
