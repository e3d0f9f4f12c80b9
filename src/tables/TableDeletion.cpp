#include "tables/TableStorage.h"

#include "tables/BrowseKeys.h"
#include "tarvodlg/base/UserInterface.h"

#include <fmt/format.h>

namespace {

/// A place where the records of a table are used; k1, k2 ... are its keys.
struct Use {
    std::string_view used; ///< name of the browsable table
    const char *from_where;
    const char *one, *many;
};

constexpr const char *kEntries = "movimenti di prima nota", *kEntry = "movimento di prima nota";
constexpr const char *kRows = "righe di causali", *kRow = "riga di causale";
constexpr const char *kInstalments = "scadenze", *kInstalment = "scadenza";
constexpr const char *kCustomers = "clienti", *kOneCustomer = "cliente";
constexpr const char *kSuppliers = "fornitori", *kOneSupplier = "fornitore";

// Every foreign key of the archive that points to these tables, and the links that have none (template rows, rows of
// the schedule's and the journal's side tables). Where header and rows both refer, entries are counted once.
constexpr Use kUses[] = {
    {"mastri", "admin.conti WHERE con_mas = :k1", "conto", "conti"},
    {"mastri", "admin.ditte WHERE dit_mas_cli = :k1 OR dit_mas_for = :k1", "ditta", "ditte"},
    {"mastri", "admin.caucontr WHERE car_mas = :k1", kRow, kRows},

    {"conti", "admin.sotcon WHERE sot_mas = :k1 AND sot_con = :k2", "sottoconto", "sottoconti"},
    {"conti", "(SELECT DISTINCT row_codice FROM admin.pnotaro2 WHERE row_mas = :k1 AND row_con = :k2) AS m", kEntry,
     kEntries},
    {"conti", "admin.clienti1 WHERE cli_mas = :k1 AND cli_con = :k2", kOneCustomer, kCustomers},
    {"conti", "admin.fornito1 WHERE for_mas = :k1 AND for_con = :k2", kOneSupplier, kSuppliers},
    {"conti",
     "admin.ditte WHERE (dit_mas_cli = :k1 AND dit_con_cli = :k2) OR (dit_mas_for = :k1 AND dit_con_for = :k2)",
     "ditta", "ditte"},
    {"conti", "admin.caucontr WHERE car_mas = :k1 AND car_con = :k2", kRow, kRows},

    {"sottocon",
     "(SELECT DISTINCT row_codice FROM admin.pnotaro2"
     " WHERE row_mas = :k1 AND row_con = :k2 AND row_sot = :k3 AND row_clfo = 0) AS m",
     kEntry, kEntries},
    {"sottocon", "admin.banche1 WHERE ban_mas = :k1 AND ban_con = :k2 AND ban_sot = :k3", "banca", "banche"},
    {"sottocon", "admin.caucontr WHERE car_mas = :k1 AND car_con = :k2 AND car_sot = :k3", kRow, kRows},
    {"sottocon",
     "admin.flag WHERE (flg_mas_iva_acq = :k1 AND flg_con_iva_acq = :k2 AND flg_sot_iva_acq = :k3)"
     " OR (flg_mas_iva_ven = :k1 AND flg_con_iva_ven = :k2 AND flg_sot_iva_ven = :k3)"
     " OR (flg_mas_iva_cor = :k1 AND flg_con_iva_cor = :k2 AND flg_sot_iva_cor = :k3)"
     " OR (flg_mas_iva_sos = :k1 AND flg_con_iva_sos = :k2 AND flg_sot_iva_sos = :k3)"
     " OR (flg_mas_iva_cee = :k1 AND flg_con_iva_cee = :k2 AND flg_sot_iva_cee = :k3)"
     " OR (flg_mas_arr_att = :k1 AND flg_con_arr_att = :k2 AND flg_sot_arr_att = :k3)"
     " OR (flg_mas_arr_pas = :k1 AND flg_con_arr_pas = :k2 AND flg_sot_arr_pas = :k3)",
     "impostazione", "impostazioni"},

    {"causali",
     "admin.pnota1 WHERE pno_cau = :k1 OR pno_codice IN (SELECT row_codice FROM admin.pnotaro2 WHERE row_cau = :k1)",
     kEntry, kEntries},
    {"causali", "admin.fornito1 WHERE for_cau = :k1", kOneSupplier, kSuppliers},
    {"causali",
     "admin.flag WHERE flg_cau_pagamento = :k1 OR flg_cau_incasso = :k1 OR flg_cau_effetti = :k1"
     " OR flg_cau_fatture = :k1",
     "impostazione", "impostazioni"},

    {"codiva",
     "admin.pnota1 WHERE pno_iva_0 = :k1 OR pno_iva_1 = :k1 OR pno_iva_2 = :k1 OR pno_iva_3 = :k1 OR pno_iva_4 = :k1"
     " OR pno_iva_5 = :k1 OR pno_iva_6 = :k1",
     kEntry, kEntries},

    {"pagamenti", "admin.pnota1 WHERE pno_pag = :k1", kEntry, kEntries},
    {"pagamenti", "admin.scadenze WHERE sca_pag = :k1", kInstalment, kInstalments},
    {"pagamenti", "admin.clienti1 WHERE cli_pag = :k1", kOneCustomer, kCustomers},
    {"pagamenti", "admin.fornito1 WHERE for_pag = :k1", kOneSupplier, kSuppliers},

    {"sezioni", "admin.pnota1 WHERE pno_sez = :k1", kEntry, kEntries},
    {"sezioni", "admin.scadenze WHERE sca_sez = :k1", kInstalment, kInstalments},
    {"sezioni", "admin.caucont1 WHERE cac_sez = :k1", "causale", "causali"},
    {"sezioni", "admin.pnotacor WHERE cor_sez = :k1", "giorno di corrispettivi", "giorni di corrispettivi"},

    {"clienti",
     "admin.pnota1 WHERE pno_cliente = :k1"
     " OR pno_codice IN (SELECT row_codice FROM admin.pnotaro2 WHERE row_cliente = :k1)"
     " OR pno_codice IN (SELECT coi_pno FROM admin.pnotacoi WHERE coi_rel = 0 AND coi_cli_for = :k1)",
     kEntry, kEntries},
    {"clienti", "admin.scadenze WHERE sca_relaz = 0 AND sca_cli_for = :k1", kInstalment, kInstalments},
    {"clienti", "admin.caucontr, admin.ditte WHERE car_mas = dit_mas_cli AND car_sot = :k1", kRow, kRows},

    {"fornitori",
     "admin.pnota1 WHERE pno_fornitore = :k1"
     " OR pno_codice IN (SELECT row_codice FROM admin.pnotaro2 WHERE row_fornitore = :k1)"
     " OR pno_codice IN (SELECT coi_pno FROM admin.pnotacoi WHERE coi_rel = 1 AND coi_cli_for = :k1)",
     kEntry, kEntries},
    {"fornitori", "admin.scadenze WHERE sca_relaz = 1 AND sca_cli_for = :k1", kInstalment, kInstalments},
    {"fornitori", "admin.testate1 WHERE tes_cod_for = :k1", "documento di magazzino", "documenti di magazzino"},
    {"fornitori", "admin.caucontr, admin.ditte WHERE car_mas = dit_mas_for AND car_sot = :k1", kRow, kRows},

    {"banche", "admin.scadenze WHERE sca_ban = :k1", kInstalment, kInstalments},
    {"banche", "admin.clienti1 WHERE cli_ban = :k1", kOneCustomer, kCustomers},
    {"banche", "admin.fornito1 WHERE for_ban = :k1", kOneSupplier, kSuppliers},

    {"articoli", "admin.righe1 WHERE rig_articolo = :k1", "riga di magazzino", "righe di magazzino"},
    {"caumag", "admin.testate1 WHERE tes_cau = :k1", "documento di magazzino", "documenti di magazzino"},
    {"caumag", "admin.flag WHERE flg_cau_magazzino = :k1", "impostazione", "impostazioni"},

    {"centri", "(SELECT DISTINCT pcc_pno FROM admin.pnotacdc WHERE pcc_cdc = :k1) AS m", kEntry, kEntries},

    {"agenti", "admin.clienti1 WHERE cli_age = :k1", kOneCustomer, kCustomers},
    {"agenti", "admin.scadenze WHERE sca_age = :k1", kInstalment, kInstalments},

    {"aggregazioni", "admin.pnota1 WHERE pno_agr = :k1", kEntry, kEntries},
    {"nazioni", "admin.clienti1 WHERE cli_naz = :k1", kOneCustomer, kCustomers},
    {"nazioni", "admin.fornito1 WHERE for_naz = :k1", kOneSupplier, kSuppliers},
    {"province", "admin.clienti1 WHERE cli_prov = :k1", kOneCustomer, kCustomers},
    {"province", "admin.fornito1 WHERE for_prov = :k1", kOneSupplier, kSuppliers},
};

std::string Joined(const std::vector<std::string> &parts)
{
    std::string text;
    for (const std::string &part : parts) text += (text.empty() ? "" : ", ") + part;
    return text;
}

TableOutcome Refused(std::string reason)
{
    BeepRefused();
    AfxMessageBox(reason, MB_OK | MB_ICONERROR);
    return {false, {}, 0, std::move(reason)};
}

/// Places of delivery have no foreign key, since they are of customers and suppliers alike.
void DeletePlacesOfDelivery(SACommand *cmd, const BrowseDescription &description, const RecordKeys &keys)
{
    const bool customer = std::string_view(description.name) == "clienti";
    if (!customer && std::string_view(description.name) != "fornitori") return;
    SACommand places(cmd->Connection(), "DELETE FROM admin.destina1 WHERE dst_rel = :rel AND dst_cli_for = :k1");
    places.Param("rel").setAsLong(customer ? kCustomer : kSupplier);
    BindKeys(&places, description, keys);
    places.Execute();
}

/// @return false when a row that was written meanwhile holds on to the record
bool DeleteRow(SACommand *cmd, const BrowseDescription &description, const RecordKeys &keys)
{
    SATransaction transaction(cmd);
    DeletePlacesOfDelivery(cmd, description, keys);
    SACommand remove(cmd->Connection(),
                     "DELETE FROM " + description.table->TableName() + " WHERE " + KeyCondition(description));
    BindKeys(&remove, description, keys);
    try {
        remove.Execute();
    } catch (const SAException &error) {
        if (error.Fault() == SAFault::ForeignKeyViolation) return false;
        throw;
    }
    transaction.Commit();
    return true;
}

} // namespace

