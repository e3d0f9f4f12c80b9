#include "tables/ui/Causali.h"

#include "tables/ui/AccountField.h"
#include "tables/ui/Choices.h"
#include "tarvodlg/widgets/SpreadSheet.h"
#include "tarvolumera/fatturapa/FatturaCodes.h"

#include <QKeyEvent>
#include <fmt/format.h>

namespace {

const TableEditorRegistration<CCausali> kRegistration("causali");

enum RowColumn : long { kMas = 1, kCon, kSot, kDescription, kSide, kAutomatic };

constexpr const char *kDebit = "D", *kCredit = "A", *kYes = "SI", *kNo = "NO";

std::vector<std::pair<long, QString>> DocumentTypes()
{
    std::vector<std::pair<long, QString>> choices{{0, "nessuno"}};
    for (long type = 1; type <= 29; ++type) {
        const std::string code = fmt::format("TD{:02}", type);
        if (!fatturapa::IsKnownTipoDocumento(code)) continue;
        const std::string words(fatturapa::TipoDocumentoText(code));
        choices.emplace_back(type, ToQt(words.starts_with("***") ? code : code + " " + words).left(60));
    }
    return choices;
}

std::string SideText(long side)
{
    return side == 0 ? kDebit : side == 1 ? kCredit : "";
}

bool SameRow(const CAUCONT_RIGA &one, const CAUCONT_RIGA &other)
{
    return one.car_mas == other.car_mas && one.car_con == other.car_con && one.car_sot == other.car_sot &&
           one.car_tipo == other.car_tipo && one.car_auto == other.car_auto;
}

bool IsUsed(const CAUCONT_RIGA &line)
{
    return line.car_mas != 0 || line.car_con != 0 || line.car_sot != 0;
}

} // namespace

CCausali::CCausali(CWnd *parent) : CTableEditor("causali", parent)
{
    FormBuilder form(this);
    KeyField("cac_codice", form.Code("&Codice", m_record.cac_codice));
    Field("cac_desc", form.Beside().Text("&Descrizione", m_record.cac_desc));
    Field("cac_reg", form.Choice("&Registro", m_record.cac_reg, CodeChoicesOf("causali", "cac_reg")));
    Field("cac_rel", form.Beside().Choice("Soggett&o", m_record.cac_rel, CodeChoicesOf("causali", "cac_rel")));
    Field("cac_sez", form.Code("Se&zione IVA", m_record.cac_sez, Lookup("sezioni")));
    Field("cac_iva", form.Flag("Con righe &IVA", m_record.cac_iva));
    Field("cac_iva_sosp", form.Beside().Flag("IVA in sos&pensione", m_record.cac_iva_sosp));
    Field("cac_nota_variazione", form.Beside().Flag("Nota di &variazione", m_record.cac_nota_variazione));
    Field("cac_allegati", form.Beside().Flag("Chiede gli alle&gati", m_record.cac_allegati));
    Field("cac_tipo_documento", form.Choice("&Tipo documento", m_record.cac_tipo_documento, DocumentTypes()));
    form.Section("Righe del modello");
    BuildRows(form);
}

void CCausali::BuildRows(FormBuilder &form)
{
    using Type = CSpreadSheet::Type;
    rows_ = new CSpreadSheet(this);
    rows_->SetColumns({{.title = "Mastro", .type = Type::Code, .width = 7},
                       {.title = "Conto", .type = Type::Code, .width = 7},
                       {.title = "Sottoc.", .type = Type::Code, .width = 8},
                       {.title = "Descrizione", .type = Type::Text, .width = 40, .locked = true, .stretch = true},
                       {.title = "D/A", .type = Type::Choice, .width = 5, .choices = {"", kDebit, kCredit}},
                       {.title = "Automatica", .type = Type::Choice, .width = 10, .choices = {kNo, kYes}}});
    rows_->SetRowCount(static_cast<long>(m_record.righe.size()));
    rows_->setAccessibleName("Righe del modello");
    rows_->on_leave_cell = [this](long row, long column) { return OnLeaveCellSpread(row, column); };
    rows_->on_dbl_click = [this](long row, long column) { OnDblClickSpread(row, column); };
    rows_->on_key_press = [this](long row, long, QKeyEvent *key) { return OnKeyPressSpread(row, key); };
    rows_->on_change = [this](long, long) { SetChanged(true); };
    form.Fill(rows_);
}

void CCausali::OnNewRecord()
{
    m_record.cac_reg = 1;
    m_record.cac_rel = kNoCounterpart;
}

void CCausali::SetField()
{
    {
        const SpreadUpdate update(rows_);
        for (std::size_t i = 0; i < m_record.righe.size(); ++i) ShowRow(static_cast<long>(i + 1), m_record.righe[i]);
    }
    shown_rows_ = m_record.righe;
    CTableEditor::SetField();
}

