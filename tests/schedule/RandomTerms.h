#pragma once

#include "tarvodlg/base/Dates.h"
#include "tarvolumera/InstalmentRules.h"

#include <fmt/format.h>
#include <initializer_list>
#include <random>

/// Terms as a test writes them down: from the invoice date, every thirty days.
struct TermsSpec {
    const char *start = "DATA FATTURA";
    long initial = 0, interval = 30, count = 1;
    long fixed_1 = 0, fixed_2 = 0;
    std::vector<const char *> excluded{};
    bool is_equal = false, is_vat_separate = false;
};

inline PAGAMENTI Terms(const TermsSpec &spec)
{
    PAGAMENTI terms;
    terms.pag_ini = spec.start;
    terms.pag_gg_ini = spec.initial;
    terms.pag_gg_int = spec.interval;
    terms.pag_num_rate = spec.count;
    terms.pag_gg_fisso_1 = spec.fixed_1;
    terms.pag_gg_fisso_2 = spec.fixed_2;
    BoundedText *months[] = {&terms.pag_mese_esc_1, &terms.pag_mese_esc_2, &terms.pag_mese_esc_3};
    for (std::size_t i = 0; i < spec.excluded.size(); ++i) months[i]->Assign(spec.excluded[i]);
    terms.pag_rate_uguali = spec.is_equal;
    terms.pag_iva_separata = spec.is_vat_separate;
    return terms;
}

/// Terms by chance, the same ones in every run: the seed is fixed, and told with what fails.
class RandomTerms {
  public:
    explicit RandomTerms(unsigned seed = 20260331) : seed_(seed), random_(seed) {}

    /// Both bounds included; the same on every library, which std::uniform_int_distribution is not.
    long Between(long lowest, long highest)
    {
        const auto width = static_cast<unsigned long>(highest - lowest) + 1;
        return lowest + static_cast<long>(random_() % width);
    }
    long OneOf(std::initializer_list<long> values) { return values.begin()[Between(0, std::ssize(values) - 1)]; }
    long Day() { return Between(DateToJulian(1, 1, 2024), DateToJulian(31, 12, 2032)); }

    /// As the editor of the terms lets them pass, but for excluded months that are never left.
    PAGAMENTI Next()
    {
        ++drawn_;
        TermsSpec spec;
        spec.start = Between(0, 2) == 0 ? "DATA DIVERSA" : Between(0, 1) == 0 ? "FINE MESE" : "DATA FATTURA";
        spec.initial = OneOf({0, 0, 10, 30, 59, 60, 90, Between(0, 400)});
        spec.interval = OneOf({0, 1, 7, 15, 28, 29, 30, 30, 30, 31, 60, 90, 120, 180, 365, Between(0, 999)});
        spec.count = OneOf({1, 1, 2, 2, 3, 3, 4, 6, 12, Between(1, 59), 60});
        spec.fixed_1 = OneOf({0, 0, 1, 2, 10, 15, 28, 29, 30, 31, Between(0, 31)});
        spec.fixed_2 = OneOf({0, 0, 0, 1, 15, 31, Between(0, 31)});
        for (long months = OneOf({0, 0, 1, 2, 3}); months > 0; --months) spec.excluded.push_back(Month());
        spec.is_equal = Between(0, 2) == 0;
        spec.is_vat_separate = Between(0, 2) == 0;
        return Terms(spec);
    }

    /// Figures that no editor lets pass, mixed with good ones.
    PAGAMENTI NextHostile()
    {
        PAGAMENTI terms = Next();
        const long worst = 2'147'483'647;
        for (long *figure : {&terms.pag_gg_ini, &terms.pag_gg_int, &terms.pag_num_rate, &terms.pag_gg_fisso_1,
                             &terms.pag_gg_fisso_2, &terms.pag_rate_uguali, &terms.pag_iva_separata})
            if (Between(0, 2) == 0)
                *figure = OneOf({-worst - 1, worst, -1, -30, 32, 61, 365, 366, 3653, Between(-worst, worst)});
        if (Between(0, 5) == 0) terms.pag_ini = "";
        return terms;
    }

    std::string Describe(const PAGAMENTI &t) const
    {
        return fmt::format("seed {}, terms no. {}: {} +{} every {} x {}, days {} {}, without '{}' '{}' '{}', equal {}, "
                           "separate VAT {}",
                           seed_, drawn_, t.pag_ini.str(), t.pag_gg_ini, t.pag_gg_int, t.pag_num_rate, t.pag_gg_fisso_1,
                           t.pag_gg_fisso_2, t.pag_mese_esc_1.str(), t.pag_mese_esc_2.str(), t.pag_mese_esc_3.str(),
                           t.pag_rate_uguali, t.pag_iva_separata);
    }

  private:
    const char *Month()
    {
        constexpr const char *kMonths[] = {"GENNAIO", "FEBBRAIO", "MARZO",     "APRILE",  "MAGGIO",   "GIUGNO",
                                           "LUGLIO",  "AGOSTO",   "SETTEMBRE", "OTTOBRE", "NOVEMBRE", "DICEMBRE"};
        return kMonths[Between(0, 11)];
    }

    unsigned seed_;
    std::mt19937 random_;
    long drawn_ = 0;
};
