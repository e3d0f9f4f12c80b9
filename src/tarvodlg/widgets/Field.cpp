#include "tarvodlg/widgets/Field.h"

#include "tarvodlg/base/Dbisam.h"
#include "tarvodlg/base/UserInterface.h"
#include "tarvolumera/SaExceptionDisplay.h"

#include <QApplication>
#include <QEvent>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QVariant>

namespace {

constexpr char kFieldProperty[] = "tarvo_field";
constexpr char kFreePolicyProperty[] = "tarvo_free_focus_policy"; ///< how a protected widget takes the focus when free

/// Gives a protected field the colour of the paper around it, in every theme. The rest of its palette is the program's,
/// so that its text stays as readable as in a free field.
class ProtectedLook : public QObject {
  public:
    explicit ProtectedLook(QWidget *widget) : QObject(widget), widget_(widget)
    {
        widget->installEventFilter(this);
        TakeColour();
    }

    bool eventFilter(QObject *, QEvent *event) override
    {
        if (event->type() == QEvent::PaletteChange) TakeColour();
        return false;
    }

    static ProtectedLook *Of(QWidget *widget)
    {
        for (QObject *child : widget->children())
            if (auto *look = dynamic_cast<ProtectedLook *>(child)) return look;
        return nullptr;
    }

  private:
    void TakeColour()
    {
        const QColor paper = QApplication::palette(widget_).color(QPalette::Window);
        if (widget_->palette().color(QPalette::Base) == paper) return; // the change was this one
        QPalette palette;
        palette.setColor(QPalette::Base, paper);
        widget_->setPalette(palette);
    }

    QWidget *widget_;
};

/// Fields of text stay readable for the mouse, so that their text can be copied; the others are switched off.
bool SetReadOnly(QWidget *widget, bool read_only)
{
    if (auto *line = qobject_cast<QLineEdit *>(widget))
        line->setReadOnly(read_only);
    else if (auto *text = qobject_cast<QPlainTextEdit *>(widget))
        text->setReadOnly(read_only);
    else
        return false;
    return true;
}

} // namespace

CTarvoField::~CTarvoField()
{
    if (registered_) registered_->setProperty(kFieldProperty, QVariant());
}

void CTarvoField::Protect(bool is_protected)
{
    QWidget *widget = Widget();
    if (is_protected == IsProtected()) return;
    if (!SetReadOnly(widget, is_protected)) widget->setEnabled(!is_protected);
    if (is_protected) {
        widget->setProperty(kFreePolicyProperty, static_cast<int>(widget->focusPolicy()));
        widget->setFocusPolicy(widget->isEnabled() ? Qt::ClickFocus : Qt::NoFocus);
        new ProtectedLook(widget);
    } else {
        widget->setFocusPolicy(static_cast<Qt::FocusPolicy>(widget->property(kFreePolicyProperty).toInt()));
        widget->setProperty(kFreePolicyProperty, QVariant());
        delete ProtectedLook::Of(widget);
        widget->setPalette(QPalette());
    }
}

bool CTarvoField::IsProtected() const
{
    const QWidget *widget = const_cast<CTarvoField *>(this)->Widget();
    return widget->property(kFreePolicyProperty).isValid();
}

CTarvoField *FieldOf(QWidget *widget)
{
    for (; widget; widget = widget->parentWidget()) {
        const QVariant field = widget->property(kFieldProperty);
        if (field.isValid()) return static_cast<CTarvoField *>(field.value<void *>());
        // A list that drops down belongs to its field, a dialog opened by a field does not.
        if (widget->windowType() == Qt::Window || widget->windowType() == Qt::Dialog) return nullptr;
    }
    return nullptr;
}

void RegisterField(CTarvoField *field)
{
    field->registered_ = field->Widget();
    field->registered_->setProperty(kFieldProperty, QVariant::fromValue(static_cast<void *>(field)));
}

void OpenLookup(CTarvoField *field)
{
    if (!field->on_dbl_click || field->IsProtected()) return;
    const std::function<void()> open = field->on_dbl_click; // opening may give the field another one
    try {
        open();
    } catch (const SAException &error) {
        SAExceptionDisplay(error, LUMERA_TAG, false);
    } catch (const std::exception &error) {
        AfxMessageBox(error.what(), MB_ICONERROR);
    }
}
