#include "einvoice/InvoiceComparison.h"

#include "einvoice/InvoiceRounding.h"
#include "tarvodlg/base/Dates.h"
#include "tarvodlg/base/Numbers.h"
#include "tarvodlg/base/Text.h"
#include "tarvolumera/VatCodes.h"

#include <algorithm>
#include <fmt/format.h>

namespace {

/// What document and entry have at one rate and nature, in cents with the signs of the books. Lines that the user
/// merged or split meet here again.
struct Group {
    double rate = 0;
    std::string nature; ///< family: "N3"; empty = taxable
    long long taxable = 0, tax = 0;
    long long booked_taxable = 0, booked_tax = 0;
};

struct Key {
    double rate = 0;
    std::string nature;
};

Group *GroupOf(std::vector<Group> *groups, const Key &key)
{
    for (Group &group : *groups)
        if (TestIfZero(group.rate - key.rate) && group.nature == key.nature) return &group;
    groups->push_back({.rate = key.rate, .nature = key.nature});
    return &groups->back();
}

std::string Family(std::string_view nature)
{
    return std::string(nature.substr(0, 2));
}

bool IsReverseCharge(long kind)
{
    return kind == kVatReverseCharge || kind == kVatReverseChargeOwn;
}

/// Operations outside the field of VAT are not subject to it: two kinds in the books, one nature in the documents.
std::string FamilyOfKind(long kind)
{
    if (IsReverseCharge(kind)) return "N6";
    return std::string(fatturapa::IvaTipToNatura(static_cast<short>(kind == kVatOutsideField ? kVatNotSubject : kind)));
}

/// Tax that the buyer adds to a document without any is not in the document.
bool IsIntegrated(const PNOTA &entry, const PNOTA_IVA &line, bool without_tax)
{
    return IsReverseCharge(line.tip) || (without_tax && entry.pno_reg == kEuPurchases);
}

std::vector<Group> GroupsOf(const fatturapa::FatturaElettronicaBody &body, const PNOTA &entry)
{
    const int sign = SignOf(body);
    const bool without_tax = TestIfZero(fatturapa::SumOfSummary(body).imposta);
    const bool is_one_group = without_tax && entry.pno_reg == kEuPurchases;
    std::vector<Group> groups;
    for (const auto &row : body.DatiBeniServizi.DatiRiepilogo) {
        Group *group = GroupOf(&groups, is_one_group ? Key{0, "N6"} : Key{row.AliquotaIVA, Family(row.Natura)});
        group->taxable += sign * ToCents(Round(row.ImponibileImporto, 2));
        group->tax += sign * ToCents(Round(row.Imposta, 2));
    }
    for (const PNOTA_IVA &line : entry.iva) {
        if (line.iva == 0 && TestIfZero(line.impo) && TestIfZero(line.imposta)) continue;
        const bool is_integrated = IsIntegrated(entry, line, without_tax);
        Group *group = GroupOf(&groups, is_integrated ? Key{0, "N6"} : Key{line.aliq, FamilyOfKind(line.tip)});
        group->booked_taxable += ToCents(line.impo);
        if (!is_integrated) group->booked_tax += ToCents(line.imposta);
    }
    return groups;
}

/// Stamp duty charged on stands beside the summary in a document and on a line of its own in the entry.
void AllowForStampDuty(const fatturapa::FatturaElettronicaBody &body, std::vector<Group> *groups)
{
    const TotalReading reading = ReadTotal(body);
    if (!reading.is_stamp_duty) return;
    const long long stamp = ToCents(SignOf(body) * reading.rounding);
    for (Group &group : *groups)
        if (group.nature == "N1" && group.booked_taxable - group.taxable == stamp) group.taxable = group.booked_taxable;
}

std::string Name(const Group &group)
{
    const std::string rate = TestIfZero(group.rate - Round(group.rate, 0)) ? fmt::format("{:.0f}%", group.rate)
                                                                           : FormatAmount(group.rate) + "%";
    if (group.nature.empty()) return "IVA " + rate;
    const std::string text(fatturapa::NaturaText(group.nature));
    return TestIfZero(group.rate) ? text : "IVA " + rate + " " + text;
}

void CompareFigures(const fatturapa::FatturaElettronicaBody &body, const PNOTA &entry,
                    std::vector<std::string> *differences)
{
    std::vector<Group> groups = GroupsOf(body, entry);
    AllowForStampDuty(body, &groups);
    const auto compare = [&](const std::string &what, long long booked, long long wanted) {
        if (booked == wanted) return;
        differences->push_back(fmt::format("{} {}, in fattura {}.", what, FormatAmount(FromCents(booked)),
                                           FormatAmount(FromCents(wanted))));
    };
    for (const Group &group : groups) {
        compare(Name(group) + ": imponibile registrato", group.booked_taxable, group.taxable);
        compare(Name(group) + ": imposta registrata", group.booked_tax, group.tax);
    }
    const double owed = fatturapa::TotaleDocumento(body) + ReadTotal(body).left_out;
    compare("Totale registrato", ToCents(entry.pno_tot_doc), ToCents(SignOf(body) * owed));
}

long long CentsOf(const PNOTA &entry, bool (PNOTA_RIGA::*side)() const)
{
    long long cents = 0;
    for (const PNOTA_RIGA &row : entry.righe)
        if (row.InUse() && (row.*side)()) cents += ToCents(row.row_importo);
    return cents;
}

} // namespace

std::vector<std::string> CompareWithInvoice(const fatturapa::FatturaElettronicaBody &body, const PNOTA &entry)
{
    std::vector<std::string> differences;
    const auto &document = body.DatiGenerali.DatiGeneraliDocumento;
    const Text<20> number(Trimmed(document.Numero)); // longer ones are cut where the journal cuts them
    if (Trimmed(entry.pno_doc) != Trimmed(number))
        differences.push_back(
            fmt::format("Numero registrato \"{}\", in fattura \"{}\".", Trimmed(entry.pno_doc), Trimmed(number)));
    if (entry.pno_data_doc != document.Data)
        differences.push_back(fmt::format("Data del documento registrata {}, in fattura {}.",
                                          FormatDate(entry.pno_data_doc), FormatDate(document.Data)));
    CompareFigures(body, entry, &differences);
    const long long dare = CentsOf(entry, &PNOTA_RIGA::IsDare), avere = CentsOf(entry, &PNOTA_RIGA::IsAvere);
    if (dare != avere)
        differences.push_back(fmt::format("Il movimento non quadra: Dare {}, Avere {}.", FormatAmount(FromCents(dare)),
                                          FormatAmount(FromCents(avere))));
    return differences;
}
