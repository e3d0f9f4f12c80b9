#pragma once

#include "tarvolumera/JournalEntry.h"

#include <functional>

/// The owner kind (all_tab_tipo) that marks received electronic invoices.
inline constexpr long kReceivedInvoices = 20;
/// Of their readable documents that a provider made; all_tab_codice is the invoice's number, 0 when it is not known.
inline constexpr long kInvoicePdf = 21;
/// Of those that we rendered; a provider's takes their place.
inline constexpr long kRenderedPdf = 23;
/// Receipts, notifications and metadata of the exchange system, as they came.
inline constexpr long kSdiNotification = 22;

/// A document filed by year (admin.allegati).
struct ALLEGATI {
    long all_codice = 0, all_anno = 0;
    long all_tab_tipo = 0, all_tab_codice = 0;
    Text<100> all_desc;
    Text<200> all_fname; ///< file name as received
    Text<40> all_user;
    long all_escludi = 0;
    Text<20> all_num_fat;
    long all_data_fat = 0;
    long all_bytes_size = 0;
    SADateTime all_date_time, all_last_update;
    Text<64> all_impronta; ///< SHA-256 of the content, of the XML inside for a signed invoice
    std::vector<std::byte> all_data;
};

/// A co-holder of an entry (admin.pnotacoi).
struct COINTESTATARI {
    long coi_codice = 0, coi_pno = 0, coi_data = 0, coi_rel = 0, coi_cli_for = 0;
    double coi_importo = 0;
};

/// Receipts of a day and section (admin.pnotacor).
struct CORRISPETTIVI {
    long cor_data = 0, cor_sez = 0, cor_pno = 0;
    double cor_importo = 0;
};

/// Scanned image of an entry's document (admin.pnotaim1).
struct PNOTA_IMMAGINE {
    long pni_codice = 0;
    Text<10> pni_formato;
    std::vector<std::byte> pni_data;
};

class CPSQLall : public CTable<ALLEGATI> {
  public:
    CPSQLall();
    /// Inserts as Store does. An update of a record without bytes, as lists give it, leaves the stored bytes alone.
    void SqlTransaction(SACommand *cmd, int operation, ALLEGATI *record) const override;
    bool Search(SACommand *cmd, long year, long code, ALLEGATI *record, bool = false) const;
    /// By number alone: numbers do not repeat between years.
    bool SearchByCode(SACommand *cmd, long code, ALLEGATI *record) const;
    /// Files a new document under the next free number. Sets number, size, user and times.
    void Store(SACommand *cmd, ALLEGATI *record) const;
    /// Streams the documents of a kind without their bytes, oldest first.
    /// @param first, stop  moments of filing; first included, stop excluded; null dates = no limit
    void ForEachOfKind(SACommand *cmd, long kind, const SADateTime &first, const SADateTime &stop,
                       const std::function<bool(const ALLEGATI &)> &each) const;
    /// The document of that kind with the same content, without its bytes. False when there is none.
    bool SearchByContent(SACommand *cmd, long kind, std::string_view digest, ALLEGATI *record) const;
};

class CPSQLpat : public CCodeTable<PNOTA_ALLEGATO, &PNOTA_ALLEGATO::pat_codice> {
  public:
    CPSQLpat();
    /// Inserts as Store does. An update of a record without bytes, as lists give it, leaves the stored bytes alone.
    void SqlTransaction(SACommand *cmd, int operation, PNOTA_ALLEGATO *record) const override;
    /// Attaches a file to its entry (pat_pno) under the next free number. Sets number, size, user and times.
    void Store(SACommand *cmd, PNOTA_ALLEGATO *record) const;
    /// The files of an entry without their bytes, in the order of their numbers.
    std::vector<PNOTA_ALLEGATO> ListOf(SACommand *cmd, long entry) const;
};

class CPSQLcoi : public CCodeTable<COINTESTATARI, &COINTESTATARI::coi_codice> {
  public:
    CPSQLcoi();
    /// Proposes the next number.
    void Blank(SACommand *cmd, COINTESTATARI *record) const override;
    /// Inserts under the next free number, whatever was proposed.
    void SqlTransaction(SACommand *cmd, int operation, COINTESTATARI *record) const override;
};

class CPSQLcor : public CTable<CORRISPETTIVI> {
  public:
    CPSQLcor();
    bool Search(SACommand *cmd, long date, long section, CORRISPETTIVI *record, bool = false) const;
};

class CPSQLpni : public CCodeTable<PNOTA_IMMAGINE, &PNOTA_IMMAGINE::pni_codice> {
  public:
    CPSQLpni();
};

extern CPSQLall sqlall;
extern CPSQLpat sqlpat;
extern CPSQLcoi sqlcoi;
extern CPSQLcor sqlcor;
extern CPSQLpni sqlpni;

/// SHA-256 of bytes as 64 hexadecimal digits.
std::string ContentDigest(std::string_view bytes);

std::vector<std::byte> ToBytes(std::string_view text);
std::string_view AsText(const std::vector<std::byte> &bytes);

/// Now by the user interface's clock.
SADateTime CurrentMoment();
