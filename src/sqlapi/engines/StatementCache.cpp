#include "sqlapi/engines/StatementCache.h"

#include "sqlapi/engines/Engine.h"

std::shared_ptr<EngineStatement> StatementCache::Find(std::string_view text)
{
    const auto [first, last] = by_text_.equal_range(text);
    for (auto found = first; found != last; ++found) {
        if ((*found->second)->InUse()) continue;
        recent_.splice(recent_.begin(), recent_, found->second);
        return *found->second;
    }
    return nullptr;
}

void StatementCache::Add(std::shared_ptr<EngineStatement> statement)
{
    if (recent_.size() >= kCapacity) DropOldest();
    recent_.push_front(std::move(statement));
    by_text_.emplace(recent_.front()->Sql(), recent_.begin());
}

void StatementCache::Clear()
{
    by_text_.clear();
    recent_.clear();
}

// A command may still hold the dropped statement; it lives on until that command lets it go.
void StatementCache::DropOldest()
{
    const auto oldest = std::prev(recent_.end());
    const auto [first, last] = by_text_.equal_range((*oldest)->Sql());
    for (auto found = first; found != last; ++found) {
        if (found->second != oldest) continue;
        by_text_.erase(found);
        break;
    }
    recent_.pop_back();
}
