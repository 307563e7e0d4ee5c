// Reads a lamp effect file. Only its form is known here: what the texts mean is the driver's
// business, so they are handed on as they stand in the file.
//
//     <effect loop="1" interval="20" duration="3000">
//       <led id="0">
//         <eff s="5">ff0000</eff>
//       </led>
//     </effect>
//
// The root may have any name. Other elements and attributes are ignored.
#pragma once

#include <stdio.h>

#include <string>
#include <vector>

// What the file gives, in the order in which the driver is to get it.
struct EffectItem {
    enum Kind {
        kParameter,   // text for the driver: "loop 1", "interval 20", "duration 3000"
        kStep,        // text for the driver: the LED, the step's text, its s
        kEmptyStep,   // a step without a text, which is left out; text: its id, or "(null)"
        kIncomplete,  // something that is left out as it lacks an attribute; text: which
    };
    Kind kind;
    int line;  // in the file, counted from 1
    std::string text;
};

// Reads the file from its start; it must be seekable and stays open. False, and *items untouched,
// when it cannot be read, is not well-formed XML or has no element.
bool readEffect(FILE* file, std::vector<EffectItem>* items);
