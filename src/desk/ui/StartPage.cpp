#include "desk/ui/StartPage.h"

#include "desk/ui/Guarded.h"
#include "desk/ui/StartCards.h"
#include "einvoice/ui/FattureElettroniche.h"
#include "ledger/ui/GestionePrimaNota.h"
#include "schedule/ScheduleList.h"
#include "schedule/ui/GestioneScadenze.h"
#include "schedule/ui/Scadenze.h"
#include "tarvodlg/base/Dates.h"
#include "tarvodlg/base/Dbisam.h"
#include "tarvodlg/widgets/Field.h"
#include "tarvodlg/widgets/FormBuilder.h"
#include "tarvolumera/SaExceptionDisplay.h"

#include <QDate>
#include <QEvent>
#include <QGridLayout>
#include <QLocale>
#include <QScrollBar>
#include <QTimer>

namespace {

constexpr qint64 kCheapMs = 250, kRestMs = 60'000;

/// Two cards side by side need so many characters.
constexpr int kTwoColumns = 118;

} // namespace

CStartPage::CStartPage(QWidget *parent) : QScrollArea(parent)
{
    setWidgetResizable(true);
    setFrameShape(QFrame::NoFrame);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setAccessibleName(QStringLiteral("Che cosa aspetta oggi"));
    setFocusPolicy(Qt::StrongFocus);
}

void CStartPage::Refresh(bool by_user)
{
    if (lumera_db_target.empty()) return;
    if (!by_user && since_.isValid() && cost_ms_ > kCheapMs && since_.elapsed() < kRestMs) return;
    QElapsedTimer cost;
    cost.start();
    try {
        SAConnection connection;
        connection.Connect(lumera_db_target);
        SACommand command(&connection);
        shown_ = reader_.Read(&command, CurrentUserInterface().Today());
        Show(shown_);
    } catch (const SAException &error) {
        ShowFault(ToQt(DescribeError(error)));
    } catch (const std::exception &error) {
        ShowFault(ToQt(error.what()));
    }
    cost_ms_ = cost.elapsed();
    since_.start();
}

QVBoxLayout *CStartPage::NewContent()
{
    auto *content = new QWidget;
    auto *column = new QVBoxLayout(content);
    const int gap = fontMetrics().height();
    column->setContentsMargins(gap, gap, gap, gap);
    column->setSpacing(gap);
    column->addWidget(HeadingLabel(ToQt(lumera_db_impo.dit_desc.str())));
    const QDate today = QDate::fromJulianDay(CurrentUserInterface().Today());
    column->addWidget(QuietLabel(QLocale(QLocale::Italian).toString(today, QStringLiteral("dddd d MMMM yyyy"))));
    cards_.clear();
    grid_ = nullptr;
    columns_ = 0;
    const int position = verticalScrollBar()->value();
    setWidget(content); // the one before is deleted
    verticalScrollBar()->setValue(position);
    return column;
}

void CStartPage::Show(const Waiting &waiting)
{
    QVBoxLayout *column = NewContent();
    grid_ = new QGridLayout;
    grid_->setSpacing(fontMetrics().height());
    column->addLayout(grid_);
    column->addStretch(1);
    cards_ = {Invoices(waiting), Instalments(waiting, kCustomer), Instalments(waiting, kSupplier),
              UnbalancedCard(waiting, [this](long number) { OpenEntry(number); })};
    Arrange();
}

void CStartPage::OpenEntry(long number)
{
    RunAndRefresh([number] { EditPNota(number); });
}

QWidget *CStartPage::Invoices(const Waiting &waiting)
{
    // From the day on which the first one that waits arrived: what the card counts is then in the list.
    long first = CurrentUserInterface().Today();
    for (const InvoiceRow &row : waiting.oldest_invoices) {
        const SADateTime &moment = row.acquired;
        const long day = DateToJulian(moment.GetDay(), moment.GetMonth(), moment.GetYear());
        if (day != 0) first = std::min(first, day);
    }
    InvoiceActions actions;
    actions.open = [this, first](long code) { OpenInvoices(first, code); };
    actions.list = [this, first] { OpenInvoices(first, 0); };
    return InvoicesCard(waiting, actions);
}

/// @param code  the file to stand on, 0 = the first
void CStartPage::OpenInvoices(long first, long code)
{
    RunAndRefresh([this, first, code] {
        CFattureElettroniche list(window());
        list.m_first = first;
        list.m_last = CurrentUserInterface().Today();
        list.m_only_open = true;
        list.m_select = code;
        list.DoModal();
    });
}

QWidget *CStartPage::Instalments(const Waiting &waiting, long side)
{
    InstalmentActions actions;
    actions.open = [this, side](long number) {
        RunAndRefresh([side, number] { EditScadenza(static_cast<short>(side), number); });
    };
    actions.list = [this, side] {
        RunAndRefresh([this, side] {
            CGestioneScadenze list(window());
            list.m_relaz = static_cast<short>(side);
            list.m_stato = kOpenInstalments;
            list.DoModal();
        });
    };
    return InstalmentsCard(waiting, side, actions);
}

/// What the user did there may have changed what waits.
void CStartPage::RunAndRefresh(const std::function<void()> &work)
{
    RunGuarded(LUMERA_TAG, work);
    Refresh(true);
    setFocus();
}

void CStartPage::ShowFault(const QString &text)
{
    QVBoxLayout *column = NewContent();
    column->addWidget(FaultCard(text, QStringLiteral("F5 per riprovare.")));
    column->addStretch(1);
}

void CStartPage::Arrange()
{
    if (grid_ == nullptr) return;
    const int columns = viewport()->width() >= CharactersWide(this, kTwoColumns) ? 2 : 1;
    if (columns == columns_) return;
    columns_ = columns;
    for (std::size_t i = 0; i < cards_.size(); ++i)
        grid_->addWidget(cards_[i], static_cast<int>(i) / columns, static_cast<int>(i) % columns);
    grid_->setColumnStretch(0, 1);
    grid_->setColumnStretch(1, columns == 2 ? 1 : 0);
}

void CStartPage::resizeEvent(QResizeEvent *event)
{
    QScrollArea::resizeEvent(event);
    Arrange();
}

void CStartPage::changeEvent(QEvent *event)
{
    QScrollArea::changeEvent(event);
    // Icons and quiet texts have the colours of the palette they were made with. Later, since whoever changes the
    // colours of the program still goes through the widgets that would be deleted.
    if (event->type() == QEvent::PaletteChange && grid_ != nullptr)
        QTimer::singleShot(0, this, [this] {
            if (grid_ != nullptr) Show(shown_);
        });
}
