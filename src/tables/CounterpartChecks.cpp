#include "tables/FaultList.h"

#include <fmt/format.h>

// Customers and suppliers: the same rules about who they are, each its own about what it refers to.

namespace {

/// The fields that both have, so that a rule is written once.
struct Counterpart {
    const char *table, *prefix;
    long code;
    std::string_view description, first_line, second_line, kind;
    long is_sole_trader;
    std::string_view postcode, province, nation, vat_number, fiscal_code, email, pec, iban;
    long master, account;
    long company_master; ///< the customers' or suppliers' one
    long terms, bank;
    long excluded;

    bool IsItalian() const { return nation == "IT"; }
    bool IsPerson() const { return kind == "F"; }
    std::string Column(const char *name) const { return std::string(prefix) + name; }
};

Counterpart Of(const CLIENTI &r)
{
    return {"admin.clienti1",
            "cli_",
            r.cli_codice,
            r.cli_desc,
            r.cli_rag_soc1,
            r.cli_rag_soc2,
            r.cli_pers,
            r.cli_ditta_ind,
            r.cli_cap,
            r.cli_prov,
            r.cli_naz,
            r.cli_piva,
            r.cli_codfis,
            r.cli_email,
            r.cli_pec,
            r.cli_iban,
            r.cli_mas,
            r.cli_con,
            lumera_db_impo.dit_mas_cli,
            r.cli_pag,
            r.cli_ban,
            r.cli_escludi_iva};
}

Counterpart Of(const FORNITORI &r)
{
    return {"admin.fornito1",
            "for_",
            r.for_codice,
            r.for_desc,
            r.for_rag_soc1,
            r.for_rag_soc2,
            r.for_pers,
            r.for_ditta_ind,
            r.for_cap,
            r.for_prov,
            r.for_naz,
            r.for_piva,
            r.for_codfis,
            r.for_email,
            r.for_pec,
            r.for_iban,
            r.for_mas,
            r.for_con,
            lumera_db_impo.dit_mas_for,
            r.for_pag,
            r.for_ban,
            r.for_escludi_iva};
}

void CheckName(FaultList &faults, const Counterpart &who)
{
    faults.RefuseIf(Trimmed(who.description).empty(), "desc", "Ragione sociale mancante.");
    faults.RefuseIf(who.kind != "F" && who.kind != "G", "pers", "Indicare F (persona fisica) o G (persona giuridica).");
    if (who.IsPerson()) {
        faults.RefuseIf(Trimmed(who.first_line).empty(), "rag_soc1", "Cognome mancante: è una persona fisica.");
        faults.RefuseIf(Trimmed(who.second_line).empty(), "rag_soc2", "Nome mancante: è una persona fisica.");
    }
    faults.Flag("ditta_ind", who.is_sole_trader);
    faults.RefuseIf(who.is_sole_trader == 1 && !who.IsPerson(), "ditta_ind",
                    "La ditta individuale è di una persona fisica.");
}

void CheckAddress(FaultList &faults, const Counterpart &who)
{
    NAZIONI nation;
    PROVINCE province;
    faults.RefuseIf(!sqlnaz.Search(faults.Cmd(), who.nation, &nation), "naz",
                    fmt::format("La nazione «{}» non esiste.", who.nation));
    if (!who.IsItalian()) return;
    if (!who.postcode.empty()) {
        const FiscalCodeCheck check = CheckPostcode(who.postcode);
        const std::string text = fmt::format("CAP {}: {}.", who.postcode, check.text);
        if (check.fault == FiscalCodeFault::Range)
            faults.Ask("cap", text);
        else if (!check.ok())
            faults.Refuse("cap", text);
    }
    const bool abroad = who.province == "EE";
    faults.RefuseIf(!who.province.empty() && (abroad || !sqlprv.Search(faults.Cmd(), who.province, &province)), "prov",
                    abroad ? "EE è per gli indirizzi esteri."
                           : fmt::format("La provincia «{}» non esiste.", who.province));
}

/// A question is worth asking once: when the code is new, not each time that the record is stored again.
bool HasNewCodes(SACommand *cmd, const Counterpart &who, bool is_new)
{
    if (is_new) return true;
    SACommand query(
        cmd->Connection(),
        fmt::format("SELECT {0}piva, {0}codfis, {0}naz FROM {1} WHERE {0}codice = :codice", who.prefix, who.table));
    query.Param("codice").setAsLong(who.code);
    query.Execute();
    return !query.FetchNext() || query.Field(1).asString() != who.vat_number ||
           query.Field(2).asString() != who.fiscal_code || query.Field(3).asString() != who.nation;
}

/// "12 Rossi S.r.l.": another record with the same value in that column; empty when there is none.
std::string OtherWith(SACommand *cmd, const Counterpart &who, const char *column, std::string_view value)
{
    SACommand query(cmd->Connection(),
                    fmt::format("SELECT {0}codice, {0}desc FROM {1} WHERE {0}{2} = :valore AND {0}naz = :naz"
                                " AND {0}codice <> :codice ORDER BY {0}codice",
                                who.prefix, who.table, column));
    query.Param("valore").setAsString(value);
    query.Param("naz").setAsString(who.nation);
    query.Param("codice").setAsLong(who.code);
    query.Execute();
    if (!query.FetchNext()) return {};
    return query.Field(1).asString() + " " + query.Field(2).asString();
}

void CheckIdentifiers(FaultList &faults, const Counterpart &who, bool is_new)
{
    const FiscalCodeCheck vat = CheckCounterpartVat(who.nation, who.vat_number);
    const FiscalCodeCheck fiscal = CheckCounterpartFiscalCode(who.nation, who.IsPerson(), who.fiscal_code);
    faults.RefuseIf(!vat.ok(), "piva", fmt::format("Partita IVA {}: {}.", who.vat_number, vat.text));
    faults.RefuseIf(!fiscal.ok(), "codfis", fmt::format("Codice fiscale {}: {}.", who.fiscal_code, fiscal.text));
    if (!vat.ok() || !fiscal.ok() || !HasNewCodes(faults.Cmd(), who, is_new)) return;

    if (!who.vat_number.empty()) {
        const std::string other = OtherWith(faults.Cmd(), who, "piva", who.vat_number);
        if (!other.empty()) faults.Ask("piva", "Partita IVA già presente: " + other);
    } else if (!who.fiscal_code.empty()) {
        const std::string other = OtherWith(faults.Cmd(), who, "codfis", who.fiscal_code);
        if (!other.empty()) faults.Ask("codfis", "Codice fiscale già presente: " + other);
    } else if (who.IsItalian()) {
        faults.Ask("piva", "Mancano partita IVA e codice fiscale.");
    }
}

void CheckForm(FaultList &faults, const char *field, const char *title, const std::string &fault)
{
    faults.RefuseIf(!fault.empty(), field, fmt::format("{}: {}.", title, fault));
}

void CheckAccount(FaultList &faults, const Counterpart &who)
{
    if (who.master == 0 && who.account == 0) return;
    CONTI account;
    if (who.master == 0 || who.account == 0)
        faults.Refuse("mas", "Indicare mastro e conto, o nessuno dei due.");
    else if (who.master != who.company_master)
        faults.Refuse("mas", fmt::format("Il mastro deve essere il {}.", who.company_master));
    else if (!sqlcon.Search(faults.Cmd(), who.master, who.account, &account))
        faults.Refuse("con", fmt::format("Il conto {}.{} non esiste.", who.master, who.account));
}

/// Everything before what the two refer to.
void CheckPerson(FaultList &faults, const Counterpart &who, bool is_new)
{
    CheckName(faults, who);
    CheckAddress(faults, who);
    CheckIdentifiers(faults, who, is_new);
    CheckForm(faults, "email", "E-mail", EmailFault(who.email));
    CheckForm(faults, "pec", "PEC", EmailFault(who.pec));
    CheckForm(faults, "iban", "IBAN", IbanFault(who.iban));
    CheckAccount(faults, who);
    faults.Reference("pag", sqlpag, who.terms, "Il pagamento");
    faults.Reference("ban", sqlban, who.bank, "La banca");
    faults.Flag("escludi_iva", who.excluded);
}

bool IsRea(std::string_view rea)
{
    const auto is_letter = [](char c) { return c >= 'A' && c <= 'Z'; };
    return rea.size() > 3 && is_letter(rea[0]) && is_letter(rea[1]) && rea[2] == '-';
}

} // namespace

