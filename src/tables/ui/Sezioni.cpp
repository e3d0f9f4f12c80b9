#include "tables/ui/Sezioni.h"

namespace {
const TableEditorRegistration<CSezioni> kRegistration("sezioni");
}

CSezioni::CSezioni(CWnd *parent) : CTableEditor("sezioni", parent)
{
    FormBuilder form(this);
    KeyField("sez_codice", form.Code("C&odice", m_record.sez_codice));
    Field("sez_desc", form.Text("&Descrizione", m_record.sez_desc));
    form.Section("Esclusioni");
    Field("sez_esc_liq_iva", form.Flag("Fuori dalla &liquidazione dell'IVA", m_record.sez_esc_liq_iva));
    Field("sez_esc_spesometro", form.Flag("Fuori dalle &comunicazioni dei dati fatture", m_record.sez_esc_spesometro));
    Field("sez_esc_ventilazione",
          form.Flag("Fuori dalla &ventilazione dei corrispettivi", m_record.sez_esc_ventilazione));
}
