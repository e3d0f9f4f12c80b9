#pragma once

#include "tests/support/TestArchive.h"

#include <nlohmann/json.hpp>

#include <string>
#include <vector>

/// What a command printed and how it ended.
struct CommandRun {
    int code = -1;
    std::string out, err;

    /// Standard output as the one JSON document it must be; anything else fails the test.
    nlohmann::json Json() const;
};

/// Runs a command inside the test program. A first word "--archivio" or none is up to the caller.
CommandRun RunWords(const std::vector<std::string> &words);

/// A fresh demo company without entries, worked on by commands.
class CommandTest : public ArchiveTest {
  protected:
    void SetUp() override;

    /// Runs a command on the archive of the test.
    CommandRun Lumera(std::vector<std::string> words) const;
    /// Stores an entry given as JSON. @param more  further options
    CommandRun Store(const std::string &json, const std::vector<std::string> &more = {}) const;
    std::filesystem::path Written(const std::string &name, const std::string &bytes) const;
    std::string Count(const std::string &table) { return Value("SELECT COUNT(*) FROM admin." + table); }

    /// Gives up the sessions of this process, so that it can fork: an engine's session must not be shared with a child.
    void Disconnect();
    void Reconnect();
};

/// A purchase of supplier 1 over 122.00 as `pnota registra` takes it.
std::string PurchaseJson(const std::string &number);
