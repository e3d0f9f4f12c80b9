#include "tables/ui/ContiEditors.h"

#include "tables/FaultList.h"
#include "tables/ui/Choices.h"
#include "tables/ui/Lookups.h"

namespace {

const TableEditorRegistration<CMastri> kMastri("mastri");
const TableEditorRegistration<CConti> kConti("conti");
const TableEditorRegistration<CSottoconti> kSottoconti("sottocon");

} // namespace

CMastri::CMastri(CWnd *parent) : CTableEditor("mastri", parent)
{
    FormBuilder form(this);
    KeyField("mas_codice", form.Code("&Mastro", m_record.mas_codice));
    Field("mas_desc", form.Text("&Descrizione", m_record.mas_desc));
    of_customers_ = Field("mas_cli", form.Flag("Mastro dei &clienti", m_record.mas_cli));
    of_suppliers_ = Field("mas_for", form.Flag("Mastro dei &fornitori", m_record.mas_for));
}

void CMastri::Protect(SACommand *)
{
    const long relation = IsRecordLoaded() ? MasterRelation(lumera_db_impo, m_record.mas_codice) : kNoCounterpart;
    const bool is_right = m_record.mas_cli == (relation == kCustomer) && m_record.mas_for == (relation == kSupplier);
    for (CFlagField *flag : {of_customers_, of_suppliers_}) flag->Protect(relation != kNoCounterpart && is_right);
}

CConti::CConti(CWnd *parent) : CTableEditor("conti", parent)
{
    FormBuilder form(this);
    CCodeField *master = KeyField("con_mas", form.Code("&Mastro", m_record.con_mas, Lookup("mastri")));
    master->on_dbl_click = [master] { master->Browse(); }; // the masters, not the accounts
    KeyField("con_codice", form.Code("&Conto", m_record.con_codice));
    Field("con_desc", form.Text("&Descrizione", m_record.con_desc));
    of_customers_ = Field("con_cli", form.Flag("Conto di c&lienti", m_record.con_cli));
    of_suppliers_ = Field("con_for", form.Flag("Conto di &fornitori", m_record.con_for));
}

void CConti::Protect(SACommand *cmd)
{
    constexpr std::string_view kAnyRow = "SELECT COUNT(*) FROM (SELECT row_codice FROM admin.pnotaro2"
                                         " WHERE row_mas = :mastro AND row_con = :conto LIMIT 1) AS r";
    const auto bind = [this](SACommand &query) {
        query.Param("mastro").setAsLong(m_record.con_mas);
        query.Param("conto").setAsLong(m_record.con_codice);
    };
    const bool has_entries = IsRecordLoaded() && CountRows(cmd, kAnyRow, bind) > 0;
    for (CFlagField *flag : {of_customers_, of_suppliers_}) flag->Protect(has_entries);
}

CSottoconti::CSottoconti(CWnd *parent) : CTableEditor("sottocon", parent)
{
    FormBuilder form(this);
    CCodeField *master = KeyField("sot_mas", form.Code("&Mastro", m_record.sot_mas, Lookup("mastri")));
    const auto accounts =
        std::make_shared<TableLookup>("conti", [master] { return std::vector<long>{master->Value()}; });
    CCodeField *account = KeyField("sot_con", form.Code("&Conto", m_record.sot_con, accounts));
    master->on_dbl_click = [master] { master->Browse(); }; // masters and accounts, not the sub-accounts
    account->on_dbl_click = [account] { account->Browse(); };
    KeyField("sot_codice", form.Code("S&ottoconto", m_record.sot_codice));
    description_ = Field("sot_desc", form.Text("&Descrizione", m_record.sot_desc));
    list_description_ = Field("sot_desc1", form.Text("Descrizione &breve", m_record.sot_desc1));
    Field("sot_tipo", form.Choice("&Tipo", m_record.sot_tipo, ChoicesOf("sottocon", "sot_tipo")));
    OnLostFocusEvent(description_, [this] { return OnLostFocusEventDesc(); });
}

void CSottoconti::OnNewRecord()
{
    m_record.sot_tipo = "C";
}

/// Lists are narrow: what they show is the beginning of the description unless somebody wrote better.
bool CSottoconti::OnLostFocusEventDesc()
{
    if (list_description_->Value().empty())
        list_description_->SetValue(Utf8Prefix(description_->Value(), m_record.sot_desc1.MaxLength()));
    return true;
}

/// A description that came with the new record was never left.
bool CSottoconti::BeforeStore()
{
    if (m_record.sot_desc1.empty())
        m_record.sot_desc1.Assign(Utf8Prefix(m_record.sot_desc.str(), m_record.sot_desc1.MaxLength()));
    return true;
}
