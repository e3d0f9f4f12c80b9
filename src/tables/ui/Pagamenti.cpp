#include "tables/ui/Pagamenti.h"

#include "tables/TermsExample.h"
#include "tarvodlg/base/UserInterface.h"

namespace {

const TableEditorRegistration<CPagamenti> kRegistration("pagamenti");

struct PaymentType {
    long code;
    const char *words;
    const char *short_text; ///< what collections and bank files recognise the type by
};
constexpr PaymentType kPaymentTypes[] = {{1, "Rimessa diretta", "RIM.DIR."},  {2, "Ricevuta bancaria", "RI.BA."},
                                         {3, "Addebito diretto", "RID"},      {4, "Tratta", "TRATTA"},
                                         {5, "Cambiale", "CAMBIALE"},         {6, "MAV", "MAV"},
                                         {7, "Contanti, subito", "CONTANTI"}, {8, "Assegno", "ASSEGNO"},
                                         {9, "Bonifico", "BONIFICO"},         {10, "Carta", "CARTA"},
                                         {11, "Compensazione", "COMPENSAZ."}, {13, "Bollettino", "BOLLETTINO"}};

std::vector<std::pair<long, QString>> PaymentTypes()
{
    std::vector<std::pair<long, QString>> choices;
    for (const PaymentType &type : kPaymentTypes) choices.emplace_back(type.code, ToQt(type.words));
    return choices;
}

CChoiceField::Choices StartRules()
{
    return {{"DATA FATTURA", "Data fattura"}, {"FINE MESE", "Fine mese"}, {"DATA DIVERSA", "Data diversa"}};
}

CChoiceField::Choices Months()
{
    return {{"", "nessuno"},         {"GENNAIO", "Gennaio"},     {"FEBBRAIO", "Febbraio"}, {"MARZO", "Marzo"},
            {"APRILE", "Aprile"},    {"MAGGIO", "Maggio"},       {"GIUGNO", "Giugno"},     {"LUGLIO", "Luglio"},
            {"AGOSTO", "Agosto"},    {"SETTEMBRE", "Settembre"}, {"OTTOBRE", "Ottobre"},   {"NOVEMBRE", "Novembre"},
            {"DICEMBRE", "Dicembre"}};
}

} // namespace

CPagamenti::CPagamenti(CWnd *parent) : CTableEditor("pagamenti", parent)
{
    FormBuilder form(this);
    KeyField("pag_codice", form.Code("&Codice", m_record.pag_codice));
    Field("pag_desc", form.Text("&Descrizione", m_record.pag_desc));
    payment_type_ = Field("pag_tipo_pag", form.Choice("&Tipo di pagamento", m_record.pag_tipo_pag, PaymentTypes()));
    short_text_ = Field("pag_tipo", form.Beside().Text("Sig&la", m_record.pag_tipo, 14));
    Field("pag_genera", form.Flag("&Genera le scadenze", m_record.pag_genera));
    form.Section("Decorrenza e rate");
    Field("pag_ini", form.Choice("Dec&orrenza", m_record.pag_ini, StartRules()));
    Field("pag_gg_ini", form.Beside().Number("&più giorni", m_record.pag_gg_ini, 0, 999));
    Field("pag_num_rate", form.Number("&Numero rate", m_record.pag_num_rate, 0, 60));
    Field("pag_gg_int", form.Beside().Number("ogni gio&rni", m_record.pag_gg_int, 0, 999));
    Field("pag_rate_uguali", form.Flag("Rate &uguali, IVA compresa", m_record.pag_rate_uguali));
    Field("pag_iva_separata", form.Flag("&IVA in una rata a sé, la prima", m_record.pag_iva_separata));
    form.Section("Giorni e mesi");
    Field("pag_gg_fisso_1", form.Number("Giorni &fissi del mese", m_record.pag_gg_fisso_1, 0, 31));
    Field("pag_gg_fisso_2", form.Beside().Number("e", m_record.pag_gg_fisso_2, 0, 31));
    form.Beside().Info({})->setText("31 = ultimo giorno");
    Field("pag_mese_esc_1", form.Choice("&Mesi esclusi", m_record.pag_mese_esc_1, Months()));
    Field("pag_mese_esc_2", form.Beside().Choice("", m_record.pag_mese_esc_2, Months()));
    Field("pag_mese_esc_3", form.Beside().Choice("", m_record.pag_mese_esc_3, Months()));
    form.Section("Esempio");
    constexpr int kExampleLines = 4; // six instalments and the last one
    example_ = new QLabel(this);
    example_->setTextFormat(Qt::PlainText);
    example_->setWordWrap(true);
    example_->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    example_->setMinimumHeight(kExampleLines * fontMetrics().lineSpacing());
    form.Fill(example_);
    OnLostFocusEvent(payment_type_, [this] { return OnLostFocusEventTipoPag(); });
}

void CPagamenti::OnNewRecord()
{
    m_record.pag_tipo_pag = 9;
    m_record.pag_tipo = "BONIFICO";
    m_record.pag_ini = "DATA FATTURA";
}

void CPagamenti::OnRecordShown()
{
    ShowExample();
}

void CPagamenti::OnKickIdle()
{
    CTableEditor::OnKickIdle();
    GetField();
    ShowExample();
}

bool CPagamenti::OnLostFocusEventTipoPag()
{
    for (const PaymentType &type : kPaymentTypes)
        if (type.code == payment_type_->Code()) short_text_->SetValue(type.short_text);
    return true;
}

void CPagamenti::ShowExample()
{
    const QString text = ToQt(ExampleOfTerms(m_record, CurrentUserInterface().Today()));
    if (example_->text() != text) example_->setText(text);
}
