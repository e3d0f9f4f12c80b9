#pragma once

#include "tarvodlg/print/ReportRunner.h"

/// What a band prints, before it has its place on a page: millimetres from its own upper left corner.
struct BandPicture {
    enum class MarkKind { Text, PageNumber, Line, Box, Image };
    struct Mark {
        MarkKind kind = MarkKind::Text;
        double x = 0, y = 0, w = 0, h = 0;
        ItemAlign align = ItemAlign::Left;
        TextStyle style;
        std::string text; ///< words, or file of the image
    };

    double height = 0;
    std::vector<Mark> marks;
    std::vector<double> cuts; ///< heights at which a page may end in its middle, ascending
    LayoutPlace place;        ///< of the band in the layout, for messages

    void Clear();
    /// Puts another picture at x and below everything so far; a page may end between the two.
    void Append(const BandPicture &other, double x);
};

/// Where pictures go: the pages, or the band that a sub-report stands in.
class BandTarget {
  public:
    virtual ~BandTarget() = default;
    /// @param keep  height that should find room on the same page, the picture's own included
    virtual void Put(const BandPicture &picture, double keep) = 0;
    /// The next picture begins a page, unless the page is still empty.
    virtual void StartPage() = 0;
};

/// Collects pictures one below the other.
class PictureStack : public BandTarget {
  public:
    void Put(const BandPicture &picture, double) override { stack.Append(picture, 0); }
    void StartPage() override {}

    BandPicture stack;
};
