#include "ledger/ui/PNotaAllegati.h"
#include "tables/ui/Lookups.h"
#include "tarvodlg/base/Dbisam.h"
#include "tarvodlg/base/Numbers.h"
#include "tarvodlg/widgets/FormBuilder.h"
#include "tarvodlg/widgets/SpreadSheet.h"
#include "tarvolumera/Attachments.h"

#include <QAbstractButton>
#include <QKeyEvent>
#include <fmt/format.h>
#include <set>

namespace {

enum HolderColumn : long { kKind = 1, kCode, kName, kDate, kAmount };

constexpr const char *kCustomerWord = "Cliente", *kSupplierWord = "Fornitore";
constexpr long kBlankLines = 20; ///< below those that are there

std::vector<COINTESTATARI> HoldersOf(SACommand *cmd, long entry)
{
    std::vector<COINTESTATARI> holders;
    sqlcoi.ForEach(
        cmd, " WHERE coi_pno = :codice ORDER BY coi_codice",
        [entry](SACommand &query) { query.Param("codice").setAsLong(entry); },
        [&](const COINTESTATARI &holder) {
            holders.push_back(holder);
            return true;
        });
    return holders;
}

/// The name of a customer or supplier; empty when there is none.
std::string HolderName(bool is_supplier, long code)
{
    if (is_supplier) {
        FORNITORI supplier;
        sqlfor.Search(nullptr, code, &supplier);
        return supplier.for_desc.str();
    }
    CLIENTI customer;
    sqlcli.Search(nullptr, code, &customer);
    return customer.cli_desc.str();
}

} // namespace

CCointestatari::CCointestatari(long entry, CWnd *parent)
    : CTarvoDialog(parent), entry_(entry), grid_(new CSpreadSheet(this))
{
    setWindowTitle(ToQt(fmt::format("Cointestatari del movimento n. {}", entry)));
    using Type = CSpreadSheet::Type;
    grid_->SetColumns(
        {{.title = "Tipo", .type = Type::Choice, .width = 11, .choices = {"", kCustomerWord, kSupplierWord}},
         {.title = "Codice", .type = Type::Code, .width = 8},
         {.title = "Nome", .width = 32, .locked = true, .stretch = true},
         {.title = "Data", .type = Type::Date, .width = 12},
         {.title = "Importo", .type = Type::Amount, .width = 14, .sum = true}});
    grid_->ShowSums(true);
    grid_->setAccessibleName("Cointestatari");
    grid_->on_leave_cell = [this](long row, long column) { return OnLeaveCellSpread(row, column); };
    grid_->on_dbl_click = [this](long row, long column) { OnDblClickSpread(row, column); };
    grid_->on_key_press = [this](long row, long, QKeyEvent *key) { return OnKeyPressSpread(row, key); };
    grid_->on_change = [this](long, long) { SetChanged(true); };
    grid_->on_advance = [this](bool forward) {
        if (forward) save_->setFocus(Qt::TabFocusReason);
    };
    FormBuilder form(this);
    form.Fill(grid_);
    save_ = AddCommand({.caption = "F2 - &Salva", .icon = "salva", .run = [this] { OnRecordSalva(); }});
    AddCommand({.caption = "Annulla", .run = [this] { OnCancel(); }, .checks_field = false});
}

CCointestatari::~CCointestatari() = default;

bool CCointestatari::OnInitDialog()
{
    return Guarded(LUMERA_TAG, [this] {
        ShowLines(nullptr);
        SetChanged(false);
        grid_->setFocus();
        grid_->SetActiveCell(1, kKind);
    });
}

void CCointestatari::ShowLines(SACommand *cmd)
{
    const std::vector<COINTESTATARI> holders = HoldersOf(cmd, entry_);
    const SpreadUpdate update(grid_);
    grid_->SetRowCount(static_cast<long>(holders.size()) + kBlankLines);
    long row = 0;
    for (const COINTESTATARI &holder : holders) {
        grid_->SetRowData(++row, holder.coi_codice);
        grid_->SetText(row, kKind, holder.coi_rel == kSupplier ? kSupplierWord : kCustomerWord);
        grid_->SetLong(row, kCode, holder.coi_cli_for);
        grid_->SetLong(row, kDate, holder.coi_data);
        grid_->SetNumber(row, kAmount, holder.coi_importo);
        ShowName(row);
    }
}

