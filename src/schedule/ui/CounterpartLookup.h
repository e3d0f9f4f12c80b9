#pragma once

#include "tarvodlg/widgets/Field.h"

/// The lookup of a code field that means a customer or a supplier, whichever side the window shows at the moment.
class CounterpartLookup : public CodeLookup {
  public:
    /// @param side  0 customers, 1 suppliers; outlives the field
    explicit CounterpartLookup(const long &side);

    std::optional<std::string> Describe(const std::string &code) override;
    std::vector<LookupMatch> Match(const std::string &typed, std::size_t max) override;
    std::optional<std::string> Browse(CWnd *parent, const std::string &code_or_text) override;

  private:
    CodeLookup &Current() const;

    const long &side_;
    std::shared_ptr<CodeLookup> customers_, suppliers_;
};
