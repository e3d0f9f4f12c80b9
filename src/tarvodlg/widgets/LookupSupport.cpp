#include "tarvodlg/widgets/LookupSupport.h"

#include "tarvodlg/base/Dbisam.h"
#include "tarvodlg/base/Text.h"
#include "tarvodlg/base/UserInterface.h"
#include "tarvolumera/SaExceptionDisplay.h"

#include <QApplication>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLineEdit>
#include <QScreen>
#include <QTreeWidget>

namespace {

constexpr std::size_t kOffered = 12; ///< as many as a glance takes in; who wants more opens the browser

/// The answer of the lookup, or an empty one when it failed; the error is shown. It may be asked out of an event, which
/// nothing that is thrown may pass.
template <typename Question>
auto Asked(const Question &question) -> decltype(question())
{
    try {
        return question();
    } catch (const SAException &error) {
        SAExceptionDisplay(error, LUMERA_TAG, false);
    } catch (const std::exception &error) {
        AfxMessageBox(error.what(), MB_OK | MB_ICONERROR);
    }
    return {};
}

bool IsNumber(std::string_view text)
{
    return text.find_first_not_of("0123456789") == std::string_view::npos;
}

LookupMatch RowOf(const QTreeWidgetItem *item)
{
    return {FromQt(item->text(0)), FromQt(item->text(1))};
}

} // namespace

LookupSupport::LookupSupport(QLineEdit *edit, std::shared_ptr<CodeLookup> lookup, QLabel *description)
    : edit_(edit), lookup_(std::move(lookup)), description_(description)
{
    connect(edit, &QLineEdit::textEdited, this, [this](const QString &text) { Offer(text.trimmed()); });
}

LookupSupport::~LookupSupport()
{
    delete popup_;
}

std::optional<std::string> LookupSupport::Resolve(const std::string &typed)
{
    reason_.clear();
    std::optional<LookupMatch> found = Highlighted();
    ClosePopup();
    if (!found) found = Find(typed);
    SetDescription(found ? found->description : std::string());
    return found ? std::optional(found->code) : std::nullopt;
}

void LookupSupport::ShowDescription(const std::string &code)
{
    if (description_) SetDescription(Describe(code).value_or(std::string()));
}

bool LookupSupport::Browse()
{
    ClosePopup();
    const QPointer<LookupSupport> alive(this); // the browser runs events, and the form may go meanwhile
    const std::shared_ptr<CodeLookup> lookup = lookup_;
    const std::string typed = FromQt(edit_->text().trimmed());
    const auto chosen = Asked([&] { return lookup->Browse(edit_->window(), typed); });
    if (!alive || !chosen) return false;
    Take({*chosen, Describe(*chosen).value_or(std::string())});
    return true;
}

void LookupSupport::ClosePopup()
{
    qApp->removeEventFilter(this);
    if (popup_) popup_->hide();
}

bool LookupSupport::eventFilter(QObject *watched, QEvent *event)
{
    if (watched == edit_ && event->type() == QEvent::KeyPress) {
        const auto *key = static_cast<QKeyEvent *>(event);
        const bool is_plain = !(key->modifiers() & ~Qt::KeypadModifier) || key->key() == Qt::Key_Backtab;
        return is_plain && OnPopupKey(key->key());
    }
    const bool is_edit_gone = watched == edit_ && (event->type() == QEvent::FocusOut || event->type() == QEvent::Hide);
    const bool is_window_moved =
        watched == edit_->window() && (event->type() == QEvent::Move || event->type() == QEvent::Resize);
    if (is_edit_gone || is_window_moved) ClosePopup();
    return false;
}

void LookupSupport::Offer(const QString &typed)
{
    if (typed.isEmpty() || !edit_->hasFocus()) return ClosePopup();
    const auto matches = Asked([&] { return lookup_->Match(FromQt(typed), kOffered); });
    if (matches.empty()) return ClosePopup();
    ShowPopup(matches);
}