void CCointestatari::ShowName(long row)
{
    const long code = grid_->Long(row, kCode);
    grid_->SetText(row, kName, code == 0 ? "" : HolderName(grid_->Text(row, kKind) == kSupplierWord, code));
}

bool CCointestatari::OnLeaveCellSpread(long row, long column)
{
    if (column > kCode) return true;
    const long code = grid_->Long(row, kCode);
    if (column == kCode && code != 0 && grid_->Text(row, kKind).empty()) grid_->SetText(row, kKind, kCustomerWord);
    ShowName(row);
    const bool is_good = column == kKind || code == 0 || !grid_->Text(row, kName).empty();
    SetStatus(is_good ? QString() : QStringLiteral("Non c'è nessuno con questo codice: F4 apre l'elenco"));
    return is_good;
}

void CCointestatari::OnDblClickSpread(long row, long column)
{
    if (column != kCode || row < 1) return;
    const auto browse = [&](auto browser) {
        browser->m_codice = grid_->Long(row, kCode);
        if (browser->DoModal() != IDOK) return;
        grid_->SetLong(row, kCode, browser->m_codice);
        OnLeaveCellSpread(row, kCode);
        SetChanged(true);
    };
    if (grid_->Text(row, kKind) == kSupplierWord)
        browse(std::make_unique<CFornitoriBr>(this));
    else
        browse(std::make_unique<CClientiBr>(this));
}

bool CCointestatari::OnKeyPressSpread(long row, QKeyEvent *key)
{
    const bool clears = key->key() == Qt::Key_Delete && key->modifiers().testFlag(Qt::ControlModifier);
    if (!clears || grid_->IsEditing() || row < 1) return false;
    for (const long column : {kKind, kCode, kName, kDate, kAmount}) grid_->ClearCell(row, column);
    SetChanged(true);
    return true;
}

/// Refuses a line with a date or an amount but nobody it belongs to, and a code that its kind does not have.
bool CCointestatari::CheckLines()
{
    for (long row = 1; row <= grid_->RowCount(); ++row) {
        const bool is_filled = grid_->Long(row, kDate) != 0 || !TestIfZero(grid_->Number(row, kAmount));
        const bool is_known = !grid_->Text(row, kName).empty();
        if (is_known || (grid_->Long(row, kCode) == 0 && !is_filled)) continue;
        BeepRefused();
        SetStatus("Manca il codice del cointestatario");
        grid_->setFocus();
        grid_->SetActiveCell(row, kCode);
        return false;
    }
    return true;
}

void CCointestatari::StoreLines(SACommand *cmd)
{
    SATransaction transaction(cmd);
    std::set<long> kept;
    for (long row = 1; row <= grid_->RowCount(); ++row) {
        if (grid_->Long(row, kCode) == 0) continue;
        COINTESTATARI holder;
        holder.coi_codice = grid_->RowData(row);
        holder.coi_pno = entry_;
        holder.coi_rel = grid_->Text(row, kKind) == kSupplierWord ? kSupplier : kCustomer;
        holder.coi_cli_for = grid_->Long(row, kCode);
        holder.coi_data = grid_->Long(row, kDate);
        holder.coi_importo = grid_->Number(row, kAmount);
        sqlcoi.SqlTransaction(cmd, holder.coi_codice == 0 ? kInsert : kUpdate, &holder);
        kept.insert(holder.coi_codice);
    }
    // Only what was on screen: a line that another station added meanwhile stays.
    for (long row = 1; row <= grid_->RowCount(); ++row) {
        COINTESTATARI holder;
        holder.coi_codice = grid_->RowData(row);
        if (holder.coi_codice != 0 && !kept.contains(holder.coi_codice)) sqlcoi.SqlTransaction(cmd, kDelete, &holder);
    }
    transaction.Commit();
}

void CCointestatari::OnRecordSalva()
{
    if (!grid_->LeaveActiveCell() || !CheckLines()) return;
    const bool stored = Guarded(LUMERA_TAG, [this] {
        CommandScope scope(nullptr);
        StoreLines(scope.get());
    });
    if (stored) EndDialog(IDOK);
}
