#pragma once

#include "tarvolumera/JournalEntry.h"

/// The browse orders of the journal: the values of CPSQLpno's GetIndex and SetIndex.
enum JournalOrder {
    kByNumber,
    kByDate,
    kByDocumentDate,
    kByDocumentNumber,
    kByCausale,
    kByCounterpart,
    kJournalOrders
};

/// The journal (admin.pnota1 with its rows, cost-centre lines and attachments): whole entries are read and written.
class CPSQLpno : public CTable<PNOTA> {
  public:
    CPSQLpno();

    /// Empties the entry for a new one: proposes the next free number, the first section and no counterpart.
    void Blank(SACommand *cmd, PNOTA *entry) const override;

    /// Loads a whole entry with rows and cost-centre lines, counterpart name and descriptions. False when there is
    /// none; the record then stays as it is, unlike that of other tables, since an editor goes on showing what it has.
    bool Search(SACommand *cmd, long code, PNOTA *entry, bool = false) const;

    /// Reads again what was stored. False when another station deleted it; the record then stays as it is.
    /// @param whole  false rereads the header only
    bool Reload(SACommand *cmd, PNOTA *entry, bool whole) const;

    /// Writes header, VAT lines, rows, cost-centre lines and new attachments together or not at all.
    ///
    /// 0 inserts: entry number and protocol are settled under a lock, whatever was proposed; a protocol that the user
    /// fixed stays, and is refused when taken. 1 updates: refused with fault Changed when another station changed the
    /// entry since it was read; a changed section, year or register gets a new protocol. 2 deletes the entry with its
    /// open instalments; an entry with paid or held instalments is refused. After success the record holds the numbers,
    /// totals and revision that were stored.
    /// @throws SAException, and then nothing is stored
    void SqlTransaction(SACommand *cmd, int operation, PNOTA *entry) const override;

    /// Recomputes the entry with the current company's accounts; see RecalcTotals for the modes.
    void RecalcPNota(SACommand *cmd, PNOTA *entry, int mode, double document = 0, double taxable = 0, double tax = 0,
                     double non_taxable = 0) const;

    /// True when Dare and Avere of the rows differ; refreshes the three totals.
    bool Squadratura(SACommand *cmd, PNOTA *entry) const;

    /// True when the cost-centre split matches the rows; else row is the first that does not, 0 when none can be named.
    bool CheckAnalitica(SACommand *cmd, PNOTA *entry, int *row) const;

    /// @throws SAException for a number that is no JournalOrder
    void SetIndex(int index) override;

    // Browsing in the current order. Entries without document date have no place in the order of document dates: from
    // one of them Next goes to the first that has one, Previous to the last. False, and the record untouched, when
    // there is no such entry.
    bool Next(SACommand *cmd, PNOTA *entry) const;
    bool Previous(SACommand *cmd, PNOTA *entry) const;
    bool First(SACommand *cmd, PNOTA *entry) const;
    bool Last(SACommand *cmd, PNOTA *entry) const;

    /// The whole header query in an order, without parameters bound: " WHERE (pno_data = :data AND ...".
    static std::string NextCondition(JournalOrder order);
    static std::string PreviousCondition(JournalOrder order);
    static std::string OrderBy(JournalOrder order, bool descending);

  private:
    bool Browse(SACommand *cmd, PNOTA *entry, const std::string &text, bool from_entry) const;
    void Insert(SACommand *cmd, PNOTA *entry) const;
    void Update(SACommand *cmd, PNOTA *entry) const;
    void Delete(SACommand *cmd, PNOTA *entry) const;
    void InsertDetails(SACommand *cmd, PNOTA *entry) const;
    void LoadDetails(SACommand *cmd, PNOTA *entry) const;
};
extern CPSQLpno sqlpno;
