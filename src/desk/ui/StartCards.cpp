#include "desk/ui/StartCards.h"

#include "desk/ui/ElidedLabel.h"
#include "desk/ui/FunctionList.h"
#include "tarvodlg/base/Dates.h"
#include "tarvodlg/base/Numbers.h"
#include "tarvodlg/widgets/Field.h"
#include "tarvodlg/widgets/Theme.h"

#include <QApplication>
#include <QFrame>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QVBoxLayout>
#include <fmt/format.h>

namespace {

QString Euro(long long cents)
{
    return QStringLiteral("€ ") + ToQt(FormatAmount(FromCents(cents)));
}

/// "1 scadenza", "3 scadenze".
QString Counted(long count, const char *one, const char *many)
{
    return QStringLiteral("%1 %2").arg(QLocale(QLocale::Italian).toString(static_cast<qlonglong>(count)),
                                       QString::fromUtf8(count == 1 ? one : many));
}

QColor AlarmColour()
{
    return Readable(QColor(0xb0, 0x20, 0x18));
}

/// On a card a label's text has another role than on the window.
void Colour(QLabel *label, const QColor &colour)
{
    QPalette palette = label->palette();
    palette.setColor(QPalette::WindowText, colour);
    palette.setColor(QPalette::Text, colour);
    palette.setColor(QPalette::Link, colour); // of one that leads somewhere
    label->setPalette(palette);
}

/// A frame with an icon, a title and at its right what the title counts; the lines go below.
class Card : public QFrame {
  public:
    Card(const QString &icon, const QString &title, const QString &count)
    {
        setFrameShape(QFrame::StyledPanel);
        setAutoFillBackground(true);
        setBackgroundRole(QPalette::Base);
        setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Preferred);
        const int line = fontMetrics().height();
        auto *column = new QVBoxLayout(this);
        column->setContentsMargins(line, line * 3 / 4, line, line);
        column->setSpacing(line / 2);
        auto *head = new QHBoxLayout;
        head->setSpacing(line / 2);
        auto *picture = new QLabel;
        picture->setPixmap(TarvoIcon(icon).pixmap(QSize(line * 3 / 2, line * 3 / 2), devicePixelRatioF()));
        head->addWidget(picture);
        caption_ = new CElidedLabel(title);
        QFont bold = caption_->font();
        bold.setBold(true);
        caption_->setFont(bold);
        head->addWidget(caption_, 1);
        if (!count.isEmpty()) head->addWidget(new QLabel(count));
        column->addLayout(head);
        lines_ = new QGridLayout;
        lines_->setHorizontalSpacing(line);
        lines_->setVerticalSpacing(line / 4);
        lines_->setColumnStretch(1, 1);
        column->addLayout(lines_);
        column->addStretch(1);
        setAccessibleName(title + QLatin1Char(' ') + count);
    }

    /// Where the title leads.
    void LeadTo(std::function<void()> where) { caption_->LeadTo(std::move(where)); }

    /// A line over the whole width.
    void AddText(const QString &text, const QColor &colour = {})
    {
        auto *label = new QLabel(text);
        label->setTextFormat(Qt::PlainText);
        label->setWordWrap(true);
        if (colour.isValid()) Colour(label, colour);
        lines_->addWidget(label, row_++, 0, 1, 4);
    }
    void AddHeading(const QString &text, const QString &sum, const QColor &colour = {}, std::function<void()> open = {})
    {
        auto *label = new CElidedLabel(text), *amount = new CElidedLabel(sum);
        if (open) label->LeadTo(std::move(open));
        amount->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
        for (QLabel *each : {static_cast<QLabel *>(label), static_cast<QLabel *>(amount)})
            if (colour.isValid()) Colour(each, colour);
        if (row_ > 0) lines_->setRowMinimumHeight(row_++, fontMetrics().height() / 2);
        lines_->addWidget(label, row_, 0, 1, 2);
        lines_->addWidget(amount, row_++, 2, 1, 2);
    }
    /// When, who, which document, how much.
    void AddLine(const QString &when, const std::string &who, const std::string &document, const QString &amount,
                 std::function<void()> open = {})
    {
        lines_->addWidget(QuietLabel(when), row_, 0);
        auto *name = new CElidedLabel(ToQt(who));
        if (open) name->LeadTo(std::move(open));
        lines_->addWidget(name, row_, 1);
        auto *number = new CElidedLabel(ToQt(document));
        Colour(number, QuietColour(palette()));
        lines_->addWidget(number, row_, 2);
        auto *money = new QLabel(amount);
        money->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
        lines_->addWidget(money, row_++, 3);
    }
    void AddMore(long more)
    {
        if (more > 0) AddText(QStringLiteral("… e altre %1").arg(more), QuietColour(palette()));
    }

