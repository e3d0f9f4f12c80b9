#include "tarvodlg/widgets/FormBuilder.h"

#include "tarvodlg/widgets/Theme.h"

#include <QFrame>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QPainter>
#include <QStyle>
#include <QStyleOption>
#include <algorithm>
#include <cmath>

namespace {

/// A text that the program fills in: cut with an ellipsis where there is no room, whole in the tooltip.
class FilledLabel : public QLabel {
  public:
    FilledLabel(bool is_muted, QWidget *parent) : QLabel(parent), is_muted_(is_muted)
    {
        setTextFormat(Qt::PlainText);
        setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Preferred);
    }
    QSize sizeHint() const override { return {CharactersWide(this, 30), QLabel::sizeHint().height()}; }
    QSize minimumSizeHint() const override { return {CharactersWide(this, 10), QLabel::minimumSizeHint().height()}; }

  protected:
    void paintEvent(QPaintEvent *) override
    {
        QPainter painter(this);
        const QString shown = fontMetrics().elidedText(text(), Qt::ElideRight, contentsRect().width());
        setToolTip(shown == text() ? QString() : PlainTip(text()));
        painter.setPen(is_muted_ ? Muted() : palette().color(QPalette::WindowText));
        painter.drawText(contentsRect(), Qt::AlignVCenter | Qt::AlignLeft | Qt::TextSingleLine, shown);
    }

  private:
    /// Seven tenths of the text's colour: weaker than what was typed, still easy to read on both themes.
    QColor Muted() const
    {
        const QColor text = palette().color(QPalette::WindowText), ground = palette().color(QPalette::Window);
        const auto mix = [](int strong, int weak) { return (7 * strong + 3 * weak) / 10; };
        return QColor(mix(text.red(), ground.red()), mix(text.green(), ground.green()),
                      mix(text.blue(), ground.blue()));
    }

    bool is_muted_;
};

QString WithoutMnemonic(QString label)
{
    return label.remove(QLatin1Char('&'));
}

/// Letters are wider than the digits that widths are counted in, capitals most of all.
int WidthOfText(std::size_t characters)
{
    const int most = static_cast<int>(std::min<std::size_t>(characters, 50));
    return most + most / 5 + 1;
}

} // namespace

int CharactersWide(const QWidget *widget, int characters)
{
    const QStyle *style = widget->style();
    const int frame = style->pixelMetric(QStyle::PM_DefaultFrameWidth, nullptr, widget);
    const QFontMetrics metrics = widget->fontMetrics();
    // The blank on both sides that a line edit leaves around its text, and room for the cursor.
    return characters * metrics.horizontalAdvance(QLatin1Char('0')) + 2 * frame +
           metrics.horizontalAdvance(QLatin1Char('x'));
}

FormBuilder::FormBuilder(CTarvoDialog *dialog, QWidget *host) : dialog_(dialog), host_(host ? host : dialog->Content())
{
    grid_ = qobject_cast<QGridLayout *>(host_->layout());
    if (!grid_) {
        grid_ = new QGridLayout;
        if (auto *box = qobject_cast<QBoxLayout *>(host_->layout()))
            box->addLayout(grid_);
        else
            host_->setLayout(grid_);
        if (host_ == dialog_->Content()) grid_->setContentsMargins(0, 0, 0, 0); // the dialog has its own
        const QFontMetrics metrics = host_->fontMetrics();
        grid_->setHorizontalSpacing(metrics.averageCharWidth() * 2);
        grid_->setVerticalSpacing(metrics.height() / 3);
        grid_->setColumnStretch(1, 1);
    }
    row_ = grid_->count() == 0 ? 0 : grid_->rowCount();
}

FormBuilder::~FormBuilder()
{
    if (!filled_) grid_->setRowStretch(row_, 1);
}

