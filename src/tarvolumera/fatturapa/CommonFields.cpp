#include "tarvolumera/fatturapa/CommonFields.h"

#include "tarvodlg/base/Text.h"

#include <fmt/format.h>

namespace fatturapa {

namespace {

constexpr Field<AllegatiType> kAllegati[] = {
    {"NomeAttachment", Text<&AllegatiType::NomeAttachment>},
    {"AlgoritmoCompressione", Text<&AllegatiType::AlgoritmoCompressione>},
    {"FormatoAttachment", Text<&AllegatiType::FormatoAttachment>},
    {"DescrizioneAttachment", Text<&AllegatiType::DescrizioneAttachment>},
    {"Attachment",
     [](ReadContext &context, AllegatiType &allegato) {
         allegato.Attachment = context.xml.LongText();
         allegato.file_text = context.file_text;
         if (context.xml.IsInFile(allegato.Attachment)) return;
         // Cut by comments or wrapped in CDATA: no longer one piece of the file, so it gets a text of its own.
         auto joined = std::make_shared<const std::string>(allegato.Attachment);
         allegato.Attachment = *joined;
         allegato.file_text = std::move(joined);
     }},
};

} // namespace

void ReadAllegati(ReadContext &context, FatturaElettronicaBody &body)
{
    context.CountEntry(body.Allegati.size() + 1);
    ReadFields(context, body.Allegati.emplace_back(), kAllegati);
}

void ReadDocumentDay(ReadContext &context, long &value)
{
    const std::string_view text = context.xml.Text();
    if (text.empty()) return;
    const std::optional<long> day = ParseXmlDate(text);
    if (!day || !IsPlausibleDay(*day)) {
        context.RefuseDocument(fmt::format("DatiGeneraliDocumento/Data \"{}\": {}", Utf8Prefix(text, 40),
                                           day ? "data non plausibile" : "non è una data del calendario"));
    }
    context.WarnOfBlanks(text);
    value = *day;
}

void RequireUsable(const ReadContext &context, const FatturaElettronicaBody &body)
{
    const DatiGeneraliDocumentoType &documento = body.DatiGenerali.DatiGeneraliDocumento;
    if (documento.TipoDocumento.empty() && documento.Numero.empty() && documento.Data == 0) {
        context.RefuseDocument("manca l'elemento DatiGeneraliDocumento");
    }
    if (documento.TipoDocumento.empty()) context.RefuseDocument("manca l'elemento TipoDocumento");
    if (documento.Numero.empty()) context.RefuseDocument("manca l'elemento Numero del documento");
    if (documento.Data == 0) context.RefuseDocument("manca l'elemento Data del documento");
    if (!body.DatiBeniServizi.DatiRiepilogo.empty()) return;
    context.RefuseDocument(body.DatiBeniServizi.DettaglioLinee.empty() ? "manca l'elemento DatiBeniServizi"
                                                                       : "manca l'elemento DatiRiepilogo");
}

} // namespace fatturapa
