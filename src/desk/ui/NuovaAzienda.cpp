#include "desk/ui/NuovaAzienda.h"

#include "desk/ArchiveAddress.h"
#include "desk/UserFolders.h"
#include "desk/ui/Opening.h"
#include "tarvodlg/base/Dates.h"
#include "tarvodlg/base/Dbisam.h"
#include "tarvodlg/base/Files.h"
#include "tarvodlg/base/TarvoProgressDlg.h"
#include "tarvodlg/widgets/FormBuilder.h"
#include "tarvolumera/FiscalCodes.h"
#include "tarvolumera/archive/Resources.h"

#include <fmt/format.h>

namespace {

enum Where : long { kInFolder, kOnServer };

/// "Rossi & Figli S.r.l." -> .../rossi & figli s.r.l, a folder beside the others that is not there yet.
std::string ProposedFolder(const std::string &name)
{
    const std::filesystem::path base = UserDataFolder() / SafeFileName(name);
    std::filesystem::path folder = base;
    for (int number = 2; std::filesystem::exists(folder); ++number) {
        folder = base;
        folder += fmt::format(" {}", number);
    }
    return folder.string();
}

} // namespace

CNuovaAzienda::CNuovaAzienda(CWnd *parent) : CTarvoDialog(parent), year_(Year(CurrentUserInterface().Today()))
{
    setWindowTitle(QStringLiteral("Nuova azienda"));
    {
        FormBuilder form(this);
        form.Section(QStringLiteral("Azienda"));
        name_field_ = form.Text(QStringLiteral("&Denominazione"), name_);
        vat_field_ = form.Text(QStringLiteral("&Partita IVA"), vat_number_, 13);
        form.Beside();
        fiscal_field_ = form.Text(QStringLiteral("Codice &fiscale"), fiscal_code_, 18);
        form.Text(QStringLiteral("&Indirizzo"), address_);
        CTextField *postcode = form.Text(QStringLiteral("C&AP"), postcode_, 7);
        form.Beside();
        form.Text(QStringLiteral("Ci&ttà"), town_, 24);
        form.Beside();
        CTextField *province = form.Text(QStringLiteral("Pro&v."), province_, 4);
        province->SetUpperCase(true);
        OnLostFocusEvent(postcode, [this, postcode] { return OnLostFocusEventCap(postcode->Value()); });
        OnLostFocusEvent(province, [this, province] { return OnLostFocusEventProv(province->Value()); });
        year_field_ = form.Number(QStringLiteral("&Esercizio"), year_, kFirstYear, kLastYear);
        form.Section(QStringLiteral("Archivio"));
        where_field_ = form.Choice(QStringLiteral("D&ove"), where_,
                                   {{kInFolder, QStringLiteral("In una cartella di questo computer")},
                                    {kOnServer, QStringLiteral("Su un server PostgreSQL (database vuoto)")}});
        folder_field_ = form.Text(QStringLiteral("&Cartella"), folder_, 50);
        server_field_ = form.Text(QStringLiteral("Indiri&zzo"), server_, 50);
        form.Hint(
            QStringLiteral("La cartella viene creata; l'indirizzo ha la forma postgresql://utente@server/database."));
    }
    fiscal_field_->SetUpperCase(true);
    fiscal_field_->setPlaceholderText(QStringLiteral("come la partita IVA"));
    OnLostFocusEvent(name_field_, [this] {
        if (folder_field_->Value().empty() && !name_field_->Value().empty())
            folder_field_->SetValue(ProposedFolder(name_field_->Value()));
        return true;
    });
    OnLostFocusEvent(vat_field_, [this] { return OnLostFocusEventPiva(); });
    OnLostFocusEvent(fiscal_field_, [this] { return OnLostFocusEventCodFis(); });
    folder_field_->on_dbl_click = [this] { OnSfoglia(); };
    QObject::connect(where_field_, &QComboBox::currentIndexChanged, this, [this] { OnDove(); });
    AddCommand({QStringLiteral("F2 - C&rea"), {}, {}, [this] { OnOK(); }, {}, {}});
    AddCommand({QStringLiteral("F5 - &Sfoglia..."),
                QStringLiteral("Sceglie la cartella"),
                {},
                [this] { OnSfoglia(); },
                [this](CCmdUI *command) { command->Enable(where_field_->Code() == kInFolder); },
                {}});
    AddCommand({QStringLiteral("A&nnulla"), {}, {}, [this] { OnCancel(); }, {}, {}, false});
}

bool CNuovaAzienda::OnInitDialog()
{
    ShowFields();
    OnDove();
    return true;
}

