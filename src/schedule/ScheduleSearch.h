#pragma once

#include "schedule/ScheduleList.h"

#include <vector>

/// What an instalment is looked for by.
enum ScheduleKey { kByInstalment, kByDueDate, kByInvoice, kByCounterpartOfInstalment };
inline constexpr int kScheduleKeys = 4;

struct ScheduleSearchValue {
    ScheduleKey key = kByInstalment;
    long relaz = kCustomer; ///< one side only
    long codice = 0;        ///< number of the instalment, or customer or supplier
    long data = 0;          ///< due date to begin with, day number; 0 = from the first
    Text<20> fattura;       ///< beginning of the invoice number, whatever the case; empty = any
    long codsez = 0;        ///< VAT section, 0 = all of them
};

/// The instalments from the value on, in the order of the key: by number; by due date; by invoice number; those of one
/// customer or supplier by due date.
/// @param most  how many at most
std::vector<ScheduleLine> SearchSchedule(SACommand *cmd, const ScheduleSearchValue &value, std::size_t most);
