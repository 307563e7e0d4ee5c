// The shell service: runs one command line at a time for callers with uid 0 or 1000.
#pragma once

#include <pthread.h>

#include <vector>

#include <com/tarq/shell/BnShellService.h>

namespace com::tarq::shell {

class ShellService : public BnShellService {
  public:
    // Creates the service and registers it under its descriptor; a refusal is ignored.
    static void instantiate();

    ShellService();

    // Runs command with the system shell and appends to output, as one element, what it prints:
    // the first 1023 bytes, up to the first zero byte. What follows, standard error and the exit
    // status are lost. A text that ends within a UTF-8 character, as the cut may make it, comes
    // back empty. Anyone but root and system, as the kernel names the caller, is refused with the
    // transaction status -1; so is a command that cannot be started.
    //
    // May be called from any thread. There is no time limit: a command that does not end holds up
    // every later call. *result is set to 0 and means nothing.
    android::binder::Status executeCommand(const android::String16& command,
                                           std::vector<android::String16>* output,
                                           int32_t* result) override;

  protected:
    ~ShellService() override;

  private:
    // The caller holds mLock.
    android::binder::Status executeLocked(const android::String16& command,
                                          std::vector<android::String16>* output);

    pthread_mutex_t mLock;  // held from the permission check until the command has ended
};

}  // namespace com::tarq::shell
