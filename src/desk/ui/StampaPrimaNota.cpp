#include "desk/ui/StampaPrimaNota.h"

#include "tables/ui/Lookups.h"
#include "tarvodlg/base/Dates.h"
#include "tarvodlg/base/Dbisam.h"
#include "tarvodlg/widgets/FormBuilder.h"
#include "tarvolumera/Company.h"

namespace {

constexpr long kLastNumber = 2'147'483'647;

} // namespace

CStampaPrimaNota::CStampaPrimaNota(CWnd *parent) : CTarvoDialog(parent)
{
    setWindowTitle(QStringLiteral("Stampa movimenti di prima nota"));
    {
        FormBuilder form(this);
        form.Section(QStringLiteral("Movimenti"));
        form.Date(QStringLiteral("&Dal giorno"), filter_.d_start);
        form.Beside();
        d_stop_ = form.Date(QStringLiteral("&al giorno"), filter_.d_stop);
        form.Number(QStringLiteral("Dal &numero"), filter_.n_start, 0, kLastNumber);
        form.Beside();
        n_stop_ = form.Number(QStringLiteral("al n&umero"), filter_.n_stop, 0, kLastNumber);
        form.Code(QStringLiteral("&Sezione"), filter_.codsez, Lookup("sezioni"));
        form.Code(QStringLiteral("&Causale"), filter_.codcac, Lookup("causali"));
        form.Hint(QStringLiteral("Un campo vuoto non limita la stampa."));
    }
    AddCommand(
        {.caption = QStringLiteral("F7 - S&tampa"), .icon = QStringLiteral("stampa"), .run = [this] { OnOK(); }});
    AddCommand({.caption = QStringLiteral("C&hiudi"), .run = [this] { EndDialog(IDCANCEL); }, .checks_field = false});
}

bool CStampaPrimaNota::OnInitDialog()
{
    const int year = static_cast<int>(lumera_db_impo.dit_anno);
    filter_.d_start = DateToJulian(1, 1, year);
    filter_.d_stop = DateToJulian(31, 12, year);
    ShowFields();
    return true;
}

/// What is asked for a print is nothing to lose.
void CStampaPrimaNota::OnCancel()
{
    EndDialog(IDCANCEL);
}

void CStampaPrimaNota::OnOK()
{
    if (!LeaveFocusedField()) return;
    ReadFields();
    const auto refuse = [this](CTarvoField *field, const char *text) {
        SetStatus(QString::fromUtf8(text));
        RefuseField(field);
    };
    if (filter_.d_stop != 0 && filter_.d_stop < filter_.d_start)
        return refuse(d_stop_, "La seconda data è prima della prima.");
    if (filter_.n_stop != 0 && filter_.n_stop < filter_.n_start)
        return refuse(n_stop_, "Il secondo numero è prima del primo.");
    SetStatus({});
    Guarded(LUMERA_TAG, [&] { PrintJournalList(filter_); });
}
