#include "tables/BrowseDescription.h"

#include "tarvolumera/Causali.h"
#include "tarvolumera/ChartOfAccounts.h"
#include "tarvolumera/Counterparts.h"
#include "tarvolumera/Lookups.h"
#include "tarvolumera/PaymentTerms.h"
#include "tarvolumera/VatCodes.h"
#include "tarvolumera/Warehouse.h"

#include <algorithm>

namespace {

using enum BrowseColumn::Kind;

constexpr BrowseChoice kAccountKinds[] = {
    {"A", "Attività"}, {"P", "Passività"}, {"C", "Costo"}, {"R", "Ricavo"}, {"T", "Transitorio"}};
constexpr BrowseChoice kRegisters[] = {
    {"1", "Solo libro giornale"},    {"2", "Acquisti"},     {"3", "Fatture emesse"}, {"4", "Corrispettivi"},
    {"5", "Fatture in sospensione"}, {"6", "Acquisti CEE"}, {"7", "Fatture CEE"}};
constexpr BrowseChoice kDirections[] = {{"C", "Carico"}, {"S", "Scarico"}};
constexpr BrowseChoice kRelations[] = {{"0", "Cliente"}, {"1", "Fornitore"}, {"2", "Nessuno"}};
constexpr BrowseChoice kVatKinds[] = {{"1", "Imponibile"},
                                      {"2", "Esente"},
                                      {"3", "Non imponibile"},
                                      {"4", "Non soggetto"},
                                      {"5", "Indetraibile"},
                                      {"6", "Non imponibile, dich. d'intento"},
                                      {"7", "Fuori campo"},
                                      {"8", "Inversione contabile, acquisti"},
                                      {"9", "Beni ammortizzabili"},
                                      {"10", "Corrispettivi da ventilare"},
                                      {"11", "Escluso art. 15"},
                                      {"12", "Regime del margine"},
                                      {"13", "Inversione contabile"},
                                      {"14", "Assolta in altro Stato UE"}};

std::vector<BrowseDescription> Chart()
{
    return {{"mastri",
             "Mastri",
             "mastro",
             &sqlmas,
             {"mas_codice"},
             "mas_desc",
             {{"mas_codice", "Mastro", Code, 7},
              {"mas_desc", "Descrizione", Text, 40},
              {"mas_cli", "Clienti", Flag, 7},
              {"mas_for", "Fornitori", Flag, 9}},
             "mas_codice",
             true},
            {"conti",
             "Conti",
             "conto",
             &sqlcon,
             {"con_mas", "con_codice"},
             "con_desc",
             {{"con_mas", "Mastro", Code, 7}, {"con_codice", "Conto", Code, 7}, {"con_desc", "Descrizione", Text, 40}},
             "con_mas, con_codice",
             true},
            {"sottocon",
             "Sottoconti",
             "sottoconto",
             &sqlsot,
             {"sot_mas", "sot_con", "sot_codice"},
             "sot_desc",
             {{"sot_mas", "Mastro", Code, 7},
              {"sot_con", "Conto", Code, 7},
              {"sot_codice", "Sottoconto", Code, 10},
              {"sot_desc", "Descrizione", Text, 40},
              {"sot_tipo", "Tipo", Choice, 11, kAccountKinds}},
             "sot_mas, sot_con, sot_codice",
             true}};
}

std::vector<BrowseDescription> EntryTables()
{
    return {{"causali",
             "Causali contabili",
             "causale",
             &sqlcac,
             {"cac_codice"},
             "cac_desc",
             {{"cac_codice", "Codice", Code, 7},
              {"cac_desc", "Descrizione", Text, 30},
              {"cac_reg", "Registro", Choice, 22, kRegisters},
              {"cac_rel", "Soggetto", Choice, 9, kRelations},
              {"cac_iva", "IVA", Flag, 4},
              {"cac_sez", "Sezione", Code, 7}},
             "cac_codice",
             true},
            {"codiva",
             "Codici IVA",
             "codice IVA",
             &sqliva,
             {"iva_codice"},
             "iva_desc",
             {{"iva_codice", "Codice", Code, 7},
              {"iva_desc", "Descrizione", Text, 44},
              {"iva_aliq", "Aliquota", Amount, 8},
              {"iva_tip", "Tipo", Choice, 30, kVatKinds},
              {"iva_inded", "Indetr. %", Amount, 9},
              {"iva_natura", "Natura", Text, 6}},
             "iva_codice",
             true},
            {"pagamenti",
             "Pagamenti",
             "pagamento",
             &sqlpag,
             {"pag_codice"},
             "pag_desc",
             {{"pag_codice", "Codice", Code, 7},
              {"pag_desc", "Descrizione", Text, 30},
              {"pag_tipo", "Tipo", Text, 11},
              {"pag_ini", "Decorrenza", Text, 12},
              {"pag_gg_ini", "Giorni", Code, 6},
              {"pag_num_rate", "Rate", Code, 4}},
             "pag_codice",
             true},
            {"sezioni",
             "Sezioni IVA",
             "sezione",
             &sqlsez,
             {"sez_codice"},
             "sez_desc",
             {{"sez_codice", "Codice", Code, 7},
              {"sez_desc", "Descrizione", Text, 40},
              {"sez_esc_liq_iva", "Fuori liquidazione", Flag, 8},
              {"sez_esc_spesometro", "Fuori comunicazioni", Flag, 8}},
             "sez_codice",
             true}};
}

std::vector<BrowseDescription> Counterparts()
{
    return {{"fornitori",
             "Fornitori",
             "fornitore",
             &sqlfor,
             {"for_codice"},
             "for_desc",
             {{"for_codice", "Codice", Code, 7},
              {"for_desc", "Ragione sociale", Text, 40},
              {"for_citta", "Città", Text, 20},
              {"for_prov", "Prov.", Text, 5},
              {"for_piva", "Partita IVA", Text, 13},
              {"for_codfis", "Codice fiscale", Text, 16},
              {"for_telefono", "Telefono", Text, 14},
              {"for_email", "E-mail", Text, 28},
              {"for_data_cessazione", "Cessato il", Date, 10}},
             "UPPER(for_desc), for_codice",
             true},
            {"clienti",
             "Clienti",
             "cliente",
             &sqlcli,
             {"cli_codice"},
             "cli_desc",
             {{"cli_codice", "Codice", Code, 7},
              {"cli_desc", "Ragione sociale", Text, 40},
              {"cli_citta", "Città", Text, 20},
              {"cli_prov", "Prov.", Text, 5},
              {"cli_piva", "Partita IVA", Text, 13},
              {"cli_codfis", "Codice fiscale", Text, 16},
              {"cli_telefono", "Telefono", Text, 14},
              {"cli_email", "E-mail", Text, 28},
              {"cli_data_cessazione", "Cessato il", Date, 10}},
             "UPPER(cli_desc), cli_codice",
             true}};
}

std::vector<BrowseDescription> Lookups()
{
    return {
        {"banche",
         "Banche",
         "banca",
         &sqlban,
         {"ban_codice"},
         "ban_desc",
         {{"ban_codice", "Codice", Code, 7},
          {"ban_desc", "Descrizione", Text, 40},
          {"ban_abi", "ABI", Text, 5},
          {"ban_cab", "CAB", Text, 5},
          {"ban_iban", "IBAN", Text, 27},
          {"ban_bic", "BIC", Text, 11}},
         "ban_codice",
         true},
        {"centri",
         "Centri di costo",
         "centro di costo",
         &sqlcdc,
         {"cdc_codice"},
         "cdc_desc",
         {{"cdc_codice", "Codice", Code, 7}, {"cdc_desc", "Descrizione", Text, 40}},
         "cdc_codice",
         true},
        {"agenti",
         "Agenti",
         "agente",
         &sqlage,
         {"age_codice"},
         "age_desc",
         {{"age_codice", "Codice", Code, 7}, {"age_desc", "Descrizione", Text, 40}},
         "age_codice",
         true},
        {"nazioni",
         "Nazioni",
         "nazione",
         &sqlnaz,
         {"naz_codice"},
         "naz_desc",
         {{"naz_codice", "Sigla", Text, 5},
          {"naz_desc", "Nazione", Text, 40},
          {"naz_ue", "UE", Flag, 4},
          {"naz_stato_estero", "Stato estero", Text, 12}},
         "naz_codice"},
        {"province",
         "Province",
         "provincia",
         &sqlprv,
         {"prv_codice"},
         "prv_desc",
         {{"prv_codice", "Sigla", Text, 5}, {"prv_desc", "Provincia", Text, 40}, {"prv_attuale", "Attuale", Flag, 7}},
         "prv_codice"},
        {"aggregazioni",
         "Aggregazioni",
         "aggregazione",
         &sqlagr,
         {"agr_codice"},
         "agr_desc",
         {{"agr_codice", "Codice", Code, 7}, {"agr_desc", "Descrizione", Text, 40}},
         "agr_codice"}};
}

std::vector<BrowseDescription> WarehouseTables()
{
    return {{"articoli",
             "Articoli",
             "articolo",
             &sqlart,
             {"art_codice"},
             "art_desc",
             {{"art_codice", "Codice", Text, 20},
              {"art_desc", "Descrizione", Text, 44},
              {"art_um", "U.M.", Text, 6},
              {"art_ean", "Codice a barre", Text, 14}},
             "art_codice",
             true},
            {"caumag",
             "Causali di magazzino",
             "causale di magazzino",
             &sqlcam,
             {"cam_codice"},
             "cam_desc",
             {{"cam_codice", "Codice", Code, 7},
              {"cam_desc", "Descrizione", Text, 30},
              {"cam_tipo", "Movimento", Choice, 9, kDirections}},
             "cam_codice",
             true}};
}

std::vector<BrowseDescription> AllTables()
{
    std::vector<BrowseDescription> all = Chart();
    for (const auto &more : {EntryTables(), Counterparts(), Lookups(), WarehouseTables()})
        all.insert(all.end(), more.begin(), more.end());
    return all;
}

} // namespace

std::span<const BrowseDescription> BrowseDescriptions()
{
    static const std::vector<BrowseDescription> kAll = AllTables();
    return kAll;
}

const BrowseDescription *FindBrowse(std::string_view name)
{
    const auto all = BrowseDescriptions();
    const auto found = std::find_if(all.begin(), all.end(), [&](const auto &table) { return name == table.name; });
    return found == all.end() ? nullptr : &*found;
}
