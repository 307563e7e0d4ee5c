// Reads a hardware description file: for every variant of a product, which part it carries for
// each kind of peripheral. Only the file's form is known here, not this board: who reads it picks
// the variants and judges the texts.
//
//     <hardware product="demo_panel">
//       <hardwre_info index="3" overlay_id="1,5,7" hw_version="V1.2">
//         <hw Peripheral="tp">gt9xx</hw>
//       </hardwre_info>
//     </hardware>
//
// The root may have any name; "hardwre_info" is spelt so. Other elements and attributes are
// ignored.
#pragma once

#include <stddef.h>
#include <stdio.h>

#include <optional>
#include <string>
#include <vector>

// How long the texts may be, in bytes of UTF-8, to be used on a board: what longer ones cost is
// said in description_loader.h. The reader itself takes them all.
constexpr size_t kMaxProductLength = 31;
constexpr size_t kMaxOverlayIdsLength = 63;
constexpr size_t kMaxPartNameLength = 127;

// It has no value when the file does not have the attribute, or when the element holds no text. An
// attribute that is there and empty has one.
using DescriptionText = std::optional<std::string>;

// An element <hw>: one part of a variant.
struct DescribedPart {
    int line;                    // in the file, counted from 1
    DescriptionText peripheral;  // the kind
    DescriptionText name;        // the element's text, with the blanks it has in the file
};

// An element <hardwre_info>: one variant of the product.
struct BoardVariant {
    int line;
    DescriptionText index;       // decimal
    DescriptionText overlayIds;  // separated by any of " ", "," and "*"
    DescriptionText hwVersion;
    std::vector<DescribedPart> parts;  // in the order of the file
};

struct HardwareDescription {
    int rootLine = 0;  // 0 when the document has no element at all
    DescriptionText product;
    std::vector<BoardVariant> variants;  // in the order of the file
};

// Reads the file from its start; it must be seekable and stays open. False when it cannot be read
// or is not well-formed XML: then *description is untouched, and errno tells why or is 0.
bool readDescription(FILE* file, HardwareDescription* description);
