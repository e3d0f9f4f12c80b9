#include "einvoice/SheetSections.h"
#include "einvoice/ui/FatturePages.h"
#include "tarvodlg/base/Dates.h"
#include "tarvodlg/base/Numbers.h"
#include "tarvodlg/widgets/FormBuilder.h"
#include "tarvodlg/widgets/Theme.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPainter>
#include <QScrollArea>
#include <QScrollBar>
#include <QStyle>
#include <QVBoxLayout>
#include <span>

namespace {

using fatturapa::IndirizzoType;
using fatturapa::PartyType;

/// A value to read and to copy with the mouse: cut with an ellipsis where there is no room, whole in the tooltip.
class ShownValue : public QLineEdit {
  public:
    explicit ShownValue(QWidget *parent) : QLineEdit(parent)
    {
        setReadOnly(true);
        setFrame(false);
        setFocusPolicy(Qt::ClickFocus); // thirty values are no stops on the way of Tab
        QPalette seen_through = palette();
        seen_through.setColor(QPalette::Base, Qt::transparent);
        setPalette(seen_through);
        setMinimumWidth(CharactersWide(this, 9));
    }

    /// No higher than its caption, so that the page fits below a list.
    QSize sizeHint() const override { return {QLineEdit::sizeHint().width(), fontMetrics().height() + 1}; }
    QSize minimumSizeHint() const override { return {QLineEdit::minimumSizeHint().width(), sizeHint().height()}; }

    void Show(const std::string &value)
    {
        setText(ToQt(OnOneLine(value)));
        setCursorPosition(0);
        // As rich text, and escaped: the value comes from outside and must not be taken for mark-up.
        setToolTip(PlainTip(text()));
    }

