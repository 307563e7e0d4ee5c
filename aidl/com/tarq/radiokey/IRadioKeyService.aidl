package com.tarq.radiokey;

import com.tarq.radiokey.IRadioKeyCallback;

/**
 * The receiver for remote keys. Registered as SERVICE_NAME, and only on devices whose property
 * ro.vendor.433_check_enable is "true".
 */
interface IRadioKeyService {
    const String SERVICE_NAME = "radiokey_service";

    int getRssiDBm();
    /** A registration ends with the process that hosts the callback; it cannot be withdrawn. */
    void registerRadioKeyCallback(IRadioKeyCallback callback);
    int getChipStatus();
    /** Stored in persist.radiokey.frequence, so it outlives restarts. */
    void setRadiokeyFrequency(int frequency);
}
