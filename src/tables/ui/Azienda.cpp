#include "tables/ui/Azienda.h"

#include "sqlapi/SAConnection.h"
#include "tables/FaultList.h"
#include "tables/ui/FiscalStates.h"
#include "tarvodlg/base/Dbisam.h"
#include "tarvodlg/base/Files.h"

#include <QBuffer>
#include <QImage>
#include <QPainter>

namespace {

template <class Record>
StoreOptions<Record> Since(const Record &loaded)
{
    StoreOptions<Record> options;
    options.loaded = &loaded;
    return options;
}

/// A logo is printed a few centimetres wide; more pixels than this only make every report heavier.
constexpr int kLogoPixelsMax = 1200;

/// Reports read the logo as a bitmap, which knows no transparency: what shows through is the paper.
QImage OnPaper(const QImage &image)
{
    QImage flat(image.size(), QImage::Format_RGB32);
    flat.fill(Qt::white);
    QPainter(&flat).drawImage(0, 0, image);
    return flat;
}

bool HasEntries(SACommand *cmd, long master)
{
    constexpr std::string_view kAnyRow =
        "SELECT COUNT(*) FROM (SELECT row_codice FROM admin.pnotaro2 WHERE row_mas = :mastro LIMIT 1) AS r";
    return CountRows(cmd, kAnyRow, [&](SACommand &query) { query.Param("mastro").setAsLong(master); }) > 0;
}

} // namespace

CAzienda::CAzienda(CWnd *parent) : CTarvoTabbedRecordDialog(parent)
{
    setWindowTitle("Azienda e impostazioni");
    UseCommands({RecordCommand::Salva, RecordCommand::Annulla});
    AddToolbarCommand({.caption = "F7 - &Logo",
                       .tooltip = "Sceglie il logo che compare nelle stampe",
                       .icon = "azienda",
                       .run = [this] { OnLogo(); }});
    AddToolbarCommand({.caption = "F8 - Cartella",
                       .tooltip = "Sceglie la cartella da cui si prendono le fatture ricevute",
                       .icon = "apri",
                       .run = [this] { OnCartella(); }});
    BuildCompany();
    BuildAccounts();
    BuildAutomatic();
    connect(person_, &QComboBox::activated, this, [this] { ProtectNames(); });
    connect(vat_number_, &QLineEdit::textEdited, this,
            [this] { SetStatus(VatNumberState(nation_->Value(), vat_number_->Value())); });
    connect(fiscal_code_, &QLineEdit::textEdited, this,
            [this] { SetStatus(FiscalCodeState(nation_->Value(), person_->Value() == "F", fiscal_code_->Value())); });
    OnLostFocusEvent(vat_number_, [this] { return OnLostFocusEventPiva(); });
    OnLostFocusEvent(fiscal_code_, [this] { return OnLostFocusEventCodFis(); });
}

template <class FieldType>
FieldType *CAzienda::Field(const char *column, FieldType *field)
{
    fields_[column] = field;
    return field;
}

void CAzienda::BuildCompany()
{
    FormBuilder form(this, AddTab("Azienda"));
    Field("dit_desc", form.Text("&Ragione sociale", company_.dit_desc));
    person_ = Field("dit_pers", form.Choice("&Persona", company_.dit_pers, {{"G", "Giuridica"}, {"F", "Fisica"}}));
    surname_ = Field("dit_cognome", form.Text("Co&gnome", company_.dit_cognome, 30));
    first_name_ = Field("dit_nome", form.Beside().Text("&Nome", company_.dit_nome, 30));
    Field("dit_indirizzo", form.Text("&Indirizzo", company_.dit_indirizzo));
    Field("dit_cap", form.Text("&CAP", company_.dit_cap));
    Field("dit_citta", form.Beside().Text("Ci&ttà", company_.dit_citta, 34));
    Field("dit_prov", form.Beside().TextCode("Pro&v.", company_.dit_prov, Lookup("province")))->SetUpperCase(true);
    nation_ = Field("dit_naz", form.TextCode("Na&zione", company_.dit_naz, Lookup("nazioni")));
    nation_->SetUpperCase(true);
    vat_number_ = Field("dit_piva", form.Text("Partita IV&A", company_.dit_piva, 16));
    vat_number_->SetUpperCase(true);
    fiscal_code_ = Field("dit_codfis", form.Beside().Text("Codice &fiscale", company_.dit_codfis, 18));
    fiscal_code_->SetUpperCase(true);
    form.Section("Esercizio");
    Field("dit_anno", form.Number("&Esercizio", company_.dit_anno, 1980, 9999));
    Field("dit_fuori_anno", form.Flag("Ammette &date fuori dall'esercizio, dopo una domanda", company_.dit_fuori_anno));
    Field("dit_periodicita",
          form.Choice("Li&quidazione IVA", company_.dit_periodicita, {{"M", "Mensile"}, {"T", "Trimestrale"}}));
    Field("dit_tasso_mora", form.Amount("Interessi di &mora, % annuo", company_.dit_tasso_mora, 2, 7));
    Field("dit_manutenzione",
          form.Flag("Propone la man&utenzione alla prossima apertura della prima nota", company_.dit_manutenzione));
    logo_ = form.Info("Logo");
}

