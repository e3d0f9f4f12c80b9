#pragma once

#include "tarvodlg/print/LayoutXml.h"
#include "tarvodlg/print/ReportLayout.h"

/// What the items of a layout may refer to, and the room they have.
struct LayoutScope {
    const LayoutXml &xml;
    const ReportLayout &layout; ///< parameters and sub-reports already read
    double width = 0;           ///< mm between the margins
    double height = 0;
};

/// Reads when= of a band or an item; an empty formula when there is none. @throws ReportError
SelectionFormula ReadWhen(const LayoutScope &scope, const LayoutElement &element);

/// Reads one item of a band. @param band  its kind and height are already read   @throws ReportError
ReportItem ReadItem(const LayoutScope &scope, const ReportBand &band, pugi::xml_node node);

const ReportParameter *FindParameter(const ReportLayout &layout, std::string_view name); ///< null when there is none
