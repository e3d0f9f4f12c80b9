#pragma once

#include "tarvodlg/base/UserInterface.h"

/// The progress window of a long run, titled "Attendere..." unless told otherwise. Has no cancel button: what must be
/// whole is not stopped half way. Closes when it goes out of scope.
class CTarvoProgressDlg {
  public:
    explicit CTarvoProgressDlg(const std::string &title = "Attendere...");
    void SetStatus(const std::string &text);
    /// The position starts at `first`.
    void SetRange(long first, long last);
    void StepIt();
    void SetPos(long position);
    void Close();

  private:
    std::unique_ptr<ProgressView> view_;
    long position_ = 0;
};
