#pragma once

class SACommand;

/// Series of numbers that stations compete for. A unit that needs more than one takes them in this order.
enum class NumberSeries { Journal = 1, Files = 2, Schedule = 3, Warehouse = 4 };

/// Holds back other stations that take numbers of the series until the running transaction ends. Reading needs no lock.
/// On SQLite a write transaction is that lock already. Call inside SATransaction only.
void LockNumbers(SACommand *cmd, NumberSeries series);

/// Next VAT protocol of a section, year and register: the highest stored one plus one, so that deleting the last gives
/// its number back. 0 for register 1 and registers that do not exist: the journal has no VAT protocol.
long GetProt(SACommand *cmd, long section, long year, long vat_register);
