#include "tables/ui/CentriCosto.h"

namespace {
const TableEditorRegistration<CCentriCosto> kRegistration("centri");
}

CCentriCosto::CCentriCosto(CWnd *parent) : CTableEditor("centri", parent)
{
    FormBuilder form(this);
    KeyField("cdc_codice", form.Code("C&odice", m_record.cdc_codice));
    Field("cdc_desc", form.Text("&Descrizione", m_record.cdc_desc));
}
