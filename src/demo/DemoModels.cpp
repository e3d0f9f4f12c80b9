#include "demo/DemoModels.h"

// The counterparts are those of schema/demo, the causali, VAT codes and accounts those of schema/base.

namespace {

using Codes = std::vector<long>;

DemoModel Invoice(long share, long causale, Codes counterparts, Codes vat_codes, long euro_min, long euro_max,
                  AccountKey account = {}, long credit_causale = 0)
{
    DemoModel model;
    model.share = share;
    model.causale = causale;
    model.counterparts = std::move(counterparts);
    model.vat_codes = std::move(vat_codes);
    model.euro_min = euro_min;
    model.euro_max = euro_max;
    model.account = account;
    model.credit_causale = credit_causale;
    return model;
}

DemoModel Other(DemoJob job, long share, long causale = 0, int habit = kAnyDay)
{
    DemoModel model;
    model.job = job;
    model.share = share;
    model.causale = causale;
    model.habit = habit;
    return model;
}

std::vector<DemoModel> Purchases()
{
    return {
        Invoice(97, 21, {1, 2, 3, 24}, {22, 22, 22, 22, 22, 22, 22, 10}, 60, 9500, {}, 28),
        Invoice(12, 21, {4}, {10, 10, 4}, 30, 400, {300, 1, 4}, 28),
        Invoice(8, 21, {13}, {355}, 200, 1800, {300, 1, 4}), // packaging for export, against a declaration of intent
        Invoice(30, 22, {10}, {22}, 20, 450, {310, 2, 1}),
        Invoice(8, 22, {8}, {400, 400, 22}, 150, 1200),
        Invoice(8, 22, {16}, {400}, 180, 2200, {310, 4, 5}),
        Invoice(8, 22, {17}, {22, 22, 400}, 900, 1800, {320, 1, 1}),
        Invoice(10, 22, {15}, {61}, 280, 900, {320, 1, 4}), // cars on lease
        Invoice(10, 22, {12}, {72}, 25, 160, {310, 2, 4}),
        Invoice(15, 24, {5}, {22}, 120, 2400, {310, 1, 1}),
        Invoice(8, 24, {7}, {10}, 40, 500, {310, 1, 2}),
        Invoice(15, 25, {6}, {62, 62, 22}, 30, 350),
        Invoice(12, 23, {1, 2, 3}, {91}, 300, 7500),
        Invoice(2, 23, {15}, {94}, 2500, 9000, {110, 4, 3}), // a car bought at the end of its lease
        Invoice(8, 27, {14}, {22}, 250, 1500),
        Invoice(6, 27, {23}, {221}, 200, 1400, {310, 3, 3}),
        Invoice(15, 31, {9}, {81}, 180, 1900, {310, 4, 6}),
        Invoice(6, 33, {22}, {89}, 200, 1600),
        Invoice(16, 35, {19, 20, 21}, {85, 85, 85, 85, 86}, 400, 8000),
        Invoice(6, 36, {20}, {89}, 150, 1500),
    };
}

std::vector<DemoModel> Sales()
{
    const Codes companies = {1,  2,  3,  4,  5,  6,  7,  8,  9,  10, 11, 12, 13, 14, 15,
                             16, 17, 18, 19, 20, 22, 23, 24, 25, 27, 28, 29, 30, 31, 32};
    return {
        Invoice(158, 1, companies, {22, 22, 22, 22, 22, 22, 22, 22, 10, 4}, 80, 8500, {}, 3),
        Invoice(8, 1, {33, 34, 35}, {22}, 20, 600),
        Invoice(6, 1, {21}, {350}, 900, 9000), // the shipyard buys against its declaration of intent
        Invoice(45, 2, {1, 2, 7, 10, 12, 17, 23, 27}, {22}, 90, 3200),
        Invoice(8, 2, {4, 18, 30}, {400}, 120, 1500),
        Invoice(6, 2, {7, 18}, {670}, 400, 4500),
        Invoice(10, 7, {36}, {22}, 150, 2800), // the public body
        Invoice(8, 5, {23, 28}, {22}, 250, 3500),
        Invoice(12, 8, {39}, {310}, 600, 9000),
        Invoice(6, 8, {40}, {330}, 300, 3500),
        Invoice(25, 9, {37, 38}, {320}, 600, 9500, {}, 11),
        Invoice(8, 10, {37, 38}, {210}, 200, 2400),
    };
}

std::vector<DemoModel> Others()
{
    DemoModel receipts = Other(DemoJob::Receipts, 80, 15);
    receipts.vat_codes = {22, 10, 4};
    receipts.euro_min = 90;
    receipts.euro_max = 2600;
    return {
        Other(DemoJob::CreditNote, 17, 28),
        Other(DemoJob::CreditNote, 18, 3),
        Other(DemoJob::CreditNote, 5, 11),
        receipts,
        Other(DemoJob::Payment, 110),
        Other(DemoJob::Collection, 110),
        Other(DemoJob::EffectsCredited, 20, 44),
        Other(DemoJob::CashDeposit, 8, 62),
        Other(DemoJob::CashWithdrawal, 1, 63),
        Other(DemoJob::BankTransfer, 2, 64),
        Other(DemoJob::BankCharges, 9, 69),
        Other(DemoJob::BankInterest, 1, 70, kMonthEnd),
        Other(DemoJob::Loan, 2, 71, 5),
        Other(DemoJob::Stamps, 2, 61),
        Other(DemoJob::Wages, 3, 65, 27),
        Other(DemoJob::Contributions, 3, 66, kMonthEnd),
        Other(DemoJob::WagePayment, 3, 67, 10),
        Other(DemoJob::TaxForm, 3, 68, 16),
        Other(DemoJob::VatSettlement, 2, 81, kQuarterEnd),
        Other(DemoJob::VatPayment, 1, 82, 16),
    };
}

} // namespace

const std::vector<DemoModel> &DemoModels()
{
    static const std::vector<DemoModel> models = [] {
        std::vector<DemoModel> all;
        for (const auto &group : {Purchases(), Sales(), Others()}) all.insert(all.end(), group.begin(), group.end());
        return all;
    }();
    return models;
}
