#pragma once

#include "tarvolumera/Company.h"

/// Counterpart kinds (pno_rel, sca_relaz, cac_rel).
inline constexpr long kCustomer = 0, kSupplier = 1, kNoCounterpart = 2;

/// A customer (admin.clienti1).
struct CLIENTI {
    long cli_codice = 0;
    Text<91> cli_desc;
    Text<60> cli_rag_soc1;  ///< surname of a person, else first line of the name
    Text<60> cli_rag_soc2;  ///< first name of a person
    Text<1> cli_pers = "G"; ///< "F" natural person, "G" legal person
    long cli_ditta_ind = 0; ///< 1 = sole trader
    Text<70> cli_indirizzo;
    Text<10> cli_cap;
    Text<60> cli_citta;
    Text<2> cli_prov;
    Text<2> cli_naz = "IT";
    Text<28> cli_piva; ///< VAT number without the country
    Text<16> cli_codfis;
    Text<20> cli_telefono;
    Text<100> cli_email, cli_pec;
    Text<7> cli_cod_dest; ///< address code of the exchange system
    Text<34> cli_iban;
    long cli_mas = 0, cli_con = 0; ///< own account under the customers' master; 0 = the company's ordinary one
    long cli_pag = 0, cli_ban = 0, cli_age = 0;
    long cli_data_cessazione = 0; ///< day on which the customer ceased; 0 = active
    long cli_escludi_iva = 0;     ///< 1 = left out of the invoice-data communications
};

/// A supplier (admin.fornito1).
struct FORNITORI {
    long for_codice = 0;
    Text<91> for_desc;
    Text<60> for_rag_soc1, for_rag_soc2;
    Text<1> for_pers = "G";
    long for_ditta_ind = 0;
    Text<70> for_indirizzo;
    Text<10> for_cap;
    Text<60> for_citta;
    Text<2> for_prov;
    Text<2> for_naz = "IT";
    Text<28> for_piva;
    Text<16> for_codfis;
    Text<20> for_telefono;
    Text<100> for_email, for_pec;
    Text<34> for_iban;
    Text<23> for_rea;        ///< office and number of the register of companies, as "MI-1234567"
    Text<2> for_socio_unico; ///< "SU" one member, "SM" several
    Text<2> for_stato_liq;   ///< "LS" in liquidation, "LN" not
    long for_mas = 0, for_con = 0;
    long for_cau = 0; ///< causale preset for its invoices
    long for_pag = 0, for_ban = 0;
    long for_data_cessazione = 0;
    long for_escludi_iva = 0;
};

class CPSQLcli : public CCodeTable<CLIENTI, &CLIENTI::cli_codice> {
  public:
    CPSQLcli();
};
class CPSQLfor : public CCodeTable<FORNITORI, &FORNITORI::for_codice> {
  public:
    CPSQLfor();
};
extern CPSQLcli sqlcli;
extern CPSQLfor sqlfor;

/// The account on which a customer's (supplier's) rows stand: the record's own below the customers' (suppliers')
/// master, else the company's ordinary one.
long GetContoCliente(const CLIENTI *customer);
long GetContoFornitore(const FORNITORI *supplier);
