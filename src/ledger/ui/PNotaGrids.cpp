// The two grids of the entry editor: VAT lines and rows.
#include "ledger/ui/PNotaForm.h"

#include "ledger/EntryEditing.h"
#include "ledger/QuickEntry.h"
#include "ledger/VatLines.h"
#include "ledger/ui/PNotaCentriCosto.h"
#include "tables/ui/AccountField.h"
#include "tables/ui/Lookups.h"
#include "tarvodlg/base/Dbisam.h"
#include "tarvodlg/base/Numbers.h"
#include "tarvolumera/Causali.h"
#include "tarvolumera/ChartOfAccounts.h"
#include "tarvolumera/JournalTotals.h"

#include <QKeyEvent>
#include <cmath>

namespace {

std::size_t IndexOf(long from_one)
{
    return static_cast<std::size_t>(from_one - 1);
}

bool IsEnter(const QKeyEvent &key)
{
    return (key.key() == Qt::Key_Return || key.key() == Qt::Key_Enter) &&
           (key.modifiers() & ~Qt::KeypadModifier) == Qt::NoModifier;
}

} // namespace

// --- VAT lines

/// Fills the taxable amount of an empty line with what is missing to the total that the user typed.
void CPNota::ProposeTaxable(SACommand *cmd, int line, long code)
{
    PNOTA_IVA &target = m_pnota.iva[IndexOf(line)];
    if (TestIfZero(form_->typed_total) || !TestIfZero(target.impo) || !TestIfZero(target.imposta)) return;
    double rest = form_->typed_total;
    for (const PNOTA_IVA &other : m_pnota.iva) rest -= OwedForLine(other);
    if (!TestIfZero(rest)) target.impo = TaxableOfGross(cmd, m_pnota, code, Round(rest, 2));
}

bool CPNota::SincCodIva(SACommand *cmd, int line)
{
    CommandScope scope(cmd);
    const long typed = form_->vat->Long(line, kVatCode);
    if (typed != 0) ProposeTaxable(scope.get(), line, typed);
    EnterVatCode(scope.get(), &m_pnota, IndexOf(line), typed);
    ProtectIva();
    SetField();
    return m_pnota.iva[IndexOf(line)].iva == typed;
}

void CPNota::CalcIva(SACommand *cmd, int line)
{
    CommandScope scope(cmd);
    ComputeVatLine(scope.get(), &m_pnota, IndexOf(line));
    SetField();
}

void CPNota::OnChangeGridiva(long line, long column)
{
    PNOTA_IVA &target = m_pnota.iva[IndexOf(line)];
    const CSpreadSheet *grid = form_->vat;
    if (column == kVatTaxableAmount) target.impo = grid->Number(line, column);
    if (column == kVatTax) target.imposta = grid->Number(line, column);
    if (column == kVatShare) target.ind = grid->Number(line, column);
    form_->changed_line = {line, column};
    SetChanged(true);
}

bool CPNota::OnLeaveCellGridiva(long line, long column)
{
    const auto changed = form_->changed_line;
    bool is_good = false;
    if (!Attempt(LUMERA_TAG, [&] { is_good = LeaveVatCell(line, column); }) || !is_good)
        form_->changed_line = changed; // once more, when the user tries to leave again
    if (!is_good && column == kVatCode) SetStatus("Non c'è un codice IVA con questo numero: F4 apre l'elenco");
    return is_good;
}

bool CPNota::LeaveVatCell(long line, long column)
{
    const bool is_changed = form_->changed_line == std::pair(line, column);
    form_->changed_line.reset();
    if (!is_changed) return true;
    switch (column) {
    case kVatCode:
        return SincCodIva(nullptr, static_cast<int>(line));
    case kVatTaxableAmount:
        CalcIva(nullptr, static_cast<int>(line));
        break;
    default: // the user's own tax stays as he typed it
        sqlpno.RecalcPNota(nullptr, &m_pnota, 1, 0, 0, 0, 0);
        SetField();
    }
    return true;
}

void CPNota::BrowseIva(int line)
{
    CCodivaBr browser(this);
    browser.m_codice = m_pnota.iva[IndexOf(line)].iva;
    if (browser.DoModal() != IDOK) return;
    form_->vat->SetLong(line, kVatCode, browser.m_codice);
    SetChanged(true);
    form_->changed_line.reset();
    if (SincCodIva(nullptr, line)) form_->vat->SetActiveCell(line, kVatTaxableAmount);
}

void CPNota::OnDblClickGridiva(long line, long column)
{
    if (column == kVatCode && !form_->vat->IsLocked(line, column)) BrowseIva(static_cast<int>(line));
}

