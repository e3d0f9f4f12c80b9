#pragma once

#include "tarvodlg/print/ReportError.h"
#include "tarvodlg/print/ReportLayout.h"

#include <pugixml.hpp>

#include <string>
#include <string_view>

/// The text of a layout, read as XML, that can tell where in the file every part of it stands.
class LayoutXml {
  public:
    /// @param text  must outlive the object   @param file  its name in messages
    /// @throws ReportError for what is no XML, or XML with a document type
    LayoutXml(std::string_view text, std::string file);

    /// The outermost element. @throws ReportError when it has another name
    pugi::xml_node Root(const char *name) const;

    /// @throws ReportError "pnotagest.rpt, riga 12, colonna 5: WHAT", where the element or its attribute begins
    [[noreturn]] void Fail(pugi::xml_node element, const std::string &what) const;
    [[noreturn]] void Fail(pugi::xml_node element, const char *attribute, const std::string &what) const;
    /// At the first occurrence of some words inside the element; at the element when they are not found.
    [[noreturn]] void FailAtWords(pugi::xml_node element, std::string_view words, const std::string &what) const;

    LayoutPlace PlaceOf(pugi::xml_node element) const;
    /// The text directly inside the element; a comment or a CDATA section in it does not end it.
    static std::string TextOf(pugi::xml_node element);

  private:
    std::size_t OffsetOf(pugi::xml_node element) const;
    std::size_t OffsetOf(pugi::xml_node element, std::string_view attribute) const;
    LayoutPlace PlaceAt(std::size_t offset) const;
    [[noreturn]] void FailAt(std::size_t offset, const std::string &what) const;

    std::string_view text_;
    std::string file_;
    pugi::xml_document document_;
};

/// An element of a layout while its attributes are read; each reader refuses what cannot be used.
class LayoutElement {
  public:
    /// @param attributes  those that the element may have, with a blank between   @throws ReportError for another one
    LayoutElement(const LayoutXml &xml, pugi::xml_node node, std::string_view attributes);

    pugi::xml_node Node() const { return node_; }
    bool Has(const char *attribute) const { return !node_.attribute(attribute).empty(); }
    std::string Text(const char *attribute, const char *otherwise = "") const;
    std::string Required(const char *attribute) const; ///< refuses a missing and an empty one
    /// Letters, digits and '_'. Required.
    std::string Name(const char *attribute) const;
    double Number(const char *attribute, double otherwise, double min, double max) const;
    bool YesOrNo(const char *attribute, bool otherwise) const;
    /// The number of the word in the list "left|right|center", from 0; 0 when the attribute is missing.
    int OneOf(const char *attribute, std::string_view words) const;

    [[noreturn]] void Fail(const std::string &what) const { xml_.Fail(node_, what); }
    [[noreturn]] void Fail(const char *attribute, const std::string &what) const { xml_.Fail(node_, attribute, what); }

  private:
    const LayoutXml &xml_;
    pugi::xml_node node_;
};
