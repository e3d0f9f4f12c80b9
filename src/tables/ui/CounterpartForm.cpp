#include "tables/ui/CounterpartForm.h"

#include "tables/ui/FiscalStates.h"

#include <QLabel>

namespace {

QLabel *LabelOf(const QWidget *field)
{
    for (auto *label : field->parentWidget()->findChildren<QLabel *>())
        if (label->buddy() == field) return label;
    return nullptr;
}

void SetLabel(QWidget *field, const QString &text)
{
    if (QLabel *label = LabelOf(field)) label->setText(text);
    QString name = text;
    field->setAccessibleName(name.remove('&'));
}

/// The provinces are Italy's; other countries write there what they like.
class ProvinceLookup : public TableLookup {
  public:
    explicit ProvinceLookup(std::function<bool()> is_italian)
        : TableLookup("province"), is_italian_(std::move(is_italian))
    {
    }

    std::optional<std::string> Describe(const std::string &code) override
    {
        const auto found = TableLookup::Describe(code);
        if (!found && !is_italian_()) return std::string();
        return found;
    }

  private:
    std::function<bool()> is_italian_;
};

} // namespace

CounterpartForm::CounterpartForm(CTarvoDialog *dialog, const CounterpartMembers &members, NameFunction name,
                                 CheckFunction check)
    : dialog_(dialog), members_(members), name_(std::move(name)), check_(std::move(check))
{
}

void CounterpartForm::Name(const char *column, CTarvoField *field)
{
    name_(std::string(members_.prefix) + column, field);
}

CTextField *CounterpartForm::Named(const char *column, CTextField *field)
{
    Name(column, field);
    return field;
}

void CounterpartForm::AddIdentity(FormBuilder &form)
{
    kind_ = form.Choice("&Tipo", members_.pers, {{"G", "Persona giuridica"}, {"F", "Persona fisica"}});
    Name("pers", kind_);
    form.Beside();
    sole_trader_ = form.Flag("&Ditta individuale", members_.ditta_ind);
    Name("ditta_ind", sole_trader_);
    desc_ = Named("desc", form.Text("&Ragione sociale", members_.desc, 73));
    first_line_ = Named("rag_soc1", form.Text("Denominazione", members_.rag_soc1, 32));
    form.Beside();
    second_line_ = Named("rag_soc2", form.Text("Seguito", members_.rag_soc2, 32));
    QObject::connect(kind_, &QComboBox::activated, dialog_, [this] { OnKindChosen(); });
    for (CTextField *part : {first_line_, second_line_})
        dialog_->OnLostFocusEvent(part, [this] {
            ProposeName();
            return true;
        });

    form.Section("Indirizzo");
    Named("indirizzo", form.Text("&Indirizzo", members_.indirizzo, 73));
    Named("cap", form.Text("CA&P", members_.cap, 10));
    form.Beside();
    Named("citta", form.Text("&Città", members_.citta, 32));
    form.Beside();
    CTextField *province = Named("prov", form.Text("Pro&v.", members_.prov, 4));
    province->SetUpperCase(true);
    province->SetLookup(std::make_shared<ProvinceLookup>([this] { return Nation() == "IT"; }));
    nation_ = Named("naz", form.TextCode("Na&zione", members_.naz, Lookup("nazioni")));
    nation_->SetUpperCase(true);

    form.Section("Codici fiscali");
    vat_number_ = Named("piva", form.Text("Partita IV&A", members_.piva, 22));
    vat_number_->SetUpperCase(true);
    form.Beside();
    fiscal_code_ = Named("codfis", form.Text("Codice &fiscale", members_.codfis, 20));
    fiscal_code_->SetUpperCase(true);
    QObject::connect(vat_number_, &QLineEdit::textEdited, dialog_,
                     [this] { dialog_->SetStatus(VatNumberState(Nation(), vat_number_->Value())); });
    QObject::connect(fiscal_code_, &QLineEdit::textEdited, dialog_,
                     [this] { dialog_->SetStatus(FiscalCodeState(Nation(), IsPerson(), fiscal_code_->Value())); });
    dialog_->OnLostFocusEvent(vat_number_, [this] { return OnLostFocusEventPiva(); });
    dialog_->OnLostFocusEvent(fiscal_code_, [this] { return OnLostFocusEventCodFis(); });
}

void CounterpartForm::AddContacts(FormBuilder &form)
{
    form.Section("Recapiti");
    Named("telefono", form.Text("Telefono", members_.telefono));
    form.Beside();
    Named("email", form.Text("E-mai&l", members_.email, 40));
    Named("pec", form.Text("PEC", members_.pec, 45));
}

