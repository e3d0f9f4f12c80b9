#pragma once

#include "tarvolumera/JournalEntry.h"

/// A file of a provider that was looked at (admin.sincro), so that nothing is taken up twice and what was refused is
/// tried again only when it changes.
struct SINCRO {
    long syn_codice = 0;
    Text<400> syn_nome;    ///< as the provider names it
    Text<64> syn_impronta; ///< digest of its bytes
    Text<60> syn_versione; ///< what the provider says of its state, so that an unchanged file is not read again
    long syn_esito = 0;    ///< a SyncOutcome
    Text<300> syn_testo;
    SADateTime syn_quando;
};

class CPSQLsyn : public CCodeTable<SINCRO, &SINCRO::syn_codice> {
  public:
    CPSQLsyn();
    /// The file in exactly this state. False when it was never looked at like that.
    bool SearchVersion(SACommand *cmd, std::string_view name, std::string_view version, SINCRO *record) const;
    /// The file with these bytes, whatever its state was called.
    bool SearchContent(SACommand *cmd, std::string_view name, std::string_view digest, SINCRO *record) const;
    /// Remembers a file under the next free number; a name and content that is there already gets the new version,
    /// outcome and text. Sets number and moment.
    void Store(SACommand *cmd, SINCRO *record) const;
};

extern CPSQLsyn sqlsyn;
