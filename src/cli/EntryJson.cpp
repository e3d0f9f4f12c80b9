#include "cli/EntryJson.h"

#include "cli/Session.h"
#include "ledger/EntryEditing.h"
#include "ledger/VatLines.h"
#include "tarvodlg/base/Dates.h"
#include "tarvodlg/base/Numbers.h"
#include "tarvolumera/ChartOfAccounts.h"
#include "tarvolumera/PSQLpno.h"

#include <cmath>
#include <fmt/format.h>
#include <initializer_list>

namespace {

using nlohmann::json;

constexpr double kAmountMax = 1e12;

[[noreturn]] void Refuse(const std::string &where, const std::string &what)
{
    throw RefusedError(fmt::format("{}: {}.", where, what));
}

void CheckKeys(const json &object, const std::string &where, std::initializer_list<std::string_view> known)
{
    if (!object.is_object()) Refuse(where, "deve essere un oggetto JSON");
    for (const auto &[key, value] : object.items()) {
        if (std::find(known.begin(), known.end(), key) == known.end())
            Refuse(where, fmt::format("chiave «{}» sconosciuta", key));
    }
}

long LongAt(const json &object, const char *key, const std::string &where)
{
    const auto found = object.find(key);
    if (found == object.end() || found->is_null()) return 0;
    if (!found->is_number_integer()) Refuse(where, fmt::format("«{}» deve essere un numero intero", key));
    const auto value = found->get<long long>();
    if (value < 0 || value > 2'147'483'647) Refuse(where, fmt::format("«{}» è fuori dai limiti", key));
    return static_cast<long>(value);
}

double AmountAt(const json &object, const char *key, const std::string &where)
{
    const auto found = object.find(key);
    if (found == object.end() || found->is_null()) return 0;
    std::optional<double> value;
    if (found->is_number()) value = found->get<double>();
    if (found->is_string()) value = ParseDecimal(found->get_ref<const std::string &>());
    if (!value || !std::isfinite(*value) || std::fabs(*value) > kAmountMax)
        Refuse(where, fmt::format("«{}» deve essere un importo", key));
    if (std::fabs(*value - Round(*value, 2)) > 1e-9) Refuse(where, fmt::format("«{}» ha più di due decimali", key));
    return Round(*value, 2);
}

std::string TextAt(const json &object, const char *key, const std::string &where)
{
    const auto found = object.find(key);
    if (found == object.end() || found->is_null()) return {};
    if (!found->is_string()) Refuse(where, fmt::format("«{}» deve essere un testo", key));
    return std::string(Trimmed(found->get_ref<const std::string &>()));
}

long DateAt(const json &object, const char *key, const std::string &where)
{
    const std::string text = TextAt(object, key, where);
    if (text.empty()) return 0;
    const std::optional<long> day = ParseDate(text);
    if (!day) Refuse(where, fmt::format("«{}»: {} non è una data", key, text));
    return *day;
}

const json &ListAt(const json &object, const char *key, std::size_t most)
{
    static const json kNone = json::array();
    const auto found = object.find(key);
    if (found == object.end() || found->is_null()) return kNone;
    if (!found->is_array()) Refuse("movimento", fmt::format("«{}» deve essere un elenco", key));
    if (found->size() > most) Refuse("movimento", fmt::format("«{}» ha più di {} elementi", key, most));
    return *found;
}

void ReadVatLines(SACommand *cmd, const json &object, PNOTA *entry)
{
    const json &lines = ListAt(object, "iva", kVatLines);
    if (!lines.empty() && entry->pno_cau_iva != 1) Refuse("movimento", "la causale non prevede righe IVA");
    for (std::size_t i = 0; i < lines.size(); ++i) {
        const json &line = lines[i];
        const std::string where = fmt::format("riga IVA {}", i + 1);
        CheckKeys(line, where, {"codice", "imponibile", "aliquota", "imposta", "indetraibile"});
        const long code = LongAt(line, "codice", where);
        entry->iva[i].impo = AmountAt(line, "imponibile", where);
        EnterVatCode(cmd, entry, i, code);
        PNOTA_IVA &target = entry->iva[i];
        if (target.iva != code || code == 0)
            Refuse(where, fmt::format("il codice IVA {} non esiste o non è ammesso nel registro {}", code,
                                      RegisterName(entry->pno_reg)));
        if (line.contains("aliquota") && !TestIfZero(AmountAt(line, "aliquota", where) - target.aliq))
            Refuse(where, fmt::format("l'aliquota del codice {} è {:.2f}", code, target.aliq));
        if (line.contains("indetraibile")) target.ind = AmountAt(line, "indetraibile", where);
        if (line.contains("imposta")) target.imposta = AmountAt(line, "imposta", where);
        sqlpno.RecalcPNota(cmd, entry, 1, 0, 0, 0, 0);
    }
}

void ReadRows(SACommand *cmd, const json &object, PNOTA *entry)
{
    const json &rows = ListAt(object, "righe", kEntryRows);
    if (rows.empty()) return;
    entry->righe = {};
    for (std::size_t i = 0; i < rows.size(); ++i) {
        const json &source = rows[i];
        const std::string where = fmt::format("riga {}", i + 1);
        CheckKeys(source, where, {"mas", "con", "sot", "tipo", "importo", "desc", "doc"});
        PNOTA_RIGA &row = entry->righe[i];
        row.row_mas = LongAt(source, "mas", where);
        row.row_con = LongAt(source, "con", where);
        row.row_sot = LongAt(source, "sot", where);
        if (row.row_mas == 0) Refuse(where, "manca il mastro");
        row.row_tipo = ToUpper(TextAt(source, "tipo", where));
        if (!row.IsDare() && !row.IsAvere()) Refuse(where, "«tipo» deve essere \"D\" o \"A\"");
        row.row_importo = AmountAt(source, "importo", where);
        if (row.row_importo < 0) Refuse(where, "l'importo non può essere negativo: cambiare il segno con «tipo»");
        LeaveRowCausale(entry, i);
        row.row_n_doc = TextAt(source, "doc", where);
        LeaveRowDocument(entry, i);
        if (source.contains("desc")) row.row_descac = TextAt(source, "desc", where);
        row.des_sot = AccountDescription(cmd, row.Account());
    }
    sqlpno.RecalcPNota(cmd, entry, 0, 0, 0, 0, 0);
}

void ReadCostCentres(const json &object, PNOTA *entry)
{
    const json &lines = ListAt(object, "centri", kCostCentreLinesMax);
    for (std::size_t i = 0; i < lines.size(); ++i) {
        const std::string where = fmt::format("centro di costo {}", i + 1);
        CheckKeys(lines[i], where, {"riga", "cdc", "importo"});
        PNOTA_CENTRO line;
        line.pcc_riga = LongAt(lines[i], "riga", where);
        line.pcc_cdc = LongAt(lines[i], "cdc", where);
        line.pcc_importo = AmountAt(lines[i], "importo", where);
        entry->centri.push_back(line);
    }
}

void ReadHeader(SACommand *cmd, const json &object, long today, PNOTA *entry)
{
    const std::string where = "movimento";
    sqlpno.Blank(cmd, entry);
    entry->pno_data = object.contains("data") ? DateAt(object, "data", where) : today;
    entry->pno_data_doc = DateAt(object, "data_doc", where);
    entry->pno_cli_for = LongAt(object, "cli_for", where);
    const long causale = LongAt(object, "cau", where);
    const long wanted = entry->pno_cli_for;
    EnterCausale(cmd, entry, causale);
    if (entry->pno_cau == 0) Refuse(where, fmt::format("la causale {} non esiste", causale));
    // After the causale, which may bring a section of its own.
    if (object.contains("sez") && !EnterSection(cmd, entry, LongAt(object, "sez", where)))
        Refuse(where, "la sezione IVA non esiste");
    if (entry->pno_rel != kNoCounterpart && wanted != 0 && entry->pno_cli_for == 0)
        Refuse(where,
               fmt::format("il {} {} non esiste", entry->pno_rel == kCustomer ? "cliente" : "fornitore", wanted));
    if (object.contains("des_cau")) EnterCausaleDescription(entry, TextAt(object, "des_cau", where));
    EnterDocumentNumber(entry, TextAt(object, "doc", where));
    entry->pno_data_pag = DateAt(object, "data_pag", where);
    const long terms = object.contains("pag") ? LongAt(object, "pag", where) : entry->pno_pag;
    if (!EnterTerms(cmd, entry, terms) && terms != 0)
        Refuse(where, fmt::format("la modalità di pagamento {} non esiste", terms));
    entry->pno_desc = TextAt(object, "desc", where);
    if (LongAt(object, "prot_fisso", where) == 0) return;
    entry->pno_prot = LongAt(object, "prot", where);
    entry->pno_prot_fisso = 1;
}

} // namespace

PNOTA EntryFromJson(SACommand *cmd, const std::string &text, long today)
{
    const json object = json::parse(text, nullptr, false);
    if (object.is_discarded()) throw RefusedError("Il file non è un documento JSON valido.");
    CheckKeys(object, "movimento",
              {"data", "cau", "doc", "data_doc", "cli_for", "sez", "pag", "data_pag", "desc", "des_cau", "tot_doc",
               "prot", "prot_fisso", "iva", "righe", "centri",
               // What "mostra" prints beside is accepted and follows from the rest.
               "codice", "rel", "reg", "dare", "avere", "operazione", "allegati"});
    PNOTA entry;
    ReadHeader(cmd, object, today, &entry);
    ReadVatLines(cmd, object, &entry);
    if (object.contains("tot_doc")) EnterDocumentTotal(cmd, &entry, AmountAt(object, "tot_doc", "movimento"));
    ReadRows(cmd, object, &entry);
    ReadCostCentres(object, &entry);
    return entry;
}

json EntryToJson(const PNOTA &entry)
{
    json iva = json::array(), rows = json::array(), centres = json::array();
    for (const PNOTA_IVA &line : entry.iva) {
        if (line.iva == 0) continue;
        iva.push_back({{"codice", line.iva},
                       {"imponibile", JsonAmount(line.impo)},
                       {"aliquota", line.aliq},
                       {"imposta", JsonAmount(line.imposta)},
                       {"indetraibile", line.ind}});
    }
    for (const PNOTA_RIGA &row : entry.righe) {
        if (!row.InUse()) continue;
        rows.push_back({{"mas", row.row_mas},
                        {"con", row.row_con},
                        {"sot", row.row_sot},
                        {"tipo", row.row_tipo.str()},
                        {"importo", JsonAmount(row.row_importo)},
                        {"desc", row.row_descac.str()},
                        {"doc", row.row_n_doc.str()}});
    }
    for (const PNOTA_CENTRO &line : entry.centri)
        centres.push_back({{"riga", line.pcc_riga}, {"cdc", line.pcc_cdc}, {"importo", JsonAmount(line.pcc_importo)}});
    return {{"codice", entry.pno_codice},
            {"data", JsonDate(entry.pno_data)},
            {"cau", entry.pno_cau},
            {"des_cau", entry.pno_des_cau.str()},
            {"desc", entry.pno_desc.str()},
            {"doc", entry.pno_doc.str()},
            {"data_doc", JsonDate(entry.pno_data_doc)},
            {"rel", entry.pno_rel},
            {"cli_for", entry.pno_cli_for},
            {"sez", entry.pno_sez},
            {"reg", entry.pno_reg},
            {"prot", entry.pno_prot},
            {"pag", entry.pno_pag},
            {"data_pag", JsonDate(entry.pno_data_pag)},
            {"tot_doc", JsonAmount(entry.pno_tot_doc)},
            {"dare", JsonAmount(entry.pno_dare)},
            {"avere", JsonAmount(entry.pno_avere)},
            {"operazione", entry.pno_operazione},
            {"iva", iva},
            {"righe", rows},
            {"centri", centres}};
}
