#pragma once

#include <optional>
#include <string>
#include <string_view>

/// What the exchange system (SdI) puts beside the invoices: receipts, notifications, metadata files.
struct SdiNotification {
    std::string kind;      ///< "RC", "NS", "MC", "NE", "EC", "SE", "DT", "AT", "MT"
    std::string text;      ///< "ricevuta di consegna (RC)"
    std::string sdi;       ///< IdentificativoSdI of the invoice it is about; empty when the file has none
    std::string file_name; ///< NomeFile of that invoice; empty when the file has none
};

/// The text for a root element, "ricevuta di consegna (RC)"; empty when it is none of a notification.
/// @param root  without prefix
std::string_view SdiNotificationText(std::string_view root);

/// Known by its root element; a file whose root says nothing, and which is no invoice either, by the name that the
/// exchange system gives: "IT01234567897_00001_RC_001.xml". Never throws for what is in the file.
/// @param xml  the XML, out of its envelope if it had one
std::optional<SdiNotification> ReadSdiNotification(const std::string &xml, std::string_view file_name);

/// True when an XML text has its end, false when the rest is still to come (or never will). Texts that do not begin
/// like XML have no end to be missed.
bool IsXmlComplete(const std::string &xml);
