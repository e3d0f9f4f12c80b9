#include "ledger/ui/PNotaCentriCosto.h"

#include "tables/ui/Lookups.h"
#include "tarvodlg/base/Dbisam.h"
#include "tarvodlg/base/Numbers.h"
#include "tarvodlg/widgets/FormBuilder.h"
#include "tarvodlg/widgets/SpreadSheet.h"
#include "tarvolumera/Lookups.h"

#include <QAbstractButton>
#include <QKeyEvent>
#include <QLabel>
#include <algorithm>
#include <fmt/format.h>

namespace {

enum LineColumn : long { kCentre = 1, kDescription, kAmount };

const QString kHint = QStringLiteral("F4 apre l'elenco dei centri; un importo lasciato vuoto prende il resto");

bool SameLines(const std::vector<PNOTA_CENTRO> &one, const std::vector<PNOTA_CENTRO> &other)
{
    return std::equal(one.begin(), one.end(), other.begin(), other.end(),
                      [](const PNOTA_CENTRO &a, const PNOTA_CENTRO &b) {
                          return a.pcc_cdc == b.pcc_cdc && ToCents(a.pcc_importo) == ToCents(b.pcc_importo);
                      });
}

std::vector<PNOTA_CENTRO> LinesOf(const PNOTA &entry, long row)
{
    std::vector<PNOTA_CENTRO> lines;
    std::copy_if(entry.centri.begin(), entry.centri.end(), std::back_inserter(lines),
                 [row](const PNOTA_CENTRO &line) { return line.pcc_riga == row; });
    return lines;
}

/// The name of a cost centre; nothing when there is none of that code.
std::optional<std::string> CentreName(long code)
{
    CENTRI centre;
    if (!sqlcdc.Search(nullptr, code, &centre)) return std::nullopt;
    return centre.cdc_desc.str();
}

} // namespace

CPNotaCentriCosto::CPNotaCentriCosto(PNOTA *entry, long row, CWnd *parent)
    : CTarvoDialog(parent), entry_(entry), row_(row)
{
    setWindowTitle("Centri di costo");
    FormBuilder form(this);
    const PNOTA_RIGA &line = Row();
    form.Info("Riga")->setText(
        ToQt(fmt::format("{} - {}.{}.{} {}", row_, line.row_mas, line.row_con, line.row_sot, OnOneLine(line.des_sot))));
    form.Info("Importo")->setText(ToQt(FormatAmount(line.row_importo) + " " + ToUpper(line.row_tipo.str())));
    rest_ = form.Info("Resto");
    rest_->setAccessibleName("Resto");

    using Type = CSpreadSheet::Type;
    grid_ = new CSpreadSheet(this);
    grid_->SetColumns({{.title = "Centro", .type = Type::Code, .width = 8},
                       {.title = "Descrizione", .width = 40, .locked = true, .stretch = true},
                       {.title = "Importo", .type = Type::Amount, .width = 14, .sum = true}});
    grid_->ShowSums(true);
    grid_->setAccessibleName("Centri di costo");
    grid_->on_leave_cell = [this](long at, long column) { return OnLeaveCellSpread(at, column); };
    grid_->on_dbl_click = [this](long at, long column) { OnDblClickSpread(at, column); };
    grid_->on_key_press = [this](long at, long, QKeyEvent *key) { return OnKeyPressSpread(at, key); };
    grid_->on_change = [this](long, long) {
        SetChanged(true);
        ShowRest();
    };
    grid_->on_advance = [this](bool forward) {
        if (forward) save_->setFocus(Qt::TabFocusReason);
    };
    form.Fill(grid_);

    save_ = AddCommand({.caption = "F2 - &Salva", .icon = "salva", .run = [this] { OnRecordSalva(); }});
    AddCommand({.caption = "F6 - Elimina",
                .tooltip = "Toglie la ripartizione della riga",
                .icon = "elimina",
                .run = [this] { OnRecordElimina(); },
                .update = [this](CCmdUI *command) { command->Enable(!LinesOf(*entry_, row_).empty()); },
                .checks_field = false});
}

PNOTA_RIGA &CPNotaCentriCosto::Row() const
{
    return entry_->righe.at(static_cast<std::size_t>(row_ - 1));
}

bool CPNotaCentriCosto::OnInitDialog()
{
    return Guarded(LUMERA_TAG, [this] {
        ShowLines();
        ShowRest();
        SetStatus(kHint);
        SetChanged(false);
        grid_->setFocus();
        // Once the window is there: a dialog that shows enters its first control as Tab does, at the first cell.
        QMetaObject::invokeMethod(
            this,
            [this] {
                const long free = static_cast<long>(LinesOf(*entry_, row_).size()) + 1;
                grid_->SetActiveCell(std::min(free, grid_->RowCount()), kCentre);
            },
            Qt::QueuedConnection);
    });
}

