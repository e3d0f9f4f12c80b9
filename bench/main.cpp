#include "bench/Cases.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

#include <unistd.h>

#include <algorithm>
#include <cstdlib>

namespace {

struct Options {
    long entries = 0; ///< 0 = the defaults
    std::string postgres;
    std::filesystem::path folder = std::filesystem::temp_directory_path();
    std::filesystem::path samples = std::filesystem::path(LUMERA_SOURCE_DIR) / "samples" / "fatture";
    std::string only;
    bool json = false, verbose = false;
    long memory_probe = 0, print_probe = 0;

    long Stored() const { return entries != 0 ? entries : 5'000; }
    long Invoices() const { return entries != 0 ? entries : 1'000; }
    long Listed() const { return entries != 0 ? entries : 100'000; }
    long Due() const { return entries != 0 ? entries * 10 : 1'000'000; }
    bool Wants(const std::string &group) const { return only.empty() || only == group; }
};

class TemporaryFolder {
  public:
    explicit TemporaryFolder(const std::filesystem::path &parent)
        : path_(parent / fmt::format("lumera_bench_{}", getpid()))
    {
        std::filesystem::create_directories(path_);
    }
    ~TemporaryFolder()
    {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }
    TemporaryFolder(const TemporaryFolder &) = delete;
    TemporaryFolder &operator=(const TemporaryFolder &) = delete;
    const std::filesystem::path &Path() const { return path_; }

  private:
    std::filesystem::path path_;
};

void MeasureEngine(const Options &options, const BenchPlaces &places, SAEngine engine, Findings &findings)
{
    if (options.Wants("store")) MeasureStoring(places, engine, options.Stored(), findings);
    if (options.Wants("schedule")) {
        MeasureGenerating(places, engine, options.Stored(), findings);
        const BenchArchive archive(places, engine, "schedule");
        archive.FillSchedule(options.Due());
        MeasureSchedule(archive, options.Due(), findings);
    }
    if (options.Wants("import")) MeasureImporting(places, engine, options.Invoices(), findings);
    if (options.Wants("register")) MeasureRegistering(places, engine, options.Invoices(), findings);
    if (options.Wants("invoices")) MeasureInvoiceList(places, engine, options.Listed() / 2, findings);
    const auto groups = {"list", "open", "browse", "memory", "print"};
    if (std::none_of(groups.begin(), groups.end(), [&](const char *group) { return options.Wants(group); })) return;
    const BenchArchive archive(places, engine, "listing");
    archive.FillJournal(options.Listed());
    if (options.Wants("list")) MeasureListing(archive, options.Listed(), findings);
    if (options.Wants("open")) MeasureOpening(archive, options.Listed(), findings);
    if (options.Wants("browse")) MeasureBrowsing(archive, options.Listed(), options.verbose, findings);
    if (options.Wants("memory")) MeasureMemory(archive, options.Listed(), findings);
    if (options.Wants("print")) MeasurePrinting(places, archive, options.Listed(), findings);
}

void MeasureAll(const Options &options, Findings &findings)
{
    const TemporaryFolder folder(options.folder);
    const BenchPlaces places{folder.Path(), options.postgres};
    MeasureEngine(options, places, SAEngine::SQLite, findings);
    if (places.postgres.empty())
        fmt::print(stderr, "No PostgreSQL server was named: its cases are left out.\n");
    else
        MeasureEngine(options, places, SAEngine::PostgreSQL, findings);
    if (options.Wants("read")) MeasureInvoices(options.samples, findings);
    if (options.Wants("grid")) MeasureGrid(findings);
}

} // namespace

/// Exit code 0: all within their targets; 1: some are not; 2: the run failed.
int main(int argc, char **argv)
{
    CLI::App app("Measures the program against the bare client libraries and the bare XML parser.");
    Options options;
    app.add_option("--entries", options.entries,
                   "Entries stored (5000 by default) and listed (100000 by default); ten times as many instalments;"
                   " invoices loaded and registered (1000 by default), half as many as entries listed")
        ->check(CLI::Range(10L, 10'000'000L));
    app.add_option("--postgres", options.postgres, "Address of a PostgreSQL server on which databases may be created")
        ->envname("LUMERA_TEST_POSTGRES");
    app.add_option("--folder", options.folder, "Folder for the archives; its disk decides what a commit costs")
        ->check(CLI::ExistingDirectory);
    app.add_option("--samples", options.samples, "Folder with FatturaPA files")->check(CLI::ExistingDirectory);
    app.add_option("--only", options.only, "One group of cases")
        ->check(CLI::IsMember({"store", "schedule", "import", "register", "invoices", "list", "open", "browse",
                               "memory", "print", "read", "grid"}));
    app.add_flag("--json", options.json, "Print the findings as JSON");
    app.add_flag("--verbose", options.verbose, "Print the plans of the browse queries");
    app.add_option("--memory-probe", options.memory_probe)->group("");
    app.add_option("--print-probe", options.print_probe)->group("");
    CLI11_PARSE(app, argc, argv);

    Findings findings;
    int exit_code = 0;
    try {
        if (options.memory_probe > 0) return RunMemoryProbe(options.memory_probe);
        if (options.print_probe > 0) return RunPrintProbe(options.folder, options.print_probe);
        MeasureAll(options, findings);
    } catch (const std::exception &error) {
        fmt::print(stderr, "{}\n", error.what());
        exit_code = 2;
    }
    // A run that failed late still has something to tell.
    fmt::print("{}", options.json ? FormatFindingsAsJson(findings) : FormatFindings(findings));
    const bool all_good =
        std::all_of(findings.begin(), findings.end(), [](const auto &finding) { return finding.IsGood(); });
    if (exit_code == 0 && !all_good) exit_code = 1;
    return exit_code;
}
