#include "tables/ui/Fornitori.h"

namespace {

const TableEditorRegistration<CFornitori> kRegistration("fornitori");

CounterpartMembers MembersOf(FORNITORI &r)
{
    return {"for_",
            r.for_codice,
            r.for_desc,
            r.for_rag_soc1,
            r.for_rag_soc2,
            r.for_pers,
            r.for_ditta_ind,
            r.for_indirizzo,
            r.for_cap,
            r.for_citta,
            r.for_prov,
            r.for_naz,
            r.for_piva,
            r.for_codfis,
            r.for_telefono,
            r.for_email,
            r.for_pec,
            r.for_iban,
            r.for_mas,
            r.for_con,
            r.for_pag,
            r.for_ban,
            r.for_data_cessazione,
            r.for_escludi_iva};
}

} // namespace

CFornitori::CFornitori(CWnd *parent)
    : CTableEditor("fornitori", parent),
      form_(
          this, MembersOf(m_record), [this](const std::string &column, CTarvoField *field) { Field(column, field); },
          [this] { return CheckShown(); })
{
    {
        FormBuilder form(this, AddTab("Anagrafica"));
        KeyField("for_codice", form.Code("C&odice", m_record.for_codice));
        form.Beside();
        form_.AddIdentity(form);
        form_.AddContacts(form);
        form.Section("Registro delle imprese");
        Field("for_rea", form.Text("N&umero REA", m_record.for_rea, 16))->SetUpperCase(true);
        form.Beside();
        Field("for_socio_unico",
              form.Choice("Soci", m_record.for_socio_unico, {{"", ""}, {"SU", "Socio unico"}, {"SM", "Più soci"}}));
        form.Beside();
        Field("for_stato_liq", form.Choice("Liquidazione", m_record.for_stato_liq,
                                           {{"", ""}, {"LN", "Non in liquidazione"}, {"LS", "In liquidazione"}}));
    }
    FormBuilder form(this, AddTab("Contabilità e pagamenti"));
    form_.AddAccounting(form);
    Field("for_cau", form.Code("Ca&usale", m_record.for_cau, Lookup("causali")));
    form_.AddState(form);
}

void CFornitori::OnNewRecord()
{
    if (proposal_) m_record = *std::exchange(proposal_, std::nullopt);
}

bool CFornitori::BeforeStore()
{
    form_.CompleteName();
    return true;
}

std::vector<FieldFault> CFornitori::CheckShown()
{
    GetField();
    return CheckFornitore(nullptr, m_record, !IsRecordLoaded());
}