bool CNuovaAzienda::OnLostFocusEventPiva()
{
    if (vat_field_->Value().empty()) return true;
    vat_field_->SetValue(NormalisedFiscalCode(vat_field_->Value()));
    const FiscalCodeCheck check = CheckVatNumber(vat_field_->Value());
    SetStatus(check.ok() ? QString() : ToQt(fmt::format("Partita IVA: {}", check.text)));
    return check.ok();
}

bool CNuovaAzienda::OnLostFocusEventCap(const std::string &postcode)
{
    const FiscalCodeCheck check = postcode.empty() ? FiscalCodeCheck{} : CheckPostcode(postcode);
    SetStatus(check.ok() ? QString() : ToQt(fmt::format("CAP: {}", check.text)));
    return check.ok();
}

/// There is no archive yet to look the province up in, but the table it will get is here.
bool CNuovaAzienda::OnLostFocusEventProv(const std::string &province)
{
    const bool is_known =
        province.empty() ||
        ResourceText("base/02_province.tsv").find(fmt::format("\n{}\t", province)) != std::string::npos;
    SetStatus(is_known ? QString() : ToQt(fmt::format("La provincia {} non esiste.", province)));
    return is_known;
}

bool CNuovaAzienda::OnLostFocusEventCodFis()
{
    if (fiscal_field_->Value().empty()) return true;
    fiscal_field_->SetValue(NormalisedFiscalCode(fiscal_field_->Value()));
    const FiscalCodeCheck check = CheckFiscalCode(fiscal_field_->Value());
    SetStatus(check.ok() ? QString() : ToQt(fmt::format("Codice fiscale: {}", check.text)));
    return check.ok();
}

void CNuovaAzienda::OnDove()
{
    const bool on_server = where_field_->Code() == kOnServer;
    static_cast<CTarvoField *>(folder_field_)->Protect(on_server);
    static_cast<CTarvoField *>(server_field_)->Protect(!on_server);
}

void CNuovaAzienda::OnSfoglia()
{
    const auto folder = CurrentUserInterface().PickFolder("Cartella del nuovo archivio");
    if (!folder) return;
    // A folder with something in it becomes the parent of the new one.
    std::error_code ignored;
    const bool is_free = std::filesystem::is_empty(*folder, ignored);
    const std::string name = name_field_->Value();
    folder_field_->SetValue((is_free ? *folder : *folder / SafeFileName(name.empty() ? "azienda" : name)).string());
}

DITTE CNuovaAzienda::Company() const
{
    CompanyDetails details;
    details.name = name_.str();
    details.vat_number = vat_number_.str();
    details.fiscal_code = fiscal_code_.str();
    details.address = address_.str();
    details.postcode = postcode_.str();
    details.town = town_.str();
    details.province = province_.str();
    return CompanyFrom(details);
}

CTarvoField *CNuovaAzienda::FindFault()
{
    const auto refuse = [this](CTarvoField *field, const std::string &text) {
        SetStatus(ToQt(text));
        return field;
    };
    if (name_.empty()) return refuse(name_field_, "Indicare la denominazione.");
    if (const FiscalCodeCheck check = CheckVatNumber(NormalisedFiscalCode(vat_number_)); !check.ok())
        return refuse(vat_field_, fmt::format("Partita IVA: {}", check.text));
    if (const std::string fault = CompanyCodeFault(Company()); !fault.empty()) return refuse(fiscal_field_, fault);
    if (year_ < kFirstYear || year_ > kLastYear) return refuse(year_field_, "L'esercizio non è valido.");
    if (where_ == kInFolder && folder_.empty()) return refuse(folder_field_, "Indicare la cartella dell'archivio.");
    if (where_ == kOnServer && !IsPostgresTarget(server_.str()))
        return refuse(server_field_, "L'indirizzo comincia con postgresql://");
    return nullptr;
}

void CNuovaAzienda::OnOK()
{
    if (!LeaveFocusedField()) return;
    ReadFields();
    if (CTarvoField *field = FindFault()) {
        RefuseField(field);
        return;
    }
    SetStatus({});
    Create();
}

void CNuovaAzienda::Create()
{
    std::string archive = where_ == kInFolder ? folder_.str() : server_.str();
    if (where_ == kOnServer && !AskForMissingPassword(this, &archive)) return;
    const bool done = Guarded(LUMERA_TAG, [&] {
        CTarvoProgressDlg progress;
        progress.SetStatus("Creazione dell'archivio in corso...");
        CreateCompany(archive, Company(), year_);
    });
    if (!done) return;
    RememberCurrentCompany(archive);
    EndDialog(IDOK);
}
