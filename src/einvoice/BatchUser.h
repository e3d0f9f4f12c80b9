#pragma once

#include "einvoice/InvoiceBatch.h"
#include "tarvodlg/base/UserInterface.h"

#include <string>
#include <vector>

/// The absent user of a run over many documents, in use as long as it lives, for one document: says No where nothing
/// else was arranged beforehand, and keeps what he would have been asked and told.
class BatchUser : public UserInterface {
  public:
    explicit BatchUser(const BatchOptions &options);
    ~BatchUser() override;
    BatchUser(const BatchUser &) = delete;
    BatchUser &operator=(const BatchUser &) = delete;

    /// What was arranged, in the form that the registration asks for it. Valid as long as this is.
    RegistrationChoices Choices();

    /// Why the document stays, on one line: what is missing in so many words, else the reason given, else what was
    /// asked or told. @param given  of the registration, may be empty
    std::string Reason(const std::string &given) const;
    /// True when something was asked that nobody could answer.
    bool WasAsked() const { return !asked_.empty() || !missing_.empty(); }
    /// What was told, and the questions that were taken as answered with Yes; a line each.
    const std::vector<std::string> &Told() const { return told_; }

    int MessageBox(const std::string &text, unsigned flags) override;
    void Beep(int, int) override {}
    std::unique_ptr<ProgressView> OpenProgress(const std::string &) override { return nullptr; }
    std::vector<std::filesystem::path> PickFiles(const FilePicking &) override { return {}; }
    std::optional<std::filesystem::path> PickFolder(const std::string &) override { return {}; }
    std::optional<long> PickDate(const std::string &, long) override { return {}; }
    std::optional<long> PickYear(const std::string &, long) override { return {}; }
    long Today() override { return before_->Today(); }
    long SecondOfDay() override { return before_->SecondOfDay(); }
    std::string UserName() override { return before_->UserName(); }

  private:
    int Ask(const std::string &text, int answer);
    long ChooseCausale(long proposed);
    long ChooseVatCode(const fatturapa::DatiRiepilogoType &row);

    const BatchOptions &options_;
    UserInterface *before_;
    std::string asked_, missing_;
    std::vector<std::string> told_;
};

/// A text of a message box as one line of a list: without the question that ends it and the help to its answers.
std::string AsReason(std::string_view text);
