#include "desk/ui/DeskWindow.h"

#include "desk/ui/ArchiveFunctions.h"
#include "desk/ui/DeskSettings.h"
#include "desk/ui/ElidedLabel.h"
#include "desk/ui/FunctionList.h"
#include "desk/ui/Guarded.h"
#include "desk/ui/Opening.h"
#include "desk/ui/StartPage.h"
#include "desk/ui/WelcomePage.h"
#include "frame/Module.h"
#include "tarvodlg/base/Dbisam.h"
#include "tarvodlg/widgets/DialogHelp.h"
#include "tarvodlg/widgets/FormBuilder.h"
#include "tarvodlg/widgets/ListWindow.h"
#include "tarvodlg/widgets/Theme.h"
#include "tarvolumera/Company.h"

#include <QActionGroup>
#include <QApplication>
#include <QCloseEvent>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QMenuBar>
#include <QStackedWidget>
#include <QStatusBar>
#include <QToolButton>
#include <fmt/format.h>

CDesk::CDesk(QWidget *parent) : CDesk(DeskFunctions(), parent) {}

CDesk::CDesk(std::vector<DeskFunction> functions, QWidget *parent)
    : QMainWindow(parent), functions_(std::move(functions))
{
    for (const DeskArea &area : DeskAreas()) {
        Area shown{&area, {}};
        for (std::size_t i = 0; i < functions_.size(); ++i)
            if (functions_[i].area == area.name) shown.functions.push_back(i);
        if (!shown.functions.empty()) areas_.push_back(std::move(shown));
    }
    for (std::size_t i = 0; i < functions_.size(); ++i) {
        auto *action = new QAction(functions_[i].caption, this);
        if (!functions_[i].shortcut.isEmpty()) action->setShortcut(QKeySequence(functions_[i].shortcut));
        QObject::connect(action, &QAction::triggered, this, [this, i] { Run(i); });
        addAction(action);
        actions_.push_back(action);
    }
    BuildPages();
    BuildMenus();
    BuildStatus();
    ShowCompany();
}

CDesk::~CDesk() = default;

bool CDesk::HasCompany() const
{
    return !lumera_db_target.empty();
}

void CDesk::BuildPages()
{
    navigation_ = new CFunctionList;
    navigation_->setAccessibleName(QStringLiteral("Aree"));
    navigation_->setBackgroundRole(QPalette::Window);
    navigation_->viewport()->setBackgroundRole(QPalette::Window);
    navigation_->setFixedWidth(CharactersWide(this, 30));
    QObject::connect(navigation_, &QListWidget::currentRowChanged, this, [this](int row) { OnNavigate(row); });
    navigation_->on_run = [this](int row) {
        OnNavigate(row);
        (pages_->currentWidget() == list_ ? static_cast<QWidget *>(list_) : start_)->setFocus();
    };

    filter_ = new QLineEdit;
    filter_->setPlaceholderText(QStringLiteral("Cerca una funzione (Ctrl+K)"));
    filter_->setAccessibleName(QStringLiteral("Cerca una funzione"));
    filter_->setClearButtonEnabled(true);
    filter_->setMinimumHeight(fontMetrics().height() * 9 / 4);
    glass_ = filter_->addAction(TarvoIcon(QStringLiteral("cerca")), QLineEdit::LeadingPosition);
    filter_->installEventFilter(this);
    QObject::connect(filter_, &QLineEdit::textChanged, this, [this](const QString &typed) { OnFilter(typed); });

    start_ = new CStartPage;
    list_ = new CFunctionList;
    list_->setAccessibleName(QStringLiteral("Funzioni"));
    empty_ = new QLabel(QStringLiteral("Nessuna funzione con questo nome."));
    empty_->setAlignment(Qt::AlignHCenter | Qt::AlignTop);
    empty_->setMargin(fontMetrics().height() * 2);
    pages_ = new QStackedWidget;
    for (QWidget *page :
         {static_cast<QWidget *>(start_), static_cast<QWidget *>(list_), static_cast<QWidget *>(empty_)})
        pages_->addWidget(page);

    const int gap = fontMetrics().height() / 2;
    work_ = new QWidget;
    auto *row = new QHBoxLayout(work_);
    row->setContentsMargins(gap, gap, gap, gap);
    row->setSpacing(gap);
    row->addWidget(navigation_);
    auto *column = new QVBoxLayout;
    column->setSpacing(gap);
    column->addWidget(filter_);
    column->addWidget(pages_, 1);
    row->addLayout(column, 1);

    welcome_ = new CWelcomePage;
    welcome_->on_open = [this](const std::string &archive) { Open(archive); };
    welcome_->on_new = [this] {
        if (MakeNewCompany(this)) ShowCompany();
    };
    welcome_->on_other = [this] {
        if (OpenAnotherCompany(this)) ShowCompany();
    };
    welcome_->on_demo = [this] {
        if (OpenDemoCompany(this)) ShowCompany();
    };
    whole_ = new QStackedWidget;
    whole_->addWidget(welcome_);
    whole_->addWidget(work_);
    setCentralWidget(whole_);
    RefreshNavigation();
}

