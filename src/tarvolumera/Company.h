#pragma once

#include "tarvodlg/base/Text.h"
#include "tarvolumera/TarvoPostgreSQL.h"

#include <filesystem>
#include <string>

/// A sub-account of the chart: master, account, sub-account. All zero = none.
struct AccountKey {
    long mas = 0, con = 0, sot = 0;
    bool IsSet() const { return mas != 0 && con != 0 && sot != 0; }
    friend bool operator==(const AccountKey &, const AccountKey &) = default;
};

/// The company (admin.ditte): who it is, its fiscal year, where its customers and suppliers stand in the chart.
struct DITTE {
    long dit_codice = 0;
    Text<80> dit_desc;
    Text<1> dit_pers; ///< "G" legal person, "F" natural person
    Text<60> dit_cognome, dit_nome;
    Text<70> dit_indirizzo;
    Text<5> dit_cap;
    Text<60> dit_citta;
    Text<2> dit_prov, dit_naz;
    Text<28> dit_piva;
    Text<16> dit_codfis;
    long dit_anno = 0;                     ///< fiscal year
    long dit_fuori_anno = 0;               ///< 1 = entries outside the fiscal year are allowed, after a question
    Text<1> dit_periodicita;               ///< "M" monthly VAT settlement, else quarterly
    double dit_tasso_mora = 0;             ///< annual rate of late-payment interest, per cent
    long dit_mas_cli = 0, dit_con_cli = 0; ///< customers' master and its ordinary account
    long dit_mas_for = 0, dit_con_for = 0; ///< suppliers' master and its ordinary account
    long dit_manutenzione = 0;             ///< 1 = the maintenance batches are offered when the entry editor opens
};

/// The company's settings (admin.flag).
struct FLAG {
    long flg_codice = 0;
    long flg_mas_iva_acq = 0, flg_con_iva_acq = 0, flg_sot_iva_acq = 0; ///< VAT on purchases
    long flg_mas_iva_ven = 0, flg_con_iva_ven = 0, flg_sot_iva_ven = 0; ///< VAT on sales
    long flg_mas_iva_cor = 0, flg_con_iva_cor = 0, flg_sot_iva_cor = 0; ///< VAT on receipts
    long flg_mas_iva_sos = 0, flg_con_iva_sos = 0, flg_sot_iva_sos = 0; ///< suspended VAT
    long flg_mas_iva_cee = 0, flg_con_iva_cee = 0, flg_sot_iva_cee = 0; ///< VAT on EU operations
    long flg_mas_arr_att = 0, flg_con_arr_att = 0, flg_sot_arr_att = 0; ///< rounding income
    long flg_mas_arr_pas = 0, flg_con_arr_pas = 0, flg_sot_arr_pas = 0; ///< rounding expense
    double flg_arr_limite = 1; ///< euro; a rounding above it is never posted without asking
    long flg_cau_pagamento = 0, flg_cau_incasso = 0, flg_cau_effetti = 0; ///< causali of automatic payments
    long flg_cau_fatture = 0;                                             ///< causale proposed for received invoices
    long flg_fatture_altro_anno = 0; ///< 1 = received invoices of another year may be registered
    long flg_cau_magazzino = 0;      ///< warehouse reason of the goods loaded from received invoices
    Text<250> flg_sdi_cartella;      ///< folder from which received invoices are taken up; empty = none

    AccountKey PurchaseVat() const { return {flg_mas_iva_acq, flg_con_iva_acq, flg_sot_iva_acq}; }
    AccountKey SalesVat() const { return {flg_mas_iva_ven, flg_con_iva_ven, flg_sot_iva_ven}; }
    AccountKey ReceiptsVat() const { return {flg_mas_iva_cor, flg_con_iva_cor, flg_sot_iva_cor}; }
    AccountKey SuspendedVat() const { return {flg_mas_iva_sos, flg_con_iva_sos, flg_sot_iva_sos}; }
    AccountKey EuVat() const { return {flg_mas_iva_cee, flg_con_iva_cee, flg_sot_iva_cee}; }
    AccountKey RoundingIncome() const { return {flg_mas_arr_att, flg_con_arr_att, flg_sot_arr_att}; }
    AccountKey RoundingExpense() const { return {flg_mas_arr_pas, flg_con_arr_pas, flg_sot_arr_pas}; }
};

class CPSQLdit : public CCodeTable<DITTE, &DITTE::dit_codice> {
  public:
    CPSQLdit();
};
class CPSQLflg : public CCodeTable<FLAG, &FLAG::flg_codice> {
  public:
    CPSQLflg();
};
extern CPSQLdit sqldit;
extern CPSQLflg sqlflg;

// The company being worked on. The host loads them with OpenCompany before any dialog or command runs.
extern DITTE lumera_db_impo;
extern FLAG lumera_db_flag;
extern long lumera_db_type;                    ///< SQL dialect: 1 PostgreSQL, 0 the embedded engine
extern std::string lumera_db_target;           ///< what SAConnection::Connect takes; may hold a password
extern std::filesystem::path lumera_db_folder; ///< the company's data folder, with out, tmp, log and template in it

/// Makes an archive the current one: checks its version (see archive/Migrations.h), loads company and settings.
/// @param archive  folder of an embedded archive, a copy's file, or a PostgreSQL address
/// @param data_folder  for PostgreSQL, where files of the company go; ignored for a folder archive
/// @throws SAException CannotOpen, Corrupt; SA_UserGenerated_Error for an archive newer than this program
void OpenCompany(const std::string &archive, const std::filesystem::path &data_folder = {});

/// Reads company and settings again, after they were changed in the archive.
void ReloadCompany(SACommand *cmd);

/// True for "postgresql://" and "postgres://".
bool IsPostgresTarget(const std::string &archive);

/// The database file inside the folder of an embedded archive.
std::filesystem::path ArchiveFile(const std::filesystem::path &folder);

/// A sub-folder of the company's data folder ("out", "tmp", "log"), created when missing.
std::filesystem::path CompanyFolder(const char *name);

// The lines of reports and window titles about the current company.
std::string CompanyLine();                               ///< "Ditta : %05ld %-s  P.IVA %-s"
std::string CompanyTitle();                              ///< "Ditta : %05ld %-s"
std::string CompanyTitle(std::string_view section_name); ///< "Ditta : %05ld %-s - Sez. %-s"

/// The company's logo: "<folder>/template/dit%05ld.bmp".
std::filesystem::path CompanyLogo();
