#include "tables/ui/Banche.h"

#include "tables/ui/AccountField.h"

namespace {
const TableEditorRegistration<CBanche> kRegistration("banche");
}

CBanche::CBanche(CWnd *parent) : CTableEditor("banche", parent)
{
    FormBuilder form(this);
    KeyField("ban_codice", form.Code("C&odice", m_record.ban_codice));
    Field("ban_desc", form.Text("&Descrizione", m_record.ban_desc));
    form.Section("Coordinate");
    iban_ = Field("ban_iban", form.Text("I&BAN", m_record.ban_iban));
    iban_->SetUpperCase(true);
    abi_ = Field("ban_abi", form.Text("&ABI", m_record.ban_abi));
    form.Beside();
    cab_ = Field("ban_cab", form.Text("&CAB", m_record.ban_cab));
    Field("ban_bic", form.Text("B&IC", m_record.ban_bic))->SetUpperCase(true);
    form.Section("Contabilità");
    const AccountFields account =
        AddAccount(form, this, "Co&nto", m_record.ban_mas, m_record.ban_con, m_record.ban_sot);
    Field("ban_mas", account.mas);
    Field("ban_con", account.con);
    Field("ban_sot", account.sot);
    OnLostFocusEvent(iban_, [this] { return OnLostFocusEventIban(); });
}

bool CBanche::OnLostFocusEventIban()
{
    std::string iban = iban_->Value();
    std::erase(iban, ' '); // pasted in groups of four
    const std::string fault = IbanFault(iban);
    SetStatus(fault.empty() ? QString() : "IBAN: " + ToQt(fault));
    if (!fault.empty()) return false;
    iban_->SetValue(iban);
    if (iban.starts_with("IT")) { // country 2, check digits 2, CIN 1, ABI 5, CAB 5
        abi_->SetValue(iban.substr(5, 5));
        cab_->SetValue(iban.substr(10, 5));
    }
    return true;
}
