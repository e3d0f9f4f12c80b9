#include "tarvodlg/widgets/Fields.h"

#include "tarvodlg/base/Text.h"
#include "tarvodlg/widgets/LineFilter.h"
#include "tarvodlg/widgets/LookupSupport.h"

#include <QKeyEvent>
#include <QWheelEvent>
#include <charconv>

namespace {

/// Opens the lookup with F4. @return true when the key was used up
bool OpenedLookup(CTarvoField *field, const QKeyEvent *event)
{
    if (event->key() != Qt::Key_F4 || event->modifiers() != Qt::NoModifier || !field->on_dbl_click) return false;
    OpenLookup(field);
    return true;
}

/// The code, when the text is digits and no more than a column of 32 bits holds.
std::optional<long> ReadCode(std::string_view text)
{
    int code = 0;
    const auto result = std::from_chars(text.data(), text.data() + text.size(), code);
    if (result.ec != std::errc() || result.ptr != text.data() + text.size() || code < 0) return std::nullopt;
    return code;
}

bool IsDigit(QChar character)
{
    return character >= QLatin1Char('0') && character <= QLatin1Char('9');
}

} // namespace

CTextField::CTextField(std::size_t max_characters, CWnd *parent) : QLineEdit(parent), max_characters_(max_characters)
{
    RegisterField(this);
    new LineFilter(this, [this](QString &text, int &cursor) {
        if (upper_) text = ToQt(ToUpper(FromQt(text)));
        CutTo(max_characters_, text, cursor);
        return true;
    });
}

CTextField::~CTextField() = default;

std::string CTextField::Value() const
{
    return FromQt(text().trimmed());
}

void CTextField::SetValue(std::string_view value)
{
    setText(ToQt(value));
    home(false); // of a long text the beginning says more than the end
    if (lookup_) lookup_->ShowDescription(Value());
}

void CTextField::SetUpperCase(bool upper)
{
    upper_ = upper;
}

void CTextField::SetLookup(std::shared_ptr<CodeLookup> lookup, QLabel *description)
{
    lookup_.reset();
    if (!lookup) return;
    lookup_ = std::make_unique<LookupSupport>(this, std::move(lookup), description);
    lookup_->ShowDescription(Value());
    if (!on_dbl_click)
        on_dbl_click = [this] {
            if (lookup_) lookup_->Browse();
        };
}

bool CTextField::Complete()
{
    if (!lookup_) return true;
    const std::optional<std::string> code = lookup_->Resolve(Value());
    if (code) ShowKeepingMark(this, ToQt(*code));
    return code.has_value();
}

std::string CTextField::Reason() const
{
    return lookup_ ? lookup_->Reason() : std::string();
}

void CTextField::mouseDoubleClickEvent(QMouseEvent *event)
{
    if (!on_dbl_click) return QLineEdit::mouseDoubleClickEvent(event); // selects the word
    OpenLookup(this);
}

void CTextField::keyPressEvent(QKeyEvent *event)
{
    if (!OpenedLookup(this, event)) QLineEdit::keyPressEvent(event);
}

CCodeField::CCodeField(CWnd *parent) : QLineEdit(parent)
{
    RegisterField(this);
    new LineFilter(this, [this](QString &text, int &cursor) {
        if (lookup_) return true;
        text = text.trimmed(); // a pasted number brings blanks along
        cursor = std::min(cursor, static_cast<int>(text.size()));
        return std::all_of(text.begin(), text.end(), IsDigit);
    });
}

CCodeField::~CCodeField() = default;

long CCodeField::Value() const
{
    return ReadCode(FromQt(text().trimmed())).value_or(0);
}

void CCodeField::SetValue(long code)
{
    setText(code == 0 ? QString() : QString::number(code));
    RefreshDescription();
}

void CCodeField::SetLookup(std::shared_ptr<CodeLookup> lookup, QLabel *description)
{
    lookup_.reset();
    if (!lookup) return;
    lookup_ = std::make_unique<LookupSupport>(this, std::move(lookup), description);
    RefreshDescription();
    if (!on_dbl_click) on_dbl_click = [this] { Browse(); };
}