void CDesk::BuildMenus()
{
    QMenu *company = menuBar()->addMenu(QStringLiteral("&Azienda"));
    for (std::size_t i = 0; i < functions_.size(); ++i)
        if (!functions_[i].needs_company) company->addAction(actions_[i]);
    company->addAction(QStringLiteral("Azienda &dimostrativa"), this, [this] {
        RunGuarded(LUMERA_TAG, [this] {
            if (OpenDemoCompany(this)) ShowCompany();
        });
    });
    company->addAction(QStringLiteral("Cambia &esercizio..."), this, [this] {
        RunGuarded(LUMERA_TAG, [this] {
            if (HasCompany() && ChangeYearOf(this)) ShowCompany();
        });
    });
    company->addSeparator();
    QAction *quit = company->addAction(QStringLiteral("&Esci"), this, [this] { close(); });
    quit->setShortcut(QKeySequence(QStringLiteral("Ctrl+Q")));
    BuildViewMenu();

    QMenu *help = menuBar()->addMenu(QStringLiteral("&?"));
    QAction *keys = help->addAction(QStringLiteral("&Tasti"), this, [this] { OnKeys(); });
    keys->setShortcut(QKeySequence(Qt::Key_F1));
    help->addAction(QStringLiteral("&Informazioni"), this, [this] { OnAbout(); });
}

void CDesk::BuildViewMenu()
{
    QMenu *view = menuBar()->addMenu(QStringLiteral("&Visualizza"));
    const auto add = [&](const QString &caption, const QString &keys, const std::function<void()> &run) {
        view->addAction(caption, this, run)->setShortcut(QKeySequence(keys));
    };
    add(QStringLiteral("&Pagina iniziale"), QStringLiteral("Ctrl+Home"), [this] { ShowStart(); });
    add(QStringLiteral("&Aggiorna"), QStringLiteral("F5"), [this] { RefreshStart(); });
    add(QStringLiteral("&Cerca una funzione"), QStringLiteral("Ctrl+K"), [this] { FocusFilter(); });
    view->addSeparator();
    for (const Area &area : areas_)
        add(area.area->name, QStringLiteral("Ctrl+%1").arg(area.area->number),
            [this, number = area.area->number] { ShowArea(number); });
    view->addSeparator();
    auto *themes = new QActionGroup(this);
    for (const auto &[theme, caption] : {std::pair{Theme::Light, QStringLiteral("Tema c&hiaro")},
                                         {Theme::Dark, QStringLiteral("Tema &scuro")},
                                         {Theme::System, QStringLiteral("Tema di sis&tema")}}) {
        QAction *action = view->addAction(caption);
        action->setCheckable(true);
        action->setChecked(CurrentTheme() == theme);
        action->setData(static_cast<int>(theme));
        themes->addAction(action);
    }
    QObject::connect(themes, &QActionGroup::triggered, this, [this](QAction *chosen) { OnTheme(chosen); });
}

void CDesk::BuildStatus()
{
    company_ = new CElidedLabel;
    year_ = new QToolButton;
    year_->setAutoRaise(true);
    year_->setToolTip(QStringLiteral("Cambia esercizio"));
    QObject::connect(year_, &QToolButton::clicked, this, [this] {
        if (ChangeYearOf(this)) ShowCompany();
    });
    engine_ = new QLabel;
    user_ = new QLabel;
    const int gap = fontMetrics().height() / 2;
    company_->setContentsMargins(gap, 0, gap, 0);
    user_->setContentsMargins(gap, 0, gap, 0);
    statusBar()->addWidget(company_, 1);
    for (QWidget *part :
         {static_cast<QWidget *>(year_), static_cast<QWidget *>(engine_), static_cast<QWidget *>(user_)})
        statusBar()->addPermanentWidget(part);
}