/// Enter in the code of an empty line goes on to the rows; in a taxable amount to the next line, since the tax follows.
/// Tab visits every cell.
bool CPNota::OnKeyPressGridiva(long line, long column, QKeyEvent *key)
{
    CSpreadSheet *grid = form_->vat;
    if (!IsEnter(*key)) return false;
    if (column == kVatCode && m_pnota.iva[IndexOf(line)].iva == 0 && !grid->IsEditing()) {
        OnAdvanceGridiva(true);
        return true;
    }
    if (column != kVatTaxableAmount || line >= static_cast<long>(kVatLines) || m_pnota.iva[IndexOf(line)].iva == 0)
        return false;
    if (grid->LeaveActiveCell()) grid->SetActiveCell(line + 1, kVatCode);
    return true;
}

void CPNota::OnAdvanceGridiva(bool forward)
{
    if (forward)
        form_->rows->setFocus(Qt::TabFocusReason);
    else
        SetFocusTo(form_->total);
}

// --- rows

bool CPNota::SincMas(int row)
{
    PNOTA_RIGA &target = m_pnota.righe[IndexOf(row)];
    if (target.row_mas == 0) {
        ClearRow(row);
        return true;
    }
    if (DescribeAccount({target.row_mas, 0, 0}).empty()) return false;
    const long relation = MasterRelation(lumera_db_impo, target.row_mas);
    if (target.row_con == 0 && relation != kNoCounterpart)
        target.row_con = relation == kCustomer ? lumera_db_impo.dit_con_cli : lumera_db_impo.dit_con_for;
    if (target.row_con != 0 && DescribeAccount({target.row_mas, target.row_con, 0}).empty()) target.row_con = 0;
    if (target.row_con == 0 || !AccountExists(nullptr, target.Account())) target.row_sot = 0;
    target.des_sot = DescribeAccount(target.Account());
    return true;
}

bool CPNota::SincCon(int row)
{
    PNOTA_RIGA &target = m_pnota.righe[IndexOf(row)];
    if (target.row_con != 0 && DescribeAccount({target.row_mas, target.row_con, 0}).empty()) return false;
    if (target.row_con == 0 || !AccountExists(nullptr, target.Account())) target.row_sot = 0;
    target.des_sot = DescribeAccount(target.Account());
    return true;
}

bool CPNota::SincSot(int row)
{
    PNOTA_RIGA &target = m_pnota.righe[IndexOf(row)];
    if (target.row_sot != 0 && !AccountExists(nullptr, target.Account())) return false;
    target.des_sot = DescribeAccount(target.Account());
    return true;
}

bool CPNota::SincCod(int row)
{
    PNOTA_RIGA &target = m_pnota.righe[IndexOf(row)];
    if (target.row_cau == 0) return true; // takes the header's
    CAUCONT causale;
    if (!sqlcac.Search(nullptr, target.row_cau, &causale)) return false;
    target.row_descac = target.row_cau == m_pnota.pno_cau ? m_pnota.pno_des_cau.str() : causale.cac_desc.str();
    return true;
}

/// The cell goes into the record at once. An amount typed by hand is the user's from then on, and one with a minus
/// stands positive on the other side.
void CPNota::OnChangeSpread(long row, long column)
{
    PNOTA_RIGA &target = m_pnota.righe[IndexOf(row)];
    const CSpreadSheet *grid = form_->rows;
    switch (column) {
    case kRowMas:
        target.row_mas = grid->Long(row, column);
        break;
    case kRowCon:
        target.row_con = grid->Long(row, column);
        break;
    case kRowSot:
        target.row_sot = grid->Long(row, column);
        break;
    case kRowCausale:
        target.row_cau = grid->Long(row, column);
        break;
    case kRowDocument:
        target.row_n_doc = grid->Text(row, column);
        break;
    case kRowAmount: {
        const double amount = Round(grid->Number(row, column), 2);
        if (amount < 0) target.row_tipo = target.IsDare() ? "A" : target.IsAvere() ? "D" : "";
        target.row_importo = std::fabs(amount);
        target.row_auto = 0;
        break;
    }
    case kRowSide:
        target.row_tipo = target.row_base = grid->Text(row, column);
        break;
    case kRowAutomatic:
        target.row_auto = grid->Text(row, column) == kYes ? 1 : 0;
        break;
    default:
        break;
    }
    form_->changed_row = {row, column};
    SetChanged(true);
    if (column != kRowSide && column != kRowAutomatic) return;
    sqlpno.Squadratura(nullptr, &m_pnota);
    ShowTotals();
}

bool CPNota::OnLeaveCellSpread(long row, long column)
{
    if (row < 1 || row > static_cast<long>(kEntryRows)) return true;
    const auto changed = form_->changed_row;
    bool is_good = false;
    if (!Attempt(LUMERA_TAG, [&] { is_good = LeaveRowCell(row, column); })) form_->changed_row = changed;
    if (!is_good && column <= kRowSot) SetStatus("Nel piano dei conti non c'è: F4 apre l'elenco");
    if (!is_good && column == kRowCausale) SetStatus("Non c'è una causale con questo codice: F4 apre l'elenco");
    return is_good;
}

