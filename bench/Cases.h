#pragma once

#include "bench/BenchArchive.h"
#include "bench/Measure.h"

#include <filesystem>

/// The highest good ratio of our time to the bare library's.
inline constexpr double kTimeTarget = 1.5;
/// The same for memory that must not grow with the work.
inline constexpr double kMemoryTarget = 1.1;

/// Storing entries, one commit each, against the client library alone.
void MeasureStoring(const BenchPlaces &places, SAEngine engine, long entries, Findings &findings);

/// Listing a journal of `entries` entries, as the journal list reads it, against the client library alone.
void MeasureListing(const BenchArchive &archive, long entries, Findings &findings);

/// Filling the journal list, its window's part included, against the client library alone. Needs the archive to be the
/// current company's.
void MeasureOpening(const BenchArchive &archive, long entries, Findings &findings);

/// The list of one side of a schedule of `instalments` instalments, and the aging of its open ones, against the client
/// library alone with the same queries.
void MeasureSchedule(const BenchArchive &archive, long instalments, Findings &findings);

/// Storing entries with the generation of their instalments, against the client library alone.
void MeasureGenerating(const BenchPlaces &places, SAEngine engine, long entries, Findings &findings);

/// Going to the next entry in each browse order, in the middle of the journal. A query that does not enter an index at
/// its place is a fault. @param verbose  prints the engine's plans
void MeasureBrowsing(const BenchArchive &archive, long entries, bool verbose, Findings &findings);

/// Peak memory of a process that lists all entries against one that lists a tenth of them. Linux only.
void MeasureMemory(const BenchArchive &archive, long entries, Findings &findings);

/// The process MeasureMemory starts: lists and prints its own peak in kB. @return exit code
int RunMemoryProbe(long entries);

/// Printing the journal list of `entries` entries to a PDF: against its query alone, and in time for each entry and in
/// peak memory against a tenth of them.
void MeasurePrinting(const BenchPlaces &places, const BenchArchive &archive, long entries, Findings &findings);

/// The process MeasurePrinting starts: prints the seconds of the PDF, those of the query, its peak in kB and the pages.
/// @param folder  for the file   @return exit code
int RunPrintProbe(const std::filesystem::path &folder, long entries);

/// Reading FatturaPA files, against the XML parser alone.
/// @param samples  folder with plain .xml invoices
void MeasureInvoices(const std::filesystem::path &samples, Findings &findings);

/// Loading files of received invoices, one commit each, against the bare XML parse and the client library alone.
void MeasureImporting(const BenchPlaces &places, SAEngine engine, long files, Findings &findings);

/// Registering filed invoices in one run, planned and stored, against the client library that reads and parses the same
/// files, reads what the entries are made from, and stores the same rows.
void MeasureRegistering(const BenchPlaces &places, SAEngine engine, long invoices, Findings &findings);

/// The list of received invoices against the client library alone with the same query, and with large files against
/// small ones: the list reads no file.
void MeasureInvoiceList(const BenchPlaces &places, SAEngine engine, long invoices, Findings &findings);

/// The grid with 1,000,000 rows against the same with 10,000, and against the bare values.
void MeasureGrid(Findings &findings);
