#include "tarvodlg/widgets/TarvoTabsDialog.h"

#include "tarvodlg/base/Dbisam.h"
#include "tarvodlg/widgets/DialogKeys.h"
#include "tarvodlg/widgets/Theme.h"

#include <QScopedValueRollback>
#include <QTabBar>
#include <QTabWidget>
#include <QVBoxLayout>

CTarvoTabsPage::CTarvoTabsPage(CTarvoDialog *dialog) : QWidget(dialog), dialog_(dialog) {}

CTarvoTabsPage::~CTarvoTabsPage() = default;

CTarvoTabs::CTarvoTabs(CTarvoDialog *dialog, QWidget *parent)
    : QWidget(parent), dialog_(dialog), tabs_(new QTabWidget(this))
{
    tabs_->tabBar()->setFocusPolicy(Qt::NoFocus); // Enter and Tab go from field to field
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(tabs_);
    connect(tabs_, &QTabWidget::currentChanged, this, [this] { PageChanged(); });
}

void CTarvoTabs::AddPage(CTarvoTabsPage *page, const QString &title, const QString &icon)
{
    const int index = tabs_->addTab(page, icon.isEmpty() ? QIcon() : TarvoIcon(icon), title);
    if (index < 9) tabs_->setTabToolTip(index, QStringLiteral("Alt+%1").arg(index + 1));
}

CTarvoTabsPage *CTarvoTabs::ActivePage() const
{
    return static_cast<CTarvoTabsPage *>(tabs_->currentWidget());
}

void CTarvoTabs::SetActivePage(CTarvoTabsPage *page)
{
    tabs_->setCurrentWidget(page);
}

bool CTarvoTabs::Init()
{
    if (!pages_made_)
        for (int i = 0; i < tabs_->count(); ++i)
            if (!static_cast<CTarvoTabsPage *>(tabs_->widget(i))->OnInitPage()) return false;
    pages_made_ = true;
    active_ = ActivePage();
    return !active_ || active_->OnSetActive();
}

bool CTarvoTabs::PreTranslateMessage(QKeyEvent *message)
{
    if (TranslateTabKey(dialog_, tabs_, message)) return true;
    CTarvoTabsPage *page = ActivePage();
    return page && page->PreTranslateMessage(message);
}

void CTarvoTabs::OnKickIdle()
{
    if (CTarvoTabsPage *page = ActivePage()) page->OnKickIdle();
}

void CTarvoTabs::PageChanged()
{
    CTarvoTabsPage *page = ActivePage();
    if (!active_ || going_back_ || page == active_) return;
    bool may_change = false;
    dialog_->Guarded(LUMERA_TAG, [&] { may_change = active_->OnKillActive() && page->OnSetActive(); });
    if (may_change) {
        active_ = page;
        return;
    }
    const QScopedValueRollback going_back(going_back_, true);
    tabs_->setCurrentWidget(active_);
}

CTarvoTabsDialog::CTarvoTabsDialog(CWnd *parent) : CTarvoDialog(parent), tabs_(new CTarvoTabs(this, Content()))
{
    auto *layout = new QVBoxLayout(Content());
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(tabs_);
}

bool CTarvoTabsDialog::Prepare()
{
    return OnInitDialog() && tabs_->Init();
}

bool CTarvoTabsDialog::PreTranslateMessage(QKeyEvent *message)
{
    return tabs_->PreTranslateMessage(message) || CTarvoDialog::PreTranslateMessage(message);
}

void CTarvoTabsDialog::OnKickIdle()
{
    CTarvoDialog::OnKickIdle();
    tabs_->OnKickIdle();
}

void CTarvoTabsDialog::AddPage(CTarvoTabsPage *page, const QString &title, const QString &icon)
{
    tabs_->AddPage(page, title, icon);
}
