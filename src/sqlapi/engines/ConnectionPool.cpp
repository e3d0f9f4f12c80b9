#include "sqlapi/engines/ConnectionPool.h"

#include <algorithm>
#include <iterator>

ConnectionPool &ConnectionPool::Instance()
{
    static ConnectionPool pool;
    return pool;
}

// Closing a session may take long (SQLite moves its log into the file), so no session is ever closed under the lock:
// what has to go leaves the map first and dies when the local that holds it does.
std::unique_ptr<EngineConnection> ConnectionPool::Take(const std::string &key)
{
    for (;;) {
        Sessions expired;
        std::unique_ptr<EngineConnection> session;
        {
            const std::lock_guard lock(mutex_);
            expired = TakeExpired();
            const auto found = idle_.find(key);
            if (found == idle_.end() || found->second.empty()) return nullptr;
            session = std::move(found->second.back().session);
            found->second.pop_back();
        }
        if (session->IsUsable()) return session;
    }
}

void ConnectionPool::Give(const std::string &key, std::unique_ptr<EngineConnection> session)
{
    Sessions leaving;
    const std::lock_guard lock(mutex_);
    Sessions &sessions = idle_[key];
    sessions.push_back({std::move(session), Clock::now()});
    if (sessions.size() > kIdlePerTarget) {
        leaving.push_back(std::move(sessions.front()));
        sessions.erase(sessions.begin());
    }
}

void ConnectionPool::Clear()
{
    std::unordered_map<std::string, Sessions> leaving;
    const std::lock_guard lock(mutex_);
    leaving.swap(idle_);
}

ConnectionPool::Sessions ConnectionPool::TakeExpired()
{
    Sessions expired;
    const Clock::time_point oldest = Clock::now() - kIdleTime;
    for (auto &[key, sessions] : idle_) {
        const auto kept =
            std::find_if(sessions.begin(), sessions.end(), [oldest](const Idle &idle) { return idle.since >= oldest; });
        std::move(sessions.begin(), kept, std::back_inserter(expired));
        sessions.erase(sessions.begin(), kept);
    }
    return expired;
}
