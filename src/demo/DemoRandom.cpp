#include "demo/DemoRandom.h"

#include "tarvodlg/base/Numbers.h"

long DemoRandom::Between(long first, long last)
{
    using Number = std::mt19937_64::result_type;
    const Number count = static_cast<Number>(last - first) + 1;
    // The numbers above the last whole multiple would favour the low end.
    const Number limit = std::mt19937_64::max() - std::mt19937_64::max() % count;
    Number drawn = engine_();
    while (drawn >= limit) drawn = engine_();
    return first + static_cast<long>(drawn % count);
}

double DemoRandom::Amount(long first_euro, long last_euro)
{
    constexpr long long kSteps = 10'000;
    const long long step = Between(0, kSteps - 1);
    const long long range = (last_euro - first_euro) * 100LL;
    return FromCents(first_euro * 100LL + range * step / kSteps * step / kSteps + Between(0, 99));
}
