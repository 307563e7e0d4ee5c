package com.tarq.hardwareInfo;

/**
 * Which board this is, which parts it carries, and whether an OTA package fits it.
 * Registered under its descriptor. Any process may call it.
 *
 * Items are "name:value" texts; the names are wifi, codec, tp, internal_camera, usb_camera, bt,
 * lcd, switch, emmc, led_ic and keyboard_ic. The value "null" stands for "no such part".
 */
interface IHardwareInfoService {
    /** Appends one item for each of the eleven names, in the order above. Always true. */
    boolean getHardwareInfo(out List<String> peripherals);

    /**
     * True when a package built for these parts fits this board. Takes the eleven names and
     * "overlay_id", whose value lists the overlay ids that the package supports.
     */
    boolean isMatchHardwareInfo(in List<String> peripherals);

    /**
     * Stores the package's build time for the timestamp fallback of isMatchHardwareInfo, for all
     * callers and until the next call. Not validated; 0 makes the fallback refuse.
     */
    void setOtaTimestamp(long timestamp);
}
