#pragma once

#include "tarvolumera/TarvoPostgreSQL.h"

// The warehouse as far as received invoices load it: articles, what each supplier calls them, reasons, documents.

/// An article (admin.articoli).
struct ARTICOLI {
    Text<20> art_codice; ///< the company's own code, in capitals
    Text<80> art_desc;
    Text<10> art_um;
    Text<35> art_ean; ///< bar code; empty = none
};

/// What a supplier calls an article (admin.artforn): learnt once, when somebody matches a line of an invoice.
struct ARTFORN {
    long arf_fornitore = 0;
    Text<35> arf_codice; ///< the supplier's code
    Text<20> arf_articolo;
};

/// Why goods move (admin.caumag).
struct CAUMAG {
    long cam_codice = 0;
    Text<30> cam_desc;
    Text<1> cam_tipo{std::string_view("C")}; ///< C = into the warehouse (carico), S = out of it (scarico)
};

/// Head of a warehouse document (admin.testate1).
struct TESTATE {
    long tes_codice = 0;
    long tes_anno = 0; ///< year of the supplier's invoice
    long tes_cod_for = 0;
    Text<20> tes_n_fat;
    long tes_d_fat = 0;
    long tes_cau = 0;
    long tes_data = 0;
    Text<60> tes_rif;      ///< "RIF. CARICO N. 12/2026"
    double tes_totale = 0; ///< sum of the amounts of its rows
};

/// Row of a warehouse document (admin.righe1). Quantity and price keep the decimals of the invoice, up to 8.
struct RIGHE {
    long rig_codice = 0, rig_idx = 0;
    Text<20> rig_articolo;
    Text<250> rig_desc;
    Text<10> rig_um;
    double rig_qta = 0;                                          ///< negative in a return of goods
    double rig_prezzo = 0;                                       ///< of one, before discounts
    double rig_sconto_1 = 0, rig_sconto_2 = 0, rig_sconto_3 = 0; ///< percent, one after the other; negative = surcharge
    double rig_importo = 0;                                      ///< euro and cents
    double rig_aliquota = 0;                                     ///< VAT rate
};

class CPSQLart : public CTable<ARTICOLI> {
  public:
    CPSQLart();
    /// Codes are looked for in capitals.
    bool Search(SACommand *cmd, std::string_view code, ARTICOLI *record, bool = false) const;
    /// The only article with that bar code; false when there is none, or more than one.
    bool SearchByEan(SACommand *cmd, std::string_view ean, ARTICOLI *record) const;
};

class CPSQLarf : public CTable<ARTFORN> {
  public:
    CPSQLarf();
    bool Search(SACommand *cmd, long supplier, std::string_view code, ARTFORN *record, bool = false) const;
    /// Keeps the pair, in the place of the one that the supplier's code had.
    void Remember(SACommand *cmd, const ARTFORN &pair) const;
};

class CPSQLcam : public CCodeTable<CAUMAG, &CAUMAG::cam_codice> {
  public:
    CPSQLcam();
};
class CPSQLtes : public CCodeTable<TESTATE, &TESTATE::tes_codice> {
  public:
    CPSQLtes();
};
class CPSQLrig : public CTable<RIGHE> {
  public:
    CPSQLrig();
};

extern CPSQLart sqlart;
extern CPSQLarf sqlarf;
extern CPSQLcam sqlcam;
extern CPSQLtes sqltes;
extern CPSQLrig sqlrig;
