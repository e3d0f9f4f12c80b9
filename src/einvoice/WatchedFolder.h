#pragma once

#include "einvoice/InvoiceProvider.h"

#include <chrono>
#include <filesystem>

/// A folder into which a mail or transfer program, or a colleague, puts what was received: a mounted share, a drop
/// folder. Its sub-folders count too. Nothing in it is ever changed, moved or deleted.
///
/// Links that lead out of it are refused: who may write into the folder could otherwise have any file of this machine
/// filed.
class WatchedFolder : public InvoiceProvider {
  public:
    using Clock = std::function<std::filesystem::file_time_type()>;

    /// A file that was written less than this ago may not be finished.
    static constexpr std::chrono::seconds kQuiet{5};
    /// One that is not whole after so long was cut off on its way.
    static constexpr std::chrono::hours kSettled{1};

    /// @param now  the clock that the files' times are compared with; the file system's when empty
    explicit WatchedFolder(std::filesystem::path folder, Clock now = {});

    std::vector<ProvidedFile> ListNew(const KnownFile &is_known) override;
    std::string Read(const ProvidedFile &file) override;
    bool IsUnchanged(const ProvidedFile &file) override;
    void Acknowledge(const ProvidedFile &) override {} // what was taken up stays for whoever else reads it

  private:
    void List(const std::filesystem::path &folder, int depth, const KnownFile &is_known,
              std::vector<ProvidedFile> *files);
    void Look(const std::filesystem::directory_entry &item, const KnownFile &is_known,
              std::vector<ProvidedFile> *files);
    void LookAtLink(const std::filesystem::path &link, const KnownFile &is_known, std::vector<ProvidedFile> *files);
    std::string NameOf(const std::filesystem::path &path) const;

    std::filesystem::path folder_;
    Clock now_;
};

/// The company's folder of received invoices. @throws FileError when none is set
std::filesystem::path ReceivedInvoicesFolder();
