#pragma once

/// Asks for a workbook of opening balances and takes them into the schedule; see ImportOpeningBalances. Rows that could
/// not be taken are told with the file that lists them.
void ImpScadenzeExcel();
