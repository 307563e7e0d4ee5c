// Message loops. No thread of a program on a host prepares one.
#pragma once

#include <utils/RefBase.h>

namespace android {

// What a handler is told.
struct Message {
    Message() = default;
    Message(int w) : what(w) {}  // NOLINT: implicit by contract

    int what = 0;  // the type, whose meaning is the handler's affair
};

// Receives the messages that were posted for it. On a host nothing is ever posted.
class MessageHandler : public virtual RefBase {
  public:
    // Runs on the thread of the looper, with no lock held.
    virtual void handleMessage(const Message& message) = 0;

  protected:
    ~MessageHandler() override = default;
};

// The loop of one thread, which hands messages to their handlers. Here there is only the question
// whether there is one.
class Looper : public RefBase {
  public:
    // The loop of the calling thread; null where none was prepared.
    static sp<Looper> getForThread() { return nullptr; }

  protected:
    ~Looper() override = default;
};

}  // namespace android
