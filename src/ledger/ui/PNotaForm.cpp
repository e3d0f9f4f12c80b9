// The form of the entry editor: controls, their order, what of them can be entered.
#include "ledger/ui/PNotaForm.h"

#include "ledger/Imbalance.h"
#include "ledger/VatLines.h"
#include "tables/ui/Lookups.h"
#include "tarvodlg/base/Dbisam.h"
#include "tarvodlg/base/Numbers.h"
#include "tarvodlg/widgets/FormBuilder.h"
#include "tarvodlg/widgets/Theme.h"
#include "tarvolumera/JournalTotals.h"

#include <QAbstractButton>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QVBoxLayout>
#include <cmath>

namespace {

/// Customers or suppliers, as the entry's counterpart is one or the other.
class CounterpartLookup : public CodeLookup {
  public:
    explicit CounterpartLookup(const PNOTA &entry) : entry_(entry) {}
    std::optional<std::string> Describe(const std::string &code) override { return Table().Describe(code); }
    std::vector<LookupMatch> Match(const std::string &typed, std::size_t max) override
    {
        return Table().Match(typed, max);
    }
    std::optional<std::string> Browse(CWnd *parent, const std::string &code_or_text) override
    {
        return Table().Browse(parent, code_or_text);
    }

  private:
    CodeLookup &Table() { return entry_.pno_rel == kCustomer ? *customers_ : *suppliers_; }

