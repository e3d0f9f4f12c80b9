#include "tables/ui/Articoli.h"

namespace {
const TableEditorRegistration<CArticoli> kRegistration("articoli");
}

CArticoli::CArticoli(CWnd *parent) : CTableEditor("articoli", parent)
{
    FormBuilder form(this);
    code_ = KeyField("art_codice", form.Text("C&odice", m_record.art_codice));
    code_->SetUpperCase(true);
    Field("art_desc", form.Text("&Descrizione", m_record.art_desc));
    Field("art_um", form.Text("&Unità di misura", m_record.art_um));
    ean_ = Field("art_ean", form.Text("Codice a &barre", m_record.art_ean));
    OnLostFocusEvent(ean_, [this] { return OnLostFocusEventEan(); });
}

void CArticoli::OnNewRecord()
{
    m_record = m_proposta;
}

void CArticoli::OnRecordShown()
{
    // A new record comes without code; the one that is wanted is put in as if it had been typed.
    if (!IsRecordLoaded()) code_->SetValue(m_proposta.art_codice);
    m_proposta = ARTICOLI{}; // the next new one is blank
}

bool CArticoli::OnLostFocusEventEan()
{
    // Only said here: some suppliers print codes of their own making, and the store asks.
    const std::string fault = EanFault(ean_->Value());
    SetStatus(fault.empty() ? QString() : "Codice a barre: " + ToQt(fault));
    return true;
}