void CAzienda::Account(FormBuilder &form, const char *column, const QString &label, long &mas, long &con, long &sot)
{
    const AccountFields account = AddAccount(form, this, label, mas, con, sot);
    fields_[std::string("flg_mas_") + column] = account.mas;
    fields_[std::string("flg_con_") + column] = account.con;
    fields_[std::string("flg_sot_") + column] = account.sot;
}

void CAzienda::BuildAccounts()
{
    FormBuilder form(this, AddTab("Conti"));
    form.Section("Clienti e fornitori");
    const AccountFields customers = AddAccount(form, this, "Clienti", company_.dit_mas_cli, company_.dit_con_cli);
    const AccountFields suppliers = AddAccount(form, this, "Fornitori", company_.dit_mas_for, company_.dit_con_for);
    fields_["dit_mas_cli"] = customers.mas;
    fields_["dit_con_cli"] = customers.con;
    fields_["dit_mas_for"] = suppliers.mas;
    fields_["dit_con_for"] = suppliers.con;
    form.Section("IVA");
    FLAG &flag = settings_;
    Account(form, "iva_acq", "Acquisti", flag.flg_mas_iva_acq, flag.flg_con_iva_acq, flag.flg_sot_iva_acq);
    Account(form, "iva_ven", "Vendite", flag.flg_mas_iva_ven, flag.flg_con_iva_ven, flag.flg_sot_iva_ven);
    Account(form, "iva_cor", "Corrispettivi", flag.flg_mas_iva_cor, flag.flg_con_iva_cor, flag.flg_sot_iva_cor);
    Account(form, "iva_sos", "In sospensione", flag.flg_mas_iva_sos, flag.flg_con_iva_sos, flag.flg_sot_iva_sos);
    Account(form, "iva_cee", "Operazioni CEE", flag.flg_mas_iva_cee, flag.flg_con_iva_cee, flag.flg_sot_iva_cee);
    form.Section("Arrotondamenti");
    Account(form, "arr_att", "Attivi", flag.flg_mas_arr_att, flag.flg_con_arr_att, flag.flg_sot_arr_att);
    Account(form, "arr_pas", "Passivi", flag.flg_mas_arr_pas, flag.flg_con_arr_pas, flag.flg_sot_arr_pas);
    Field("flg_arr_limite", form.Amount("Fino a euro", settings_.flg_arr_limite, 2, 9));
}

void CAzienda::BuildAutomatic()
{
    FormBuilder form(this, AddTab("Automatismi"));
    form.Section("Causali dei movimenti automatici");
    Field("flg_cau_pagamento", form.Code("&Pagamento fornitori", settings_.flg_cau_pagamento, Lookup("causali")));
    Field("flg_cau_incasso", form.Code("&Incasso clienti", settings_.flg_cau_incasso, Lookup("causali")));
    Field("flg_cau_effetti", form.Code("Incasso &effetti", settings_.flg_cau_effetti, Lookup("causali")));
    Field("flg_cau_fatture", form.Code("&Fatture ricevute", settings_.flg_cau_fatture, Lookup("causali")));
    form.Section("Fatture elettroniche");
    Field("flg_cau_magazzino", form.Code("Causale di &magazzino", settings_.flg_cau_magazzino, Lookup("caumag")));
    Field("flg_fatture_altro_anno",
          form.Flag("Registra anche fatture ricevute di un altro &anno", settings_.flg_fatture_altro_anno));
    folder_ = Field("flg_sdi_cartella", form.Text("&Cartella delle fatture ricevute", settings_.flg_sdi_cartella, 60));
}

bool CAzienda::OnInitDialog()
{
    return Guarded(LUMERA_TAG, [this] { Load(); });
}

void CAzienda::Load()
{
    CommandScope scope(nullptr);
    if (!sqldit.Search(scope.get(), lumera_db_impo.dit_codice, &loaded_company_))
        throw std::runtime_error("La ditta non esiste più in archivio.");
    if (!sqlflg.Search(scope.get(), loaded_company_.dit_codice, &loaded_settings_))
        loaded_settings_.flg_codice = 0; // a company from before it had settings
    company_ = loaded_company_;
    settings_ = loaded_settings_;
    settings_.flg_codice = company_.dit_codice;
    SetField();
    Protect(scope.get());
    std::error_code ignored;
    logo_->setText(std::filesystem::exists(CompanyLogo(), ignored) ? "presente nelle stampe" : "nessuno");
}

