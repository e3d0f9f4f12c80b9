#include "tarvodlg/print/BandPicture.h"

void BandPicture::Clear()
{
    height = 0;
    marks.clear();
    cuts.clear();
}

void BandPicture::Append(const BandPicture &other, double x)
{
    const double top = height;
    if (top > 0) cuts.push_back(top);
    for (const double cut : other.cuts) cuts.push_back(top + cut);
    for (const Mark &mark : other.marks) {
        marks.push_back(mark);
        marks.back().x += x;
        marks.back().y += top;
    }
    if (place.line == 0) place = other.place;
    height += other.height;
}
