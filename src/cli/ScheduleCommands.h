#pragma once

#include "cli/Commands.h"

// The commands of the group `scadenze`, by what they are for. Each adds its own to the group.
void AddInstalmentCommands(CLI::App *group, Session *session, Action *action);     ///< mostra, salva, elimina, bollettino
void AddScheduleListCommands(CLI::App *group, Session *session, Action *action);   ///< elenco, stampa, controlla-date
void AddScheduleImportCommands(CLI::App *group, Session *session, Action *action); ///< importa-saldi
void AddScheduleViewCommands(CLI::App *group, Session *session, Action *action);   ///< scadenziario, anzianita, estratto-conto
void AddScheduleOutlookCommands(CLI::App *group, Session *session, Action *action); ///< cruscotto
