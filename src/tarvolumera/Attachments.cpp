#include "tarvolumera/Attachments.h"

#include "tarvodlg/base/UserInterface.h"
#include "tarvolumera/Protocols.h"

#include <openssl/evp.h>

#include <array>
#include <fmt/format.h>

CPSQLall sqlall;
CPSQLpat sqlpat;
CPSQLcoi sqlcoi;
CPSQLcor sqlcor;
CPSQLpni sqlpni;

namespace {

constexpr const char *kNextCoHolder = "SELECT COALESCE(MAX(coi_codice),0) AS codice FROM admin.pnotacoi";

long NextOf(SACommand *cmd, const std::string &text)
{
    SACommand query(cmd->Connection(), text);
    query.Execute();
    return query.FetchNext() ? query.Field(1).asLong() + 1 : 1;
}

/// The columns of a description but the bytes: a list must not carry every document through memory.
std::string LightColumns(const TableDescription &description)
{
    std::string list;
    for (const ColumnDescription &column : description.Columns()) {
        if (column.kind == ColumnKind::Bytes) continue;
        if (!list.empty()) list += ", ";
        list += column.name;
    }
    return list;
}

std::string LightSelect(const TableDescription &description)
{
    return "SELECT " + LightColumns(description) + " FROM " + description.Table();
}

/// Every column but the keys and the bytes, by the keys.
std::string LightUpdate(const TableDescription &description)
{
    std::string assignments, keys;
    for (const ColumnDescription &column : description.Columns()) {
        if (column.kind == ColumnKind::Bytes) continue;
        std::string &list = (column.flags & kKey) != 0 ? keys : assignments;
        if (!list.empty()) list += (column.flags & kKey) != 0 ? " AND " : ", ";
        list += std::string(column.name) + " = :" + column.name;
    }
    return "UPDATE " + description.Table() + " SET " + assignments + " WHERE " + keys;
}

void UpdateWithoutBytes(SACommand *cmd, const TableDescription &description, const void *record)
{
    SACommand update(cmd->Connection(), LightUpdate(description));
    description.Bind(&update, record);
    update.Execute();
    if (update.RowsAffected() == 0)
        throw SAException(SA_UserGenerated_Error, 20060,
                          "Il documento non esiste più: è stato eliminato da un'altra stazione.", SAFault::Changed);
}

} // namespace

CPSQLall::CPSQLall()
    : CTable({"allegati",
              {LUMERA_COLUMN(ALLEGATI, all_codice, kKey), LUMERA_COLUMN(ALLEGATI, all_anno, kKey),
               LUMERA_PLAIN(ALLEGATI, all_tab_tipo), LUMERA_PLAIN(ALLEGATI, all_tab_codice),
               LUMERA_PLAIN(ALLEGATI, all_desc), LUMERA_PLAIN(ALLEGATI, all_fname), LUMERA_PLAIN(ALLEGATI, all_user),
               LUMERA_PLAIN(ALLEGATI, all_escludi), LUMERA_PLAIN(ALLEGATI, all_num_fat),
               LUMERA_DATE(ALLEGATI, all_data_fat), LUMERA_PLAIN(ALLEGATI, all_bytes_size),
               LUMERA_PLAIN(ALLEGATI, all_date_time), LUMERA_PLAIN(ALLEGATI, all_last_update),
               LUMERA_CODE(ALLEGATI, all_impronta), LUMERA_PLAIN(ALLEGATI, all_data)}})
{
}

bool CPSQLall::Search(SACommand *cmd, long year, long code, ALLEGATI *record, bool) const
{
    *record = ALLEGATI{};
    record->all_anno = year;
    record->all_codice = code;
    const bool found = SearchByKeys(cmd, record);
    if (!found) *record = ALLEGATI{};
    return found;
}

bool CPSQLall::SearchByCode(SACommand *cmd, long code, ALLEGATI *record) const
{
    *record = ALLEGATI{};
    return First(
        cmd, " WHERE all_codice = :codice", [&](SACommand &query) { query.Param("codice").setAsLong(code); }, record);
}