bool CCodeField::Browse()
{
    return lookup_ && lookup_->Browse();
}

void CCodeField::RefreshDescription()
{
    if (lookup_) lookup_->ShowDescription(std::to_string(Value()));
}

bool CCodeField::Complete()
{
    std::string typed = FromQt(text().trimmed());
    if (!typed.empty() && std::all_of(typed.begin(), typed.end(), [](char c) { return IsDigit(QLatin1Char(c)); })) {
        const std::optional<long> code = ReadCode(typed);
        reason_ = LookupSupport::kUnknownCode;
        if (!code) return false;
        typed = std::to_string(*code); // without zeros in front
    }
    if (lookup_) {
        const std::optional<std::string> code = lookup_->Resolve(typed);
        reason_ = lookup_->Reason();
        if (!code) return false;
        typed = *code;
    }
    ShowKeepingMark(this, typed == "0" ? QString() : ToQt(typed));
    return true;
}

void CCodeField::mouseDoubleClickEvent(QMouseEvent *event)
{
    if (!on_dbl_click) return QLineEdit::mouseDoubleClickEvent(event);
    OpenLookup(this);
}

void CCodeField::keyPressEvent(QKeyEvent *event)
{
    if (!OpenedLookup(this, event)) QLineEdit::keyPressEvent(event);
}

CFlagField::CFlagField(const QString &caption, CWnd *parent) : QCheckBox(caption, parent)
{
    RegisterField(this);
    connect(this, &QCheckBox::clicked, this, [this] { modified_ = true; }); // the program's changes do not click
}

void CFlagField::SetValue(long flag)
{
    setChecked(flag != 0);
    modified_ = false;
}

CChoiceField::CChoiceField(Choices choices, CWnd *parent) : QComboBox(parent), known_(static_cast<int>(choices.size()))
{
    RegisterField(this);
    setFocusPolicy(Qt::StrongFocus); // a wheel passing by takes no focus
    for (const auto &[value, words] : choices) addItem(words, ToQt(value));
    shown_row_ = currentIndex();
    connect(this, &QComboBox::activated, this, [this](int row) {
        if (row != shown_row_) modified_ = true;
        shown_row_ = row;
    });
    on_dbl_click = [this] { showPopup(); };
}

std::string CChoiceField::Value() const
{
    return FromQt(currentData().toString());
}

void CChoiceField::SetValue(const std::string &value)
{
    while (count() > known_) removeItem(count() - 1);
    int row = findData(ToQt(value));
    if (row < 0) {
        row = known_;
        addItem(ToQt(value), ToQt(value));
    }
    setCurrentIndex(row);
    shown_row_ = row;
    modified_ = false;
}

long CChoiceField::Code() const
{
    return currentData().toString().toLong();
}

void CChoiceField::wheelEvent(QWheelEvent *event)
{
    if (hasFocus())
        QComboBox::wheelEvent(event);
    else
        event->ignore(); // the form scrolls instead
}

CNoteField::CNoteField(std::size_t max_characters, CWnd *parent)
    : QPlainTextEdit(parent), max_characters_(max_characters)
{
    RegisterField(this);
    setTabChangesFocus(true);
    connect(this, &QPlainTextEdit::textChanged, this, [this] { CutToMax(); });
}

std::string CNoteField::Value() const
{
    return FromQt(toPlainText());
}

void CNoteField::SetValue(std::string_view text)
{
    setPlainText(ToQt(Utf8Prefix(text, max_characters_)));
}

bool CNoteField::IsModified() const
{
    return document()->isModified();
}

void CNoteField::SetModified(bool modified)
{
    document()->setModified(modified);
}

void CNoteField::CutToMax()
{
    QString text = toPlainText();
    QTextCursor cursor = textCursor();
    const int end = cursor.position();
    int begin = end;
    CutTo(max_characters_, text, begin);
    if (begin == end) return;
    cursor.setPosition(begin);
    cursor.setPosition(end, QTextCursor::KeepAnchor);
    cursor.removeSelectedText();
}
