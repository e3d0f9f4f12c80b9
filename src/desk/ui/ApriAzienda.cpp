#include "desk/ui/ApriAzienda.h"

#include "desk/ArchiveAddress.h"
#include "desk/ui/Opening.h"
#include "tarvodlg/base/Dbisam.h"
#include "tarvodlg/widgets/FormBuilder.h"
#include "tarvodlg/widgets/SpreadSheet.h"
#include "tarvodlg/widgets/Theme.h"

#include <fmt/format.h>

namespace {

enum Column : long { kName = 1, kPlace, kOpened, kState };

/// "2026-06-01 09:30" as people write it.
std::string ShownMoment(const std::string &moment)
{
    if (moment.size() < 16) return moment;
    return fmt::format("{}/{}/{} {}", moment.substr(8, 2), moment.substr(5, 2), moment.substr(0, 4),
                       moment.substr(11, 5));
}

} // namespace

CApriAzienda::CApriAzienda(CWnd *parent) : CTarvoDialog(parent)
{
    setWindowTitle(QStringLiteral("Apri azienda"));
    spread_ = new CSpreadSheet(this);
    spread_->SetColumns({{.title = QStringLiteral("Azienda"), .width = 34, .locked = true},
                         {.title = QStringLiteral("Archivio"), .width = 32, .locked = true, .stretch = true},
                         {.title = QStringLiteral("Ultima apertura"), .width = 17, .locked = true},
                         {.title = QStringLiteral("Stato"), .width = 17, .locked = true}});
    spread_->RememberLayout(QStringLiteral("ApriAzienda"));
    spread_->on_dbl_click = [this](long, long) { OnOK(); };
    spread_->setMinimumSize(CharactersWide(this, 118), fontMetrics().height() * 14);
    {
        FormBuilder form(this);
        form.Fill(spread_);
    }
    const auto update = [this](CCmdUI *command) { command->Enable(Selected() != nullptr); };
    AddCommand({QStringLiteral("F2 - &Apri"), {}, {}, [this] { OnOK(); }, update, {}});
    AddCommand({QStringLiteral("F3 - &Cartella..."),
                QStringLiteral("Cerca la cartella di un archivio"),
                {},
                [this] { OnCartella(); },
                {},
                {}});
    AddCommand({QStringLiteral("F5 - &Indirizzo..."),
                QStringLiteral("Un archivio su un server PostgreSQL"),
                {},
                [this] { OnIndirizzo(); },
                {},
                {}});
    AddCommand({QStringLiteral("F6 - &Togli"),
                QStringLiteral("Toglie l'azienda da questo elenco; l'archivio resta"),
                {},
                [this] { OnTogli(); },
                update,
                {}});
    AddCommand({QStringLiteral("A&nnulla"), {}, {}, [this] { EndDialog(IDCANCEL); }, {}, {}, false});
}

bool CApriAzienda::OnInitDialog()
{
    Fill();
    if (!companies_.Fault().empty()) SetStatus(ToQt(companies_.Fault()));
    return true;
}

void CApriAzienda::Fill()
{
    const std::vector<KnownCompany> &list = companies_.List();
    spread_->BeginUpdate();
    spread_->Clear();
    spread_->SetRowCount(static_cast<long>(list.size()));
    for (long row = 1; row <= spread_->RowCount(); ++row) {
        const KnownCompany &company = list[static_cast<std::size_t>(row - 1)];
        const bool is_reachable = IsReachable(company);
        spread_->SetText(row, kName, company.name);
        spread_->SetText(row, kPlace, ArchivePlace(company.archive));
        spread_->SetText(row, kOpened, ShownMoment(company.opened));
        spread_->SetText(row, kState, is_reachable ? "" : "non raggiungibile");
        if (!is_reachable) spread_->SetRowColor(row, Readable(QColor(Qt::darkRed)));
    }
    spread_->EndUpdate();
    if (!list.empty()) spread_->SetActiveCell(1, kName);
}

const KnownCompany *CApriAzienda::Selected() const
{
    const long row = spread_->ActiveRow();
    if (row < 1 || row > static_cast<long>(companies_.List().size())) return nullptr;
    return &companies_.List()[static_cast<std::size_t>(row - 1)];
}

void CApriAzienda::Open(const std::string &archive)
{
    QString reason;
    if (OpenArchiveAsking(this, archive, &reason)) {
        EndDialog(IDOK);
        return;
    }
    if (reason.isEmpty()) return;
    AfxMessageBox(FromQt(reason), MB_OK | MB_ICONSTOP);
    companies_ = Companies();
    Fill();
}

void CApriAzienda::OnOK()
{
    if (const KnownCompany *company = Selected()) Open(std::string(company->archive));
}

void CApriAzienda::OnCartella()
{
    if (const auto folder = CurrentUserInterface().PickFolder("Cartella dell'archivio")) Open(folder->string());
}

void CApriAzienda::OnIndirizzo()
{
    if (const std::string address = AskForAddress(this); !address.empty()) Open(address);
}

void CApriAzienda::OnTogli()
{
    const KnownCompany *company = Selected();
    if (company == nullptr) return;
    Guarded(LUMERA_TAG, [&] { companies_.Forget(std::string(company->archive)); });
    Fill();
}
