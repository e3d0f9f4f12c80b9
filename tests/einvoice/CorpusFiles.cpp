#include "tests/einvoice/CorpusFiles.h"

#include "tarvodlg/base/Dates.h"
#include "tarvodlg/base/Files.h"
#include "tarvodlg/base/Numbers.h"
#include "tarvodlg/base/Text.h"
#include "tarvolumera/fatturapa/SignedEnvelope.h"
#include "tests/einvoice/InvoiceFixture.h"

#include <pugixml.hpp>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <sstream>

namespace {

constexpr std::size_t kBytesMax = 10'000'000;

std::filesystem::path Corpus()
{
    const char *folder = std::getenv("LUMERA_TEST_FATTURE");
    return folder != nullptr ? std::filesystem::path(folder)
                             : std::filesystem::path(LUMERA_SOURCE_DIR) / "../shared/reference/invoices";
}

std::string TextOf(const pugi::xml_node &node, const char *path)
{
    return std::string(Trimmed(node.select_node(path).node().child_value()));
}

double AmountOf(const pugi::xml_node &node, const char *path)
{
    const std::string text = TextOf(node, path);
    return text.empty() ? 0 : std::stod(text);
}

long DayOf(const std::string &text)
{
    int year = 0, month = 0, day = 0;
    std::sscanf(text.c_str(), "%d-%d-%d", &year, &month, &day);
    return DateToJulian(day, month, year);
}

std::vector<std::string> SellerOf(const pugi::xml_node &header)
{
    std::vector<std::string> words;
    for (const char *name : {"Denominazione", "Nome", "Cognome"})
        for (const char *place : {"CedentePrestatore/DatiAnagrafici/Anagrafica/", "CedentePrestatore/"})
            if (std::string word = TextOf(header, (std::string(place) + name).c_str()); !word.empty())
                words.push_back(std::move(word));
    return words;
}

/// A row of goods of a simplified invoice is gross: tax inside.
void AddGross(const pugi::xml_node &goods, std::vector<ToldVat> *summary)
{
    ToldVat row;
    const double gross = AmountOf(goods, "Importo");
    row.nature = TextOf(goods, "Natura");
    row.rate = AmountOf(goods, "DatiIVA/Aliquota");
    row.tax = AmountOf(goods, "DatiIVA/Imposta");
    if (row.rate == 0 && row.tax != 0 && gross > row.tax) row.rate = Round(row.tax / (gross - row.tax) * 100, 0);
    if (row.tax == 0) row.tax = Round(gross - gross / (1 + row.rate / 100), 2);
    row.taxable = gross - row.tax;
    const auto same = std::find_if(summary->begin(), summary->end(), [&](const ToldVat &other) {
        return other.rate == row.rate && other.nature == row.nature;
    });
    if (same == summary->end()) {
        summary->push_back(row);
        return;
    }
    same->taxable += row.taxable;
    same->tax += row.tax;
}

ToldDocument DocumentOf(const pugi::xml_node &header, const pugi::xml_node &body)
{
    ToldDocument told;
    const pugi::xml_node general = body.select_node("DatiGenerali/DatiGeneraliDocumento").node();
    told.type = TextOf(general, "TipoDocumento");
    told.number = TextOf(general, "Numero");
    told.day = DayOf(TextOf(general, "Data"));
    told.seller = SellerOf(header);
    told.has_total = !TextOf(general, "ImportoTotaleDocumento").empty();
    told.declared = AmountOf(general, "ImportoTotaleDocumento");
    for (const pugi::xml_node goods : body.children("DatiBeniServizi")) {
        if (goods.child("Importo")) AddGross(goods, &told.summary);
        for (const pugi::xml_node row : goods.children("DatiRiepilogo"))
            told.summary.push_back({AmountOf(row, "AliquotaIVA"), AmountOf(row, "ImponibileImporto"),
                                    AmountOf(row, "Imposta"), TextOf(row, "Natura")});
    }
    return told;
}

} // namespace

bool HasCorpus()
{
    return std::filesystem::exists(Corpus() / "INDEX.tsv");
}

std::vector<CorpusFile> CorpusFiles()
{
    constexpr int kValidColumn = 8;
    std::vector<CorpusFile> files;
    std::istringstream index(ReadWholeFile(Corpus() / "INDEX.tsv", kBytesMax));
    std::string line;
    std::getline(index, line); // titles
    while (std::getline(index, line)) {
        std::istringstream columns(line);
        std::string name, column;
        std::getline(columns, name, '\t');
        for (int i = 0; i < kValidColumn; ++i) std::getline(columns, column, '\t');
        files.push_back({name, ReadWholeFile(Corpus() / name, kBytesMax), column.starts_with("valid")});
    }
    return files;
}

std::vector<std::string> FilesInCorpusFolder()
{
    std::vector<std::string> names;
    for (const auto &item : std::filesystem::recursive_directory_iterator(Corpus()))
        if (item.is_regular_file() && item.path().filename() != "INDEX.tsv")
            names.push_back(std::filesystem::relative(item.path(), Corpus()).generic_string());
    return names;
}

std::vector<CorpusFile> RepositorySamples()
{
    std::vector<CorpusFile> files;
    for (const char *folder : {"fatture", "guasti"})
        for (const auto &item : std::filesystem::directory_iterator(SampleFolder(folder))) {
            const std::string name = item.path().filename().string();
            files.push_back({std::string(folder) + "/" + name, ReadWholeFile(item.path(), kBytesMax), true});
        }
    // Cut off, changed after signing, dated 30 February.
    for (CorpusFile &file : files)
        for (const char *mark : {"00B01", "0B002", "00B77"})
            if (file.name.find(mark) != std::string::npos) file.is_valid = false;
    std::sort(files.begin(), files.end(), [](const auto &one, const auto &other) { return one.name < other.name; });
    return files;
}

std::string BaseName(const std::string &name)
{
    return std::filesystem::path(name).filename().string();
}

double ToldDocument::SumOfSummary() const
{
    double sum = 0;
    for (const ToldVat &row : summary) sum += Round(row.taxable, 2) + Round(row.tax, 2);
    return Round(sum, 2);
}

std::vector<ToldDocument> WhatTheFileSays(const std::string &bytes)
{
    const std::string xml = ExtractInvoiceXml(bytes, "prova.xml").xml;
    pugi::xml_document parsed;
    if (!parsed.load_buffer(xml.data(), xml.size())) return {};
    const pugi::xml_node root = parsed.document_element();
    const pugi::xml_node header = root.child("FatturaElettronicaHeader");
    std::vector<ToldDocument> documents;
    for (const pugi::xml_node body : root.children("FatturaElettronicaBody"))
        documents.push_back(DocumentOf(header, body));
    return documents;
}
