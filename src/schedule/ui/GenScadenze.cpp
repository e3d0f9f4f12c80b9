#include "schedule/ui/GenScadenze.h"

#include "schedule/ui/ScheduleGrid.h"
#include "tables/ui/Lookups.h"
#include "tarvodlg/base/Dates.h"
#include "tarvodlg/base/Dbisam.h"
#include "tarvodlg/base/Numbers.h"
#include "tarvodlg/widgets/FormBuilder.h"
#include "tarvodlg/widgets/SpreadSheet.h"
#include "tarvodlg/widgets/Theme.h"

#include <QAbstractButton>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <cmath>
#include <fmt/format.h>

namespace {

enum Column : long { kDueDay = 1, kAmount };

constexpr long kRows = static_cast<long>(kInstalmentRows);

constexpr const char *kHint = "F2, o Invio sul pulsante OK: registra le scadenze\n\n"
                              "Invio su un importo vuoto: quanto manca al totale\n"
                              "Invio su una riga vuota: passa al pulsante OK\n"
                              "Canc: vuota la cella, Ctrl+Canc: la riga";

/// Dark red on light yellow, the way a total stands out on paper; a dark theme keeps its own ground.
void ColourTotal(QLineEdit *total)
{
    QPalette colours = total->palette();
    if (!IsDark()) colours.setColor(QPalette::Base, QColor(255, 255, 224));
    colours.setColor(QPalette::Text, Readable(QColor(139, 0, 0)));
    total->setPalette(colours);
    QFont bold = total->font();
    bold.setBold(true);
    total->setFont(bold);
}

QString DocumentLine(const PNOTA &entry)
{
    std::string line = entry.pno_doc.empty() ? fmt::format("movimento {}", entry.pno_codice)
                                             : fmt::format("n. {}", entry.pno_doc.str());
    if (entry.pno_data_doc != 0) line += " del " + FormatDate(entry.pno_data_doc);
    line += fmt::format(" – {} {} {}", entry.pno_rel == kSupplier ? "fornitore" : "cliente", entry.pno_cli_for,
                        entry.des_clifor.str());
    return ToQt(line).trimmed();
}

} // namespace

struct CGenScadenze::Form {
    PNOTA *entry = nullptr;
    InstalmentProposal proposal;
    Text<80> description;
    CTextField *description_field = nullptr;
    CCodeField *bank = nullptr;
    QLabel *document = nullptr, *terms = nullptr, *difference = nullptr;
    QLineEdit *total = nullptr;
    CSpreadSheet *grid = nullptr;
    QAbstractButton *ok = nullptr;
};

CGenScadenze::CGenScadenze(PNOTA *entry, CWnd *parent) : CTarvoDialog(parent), form_(std::make_unique<Form>())
{
    form_->entry = entry;
    setWindowTitle("Generazione Scadenze");
    BuildHead();
    form_->ok = AddCommand({.caption = "F2 - &OK",
                            .tooltip = "Registra le scadenze come stanno nella griglia",
                            .icon = "salva",
                            .run = [this] { OnOK(); }});
    AddCommand({.caption = "&Annulla",
                .tooltip = "Chiude senza generare le scadenze",
                .icon = "annulla",
                .run = [this] { OnCancel(); },
                .checks_field = false});
}

CGenScadenze::~CGenScadenze() = default;

void CGenScadenze::Blank(SACommand *cmd, SCADENZE *record, short side)
{
    sqlsca.Blank(cmd, record, side);
}