void CPSQLall::Store(SACommand *cmd, ALLEGATI *record) const
{
    CommandScope scope(cmd);
    SATransaction transaction(scope.get());
    LockNumbers(scope.get(), NumberSeries::Files);
    // An entry keeps the number of the invoice that it registers; another file must not get it when that one is
    // deleted.
    record->all_codice =
        NextOf(scope.get(), "SELECT MAX(codice) FROM (SELECT MAX(all_codice) AS codice FROM admin.allegati"
                            " UNION ALL SELECT MAX(pno_all) AS codice FROM admin.pnota1) AS usati");
    record->all_bytes_size = static_cast<long>(record->all_data.size());
    record->all_user = CurrentUserInterface().UserName();
    if (record->all_date_time.IsNull()) record->all_date_time = CurrentMoment();
    record->all_last_update = CurrentMoment();
    Transact(scope.get(), kInsert, record);
    transaction.Commit();
}

void CPSQLall::SqlTransaction(SACommand *cmd, int operation, ALLEGATI *record) const
{
    CommandScope scope(cmd);
    if (operation == kInsert) return Store(scope.get(), record);
    if (operation == kDelete) return Transact(scope.get(), kDelete, record);
    record->all_last_update = CurrentMoment();
    if (record->all_data.empty()) return UpdateWithoutBytes(scope.get(), Description(), record);
    record->all_bytes_size = static_cast<long>(record->all_data.size());
    Transact(scope.get(), kUpdate, record);
}

void CPSQLall::ForEachOfKind(SACommand *cmd, long kind, const SADateTime &first, const SADateTime &stop,
                             const std::function<bool(const ALLEGATI &)> &each) const
{
    CommandScope scope(cmd);
    std::string text = LightSelect(Description()) + " WHERE all_tab_tipo = :tipo";
    if (!first.IsNull()) text += " AND all_date_time >= :start";
    if (!stop.IsNull()) text += " AND all_date_time < :stop";
    SACommand query(scope->Connection(), text + " ORDER BY all_tab_tipo, all_date_time, all_codice");
    query.Param("tipo").setAsLong(kind);
    if (!first.IsNull()) query.Param("start").setAsDateTime(first);
    if (!stop.IsNull()) query.Param("stop").setAsDateTime(stop);
    query.Execute();
    while (query.FetchNext()) {
        ALLEGATI record;
        ReadFields(&query, &record);
        if (!each(record)) break;
    }
}

bool CPSQLall::SearchByContent(SACommand *cmd, long kind, std::string_view digest, ALLEGATI *record) const
{
    *record = ALLEGATI{};
    CommandScope scope(cmd);
    SACommand query(scope->Connection(),
                    LightSelect(Description()) +
                        " WHERE all_impronta = :impronta AND all_tab_tipo = :tipo ORDER BY all_codice");
    query.Param("impronta").setAsString(digest);
    query.Param("tipo").setAsLong(kind);
    return FetchRecord(&query, record);
}

CPSQLpat::CPSQLpat()
    : CCodeTable({"pnotaall",
                  {LUMERA_COLUMN(PNOTA_ALLEGATO, pat_codice, kKey), LUMERA_PLAIN(PNOTA_ALLEGATO, pat_pno),
                   LUMERA_PLAIN(PNOTA_ALLEGATO, pat_desc), LUMERA_PLAIN(PNOTA_ALLEGATO, pat_fname),
                   LUMERA_PLAIN(PNOTA_ALLEGATO, pat_user), LUMERA_PLAIN(PNOTA_ALLEGATO, pat_bytes_size),
                   LUMERA_PLAIN(PNOTA_ALLEGATO, pat_created_at), LUMERA_PLAIN(PNOTA_ALLEGATO, pat_last_update),
                   LUMERA_PLAIN(PNOTA_ALLEGATO, pat_data)}})
{
}

void CPSQLpat::Store(SACommand *cmd, PNOTA_ALLEGATO *record) const
{
    CommandScope scope(cmd);
    SATransaction transaction(scope.get());
    LockNumbers(scope.get(), NumberSeries::Files);
    record->pat_codice = NextOf(scope.get(), "SELECT pat_codice FROM admin.pnotaall ORDER BY pat_codice DESC LIMIT 1");
    record->pat_bytes_size = static_cast<long>(record->pat_data.size());
    record->pat_user = CurrentUserInterface().UserName();
    record->pat_created_at = CurrentMoment();
    record->pat_last_update = record->pat_created_at;
    Transact(scope.get(), kInsert, record);
    transaction.Commit();
}

