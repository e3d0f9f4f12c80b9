#pragma once

#include <filesystem>
#include <string>
#include <vector>

/// The pages of a PDF as text, laid out as on paper; read by poppler's tool.
std::vector<std::string> PdfPages(const std::filesystem::path &file);
/// What poppler's tool tells of it: title, paper, number of pages.
std::string PdfInfo(const std::filesystem::path &file);
