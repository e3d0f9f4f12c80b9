#include "demo/DemoPayments.h"

#include "ledger/EntryEditing.h"
#include "tarvodlg/base/Numbers.h"
#include "tarvolumera/PSQLpno.h"
#include "tarvolumera/PaymentTerms.h"
#include "tarvolumera/Schedule.h"

#include <fmt/format.h>

#include <algorithm>
#include <numeric>
#include <stdexcept>

namespace {

using Position = DemoBooks::OpenInstalments::iterator;

constexpr std::size_t kAtOnce = 6;
/// Of so many counterparts drawn the one with most instalments due is settled: few are left overdue, but some are.
constexpr int kDraws = 5;
constexpr long kPaymentRemittance = 1; ///< however the customer likes: by bank, cheque, card
constexpr AccountKey kCash{175, 1, 1};

struct Settlement {
    long counterpart = 0;
    std::vector<Position> items;
};

long long SumOf(const std::vector<Position> &items)
{
    return std::accumulate(items.begin(), items.end(), 0LL,
                           [](long long sum, const Position &item) { return sum + item->second.cents; });
}

/// What is settled together: the oldest instalments, and the credit notes between them as far as they leave something
/// to pay. A fee with withholding goes alone, since its payment has a causale of its own.
std::vector<Position> DueItems(DemoBooks::OpenInstalments *open, long day)
{
    std::vector<Position> items, credits;
    for (Position item = open->begin(); item != open->end() && item->first <= day && items.size() < kAtOnce; ++item) {
        if (item->second.withholding_cents != 0) {
            if (items.empty()) return {item};
        } else {
            (item->second.cents > 0 ? items : credits).push_back(item);
        }
    }
    long long left = SumOf(items);
    for (const Position &credit : credits) {
        if (left + credit->second.cents <= 0) continue;
        left += credit->second.cents;
        items.push_back(credit);
    }
    return items;
}

Settlement ChooseSettlement(DemoBooks *books, long side, long day)
{
    std::vector<Settlement> possible;
    for (auto &[counterpart, open] : books->Open(side)) {
        std::vector<Position> items = DueItems(&open, day);
        if (!items.empty()) possible.push_back({counterpart, std::move(items)});
    }
    if (possible.empty()) return {};
    const Settlement *chosen = &possible.front();
    for (int drawn = 0; drawn < kDraws; ++drawn) {
        const Settlement &other = books->Random().Pick(possible);
        if (drawn == 0 || other.items.size() > chosen->items.size()) chosen = &other;
    }
    return *chosen;
}

long SupplierCausale(DemoBooks *books, const std::vector<Position> &items)
{
    const OpenInstalment &first = items.front()->second;
    if (first.withholding_cents != 0) return 54;
    const bool cash = first.payment_type == kPaymentImmediate && books->Balance(kCash) >= SumOf(items);
    return cash ? 52 : 51;
}

long CustomerCausale(DemoBooks *books, const std::vector<Position> &items)
{
    switch (items.front()->second.payment_type) {
    case kPaymentRiba:
        return 43;
    case kPaymentImmediate:
        return 42;
    case kPaymentRemittance:
        return books->Random().Pick(std::array<long, 3>{41, 46, 47});
    default:
        return 41;
    }
}

/// Sides of a row turned for what is negative.
void SetSignedAmount(PNOTA_RIGA *row, long long cents)
{
    if (cents < 0) row->row_tipo = row->IsDare() ? "A" : "D";
    row->row_importo = FromCents(cents < 0 ? -cents : cents);
}

void SetDocument(PNOTA_RIGA *row, const OpenInstalment &item)
{
    row->row_n_doc = item.document;
    row->row_d_doc = item.document_day;
}

/// A row of the counterpart for each instalment, so that its account shows what was settled. The first takes the place
/// of the causale's own row, the others follow the rows of the causale.
void TakeItems(PNOTA *entry, const std::vector<Position> &items)
{
    PNOTA_RIGA &own = entry->righe[0];
    auto free_row = std::ranges::find_if(entry->righe, [](const PNOTA_RIGA &row) { return !row.InUse(); });
    if (items.size() > 1) {
        for (PNOTA_RIGA &row : entry->righe) row.row_auto = 0; // they would follow the total of all
    }
    const PNOTA_RIGA model = own;
    for (std::size_t i = 1; i < items.size(); ++i, ++free_row) {
        *free_row = model;
        SetSignedAmount(&*free_row, items[i]->second.cents);
        SetDocument(&*free_row, items[i]->second);
    }
    SetSignedAmount(&own, items.front()->second.cents);
    SetDocument(&own, items.front()->second);
}

void MarkPaid(DemoBooks *books, long side, const OpenInstalment &item, long day)
{
    SCADENZE stored;
    if (!sqlsca.Search(books->Command(), static_cast<short>(side), item.number, &stored))
        throw std::logic_error(fmt::format("demo entry: instalment {} of side {} is gone", item.number, side));
    stored.sca_pagato = 1;
    stored.sca_data_pag = day;
    sqlsca.SqlTransaction(books->Command(), kUpdate, &stored);
}

} // namespace

bool BookSettlement(DemoBooks *books, long side, long day)
{
    const Settlement chosen = ChooseSettlement(books, side, day);
    if (chosen.items.empty()) return false;
    const OpenInstalment &first = chosen.items.front()->second;
    const long causale =
        side == kSupplier ? SupplierCausale(books, chosen.items) : CustomerCausale(books, chosen.items);
    PNOTA &entry = books->Begin(causale, day);
    books->TakeCounterpart(chosen.counterpart);
    EnterTerms(books->Command(), &entry, 0); // a payment makes no instalments
    if (chosen.items.size() == 1) {
        EnterDocumentNumber(&entry, first.document);
        entry.pno_data_doc = first.document_day;
    }
    EnterDocumentTotal(books->Command(), &entry, FromCents(SumOf(chosen.items)));
    TakeItems(&entry, chosen.items);
    if (first.withholding_cents != 0) entry.righe[1].row_importo = FromCents(first.withholding_cents);
    PNOTA_RIGA &money = entry.righe[first.withholding_cents != 0 ? 2 : 1];
    money.row_importo = 0;
    sqlpno.Squadratura(books->Command(), &entry);
    LeaveRowAmount(books->Command(), &entry, static_cast<std::size_t>(&money - entry.righe.data()));
    books->Store();
    for (const Position &item : chosen.items) {
        MarkPaid(books, side, item->second, day);
        books->Open(side)[chosen.counterpart].erase(item);
    }
    return true;
}
