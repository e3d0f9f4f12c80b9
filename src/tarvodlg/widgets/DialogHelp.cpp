#include "tarvodlg/widgets/DialogHelp.h"

#include "tarvodlg/widgets/SpreadSheet.h"
#include "tarvodlg/widgets/TarvoDialog.h"

#include <QDialog>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QPushButton>
#include <QScreen>
#include <QScrollArea>
#include <QVBoxLayout>
#include <algorithm>

namespace {

struct KeyLine {
    const char *key, *meaning;
};
constexpr KeyLine kCommonKeys[] = {
    {"Invio, Tab, ↓", "Campo successivo"},
    {"Maiusc+Tab, ↑", "Campo precedente"},
    {"F4, doppio clic", "Elenco dei codici del campo"},
    {"Spazio", "Segna la casella, preme il pulsante"},
    {"Ctrl+Pag↓, Ctrl+Pag↑", "Scheda successiva, precedente"},
    {"F1", "Questa finestra"},
    {"Esc", "Uscita"},
};
constexpr KeyLine kListKeys[] = {
    {"Lettere, cifre", "Cerca nella colonna attiva"},
    {"Alt+↓", "Trova la riga successiva"},
};
constexpr KeyLine kSortKeys[] = {
    {"Ctrl+Maiusc+↓, Ctrl+Maiusc+↑", "Ordina secondo la colonna attiva, crescente o decrescente"},
    {"Clic sul titolo", "Ordina secondo la colonna"},
};
constexpr KeyLine kTyping[] = {
    {"15  1503  150326  15/3", "Nelle date: giorno, mese e anno mancanti vengono completati"},
    {"+  -  t  f", "Nelle date: giorno dopo, giorno prima, oggi, fine mese"},
    {"Ctrl+↑  Ctrl+↓", "Nelle date: mese dopo, mese prima"},
    {"100+22  3*12,50", "Negli importi: il conto viene svolto; il punto del tastierino è la virgola"},
};

QLabel *Heading(const QString &text, QWidget *parent)
{
    auto *label = new QLabel(text, parent);
    QFont bold = label->font();
    bold.setBold(true);
    label->setFont(bold);
    return label;
}

QString KeysOf(const DialogCommand &command)
{
    QStringList keys;
    if (KeyOfCaption(command.caption) != 0) keys << command.caption.section(QLatin1String(" - "), 0, 0);
    if (!command.shortcut.isEmpty()) keys << KeyName(command.shortcut);
    const QKeySequence mnemonic = QKeySequence::mnemonic(command.caption);
    if (!mnemonic.isEmpty()) keys << mnemonic.toString();
    return keys.join(QLatin1String(", "));
}

/// What the grids of the window offer to who only reads them.
struct Lists {
    bool any = false, sortable = false;
};

Lists ListsOf(const QWidget *window)
{
    Lists lists;
    for (const QTableView *view : window->findChildren<QTableView *>()) {
        const auto *grid = dynamic_cast<const CSpreadSheet *>(view);
        if (!grid || grid->selectionBehavior() != QAbstractItemView::SelectRows) continue;
        lists.any = true;
        lists.sortable = lists.sortable || grid->CanSort();
    }
    return lists;
}

QWidget *KeyCard(const std::vector<DialogCommand> &commands, const Lists &lists)
{
    auto *card = new QWidget;
    auto *lines = new QFormLayout(card);
    lines->setHorizontalSpacing(3 * card->fontMetrics().averageCharWidth());
    const auto add = [&](const QString &key, const QString &meaning) {
        auto *text = new QLabel(meaning, card);
        text->setTextFormat(Qt::PlainText);
        lines->addRow(key, text);
    };
    if (!commands.empty()) lines->addRow(Heading(QStringLiteral("Comandi"), card));
    for (const DialogCommand &command : commands) {
        const QString keys = KeysOf(command);
        if (!keys.isEmpty()) add(keys, command.tooltip.isEmpty() ? PlainCaption(command.caption) : command.tooltip);
    }
    lines->addRow(Heading(QStringLiteral("In tutte le finestre"), card));
    for (const KeyLine &line : kCommonKeys) add(QString::fromUtf8(line.key), QString::fromUtf8(line.meaning));
    if (lists.any) lines->addRow(Heading(QStringLiteral("Negli elenchi"), card));
    if (lists.any)
        for (const KeyLine &line : kListKeys) add(QString::fromUtf8(line.key), QString::fromUtf8(line.meaning));
    if (lists.sortable)
        for (const KeyLine &line : kSortKeys) add(QString::fromUtf8(line.key), QString::fromUtf8(line.meaning));
    lines->addRow(Heading(QStringLiteral("Battendo"), card));
    for (const KeyLine &line : kTyping) add(QString::fromUtf8(line.key), QString::fromUtf8(line.meaning));
    return card;
}

} // namespace

void ShowDialogHelp(QWidget *parent, const QString &title, const std::vector<DialogCommand> &commands)
{
    QDialog window(parent);
    window.setWindowTitle(title.isEmpty() ? QStringLiteral("Tasti") : QStringLiteral("Tasti - %1").arg(title));
    auto *layout = new QVBoxLayout(&window);
    auto *scroll = new QScrollArea(&window);
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setWidgetResizable(true);
    QWidget *card = KeyCard(commands, ListsOf(parent));
    scroll->setWidget(card);
    const int room = window.screen()->availableSize().height() * 3 / 4;
    scroll->setMinimumHeight(std::min(card->sizeHint().height() + window.fontMetrics().height(), room));
    scroll->setMinimumWidth(card->sizeHint().width() + window.fontMetrics().averageCharWidth() * 3);
    layout->addWidget(scroll, 1);
    auto *buttons = new QDialogButtonBox(&window);
    QPushButton *close = buttons->addButton(QStringLiteral("&Chiudi"), QDialogButtonBox::RejectRole);
    close->setDefault(true);
    close->setFocus();
    QObject::connect(close, &QPushButton::clicked, &window, &QDialog::reject);
    layout->addWidget(buttons);
    window.exec();
}

QString KeyName(const QString &shortcut)
{
    QString name = shortcut;
    const std::pair<const char *, const char *> words[] = {{"PgUp", "Pag↑"}, {"PgDown", "Pag↓"},
                                                           {"PgDn", "Pag↓"}, {"Shift", "Maiusc"},
                                                           {"Del", "Canc"},  {"Return", "Invio"}};
    for (const auto &[english, italian] : words) name.replace(QLatin1String(english), QString::fromUtf8(italian));
    return name;
}

QString PlainCaption(const QString &caption)
{
    QString plain = KeyOfCaption(caption) != 0 ? caption.section(QLatin1String(" - "), 1) : caption;
    plain.replace(QLatin1String("&&"), QString(QChar(1)));
    plain.remove(QLatin1Char('&'));
    return plain.replace(QChar(1), QLatin1Char('&'));
}

QString TooltipOf(const DialogCommand &command)
{
    if (command.shortcut.isEmpty()) return command.tooltip;
    const QString key = KeyName(command.shortcut);
    return command.tooltip.isEmpty() ? key : QStringLiteral("%1 (%2)").arg(command.tooltip, key);
}
