#pragma once

#include "tarvodlg/base/Dates.h"
#include "tests/support/TestArchive.h"

#include <fmt/format.h>

#include <random>
#include <vector>

/// An instalment as the tests know it, in cents.
struct KnownInstalment {
    long side = 0, num = 0, code = 1, due_day = 0;
    long long cents = 0;
    bool is_paid = false, is_parked = false;
    long paid_day = 0;

    bool IsOpen() const { return !is_paid || is_parked; }
};

/// Puts instalments into the archive and remembers them, so that sums can be worked out without it.
class KnownInstalments {
  public:
    /// @param run  executes a statement
    explicit KnownInstalments(std::function<void(const std::string &)> run) : run_(std::move(run)) {}

    const std::vector<KnownInstalment> &All() const { return all_; }

    void Add(KnownInstalment one)
    {
        one.num = static_cast<long>(all_.size()) + 1;
        all_.push_back(one);
        Append(one);
        Flush();
    }

    /// Due dates around the middle of 2026 and amounts with every kind of cents; some credit notes, some paid, some of
    /// them held in a slip. @param codes  counterparts 1 to codes on both sides
    void AddRandom(long count, unsigned seed, long codes)
    {
        std::mt19937 random(seed);
        const auto up_to = [&random](long most) { return std::uniform_int_distribution<long>(0, most)(random); };
        const long middle = DateToJulian(1, 7, 2026);
        for (long i = 0; i < count; ++i) {
            KnownInstalment one;
            one.side = up_to(1);
            one.num = static_cast<long>(all_.size()) + 1;
            one.code = 1 + up_to(codes - 1);
            one.due_day = middle - 200 + up_to(400);
            one.cents = up_to(9) == 0 ? -1 - up_to(99'999) : 1 + up_to(up_to(3) == 0 ? 999'999'999 : 99'999);
            one.is_paid = up_to(2) == 0;
            one.is_parked = up_to(4) == 0;
            if (one.is_paid && up_to(5) > 0) one.paid_day = one.due_day - 20 + up_to(60);
            all_.push_back(one);
            Append(one);
        }
        Flush();
    }

  private:
    void Append(const KnownInstalment &one)
    {
        values_ += fmt::format("{}({}, {}, {}, {}, '{}', {}.{:02}, {}, {}, {}, 'F{}', '{}', {}, 3)",
                               values_.empty() ? "" : ", ", one.side, one.num, Year(one.due_day), one.code,
                               FormatIsoDate(one.due_day),
                               (one.cents < 0 ? "-" : "") + std::to_string(std::abs(one.cents) / 100),
                               std::abs(one.cents) % 100, one.is_paid ? 1 : 0, one.is_parked ? 7 : 0,
                               one.paid_day == 0 ? "NULL" : "'" + FormatIsoDate(one.paid_day) + "'", one.num,
                               FormatIsoDate(one.due_day - 30), one.num % 3 + 1);
    }
    void Flush()
    {
        run_("INSERT INTO admin.scadenze (sca_relaz, sca_num, sca_anno, sca_cli_for, sca_data, sca_importo, sca_pagato,"
             " sca_parked, sca_data_pag, sca_fattura, sca_data_fattura, sca_rata, sca_rate) VALUES " +
             values_);
        values_.clear();
    }

    std::function<void(const std::string &)> run_;
    std::vector<KnownInstalment> all_;
    std::string values_;
};
