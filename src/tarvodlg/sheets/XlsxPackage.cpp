#include "tarvodlg/sheets/XlsxPackage.h"

#include "tarvodlg/base/Text.h"
#include "tarvodlg/sheets/SheetBook.h"

#include <zip.h>

#include <algorithm>

namespace {

constexpr std::size_t kPartBytesMax = 64'000'000;
/// Elements and attributes take far more memory than their text.
constexpr std::ptrdiff_t kMarkupMax = 4'000'000;

std::string_view WithoutPrefix(std::string_view name)
{
    const std::size_t colon = name.find(':');
    return colon == std::string_view::npos ? name : name.substr(colon + 1);
}

/// "xl/worksheets/sheet1.xml" for "worksheets/sheet1.xml" or "/xl/worksheets/sheet1.xml" seen from "xl/workbook.xml".
std::string Resolve(const std::string &from, const std::string &target)
{
    namespace fs = std::filesystem;
    const fs::path path = target.starts_with('/') ? fs::path(target) : fs::path("/" + from).parent_path() / target;
    return path.lexically_normal().relative_path().string();
}

} // namespace

XlsxPackage::XlsxPackage(std::string bytes) : bytes_(std::move(bytes)), archive_(nullptr, zip_discard)
{
    zip_error_t error;
    zip_error_init(&error);
    zip_source_t *source = zip_source_buffer_create(bytes_.data(), bytes_.size(), 0, &error);
    if (source != nullptr) archive_.reset(zip_open_from_source(source, ZIP_RDONLY, &error));
    if (!archive_ && source != nullptr) zip_source_free(source);
    zip_error_fini(&error);
    if (!archive_) throw SheetError(kSheetDamaged);
}

bool XlsxPackage::Has(const std::string &part) const
{
    return zip_name_locate(archive_.get(), part.c_str(), ZIP_FL_NOCASE) >= 0;
}

std::optional<std::string> XlsxPackage::Read(const std::string &part) const
{
    const zip_int64_t index = zip_name_locate(archive_.get(), part.c_str(), ZIP_FL_NOCASE);
    if (index < 0) return std::nullopt;
    const std::unique_ptr<zip_file_t, int (*)(zip_file_t *)> file(
        zip_fopen_index(archive_.get(), static_cast<zip_uint64_t>(index), 0), zip_fclose);
    if (!file) {
        const int code = zip_error_code_zip(zip_get_error(archive_.get()));
        throw SheetError(code == ZIP_ER_NOPASSWD || code == ZIP_ER_ENCRNOTSUPP ? kSheetProtected : kSheetDamaged);
    }
    std::string bytes;
    std::vector<char> buffer(1 << 16);
    for (;;) {
        const zip_int64_t read = zip_fread(file.get(), buffer.data(), buffer.size());
        if (read < 0) throw SheetError(kSheetDamaged);
        if (read == 0) return bytes;
        bytes.append(buffer.data(), static_cast<std::size_t>(read));
        if (bytes.size() > kPartBytesMax) throw SheetError(kSheetTooLarge);
    }
}

std::unique_ptr<pugi::xml_document> XlsxPackage::ReadXml(const std::string &part) const
{
    const std::optional<std::string> bytes = Read(part);
    if (!bytes) throw SheetError(kSheetDamaged);
    // The format admits none; entities that unfold into one another are what it would be good for.
    if (bytes->find("<!DOCTYPE") != std::string::npos)
        throw SheetError("Il foglio contiene dichiarazioni non ammesse (DOCTYPE).");
    if (std::count_if(bytes->begin(), bytes->end(), [](char c) { return c == '<' || c == '='; }) > kMarkupMax)
        throw SheetError(kSheetTooLarge);
    auto document = std::make_unique<pugi::xml_document>();
    if (!document->load_buffer(bytes->data(), bytes->size())) throw SheetError(kSheetDamaged);
    return document;
}

std::map<std::string, PartLink> XlsxPackage::LinksOf(const std::string &part) const
{
    const std::size_t name_at = part.rfind('/') == std::string::npos ? 0 : part.rfind('/') + 1;
    const std::string list = part.substr(0, name_at) + "_rels/" + part.substr(name_at) + ".rels";
    std::map<std::string, PartLink> links;
    if (!Has(list)) return links;
    const auto document = ReadXml(list);
    for (const pugi::xml_node &node : document->document_element()) {
        const std::string type = node.attribute("Type").value();
        links[node.attribute("Id").value()] = {type.substr(type.rfind('/') + 1),
                                               Resolve(part, node.attribute("Target").value()),
                                               std::string_view(node.attribute("TargetMode").value()) == "External"};
    }
    return links;
}

std::string_view LocalName(const pugi::xml_node &node)
{
    return WithoutPrefix(node.name());
}

pugi::xml_node Child(const pugi::xml_node &parent, std::string_view name)
{
    return parent.find_child([&](const pugi::xml_node &node) { return LocalName(node) == name; });
}

pugi::xml_attribute AttributeOf(const pugi::xml_node &node, std::string_view name)
{
    return node.find_attribute(
        [&](const pugi::xml_attribute &attribute) { return WithoutPrefix(attribute.name()) == name; });
}
