#include "tarvolumera/Company.h"

#include "tarvolumera/archive/Migrations.h"

#include <fmt/printf.h>

CPSQLdit sqldit;
CPSQLflg sqlflg;
DITTE lumera_db_impo;
FLAG lumera_db_flag;
long lumera_db_type = 0;
std::string lumera_db_target;
std::filesystem::path lumera_db_folder;

namespace {

TableDescription CompanyDescription()
{
    return {"ditte", {LUMERA_COLUMN(DITTE, dit_codice, kKey),        LUMERA_COLUMN(DITTE, dit_desc, kPlain),
                      LUMERA_COLUMN(DITTE, dit_pers, kPlain),        LUMERA_COLUMN(DITTE, dit_cognome, kPlain),
                      LUMERA_COLUMN(DITTE, dit_nome, kPlain),        LUMERA_COLUMN(DITTE, dit_indirizzo, kPlain),
                      LUMERA_COLUMN(DITTE, dit_cap, kPlain),         LUMERA_COLUMN(DITTE, dit_citta, kPlain),
                      LUMERA_COLUMN(DITTE, dit_prov, kPlain),        LUMERA_COLUMN(DITTE, dit_naz, kPlain),
                      LUMERA_COLUMN(DITTE, dit_piva, kPlain),        LUMERA_COLUMN(DITTE, dit_codfis, kPlain),
                      LUMERA_COLUMN(DITTE, dit_anno, kPlain),        LUMERA_COLUMN(DITTE, dit_fuori_anno, kPlain),
                      LUMERA_COLUMN(DITTE, dit_periodicita, kPlain), LUMERA_COLUMN(DITTE, dit_tasso_mora, kPlain),
                      LUMERA_COLUMN(DITTE, dit_mas_cli, kPlain),     LUMERA_COLUMN(DITTE, dit_con_cli, kPlain),
                      LUMERA_COLUMN(DITTE, dit_mas_for, kPlain),     LUMERA_COLUMN(DITTE, dit_con_for, kPlain),
                      LUMERA_COLUMN(DITTE, dit_manutenzione, kPlain)}};
}

#define ACCOUNT(name)                                                                                                  \
    LUMERA_COLUMN(FLAG, flg_mas_##name, kNullIfZero), LUMERA_COLUMN(FLAG, flg_con_##name, kNullIfZero),                \
        LUMERA_COLUMN(FLAG, flg_sot_##name, kNullIfZero)

TableDescription SettingsDescription()
{
    return {"flag",
            {LUMERA_COLUMN(FLAG, flg_codice, kKey), ACCOUNT(iva_acq), ACCOUNT(iva_ven), ACCOUNT(iva_cor),
             ACCOUNT(iva_sos), ACCOUNT(iva_cee), ACCOUNT(arr_att), ACCOUNT(arr_pas),
             LUMERA_COLUMN(FLAG, flg_arr_limite, kPlain), LUMERA_COLUMN(FLAG, flg_cau_pagamento, kNullIfZero),
             LUMERA_COLUMN(FLAG, flg_cau_incasso, kNullIfZero), LUMERA_COLUMN(FLAG, flg_cau_effetti, kNullIfZero),
             LUMERA_COLUMN(FLAG, flg_cau_fatture, kNullIfZero), LUMERA_COLUMN(FLAG, flg_fatture_altro_anno, kPlain),
             LUMERA_PLAIN(FLAG, flg_cau_magazzino), LUMERA_PLAIN(FLAG, flg_sdi_cartella)}};
}

} // namespace

CPSQLdit::CPSQLdit() : CCodeTable(CompanyDescription()) {}
CPSQLflg::CPSQLflg() : CCodeTable(SettingsDescription()) {}

bool IsPostgresTarget(const std::string &archive)
{
    return archive.starts_with("postgresql://") || archive.starts_with("postgres://");
}

std::filesystem::path ArchiveFile(const std::filesystem::path &folder)
{
    return folder / "lumera.db";
}

void OpenCompany(const std::string &archive, const std::filesystem::path &data_folder)
{
    const bool postgres = IsPostgresTarget(archive);
    const bool is_file = !postgres && std::filesystem::is_regular_file(archive); // a copy is opened where it lies
    const std::string target = postgres || is_file ? archive : ArchiveFile(archive).string();
    SAConnection connection;
    connection.Connect(target);
    SACommand command(&connection);
    RequireKnownVersion(&command);

    lumera_db_type = postgres ? 1 : 0;
    lumera_db_target = target;
    lumera_db_folder = postgres ? data_folder : std::filesystem::path(archive);
    if (is_file) lumera_db_folder = std::filesystem::absolute(archive).parent_path();
    ReloadCompany(&command);
}

void ReloadCompany(SACommand *cmd)
{
    if (!sqldit.First(cmd, " ORDER BY dit_codice", {}, &lumera_db_impo))
        throw SAException(SA_UserGenerated_Error, 20060, "L'archivio non contiene la ditta.", SAFault::Corrupt);
    sqlflg.Search(cmd, lumera_db_impo.dit_codice, &lumera_db_flag);
}

std::filesystem::path CompanyFolder(const char *name)
{
    const std::filesystem::path folder = lumera_db_folder / name;
    std::filesystem::create_directories(folder);
    return folder;
}

std::string CompanyLine()
{
    return fmt::sprintf("Ditta : %05ld %-s  P.IVA %-s", lumera_db_impo.dit_codice, lumera_db_impo.dit_desc.str(),
                        lumera_db_impo.dit_piva.str());
}

std::string CompanyTitle()
{
    return fmt::sprintf("Ditta : %05ld %-s", lumera_db_impo.dit_codice, lumera_db_impo.dit_desc.str());
}

std::string CompanyTitle(std::string_view section_name)
{
    return fmt::sprintf("Ditta : %05ld %-s - Sez. %-s", lumera_db_impo.dit_codice, lumera_db_impo.dit_desc.str(),
                        std::string(section_name));
}

std::filesystem::path CompanyLogo()
{
    return lumera_db_folder / "template" / fmt::sprintf("dit%05ld.bmp", lumera_db_impo.dit_codice);
}
