// Where the files of the device are: one declaration, two implementations, chosen by the build.
#pragma once

#include <string>

// The path to open for a path of the device. On the device it is the path itself. On a Linux host
// what is in /sys, /proc, /dev, /vendor and /data lies in the virtual board's tree, and any other
// path is itself, so a file that a user names may be handed over as it is.
//
// Call it in the expression that opens the file and keep the device's own path for log lines:
//     fopen(deviceFile("/vendor/etc/x.xml").c_str(), "re")
std::string deviceFile(std::string path);
