#include "tables/ui/CausaliMagazzino.h"

#include "tables/ui/Choices.h"

namespace {
const TableEditorRegistration<CCausaliMagazzino> kRegistration("caumag");
}

CCausaliMagazzino::CCausaliMagazzino(CWnd *parent) : CTableEditor("caumag", parent)
{
    FormBuilder form(this);
    KeyField("cam_codice", form.Code("C&odice", m_record.cam_codice));
    Field("cam_desc", form.Text("&Descrizione", m_record.cam_desc));
    Field("cam_tipo", form.Choice("&Movimento", m_record.cam_tipo, ChoicesOf("caumag", "cam_tipo")));
}