void CCausali::GetField()
{
    CTableEditor::GetField();
    rows_->LeaveActiveCell();
    for (std::size_t i = 0; i < m_record.righe.size(); ++i) {
        CAUCONT_RIGA line = ReadRow(static_cast<long>(i + 1));
        line.car_cau = m_record.righe[i].car_cau;
        line.car_idx = m_record.righe[i].car_idx;
        m_record.righe[i] = line;
    }
}

bool CCausali::HasEdits()
{
    if (CTableEditor::HasEdits()) return true;
    for (std::size_t i = 0; i < shown_rows_.size(); ++i)
        if (!SameRow(shown_rows_[i], m_record.righe[i])) return true;
    return false;
}

void CCausali::FocusColumn(const std::string &column, int row)
{
    if (row == 0) return CTableEditor::FocusColumn(column, row);
    const long cell = column == "car_con" ? kCon : column == "car_sot" ? kSot : column == "car_tipo" ? kSide : kMas;
    rows_->setFocus();
    rows_->SetActiveCell(row, cell);
}

AccountKey CCausali::AccountAt(long row) const
{
    return {rows_->Long(row, kMas), rows_->Long(row, kCon), rows_->Long(row, kSot)};
}

void CCausali::ShowRow(long row, const CAUCONT_RIGA &line)
{
    const bool is_used = IsUsed(line);
    rows_->SetLong(row, kMas, line.car_mas);
    rows_->SetLong(row, kCon, line.car_con);
    rows_->SetLong(row, kSot, line.car_sot);
    rows_->SetText(row, kSide, is_used ? SideText(line.car_tipo) : "");
    rows_->SetText(row, kAutomatic, !is_used ? "" : line.car_auto == 1 ? kYes : kNo);
    ShowDescription(row);
}

CAUCONT_RIGA CCausali::ReadRow(long row) const
{
    CAUCONT_RIGA line;
    const AccountKey account = AccountAt(row);
    line.car_mas = account.mas;
    line.car_con = account.con;
    line.car_sot = account.sot;
    const std::string side = rows_->Text(row, kSide);
    line.car_tipo = side == kDebit ? 0 : side == kCredit ? 1 : 2;
    line.car_auto = rows_->Text(row, kAutomatic) == kYes ? 1 : 0;
    return line;
}

void CCausali::ShowDescription(long row)
{
    const AccountKey account = AccountAt(row);
    rows_->SetText(row, kDescription, account.mas == 0 ? std::string() : DescribeAccount(account));
}

/// As in the fields of an account: the part that is left must exist, what stands below it and does not exist there any
/// more is emptied.
bool CCausali::OnLeaveCellSpread(long row, long column)
{
    if (column > kSot) return true;
    const AccountKey account = AccountAt(row);
    if (column == kMas && account.mas == 0) {
        ClearRow(row);
        return true;
    }
    const bool is_empty = (column == kCon && account.con == 0) || (column == kSot && account.sot == 0);
    const AccountKey left{account.mas, column >= kCon ? account.con : 0, column >= kSot ? account.sot : 0};
    const bool has_upper = account.mas != 0 && (column < kSot || account.con != 0);
    if (!is_empty && (!has_upper || DescribeAccount(left).empty())) {
        SetStatus(ToQt("Il conto " + AccountText(left) + " non esiste. Ctrl+Canc svuota la riga, F4 cerca il conto."));
        return false;
    }
    SetStatus({});
    if (column == kMas && account.con != 0 && DescribeAccount({account.mas, account.con, 0}).empty())
        rows_->SetLong(row, kCon, 0);
    if (column != kSot && account.sot != 0 && (rows_->Long(row, kCon) == 0 || DescribeAccount(AccountAt(row)).empty()))
        rows_->SetLong(row, kSot, 0);
    ShowDescription(row);
    if (account.mas != 0 && rows_->Text(row, kAutomatic).empty()) rows_->SetText(row, kAutomatic, kNo);
    return true;
}

bool CCausali::OnKeyPressSpread(long row, QKeyEvent *key)
{
    const bool clears = key->key() == Qt::Key_Delete && key->modifiers().testFlag(Qt::ControlModifier);
    if (!clears || rows_->IsEditing() || row < 1) return false; // in a cell it deletes a word
    ClearRow(row);
    SetChanged(true);
    return true;
}

void CCausali::ClearRow(long row)
{
    for (long column = kMas; column <= kAutomatic; ++column) rows_->ClearCell(row, column);
}

void CCausali::OnDblClickSpread(long row, long column)
{
    if (column > kSot) return;
    const std::optional<AccountKey> chosen = BrowseAccount(this, AccountAt(row));
    if (!chosen) return;
    rows_->SetLong(row, kMas, chosen->mas);
    rows_->SetLong(row, kCon, chosen->con);
    rows_->SetLong(row, kSot, chosen->sot);
    if (rows_->Text(row, kAutomatic).empty()) rows_->SetText(row, kAutomatic, kNo);
    ShowDescription(row);
    SetChanged(true);
    rows_->SetActiveCell(row, kSide);
}
