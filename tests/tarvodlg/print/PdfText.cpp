#include "tests/tarvodlg/print/PdfText.h"

#include <cstdio>
#include <gtest/gtest.h>
#include <memory>

// Fonts are found by libraries that keep their tables until the end of the program; those are no leaks of ours.
extern "C" const char *__lsan_default_suppressions()
{
    return "leak:libfontconfig\nleak:libQt6Gui\n";
}

namespace {

std::string OutputOf(const std::string &command)
{
    const std::unique_ptr<std::FILE, int (*)(std::FILE *)> pipe(popen(command.c_str(), "r"), pclose);
    std::string output;
    char buffer[4096];
    while (pipe && !std::feof(pipe.get())) output.append(buffer, std::fread(buffer, 1, sizeof buffer, pipe.get()));
    if (output.empty()) ADD_FAILURE() << "no answer from: " << command;
    return output;
}

} // namespace

std::vector<std::string> PdfPages(const std::filesystem::path &file)
{
    const std::string text = OutputOf("pdftotext -layout '" + file.string() + "' -");
    std::vector<std::string> pages;
    for (std::size_t begin = 0; begin < text.size();) {
        const std::size_t end = std::min(text.find('\f', begin), text.size());
        pages.push_back(text.substr(begin, end - begin));
        begin = end + 1;
    }
    return pages;
}

std::string PdfInfo(const std::filesystem::path &file)
{
    return OutputOf("pdfinfo '" + file.string() + "'");
}