bool CAzienda::Store()
{
    CommandScope scope(nullptr);
    const bool has_settings = loaded_settings_.flg_codice != 0;
    NormaliseRecord(&company_);
    NormaliseRecord(&settings_);
    TableOutcome outcome = ConfirmRecord(scope.get(), company_, false);
    if (outcome.done) outcome = ConfirmRecord(scope.get(), settings_, !has_settings);
    if (outcome.done) { // all questions are answered
        outcome = Write(scope.get());
        if (!outcome.done) {
            BeepRefused();
            AfxMessageBox(outcome.reason, MB_OK | MB_ICONERROR);
        }
    }
    if (outcome.done)
        ReloadCompany(scope.get());
    else
        FocusColumn(outcome.column);
    return outcome.done;
}

TableOutcome CAzienda::Write(SACommand *cmd)
{
    const bool has_settings = loaded_settings_.flg_codice != 0;
    SATransaction transaction(cmd->Connection());
    TableOutcome outcome = WriteRecord(cmd, &company_, false, Since(loaded_company_));
    if (!outcome.done) return outcome;
    outcome =
        WriteRecord(cmd, &settings_, !has_settings, has_settings ? Since(loaded_settings_) : StoreOptions<FLAG>{});
    if (outcome.done) transaction.Commit();
    return outcome;
}

void CAzienda::FocusColumn(const std::string &column)
{
    const auto field = fields_.find(column);
    if (field != fields_.end()) SetFocusTo(field->second);
}

void CAzienda::Protect(SACommand *cmd)
{
    ProtectNames();
    fields_["dit_mas_cli"]->Protect(HasEntries(cmd, company_.dit_mas_cli));
    fields_["dit_mas_for"]->Protect(HasEntries(cmd, company_.dit_mas_for));
}

void CAzienda::ProtectNames()
{
    const bool is_person = person_->Value() == "F";
    for (CTextField *name : {surname_, first_name_}) name->Protect(!is_person);
}

void CAzienda::OnRecordSalva()
{
    GetField();
    Guarded(LUMERA_TAG, [this] {
        if (!Store()) return;
        m_saved = true;
        Load();
        SetStatus("Registrato");
    });
}

void CAzienda::OnRecordAnnulla()
{
    if (ConfirmDiscard()) Guarded(LUMERA_TAG, [this] { Load(); });
}

bool CAzienda::OnLostFocusEventPiva()
{
    std::string number = vat_number_->Value();
    if (nation_->Value() == "IT") number = NormalisedFiscalCode(number);
    const FiscalCodeCheck check = CheckCounterpartVat(nation_->Value(), number);
    SetStatus(check.ok() ? QString() : "Partita IVA: " + ToQt(check.text));
    if (check.ok()) vat_number_->SetValue(number);
    return check.ok();
}

bool CAzienda::OnLostFocusEventCodFis()
{
    std::string code = fiscal_code_->Value();
    if (nation_->Value() == "IT") code = NormalisedFiscalCode(code);
    const FiscalCodeCheck check = CheckCounterpartFiscalCode(nation_->Value(), person_->Value() == "F", code);
    SetStatus(check.ok() ? QString() : "Codice fiscale: " + ToQt(check.text));
    if (check.ok()) fiscal_code_->SetValue(code);
    return check.ok();
}

void CAzienda::OnLogo()
{
    FilePicking picking;
    picking.title = "Logo";
    picking.filter = "Immagini (*.png;*.jpg;*.jpeg;*.bmp)|*.png;*.jpg;*.jpeg;*.bmp||";
    const std::vector<std::filesystem::path> files = CurrentUserInterface().PickFiles(picking);
    if (files.empty()) return;
    QImage image(ToQt(files.front().string()));
    if (image.isNull()) {
        BeepRefused();
        AfxMessageBox("Il file non è un'immagine leggibile:\n\n" + files.front().string(), MB_OK | MB_ICONERROR);
        return;
    }
    if (image.width() > kLogoPixelsMax) image = image.scaledToWidth(kLogoPixelsMax, Qt::SmoothTransformation);
    std::filesystem::create_directories(CompanyLogo().parent_path());
    QByteArray bytes;
    QBuffer buffer(&bytes);
    if (!OnPaper(image).save(&buffer, "BMP")) throw std::runtime_error("Impossibile convertire il logo in bitmap.");
    WriteFileWhole(CompanyLogo(), {bytes.constData(), static_cast<std::size_t>(bytes.size())});
    logo_->setText("presente nelle stampe");
}

void CAzienda::OnCartella()
{
    const auto folder = CurrentUserInterface().PickFolder("Cartella delle fatture ricevute");
    if (!folder) return;
    SetFocusTo(folder_);
    folder_->SetValue(folder->string());
}
