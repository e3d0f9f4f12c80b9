#include "tarvodlg/base/Numbers.h"
#include "tarvodlg/base/Text.h"
#include "tarvodlg/widgets/Fields.h"
#include "tarvodlg/widgets/LineFilter.h"

#include <QKeyEvent>
#include <QTimer>
#include <cmath>

namespace {

/// Amounts, the four operations, and the euro sign and hard blank that an amount brings along from a web page.
constexpr QStringView kTypeable = u"0123456789,.+-*/() €\u00A0";
constexpr double kLargest = 1e15; ///< beyond it a double has no cents

/// Reads sums and products from left to right:
///   sum = product { (+|-) product },  product = factor { (*|/) factor },  factor = [+|-] ( amount | "(" sum ")" )
/// A second sign in a row ("5--3") is a slip of the finger, not a sum.
class Expression {
  public:
    explicit Expression(std::string_view text) : text_(text) {}

    std::optional<double> Value()
    {
        const std::optional<double> value = Sum();
        if (!value || Next() != '\0' || !(std::fabs(*value) < kLargest)) return std::nullopt;
        return value;
    }

  private:
    std::optional<double> Sum()
    {
        std::optional<double> value = Product(true);
        while (value && (Next() == '+' || Next() == '-')) {
            const char operation = Take();
            const std::optional<double> right = Product(false);
            if (!right) return std::nullopt;
            *value += operation == '+' ? *right : -*right;
        }
        return value;
    }

    std::optional<double> Product(bool may_have_sign)
    {
        std::optional<double> value = Factor(may_have_sign);
        while (value && (Next() == '*' || Next() == '/')) {
            const char operation = Take();
            const std::optional<double> right = Factor(true);
            if (!right || (operation == '/' && *right == 0)) return std::nullopt;
            *value = operation == '*' ? *value * *right : *value / *right;
        }
        return value;
    }

    std::optional<double> Factor(bool may_have_sign)
    {
        double sign = 1;
        if (may_have_sign && (Next() == '+' || Next() == '-')) sign = Take() == '-' ? -1 : 1;
        std::optional<double> value;
        if (Next() == '(') {
            Take();
            value = Sum();
            if (Next() != ')') return std::nullopt;
            Take();
        } else {
            value = Amount();
        }
        if (value) *value = *value == 0 ? 0 : sign * *value;
        return value;
    }

    std::optional<double> Amount()
    {
        Next();
        const std::size_t begin = position_;
        position_ = std::min(text_.find_first_not_of("0123456789.,", begin), text_.size());
        return ParseAmount(text_.substr(begin, position_ - begin));
    }

    /// The next character that is no blank, '\0' at the end.
    char Next()
    {
        position_ = std::min(text_.find_first_not_of(' ', position_), text_.size());
        return position_ < text_.size() ? text_[position_] : '\0';
    }

    char Take()
    {
        const char taken = Next();
        ++position_;
        return taken;
    }

    std::string_view text_;
    std::size_t position_ = 0;
};

} // namespace

std::optional<double> EvaluateAmount(std::string_view typed)
{
    if (typed.size() > 200) return std::nullopt; // no hand types that, and the parentheses need a bound
    if (const std::optional<double> amount = ParseAmount(typed)) return amount;
    return Expression(typed).Value();
}

CAmountField::CAmountField(int decimals, CWnd *parent) : QLineEdit(parent), decimals_(decimals)
{
    RegisterField(this);
    setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    new LineFilter(this, [](QString &text, int &) {
        return std::all_of(text.begin(), text.end(), [](QChar c) { return kTypeable.contains(c); });
    });
}

double CAmountField::Value() const
{
    if (text() == Shown(value_)) return value_;
    return Typed().value_or(value_);
}

void CAmountField::SetValue(double value)
{
    value_ = value;
    setText(Shown(value));
}

void CAmountField::SetBlankZero(bool blank)
{
    const bool shows_value = text() == Shown(value_);
    blank_zero_ = blank;
    if (shows_value) ShowKeepingMark(this, Shown(value_));
}

void CAmountField::SetRange(double lowest, double highest)
{
    lowest_ = lowest;
    highest_ = highest;
}

bool CAmountField::Complete()
{
    if (text() == Shown(value_) && !isModified()) return true;
    const std::optional<double> typed = Typed();
    if (!typed || *typed < lowest_ || *typed > highest_) return false;
    value_ = *typed;
    ShowKeepingMark(this, Shown(value_));
    return true;
}

void CAmountField::keyPressEvent(QKeyEvent *event)
{
    const bool is_point = event->key() == Qt::Key_Period || event->key() == Qt::Key_Comma;
    if (is_point && event->modifiers() == Qt::KeypadModifier) {
        // Whatever the layout of the keyboard says: on the keypad it is the decimal comma that is meant.
        if (!isReadOnly()) insert(QStringLiteral(","));
        event->accept();
        return;
    }
    QLineEdit::keyPressEvent(event);
}

void CAmountField::focusInEvent(QFocusEvent *event)
{
    QLineEdit::focusInEvent(event);
    if (event->reason() == Qt::PopupFocusReason || event->reason() == Qt::ActiveWindowFocusReason) return;
    selectAll();
    // The press of the mouse that gave the focus comes after it and takes the selection away again.
    if (event->reason() == Qt::MouseFocusReason) QTimer::singleShot(0, this, [this] { selectAll(); });
}

QString CAmountField::Shown(double value) const
{
    if (blank_zero_ && TestIfZero(value, decimals_)) return {};
    QString text = ToQt(FormatAmount(value, decimals_));
    if (decimals_ == 0) text.remove(QLatin1Char('.'));
    return text;
}

std::optional<double> CAmountField::Typed() const
{
    const std::string typed = FromQt(text().trimmed());
    if (typed.empty()) return 0;
    const std::optional<double> value = EvaluateAmount(typed);
    return value ? std::optional(Round(*value, decimals_)) : std::nullopt;
}
