#include "tests/einvoice/InvoiceFixture.h"

#include "tarvodlg/base/Dates.h"
#include "tarvodlg/base/Files.h"
#include "tarvolumera/archive/ArchiveCheck.h"

#include <fmt/format.h>

namespace {

constexpr std::size_t kSampleBytesMax = 10'000'000;

std::string Element(const char *name, const std::string &value)
{
    return value.empty() ? std::string{} : fmt::format("<{0}>{1}</{0}>", name, value);
}

std::string SummaryRow(const SummarySpec &row)
{
    return "<DatiRiepilogo>" + Element("AliquotaIVA", row.rate) + Element("Natura", row.nature) +
           Element("Arrotondamento", row.rounding) + Element("ImponibileImporto", row.taxable) +
           Element("Imposta", row.tax) + Element("EsigibilitaIVA", row.due) + Element("RiferimentoNormativo", row.law) +
           "</DatiRiepilogo>";
}

} // namespace

std::filesystem::path SampleFolder(const char *name)
{
    return std::filesystem::path(LUMERA_SOURCE_DIR) / "samples" / name;
}

std::filesystem::path SampleFile(const std::string &file)
{
    const std::filesystem::path good = SampleFolder("fatture") / file;
    return std::filesystem::exists(good) ? good : SampleFolder("guasti") / file;
}

std::string ReadSample(const std::string &file)
{
    return ReadWholeFile(SampleFile(file), kSampleBytesMax);
}

std::string Replaced(std::string text, std::string_view part, std::string_view replacement)
{
    return text.replace(text.find(part), part.size(), replacement);
}

std::string InvoiceText(const InvoiceSpec &spec)
{
    std::string summary;
    for (const SummarySpec &row : spec.summary) summary += SummaryRow(row);
    const std::string stamp = spec.stamp.empty() ? ""
                                                 : "<DatiBollo><BolloVirtuale>SI</BolloVirtuale>" +
                                                       Element("ImportoBollo", spec.stamp) + "</DatiBollo>";
    const std::string vat = spec.seller_vat.empty() ? ""
                                                    : "<IdFiscaleIVA>" + Element("IdPaese", spec.seller_country) +
                                                          Element("IdCodice", spec.seller_vat) + "</IdFiscaleIVA>";
    return R"(<?xml version="1.0" encoding="UTF-8"?>
<p:FatturaElettronica versione="FPR12" xmlns:p="http://ivaservizi.agenziaentrate.gov.it/docs/xsd/fatture/v1.2">
<FatturaElettronicaHeader><DatiTrasmissione><IdTrasmittente><IdPaese>IT</IdPaese><IdCodice>02565617350</IdCodice></IdTrasmittente>
<ProgressivoInvio>1</ProgressivoInvio><FormatoTrasmissione>FPR12</FormatoTrasmissione><CodiceDestinatario>ABCDEFG</CodiceDestinatario></DatiTrasmissione>
<CedentePrestatore><DatiAnagrafici>)" +
           vat + Element("CodiceFiscale", spec.seller_fiscal_code) + "<Anagrafica>" + spec.seller_name +
           R"(</Anagrafica>
<RegimeFiscale>RF01</RegimeFiscale></DatiAnagrafici><Sede><Indirizzo>Via Gandhi</Indirizzo><NumeroCivico>21</NumeroCivico><CAP>42123</CAP>
<Comune>Reggio nell'Emilia</Comune><Provincia>RE</Provincia><Nazione>IT</Nazione></Sede>)" +
           spec.rea + R"(</CedentePrestatore>
<CessionarioCommittente><DatiAnagrafici><IdFiscaleIVA><IdPaese>IT</IdPaese><IdCodice>08235227348</IdCodice></IdFiscaleIVA>
<Anagrafica><Denominazione>Brenzola Forniture S.r.l.</Denominazione></Anagrafica></DatiAnagrafici>
<Sede><Indirizzo>Via dell'Artigianato 14</Indirizzo><CAP>43126</CAP><Comune>Parma</Comune><Nazione>IT</Nazione></Sede></CessionarioCommittente>
</FatturaElettronicaHeader><FatturaElettronicaBody><DatiGenerali><DatiGeneraliDocumento>)" +
           Element("TipoDocumento", spec.type) + "<Divisa>EUR</Divisa>" + Element("Data", spec.date) +
           Element("Numero", spec.number) + stamp + Element("ImportoTotaleDocumento", spec.total) +
           Element("Arrotondamento", spec.rounding) + R"(</DatiGeneraliDocumento></DatiGenerali>
<DatiBeniServizi><DettaglioLinee><NumeroLinea>1</NumeroLinea><Descrizione>Merce</Descrizione><PrezzoUnitario>100.00</PrezzoUnitario>
<PrezzoTotale>100.00</PrezzoTotale><AliquotaIVA>22.00</AliquotaIVA></DettaglioLinee>)" +
           summary + "</DatiBeniServizi></FatturaElettronicaBody></p:FatturaElettronica>\n";
}

long InvoiceTest::Filed(const std::string &bytes, const std::string &name)
{
    const ImportResult result = ImportInvoice(Cmd(), name, name, bytes);
    EXPECT_EQ(result.outcome, ImportOutcome::Loaded) << result.text;
    return result.code;
}

std::vector<SummarySpec> Rates(std::size_t count)
{
    const std::vector<SummarySpec> all = {
        {"22.00", "10.00", "2.20", "", "", "", ""},    {"10.00", "10.00", "1.00", "", "", "", ""},
        {"5.00", "10.00", "0.50", "", "", "", ""},     {"4.00", "10.00", "0.40", "", "", "", ""},
        {"0.00", "10.00", "0.00", "N1", "", "", ""},   {"0.00", "10.00", "0.00", "N2.2", "", "", ""},
        {"0.00", "10.00", "0.00", "N3.6", "", "", ""}, {"0.00", "10.00", "0.00", "N4", "", "", ""}};
    return {all.begin(), all.begin() + static_cast<std::ptrdiff_t>(count)};
}

std::vector<std::string> InvoiceTest::Instalments(long entry)
{
    std::vector<std::string> found;
    SACommand query(Cmd()->Connection(),
                    "SELECT sca_data, sca_importo FROM admin.scadenze WHERE sca_pno = :pno ORDER BY sca_num");
    query.Param("pno").setAsLong(entry);
    query.Execute();
    while (query.FetchNext())
        found.push_back(fmt::format("{} {:.2f}", FormatDate(FromSqlDate(query.Field("sca_data").asDateTime())),
                                    query.Field("sca_importo").asDouble()));
    return found;
}

std::vector<std::string> InvoiceTest::RowsOf(const PNOTA &entry)
{
    std::vector<std::string> rows;
    for (const PNOTA_RIGA &row : entry.righe) {
        if (row.InUse())
            rows.push_back(fmt::format("{}.{}.{} {} {:.2f}", row.row_mas, row.row_con, row.row_sot, row.row_tipo.str(),
                                       row.row_importo));
    }
    return rows;
}

std::string InvoiceTest::Stored()
{
    std::string counts;
    for (const char *table : {"allegati", "fatture", "fornito1", "pnota1", "pnotaro2", "pnotaall", "scadenze"})
        counts += fmt::format("{} {}, ", table, Count(table));
    return counts;
}

std::string InvoiceTest::ArchiveFaults()
{
    std::string text;
    for (const ArchiveFault &fault : CheckArchive(Cmd()).faults)
        text += fmt::format("{} {}: {}\n", fault.kind, fault.where, fault.text);
    return text;
}
