// The processes of a soak, seen from the one that starts them.
#pragma once

#include <functional>
#include <map>

#include "bench/soak/soak.h"

namespace soak {

// Roles are clients by their numbers, and behind them:
constexpr int kRogue = kClients;
constexpr int kKeys = kClients + 1;
constexpr int kDisturber = kClients + 2;
constexpr int kDriver = kClients + 3;
constexpr int kWitness = kClients + 4;

// Ends this process with 2; errno tells why.
[[noreturn]] void giveUp(const char* what);

class Processes {
  public:
    // Starts board and daemon, which writes its log there.
    Processes(const std::string& directory, const std::string& log);
    ~Processes();

    // Those of a round, each with what it does at random from the seed on. A client that was killed
    // is followed by another one.
    void startRoles(uint64_t seed);
    void startRole(int role, int life, const std::function<int(Random)>& body);
    // Kills a client or stops one, now and then; waits for a tick.
    void harass(Random& random);
    void tick();
    void resume(int client);
    // Waits for what must be soon. Else, with a finding for each client that waits for an answer,
    // kills all and returns false.
    bool await(const char* what, const std::function<bool()>& condition);
    size_t count() const { return mRoles.size(); }

    pid_t board, daemon;
    int kills = 0, stops = 0;  // of this round

  private:
    struct Client {
        int life = 0;
        int64_t stoppedUntil = 0;  // 0: it runs
        bool isKilled = false;
    };

    void startClient(int client);
    // Adds to what excuses calls that take long.
    void excuse(int64_t ms);
    void reap(pid_t process, int status);
    void killAll();
    void end();

    std::map<pid_t, int> mRoles;
    Client mClients[kClients];
    uint64_t mSeed = 0;
    int64_t mLastTick = nowMs();
    Starvation mStarvation[2];
};

}  // namespace soak
