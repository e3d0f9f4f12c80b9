#include "einvoice/BatchUser.h"

#include "tarvodlg/base/Numbers.h"
#include "tarvolumera/fatturapa/FatturaCodes.h"

#include <fmt/format.h>

std::string AsReason(std::string_view text)
{
    constexpr std::string_view kParagraph = "\n\n";
    std::string reason;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find(kParagraph), text.size());
        const std::string part = OnOneLine(Trimmed(text.substr(0, end)));
        text.remove_prefix(std::min(end + kParagraph.size(), text.size()));
        if (part.starts_with("Vuoi ") || part.starts_with("Rispondi ")) break;
        if (part.empty() || part == "Attenzione!") continue;
        reason += (reason.empty() ? "" : " ") + part;
    }
    return reason;
}

BatchUser::BatchUser(const BatchOptions &options) : options_(options), before_(SetUserInterface(this)) {}

BatchUser::~BatchUser()
{
    SetUserInterface(before_);
}

RegistrationChoices BatchUser::Choices()
{
    RegistrationChoices choices = options_.choices;
    choices.skip_duplicates = true;
    choices.leave_doubtful = !options_.answer_yes;
    choices.choose_causale = [this](long proposed) { return ChooseCausale(proposed); };
    choices.choose_vat_code = [this](const fatturapa::DatiRiepilogoType &row) { return ChooseVatCode(row); };
    if (options_.new_suppliers && !choices.confirm_supplier)
        choices.confirm_supplier = [](FORNITORI *) { return true; };
    return choices;
}

std::string BatchUser::Reason(const std::string &given) const
{
    if (!missing_.empty()) return missing_;
    if (!given.empty()) return AsReason(given);
    if (!asked_.empty()) return asked_;
    return told_.empty() ? "Da completare." : told_.back();
}

int BatchUser::MessageBox(const std::string &text, unsigned flags)
{
    switch (flags & 0xF) {
    case MB_YESNO:
        if (!options_.answer_yes) return Ask(text, IDNO);
        told_.push_back(AsReason(text) + " Sì.");
        return IDYES;
    case MB_YESNOCANCEL: // who the supplier is
        if (options_.new_suppliers) return IDNO;
        return options_.choices.choose_supplier ? IDYES : Ask(text, IDCANCEL);
    default:
        told_.push_back(AsReason(text));
        return IDOK;
    }
}

int BatchUser::Ask(const std::string &text, int answer)
{
    if (asked_.empty()) asked_ = AsReason(text);
    return answer;
}

long BatchUser::ChooseCausale(long proposed)
{
    const long code = options_.choices.choose_causale ? options_.choices.choose_causale(proposed) : 0;
    if (code == 0) missing_ = "Il fornitore non ha una causale contabile preimpostata.";
    return code;
}

/// The registration has told what to choose; in a list it reads better with what was chosen.
long BatchUser::ChooseVatCode(const fatturapa::DatiRiepilogoType &row)
{
    if (!told_.empty()) told_.pop_back();
    const std::string rate =
        fmt::format("aliquota {}% {}", FormatAmount(row.AliquotaIVA),
                    row.Natura.empty() ? std::string(fatturapa::NaturaText(row.Natura))
                                       : fmt::format("{} ({})", fatturapa::NaturaText(row.Natura), row.Natura));
    const long code = options_.choices.choose_vat_code ? options_.choices.choose_vat_code(row) : 0;
    if (code == 0)
        missing_ = fmt::format("Nessun codice IVA per {}.", rate);
    else
        told_.push_back(fmt::format("Codice IVA {} usato per {}.", code, rate));
    return code;
}
