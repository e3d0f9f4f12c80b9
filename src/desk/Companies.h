#pragma once

#include "tarvolumera/Company.h"

#include <vector>

/// A company that was opened at this station once.
struct KnownCompany {
    std::string archive; ///< absolute folder or file, or a PostgreSQL address without password
    std::string name;
    std::string opened;      ///< when it was last opened, "2026-06-01 09:30"
    bool is_missing = false; ///< the last attempt to open it failed
};

/// The companies known at this station, the one opened last first. They are kept in a file of the user's configuration
/// folder, which is read again before each change, since two desks may be open.
class Companies {
  public:
    explicit Companies(std::filesystem::path file = UserFile());

    /// ditte.json in the user's configuration folder.
    static std::filesystem::path UserFile();

    const std::vector<KnownCompany> &List() const { return list_; }

    /// Puts the company first, under its name, as just opened. Passwords in the address are dropped.
    /// @throws FileError
    void Remember(const std::string &archive, const std::string &name, const std::string &moment);
    /// Notes that the company could not be opened; it keeps its place. One that is not known stays unknown.
    void MarkMissing(const std::string &archive);
    void Forget(const std::string &archive);

    /// What is wrong with the file, in Italian; empty when nothing is. A damaged file is set aside under another name
    /// before a new one is written, never overwritten.
    const std::string &Fault() const { return fault_; }

  private:
    void Read();
    void Write() const;
    void SetDamagedFileAside() const;

    std::filesystem::path file_;
    std::vector<KnownCompany> list_;
    std::string fault_;
    bool is_damaged_ = false;
};

/// Whether the archive's file is there; a PostgreSQL one is taken to be, unless the last attempt failed: asking a
/// server that does not answer takes longer than anybody waits for a list.
bool IsReachable(const KnownCompany &company);

/// The company that is current, kept so that it can be made current again when opening another one failed half way.
class CurrentCompany {
  public:
    void Restore() const;

  private:
    DITTE company_ = lumera_db_impo;
    FLAG settings_ = lumera_db_flag;
    long type_ = lumera_db_type;
    std::string target_ = lumera_db_target;
    std::filesystem::path folder_ = lumera_db_folder;
};

/// Opens the archive as the current company. When it fails, the company that was open before stays.
/// @throws SAException, as OpenCompany
void OpenOrKeep(const std::string &archive);
