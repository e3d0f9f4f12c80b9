#pragma once

#include "sqlapi/SAConnection.h"
#include "tarvolumera/JournalEntry.h"

#include <filesystem>
#include <string>

/// Where the archives of one run are made.
struct BenchPlaces {
    std::filesystem::path folder; ///< a folder of its own, removed at the end of the run
    std::string postgres;         ///< address of a server on which databases may be created; empty = none
};

/// A fresh archive of the demo company: a folder, or a database of its own on the server. Removed with everything in
/// it.
class BenchArchive {
  public:
    /// @param name  different for every archive of a run
    BenchArchive(const BenchPlaces &places, SAEngine engine, const std::string &name);
    ~BenchArchive();
    BenchArchive(const BenchArchive &) = delete;
    BenchArchive &operator=(const BenchArchive &) = delete;

    SAEngine Engine() const { return engine_; }
    const std::string &Target() const { return target_; } ///< for SAConnection::Connect, or for the bare library

    /// Writes a journal of purchases with two rows each, three years in the order of their numbers, straight into the
    /// tables, and lets the server gather its statistics, once for the life of the archive.
    void FillJournal(long entries) const;

    /// Adds customers, suppliers and a schedule of six years, half of it the customers', in which the last months and
    /// one in fifty of the others are open; then as FillJournal.
    void FillSchedule(long instalments) const;

    /// Files received invoices of one year from 5,000 suppliers, one document each with its summary, half of them
    /// registered; the files hold so many bytes that are no invoice. Then as FillJournal.
    void FillInvoices(long invoices, long bytes) const;

  private:
    void Settle(SAConnection *connection, const char *table) const;

    SAEngine engine_;
    std::string server_, database_;
    std::filesystem::path folder_;
    std::string target_;
};

const char *EngineName(SAEngine engine);

/// A balanced purchase of 1,220.00 euro with one VAT line and four rows, ready to be stored.
PNOTA PurchaseEntry();
