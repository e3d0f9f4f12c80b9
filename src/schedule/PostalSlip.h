#pragma once

#include "tarvodlg/print/Crystal.h"
#include "tarvolumera/Schedule.h"

#include <optional>
#include <string>

/// What a postal slip ("bollettino") of an instalment says, under the names of the report's parameters.
struct PostalSlip {
    std::string importo_cifre;                      ///< whole euro, "1220"
    std::string decimali_cifre;                     ///< cents, "05"
    std::string importo_lettere;                    ///< "milleduecentoventi/05"
    std::string causale;                            ///< description, invoice number and date
    std::string eseguito_da, indirizzo, cap, citta; ///< who pays: the customer, or the company to its supplier
};

/// @param record  an instalment over more than zero
/// @throws std::out_of_range for an amount that cannot be written in words
PostalSlip PostalSlipOf(SACommand *cmd, const SCADENZE &record);

/// Prints the slip of a stored instalment. Nothing can be paid with a slip over zero or less, as a credit note's: that
/// is refused with a message.
/// @param destination  none = where reports go by default   @return false when nothing was printed
bool PrintPostalSlip(const SCADENZE &record, const std::optional<ReportDestination> &destination = std::nullopt);
