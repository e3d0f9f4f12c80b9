#include "tables/ui/CodiciIva.h"

#include "tables/ui/Choices.h"
#include "tarvolumera/fatturapa/FatturaCodes.h"

namespace {

const TableEditorRegistration<CCodiciIva> kRegistration("codiva");

} // namespace

CCodiciIva::CCodiciIva(CWnd *parent) : CTableEditor("codiva", parent)
{
    FormBuilder form(this);
    KeyField("iva_codice", form.Code("&Codice", m_record.iva_codice));
    Field("iva_desc", form.Text("&Descrizione", m_record.iva_desc));
    kind_ = Field("iva_tip", form.Choice("&Tipo", m_record.iva_tip, CodeChoicesOf("codiva", "iva_tip")));
    rate_ = Field("iva_aliq", form.Amount("&Aliquota %", m_record.iva_aliq, 2, 7));
    non_deductible_ = Field("iva_inded", form.Amount("&Indetraibile %", m_record.iva_inded, 2, 7));
    rate_->SetRange(0, 100);
    non_deductible_->SetRange(0, 100);
    nature_ = Field("iva_natura", form.Text("&Natura", m_record.iva_natura, 6));
    nature_->SetUpperCase(true);
    form.Beside().Hint("codice della fattura elettronica, come N3.5; vuota se c'è imposta");
    Field("iva_aliq_default",
          form.Flag("&Preferito tra i codici di uguale aliquota e tipo", m_record.iva_aliq_default));
    QObject::connect(kind_, &QComboBox::activated, this, [this] { Guarded(LUMERA_TAG, [this] { OnTipoChanged(); }); });
}

void CCodiciIva::OnNewRecord()
{
    m_record.iva_tip = kVatTaxable;
}

void CCodiciIva::OnRecordShown()
{
    const std::string family(fatturapa::IvaTipToNatura(static_cast<short>(m_record.iva_tip)));
    nature_->setPlaceholderText(ToQt(family));
}

void CCodiciIva::OnTipoChanged()
{
    const long kind = kind_->Code();
    const std::string family(fatturapa::IvaTipToNatura(static_cast<short>(kind)));
    nature_->setPlaceholderText(ToQt(family));
    if (!nature_->Value().starts_with(family) || family.empty()) nature_->SetValue(family);
}