void CGenScadenze::BuildHead()
{
    Form &f = *form_;
    FormBuilder form(this);
    f.document = form.Info("Documento");
    f.terms = form.Info("Pagamento");
    f.description_field = form.Text("&Descrizione", f.description);
    f.total = new QLineEdit(this);
    f.total->setReadOnly(true);
    f.total->setFocusPolicy(Qt::NoFocus);
    f.total->setAlignment(Qt::AlignRight);
    ColourTotal(f.total);
    form.Add("Totale documento", f.total);
    f.total->setFixedWidth(CharactersWide(f.total, 14));
    form.Beside();
    f.difference = form.Info("Differenza");
    f.bank = form.Code("&Banca", f.proposal.bank, Lookup("banche")); // leaving it reads the bank, an empty code too
    BuildGrid();
    auto *room = new QWidget(this);
    auto *line = new QHBoxLayout(room);
    line->setContentsMargins(0, 0, 0, 0);
    line->setSpacing(fontMetrics().averageCharWidth() * 4);
    line->addWidget(f.grid);
    auto *hint = new QLabel(kHint, room);
    hint->setForegroundRole(QPalette::PlaceholderText);
    line->addWidget(hint, 1, Qt::AlignTop);
    form.Fill(room);
}

void CGenScadenze::BuildGrid()
{
    CSpreadSheet *grid = form_->grid = new CSpreadSheet(this);
    using Type = CSpreadSheet::Type;
    grid->SetColumns({{.title = "Scadenza", .type = Type::Date, .width = 14},
                      {.title = "Importo", .type = Type::Amount, .width = 18, .sum = true}});
    grid->SetRowCount(kRows);
    grid->ShowSums(true);
    grid->SetFootText(kDueDay, "Totale");
    grid->setAccessibleName("Scadenze");
    grid->on_key_press = [this](long row, long column, QKeyEvent *key) { return OnKeyPressSpread(row, column, key); };
    grid->on_advance = [this](bool forward) { LeaveSpread(forward); };
    grid->on_change = [this](long, long) {
        SetChanged(true);
        ShowDifference();
    };
}

bool CGenScadenze::OnInitDialog()
{
    Form &f = *form_;
    CommandScope scope(nullptr);
    if (sqlsca.CountOf(scope.get(), f.entry->pno_codice) > 0) return false;
    std::optional<InstalmentProposal> proposal = ProposeInstalments(scope.get(), *f.entry);
    if (!proposal) return false;
    m_proposed = true;
    f.proposal = std::move(*proposal);
    f.description = f.proposal.description;
    f.document->setText(DocumentLine(*f.entry));
    f.terms->setText(ToQt(fmt::format("{} {}", f.entry->pno_pag, f.entry->des_pag.str())));
    f.total->setText(ToQt(FormatAmount(f.proposal.total)));
    ShowFields();
    ShowRows();
    SetChanged(false);
    EnterFirstField();
    return true;
}

void CGenScadenze::ShowRows()
{
    CSpreadSheet *grid = form_->grid;
    const SpreadUpdate update(grid);
    for (std::size_t i = 0; i < form_->proposal.rows.size(); ++i) {
        const Instalment &row = form_->proposal.rows[i];
        grid->SetLong(static_cast<long>(i) + 1, kDueDay, row.due_day);
        grid->SetNumber(static_cast<long>(i) + 1, kAmount, row.amount);
    }
    ShowDifference();
}

std::vector<Instalment> CGenScadenze::ReadRows() const
{
    std::vector<Instalment> rows;
    for (long row = 1; row <= kRows; ++row)
        rows.push_back({form_->grid->Long(row, kDueDay), form_->grid->Number(row, kAmount)});
    return rows;
}

/// What OK is going to ask about, and what it is going to leave out, before it does.
void CGenScadenze::ShowDifference()
{
    const std::vector<Instalment> rows = ReadRows();
    const long long rest = std::llabs(ToCents(form_->proposal.total)) - std::llabs(form_->grid->SumCents(kAmount));
    const std::string amount = FormatAmount(FromCents(std::llabs(rest)));
    form_->difference->setText(rest == 0  ? QStringLiteral("0,00")
                               : rest > 0 ? ToQt(amount + " in meno del documento")
                                          : ToQt(amount + " in più del documento"));
    QPalette colours = palette();
    if (rest != 0) colours.setColor(QPalette::WindowText, OverdueColour());
    form_->difference->setPalette(colours);

    SetStatus(ToQt(LeftOutText(rows, rest == 0)));
}

