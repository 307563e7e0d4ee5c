// Brings what the description file says of this board into the module's two records. People write
// that file, so a mistake costs the text that it stands in and no more. A text is taken whole or
// not at all, since half of a part's name may be the name of another part; only the two that are
// merely shown are cut to their fields.
#include "hardware_info/description_loader.h"

#include <android/log.h>
#include <errno.h>
#include <stdlib.h>
#include <string.h>

#include <memory>

#include "common/device_file.h"
#include "hardware_info/peripheral_table.h"
#include "hardware_info/text.h"

static constexpr char kPath[] = "/vendor/etc/hardwareInfo.xml";

// printf shows a null text so on the device; here it is spelt out.
static const char* shown(const DescriptionText& text) {
    return text ? text->c_str() : "(null)";
}

// What is missing or too long is told with the line of the file, as the reader is about to correct
// it. The two lines that begin with "ERR:" have no room for one: they tell the names instead.
static void logMissing(int line, const char* what) {
    __android_log_print(ANDROID_LOG_ERROR, kLogTag, "%s:%d: %s is missing", kPath, line, what);
}

static void logTooLong(int line, const char* what, size_t length, size_t limit) {
    __android_log_print(ANDROID_LOG_ERROR, kLogTag,
                        "%s:%d: %s is %zu bytes long, at most %zu are allowed", kPath, line, what,
                        length, limit);
}

// Copies a text that fits with its terminator; any other leaves the field as it was.
template <size_t LIMIT>
static void copyWhole(const std::string& text, char (&field)[LIMIT + 1], int line,
                      const char* what) {
    if (text.size() > LIMIT) {
        logTooLong(line, what, text.size(), LIMIT);
    } else {
        memcpy(field, text.c_str(), text.size() + 1);
    }
}

// Fills the field to its end with zero bytes. A text as long as the field leaves no terminator.
template <size_t SIZE>
static void copyCut(const DescriptionText& text, char (&field)[SIZE]) {
    if (!text) return;
    memset(field, 0, SIZE);
    text->copy(field, SIZE);
}

// This only reports: the variant is used whatever comes of it, and each match request compares
// again.
static void checkOverlayId(const BoardVariant& variant, int32_t index, int32_t overlayId) {
    if (overlayId == -1 || !variant.overlayIds) return;
    // An id that was cut in two could be taken for another one, so such a list is not compared.
    if (variant.overlayIds->size() > kMaxOverlayIdsLength) {
        logTooLong(variant.line, "attribute overlay_id of <hardwre_info>",
                   variant.overlayIds->size(), kMaxOverlayIdsLength);
        return;
    }
    const bool included = includesId(*variant.overlayIds, overlayId);
    __android_log_print(ANDROID_LOG_INFO, kLogTag, "isMatchoverlayId:%d", included ? 1 : 0);
    if (!included) {
        __android_log_print(ANDROID_LOG_ERROR, kLogTag,
                            "ERR:index=%d is found,but  overlay id is not include, %d in board,"
                            "read %s",
                            index, overlayId, variant.overlayIds->c_str());
    }
}

// Of two parts of one kind the later stays. A name that is too long belongs to a known kind all the
// same, so it is told as too long and not as unknown.
static void applyPart(const DescribedPart& part) {
    bool known = false;
    for (PeripheralEntry& entry : peripheralTable) {
        if (!part.peripheral || !part.name || *part.peripheral != entry.name) continue;
        known = true;
        copyWhole<kMaxPartNameLength>(*part.name, entry.value, part.line, "the text of <hw>");
    }
    if (!known) {
        __android_log_print(ANDROID_LOG_ERROR, kLogTag, "ERR:(%s:%s)init err",
                            shown(part.peripheral), shown(part.name));
    }
}

static void applyVariant(const BoardVariant& variant, int32_t index, int32_t overlayId) {
    if (!variant.overlayIds) logMissing(variant.line, "attribute overlay_id of <hardwre_info>");
    if (!variant.hwVersion) logMissing(variant.line, "attribute hw_version of <hardwre_info>");
    checkOverlayId(variant, index, overlayId);
    copyCut(variant.overlayIds, boardIdentity.xmlOverlayIds);
    copyCut(variant.hwVersion, boardIdentity.xmlHwVersion);
    __android_log_print(ANDROID_LOG_INFO, kLogTag,
                        "index(%d) element is found,overlay_id=%d,read xml overlay id=%s,"
                        "read xml hw_version=%s",
                        index, overlayId, shown(variant.overlayIds), shown(variant.hwVersion));
    for (const DescribedPart& part : variant.parts) applyPart(part);
}

void applyDescription(const HardwareDescription& description, int32_t index, int32_t overlayId) {
    if (description.rootLine == 0) {
        __android_log_print(ANDROID_LOG_ERROR, kLogTag, "%s has no element, so no entries", kPath);
        return;
    }
    if (!description.product) {
        logMissing(description.rootLine, "attribute product of the root element");
    } else {
        copyWhole<kMaxProductLength>(*description.product, boardIdentity.product,
                                     description.rootLine, "attribute product of the root element");
    }
    for (const BoardVariant& variant : description.variants) {
        if (!variant.index) {
            logMissing(variant.line, "attribute index of <hardwre_info>");
            // The board's own index was read by the same rule: what is no number is 0.
        } else if (atoi(variant.index->c_str()) == index) {
            applyVariant(variant, index, overlayId);
        }
    }
}

void loadDescription(int32_t index, int32_t overlayId) {
    HardwareDescription description;
    const std::unique_ptr<FILE, int (*)(FILE*)> file(fopen(deviceFile(kPath).c_str(), "re"),
                                                     fclose);
    if (file == nullptr || !readDescription(file.get(), &description)) {
        // The reason is "Success" where the file can be read and its XML is at fault.
        __android_log_print(ANDROID_LOG_ERROR, kLogTag, "Error opening xml file:%s,err:%s\n", kPath,
                            strerror(errno));
        return;
    }
    applyDescription(description, index, overlayId);
}
