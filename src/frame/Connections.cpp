// What a subsystem opens of one that stands above it, connected when the library is loaded.
#include "ledger/ui/GestionePrimaNota.h"
#include "schedule/ui/Scadenze.h"

namespace {

[[maybe_unused]] const bool kAreConnected = [] {
    ScheduleHooks().open_entry = EditPNota;
    return true;
}();

} // namespace
