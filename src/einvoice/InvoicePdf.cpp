#include "einvoice/InvoicePdf.h"

#include "einvoice/SheetPages.h"
#include "tarvodlg/base/Files.h"
#include "tarvodlg/base/Text.h"
#include "tarvodlg/print/PdfFile.h"
#include "tarvodlg/print/TemporaryPdf.h"

#include <limits>

namespace {

std::string TitleOf(const InvoiceSheet &sheet)
{
    return OnOneLine(sheet.heading + " " + sheet.number + " - " + sheet.seller);
}

} // namespace

long WriteInvoicePdf(const CFattureElettronicheDB &content, std::optional<std::size_t> document,
                     const std::filesystem::path &file)
{
    const std::size_t first = document.value_or(0), stop = document ? *document + 1 : content.Count();
    PdfFile pdf(file, SheetPaper(), TitleOf(SheetOf(content, first)));
    long pages = 0;
    {
        PdfPainter painter(&pdf);
        SheetPages sheets(painter);
        for (std::size_t i = first; i < stop; ++i) sheets.Add(SheetOf(content, i));
        pages = sheets.Pages();
    }
    pdf.PutInPlace();
    return pages;
}

std::string RenderInvoicePdf(const CFattureElettronicheDB &content, std::optional<std::size_t> document)
{
    const TemporaryPdf temporary;
    WriteInvoicePdf(content, document, temporary.Path());
    return ReadWholeFile(temporary.Path(), std::numeric_limits<std::size_t>::max());
}
