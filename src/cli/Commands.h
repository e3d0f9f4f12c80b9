#pragma once

#include "cli/Session.h"

namespace CLI {
class App;
}

/// What the chosen command will do once all options are read: returns its exit code.
using Action = std::function<int()>;

// Each adds its group of commands; the callback of the chosen one sets the action.
void AddArchiveCommands(CLI::App *app, Session *session, Action *action);
void AddInvoiceCommands(CLI::App *app, Session *session, Action *action);
/// Registration of invoices, in the group `fatture`, which must be there already.
void AddInvoiceRegisterCommand(CLI::App *app, Session *session, Action *action);
/// Synchronisation with a provider, in the group `fatture`, which must be there already.
void AddInvoiceSyncCommands(CLI::App *app, Session *session, Action *action);
/// Files and readable documents of invoices, in the group `fatture`, which must be there already.
void AddInvoiceExportCommands(CLI::App *app, Session *session, Action *action);
/// Loading of goods, in the group `fatture`, which must be there already.
void AddInvoiceWarehouseCommands(CLI::App *app, Session *session, Action *action);
void AddJournalCommands(CLI::App *app, Session *session, Action *action);
void AddScheduleCommands(CLI::App *app, Session *session, Action *action);
void AddTodayCommand(CLI::App *app, Session *session, Action *action);
void AddTableCommands(CLI::App *app, Session *session, Action *action);
/// Batches over the whole journal, in the group `pnota`, which must be there already.
void AddMaintenanceCommands(CLI::App *app, Session *session, Action *action);
/// Prints of the groups `pnota` and `tabelle`, which must be there already.
void AddPrintCommands(CLI::App *app, Session *session, Action *action);
