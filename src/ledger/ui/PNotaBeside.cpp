// What stands beside the entry while it is typed: a document to read, moved and hidden by keys of the editor.
#include "ledger/ui/PNotaForm.h"

#include <QAbstractButton>
#include <QLabel>
#include <QScreen>
#include <QScrollArea>
#include <QSettings>
#include <QSplitter>
#include <QVBoxLayout>
#include <algorithm>

namespace {

constexpr double kZoomStep = 1.2, kShareOfScreen = 0.97;
constexpr int kReadableCharacters = 60; ///< a page of A4 in less cannot be read
constexpr const char *kShareKey = "PNota/affiancato", *kHiddenKey = "PNota/affiancato-nascosto";

} // namespace

void CPNota::ShowBeside(Beside beside)
{
    Form &f = *form_;
    f.beside = std::move(beside);
    f.splitter = new QSplitter(Qt::Horizontal, this);
    f.splitter->setChildrenCollapsible(false);
    f.entry_area = new QScrollArea(f.splitter);
    f.entry_area->setFrameShape(QFrame::NoFrame);
    f.entry_area->setWidgetResizable(true);
    f.entry_area->setFocusPolicy(Qt::NoFocus);
    delete Frame()->replaceWidget(Content(), f.splitter);
    f.entry_area->setWidget(Content());
    f.entry_area->setMinimumWidth(f.header->minimumSizeHint().width());
    f.splitter->addWidget(f.beside.widget);
    f.splitter->addWidget(f.entry_area);
    AddBesideCommands();
    resize(screen()->availableSize() * kShareOfScreen);
}

/// One button shows the key that matters most; the others are found with F1.
void CPNota::AddBesideCommands()
{
    const Beside &beside = form_->beside;
    const auto is_shown = [&beside] { return !beside.widget->isHidden(); };
    const auto when_shown = [is_shown](CCmdUI *command) { command->Enable(is_shown()); };
    QAbstractButton *toggle = AddCommand({.caption = "F12 - " + beside.caption,
                                          .tooltip = "Mostra o nasconde " + beside.name,
                                          .icon = "zoom-piu",
                                          .run =
                                              [this, is_shown] {
                                                  form_->is_beside_chosen = true;
                                                  ShowBesideWidget(!is_shown());
                                              },
                                          .update = [is_shown](CCmdUI *command) { command->SetCheck(is_shown()); },
                                          .checks_field = false});
    toggle->setFocusPolicy(Qt::NoFocus);
    struct Key {
        const char *shortcut, *tooltip;
        std::function<void()> run;
    };
    const Key keys[] = {{"Alt+PgDown", "Scorre avanti ", [&beside] { beside.scroll(1); }},
                        {"Alt+PgUp", "Scorre indietro ", [&beside] { beside.scroll(-1); }},
                        {"Alt++", "Ingrandisce ", [&beside] { beside.zoom(kZoomStep); }},
                        {"Alt+-", "Rimpicciolisce ", [&beside] { beside.zoom(1 / kZoomStep); }},
                        {"Alt+0", "Riporta alla larghezza della finestra ", [&beside] { beside.zoom(1); }}};
    for (const Key &key : keys)
        AddCommand({.caption = key.tooltip + beside.name,
                    .tooltip = key.tooltip + beside.name,
                    .run = key.run,
                    .update = when_shown,
                    .shortcut = key.shortcut,
                    .checks_field = false})
            ->hide();
}

void CPNota::ShowBesideWidget(bool shown)
{
    Form &f = *form_;
    f.beside.widget->setVisible(shown);
    const int beside = BesideWidth();
    if (shown) f.splitter->setSizes({beside, RoomForBoth() - beside});
    f.seen_focus = nullptr;
    ShowNote();
}

/// As the user left it; else half the window, or what the entry leaves if that can be read. The entry scrolls in what
/// it gets.
int CPNota::BesideWidth() const
{
    const Form &f = *form_;
    const int room = RoomForBoth();
    const int left = room - Content()->minimumSizeHint().width();
    const int readable = fontMetrics().averageCharWidth() * kReadableCharacters;
    const double share = QSettings().value(kShareKey, 0).toDouble();
    const int wanted = share > 0          ? static_cast<int>(room * share)
                       : left >= readable ? std::min(room / 2, left)
                                          : room / 2;
    return std::max(std::min(std::max(wanted, readable), room - f.entry_area->minimumWidth()), 0);
}

int CPNota::RoomForBoth() const
{
    const QMargins margins = Frame()->contentsMargins();
    return width() - margins.left() - margins.right() - form_->splitter->handleWidth();
}

/// On a screen without room for both, the document waits for its key.
void CPNota::RestoreLayout()
{
    const Form &f = *form_;
    if (!f.splitter) return;
    const bool fits = RoomForBoth() - BesideWidth() >= Content()->minimumSizeHint().width();
    ShowBesideWidget(!QSettings().value(kHiddenKey, !fits).toBool());
}

void CPNota::SaveLayout()
{
    const Form &f = *form_;
    if (!f.splitter) return;
    if (f.is_beside_chosen) QSettings().setValue(kHiddenKey, f.beside.widget->isHidden());
    const QList<int> sizes = f.splitter->sizes();
    if (!f.beside.widget->isHidden() && sizes[0] != BesideWidth() && sizes[0] + sizes[1] > 0)
        QSettings().setValue(kShareKey, static_cast<double>(sizes[0]) / (sizes[0] + sizes[1]));
}

void CPNota::ShowNote()
{
    Form &f = *form_;
    QString text = ToQt(m_note);
    if (f.splitter && f.beside.widget->isHidden())
        text += (text.isEmpty() ? QString() : QStringLiteral("\n")) + "F12 mostra " + f.beside.name;
    f.note->setText(text);
    f.note->setVisible(!text.isEmpty());
}

void CPNota::OnKickIdle()
{
    CTarvoRecordDialog::OnKickIdle();
    if (form_->splitter) KeepFocusInView();
}

/// The field or cell with the focus, whenever it is another one: the user may scroll away from it to look.
void CPNota::KeepFocusInView()
{
    Form &f = *form_;
    QWidget *focus = focusWidget();
    if (!focus || !Content()->isAncestorOf(focus)) return;
    const auto in_grid = [focus](CSpreadSheet *grid) { return focus == grid || grid->isAncestorOf(focus); };
    QWidget *of = focus;
    QRect place = focus->rect();
    for (CSpreadSheet *grid : {f.vat, f.rows}) {
        if (!in_grid(grid)) continue;
        of = grid->viewport();
        place = grid->visualRect(grid->currentIndex());
    }
    if (f.seen_focus == of && f.seen_cell == place) return;
    f.seen_focus = of;
    f.seen_cell = place;
    const QPoint centre = of->mapTo(Content(), place.center());
    f.entry_area->ensureVisible(centre.x(), centre.y(), place.width() / 2 + fontMetrics().averageCharWidth(),
                                place.height() / 2);
}