bool CDesk::Open(const std::string &archive)
{
    QString reason;
    const bool is_open = OpenArchiveAsking(this, archive, &reason);
    ShowCompany(reason);
    return is_open;
}

void CDesk::ShowCompany(const QString &reason)
{
    working_year_ = -1; // another company has a month of its own
    const bool has_company = HasCompany();
    ShowCompanyNames();
    year_->setVisible(has_company);
    engine_->setVisible(has_company);
    engine_->setText(lumera_db_type == 1 ? QStringLiteral("PostgreSQL") : QStringLiteral("SQLite"));
    user_->setText(ToQt(CurrentUserInterface().UserName()));
    RefreshActions();
    if (!has_company) {
        welcome_->Refresh(reason);
        whole_->setCurrentWidget(welcome_);
        welcome_->List()->setFocus();
        return;
    }
    if (!reason.isEmpty()) AfxMessageBox(FromQt(reason), MB_OK | MB_ICONSTOP);
    whole_->setCurrentWidget(work_);
    ShowStart();
}

void CDesk::ShowCompanyNames()
{
    const bool has_company = HasCompany();
    setWindowTitle((has_company ? ToQt(CompanyTitle()) + QStringLiteral(" - ") : QString()) +
                   QStringLiteral("Lumera Contabilità"));
    company_->SetText(has_company ? ToQt(CompanyLine()) : QStringLiteral("Nessuna azienda aperta"));
    year_->setText(QStringLiteral("Esercizio %1").arg(lumera_db_impo.dit_anno));
    const long year = has_company ? lumera_db_impo.dit_anno : 0;
    if (year == working_year_) return; // the month that is being worked in stays
    working_year_ = year;
    CDateField::SetFiscalYear(year);
}

void CDesk::RefreshActions()
{
    for (std::size_t i = 0; i < actions_.size(); ++i)
        actions_[i]->setEnabled(HasCompany() || !functions_[i].needs_company);
}

void CDesk::RefreshNavigation()
{
    std::vector<FunctionRow> rows = {
        {QStringLiteral("Inizio"), {}, QStringLiteral("inizio"), QStringLiteral("Ctrl+Inizio"), {}}};
    for (const Area &area : areas_)
        rows.push_back({area.area->name, {}, area.area->icon, QStringLiteral("Ctrl+%1").arg(area.area->number), {}});
    navigation_->SetRows(std::move(rows));
}

void CDesk::Run(std::size_t function)
{
    const std::string before = lumera_db_target;
    RunGuarded(LUMERA_TAG, [&] { functions_[function].run(this); });
    // The function may have led to another company, or changed what stands in titles.
    if (lumera_db_target != before)
        ShowCompany();
    else
        ShowCompanyNames();
}

void CDesk::OnNavigate(int row)
{
    if (row < 0) return;
    filter_->clear();
    if (row == 0) {
        pages_->setCurrentWidget(start_);
        start_->Refresh(false);
        return;
    }
    ShowFunctions(areas_[static_cast<std::size_t>(row) - 1].functions, false);
}

void CDesk::ShowFunctions(const std::vector<std::size_t> &functions, bool with_area)
{
    std::vector<FunctionRow> rows;
    for (const std::size_t i : functions) {
        const DeskFunction &function = functions_[i];
        rows.push_back({function.caption,
                        with_area ? function.area + QStringLiteral(": ") + function.hint : function.hint, function.icon,
                        KeyName(function.shortcut), [this, i] { Run(i); }});
    }
    const bool is_empty = rows.empty();
    list_->SetRows(std::move(rows));
    pages_->setCurrentWidget(is_empty ? static_cast<QWidget *>(empty_) : list_);
}

void CDesk::OnFilter(const QString &typed)
{
    if (typed.trimmed().isEmpty()) {
        navigation_->setCurrentRow(navigation_->currentRow(), QItemSelectionModel::SelectCurrent);
        OnNavigate(std::max(0, navigation_->currentRow()));
        return;
    }
    navigation_->clearSelection(); // what is found comes from all areas
    std::vector<std::size_t> found;
    for (const Area &area : areas_)
        for (const std::size_t i : area.functions)
            if (Matches(functions_[i], typed)) found.push_back(i);
    ShowFunctions(found, true);
}