  protected:
    void paintEvent(QPaintEvent *event) override
    {
        constexpr int kMarginOfLine = 2; // which QLineEdit leaves on either side of its text
        const QRect room = rect().adjusted(kMarginOfLine, 0, -kMarginOfLine, 0);
        if (hasFocus() || fontMetrics().horizontalAdvance(text()) <= room.width()) return QLineEdit::paintEvent(event);
        QPainter painter(this);
        style()->drawItemText(&painter, room, Qt::AlignVCenter | Qt::AlignLeft | Qt::TextSingleLine, palette(),
                              isEnabled(), fontMetrics().elidedText(text(), Qt::ElideRight, room.width()),
                              QPalette::Text);
    }
};

std::string Partners(const PartyType &seller)
{
    const std::string &code = seller.IscrizioneREA.SocioUnico;
    return CodeWithText(code, code == "SU" ? "Socio unico" : code == "SM" ? "Più soci" : "");
}

std::string Liquidation(const PartyType &seller)
{
    const std::string &code = seller.IscrizioneREA.StatoLiquidazione;
    return CodeWithText(code, code == "LS" ? "In liquidazione" : code == "LN" ? "Non in liquidazione" : "");
}

std::string Regime(const PartyType &seller)
{
    const std::string &code = seller.DatiAnagrafici.RegimeFiscale;
    return CodeWithText(code, fatturapa::RegimeFiscaleText(code));
}

std::string Register(const PartyType &seller)
{
    const fatturapa::DatiAnagraficiType &person = seller.DatiAnagrafici;
    const std::string province = person.ProvinciaAlbo.empty() ? std::string() : "(" + person.ProvinciaAlbo + ")";
    return Joined(" ", {person.AlboProfessionale, province});
}

std::string Capital(const PartyType &seller)
{
    const std::optional<double> &capital = seller.IscrizioneREA.CapitaleSociale;
    return capital ? FormatAmount(*capital, 2) : std::string();
}

template <auto Member>
std::string Person(const PartyType &seller)
{
    return seller.DatiAnagrafici.*Member;
}
template <auto Member>
std::string Name(const PartyType &seller)
{
    return seller.DatiAnagrafici.Anagrafica.*Member;
}
template <auto Member>
std::string Seat(const PartyType &seller)
{
    return seller.Sede.*Member;
}
template <auto Member>
std::string Branch(const PartyType &seller)
{
    return seller.StabileOrganizzazione ? *seller.StabileOrganizzazione.*Member : std::string();
}
template <auto Member>
std::string Rea(const PartyType &seller)
{
    return seller.IscrizioneREA.*Member;
}
template <auto Member>
std::string Contact(const PartyType &seller)
{
    return seller.Contatti.*Member;
}

struct Caption {
    const char *text;
    std::string (*value)(const PartyType &seller);
};

using fatturapa::AnagraficaType;
using fatturapa::ContattiType;
using fatturapa::DatiAnagraficiType;
using fatturapa::IscrizioneREAType;

constexpr Caption kNumbers[] = {
    {"Partita Iva", [](const PartyType &seller) { return FiscalIdText(seller.DatiAnagrafici.IdFiscaleIVA); }},
    {"Codice Fiscale", Person<&DatiAnagraficiType::CodiceFiscale>},
};
constexpr Caption kName[] = {
    {"Denominazione", Name<&AnagraficaType::Denominazione>},
    {"Nome", Name<&AnagraficaType::Nome>},
    {"Cognome", Name<&AnagraficaType::Cognome>},
    {"Titolo", Name<&AnagraficaType::Titolo>},
    {"Codice EORI", Name<&AnagraficaType::CodEORI>},
};
constexpr Caption kRegister[] = {
    {"Albo Professionale", Register},
    {"Numero Iscrizione Albo", Person<&DatiAnagraficiType::NumeroIscrizioneAlbo>},
    {"Data Iscrizione Albo",
     [](const PartyType &seller) { return FormatDate(seller.DatiAnagrafici.DataIscrizioneAlbo); }},
    {"Regime Fiscale", Regime},
};
constexpr Caption kSeat[] = {
    {"Indirizzo", Seat<&IndirizzoType::Indirizzo>},
    {"Numero Civico", Seat<&IndirizzoType::NumeroCivico>},
    {"CAP", Seat<&IndirizzoType::CAP>},
    {"Comune", Seat<&IndirizzoType::Comune>},
    {"Provincia", Seat<&IndirizzoType::Provincia>},
    {"Nazione", Seat<&IndirizzoType::Nazione>},
};
constexpr Caption kBranch[] = {
    {"Indirizzo", Branch<&IndirizzoType::Indirizzo>},
    {"Numero Civico", Branch<&IndirizzoType::NumeroCivico>},
    {"CAP", Branch<&IndirizzoType::CAP>},
    {"Comune", Branch<&IndirizzoType::Comune>},
    {"Provincia", Branch<&IndirizzoType::Provincia>},
    {"Nazione", Branch<&IndirizzoType::Nazione>},
};
constexpr Caption kRea[] = {
    {"Ufficio", Rea<&IscrizioneREAType::Ufficio>},
    {"Numero REA", Rea<&IscrizioneREAType::NumeroREA>},
    {"Capitale Sociale", Capital},
    {"Socio Unico", Partners},
    {"Stato Liquidazione", Liquidation},
};
constexpr Caption kContacts[] = {
    {"Telefono", Contact<&ContattiType::Telefono>},
    {"Fax", Contact<&ContattiType::Fax>},
    {"Email", Contact<&ContattiType::Email>},
};

constexpr int kLineSpacing = 1;

enum class Rank { Group, Part }; ///< a heading with a rule, or one inside a group

QLayout *Heading(const char *text, Rank rank, QWidget *host)
{
    auto *line = new QHBoxLayout;
    line->setSpacing(host->fontMetrics().averageCharWidth() * 2);
    auto *heading = new QLabel(text, host);
    QFont font = heading->font();
    font.setBold(rank == Rank::Group);
    font.setItalic(rank == Rank::Part);
    heading->setFont(font);
    line->addWidget(heading);
    if (rank == Rank::Part) return line;
    auto *rule = new QFrame(host);
    rule->setFrameShape(QFrame::HLine);
    rule->setFrameShadow(QFrame::Plain);
    rule->setForegroundRole(QPalette::Mid);
    line->addWidget(rule, 1);
    return line;
}

} // namespace

/// The values with what fills them, in the order of the page.
struct CFattureElettronicheFor::Form {
    struct Shown {
        const Caption *caption;
        ShownValue *value;
    };
    std::vector<Shown> values;
    QScrollArea *scroll;
    QWidget *host;