void CounterpartForm::AddAccounting(FormBuilder &form)
{
    form.Section("Contabilità");
    const AccountFields account = AddAccount(form, dialog_, "&Conto", members_.mas, members_.con);
    account.group->setToolTip("Vuoto: il conto ordinario della ditta");
    Name("mas", account.mas);
    Name("con", account.con);
}

void CounterpartForm::AddState(FormBuilder &form)
{
    form.Section("Pagamenti");
    Name("pag", form.Code("&Pagamento", members_.pag, Lookup("pagamenti")));
    Name("ban", form.Code("&Banca", members_.ban, Lookup("banche")));
    iban_ = Named("iban", form.Text("&IBAN", members_.iban));
    iban_->SetUpperCase(true);
    dialog_->OnLostFocusEvent(iban_, [this] { return OnLostFocusEventIban(); });
    form.Section("Stato");
    CDateField *ceased = form.Date("Cessa&to il", members_.data_cessazione);
    Name("data_cessazione", ceased);
    CFlagField *excluded = form.Flag("Escluso dalle co&municazioni dei dati fatture", members_.escludi_iva);
    Name("escludi_iva", excluded);
}

std::string CounterpartForm::Nation() const
{
    return nation_->Value();
}

bool CounterpartForm::IsPerson() const
{
    return kind_->Value() == "F";
}

void CounterpartForm::OnRecordShown()
{
    const bool is_person = IsPerson();
    SetLabel(desc_, is_person ? "&Nominativo" : "&Ragione sociale");
    SetLabel(first_line_, is_person ? "Co&gnome" : "Denominazione");
    SetLabel(second_line_, is_person ? "No&me" : "Seguito");
}

void CounterpartForm::Protect()
{
    sole_trader_->Protect(!IsPerson());
}

void CounterpartForm::OnKindChosen()
{
    OnRecordShown();
    Protect();
    if (!IsPerson()) sole_trader_->SetValue(0);
}

void CounterpartForm::ProposeName()
{
    if (!desc_->Value().empty() || (IsPerson() && second_line_->Value().empty())) return;
    desc_->SetValue(Trimmed(first_line_->Value() + " " + second_line_->Value()));
    desc_->SetModified(true);
}

void CounterpartForm::CompleteName()
{
    if (!members_.desc.empty()) return;
    members_.desc.Assign(Trimmed(members_.rag_soc1.str() + " " + members_.rag_soc2.str()));
}

bool CounterpartForm::OnLostFocusEventPiva()
{
    std::string number = vat_number_->Value();
    if (Nation() == "IT") number = NormalisedFiscalCode(number);
    const FiscalCodeCheck check = CheckCounterpartVat(Nation(), number);
    if (!check.ok()) {
        dialog_->SetStatus("Partita IVA: " + ToQt(check.text));
        return false;
    }
    vat_number_->SetValue(number);
    dialog_->SetStatus({});
    // A company has its VAT number for a fiscal code, but for the few that were there before VAT was.
    if (Nation() == "IT" && !IsPerson() && fiscal_code_->Value().empty() && !number.empty()) {
        fiscal_code_->SetValue(number);
        fiscal_code_->SetModified(true);
    }
    if (!number.empty()) TellQuestion("piva");
    return true;
}

bool CounterpartForm::OnLostFocusEventCodFis()
{
    std::string code = fiscal_code_->Value();
    if (Nation() == "IT") code = NormalisedFiscalCode(code);
    const FiscalCodeCheck check = CheckCounterpartFiscalCode(Nation(), IsPerson(), code);
    if (!check.ok()) {
        dialog_->SetStatus("Codice fiscale: " + ToQt(check.text));
        return false;
    }
    const bool has_vat_number = !vat_number_->Value().empty();
    fiscal_code_->SetValue(code);
    if (!has_vat_number) dialog_->SetStatus({}); // a duplicate VAT number stays told
    if (!has_vat_number && !code.empty()) TellQuestion("codfis");
    return true;
}

bool CounterpartForm::OnLostFocusEventIban()
{
    std::string iban = iban_->Value();
    std::erase(iban, ' '); // pasted in groups of four
    const std::string fault = IbanFault(iban);
    dialog_->SetStatus(fault.empty() ? QString() : "IBAN: " + ToQt(fault));
    if (fault.empty()) iban_->SetValue(iban);
    return fault.empty();
}

void CounterpartForm::TellQuestion(const char *column)
{
    for (const FieldFault &fault : check_()) {
        if (fault.severity != FieldFault::Severity::Question || fault.column != std::string(members_.prefix) + column)
            continue;
        dialog_->SetStatus(ToQt(fault.text).section('\n', 0, 0));
        return;
    }
}