void LookupSupport::ShowPopup(const std::vector<LookupMatch> &matches)
{
    if (!popup_) MakePopup();
    popup_->clear();
    for (const LookupMatch &match : matches) new QTreeWidgetItem(popup_, {ToQt(match.code), ToQt(match.description)});
    QHeaderView *columns = popup_->header();
    columns->resizeSections(QHeaderView::ResizeToContents);
    columns->resizeSection(0, columns->sectionSize(0) + 2 * popup_->fontMetrics().averageCharWidth());

    const QRect screen = edit_->screen()->availableGeometry();
    const int frame = 2 * popup_->frameWidth();
    const int width = std::min(std::max(edit_->width(), columns->length() + frame), screen.width());
    const int height = static_cast<int>(matches.size()) * popup_->sizeHintForRow(0) + frame;
    QPoint place = edit_->mapToGlobal(QPoint(0, edit_->height()));
    if (place.y() + height > screen.bottom()) place = edit_->mapToGlobal(QPoint(0, -height));
    place.setX(std::max(screen.left(), std::min(place.x(), screen.right() - width)));
    popup_->setGeometry(QRect(place, QSize(width, height)));
    popup_->show();
    // Put in again with each letter: the filter installed last is asked first, before the keys of the dialog.
    qApp->removeEventFilter(this);
    qApp->installEventFilter(this);
}

void LookupSupport::MakePopup()
{
    popup_ = new QTreeWidget(edit_);
    popup_->setWindowFlags(Qt::ToolTip | Qt::FramelessWindowHint);
    popup_->setAttribute(Qt::WA_ShowWithoutActivating);
    popup_->setFocusPolicy(Qt::NoFocus);
    popup_->setColumnCount(2);
    popup_->setHeaderHidden(true);
    popup_->header()->setStretchLastSection(false);
    popup_->setRootIsDecorated(false);
    popup_->setUniformRowHeights(true);
    popup_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    popup_->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    connect(popup_, &QTreeWidget::itemClicked, this, [this](const QTreeWidgetItem *item) { Take(RowOf(item)); });
}

void LookupSupport::Take(const LookupMatch &match)
{
    ClosePopup();
    edit_->setText(ToQt(match.code));
    edit_->setModified(true);
    edit_->selectAll();
    SetDescription(match.description);
}

bool LookupSupport::OnPopupKey(int key)
{
    if (!IsPopupOpen()) return false;
    constexpr int kAll = static_cast<int>(kOffered);
    switch (key) {
    case Qt::Key_Down:
        MoveHighlight(1);
        return true;
    case Qt::Key_Up:
        MoveHighlight(-1);
        return true;
    case Qt::Key_PageDown:
        MoveHighlight(kAll);
        return true;
    case Qt::Key_PageUp:
        MoveHighlight(-kAll);
        return true;
    case Qt::Key_Escape:
        ClosePopup();
        return true;
    case Qt::Key_Return:
    case Qt::Key_Enter:
    case Qt::Key_Tab:
    case Qt::Key_Backtab:
        if (const auto row = Highlighted()) Take(*row);
        return false; // and then on to the next field, as ever
    default:
        return false;
    }
}

void LookupSupport::MoveHighlight(int rows)
{
    const int last = popup_->topLevelItemCount() - 1;
    const int now = Highlighted() ? popup_->indexOfTopLevelItem(popup_->currentItem()) : (rows > 0 ? -1 : last + 1);
    popup_->setCurrentItem(popup_->topLevelItem(std::clamp(now + rows, 0, last)));
}

bool LookupSupport::IsPopupOpen() const
{
    return popup_ && popup_->isVisible();
}

std::optional<LookupMatch> LookupSupport::Highlighted() const
{
    if (!IsPopupOpen() || !popup_->currentItem() || !popup_->currentItem()->isSelected()) return std::nullopt;
    return RowOf(popup_->currentItem());
}

std::optional<LookupMatch> LookupSupport::Find(const std::string &typed)
{
    if (typed.empty() || typed == "0") return LookupMatch{typed, {}};
    return Asked([&]() -> std::optional<LookupMatch> {
        if (auto description = lookup_->Describe(typed)) return LookupMatch{typed, std::move(*description)};
        // The beginning of a longer code does not mean that code.
        std::vector<LookupMatch> matches;
        if (!IsNumber(typed)) matches = lookup_->Match(typed, 2);
        if (matches.size() == 1) return std::move(matches.front());
        reason_ = matches.empty() ? kUnknownCode : "Più voci corrispondono: F4 per scegliere";
        return std::nullopt;
    });
}

std::optional<std::string> LookupSupport::Describe(const std::string &code)
{
    if (code.empty() || code == "0") return std::nullopt;
    return Asked([&] { return lookup_->Describe(code); });
}

void LookupSupport::SetDescription(const std::string &text)
{
    if (description_) description_->setText(ToQt(text));
}
