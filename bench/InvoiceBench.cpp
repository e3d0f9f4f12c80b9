#include "bench/Cases.h"

#include "tarvolumera/fatturapa/FattureElettronicheDB.h"

#include <fmt/format.h>
#include <pugixml.hpp>

#ifdef __GLIBC__
#include <malloc.h>
#endif

#include <fstream>
#include <iterator>
#include <stdexcept>

namespace {

constexpr int kRounds = 21;

struct InvoiceFile {
    std::string name;
    std::string bytes;
};

std::vector<InvoiceFile> PlainSamples(const std::filesystem::path &folder)
{
    std::vector<InvoiceFile> files;
    for (const auto &file : std::filesystem::directory_iterator(folder)) {
        if (file.path().extension() != ".xml") continue;
        std::ifstream stream(file.path(), std::ios::binary);
        files.push_back({file.path().filename().string(),
                         std::string(std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>())});
    }
    if (files.empty()) throw std::runtime_error("no invoices in " + folder.string());
    return files;
}

/// A wholesaler's invoice of a month: as many lines of 12.50 euro, one rate.
InvoiceFile LongInvoice(long lines)
{
    std::string xml = R"(<?xml version="1.0" encoding="UTF-8"?>
<p:FatturaElettronica xmlns:p="http://ivaservizi.agenziaentrate.gov.it/docs/xsd/fatture/v1.2" versione="FPR12">
  <FatturaElettronicaHeader>
    <DatiTrasmissione>
      <IdTrasmittente><IdPaese>IT</IdPaese><IdCodice>02565617350</IdCodice></IdTrasmittente>
      <ProgressivoInvio>0LUNG</ProgressivoInvio>
      <FormatoTrasmissione>FPR12</FormatoTrasmissione>
      <CodiceDestinatario>0000000</CodiceDestinatario>
    </DatiTrasmissione>
    <CedentePrestatore>
      <DatiAnagrafici>
        <IdFiscaleIVA><IdPaese>IT</IdPaese><IdCodice>02565617350</IdCodice></IdFiscaleIVA>
        <Anagrafica><Denominazione>Utensileria Marzavola S.r.l.</Denominazione></Anagrafica>
        <RegimeFiscale>RF01</RegimeFiscale>
      </DatiAnagrafici>
      <Sede>
        <Indirizzo>Via Gandhi</Indirizzo><CAP>42123</CAP><Comune>Reggio nell'Emilia</Comune>
        <Provincia>RE</Provincia><Nazione>IT</Nazione>
      </Sede>
    </CedentePrestatore>
    <CessionarioCommittente>
      <DatiAnagrafici>
        <IdFiscaleIVA><IdPaese>IT</IdPaese><IdCodice>08235227348</IdCodice></IdFiscaleIVA>
        <Anagrafica><Denominazione>Brenzola Forniture S.r.l.</Denominazione></Anagrafica>
      </DatiAnagrafici>
      <Sede>
        <Indirizzo>Via dell'Artigianato</Indirizzo><CAP>43126</CAP><Comune>Parma</Comune>
        <Provincia>PR</Provincia><Nazione>IT</Nazione>
      </Sede>
    </CessionarioCommittente>
  </FatturaElettronicaHeader>
  <FatturaElettronicaBody>
    <DatiGenerali>
      <DatiGeneraliDocumento>
        <TipoDocumento>TD01</TipoDocumento>
        <Divisa>EUR</Divisa>
        <Data>2026-01-31</Data>
        <Numero>2500/A</Numero>
)";
    const double taxable = 12.5 * static_cast<double>(lines);
    xml += fmt::format("        <ImportoTotaleDocumento>{:.2f}</ImportoTotaleDocumento>\n"
                       "      </DatiGeneraliDocumento>\n"
                       "    </DatiGenerali>\n"
                       "    <DatiBeniServizi>\n",
                       taxable * 1.22);
    for (long line = 1; line <= lines; ++line) {
        xml += fmt::format("      <DettaglioLinee>\n"
                           "        <NumeroLinea>{0}</NumeroLinea>\n"
                           "        <CodiceArticolo>\n"
                           "          <CodiceTipo>INT</CodiceTipo>\n"
                           "          <CodiceValore>UT-{0:06}</CodiceValore>\n"
                           "        </CodiceArticolo>\n"
                           "        <Descrizione>Bussola esagonale attacco 1/2&quot; mis. {1}, qualità officina"
                           "</Descrizione>\n"
                           "        <Quantita>5.00</Quantita>\n"
                           "        <UnitaMisura>NR</UnitaMisura>\n"
                           "        <PrezzoUnitario>2.50</PrezzoUnitario>\n"
                           "        <PrezzoTotale>12.50</PrezzoTotale>\n"
                           "        <AliquotaIVA>22.00</AliquotaIVA>\n"
                           "      </DettaglioLinee>\n",
                           line, 8 + line % 25);
    }
    xml += fmt::format(R"(      <DatiRiepilogo>
        <AliquotaIVA>22.00</AliquotaIVA>
        <ImponibileImporto>{:.2f}</ImponibileImporto>
        <Imposta>{:.2f}</Imposta>
      </DatiRiepilogo>
    </DatiBeniServizi>
  </FatturaElettronicaBody>
</p:FatturaElettronica>
)",
                       taxable, taxable * 0.22);
    return {"IT02565617350_0LUNG.xml", std::move(xml)};
}

// Both sides get a copy of their own, as both would have after reading a file, and both let go of what they made.
void ReadThroughLibrary(const InvoiceFile &file)
{
    CFattureElettronicheDB reader;
    reader.Load(file.bytes, file.name);
    if (reader.Count() == 0) throw std::runtime_error(file.name + ": nothing read");
}

void ParseOnly(const InvoiceFile &file)
{
    std::string copy = file.bytes;
    pugi::xml_document document;
    if (!document.load_buffer_inplace(copy.data(), copy.size())) throw std::runtime_error(file.name + ": no XML");
}

/// Keeps the allocator from giving freed megabytes back to the system and asking for them again for every file. Which
/// side of a long invoice pays for those page faults depends on what the process freed before, and is several times
/// what either side computes.
void KeepFreedMemory()
{
#ifdef __GLIBC__
    constexpr int kNever = 1 << 30;
    mallopt(M_MMAP_THRESHOLD, kNever);
    mallopt(M_TRIM_THRESHOLD, kNever);
#endif
}

Finding CompareReading(const std::string &name, const std::vector<InvoiceFile> &files, int repeats)
{
    const auto each = [&](void (*read)(const InvoiceFile &)) {
        for (int i = 0; i < repeats; ++i)
            for (const InvoiceFile &file : files) read(file);
    };
    return Compare(
        name, kRounds, static_cast<double>(files.size()) * repeats, kTimeTarget, [&] { each(ReadThroughLibrary); },
        [&] { each(ParseOnly); });
}

} // namespace

void MeasureInvoices(const std::filesystem::path &samples, Findings &findings)
{
    constexpr long kLines = 2500;
    KeepFreedMemory();
    const std::vector<InvoiceFile> files = PlainSamples(samples);
    findings.push_back(CompareReading(fmt::format("read FatturaPA, {} samples", files.size()), files, 200));
    const InvoiceFile invoice = LongInvoice(kLines);
    CFattureElettronicheDB reader;
    reader.Load(invoice.bytes, invoice.name);
    if (!reader.Warnings().empty()) throw std::runtime_error("the long invoice: " + reader.Warnings().front().text);
    findings.push_back(CompareReading(fmt::format("read FatturaPA, {} lines", kLines), {invoice}, 20));
}
