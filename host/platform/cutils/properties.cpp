// Every property of a board is a small file in its run/properties, named like the property:
// processes share them without a server, and people can look at them. Which names and values are
// refused, and in which order the reasons come, is the rule of the device's init. What begins with
// "persist." is stored a second time where the board's next start reads it.
#include <android/log.h>
#include <cutils/properties.h>
#include <errno.h>
#include <fcntl.h>
#include <host/process_board.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#include <string>

#include <utils/String16.h>
#include <utils/String8.h>

using android::String16;
using android::String8;
using tarq::host::processBoard;

// It counts bytes, without the terminator.
static constexpr size_t kMaxValueLength = PROPERTY_VALUE_MAX - 1;

static bool startsWith(const char* text, const char* prefix) {
    return strncmp(text, prefix, strlen(prefix)) == 0;
}

// A legal name is also a safe file name: it has no slash, and cannot be "." or "..".
static bool isLegalName(const char* name) {
    static constexpr char kLegal[] =
            "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_-@:.";
    const size_t length = strlen(name);
    return length > 0 && strspn(name, kLegal) == length && name[0] != '.' &&
           name[length - 1] != '.' && strstr(name, "..") == nullptr;
}

// The conversion to UTF-16 accepts anything, but only well-formed UTF-8 survives the way back.
static bool isUtf8(const char* value) {
    return String8(String16(value)) == value;
}

// Why the property may not be set, as Android orders its reasons; null when nothing is against it.
static const char* refusal(const char* name, const char* value) {
    if (strlen(value) > kMaxValueLength) return "the value is longer than 91 bytes";
    if (!isLegalName(name)) {
        return "a name is made of A-Z a-z 0-9 _ - @ : and single dots between them";
    }
    if (startsWith(name, "ctl.")) return "ctl. names are commands to init";
    if (!isUtf8(value)) return "the value is not UTF-8";
    if (processBoard().isNone()) return "there is no board, TARQ_BOARD is not set";
    return nullptr;
}

// Returns 0 or an errno. A reader finds the old value or the new one, never a part: the value is
// written aside, under a name that no property can have, and then moved into place. With `once`
// the move fails with EEXIST when the name is taken, however close two setters come.
static int store(const std::string& directory, const char* name, const char* value, bool once) {
    std::string aside = directory + "/.XXXXXX";
    const int fd = mkostemp(aside.data(), O_CLOEXEC);
    if (fd < 0) return errno;

    const std::string place = directory + "/" + name;
    int error = 0;
    if (write(fd, value, strlen(value)) < 0 || fchmod(fd, 0644) != 0) {
        error = errno;
    } else if (once) {
        if (link(aside.c_str(), place.c_str()) != 0) error = errno;
    } else {
        if (rename(aside.c_str(), place.c_str()) != 0) error = errno;
    }
    close(fd);
    if (once || error != 0) unlink(aside.c_str());
    return error;
}

// A file is replaced whole, so one read finds one value. An empty one is as good as none, as on the
// device.
int property_get(const char* key, char* value, const char* default_value) {
    ssize_t length = 0;
    if (isLegalName(key) && !processBoard().isNone()) {
        const std::string path = processBoard().properties() + "/" + key;
        const int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC);
        if (fd >= 0) {
            length = read(fd, value, kMaxValueLength);
            close(fd);
        }
    }
    if (length <= 0) {
        const char* fallback = default_value != nullptr ? default_value : "";
        length = static_cast<ssize_t>(strnlen(fallback, kMaxValueLength));
        memcpy(value, fallback, static_cast<size_t>(length));
    }
    value[length] = '\0';
    return static_cast<int>(length);
}

// A refusal is a warning of libc's, as on the device, where the caller sees no more than -1 either.
int property_set(const char* key, const char* value) {
    if (key == nullptr) return -1;
    if (value == nullptr) value = "";

    const bool once = startsWith(key, "ro.");
    const char* reason = refusal(key, value);
    if (reason == nullptr) {
        const int error = store(processBoard().properties(), key, value, once);
        if (error == EEXIST && once) {
            reason = "it is read-only and already set";
        } else if (error != 0) {
            reason = strerror(error);
        }
    }
    if (reason != nullptr) {
        __android_log_print(ANDROID_LOG_WARN, "libc", "cannot set property \"%s\" to \"%s\": %s",
                            key, value, reason);
        return -1;
    }
    if (startsWith(key, "persist.")) {
        // As on the device, a value that could not be saved is set all the same.
        const int error = store(processBoard().savedProperties(), key, value, false);
        if (error != 0) {
            __android_log_print(ANDROID_LOG_ERROR, "libc", "cannot save property \"%s\": %s", key,
                                strerror(error));
        }
    }
    return 0;
}
