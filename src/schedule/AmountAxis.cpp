#include "schedule/AmountAxis.h"

#include "tarvodlg/base/Numbers.h"

#include <algorithm>
#include <cmath>

namespace {

constexpr long long kEuro = 100, kMillion = 1'000'000 * kEuro, kThousandMillion = 1000 * kMillion;

/// An amount beyond it is no amount; below it nothing here overflows.
constexpr long long kLimit = 1'000'000'000'000'000'000;

/// The smallest of 1, 2, 5, 10, 20, 50 ... that is not below.
long long RoundStep(double wanted)
{
    for (long long power = 1;; power *= 10)
        for (const long long factor : {1, 2, 5})
            if (static_cast<double>(power * factor) >= wanted || power * factor >= kLimit) return power * factor;
}

long long DownTo(long long value, long long step)
{
    return value >= 0 ? value / step * step : -((-value + step - 1) / step * step);
}

/// Decimals that a step needs in a unit: 50 of 100 is 0,5.
int DecimalsOf(long long step, long long unit)
{
    if (step % unit == 0) return 0;
    return step % (unit / 10) == 0 ? 1 : 2;
}

} // namespace

AmountAxis AmountAxis::Of(long long lowest, long long highest, int steps)
{
    lowest = std::clamp(std::min(lowest, 0LL), -kLimit, 0LL);
    highest = std::clamp(std::max(highest, 0LL), 0LL, kLimit);
    if (lowest == highest) highest = 100 * kEuro;
    AmountAxis axis;
    double wanted = (static_cast<double>(highest) - static_cast<double>(lowest)) / std::max(1, steps);
    // Rounding the ends outwards may add a step to either; then the next larger one has to do.
    for (;;) {
        axis.step = RoundStep(wanted);
        axis.lowest = DownTo(lowest, axis.step);
        axis.highest = -DownTo(-highest, axis.step);
        const auto count = axis.highest / axis.step - axis.lowest / axis.step;
        if (count <= std::max(steps, lowest < 0 && highest > 0 ? 2 : 1) || axis.step >= kLimit) return axis;
        wanted = static_cast<double>(axis.step) * 1.5;
    }
}

std::vector<long long> AmountAxis::Marks() const
{
    std::vector<long long> marks;
    for (long long mark = lowest / step; mark <= highest / step; ++mark) marks.push_back(mark * step);
    return marks;
}

std::string AmountAxis::Label(long long cents) const
{
    const long long largest = std::max(highest, -lowest);
    const double value = static_cast<double>(cents);
    if (cents == 0) return "0";
    if (largest >= kThousandMillion)
        return FormatAmount(value / kThousandMillion, DecimalsOf(step, kThousandMillion)) + " mld";
    if (largest >= kMillion) return FormatAmount(value / kMillion, DecimalsOf(step, kMillion)) + " mln";
    return FormatAmount(value / kEuro, DecimalsOf(step, kEuro) == 0 ? 0 : 2);
}

double AmountAxis::ShareOf(long long cents) const
{
    return (static_cast<double>(cents) - static_cast<double>(lowest)) /
           (static_cast<double>(highest) - static_cast<double>(lowest));
}
