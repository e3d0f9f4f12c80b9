#pragma once

#include <map>
#include <memory>
#include <optional>
#include <pugixml.hpp>
#include <string>
#include <string_view>

struct zip;

/// A link from one part of a package to another.
struct PartLink {
    std::string type;   ///< last word of its kind: "worksheet", "sharedStrings"
    std::string target; ///< path of the part within the package
    bool is_external = false;
};

/// The parts of an .xlsx file. What a part unfolds to is bounded, whatever the archive says of it; nothing is written
/// and nothing outside of the archive is read.
class XlsxPackage {
  public:
    /// @throws SheetError when the bytes are no archive
    explicit XlsxPackage(std::string bytes);

    bool Has(const std::string &part) const;
    /// Nothing when there is no such part. @throws SheetError when it is damaged, protected or too large
    std::optional<std::string> Read(const std::string &part) const;
    /// A part as XML. @throws SheetError as Read, when there is none, when it is no XML or brings a document type
    std::unique_ptr<pugi::xml_document> ReadXml(const std::string &part) const;
    /// The links of a part by their names; empty when it has none. @param part  empty = the package itself
    std::map<std::string, PartLink> LinksOf(const std::string &part) const;

  private:
    std::string bytes_;
    std::unique_ptr<zip, void (*)(zip *)> archive_;
};

// Elements and attributes by their names without prefix: some programs write "x:row".
std::string_view LocalName(const pugi::xml_node &node);
pugi::xml_node Child(const pugi::xml_node &parent, std::string_view name);
pugi::xml_attribute AttributeOf(const pugi::xml_node &node, std::string_view name);