    explicit Form(QWidget *page) : scroll(new QScrollArea(page)), host(new QWidget)
    {
        scroll->setFrameShape(QFrame::NoFrame);
        scroll->setWidgetResizable(true);
        scroll->setWidget(host);
        host->setAutoFillBackground(false); // the page's own shows
        scroll->viewport()->setAutoFillBackground(false);
        // A stop for the keys where there is something to scroll, else none.
        scroll->setFocusPolicy(Qt::NoFocus);
        connect(scroll->verticalScrollBar(), &QScrollBar::rangeChanged, scroll,
                [area = scroll](int, int last) { area->setFocusPolicy(last > 0 ? Qt::StrongFocus : Qt::NoFocus); });
        Build();
    }

    void Build()
    {
        auto *columns = new QHBoxLayout(host);
        const int gap = host->fontMetrics().averageCharWidth() * 3;
        columns->setSpacing(gap);
        auto *person = new QVBoxLayout;
        person->setSpacing(kLineSpacing);
        person->addLayout(Heading("Dati Anagrafici", Rank::Group, host));
        auto *halves = new QHBoxLayout;
        halves->setSpacing(gap);
        QGridLayout *left = Column(halves, 5); // a name is long
        AddHeading(left, "Identificativo Fiscale", Rank::Part);
        Add(left, "Identificativo Fiscale", kNumbers);
        AddHeading(left, "Anagrafica", Rank::Part);
        Add(left, "Anagrafica", kName);
        QGridLayout *right = Column(halves, 4);
        Add(right, "Dati Anagrafici", kRegister);
        AddHeading(right, "Sede", Rank::Group);
        Add(right, "Sede", kSeat);
        person->addLayout(halves, 1);
        columns->addLayout(person, 9);

        QGridLayout *branch = Column(columns, 4);
        AddHeading(branch, "Stabile Organizzazione", Rank::Group);
        Add(branch, "Stabile Organizzazione", kBranch);
        QGridLayout *more = Column(columns, 4);
        AddHeading(more, "Iscrizione REA", Rank::Group);
        Add(more, "Iscrizione REA", kRea);
        AddHeading(more, "Contatti", Rank::Group);
        Add(more, "Contatti", kContacts);
        for (QGridLayout *column : {left, right, branch, more}) column->setRowStretch(column->rowCount(), 1);
    }

    static QGridLayout *Column(QBoxLayout *columns, int stretch)
    {
        auto *column = new QGridLayout;
        column->setColumnStretch(1, 1);
        column->setVerticalSpacing(kLineSpacing);
        columns->addLayout(column, stretch);
        return column;
    }

    void AddHeading(QGridLayout *column, const char *text, Rank rank)
    {
        column->addLayout(Heading(text, rank, host), column->count() == 0 ? 0 : column->rowCount(), 0, 1, 2);
    }

    void Add(QGridLayout *column, const char *group, std::span<const Caption> captions)
    {
        for (const Caption &caption : captions) {
            const int row = column->count() == 0 ? 0 : column->rowCount();
            auto *label = new QLabel(caption.text, host);
            auto *value = new ShownValue(host);
            value->setAccessibleName(caption.text);
            value->setAccessibleDescription(group); // two groups have an address
            column->addWidget(label, row, 0);
            column->addWidget(value, row, 1);
            values.push_back({&caption, value});
        }
    }
};

CFattureElettronicheFor::CFattureElettronicheFor(CTarvoDialog *dialog)
    : CFattureElettronichePage(dialog), form_(std::make_unique<Form>(this))
{
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(form_->scroll);
}

CFattureElettronicheFor::~CFattureElettronicheFor() = default;

void CFattureElettronicheFor::Show(const CFattureElettronicheDB &content, std::size_t)
{
    const PartyType &seller = content.Header().CedentePrestatore;
    for (const Form::Shown &shown : form_->values) shown.value->Show(shown.caption->value(seller));
    form_->scroll->verticalScrollBar()->setValue(0);
}

void CFattureElettronicheFor::ShowNothing()
{
    for (const Form::Shown &shown : form_->values) shown.value->Show({});
}
