// The form of the instalment editor: controls, their order, what of them can be entered, the facts beside them.
#include "schedule/ui/ScadenzeForm.h"

#include "schedule/InstalmentEditing.h"
#include "schedule/ui/DestinationLookup.h"
#include "tables/ui/Lookups.h"
#include "tarvodlg/base/Dates.h"
#include "tarvodlg/base/Dbisam.h"
#include "tarvodlg/widgets/FormBuilder.h"

#include <QGridLayout>
#include <QVBoxLayout>

namespace {

void Name(CTarvoField *field, const QString &name)
{
    field->Widget()->setAccessibleName(name);
}

} // namespace

void CScadenze::BuildForm()
{
    Form &f = *form_;
    const bool customer = m_relaz == kCustomer;
    FormBuilder form(this);
    // The number is no part of the record: it says which one is shown, and brings another.
    f.number = new CAmountField(0, Content());
    f.number->SetRange(0, 2'147'483'647);
    form.Add("&Numero", f.number, 9);
    f.fields["sca_rata"] = form.Beside().Number("Ra&ta", m_scadenza.sca_rata, 0, 999);
    f.fields["sca_rate"] = form.Beside().Number("di", m_scadenza.sca_rate, 0, 999);
    Name(f.fields["sca_rate"], "Rate");
    f.counterpart = form.Code(customer ? "Cl&iente" : "Forn&itore", f.typed.counterpart,
                              Lookup(customer ? "clienti" : "fornitori"));
    f.fields["sca_cli_for"] = f.counterpart;
    f.fields["sca_data"] = form.Date("S&cadenza", m_scadenza.sca_data);
    f.fields["sca_importo"] = form.Beside().Amount("I&mporto", m_scadenza.sca_importo);
    f.fields["sca_desc"] = form.Text("&Descrizione", m_scadenza.sca_desc);

    form.Section("Fattura");
    f.fields["sca_fattura"] = form.Text("&Fattura n.", m_scadenza.sca_fattura, 20);
    f.fields["sca_data_fattura"] = form.Beside().Date("de&l", m_scadenza.sca_data_fattura);
    Name(f.fields["sca_data_fattura"], "Data fattura");
    f.fields["sca_tot_fat"] = form.Beside().Amount("T&otale", m_scadenza.sca_tot_fat);
    Name(f.fields["sca_tot_fat"], "Totale fattura");
    f.fields["sca_sez"] = form.Code("Sezione I&VA", m_scadenza.sca_sez, Lookup("sezioni"));

    form.Section("Pagamento");
    f.terms = form.Code("&Pagamento", f.typed.terms, Lookup("pagamenti"));
    f.fields["sca_pag"] = f.terms;
    f.fields["sca_ban"] = form.Code("&Banca", m_scadenza.sca_ban, Lookup("banche"));
    f.fields["sca_dst"] = form.Code("Destina&zione", m_scadenza.sca_dst, LookupDestination([this] {
                                        return DestinationOwner{m_relaz, m_scadenza.sca_cli_for};
                                    }));
    f.fields["sca_age"] = form.Code("A&gente", m_scadenza.sca_age, Lookup("agenti"));
    f.fields["sca_emessa"] = form.Date("Emess&a il", m_scadenza.sca_emessa);

    OnLostFocusEvent(f.number, [this] { return OnLostFocusEventNumero(); });
    OnLostFocusEvent(f.counterpart, [this] { return OnLostFocusEventCodClifor(); });
    OnLostFocusEvent(f.terms, [this] { return OnLostFocusEventCodPag(); });
}

/// Beside the form, what the program knows of the instalment and nobody types.
void CScadenze::BuildFacts()
{
    Form &f = *form_;
    auto *grid = qobject_cast<QGridLayout *>(Content()->layout());
    auto *panel = new QWidget(Content());
    auto *facts = new QVBoxLayout(panel);
    facts->setContentsMargins(fontMetrics().averageCharWidth() * 2, 0, 0, 0);
    f.state = new QLabel(panel);
    QFont bold = f.state->font();
    bold.setBold(true);
    f.state->setFont(bold);
    f.print = new QLabel(panel);
    f.entry = new QLabel(panel);
    f.entry->setTextFormat(Qt::RichText);
    f.entry->setFocusPolicy(Qt::NoFocus); // by key it is opened with the command
    connect(f.entry, &QLabel::linkActivated, this, [this] { Guarded(LUMERA_TAG, [this] { OnRecordApri(); }); });
    for (QLabel *fact : {f.state, f.entry, f.print}) {
        fact->setMinimumWidth(CharactersWide(panel, 26));
        facts->addWidget(fact);
    }
    facts->addSpacing(fontMetrics().height());
    f.stamp = new StampLabel(panel);
    facts->addWidget(f.stamp, 0, Qt::AlignHCenter);
    facts->addStretch(1);
    grid->addWidget(panel, 0, 2, grid->rowCount(), 1);
}

void CScadenze::AddCommands()
{
    using enum RecordCommand;
    const bool customer = m_relaz == kCustomer;
    UseCommands({Nuovo, Apri, Salva, Elimina, Annulla, Cerca, Prec, Succ});
    SetCommandCaption(Nuovo, "F3 - Nuova", "Comincia una nuova scadenza");
    SetCommandCaption(Apri, "Movimento", "Apre il movimento di prima nota che ha generato la scadenza");
    SetCommandCaption(Salva, "F2 - &Salva", "Registra la scadenza");
    SetCommandCaption(Elimina, "F6 - &Elimina", "Elimina la scadenza");
    SetCommandCaption(Annulla, "&Ricarica", "Rilegge la scadenza dall'archivio");
    SetCommandCaption(Cerca, "F5 - Cerca", "Cerca una scadenza per numero, data, fattura o intestatario");
    SetCommandCaption(Prec, "Precedente", "Scadenza precedente");
    SetCommandCaption(Succ, "Successiva", "Scadenza successiva");
    AddToolbarCommand(
        {.caption = customer ? "F7 - Incassa" : "F7 - Paga",
         .tooltip = customer ? "Registra l' incasso della scadenza" : "Registra il pagamento della scadenza",
         .icon = "pagamento",
         .run = [this] { OnPaga(); },
         .update = [this](CCmdUI *command) { command->Enable(ScheduleHooks().pay && IsOpenAndUnchanged()); }});
    AddToolbarCommand({.caption = "F8 - Bollettino",
                       .tooltip = "Stampa il bollettino di conto corrente postale",
                       .icon = "stampa",
                       .run = [this] { OnBollettino(); },
                       .update = [this](CCmdUI *command) { command->Enable(IsRecordLoaded() && !IsChanged()); }});
    AddToolbarCommand({.caption = "F9 - Dividi",
                       .tooltip = "Divide la scadenza in due",
                       .icon = "scadenze",
                       .run = [this] { OnDividi(); },
                       .update = [this](CCmdUI *command) { command->Enable(IsOpenAndUnchanged()); }});
}

void CScadenze::SetField()
{
    Form &f = *form_;
    f.typed = {m_scadenza.sca_cli_for, m_scadenza.sca_pag};
    f.number->SetValue(static_cast<double>(m_scadenza.sca_num));
    f.number->SetModified(false);
    ShowFields();
    ShowFacts();
    Protect(nullptr);
    const QString side = m_relaz == kCustomer ? "Clienti" : "Fornitori";
    setWindowTitle((f.is_new ? "Inserimento Scadenze " : "Modifica Scadenze ") + side);
}

void CScadenze::GetField()
{
    ReadFields();
}

void CScadenze::Protect(SACommand *)
{
    const SCADENZE stored = form_->is_new ? SCADENZE{} : form_->loaded;
    for (const auto &[column, field] : form_->fields) field->Protect(!MayChange(stored, column));
}

void CScadenze::ShowFacts()
{
    Form &f = *form_;
    const SCADENZE &record = f.loaded;
    const bool customer = m_relaz == kCustomer, paid = !f.is_new && record.sca_pagato != 0;
    QString state = f.is_new ? "Nuova" : "Aperta";
    if (paid) state = customer ? "Incassata" : "Pagata";
    if (paid && record.sca_data_pag != 0) state += ToQt(" il " + FormatDate(record.sca_data_pag));
    if (!f.is_new && record.sca_parked != 0) state += paid ? ", in distinta" : " - in distinta";
    f.state->setText(state);
    f.print->setText(!f.is_new && record.sca_printed != 0 ? "Ri.Ba. stampata" : "");
    const QString entry = QString("Movimento n. %1").arg(record.sca_pno);
    if (f.is_new || record.sca_pno == 0)
        f.entry->setText(f.is_new ? "" : "Inserita a mano");
    else
        f.entry->setText(ScheduleHooks().open_entry ? "<a href=\"movimento\">" + entry + "</a>" : entry);
    f.stamp->SetStamp(!paid ? "" : customer ? "I N C A S S  A T A" : "P A G A T A", record.sca_data_pag);
}