    const PNOTA &entry_;
    std::shared_ptr<CodeLookup> customers_ = Lookup("clienti"), suppliers_ = Lookup("fornitori");
};

QLabel *LabelOf(QWidget *host, const QWidget *field)
{
    for (QLabel *label : host->findChildren<QLabel *>())
        if (label->buddy() == field) return label;
    return nullptr;
}

void Name(QWidget *widget, const QString &name)
{
    widget->setAccessibleName(name);
}

QLabel *Figure(QGridLayout *grid, int row, int column, const QString &name, bool is_strong = false)
{
    auto *figure = new QLabel(grid->parentWidget());
    figure->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    Name(figure, name);
    auto *label = new QLabel(name, grid->parentWidget());
    if (is_strong) {
        QFont bold = figure->font();
        bold.setBold(true);
        figure->setFont(bold);
        label->setFont(bold);
    }
    grid->addWidget(label, row, column);
    grid->addWidget(figure, row, column + 1);
    return figure;
}

/// Reached with its letter or the mouse: Enter goes on past it.
void PassOver(CTarvoField *field)
{
    field->Widget()->setFocusPolicy(Qt::ClickFocus);
}

/// The last field of its line ends where the grids below end.
void ToTheEdge(CTarvoField *field)
{
    QWidget *widget = field->Widget();
    widget->setMinimumWidth(widget->maximumWidth() == QWIDGETSIZE_MAX ? 0 : widget->maximumWidth());
    widget->setMaximumWidth(QWIDGETSIZE_MAX);
    widget->setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

} // namespace

/// The fields that an ordinary entry visits, from the causale to the total. Built after those of the right column, so
/// that Enter leads from the total to the VAT lines and Shift+Tab from the causale to the others.
void CPNota::BuildHeader()
{
    Form &f = *form_;
    FormBuilder form(this, f.header);
    f.causale = form.Code("&Causale", f.typed.causale);
    f.causale->SetLookup(Lookup("causali"));
    f.causale_text = form.Beside().Text("", f.typed.causale_text, 34);
    Name(f.causale_text, "Descrizione causale");
    PassOver(f.causale_text);
    ToTheEdge(f.causale_text);
    f.counterpart = form.Code("For&nitore", f.typed.counterpart, std::make_shared<CounterpartLookup>(m_pnota));
    f.counterpart_label = LabelOf(f.header, f.counterpart);
    f.document = form.Text("&Documento n.", f.typed.document, 20);
    f.document_day = form.Beside().Date("de&l", f.typed.document_day);
    Name(f.document_day, "Data documento");
    f.total = form.Amount("&Totale", f.typed.total);
    Name(f.total, "Totale documento");
    f.vat_register = form.Beside().Info("Registro");

    OnLostFocusEvent(f.causale, Event(LUMERA_TAG, &CPNota::OnLostFocusEventCodCau));
    OnLostFocusEvent(f.causale_text, Event(LUMERA_TAG, &CPNota::OnLostFocusEventDesCau));
    OnLostFocusEvent(f.counterpart, Event(LUMERA_TAG, &CPNota::OnLostFocusEventCodClifor));
    OnLostFocusEvent(f.document, Event(LUMERA_TAG, &CPNota::OnLostFocusEventNumDoc));
    OnLostFocusEvent(f.document_day, Event(LUMERA_TAG, &CPNota::OnLostFocusEventDataDoc));
    OnLostFocusEvent(f.total, Event(LUMERA_TAG, &CPNota::OnLostFocusEventTotDoc));
    f.causale->on_dbl_click = [this] { OnDblClickCodCau(); };
    f.counterpart->on_dbl_click = [this] { OnDblClickCodClifor(); };
}

void CPNota::BuildDetails()
{
    Form &f = *form_;
    FormBuilder form(this, f.details);
    // Neither number nor order is a change of the entry: they are not coupled with it.
    f.number = new CAmountField(0, f.details);
    f.number->SetRange(0, 2'147'483'647);
    form.Add("&Movimento", f.number, 9);
    f.day = form.Beside().Date("Data &reg.", f.typed.day);
    Name(f.day, "Data registrazione");
    f.browse_order = new CChoiceField({{std::to_string(kByNumber), "numero"},
                                       {std::to_string(kByDate), "data"},
                                       {std::to_string(kByDocumentDate), "data documento"},
                                       {std::to_string(kByDocumentNumber), "numero documento"},
                                       {std::to_string(kByCausale), "causale"},
                                       {std::to_string(kByCounterpart), "cliente o fornitore"}},
                                      f.details);
    form.Beside().Add("Ord&ine", f.browse_order);
    f.browse_order->setToolTip("L'ordine in cui PagSu e PagGiù scorrono i movimenti");
    PassOver(f.browse_order);
    ToTheEdge(f.browse_order);
    f.section = form.Code("Sezione I&VA", f.typed.section, Lookup("sezioni"));
    f.protocol = form.Beside().Number("&Protocollo", f.typed.protocol, 0, 99'999'999);
    f.terms = form.Code("Pa&gamento", f.typed.terms, Lookup("pagamenti"));
    f.terms_day = form.Beside().Date("dec&orrenza", m_pnota.pno_data_pag);
    Name(f.terms_day, "Decorrenza pagamento");
    f.description = form.Text("Descri&zione", m_pnota.pno_desc, 40);
    ToTheEdge(f.description);

    OnLostFocusEvent(f.number, Event(LUMERA_TAG, &CPNota::OnLostFocusEventNumero));
    OnLostFocusEvent(f.day, Event(LUMERA_TAG, &CPNota::OnLostFocusEventData));
    OnLostFocusEvent(f.terms_day, [this] { return KeepWorkingDate(); });
    OnLostFocusEvent(f.section, Event(LUMERA_TAG, &CPNota::OnLostFocusEventSezione));
    OnLostFocusEvent(f.protocol, Event(LUMERA_TAG, &CPNota::OnLostFocusEventProt));
    OnLostFocusEvent(f.terms, Event(LUMERA_TAG, &CPNota::OnLostFocusEventCodPag));
    f.section->on_dbl_click = [this] { OnDblClickSezione(); };
    f.terms->on_dbl_click = [this] { OnDblClickCodPag(); };
    connect(f.browse_order, &QComboBox::activated, this, [this] {
        Guarded(LUMERA_TAG, [this] { sqlpno.SetIndex(static_cast<int>(form_->browse_order->Code())); });
    });
}

void CPNota::BuildTotals()
{
    Form &f = *form_;
    auto *grid = new QGridLayout(f.totals);
    const QFontMetrics metrics = f.totals->fontMetrics();
    grid->setContentsMargins(0, metrics.height() / 4, 0, 0); // in line with the titles of the VAT grid
    grid->setHorizontalSpacing(metrics.averageCharWidth() * 2);
    grid->setVerticalSpacing(metrics.height() / 4);
    f.banner = new QLabel(".: IVA Sospesa :.", f.totals);
    QFont bold = f.banner->font();
    bold.setBold(true);
    f.banner->setFont(bold);
    f.banner->setAlignment(Qt::AlignCenter);
    grid->addWidget(f.banner, 0, 0, 1, 5);
    f.taxable = Figure(grid, 1, 0, "Imponibile");
    f.tax = Figure(grid, 2, 0, "Imposta");
    f.exempt = Figure(grid, 3, 0, "Esente");
    f.non_taxable = Figure(grid, 4, 0, "Non imponibile");
    f.outside = Figure(grid, 5, 0, "Fuori campo");
    f.dare = Figure(grid, 1, 3, "Dare");
    f.avere = Figure(grid, 2, 3, "Avere");
    f.imbalance = Figure(grid, 3, 3, "Sbilancio", true);
    for (const int column : {1, 4}) grid->setColumnMinimumWidth(column, CharactersWide(f.totals, 15));
    grid->setColumnMinimumWidth(2, metrics.averageCharWidth() * 3);
    grid->setColumnStretch(5, 1);
    grid->setRowStretch(6, 1);
}

void CPNota::BuildGrids()
{
    using Type = CSpreadSheet::Type;
    Form &f = *form_;
    f.vat->SetColumns({{.title = "IVA", .type = Type::Code, .width = 6},
                       {.title = "Imponibile", .type = Type::Amount, .width = 16, .stretch = true},
                       {.title = "Aliq. %", .type = Type::Amount, .width = 8, .locked = true},
                       {.title = "Imposta", .type = Type::Amount, .width = 15},
                       {.title = "Indetr. %", .type = Type::Amount, .width = 9}});
    f.vat->SetRowCount(static_cast<long>(kVatLines));
    Name(f.vat, "Righe IVA");
    f.vat->on_leave_cell = [this](long line, long column) { return OnLeaveCellGridiva(line, column); };
    f.vat->on_change = [this](long line, long column) { OnChangeGridiva(line, column); };
    f.vat->on_dbl_click = [this](long line, long column) { OnDblClickGridiva(line, column); };
    f.vat->on_advance = [this](bool forward) { OnAdvanceGridiva(forward); };
    f.vat->on_key_press = [this](long line, long column, QKeyEvent *key) {
        return OnKeyPressGridiva(line, column, key);
    };
    f.rows->SetColumns(
        {{.title = "Mastro", .type = Type::Code, .width = 7},
         {.title = "Conto", .type = Type::Code, .width = 6},
         {.title = "Sottoc.", .type = Type::Code, .width = 8},
         {.title = "Descrizione", .type = Type::Text, .width = 30, .locked = true, .stretch = true},
         {.title = "Causale", .type = Type::Code, .width = 8},
         {.title = "Documento", .type = Type::Text, .width = 14, .max_characters = 20},
         {.title = "Importo", .type = Type::Amount, .width = 15},
         {.title = "D/A", .type = Type::Choice, .width = 4, .choices = {"", "D", "A"}},
         {.title = "Auto", .type = Type::Choice, .width = 5, .choices = {kNo, kYes}},
         {.title = "Centri", .type = Type::Choice, .width = 6, .locked = true, .choices = {"", kNo, kYes}}});
    f.rows->SetRowCount(static_cast<long>(kEntryRows));
    Name(f.rows, "Righe");
    f.rows->RememberLayout("PNota");
    f.rows->on_leave_cell = [this](long row, long column) { return OnLeaveCellSpread(row, column); };
    f.rows->on_change = [this](long row, long column) { OnChangeSpread(row, column); };
    f.rows->on_dbl_click = [this](long row, long column) { OnDblClickSpread(row, column); };
    f.rows->on_click = [this](long row, long column) { OnClickSpread(row, column); };
    f.rows->on_advance = [this](bool forward) { OnAdvanceSpread(forward); };
    f.rows->on_key_press = [this](long row, long column, QKeyEvent *key) { return OnKeyPressSpread(row, column, key); };
}

void CPNota::AddCommands()
{
    using enum RecordCommand;
    UseCommands({Nuovo, Apri, Salva, Elimina, Annulla, Cerca, Prec, Succ});
    SetCommandCaption(Apri, "Anagrafica", "Apre l'anagrafica del codice su cui si trova il cursore");
    const auto when_stored = [this](CCmdUI *command) { command->Enable(IsRecordLoaded()); };
    const auto on_row = [this](CCmdUI *command) { command->Enable(ActiveRow() > 0); };
    AddToolbarCommand({.caption = "F7 - &Allegati",
                       .tooltip = "I file allegati alla scrittura contabile",
                       .icon = "allegati",
                       .run = [this] { OnAllegati(); },
                       .update = when_stored});
    AddToolbarCommand({.caption = "F8 - Causale",
                       .tooltip = "Sceglie la causale della riga",
                       .icon = "causale",
                       .run = [this] { BrowseCod(ActiveRow()); },
                       .update = on_row});
    form_->integrations =
        AddToolbarCommand({.caption = "F9 - Integr.",
                           .tooltip = "Permette l' inserimento delle integrazioni alla scrittura contabile",
                           .icon = "comunicazioni",
                           .run = [this] { OnIntegrazioni(); }});
    AddToolbarCommand({.caption = "F11 - Centri",
                       .tooltip = "Divide l'importo della riga fra i centri di costo",
                       .icon = "centro-costo",
                       .run = [this] { OnCentriCosto(); },
                       .update = on_row});
    AddToolbarCommand({.caption = "Immagini",
                       .tooltip = "Permette l' inserimento e la visualizzazione dell' immagine del documento",
                       .icon = "zoom-piu",
                       .run = [this] { OnImmagini(); },
                       .update = when_stored,
                       .shortcut = "Ctrl+I"});
    AddToolbarCommand({.caption = "Copia",
                       .tooltip = "Comincia una nuova scrittura uguale a questa",
                       .icon = "nuovo",
                       .run = [this] { OnCopia(); },
                       .update = [this](CCmdUI *command) { command->Enable(IsRecordLoaded() && !m_single); },
                       .shortcut = "Ctrl+D"});
    // The toolbar is as wide as a small screen; these two stand below, past the last row for the mouse alone.
    QAbstractButton *check = AddCommand({.caption = "Controlla",
                                         .tooltip = "Controlla la scrittura senza salvarla",
                                         .icon = "avviso",
                                         .run = [this] { Cheek(nullptr); },
                                         .shortcut = "Ctrl+K"});
    QAbstractButton *files =
        AddCommand({.caption = "Archivio",
                    .tooltip = "I file archiviati con la scrittura (anche F7)",
                    .icon = "archivio",
                    .run = [this] { OnClickStore(); },
                    .update =
                        [this](CCmdUI *command) {
                            command->Enable(IsRecordLoaded());
                            command->SetText(form_->files == 0 ? QStringLiteral("Archivio")
                                                               : QStringLiteral("Archivio (%1)").arg(form_->files));
                        }});
    for (QAbstractButton *button : {check, files}) button->setFocusPolicy(Qt::NoFocus);
}

CPNota::CPNota(CGestionePrimaNota *list, CWnd *parent) : CTarvoRecordDialog(parent), form_(std::make_unique<Form>())
{
    Form &f = *form_;
    f.list = list;
    setWindowFlag(Qt::WindowMaximizeButtonHint);
    f.details = new QWidget(Content()); // before the header, see BuildHeader
    f.header = new QWidget(Content());
    f.totals = new QWidget(Content());
    BuildDetails();
    BuildHeader();
    for (QWidget *part : {f.details, f.header})
        part->layout()->setContentsMargins(0, 0, 0, 0); // in line with the grids
    f.vat = new CSpreadSheet(Content());
    f.rows = new CSpreadSheet(Content());
    BuildTotals();
    BuildGrids();
    AddCommands();

    auto *layout = new QVBoxLayout(Content());
    layout->setContentsMargins(0, 0, 0, 0);
    f.note = new QLabel(Content());
    f.note->setWordWrap(true);
    f.note->setTextFormat(Qt::PlainText);
    f.note->hide();
    layout->addWidget(f.note);
    auto *head = new QHBoxLayout;
    head->addWidget(f.header, 1);
    head->addSpacing(fontMetrics().averageCharWidth() * 3);
    head->addWidget(f.details, 1);
    layout->addLayout(head);
    auto *middle = new QHBoxLayout;
    middle->addWidget(f.vat, 1);
    middle->addSpacing(fontMetrics().averageCharWidth() * 3);
    middle->addWidget(f.totals, 1);
    layout->addLayout(middle);
    layout->addWidget(f.rows, 1);
    f.vat->setFixedHeight(f.vat->horizontalHeader()->sizeHint().height() +
                          f.vat->rowHeight(0) * static_cast<int>(kVatLines) + 2 * f.vat->frameWidth());
}

CPNota::~CPNota() = default;

void CPNota::SetField()
{
    Form &f = *form_;
    // A code typed for another causale stays in the record, for the next one, but is nobody's now.
    const long counterpart = m_pnota.pno_rel == kNoCounterpart ? 0 : m_pnota.pno_cli_for;
    f.typed = {.causale = m_pnota.pno_cau,
               .section = m_pnota.pno_sez,
               .protocol = m_pnota.pno_prot,
               .day = m_pnota.pno_data,
               .document_day = m_pnota.pno_data_doc,
               .counterpart = counterpart,
               .terms = m_pnota.pno_pag,
               .causale_text = m_pnota.pno_des_cau,
               .document = m_pnota.pno_doc,
               .total = m_pnota.pno_tot_doc};
    f.number->SetValue(static_cast<double>(m_pnota.pno_codice));
    f.number->SetModified(false);
    f.browse_order->SetCode(sqlpno.GetIndex());
    const bool was_changed = IsChanged();
    ShowFields();
    SetChanged(was_changed);
    f.vat_register->setText(m_pnota.pno_cau == 0 ? QString() : QString(RegisterName(m_pnota.pno_reg)));
    f.banner->setVisible(m_pnota.pno_cau_iva == 1 && m_pnota.pno_iva_sosp == 1);
    ShowVatLines();
    ShowRows();
    ShowTotals();
    // An event may run when the focus is in the next field already: what is typed there replaces its value.
    CTarvoField *entered = focusWidget() ? FieldOf(focusWidget()) : nullptr;
    if (entered) entered->SelectAll();
}

void CPNota::GetField()
{
    ReadFields(); // what has an event of its own, and the cells, are in the record already
}

void CPNota::ShowVatLines()
{
    CSpreadSheet *grid = form_->vat;
    const SpreadUpdate update(grid);
    for (std::size_t i = 0; i < kVatLines; ++i) {
        const PNOTA_IVA &line = m_pnota.iva[i];
        const long at = static_cast<long>(i) + 1;
        grid->SetLong(at, kVatCode, line.iva);
        grid->SetNumber(at, kVatTaxableAmount, line.impo);
        grid->SetNumber(at, kVatRate, line.aliq);
        grid->SetNumber(at, kVatTax, line.imposta);
        grid->SetNumber(at, kVatShare, line.ind);
    }
}

void CPNota::ShowRows()
{
    CSpreadSheet *grid = form_->rows;
    const SpreadUpdate update(grid);
    std::array<bool, kEntryRows + 1> has_centres{};
    for (const PNOTA_CENTRO &centre : m_pnota.centri)
        if (centre.pcc_riga >= 1 && centre.pcc_riga <= static_cast<long>(kEntryRows))
            has_centres[static_cast<std::size_t>(centre.pcc_riga)] = true;
    for (std::size_t i = 0; i < kEntryRows; ++i) {
        const PNOTA_RIGA &row = m_pnota.righe[i];
        const long at = static_cast<long>(i) + 1;
        grid->SetLong(at, kRowMas, row.row_mas);
        grid->SetLong(at, kRowCon, row.row_con);
        grid->SetLong(at, kRowSot, row.row_sot);
        grid->SetText(at, kRowAccount, row.des_sot.str());
        grid->SetLong(at, kRowCausale, row.row_cau);
        grid->SetText(at, kRowDocument, row.row_n_doc.str());
        grid->SetNumber(at, kRowAmount, row.row_importo);
        grid->SetText(at, kRowSide, row.IsDare() ? "D" : row.IsAvere() ? "A" : "");
        grid->SetText(at, kRowAutomatic, !row.InUse() ? "" : row.row_auto == 1 ? kYes : kNo);
        grid->SetText(at, kRowCentres, !row.InUse() ? "" : has_centres[i + 1] ? kYes : kNo);
    }
}

void CPNota::ShowTotals()
{
    Form &f = *form_;
    const auto show = [](QLabel *figure, double amount) { figure->setText(ToQt(FormatAmount(amount))); };
    show(f.taxable, m_pnota.pno_tot_imp);
    show(f.tax, m_pnota.pno_tot_iva);
    show(f.exempt, m_pnota.pno_tot_esente);
    show(f.non_taxable, m_pnota.pno_tot_non_imp);
    show(f.outside, m_pnota.pno_tot_non_82);
    show(f.dare, m_pnota.pno_dare);
    show(f.avere, m_pnota.pno_avere);
    show(f.imbalance, m_pnota.pno_tot_squ);
    QPalette colours = f.dare->palette();
    if (!TestIfZero(m_pnota.pno_tot_squ)) colours.setColor(QPalette::WindowText, Readable(QColor(192, 0, 0)));
    f.imbalance->setPalette(colours);
    std::string words = DescribeImbalance(m_pnota);
    if (m_pnota.pno_cau == 0 && TestIfZero(m_pnota.pno_dare) && TestIfZero(m_pnota.pno_avere))
        words = "Si comincia dalla causale: il codice, una parte del nome, oppure F4";
    double owed = 0;
    for (const PNOTA_IVA &line : m_pnota.iva) owed += OwedForLine(line);
    if (words.empty() && !TestIfZero(f.typed_total) && !TestIfZero(owed) && !TestIfZero(f.typed_total - owed))
        words = "Totale digitato " + FormatAmount(f.typed_total) + ", righe IVA " + FormatAmount(owed);
    if (words.empty()) words = f.protocol_order;
    SetStatus(words.empty() ? QStringLiteral("Il movimento quadra") : ToQt(words));
}

void CPNota::Protect(SACommand *)
{
    Form &f = *form_;
    const bool has_counterpart = m_pnota.pno_rel == kCustomer || m_pnota.pno_rel == kSupplier;
    const QString kind = m_pnota.pno_rel == kCustomer ? "Cliente" : "Fornitore";
    f.counterpart_label->setText(m_pnota.pno_rel == kCustomer ? "Clie&nte" : "For&nitore");
    Name(f.counterpart, kind);
    f.counterpart->Protect(!has_counterpart);
    f.terms->Protect(!has_counterpart);
    f.terms_day->Protect(!has_counterpart);
    f.protocol->Protect(m_pnota.pno_reg <= kJournalOnly);
    f.number->Protect(m_single); // which would lead to another entry
    setWindowTitle(f.is_new ? "Prima Nota" : "Modifica Prima Nota");
    ProtectIva();
}

void CPNota::ProtectIva()
{
    CSpreadSheet *grid = form_->vat;
    const bool has_vat = m_pnota.pno_cau_iva == 1;
    grid->setEnabled(has_vat); // its cells stay those of an entry grid, or it would look like a list
    for (std::size_t i = 0; i < kVatLines; ++i) {
        const PNOTA_IVA &line = m_pnota.iva[i];
        const long at = static_cast<long>(i) + 1;
        const bool has_code = has_vat && line.iva != 0;
        const VatTreatment treatment = TreatmentOf(m_pnota.pno_reg, line.tip);
        const bool has_rate = treatment == VatTreatment::RateAndShare || treatment == VatTreatment::RateOnly;
        grid->LockCell(at, kVatTax, !has_code || !has_rate);
        grid->LockCell(at, kVatShare, !has_code || treatment != VatTreatment::RateAndShare);
    }
}

int CPNota::ActiveRow() const
{
    const QWidget *focus = focusWidget();
    const bool is_in_rows = focus && (focus == form_->rows || form_->rows->isAncestorOf(focus));
    return is_in_rows ? static_cast<int>(form_->rows->ActiveRow()) : 0;
}
