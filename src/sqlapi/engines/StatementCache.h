#pragma once

#include <list>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>

class EngineStatement;

/// The prepared statements of one session by text, the least recently used one dropped first. A text can be there more
/// than once: a recursion streams the same query on several levels.
class StatementCache {
  public:
    static constexpr std::size_t kCapacity = 64;

    /// A statement of this text that is not in use, or null.
    std::shared_ptr<EngineStatement> Find(std::string_view text);
    void Add(std::shared_ptr<EngineStatement> statement);
    void Clear();

  private:
    using Recent = std::list<std::shared_ptr<EngineStatement>>;

    void DropOldest();

    Recent recent_;                                                       ///< most recently used first
    std::unordered_multimap<std::string_view, Recent::iterator> by_text_; ///< keys are the texts of the statements
};
