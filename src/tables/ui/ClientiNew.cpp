#include "tables/ui/ClientiNew.h"

namespace {

const TableEditorRegistration<CClientiNew> kRegistration("clienti");

CounterpartMembers MembersOf(CLIENTI &r)
{
    return {"cli_",
            r.cli_codice,
            r.cli_desc,
            r.cli_rag_soc1,
            r.cli_rag_soc2,
            r.cli_pers,
            r.cli_ditta_ind,
            r.cli_indirizzo,
            r.cli_cap,
            r.cli_citta,
            r.cli_prov,
            r.cli_naz,
            r.cli_piva,
            r.cli_codfis,
            r.cli_telefono,
            r.cli_email,
            r.cli_pec,
            r.cli_iban,
            r.cli_mas,
            r.cli_con,
            r.cli_pag,
            r.cli_ban,
            r.cli_data_cessazione,
            r.cli_escludi_iva};
}

} // namespace

CClientiNew::CClientiNew(CWnd *parent)
    : CTableEditor("clienti", parent),
      form_(
          this, MembersOf(m_record), [this](const std::string &column, CTarvoField *field) { Field(column, field); },
          [this] { return CheckShown(); })
{
    {
        FormBuilder form(this, AddTab("Anagrafica"));
        KeyField("cli_codice", form.Code("C&odice", m_record.cli_codice));
        form.Beside();
        form_.AddIdentity(form);
        form_.AddContacts(form);
        form.Beside();
        Field("cli_cod_dest", form.Text("Codice destinatario", m_record.cli_cod_dest))->SetUpperCase(true);
    }
    FormBuilder form(this, AddTab("Contabilità e pagamenti"));
    form_.AddAccounting(form);
    Field("cli_age", form.Code("&Agente", m_record.cli_age, Lookup("agenti")));
    form_.AddState(form);
}

bool CClientiNew::BeforeStore()
{
    form_.CompleteName();
    return true;
}

std::vector<FieldFault> CClientiNew::CheckShown()
{
    GetField();
    return CheckCliente(nullptr, m_record, !IsRecordLoaded());
}
