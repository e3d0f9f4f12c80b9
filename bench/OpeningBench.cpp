#include "bench/BareReading.h"
#include "bench/Cases.h"

#include "ledger/JournalList.h"
#include "ledger/ui/GestionePrimaNota.h"
#include "tarvodlg/base/ScriptedUserInterface.h"
#include "tarvodlg/widgets/SpreadSheet.h"

#include <QApplication>
#include <fmt/format.h>

#include <array>
#include <stdexcept>
#include <string_view>

namespace {

constexpr int kRounds = 5;
/// The window gets every value besides reading it: counted, kept in a grid, summed, coloured.
constexpr double kOpeningTarget = 2.5;

/// What a row has: Integer, Real or Text (dates too), in the order of JournalLineColumns.
constexpr std::string_view kKinds = "ittttriiiiitrrt";
constexpr int kDareColumn = 12;

std::string OpeningText(long entries)
{
    return fmt::format("SELECT {} FROM admin.pnota1{} WHERE pno_codice BETWEEN 0 AND {}\n"
                       "ORDER BY pno_data DESC, pno_codice DESC",
                       JournalLineColumns(), JournalLineJoins(), entries);
}

template <class Bare>
Finding CompareOpenings(const BenchArchive &archive, long entries, const Bare &bare)
{
    constexpr long kDare = 13;
    CGestionePrimaNota list(nullptr);
    BareSum sum;
    const std::string name = fmt::format("fill the list with {} entries, {}", entries, EngineName(archive.Engine()));
    Finding finding = Compare(
        name, kRounds, static_cast<double>(entries), kOpeningTarget, [&] { list.LoadTable(nullptr, true); },
        [&] { sum = bare(); });
    const auto *grid = list.findChild<CSpreadSheet *>();
    if (sum.rows != entries || grid->RowCount() != entries || grid->SumCents(kDare) != sum.cents)
        throw std::runtime_error(name + ": the two sides differ");
    return finding;
}

} // namespace

void MeasureOpening(const BenchArchive &archive, long entries, Findings &findings)
{
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    int count = 1;
    std::array<char, 6> name{"bench"};
    char *arguments[] = {name.data(), nullptr};
    const QApplication application(count, arguments);
    ScriptedUserInterface user; // its progress window shows nothing
    UserInterface *before = SetUserInterface(&user);
    if (archive.Engine() == SAEngine::SQLite) {
        const BareSqlite database = OpenSqlite(archive.Target());
        const BareStatement query = PrepareSqlite(database.get(), OpeningText(entries));
        findings.push_back(
            CompareOpenings(archive, entries, [&] { return ReadAllSqlite(query.get(), kKinds, kDareColumn); }));
    } else {
        const BarePostgres bare = OpenPostgres(archive.Target());
        PreparePostgres(bare.get(), "opening", OpeningText(entries));
        findings.push_back(CompareOpenings(
            archive, entries, [&] { return ReadAllPostgres(bare.get(), "opening", kKinds, kDareColumn); }));
    }
    SetUserInterface(before);
    if (!user.Faults().empty()) findings.back().fault = user.Faults();
}