bool CPNota::LeaveRowCell(long row, long column)
{
    const bool is_changed = form_->changed_row == std::pair(row, column);
    form_->changed_row.reset();
    const int at = static_cast<int>(row);
    if (is_changed) {
        const bool is_good = column == kRowMas       ? SincMas(at)
                             : column == kRowCon     ? SincCon(at)
                             : column == kRowSot     ? SincSot(at)
                             : column == kRowCausale ? SincCod(at)
                                                     : true;
        if (!is_good) {
            form_->changed_row = {row, column}; // asked again when the user tries to leave it so
            return false;
        }
    }
    if (!m_pnota.righe[IndexOf(row)].InUse()) {
        if (is_changed) ClearRow(at); // what was typed without an account is nobody's
        return true;
    }
    if (column == kRowCausale) LeaveRowCausale(&m_pnota, IndexOf(row));
    if (column == kRowDocument) LeaveRowDocument(&m_pnota, IndexOf(row));
    if (column == kRowAmount) LeaveRowAmount(nullptr, &m_pnota, IndexOf(row));
    sqlpno.Squadratura(nullptr, &m_pnota);
    SetField();
    return true;
}

void CPNota::ClearRow(int row)
{
    m_pnota.righe[IndexOf(row)] = PNOTA_RIGA{};
    std::erase_if(m_pnota.centri, [row](const PNOTA_CENTRO &line) { return line.pcc_riga == row; });
    sqlpno.Squadratura(nullptr, &m_pnota);
    SetField();
}

void CPNota::TakeAccount(int row, long mas, long con, long sot)
{
    PNOTA_RIGA &target = m_pnota.righe[IndexOf(row)];
    target.row_mas = mas;
    target.row_con = con;
    target.row_sot = sot;
    form_->changed_row.reset();
    SincMas(row);
    SetField();
    SetChanged(true);
    form_->rows->SetActiveCell(row, sot != 0 ? kRowCausale : target.row_con != 0 ? kRowSot : kRowCon);
}

void CPNota::BrowseMastri(int row)
{
    CMastriBr browser(this);
    browser.m_codice = m_pnota.righe[IndexOf(row)].row_mas;
    if (browser.DoModal() == IDOK) TakeAccount(row, browser.m_codice, 0, 0);
}

void CPNota::BrowseConti(int row)
{
    const PNOTA_RIGA &current = m_pnota.righe[IndexOf(row)];
    CContiBr browser(this);
    browser.m_mas = current.row_mas;
    browser.m_con = current.row_con;
    if (browser.DoModal() == IDOK) TakeAccount(row, browser.m_mas, browser.m_con, 0);
}

void CPNota::BrowseSottocon(int row)
{
    if (const auto chosen = BrowseAccount(this, m_pnota.righe[IndexOf(row)].Account()))
        TakeAccount(row, chosen->mas, chosen->con, chosen->sot);
}

void CPNota::BrowseCod(int row)
{
    if (row < 1 || !m_pnota.righe[IndexOf(row)].InUse()) return BeepRefused();
    CCaucontBr browser(this);
    browser.m_codice = m_pnota.righe[IndexOf(row)].row_cau;
    if (browser.DoModal() != IDOK) return;
    m_pnota.righe[IndexOf(row)].row_cau = browser.m_codice;
    SincCod(row);
    SetField();
    SetChanged(true);
}

void CPNota::OnDblClickSpread(long row, long column)
{
    const int at = static_cast<int>(row);
    switch (column) {
    case kRowMas:
        return BrowseMastri(at);
    case kRowCon:
        return BrowseConti(at);
    case kRowSot:
    case kRowAccount:
        return BrowseSottocon(at);
    case kRowCausale:
        return BrowseCod(at);
    case kRowCentres:
        return OnCentriCosto();
    default:
        return;
    }
}

void CPNota::OnClickSpread(long row, long column)
{
    if (column == kRowCentres && m_pnota.righe[IndexOf(row)].InUse()) OnCentriCosto();
}

/// Enter in the first cell of an unused row ends the rows; Ctrl+Del empties the row.
bool CPNota::OnKeyPressSpread(long row, long column, QKeyEvent *key)
{
    if (row < 1 || form_->rows->IsEditing()) return false;
    if (key->key() == Qt::Key_Delete && key->modifiers().testFlag(Qt::ControlModifier)) {
        ClearRow(static_cast<int>(row));
        SetChanged(true);
        return true;
    }
    if (!IsEnter(*key) || column != kRowMas || m_pnota.righe[IndexOf(row)].InUse()) return false;
    OnAdvanceSpread(true);
    return true;
}

void CPNota::OnAdvanceSpread(bool forward)
{
    if (forward)
        focusNextPrevChild(true);
    else if (m_pnota.pno_cau_iva == 1)
        form_->vat->setFocus(Qt::BacktabFocusReason);
    else
        SetFocusTo(form_->total);
}

void CPNota::OnCentriCosto()
{
    const int row = ActiveRow();
    if (row < 1 || !m_pnota.righe[IndexOf(row)].InUse()) return BeepRefused();
    CPNotaCentriCosto split(&m_pnota, row, this);
    split.DoModal();
    if (!split.m_changed) return;
    SetField();
    SetChanged(true);
}
