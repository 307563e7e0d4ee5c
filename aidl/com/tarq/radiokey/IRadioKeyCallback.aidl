package com.tarq.radiokey;

/** Implemented by an application that wants to receive remote keys. */
oneway interface IRadioKeyCallback {
    /** Three values as the receiver reports them for one reception, and its strength in dBm. */
    void onClick(int value1, int value2, int value3, int rssiDBm);
}
