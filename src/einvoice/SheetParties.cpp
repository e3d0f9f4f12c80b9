#include "einvoice/SheetSections.h"

#include "tarvodlg/base/Dates.h"

namespace {

void AddLine(SheetCell *cell, std::string text, SheetTone tone = SheetTone::Plain)
{
    if (!text.empty()) cell->push_back({std::move(text), tone});
}

std::string RegisterText(const fatturapa::DatiAnagraficiType &person)
{
    const std::string province = person.ProvinciaAlbo.empty() ? "" : "(" + person.ProvinciaAlbo + ")";
    const std::string day = person.DataIscrizioneAlbo == 0 ? "" : FormatDate(person.DataIscrizioneAlbo);
    return Labelled("Albo professionale:",
                    Joined(" ", {person.AlboProfessionale, province, Labelled("n.", person.NumeroIscrizioneAlbo),
                                 Labelled("dal", day)}));
}

std::string ReaText(const fatturapa::IscrizioneREAType &rea)
{
    const std::string members = rea.SocioUnico == "SU"   ? "socio unico"
                                : rea.SocioUnico == "SM" ? "più soci"
                                                         : Labelled("soci", rea.SocioUnico);
    const std::string state = rea.StatoLiquidazione == "LS"   ? "in liquidazione"
                              : rea.StatoLiquidazione == "LN" ? "non in liquidazione"
                                                              : Labelled("stato", rea.StatoLiquidazione);
    return Labelled("REA:",
                    Joined(", ", {Joined(" ", {rea.Ufficio, rea.NumeroREA}),
                                  Labelled("capitale sociale", SheetNumber(rea.CapitaleSociale)), members, state}));
}

SheetCell PartyCell(const char *caption, const fatturapa::PartyType &party)
{
    SheetCell cell;
    AddLine(&cell, caption, SheetTone::Note);
    SheetCell person = PersonLines(party.DatiAnagrafici);
    // The address belongs below the name, before numbers and registrations.
    if (!person.empty()) {
        cell.push_back(std::move(person.front()));
        person.erase(person.begin());
    }
    AddLine(&cell, AddressText(party.Sede));
    cell.insert(cell.end(), person.begin(), person.end());
    AddLine(&cell, ReaText(party.IscrizioneREA));
    AddLine(&cell, Labelled("Tel.", party.Contatti.Telefono));
    AddLine(&cell, Labelled("Fax", party.Contatti.Fax));
    AddLine(&cell, Labelled("Email", party.Contatti.Email));
    AddLine(&cell, Labelled("Riferimento amministrazione:", party.RiferimentoAmministrazione));
    return cell;
}

void AddPerson(std::vector<SheetRow> *rows, const char *label,
               const std::optional<fatturapa::DatiAnagraficiType> &person)
{
    if (person) rows->push_back({{{label, SheetTone::Note}}, PersonLines(*person)});
}

void AddAddress(std::vector<SheetRow> *rows, const char *label, const std::optional<fatturapa::IndirizzoType> &address)
{
    if (address) rows->push_back({{{label, SheetTone::Note}}, Plain(AddressText(*address))});
}

} // namespace

SheetCell PersonLines(const fatturapa::DatiAnagraficiType &person)
{
    const fatturapa::AnagraficaType &name = person.Anagrafica;
    SheetCell lines;
    const std::string shown = Joined(" ", {name.Titolo, fatturapa::NameOf(name)});
    AddLine(&lines, shown.empty() ? "(senza denominazione)" : shown, SheetTone::Strong);
    if (!name.Denominazione.empty()) AddLine(&lines, Joined(" ", {name.Cognome, name.Nome}));
    AddLine(&lines, Labelled("Partita IVA:", FiscalIdText(person.IdFiscaleIVA)));
    AddLine(&lines, Labelled("Codice fiscale:", person.CodiceFiscale));
    AddLine(&lines, Labelled("Codice EORI:", name.CodEORI));
    AddLine(&lines, Labelled("Regime fiscale:",
                             CodeWithText(person.RegimeFiscale, fatturapa::RegimeFiscaleText(person.RegimeFiscale))));
    AddLine(&lines, RegisterText(person));
    AddLine(&lines, Labelled("Licenza di guida:", person.NumeroLicenzaGuida));
    return lines;
}

SheetSection PartiesSection(const fatturapa::FatturaElettronicaHeader &header)
{
    constexpr double kHalf = 93; // of the width of the page
    return SectionOf("", SheetFrame::Boxes, {{"", kHalf, false}, {"", kHalf, false}},
                     {{PartyCell("Cedente / prestatore", header.CedentePrestatore),
                       PartyCell("Cessionario / committente", header.CessionarioCommittente)}});
}

SheetSection OtherPartiesSection(const fatturapa::FatturaElettronicaHeader &header)
{
    constexpr double kLabelWidth = 56;
    std::vector<SheetRow> rows;
    AddAddress(&rows, "Stabile organizzazione del cedente", header.CedentePrestatore.StabileOrganizzazione);
    AddPerson(&rows, "Rappresentante fiscale del cedente", header.RappresentanteFiscale);
    AddAddress(&rows, "Stabile organizzazione del cessionario", header.CessionarioCommittente.StabileOrganizzazione);
    AddPerson(&rows, "Rappresentante fiscale del cessionario", header.CessionarioCommittente.RappresentanteFiscale);
    AddPerson(&rows, "Terzo intermediario o soggetto emittente", header.TerzoIntermediarioOSoggettoEmittente);
    const std::string issuer = header.SoggettoEmittente == "CC"   ? "CC il cessionario / committente"
                               : header.SoggettoEmittente == "TZ" ? "TZ un terzo per conto del cedente"
                                                                  : header.SoggettoEmittente;
    if (!issuer.empty()) rows.push_back({{{"Documento emesso da", SheetTone::Note}}, Plain(issuer)});
    return SectionOf("Altri soggetti", SheetFrame::Open, {{"", kLabelWidth, false}, {"", 0, false}}, std::move(rows));
}