void CPSQLpat::SqlTransaction(SACommand *cmd, int operation, PNOTA_ALLEGATO *record) const
{
    CommandScope scope(cmd);
    if (operation == kInsert) return Store(scope.get(), record);
    if (operation == kDelete) return Transact(scope.get(), kDelete, record);
    record->pat_last_update = CurrentMoment();
    if (record->pat_data.empty()) return UpdateWithoutBytes(scope.get(), Description(), record);
    record->pat_bytes_size = static_cast<long>(record->pat_data.size());
    Transact(scope.get(), kUpdate, record);
}

std::vector<PNOTA_ALLEGATO> CPSQLpat::ListOf(SACommand *cmd, long entry) const
{
    CommandScope scope(cmd);
    SACommand query(scope->Connection(), LightSelect(Description()) + " WHERE pat_pno = :codice ORDER BY pat_codice");
    query.Param("codice").setAsLong(entry);
    query.Execute();
    std::vector<PNOTA_ALLEGATO> files;
    while (query.FetchNext()) ReadFields(&query, &files.emplace_back());
    return files;
}

CPSQLcoi::CPSQLcoi()
    : CCodeTable({"pnotacoi",
                  {LUMERA_COLUMN(COINTESTATARI, coi_codice, kKey), LUMERA_PLAIN(COINTESTATARI, coi_pno),
                   LUMERA_DATE(COINTESTATARI, coi_data), LUMERA_PLAIN(COINTESTATARI, coi_rel),
                   LUMERA_PLAIN(COINTESTATARI, coi_cli_for), LUMERA_PLAIN(COINTESTATARI, coi_importo)}})
{
}

void CPSQLcoi::Blank(SACommand *cmd, COINTESTATARI *record) const
{
    CommandScope scope(cmd);
    *record = COINTESTATARI{};
    record->coi_codice = NextOf(scope.get(), kNextCoHolder);
}

void CPSQLcoi::SqlTransaction(SACommand *cmd, int operation, COINTESTATARI *record) const
{
    CommandScope scope(cmd);
    if (operation != kInsert) return CTable::SqlTransaction(scope.get(), operation, record);
    SATransaction transaction(scope.get());
    LockNumbers(scope.get(), NumberSeries::Journal);
    record->coi_codice = NextOf(scope.get(), kNextCoHolder);
    CTable::SqlTransaction(scope.get(), kInsert, record);
    transaction.Commit();
}

CPSQLcor::CPSQLcor()
    : CTable({"pnotacor",
              {DateColumn<&CORRISPETTIVI::cor_data>("cor_data", kKey), LUMERA_COLUMN(CORRISPETTIVI, cor_sez, kKey),
               LUMERA_CODE(CORRISPETTIVI, cor_pno), LUMERA_PLAIN(CORRISPETTIVI, cor_importo)}})
{
}

bool CPSQLcor::Search(SACommand *cmd, long date, long section, CORRISPETTIVI *record, bool) const
{
    *record = CORRISPETTIVI{};
    record->cor_data = date;
    record->cor_sez = section;
    const bool found = SearchByKeys(cmd, record);
    if (!found) *record = CORRISPETTIVI{};
    return found;
}

CPSQLpni::CPSQLpni()
    : CCodeTable({"pnotaim1",
                  {LUMERA_COLUMN(PNOTA_IMMAGINE, pni_codice, kKey), LUMERA_PLAIN(PNOTA_IMMAGINE, pni_formato),
                   LUMERA_PLAIN(PNOTA_IMMAGINE, pni_data)}})
{
}

std::string ContentDigest(std::string_view bytes)
{
    std::array<unsigned char, 32> digest{};
    unsigned int length = 0;
    if (EVP_Digest(bytes.data(), bytes.size(), digest.data(), &length, EVP_sha256(), nullptr) != 1)
        throw SAException(SA_Library_Error, 0, "Impossibile calcolare l'impronta del documento.");
    std::string text;
    for (const unsigned char byte : digest) fmt::format_to(std::back_inserter(text), "{:02x}", byte);
    return text;
}

std::vector<std::byte> ToBytes(std::string_view text)
{
    const auto *first = reinterpret_cast<const std::byte *>(text.data());
    return {first, first + text.size()};
}

std::string_view AsText(const std::vector<std::byte> &bytes)
{
    return {reinterpret_cast<const char *>(bytes.data()), bytes.size()};
}

SADateTime CurrentMoment()
{
    UserInterface &user = CurrentUserInterface();
    const SADateTime day = ToSqlDate(user.Today());
    const int second = static_cast<int>(user.SecondOfDay());
    return {day.GetYear(), day.GetMonth(), day.GetDay(), second / 3600, second / 60 % 60, second % 60};
}