void CPNotaCentriCosto::ShowLines()
{
    const std::vector<PNOTA_CENTRO> lines = LinesOf(*entry_, row_);
    const std::size_t others = entry_->centri.size() - lines.size();
    const SpreadUpdate update(grid_);
    grid_->SetRowCount(static_cast<long>(std::max(kCostCentreLinesMax - std::min(others, kCostCentreLinesMax),
                                                  lines.size()))); // the lines of the whole entry are limited
    for (std::size_t i = 0; i < lines.size(); ++i) {
        const long at = static_cast<long>(i) + 1;
        grid_->SetLong(at, kCentre, lines[i].pcc_cdc);
        grid_->SetNumber(at, kAmount, lines[i].pcc_importo);
        ShowDescription(at);
    }
}

long long CPNotaCentriCosto::RestCents() const
{
    return ToCents(Row().row_importo) - grid_->SumCents(kAmount);
}

void CPNotaCentriCosto::ShowRest()
{
    const long long rest = RestCents();
    rest_->setText(rest == 0 ? QStringLiteral("0,00 - importo ripartito per intero")
                             : ToQt(FormatAmount(FromCents(rest))));
}

void CPNotaCentriCosto::ShowDescription(long row)
{
    grid_->SetText(row, kDescription, CentreName(grid_->Long(row, kCentre)).value_or(""));
}

bool CPNotaCentriCosto::OnLeaveCellSpread(long row, long column)
{
    const long centre = grid_->Long(row, kCentre);
    if (column == kCentre) {
        ShowDescription(row);
        const bool is_known = centre == 0 || CentreName(centre).has_value();
        SetStatus(is_known ? kHint : QStringLiteral("Non c'è un centro di costo con questo codice: F4 apre l'elenco"));
        return is_known;
    }
    if (column == kAmount && centre != 0 && TestIfZero(grid_->Number(row, kAmount)) && RestCents() != 0) {
        grid_->SetNumber(row, kAmount, FromCents(RestCents()));
        SetChanged(true);
        ShowRest();
    }
    return true;
}

void CPNotaCentriCosto::OnDblClickSpread(long row, long column)
{
    if (column != kCentre || row < 1) return;
    CCentriBr browser(this);
    browser.m_codice = grid_->Long(row, kCentre);
    if (browser.DoModal() != IDOK) return;
    grid_->SetLong(row, kCentre, browser.m_codice);
    ShowDescription(row);
    SetChanged(true);
}

bool CPNotaCentriCosto::OnKeyPressSpread(long row, QKeyEvent *key)
{
    const bool clears = key->key() == Qt::Key_Delete && key->modifiers().testFlag(Qt::ControlModifier);
    if (!clears || grid_->IsEditing() || row < 1) return false;
    for (const long column : {kCentre, kDescription, kAmount}) grid_->ClearCell(row, column);
    SetChanged(true);
    ShowRest();
    return true;
}

std::optional<std::vector<PNOTA_CENTRO>> CPNotaCentriCosto::ReadLines()
{
    if (!grid_->LeaveActiveCell()) return std::nullopt;
    std::vector<PNOTA_CENTRO> lines;
    for (long at = 1; at <= grid_->RowCount(); ++at) {
        const double amount = grid_->Number(at, kAmount);
        if (TestIfZero(amount)) continue;
        const long centre = grid_->Long(at, kCentre);
        if (centre == 0) {
            BeepRefused();
            SetStatus("Manca il centro di costo");
            grid_->setFocus();
            grid_->SetActiveCell(at, kCentre);
            return std::nullopt;
        }
        lines.push_back({.pcc_pno = entry_->pno_codice, .pcc_riga = row_, .pcc_cdc = centre, .pcc_importo = amount});
    }
    return lines;
}

void CPNotaCentriCosto::Replace(std::vector<PNOTA_CENTRO> lines)
{
    m_changed = !SameLines(LinesOf(*entry_, row_), lines);
    std::erase_if(entry_->centri, [this](const PNOTA_CENTRO &line) { return line.pcc_riga == row_; });
    entry_->centri.insert(entry_->centri.end(), lines.begin(), lines.end());
    EndDialog(IDOK);
}

void CPNotaCentriCosto::OnRecordSalva()
{
    Guarded(LUMERA_TAG, [this] {
        std::optional<std::vector<PNOTA_CENTRO>> lines = ReadLines();
        if (!lines) return;
        // Half a split may be left for later: the entry is not stored with it, and says which row it is.
        if (!lines->empty() && RestCents() != 0 &&
            AfxMessageBox(fmt::format("Resta da ripartire l'importo di {}.\n\nVuoi Continuare?",
                                      FormatAmount(FromCents(RestCents()))),
                          MB_YESNO | MB_ICONQUESTION | MB_DEFBUTTON2) != IDYES) {
            grid_->setFocus();
            return;
        }
        Replace(std::move(*lines));
    });
}

void CPNotaCentriCosto::OnRecordElimina()
{
    if (AfxMessageBox("Vuoi eliminare la ripartizione della riga?", MB_YESNO | MB_ICONQUESTION | MB_DEFBUTTON2) ==
        IDYES)
        Replace({});
}