void CDesk::ShowArea(int number)
{
    if (!HasCompany()) return;
    for (std::size_t i = 0; i < areas_.size(); ++i) {
        if (areas_[i].area->number != number) continue;
        navigation_->setCurrentRow(static_cast<int>(i) + 1);
        OnNavigate(static_cast<int>(i) + 1);
        list_->setFocus();
    }
}

void CDesk::ShowStart()
{
    if (!HasCompany()) return;
    {
        const QSignalBlocker quiet(navigation_);
        navigation_->setCurrentRow(0);
    }
    filter_->clear();
    pages_->setCurrentWidget(start_);
    navigation_->setFocus();
    start_->Refresh(true);
}

void CDesk::RefreshStart()
{
    if (HasCompany())
        start_->Refresh(true);
    else
        welcome_->Refresh({});
}

void CDesk::FocusFilter()
{
    if (!HasCompany()) return;
    filter_->setFocus();
    filter_->selectAll();
}

bool CDesk::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == filter_ && event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent *>(event)->key();
        if (key == Qt::Key_Escape) {
            filter_->clear();
            navigation_->setFocus();
            return true;
        }
        if (pages_->currentWidget() == list_ && (key == Qt::Key_Down || key == Qt::Key_Up)) {
            list_->setFocus();
            if (key == Qt::Key_Down && list_->count() > 1) list_->setCurrentRow(1);
            return true;
        }
        if (key == Qt::Key_Return || key == Qt::Key_Enter) {
            if (pages_->currentWidget() == list_) list_->RunCurrent();
            return true;
        }
    }
    return QMainWindow::eventFilter(watched, event);
}

void CDesk::OnTheme(QAction *chosen)
{
    const auto theme = static_cast<Theme>(chosen->data().toInt());
    ApplyTheme(theme);
    StoreTheme(theme);
}

void CDesk::OnKeys()
{
    CElenco list(QStringLiteral("Tasti"), QStringLiteral("Tasti"),
                 {{.title = QStringLiteral("Tasto"), .width = 18},
                  {.title = QStringLiteral("Che cosa fa"), .width = 60, .stretch = true}},
                 this);
    for (const auto &[key, what] : {std::pair{"Ctrl+K", "Cerca una funzione per una parte qualsiasi del nome"},
                                    {"Ctrl+Inizio", "Pagina iniziale: che cosa aspetta oggi"},
                                    {"F5", "Aggiorna la pagina iniziale"},
                                    {"Invio", "Apre la funzione scelta"},
                                    {"Esc", "Lascia la ricerca"},
                                    {"Ctrl+Q", "Esce"}})
        list.AddRow({key, what});
    for (const Area &area : areas_) list.AddRow({fmt::format("Ctrl+{}", area.area->number), FromQt(area.area->name)});
    for (const DeskFunction &function : functions_)
        if (!function.shortcut.isEmpty()) list.AddRow({FromQt(KeyName(function.shortcut)), FromQt(function.caption)});
    for (const auto &[key, what] : {std::pair{"F2", "Nelle finestre: conferma o salva"},
                                    {"F3", "Nelle finestre: nuovo"},
                                    {"F4, doppio clic", "Nei campi: apre l'elenco da cui scegliere"},
                                    {"F6", "Nelle finestre: elimina"},
                                    {"Pag su, Pag giù", "Nelle finestre: record precedente e successivo"},
                                    {"Invio, Tab", "Nei campi: passa al successivo"},
                                    {"Esc", "Nelle finestre: lascia, con una domanda se qualcosa è cambiato"}})
        list.AddRow({key, what});
    list.DoModal();
}

void CDesk::OnAbout()
{
    const ModuleInfo module = DescribeModule();
    AfxMessageBox(
        fmt::format("Lumera Contabilità {}\n\nContabilità generale per le imprese italiane.\n\nModulo {}, archivio "
                    "versione {}, Qt {}",
                    module.version, module.name, module.archive_version, qVersion()),
        MB_OK | MB_ICONINFORMATION);
}

void CDesk::changeEvent(QEvent *event)
{
    QMainWindow::changeEvent(event);
    if (event->type() == QEvent::ActivationChange && isActiveWindow() && HasCompany() &&
        pages_->currentWidget() == start_)
        start_->Refresh(false);
    if (event->type() == QEvent::PaletteChange) {
        navigation_->RefreshIcons();
        list_->RefreshIcons();
        glass_->setIcon(TarvoIcon(QStringLiteral("cerca")));
    }
}

void CDesk::closeEvent(QCloseEvent *event)
{
    StoreWindow(this);
    event->accept();
}
