#pragma once

#include "sqlapi/engines/Engine.h"

#include <chrono>
#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>
#include <vector>

/// The idle sessions of all targets. Safe to use from any thread; a session taken out belongs to the taker alone.
class ConnectionPool {
  public:
    static constexpr std::size_t kIdlePerTarget = 8;
    static constexpr std::chrono::minutes kIdleTime{5}; ///< afterwards the server gets its session back

    static ConnectionPool &Instance();

    /// A session that is still good, or null.
    std::unique_ptr<EngineConnection> Take(const std::string &key);
    void Give(const std::string &key, std::unique_ptr<EngineConnection> session);
    void Clear();

  private:
    using Clock = std::chrono::steady_clock;
    struct Idle {
        std::unique_ptr<EngineConnection> session;
        Clock::time_point since;
    };
    using Sessions = std::vector<Idle>;

    Sessions TakeExpired(); ///< called with the lock held; the result is closed without it

    std::mutex mutex_;
    std::unordered_map<std::string, Sessions> idle_; ///< the most recently used session of a target last
};
