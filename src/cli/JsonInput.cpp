#include "cli/JsonInput.h"

#include "cli/Session.h"
#include "tarvodlg/base/Files.h"

#include <iostream>

namespace {

constexpr std::size_t kJsonBytesMax = 10'000'000;

} // namespace

std::string ReadJsonInput(const std::string &file)
{
    if (file != "-") return ReadWholeFile(file, kJsonBytesMax);
    std::string text(kJsonBytesMax + 1, '\0');
    std::cin.read(text.data(), static_cast<std::streamsize>(text.size()));
    text.resize(static_cast<std::size_t>(std::cin.gcount()));
    if (text.size() > kJsonBytesMax) throw RefusedError("Il documento JSON è troppo grande.");
    return text;
}
