#include "bench/Cases.h"

#include "tarvodlg/widgets/SpreadSheet.h"

#include <QApplication>
#include <QKeyEvent>
#include <fmt/format.h>

#include <array>
#include <fstream>
#include <memory>
#include <unordered_map>

namespace {

constexpr long kMany = 1'000'000, kFew = 10'000;
constexpr int kPages = 100, kInserts = 5, kRounds = 9;
constexpr double kRowsTarget = 1.5;   ///< of a page against one of few rows, of filling against the bare values
constexpr double kInsertTarget = 3;   ///< against moving the bare values; the view keeps its own eight bytes a row
constexpr double kMemoryTarget = 1.5; ///< against the bare values

/// Fourteen columns as the journal list has them.
std::vector<CSpreadSheet::Column> JournalColumns()
{
    using Type = CSpreadSheet::Type;
    const std::array<std::pair<const char *, Type>, 14> columns = {{{"Numero", Type::Code},
                                                                    {"Data", Type::Date},
                                                                    {"Causale", Type::Code},
                                                                    {"Descrizione", Type::Text},
                                                                    {"Documento", Type::Text},
                                                                    {"Data doc.", Type::Date},
                                                                    {"Cliente", Type::Code},
                                                                    {"Ragione sociale", Type::Text},
                                                                    {"Sez.", Type::Code},
                                                                    {"Imponibile", Type::Amount},
                                                                    {"Imposta", Type::Amount},
                                                                    {"Dare", Type::Amount},
                                                                    {"Avere", Type::Amount},
                                                                    {"Stato", Type::Choice}}};
    std::vector<CSpreadSheet::Column> result;
    for (const auto &[title, type] : columns) result.push_back({.title = title, .type = type, .locked = true});
    return result;
}

/// Every document has a number of its own; customers, causali and states come again and again.
void SetRow(CSpreadSheet &grid, long row)
{
    grid.SetLong(row, 1, row);
    grid.SetLong(row, 2, 2'461'000 + row % 365);
    grid.SetLong(row, 3, row % 40);
    grid.SetText(row, 4, row % 3 == 0 ? "Fattura di vendita" : "Incasso fattura");
    grid.SetText(row, 5, fmt::format("{}/A", row));
    grid.SetLong(row, 6, 2'461'000 + row % 365);
    grid.SetLong(row, 7, row % 5'000);
    grid.SetText(row, 8, fmt::format("Società esempio numero {} S.r.l.", row % 5'000));
    grid.SetLong(row, 9, 1);
    for (long column = 10; column <= 13; ++column)
        grid.SetNumber(row, column, static_cast<double>(row % 100'000) / 100);
    grid.SetText(row, 14, row % 2 == 0 ? "S" : "N");
}

void Fill(CSpreadSheet &grid, long rows)
{
    grid.BeginUpdate();
    grid.Clear();
    grid.SetRowCount(rows);
    for (long row = 1; row <= rows; ++row) SetRow(grid, row);
    grid.EndUpdate();
}

std::unique_ptr<CSpreadSheet> OpenGrid()
{
    auto grid = std::make_unique<CSpreadSheet>();
    grid->SetColumns(JournalColumns());
    grid->resize(1280, 720);
    grid->show();
    QCoreApplication::processEvents();
    return grid;
}

void ScrollPages(CSpreadSheet &grid)
{
    grid.SetActiveCell(grid.RowCount() / 2, 1);
    for (int page = 0; page < kPages; ++page) {
        QKeyEvent page_down(QEvent::KeyPress, Qt::Key_PageDown, Qt::NoModifier);
        QCoreApplication::sendEvent(&grid, &page_down);
        grid.viewport()->repaint();
    }
}

/// The same values with nothing around them but the standard library's own way to keep equal texts once.
struct BareColumns {
    std::array<std::vector<std::int32_t>, 10> numbers; ///< codes, dates and the numbers of texts
    std::array<std::vector<double>, 4> amounts;
    std::unordered_map<std::string, std::int32_t> texts;

    void Fill(long rows)
    {
        *this = {};
        for (auto &column : numbers) column.resize(static_cast<std::size_t>(rows));
        for (auto &column : amounts) column.resize(static_cast<std::size_t>(rows));
        for (long row = 1; row <= rows; ++row) SetRow(row);
    }
    void SetRow(long row)
    {
        const auto at = static_cast<std::size_t>(row - 1);
        for (std::size_t column = 0; column < 6; ++column) numbers[column][at] = static_cast<std::int32_t>(row);
        numbers[6][at] = IdOf(row % 3 == 0 ? "Fattura di vendita" : "Incasso fattura");
        numbers[7][at] = IdOf(fmt::format("{}/A", row));
        numbers[8][at] = IdOf(fmt::format("Società esempio numero {} S.r.l.", row % 5'000));
        numbers[9][at] = IdOf(row % 2 == 0 ? "S" : "N");
        for (auto &column : amounts) column[at] = static_cast<double>(row % 100'000) / 100;
    }
    std::int32_t IdOf(std::string text)
    {
        return texts.try_emplace(std::move(text), static_cast<std::int32_t>(texts.size())).first->second;
    }
    void InsertFirst()
    {
        for (auto &column : numbers) column.insert(column.begin(), 0);
        for (auto &column : amounts) column.insert(column.begin(), 0.0);
    }
    void DeleteFirst()
    {
        for (auto &column : numbers) column.erase(column.begin());
        for (auto &column : amounts) column.erase(column.begin());
    }
};

/// Memory of this process in use now, in bytes; 0 where there is no /proc.
double MemoryInUse()
{
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);)
        if (line.starts_with("VmRSS:")) return std::atof(line.c_str() + 6) * 1024;
    return 0;
}

Finding MeasureGridMemory(CSpreadSheet &grid)
{
    const double before = MemoryInUse();
    Fill(grid, kMany);
    Finding finding;
    finding.name = fmt::format("grid, memory of a row, {} rows, 14 columns", kMany);
    finding.unit = "B";
    if (before == 0) return finding;
    finding.ours = (MemoryInUse() - before) / kMany;
    finding.bare = 10 * sizeof(std::int32_t) + 4 * sizeof(double) + 9; // the document's own text
    finding.ratio = finding.ours / finding.bare;
    finding.target = kMemoryTarget;
    return finding;
}

} // namespace

void MeasureGrid(Findings &findings)
{
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
    int count = 1;
    std::array<char, 6> name{"bench"};
    char *arguments[] = {name.data(), nullptr};
    const QApplication application(count, arguments);

    const auto many = OpenGrid(), few = OpenGrid();
    findings.push_back(MeasureGridMemory(*many));
    Fill(*few, kFew);
    findings.push_back(Compare(
        fmt::format("grid, page down and repaint, {} / {} rows", kMany, kFew), kRounds, kPages, kRowsTarget,
        [&] { ScrollPages(*many); }, [&] { ScrollPages(*few); }));
    BareColumns bare;
    findings.push_back(Compare(
        fmt::format("grid, fill a row, {} rows of 14 columns", kMany), 3, kMany, kRowsTarget,
        [&] { Fill(*many, kMany); }, [&] { bare.Fill(kMany); }));
    findings.push_back(Compare(
        fmt::format("grid, insert and delete row 1 of {}", kMany), kRounds, kInserts, kInsertTarget,
        [&] {
            for (int i = 0; i < kInserts; ++i) many->InsertRow(1), many->DeleteRow(1);
        },
        [&] {
            for (int i = 0; i < kInserts; ++i) bare.InsertFirst(), bare.DeleteFirst();
        }));
    for (const auto &[texts, column] : {std::pair("different", 5), std::pair("repeated", 8)}) {
        Finding search;
        search.name = fmt::format("grid, search {} {} texts in vain", kMany, texts);
        search.unit = "ms";
        search.ours = Seconds([&] { many->FindText(1, column, "non c'è"); }) * 1e3;
        findings.push_back(search);
    }
}
