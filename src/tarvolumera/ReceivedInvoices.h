#pragma once

#include "tarvolumera/Attachments.h"

/// What the list shows of one document of a received invoice (admin.fatture). A filed invoice never changes, so this is
/// written once and the list reads no file. Year, name and moment repeat the filed document: reading them there would
/// touch the page of every file.
struct FATTURE {
    long fat_codice = 0;    ///< the filed document (all_codice)
    long fat_documento = 0; ///< which one of the file, from 1
    long fat_documenti = 1; ///< how many the file has
    long fat_anno = 0;
    Text<200> fat_fname;
    SADateTime fat_acquisita;
    Text<200> fat_cedente;
    Text<30> fat_piva;
    Text<28> fat_codfis;
    Text<4> fat_tipo; ///< "TD01"
    Text<60> fat_numero;
    long fat_data = 0;
    double fat_totale = 0; ///< sign as in the file
    long fat_firmata = 0;
    Text<36> fat_sdi;     ///< identifier that the exchange system gave the file; empty = not known
    Text<300> fat_guasto; ///< why the file cannot be read; then nothing but code, year, name and moment is set
};

class CPSQLfat : public CTable<FATTURE> {
  public:
    CPSQLfat();
    /// @param document  from 1
    bool Search(SACommand *cmd, long code, long document, FATTURE *record, bool = false) const;
    /// How many filed invoices have no summary: they were filed before this table was there.
    long CountOfMissing(SACommand *cmd) const;
    /// Their numbers, lowest first. @param most  how many at most
    std::vector<long> Missing(SACommand *cmd, long most) const;
};

extern CPSQLfat sqlfat;
