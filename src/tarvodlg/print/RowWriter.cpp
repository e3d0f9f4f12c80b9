#include "tarvodlg/print/RowWriter.h"

#include "tarvodlg/base/Text.h"
#include "tarvodlg/print/ProvisionalFile.h"

std::unique_ptr<RowWriter> OpenRows(const std::filesystem::path &file, const std::string &title,
                                    std::vector<RowColumn> columns)
{
    const std::string extension = file.extension().string();
    if (EqualsIgnoreCase(extension, ".xlsx")) return OpenXlsx(file, title, std::move(columns));
    if (EqualsIgnoreCase(extension, ".csv")) return OpenCsv(file, std::move(columns));
    FailWriting(file, "sono ammessi file .xlsx e .csv");
}