FormBuilder &FormBuilder::Section(const QString &title)
{
    auto *heading = new QLabel(title, host_);
    QFont bold = heading->font();
    bold.setBold(true);
    heading->setFont(bold);
    auto *rule = new QFrame(host_);
    rule->setFrameShape(QFrame::HLine);
    rule->setFrameShadow(QFrame::Plain);
    rule->setForegroundRole(QPalette::Mid);
    auto *line = new QHBoxLayout;
    line->setContentsMargins(0, row_ == 0 ? 0 : host_->fontMetrics().height() / 2, 0, 0);
    line->setSpacing(host_->fontMetrics().averageCharWidth() * 2);
    line->addWidget(heading);
    line->addWidget(rule, 1);
    grid_->addLayout(line, row_++, 0, 1, 2);
    line_ = nullptr;
    return *this;
}

FormBuilder &FormBuilder::Beside()
{
    beside_ = true;
    return *this;
}

FormBuilder &FormBuilder::Hint(const QString &text)
{
    auto *hint = new FilledLabel(true, host_);
    hint->setText(text);
    grid_->addWidget(hint, row_++, 0, 1, 2);
    line_ = nullptr;
    return *this;
}

QWidget *FormBuilder::Place(const QString &label, QWidget *widget, int width, bool stretch)
{
    widget->setParent(host_);
    QLabel *name = nullptr;
    if (!label.isEmpty()) {
        name = new QLabel(label, host_);
        name->setBuddy(widget);
        widget->setAccessibleName(WithoutMnemonic(label));
    }
    const bool same_line = beside_ && line_;
    beside_ = false;
    if (same_line) {
        line_->addSpacing(host_->fontMetrics().averageCharWidth() * 2);
        if (name) {
            name->setSizePolicy(QSizePolicy::Maximum, QSizePolicy::Preferred);
            line_->addWidget(name);
        }
    } else {
        line_ = new QHBoxLayout;
        line_->setSpacing(host_->fontMetrics().averageCharWidth());
        const bool is_tall = widget->sizePolicy().verticalPolicy() == QSizePolicy::Expanding;
        if (name) grid_->addWidget(name, row_, 0, is_tall ? Qt::AlignTop : Qt::AlignVCenter);
        // What stands on the line keeps to the left, whatever the width of the window.
        auto *left_aligned = new QHBoxLayout;
        left_aligned->addLayout(line_);
        left_aligned->addStretch(1);
        left_aligned->setStretchFactor(line_, 1000);
        grid_->addLayout(left_aligned, row_++, 1);
    }
    QSizePolicy policy = widget->sizePolicy();
    if (width > 0) {
        widget->setFixedWidth(CharactersWide(widget, width));
    } else if (!stretch && !(policy.horizontalPolicy() & QSizePolicy::ExpandFlag)) {
        policy.setHorizontalPolicy(QSizePolicy::Maximum);
        widget->setSizePolicy(policy);
    }
    line_->addWidget(widget, stretch ? 1 : 0, Qt::Alignment());
    return widget;
}

void FormBuilder::Add(const QString &label, QWidget *widget)
{
    Place(label, widget, 0, false);
}

void FormBuilder::Add(const QString &label, CTarvoField *field, int width)
{
    Place(label, field->Widget(), width, false);
}

CTextField *FormBuilder::Text(const QString &label, BoundedText &member, int width)
{
    auto *field = new CTextField(member.MaxLength(), host_);
    Place(label, field, width > 0 ? width : WidthOfText(member.MaxLength()), false);
    dialog_->Bind(
        field, [field, &member] { field->SetValue(member); }, [field, &member] { member.Assign(field->Value()); });
    return field;
}

CCodeField *FormBuilder::Code(const QString &label, long &member, std::shared_ptr<CodeLookup> lookup)
{
    auto *field = new CCodeField(host_);
    Place(label, field, 9, false);
    if (lookup) {
        auto *description = new FilledLabel(true, host_);
        line_->addWidget(description, 1);
        field->SetLookup(std::move(lookup), description);
    }
    dialog_->Bind(
        field, [field, &member] { field->SetValue(member); }, [field, &member] { member = field->Value(); });
    return field;
}

