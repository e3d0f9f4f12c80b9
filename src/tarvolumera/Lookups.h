#pragma once

#include "tarvolumera/Company.h"

/// A VAT section (admin.sezioni): a set of registers and protocols of its own.
struct SEZIONI {
    long sez_codice = 0;
    Text<40> sez_desc;
    long sez_esc_liq_iva = 0;      ///< 1 = not in the VAT settlement
    long sez_esc_spesometro = 0;   ///< 1 = not in the invoice-data communication
    long sez_esc_ventilazione = 0; ///< 1 = not in the ventilation of receipts
};

/// A bank of the company or of its counterparts (admin.banche1).
struct BANCHE {
    long ban_codice = 0;
    Text<40> ban_desc;
    Text<5> ban_abi, ban_cab;
    Text<34> ban_iban;
    Text<11> ban_bic;
    long ban_mas = 0, ban_con = 0, ban_sot = 0; ///< its account in the chart; 0 = none
};

struct AGENTI {
    long age_codice = 0;
    Text<60> age_desc;
};

/// A cost centre (admin.centri1).
struct CENTRI {
    long cdc_codice = 0;
    Text<40> cdc_desc;
};

/// A place of delivery of a customer (0) or supplier (1).
struct DESTINAZIONI {
    long dst_rel = 0, dst_cli_for = 0, dst_codice = 0;
    Text<60> dst_desc;
    Text<70> dst_indirizzo;
    Text<10> dst_cap;
    Text<60> dst_citta;
    Text<2> dst_prov;
};

struct NAZIONI {
    Text<2> naz_codice; ///< ISO alpha-2
    Text<60> naz_desc;
    long naz_ue = 0;           ///< 1 = member of the European Union
    Text<3> naz_stato_estero;  ///< code of foreign states used by the fixed-record communications
    Text<4> naz_luogo_nascita; ///< place of birth in a fiscal code
};

struct PROVINCE {
    Text<2> prv_codice;
    Text<40> prv_desc;
    long prv_attuale = 1; ///< 0 = abolished, still met in old records
};

/// An aggregation code that groups entries (admin.aggregaz).
struct AGGREGAZ {
    long agr_codice = 0;
    Text<60> agr_desc;
};

class CPSQLsez : public CCodeTable<SEZIONI, &SEZIONI::sez_codice> {
  public:
    CPSQLsez();
};
class CPSQLban : public CCodeTable<BANCHE, &BANCHE::ban_codice> {
  public:
    CPSQLban();
};
class CPSQLage : public CCodeTable<AGENTI, &AGENTI::age_codice> {
  public:
    CPSQLage();
};
class CPSQLcdc : public CCodeTable<CENTRI, &CENTRI::cdc_codice> {
  public:
    CPSQLcdc();
};
class CPSQLagr : public CCodeTable<AGGREGAZ, &AGGREGAZ::agr_codice> {
  public:
    CPSQLagr();
};
class CPSQLdst : public CTable<DESTINAZIONI> {
  public:
    CPSQLdst();
    bool Search(SACommand *cmd, long rel, long cli_for, long code, DESTINAZIONI *record, bool = false) const;
};
class CPSQLnaz : public CTable<NAZIONI> {
  public:
    CPSQLnaz();
    bool Search(SACommand *cmd, std::string_view code, NAZIONI *record, bool = false) const;
};
class CPSQLprv : public CTable<PROVINCE> {
  public:
    CPSQLprv();
    bool Search(SACommand *cmd, std::string_view code, PROVINCE *record, bool = false) const;
};

extern CPSQLsez sqlsez;
extern CPSQLban sqlban;
extern CPSQLage sqlage;
extern CPSQLcdc sqlcdc;
extern CPSQLagr sqlagr;
extern CPSQLdst sqldst;
extern CPSQLnaz sqlnaz;
extern CPSQLprv sqlprv;
