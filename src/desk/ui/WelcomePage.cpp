#include "desk/ui/WelcomePage.h"

#include "desk/ArchiveAddress.h"
#include "desk/Companies.h"
#include "desk/ui/FunctionList.h"
#include "desk/ui/StartCards.h"
#include "tarvodlg/widgets/Field.h"
#include "tarvodlg/widgets/FormBuilder.h"
#include "tarvodlg/widgets/Theme.h"

#include <QEvent>
#include <QFrame>
#include <QHBoxLayout>
#include <QLabel>
#include <QVBoxLayout>

CWelcomePage::CWelcomePage(QWidget *parent) : QWidget(parent)
{
    const int line = fontMetrics().height();
    auto *middle = new QWidget;
    middle->setMaximumWidth(CharactersWide(this, 100));
    auto *column = new QVBoxLayout(middle);
    column->setSpacing(line);

    auto *head = new QHBoxLayout;
    head->setSpacing(line);
    logo_ = new QLabel;
    head->addWidget(logo_);
    auto *words = new QVBoxLayout;
    words->addWidget(HeadingLabel(QStringLiteral("Lumera Contabilità")));
    words->addWidget(QuietLabel(QStringLiteral("Scegliere l'azienda su cui lavorare.")));
    head->addLayout(words, 1);
    column->addLayout(head);

    fault_ = new QFrame;
    fault_->setFrameShape(QFrame::StyledPanel);
    auto *fault_line = new QHBoxLayout(fault_);
    reason_ = new QLabel;
    reason_->setWordWrap(true);
    reason_->setTextFormat(Qt::PlainText);
    reason_->setTextInteractionFlags(Qt::TextSelectableByMouse);
    fault_line->addWidget(reason_);
    column->addWidget(fault_);

    list_ = new CFunctionList;
    list_->setAccessibleName(QStringLiteral("Aziende"));
    column->addWidget(list_, 1);

    auto *row = new QHBoxLayout(this);
    row->setContentsMargins(line, line * 2, line, line);
    row->addStretch(1);
    row->addWidget(middle, 8);
    row->addStretch(1);
    setFocusProxy(list_);
    ShowLogo();
}

void CWelcomePage::ShowLogo()
{
    const int side = fontMetrics().height() * 4;
    logo_->setPixmap(TarvoIcon(QStringLiteral("lumera")).pixmap(QSize(side, side), devicePixelRatioF()));
}

void CWelcomePage::Refresh(const QString &reason)
{
    fault_->setVisible(!reason.isEmpty());
    reason_->setText(reason);
    const Companies companies;
    std::vector<FunctionRow> rows;
    for (const KnownCompany &company : companies.List()) {
        const QString place = ToQt(ArchivePlace(company.archive));
        rows.push_back({ToQt(company.name), place, QStringLiteral("azienda"),
                        IsReachable(company) ? QString() : QStringLiteral("non raggiungibile"),
                        [this, archive = company.archive] { on_open(archive); }});
    }
    rows.push_back({QStringLiteral("Nuova azienda..."), QStringLiteral("Crea un archivio con le tabelle di base"),
                    QStringLiteral("archivio"), QStringLiteral("Ctrl+N"), [this] { on_new(); }});
    rows.push_back({QStringLiteral("Apri azienda..."), QStringLiteral("Cerca una cartella o un server PostgreSQL"),
                    QStringLiteral("archivio"), QStringLiteral("Ctrl+O"), [this] { on_other(); }});
    rows.push_back({QStringLiteral("Azienda dimostrativa"),
                    QStringLiteral("Una ditta inventata con un anno di movimenti, per provare senza rischi"),
                    QStringLiteral("inizio"),
                    {},
                    [this] { on_demo(); }});
    list_->SetRows(std::move(rows));
}

void CWelcomePage::changeEvent(QEvent *event)
{
    QWidget::changeEvent(event);
    if (event->type() != QEvent::PaletteChange) return;
    ShowLogo();
    list_->RefreshIcons();
}
