#pragma once

#include "tarvolumera/Company.h"
#include "tarvolumera/Counterparts.h"

#include <array>
#include <cstddef>
#include <vector>

// VAT registers (pno_reg).
inline constexpr long kJournalOnly = 1, kPurchases = 2, kSales = 3, kReceipts = 4, kSuspendedSales = 5,
                      kEuPurchases = 6, kEuSales = 7;

/// "ACQUISTI" for 2 ...; "*** SCONOSCIUTO ***" outside 1 to 7.
const char *RegisterName(long vat_register);

inline bool IsPurchaseRegister(long vat_register)
{
    return vat_register == kPurchases || vat_register == kEuPurchases;
}

// Journal operation codes (pno_operazione, row_operazione).
inline constexpr long kOrdinary = 0, kClosing = 1, kProfitAndLoss = 2, kOpening = 3;

inline constexpr std::size_t kVatLines = 7, kEntryRows = 100, kCostCentreLinesMax = 250;

/// One VAT line of an entry. In use when it has a code.
struct PNOTA_IVA {
    long iva = 0;       ///< VAT code
    long tip = 0;       ///< its kind
    double aliq = 0;    ///< rate, per cent
    double impo = 0;    ///< taxable amount; negative in a credit note
    double imposta = 0; ///< tax
    double ind = 0;     ///< non-deductible part, per cent
};

/// One account row of an entry (admin.pnotaro2). In use when its master is nonzero. The key and the copies of the
/// header (row_codice, row_idx, row_data, row_sez, row_operazione, row_rel, row_clfo) are set when the entry is stored.
struct PNOTA_RIGA {
    long row_codice = 0, row_idx = 0;
    long row_mas = 0, row_con = 0, row_sot = 0;
    Text<1> row_tipo;       ///< "D" or "A"; lower case read alike
    Text<1> row_base;       ///< side on which a positive amount stands; "" = the one in row_tipo
    double row_importo = 0; ///< never negative
    long row_data = 0;
    long row_cau = 0;
    Text<250> row_descac;
    Text<20> row_n_doc;
    long row_d_doc = 0;
    long row_sez = 0;
    long row_rel = kNoCounterpart, row_clfo = 0;
    long row_auto = 0; ///< 1 "SI": the amount follows VAT lines and document total
    long row_operazione = 0;
    Text<91> des_sot; ///< description of the account, not stored

    bool InUse() const { return row_mas != 0; }
    AccountKey Account() const { return {row_mas, row_con, row_sot}; }
    bool IsDare() const { return row_tipo == "D" || row_tipo == "d"; }
    bool IsAvere() const { return row_tipo == "A" || row_tipo == "a"; }
    /// Dare positive, Avere negative, no side 0.
    double Signed() const { return IsDare() ? row_importo : IsAvere() ? -row_importo : 0.0; }
};

/// A part of one row's amount on a cost centre (admin.pnotacdc).
struct PNOTA_CENTRO {
    long pcc_pno = 0, pcc_idx = 0;
    long pcc_riga = 0; ///< index of the row, 1 to 100
    long pcc_cdc = 0;
    double pcc_importo = 0;
};

/// A file attached to an entry (admin.pnotaall).
struct PNOTA_ALLEGATO {
    long pat_codice = 0, pat_pno = 0;
    Text<100> pat_desc;
    Text<200> pat_fname;
    Text<40> pat_user;
    long pat_bytes_size = 0;
    SADateTime pat_created_at, pat_last_update;
    std::vector<std::byte> pat_data;
};

/// A whole journal entry ("movimento") in memory.
struct PNOTA {
    long pno_codice = 0; ///< 0 = not to be stored
    long pno_data = 0;
    long pno_cau = 0;
    Text<30> pno_des_cau;
    Text<80> pno_desc;
    Text<20> pno_doc;
    Text<220> pno_paddoc; ///< document number in a form that sorts numerically; set when stored
    long pno_data_doc = 0;
    long pno_rel = kNoCounterpart, pno_cli_for = 0;
    long pno_sez = 0, pno_reg = 0;
    long pno_prot = 0;       ///< VAT protocol; 0 in register 1
    long pno_prot_fisso = 0; ///< 1 = the user fixed the protocol
    long pno_cau_iva = 0;    ///< 1 = the entry has VAT lines
    long pno_iva_sosp = 0;
    long pno_pag = 0;      ///< payment terms
    long pno_data_pag = 0; ///< payment start date: the "different date" of the terms
    long pno_data_ret = 0; ///< date of the document an adjustment refers to
    std::array<PNOTA_IVA, kVatLines> iva{};
    double pno_tot_doc = 0, pno_tot_imp = 0, pno_tot_iva = 0, pno_tot_esente = 0, pno_tot_non_imp = 0,
           pno_tot_non_82 = 0;
    double pno_dare = 0, pno_avere = 0;
    double pno_tot_squ = 0; ///< imbalance: Dare minus Avere
    long pno_operazione = kOrdinary;
    long pno_verifica = 0, pno_trasf = 0, pno_split_payment = 0, pno_esc_spesometro = 0;
    long pno_agr = 0;
    long pno_all = 0, pno_all_doc = 0; ///< received invoice it registers: number of the filed document, body from 1
    Text<40> pno_utente;
    SADateTime pno_creato, pno_aggiornato;
    long pno_revisione = 0; ///< counts the updates, so that a station notices that another one was quicker

    std::array<PNOTA_RIGA, kEntryRows> righe{};
    std::vector<PNOTA_CENTRO> centri;     ///< cost-centre lines, at most 250
    std::vector<PNOTA_ALLEGATO> allegati; ///< new attachments, stored together with the entry; not loaded by Search

    Text<91> des_clifor; ///< counterpart name, not stored
    Text<30> des_pag;    ///< description of the terms, not stored
};

/// A document number in a form that sorts numerically: every run of digits padded with zeros to twenty.
Text<220> PadDocumentNumber(std::string_view number);
