#pragma once

#include "tarvodlg/widgets/Field.h"

/// The counterpart whose places of delivery are meant.
struct DestinationOwner {
    long side = 0, code = 0; ///< 0 customer, 1 supplier; code 0 = none, and then there are no places
};

/// The lookup of a destination code: the places of delivery of one customer or supplier.
/// @param owner  asked each time, since the counterpart is typed in the same form
std::shared_ptr<CodeLookup> LookupDestination(std::function<DestinationOwner()> owner);