  private:
    CElidedLabel *caption_;
    QGridLayout *lines_;
    int row_ = 0;
};

void AddGroup(Card *card, const QString &words, const WaitingInstalments &group, const QColor &colour,
              const InstalmentActions &actions)
{
    if (group.count == 0) return;
    card->AddHeading(Counted(group.count, "scadenza", "scadenze") + QLatin1Char(' ') + words, Euro(group.cents), colour,
                     actions.list);
    for (const WaitingInstalment &instalment : group.first)
        card->AddLine(ToQt(FormatDate(instalment.due_day)), instalment.name, instalment.invoice,
                      ToQt(FormatAmount(FromCents(instalment.cents))),
                      [open = actions.open, number = instalment.number] { open(number); });
    card->AddMore(group.count - static_cast<long>(group.first.size()));
}

} // namespace

QWidget *InvoicesCard(const Waiting &waiting, const InvoiceActions &actions)
{
    auto *card =
        new Card(QStringLiteral("fatture"), QStringLiteral("Fatture ricevute da registrare"),
                 waiting.invoices == 0 ? QString()
                                       : QStringLiteral("%1%2")
                                             .arg(waiting.are_invoices_at_least ? QStringLiteral("circa ") : QString())
                                             .arg(waiting.invoices));
    if (waiting.invoices == 0)
        card->AddText(QStringLiteral("Tutte registrate."), QuietColour(card->palette()));
    else
        card->LeadTo(actions.list);
    for (const InvoiceRow &row : waiting.oldest_invoices) {
        const auto open = [open = actions.open, code = row.code] { open(code); };
        if (row.fault.empty())
            card->AddLine(ToQt(FormatDate(row.day)), row.seller_name, "n. " + row.number, ToQt(FormatAmount(row.total)),
                          open);
        else
            card->AddLine({}, fmt::format("Documento {}: {}", row.code, row.fault), {}, {}, open);
    }
    card->AddMore(waiting.invoices - static_cast<long>(waiting.oldest_invoices.size()));
    return card;
}

QWidget *InstalmentsCard(const Waiting &waiting, long side, const InstalmentActions &actions)
{
    const bool customers = side == kCustomer;
    const WaitingInstalments &overdue = waiting.overdue[side], &soon = waiting.due_soon[side];
    auto *card =
        new Card(customers ? QStringLiteral("clienti") : QStringLiteral("fornitori"),
                 customers ? QStringLiteral("Da incassare dai clienti") : QStringLiteral("Da pagare ai fornitori"), {});
    if (overdue.count + soon.count == 0)
        card->AddText(QStringLiteral("Nessuna scadenza aperta fino a sette giorni da oggi."),
                      QuietColour(card->palette()));
    AddGroup(card, overdue.count == 1 ? QStringLiteral("già scaduta") : QStringLiteral("già scadute"), overdue,
             AlarmColour(), actions);
    AddGroup(card, QStringLiteral("entro sette giorni"), soon, {}, actions);
    return card;
}

QWidget *UnbalancedCard(const Waiting &waiting, const std::function<void(long)> &open)
{
    auto *card = new Card(QStringLiteral("avviso"), QStringLiteral("Movimenti squadrati"),
                          waiting.unbalanced == 0 ? QString() : QString::number(waiting.unbalanced));
    if (waiting.unbalanced == 0)
        card->AddText(QStringLiteral("Nessuno: Dare e Avere coincidono ovunque nell'esercizio."),
                      QuietColour(card->palette()));
    for (const UnbalancedEntry &entry : waiting.unbalanced_entries)
        card->AddLine(ToQt(FormatDate(entry.day)), fmt::format("{}  {}", entry.number, entry.text), {},
                      QStringLiteral("differenza ") +
                          ToQt(FormatAmount(FromCents(entry.debit_cents - entry.credit_cents))),
                      [open, number = entry.number] { open(number); });
    if (const long more = waiting.unbalanced - static_cast<long>(waiting.unbalanced_entries.size()); more > 0)
        card->AddText(QStringLiteral("… e altri %1").arg(more), QuietColour(card->palette()));
    return card;
}

QWidget *FaultCard(const QString &text, const QString &advice)
{
    auto *card = new Card(QStringLiteral("avviso"), QStringLiteral("L'archivio non risponde"), {});
    card->AddText(text);
    card->AddText(advice, QuietColour(card->palette()));
    return card;
}

QLabel *HeadingLabel(const QString &text)
{
    auto *label = new CElidedLabel(text);
    QFont font = label->font();
    font.setPointSizeF(font.pointSizeF() * 1.6);
    label->setFont(font);
    return label;
}

QLabel *QuietLabel(const QString &text)
{
    auto *label = new QLabel(text);
    Colour(label, QuietColour(label->palette()));
    return label;
}
