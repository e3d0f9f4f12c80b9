#include "tables/ui/Agenti.h"

namespace {
const TableEditorRegistration<CAgenti> kRegistration("agenti");
}

CAgenti::CAgenti(CWnd *parent) : CTableEditor("agenti", parent)
{
    FormBuilder form(this);
    KeyField("age_codice", form.Code("C&odice", m_record.age_codice));
    Field("age_desc", form.Text("&Nome", m_record.age_desc));
}