std::vector<std::string> FindUses(SACommand *cmd, const BrowseDescription &description, const RecordKeys &keys)
{
    std::vector<std::string> uses;
    CommandScope scope(cmd);
    for (const Use &use : kUses) {
        if (use.used != description.name) continue;
        SACommand query(scope->Connection(), std::string("SELECT COUNT(*) FROM ") + use.from_where);
        if (!BindKeys(&query, description, keys)) return {};
        query.Execute();
        const long count = query.FetchNext() ? query.Field(1).asLong() : 0;
        if (count > 0) uses.push_back(fmt::format("{} {}", count, count == 1 ? use.one : use.many));
    }
    return uses;
}

TableOutcome DeleteRecord(SACommand *cmd, const BrowseDescription &description, const RecordKeys &keys)
{
    CommandScope scope(cmd);
    if (!description.maintained) return Refused(fmt::format("I dati di «{}» non si eliminano.", description.title));
    const std::optional<std::string> name = DescribeCode(scope.get(), description, keys);
    if (!name) return Refused(fmt::format("Non esiste: {} {}.", description.singular, KeyText(keys)));
    const std::vector<std::string> uses = FindUses(scope.get(), description, keys);
    if (!uses.empty()) return Refused(fmt::format("Impossibile eliminare: codice usato in {}.", Joined(uses)));
    if (AfxMessageBox(
            fmt::format("Eliminazione {} {} {}\n\nVuoi Continuare ?", description.singular, KeyText(keys), *name),
            MB_YESNO | MB_ICONQUESTION | MB_DEFBUTTON2) != IDYES)
        return {false, {}, 0, "Eliminazione non confermata."};
    if (!DeleteRow(scope.get(), description, keys))
        return Refused("Impossibile eliminare: il codice è stato usato in questo momento da un'altra stazione.");
    return {true, {}, 0, {}};
}
