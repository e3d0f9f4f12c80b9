#include "desk/ui/Opening.h"

#include "desk/ArchiveAddress.h"
#include "desk/Companies.h"
#include "desk/NewCompany.h"
#include "desk/UserFolders.h"
#include "desk/ui/ApriAzienda.h"
#include "desk/ui/Guarded.h"
#include "desk/ui/NuovaAzienda.h"
#include "tarvodlg/base/Dates.h"
#include "tarvodlg/base/Dbisam.h"
#include "tarvodlg/base/Files.h"
#include "tarvodlg/base/TarvoProgressDlg.h"
#include "tarvodlg/widgets/FormBuilder.h"
#include "tarvolumera/SaExceptionDisplay.h"

#include <fmt/format.h>

namespace {

/// One line asked from the user.
class CRiga : public CTarvoDialog {
  public:
    CRiga(const QString &title, const QString &hint, const QString &label, bool is_secret, CWnd *parent)
        : CTarvoDialog(parent)
    {
        setWindowTitle(title);
        FormBuilder form(this);
        form.Hint(hint);
        field_ = form.Text(label, m_text, 50);
        if (is_secret) field_->setEchoMode(QLineEdit::Password);
        AddCommand({QStringLiteral("F2 - &OK"), {}, {}, [this] { OnOK(); }, {}, {}});
        AddCommand({QStringLiteral("&Annulla"), {}, {}, [this] { EndDialog(IDCANCEL); }, {}, {}, false});
    }

    Text<500> m_text;

  protected:
    void OnCancel() override { EndDialog(IDCANCEL); }
    void OnOK() override
    {
        // As it was typed: a blank at the end of a password belongs to it.
        m_text = field_->echoMode() == QLineEdit::Password ? FromQt(field_->text()) : field_->Value();
        if (m_text.empty()) {
            RefuseField(field_);
            return;
        }
        EndDialog(IDOK);
    }

  private:
    CTextField *field_;
};

enum class Attempt { Done, WantsPassword, Failed };

Attempt Try(const std::string &archive, const std::function<void(const std::string &)> &open, QString *reason)
{
    try {
        open(archive);
        reason->clear(); // of an attempt before this one
        return Attempt::Done;
    } catch (const SAException &error) {
        *reason = ToQt(DescribeError(error));
        const bool wants_password = IsPostgresTarget(archive) && error.Fault() == SAFault::CannotOpen &&
                                    (HasPassword(archive) || AsksForPassword(error.ErrText()));
        return wants_password ? Attempt::WantsPassword : Attempt::Failed;
    } catch (const std::exception &error) {
        *reason = ToQt(error.what());
        return Attempt::Failed;
    }
}

/// Tries until it is open, the user gives up asking for the password, or the fault is another one.
/// @param archive  gets the password that was right
Attempt TryWithPasswords(QWidget *parent, std::string *archive, const std::function<void(const std::string &)> &open,
                         QString *reason)
{
    const std::string without = WithoutPassword(*archive);
    Attempt attempt = Try(*archive, open, reason);
    while (attempt == Attempt::WantsPassword) {
        if (HasPassword(*archive)) AfxMessageBox(FromQt(*reason), MB_OK | MB_ICONSTOP);
        CRiga ask(QStringLiteral("Password"),
                  QStringLiteral("Il server chiede una password per %1.").arg(ToQt(ArchivePlace(without))),
                  QStringLiteral("&Password"), true, parent);
        if (ask.DoModal() != IDOK) {
            reason->clear();
            return attempt;
        }
        *archive = WithPassword(without, ask.m_text.str());
        attempt = Try(*archive, open, reason);
    }
    return attempt;
}

std::string Moment()
{
    UserInterface &user = CurrentUserInterface();
    const long minute = user.SecondOfDay() / 60;
    return fmt::format("{} {:02}:{:02}", FormatIsoDate(user.Today()), minute / 60, minute % 60);
}

} // namespace

void RememberCurrentCompany(const std::string &archive)
{
    RunGuarded(LUMERA_TAG, [&] { Companies().Remember(archive, lumera_db_impo.dit_desc.str(), Moment()); });
}

bool OpenArchiveAsking(QWidget *parent, const std::string &archive, QString *reason)
{
    std::string address = archive;
    const Attempt attempt = TryWithPasswords(parent, &address, OpenOrKeep, reason);
    if (attempt == Attempt::Done)
        RememberCurrentCompany(archive);
    else if (attempt == Attempt::Failed)
        RunGuarded(LUMERA_TAG, [&] { Companies().MarkMissing(archive); });
    return attempt == Attempt::Done;
}

bool AskForMissingPassword(QWidget *parent, std::string *address)
{
    QString reason;
    const auto connect = [](const std::string &target) { SAConnection().Connect(target); };
    if (TryWithPasswords(parent, address, connect, &reason) == Attempt::Done) return true;
    if (!reason.isEmpty()) AfxMessageBox(FromQt(reason), MB_OK | MB_ICONSTOP);
    return false;
}

bool OpenAnotherCompany(QWidget *parent)
{
    return CApriAzienda(parent).DoModal() == IDOK;
}

bool MakeNewCompany(QWidget *parent)
{
    return CNuovaAzienda(parent).DoModal() == IDOK;
}

bool OpenDemoCompany(QWidget *parent)
{
    const std::string folder = (UserDataFolder() / "dimostrativa").string();
    QString reason;
    std::error_code unreadable; // the opening says why
    if (std::filesystem::exists(ArchiveFile(folder), unreadable) || unreadable) {
        if (OpenArchiveAsking(parent, folder, &reason)) return true;
        AfxMessageBox(FromQt(reason), MB_OK | MB_ICONSTOP);
        return false;
    }
    return RunGuarded(LUMERA_TAG, [&] {
        {
            CTarvoProgressDlg progress;
            progress.SetStatus("Creazione dell'azienda dimostrativa in corso...");
            CreateDemoCompany(folder, Year(CurrentUserInterface().Today()));
        }
        RememberCurrentCompany(folder);
    });
}

std::string AskForAddress(QWidget *parent)
{
    CRiga ask(
        QStringLiteral("Indirizzo PostgreSQL"),
        QStringLiteral("postgresql://utente@server/database. La password si chiede a parte e non viene ricordata."),
        QStringLiteral("&Indirizzo"), false, parent);
    return ask.DoModal() == IDOK ? ask.m_text.str() : std::string{};
}
