#include "schedule/ui/ScadenzeTotali.h"

#include "schedule/ui/EstrattiContoScadenze.h"
#include "tarvodlg/base/Numbers.h"
#include "tarvodlg/base/UserInterface.h"
#include "tarvodlg/widgets/FormBuilder.h"
#include "tarvolumera/Counterparts.h"

namespace {

using Type = CSpreadSheet::Type;

enum Column : long { kCode = 1, kName, kCount, kNotDue, k30, k60, k90, k120, kBeyond, kOverdue, kTotal };

void ShowLine(CSpreadSheet *grid, long row, const AgingLine &line)
{
    grid->SetRowData(row, line.code);
    grid->SetLong(row, kCode, line.code);
    grid->SetText(row, kName, line.name);
    grid->SetLong(row, kCount, line.count);
    grid->SetNumber(row, kNotDue, FromCents(line.not_due));
    grid->SetNumber(row, k30, FromCents(line.sca_30));
    grid->SetNumber(row, k60, FromCents(line.sca_60));
    grid->SetNumber(row, k90, FromCents(line.sca_90));
    grid->SetNumber(row, k120, FromCents(line.sca_120));
    grid->SetNumber(row, kBeyond, FromCents(line.sca_oltre));
    grid->SetNumber(row, kOverdue, FromCents(line.Overdue()));
    grid->SetNumber(row, kTotal, FromCents(line.Total()));
}

} // namespace

struct CScadenzeTotali::Form {
    long side = kCustomer, reference_day = 0, order = static_cast<long>(AgingOrder::Name);
    CDateField *reference_field = nullptr;
};

CScadenzeTotali::CScadenzeTotali(CWnd *parent) : ScheduleViewWindow(parent), form_(std::make_unique<Form>())
{
    setWindowTitle(QStringLiteral("Anzianità dei saldi"));
    FormBuilder form(this, FilterArea());
    ReloadOn(form.Choice(QStringLiteral("&Saldi di"), form_->side,
                         {{kCustomer, QStringLiteral("Clienti")}, {kSupplier, QStringLiteral("Fornitori")}}));
    ReloadOn(form_->reference_field = form.Beside().Date(QStringLiteral("situazione &al"), form_->reference_day));
    ReloadOn(form.Beside().Choice(QStringLiteral("&Ordine"), form_->order,
                                  {{static_cast<long>(AgingOrder::Name), QStringLiteral("Per nome")},
                                   {static_cast<long>(AgingOrder::Overdue), QStringLiteral("Per importo scaduto")}}));

    std::vector<CSpreadSheet::Column> columns = {GridColumn("Codice", Type::Code, 6),
                                                 GridColumn("Nome", Type::Text, 18),
                                                 GridColumn("N.", Type::Code, 4),
                                                 SumColumn("A scadere", 14),
                                                 SumColumn("1-30 gg", 13),
                                                 SumColumn("31-60 gg", 13),
                                                 SumColumn("61-90 gg", 13),
                                                 SumColumn("91-120 gg", 13),
                                                 SumColumn("Oltre 120 gg", 13),
                                                 SumColumn("Scaduto", 14),
                                                 SumColumn("Totale", 14)};
    columns[kName - 1].stretch = true;
    columns[kTotal - 1].blank_zero = false;
    Spread()->SetColumns(std::move(columns));
    Spread()->ShowSums(true);
    Spread()->SetFootText(kName, QStringLiteral("Totale"));
    AddViewCommands("F2 - Estratto conto", "Apre l'estratto conto del nominativo selezionato (anche Invio)",
                    "Stampa l'anzianità dei saldi");
}

CScadenzeTotali::~CScadenzeTotali() = default;

bool CScadenzeTotali::OnInitDialog()
{
    form_->side = m_relaz;
    form_->reference_day = CurrentUserInterface().Today();
    SetField();
    LoadTable(nullptr, true);
    Spread()->setFocus();
    return true;
}

AgingFilter CScadenzeTotali::Filter() const
{
    AgingFilter filter;
    filter.side = static_cast<short>(form_->side);
    filter.reference_day = form_->reference_day;
    filter.order = static_cast<AgingOrder>(form_->order);
    return filter;
}

bool CScadenzeTotali::CheckFilter()
{
    return form_->reference_day != 0 || Refuse(form_->reference_field, "Indicare il giorno della situazione.");
}

void CScadenzeTotali::ReadRows(SACommand *cmd, bool)
{
    const long selected = Spread()->RowData(Spread()->ActiveRow());
    const SpreadUpdate update(Spread());
    Spread()->Clear();
    long row = 0, place = 1;
    ForEachAging(cmd, Filter(), [&](AgingLine &&line) {
        Spread()->InsertRow(++row);
        ShowLine(Spread(), row, line);
        if (line.code == selected) place = row;
    });
    if (row > 0) Spread()->SetActiveCell(place, kName);
    SetStatus(row == 0                   ? QStringLiteral("Nessun saldo aperto")
              : form_->side == kCustomer ? Counted(row, "cliente", "clienti")
                                         : Counted(row, "fornitore", "fornitori"));
}

void CScadenzeTotali::OnRecordApri()
{
    const long code = Spread()->RowData(Spread()->ActiveRow());
    if (code == 0) return;
    {
        CEstrattiContoScadenze statement(this);
        statement.m_relaz = static_cast<short>(form_->side);
        statement.m_codice = code;
        statement.m_al = form_->reference_day;
        statement.DoModal();
    }
    LoadTable(nullptr, true); // an instalment may have been changed there
    Spread()->setFocus();
}

void CScadenzeTotali::OnRecordStampa()
{
    PrintAging(Filter());
}