std::vector<FieldFault> CheckCliente(SACommand *cmd, const CLIENTI &record, bool is_new)
{
    CommandScope scope(cmd);
    FaultList faults(scope.get(), "cli_");
    if (!faults.Code("codice", record.cli_codice, sqlcli, &record, is_new)) return faults.Take();
    CheckPerson(faults, Of(record), is_new);
    CheckForm(faults, "cod_dest", "Codice destinatario", DestinationCodeFault(record.cli_naz, record.cli_cod_dest));
    faults.Reference("age", sqlage, record.cli_age, "L'agente");
    return faults.Take();
}

std::vector<FieldFault> CheckFornitore(SACommand *cmd, const FORNITORI &record, bool is_new)
{
    CommandScope scope(cmd);
    FaultList faults(scope.get(), "for_");
    if (!faults.Code("codice", record.for_codice, sqlfor, &record, is_new)) return faults.Take();
    CheckPerson(faults, Of(record), is_new);
    const std::string_view members = record.for_socio_unico, state = record.for_stato_liq;
    faults.RefuseIf(!record.for_rea.empty() && !IsRea(record.for_rea), "rea",
                    "Numero REA: scrivere ufficio e numero, come MI-1234567.");
    faults.RefuseIf(!members.empty() && members != "SU" && members != "SM", "socio_unico",
                    "Socio unico: SU (uno) o SM (più soci).");
    faults.RefuseIf(!state.empty() && state != "LS" && state != "LN", "stato_liq",
                    "Liquidazione: LS (in liquidazione) o LN (non in liquidazione).");
    CAUCONT causale;
    if (record.for_cau != 0 && !sqlcac.Search(scope.get(), record.for_cau, &causale))
        faults.Refuse("cau", fmt::format("La causale {} non esiste.", record.for_cau));
    else if (record.for_cau != 0)
        faults.RefuseIf(causale.cac_rel != kSupplier, "cau",
                        fmt::format("La causale {} non è dei fornitori.", record.for_cau));
    return faults.Take();
}
