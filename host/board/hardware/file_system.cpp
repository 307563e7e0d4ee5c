// The kernel's requests arrive on threads of libfuse and are handed to the hardware as they are;
// all that is decided here is how little the kernel may assume: no caching, no sizes, no creation.
// The threads are many, because each call that is held or slow keeps one.
#include "host/board/hardware/file_system.h"

#define FUSE_USE_VERSION 312
#include <fuse3/fuse.h>
#include <signal.h>
#include <sys/mman.h>
#include <unistd.h>

#include <chrono>
#include <stdexcept>

namespace tarq::board {

// Each call that is held or slow has a thread, and one more must be left for everybody else.
static constexpr unsigned kMaxThreads = 256;

// ---- the operations: nothing but the way from FUSE to the hardware ----

static Hardware& hardware() {
    return *static_cast<Hardware*>(fuse_get_context()->private_data);
}

static bool interrupted() {
    return fuse_interrupted() != 0;
}

// A name that was not there may be there a moment later, by an export or a fault that is taken
// away, so the kernel keeps no answer.
static void* onInit(fuse_conn_info*, fuse_config* config) {
    config->direct_io = 1;  // sizes mean nothing, and each read and write arrives as it was made
    config->entry_timeout = config->attr_timeout = config->negative_timeout = 0;
    return fuse_get_context()->private_data;
}

static int onGetattr(const char* path, struct stat* status, fuse_file_info*) {
    return hardware().attributes(path, status);
}

static int onReadlink(const char* path, char* buffer, size_t size) {
    std::string target;
    const int error = hardware().readLink(path, &target);
    if (error == 0) snprintf(buffer, size, "%s", target.c_str());
    return error;
}

// A directory is read whole at once: it is small, and has no order that could be gone on with.
static int onReaddir(const char* path, void* buffer, fuse_fill_dir_t fill, off_t, fuse_file_info*,
                     fuse_readdir_flags) {
    std::set<std::string> names = hardware().list(path);
    names.insert({".", ".."});
    for (const std::string& name : names) {
        fill(buffer, name.c_str(), nullptr, 0, static_cast<fuse_fill_dir_flags>(0));
    }
    return 0;
}

static int onOpen(const char* path, fuse_file_info* info) {
    return hardware().open(path, info->flags, &info->fh);
}

static int onRelease(const char*, fuse_file_info* info) {
    hardware().close(info->fh);
    return 0;
}

static int onRead(const char*, char* buffer, size_t size, off_t offset, fuse_file_info* info) {
    return hardware().read(info->fh, buffer, size, offset, interrupted);
}

static int onWrite(const char*, const char* data, size_t size, off_t, fuse_file_info* info) {
    const int error = hardware().write(info->fh, std::string(data, size), interrupted);
    return error != 0 ? error : static_cast<int>(size);
}

// The kernel has copied the argument by the size in the request, so the node sees this process's
// memory only.
static int onIoctl(const char*, unsigned request, void*, fuse_file_info* info, unsigned flags,
                   void* argument) {
    if ((flags & FUSE_IOCTL_DIR) != 0) return -ENOTTY;
    return hardware().ioctl(info->fh, request, argument, interrupted);
}

// What is not there stays so, also for fopen(…, "w+").
static int onCreate(const char*, mode_t, fuse_file_info*) {
    return -EACCES;
}

// A shell opens a file with O_TRUNC to write to it; sysfs takes no notice of that either.
static int onTruncate(const char*, off_t, fuse_file_info*) {
    return 0;
}

static fuse_operations operations() {
    fuse_operations result = {};
    result.init = onInit;
    result.getattr = onGetattr;
    result.readlink = onReadlink;
    result.readdir = onReaddir;
    result.open = onOpen;
    result.release = onRelease;
    result.read = onRead;
    result.write = onWrite;
    result.ioctl = onIoctl;
    result.create = onCreate;
    result.truncate = onTruncate;
    return result;
}

// ---- mounting ----

namespace {

// Keeps what is printed to standard error meanwhile: the library and its helper program tell only
// there why they fail.
class CapturedErrors {
  public:
    CapturedErrors() : mUsual(dup(STDERR_FILENO)), mFile(memfd_create("errors", MFD_CLOEXEC)) {
        dup2(mFile, STDERR_FILENO);
    }
    ~CapturedErrors() {
        dup2(mUsual, STDERR_FILENO);
        close(mUsual);
        close(mFile);
    }
    CapturedErrors(const CapturedErrors&) = delete;
    CapturedErrors& operator=(const CapturedErrors&) = delete;

    std::string firstLine() const {
        char text[512];
        const ssize_t size = pread(mFile, text, sizeof(text), 0);
        const std::string all(text, size > 0 ? static_cast<size_t>(size) : 0);
        return all.empty() ? "no reason given" : all.substr(0, all.find('\n'));
    }

  private:
    const int mUsual;
    const int mFile;
};

}  // namespace

// libfuse says why it fails on standard error alone, so that is caught and becomes the reason.
FileSystem::FileSystem(Hardware& hardware, const std::filesystem::path& mountPoint, bool forAll)
    : mHardware(hardware) {
    const CapturedErrors errors;
    std::string options = "-ofsname=virtual_board,default_permissions";
    if (forAll) options += ",allow_other";
    char name[] = "virtual_board";
    char* words[] = {name, options.data(), nullptr};
    fuse_args arguments = FUSE_ARGS_INIT(2, words);
    static const fuse_operations kOperations = operations();
    mFuse = fuse_new(&arguments, &kOperations, sizeof(kOperations), &hardware);
    fuse_opt_free_args(&arguments);
    if (mFuse == nullptr) throw std::runtime_error(errors.firstLine());
    if (fuse_mount(mFuse, mountPoint.c_str()) != 0) {
        fuse_destroy(mFuse);
        throw std::runtime_error(errors.firstLine());
    }
    mLoop = std::thread([this] {
        fuse_loop_config* config = fuse_loop_cfg_create();
        fuse_loop_cfg_set_max_threads(config, kMaxThreads);
        fuse_loop_mt(mFuse, config);
        fuse_loop_cfg_destroy(config);
        mLoopEnded = true;
    });
}

FileSystem::~FileSystem() {
    mHardware.end();
    fuse_exit(mFuse);
    // Only a signal makes the loop look whether it is to end; again, if it looked just before. A
    // request of our own would do as well, but nobody could kill a process that waits for itself.
    // With time in between: a loop that is ending should not be disturbed by another one.
    struct sigaction wake = {};
    wake.sa_handler = [](int) {};
    sigaction(SIGUSR1, &wake, nullptr);
    for (int ms = 0; !mLoopEnded; ++ms) {
        if (ms % 200 == 0) pthread_kill(mLoop.native_handle(), SIGUSR1);
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    mLoop.join();
    fuse_unmount(mFuse);
    fuse_destroy(mFuse);
}

}  // namespace tarq::board
