#include "bench/Cases.h"
#include "bench/InvoiceFiles.h"

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
