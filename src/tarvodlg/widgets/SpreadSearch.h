#pragma once

#include <QString>
#include <string>
#include <string_view>

/// Looks for a text in many others, whatever case and accents: "perche" stands in "PERCHÉ".
class SpreadSearch {
  public:
    explicit SpreadSearch(const QString &wanted);

    /// 0 when the text begins with the wanted one, npos when that is not in it.
    std::size_t PlaceIn(std::string_view text) { return Fold(text).find(wanted_); }
    bool IsEmpty() const { return wanted_.empty(); }

  private:
    const std::string &Fold(std::string_view text);

    std::string folded_; ///< room for the text at hand, so that a million rows cost no allocation
    std::string wanted_;
};
