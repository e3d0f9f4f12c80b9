#include "tarvodlg/print/ReportLayout.h"

#include "tarvodlg/base/Files.h"
#include "tarvodlg/base/Text.h"
#include "tarvodlg/print/FormulaLexer.h"
#include "tarvodlg/print/LayoutResources.h"
#include "tarvolumera/Company.h"

#include <algorithm>
#include <fmt/format.h>
#include <utility>

namespace {

namespace fs = std::filesystem;

constexpr std::size_t kLayoutBytesMax = 1 << 20;

/// A name that stays inside the folder it is looked for in, on every station.
bool IsPlainFileName(std::string_view file)
{
    constexpr std::string_view kExtension = ".rpt";
    return file.size() > kExtension.size() && file.ends_with(kExtension) && SafeFileName(file) == file;
}

} // namespace

const ReportBand *ReportLayout::Band(BandKind kind) const
{
    const auto found =
        std::find_if(bands.begin(), bands.end(), [kind](const ReportBand &band) { return band.kind == kind; });
    return found == bands.end() ? nullptr : &*found;
}

std::string ReportLayout::Words(LayoutPlace place) const
{
    return fmt::format("{}, riga {}, colonna {}", file, place.line, place.column);
}

PaperSize PaperSizeOf(std::string_view paper, bool landscape)
{
    PaperSize size{210, 297};
    if (paper == "A3") size = {297, 420};
    if (paper == "A5") size = {148, 210};
    if (paper == "Letter") size = {215.9, 279.4};
    if (landscape) std::swap(size.width, size.height);
    return size;
}

bool IsRealTableName(std::string_view name)
{
    const std::size_t dot = name.find('.');
    return dot != std::string_view::npos && IsFormulaName(name.substr(0, dot)) && IsFormulaName(name.substr(dot + 1));
}

ReportLayout LoadLayout(const std::string &file)
{
    if (!IsPlainFileName(file))
        throw ReportError(fmt::format("Report \"{}\": non è il nome di un file .rpt", OnOneLine(file)));
    if (!lumera_db_folder.empty()) {
        const fs::path own = lumera_db_folder / "report" / file;
        std::error_code error;
        // A link to nothing is the company's own as well, and must not be passed over in silence.
        if (fs::symlink_status(own, error).type() != fs::file_type::not_found)
            return ParseLayout(ReadWholeFile(own, kLayoutBytesMax), file);
    }
    const std::string_view resource = LayoutResourceText(file);
    if (resource.empty()) throw ReportError(fmt::format("Report \"{}\" inesistente", file));
    return ParseLayout(resource, file);
}

std::vector<std::string> LayoutNames()
{
    const std::vector<std::string_view> names = LayoutResourceNames("");
    return {names.begin(), names.end()};
}