std::string CGenScadenze::LeftOutText(const std::vector<Instalment> &rows, bool is_total_reached) const
{
    const long left_out = std::count_if(rows.begin(), rows.end(), [](const Instalment &row) {
        return !row.IsComplete() && (row.due_day != 0 || !TestIfZero(row.amount));
    });
    if (left_out == 0 && is_total_reached) return {};
    if (!form_->proposal.notice.empty()) return form_->proposal.notice;
    if (left_out == 0) return {};
    return left_out == 1 ? "1 riga senza data o importo non verrà registrata"
                         : fmt::format("{} righe senza data o importo non verranno registrate", left_out);
}

void CGenScadenze::EnterFirstField()
{
    const std::vector<Instalment> &rows = form_->proposal.rows;
    const auto missing = std::find_if(rows.begin(), rows.end(), [](const Instalment &row) { return row.due_day == 0; });
    setAttribute(Qt::WA_KeyboardFocusChange); // shows which button Enter presses
    if (missing == rows.end() && !rows.empty()) return form_->ok->setFocus(Qt::TabFocusReason);
    form_->grid->setFocus();
    form_->grid->SetActiveCell(missing - rows.begin() + 1, kDueDay);
}

void CGenScadenze::LeaveSpread(bool forward)
{
    if (forward)
        form_->ok->setFocus(Qt::TabFocusReason);
    else
        SetFocusTo(form_->bank);
}

bool CGenScadenze::TakeRest(long row)
{
    CSpreadSheet *grid = form_->grid;
    const long long rest = ToCents(form_->proposal.total) - grid->SumCents(kAmount);
    if (grid->IsEditing() || grid->Long(row, kDueDay) == 0 || !TestIfZero(grid->Number(row, kAmount)) || rest == 0)
        return false;
    grid->SetNumber(row, kAmount, FromCents(rest));
    SetChanged(true);
    ShowDifference();
    return true;
}

bool CGenScadenze::OnKeyPressSpread(long row, long column, QKeyEvent *key)
{
    CSpreadSheet *grid = form_->grid;
    const Qt::KeyboardModifiers modifiers = key->modifiers() & ~Qt::KeypadModifier;
    const bool is_empty = grid->Long(row, kDueDay) == 0 && TestIfZero(grid->Number(row, kAmount));
    switch (key->key()) {
    case Qt::Key_Up:
    case Qt::Key_Down: {
        const bool forward = key->key() == Qt::Key_Down;
        if (modifiers != Qt::NoModifier || row != (forward ? kRows : 1)) return false;
        if (grid->LeaveActiveCell()) LeaveSpread(forward);
        return true;
    }
    case Qt::Key_Return:
    case Qt::Key_Enter:
        if (modifiers != Qt::NoModifier) return false;
        if (column == kAmount) TakeRest(row);
        if (column != kDueDay || !is_empty || grid->IsEditing()) return false;
        LeaveSpread(true); // an empty row ends the list
        return true;
    case Qt::Key_Delete:
        if (grid->IsEditing()) return false;
        for (const long cleared : {kDueDay, kAmount})
            if (cleared == column || modifiers == Qt::ControlModifier) grid->ClearCell(row, cleared);
        SetChanged(true);
        ShowDifference();
        return true;
    default:
        return false;
    }
}

void CGenScadenze::OnOK()
{
    if (!LeaveFocusedField()) return;
    Guarded(LUMERA_TAG, [this] {
        Form &f = *form_;
        ReadFields();
        f.proposal.description = f.description;
        f.proposal.rows = ReadRows();
        if (!ConfirmTotal(f.proposal.rows, f.proposal.total)) {
            f.grid->setFocus();
            if (f.grid->ActiveRow() < 1) f.grid->SetActiveCell(1, kAmount);
            return;
        }
        m_stored = StoreInstalments(nullptr, *f.entry, f.proposal);
        EndDialog(IDOK);
    });
}