CTextField *FormBuilder::TextCode(const QString &label, BoundedText &member, std::shared_ptr<CodeLookup> lookup)
{
    CTextField *field = Text(label, member);
    if (!lookup) return field;
    auto *description = new FilledLabel(true, host_);
    line_->addWidget(description, 1);
    field->SetLookup(std::move(lookup), description);
    return field;
}

CAmountField *FormBuilder::Amount(const QString &label, double &member, int decimals, int width)
{
    auto *field = new CAmountField(decimals, host_);
    Place(label, field, width, false);
    dialog_->Bind(
        field, [field, &member] { field->SetValue(member); }, [field, &member] { member = field->Value(); });
    return field;
}

CAmountField *FormBuilder::Number(const QString &label, long &member, long lowest, long highest)
{
    auto *field = new CAmountField(0, host_);
    field->SetRange(static_cast<double>(lowest), static_cast<double>(highest));
    const int digits = static_cast<int>(std::max(std::to_string(lowest).size(), std::to_string(highest).size()));
    Place(label, field, digits + digits / 3 + 1, false);
    dialog_->Bind(
        field, [field, &member] { field->SetValue(static_cast<double>(member)); },
        [field, &member] { member = std::lround(field->Value()); });
    return field;
}

CDateField *FormBuilder::Date(const QString &label, long &member)
{
    auto *field = new CDateField(host_);
    Place(label, field, 11, false);
    dialog_->Bind(
        field, [field, &member] { field->SetValue(member); }, [field, &member] { member = field->Value(); });
    return field;
}

CFlagField *FormBuilder::Flag(const QString &caption, long &member)
{
    auto *field = new CFlagField(caption, host_);
    Place({}, field, 0, false);
    field->setAccessibleName(WithoutMnemonic(caption));
    dialog_->Bind(
        field, [field, &member] { field->SetValue(member); }, [field, &member] { member = field->Value(); });
    return field;
}

CChoiceField *FormBuilder::Choice(const QString &label, long &member, std::vector<std::pair<long, QString>> choices)
{
    CChoiceField::Choices texts;
    for (auto &[value, words] : choices) texts.emplace_back(std::to_string(value), std::move(words));
    auto *field = new CChoiceField(std::move(texts), host_);
    Place(label, field, 0, false);
    dialog_->Bind(
        field, [field, &member] { field->SetCode(member); }, [field, &member] { member = field->Code(); });
    return field;
}

CChoiceField *FormBuilder::Choice(const QString &label, BoundedText &member, CChoiceField::Choices choices)
{
    auto *field = new CChoiceField(std::move(choices), host_);
    Place(label, field, 0, false);
    dialog_->Bind(
        field, [field, &member] { field->SetValue(member.str()); },
        [field, &member] { member.Assign(field->Value()); });
    return field;
}

CNoteField *FormBuilder::Note(const QString &label, BoundedText &member, int lines)
{
    auto *field = new CNoteField(member.MaxLength(), host_);
    const int margins = 2 * (field->frameWidth() + static_cast<int>(field->document()->documentMargin()));
    field->setFixedHeight(lines * field->fontMetrics().lineSpacing() + margins);
    field->setTabChangesFocus(true);
    Place(label, field, 60, false);
    dialog_->Bind(
        field, [field, &member] { field->SetValue(member); }, [field, &member] { member.Assign(field->Value()); });
    return field;
}

QLabel *FormBuilder::Info(const QString &label)
{
    auto *info = new FilledLabel(false, host_);
    Place(label, info, 0, true);
    return info;
}

void FormBuilder::Fill(QWidget *widget)
{
    widget->setParent(host_);
    grid_->addWidget(widget, row_, 0, 1, 2);
    grid_->setRowStretch(row_++, 1);
    filled_ = true;
    line_ = nullptr;
}
