#pragma once

#include "ledger/ui/PNota.h"
#include "tarvodlg/widgets/Fields.h"
#include "tarvodlg/widgets/SpreadSheet.h"

#include <QPointer>
#include <QRect>
#include <optional>

class QScrollArea;
class QSplitter;

// The controls of the entry editor; for the sources of CPNota only.

enum VatColumn : long { kVatCode = 1, kVatTaxableAmount, kVatRate, kVatTax, kVatShare };
enum EntryColumn : long {
    kRowMas = 1,
    kRowCon,
    kRowSot,
    kRowAccount,
    kRowCausale,
    kRowDocument,
    kRowAmount,
    kRowSide,
    kRowAutomatic,
    kRowCentres
};

inline constexpr const char *kYes = "SI", *kNo = "NO";

struct CPNota::Form {
    /// What is typed into fields whose change does something to the rest of the entry. The record keeps the value from
    /// before until the field's event has run: it has to know what changed.
    struct Typed {
        long causale = 0, section = 0, protocol = 0, day = 0, document_day = 0, counterpart = 0, terms = 0;
        Text<30> causale_text;
        Text<20> document;
        double total = 0;
    };
    Typed typed;
    bool is_new = true;
    /// Document total that the user typed, from which VAT lines are proposed; 0 = none.
    double typed_total = 0;
    std::string protocol_order; ///< what is to be said about dates and protocols; empty = nothing
    long files = 0;             ///< attached to the entry
    /// Cells that the user changed and has not left yet: line or row, column.
    std::optional<std::pair<long, long>> changed_line, changed_row;

    CAmountField *number = nullptr, *protocol = nullptr, *total = nullptr;
    CDateField *day = nullptr, *document_day = nullptr, *terms_day = nullptr;
    CCodeField *causale = nullptr, *section = nullptr, *counterpart = nullptr, *terms = nullptr;
    CTextField *causale_text = nullptr, *document = nullptr, *description = nullptr;
    CChoiceField *browse_order = nullptr;
    QAbstractButton *integrations = nullptr;
    QLabel *counterpart_label = nullptr, *counterpart_name = nullptr, *vat_register = nullptr, *banner = nullptr;
    QLabel *taxable = nullptr, *tax = nullptr, *exempt = nullptr, *non_taxable = nullptr, *outside = nullptr;
    QLabel *dare = nullptr, *avere = nullptr, *imbalance = nullptr;
    QWidget *header = nullptr, *details = nullptr, *totals = nullptr;
    CSpreadSheet *vat = nullptr, *rows = nullptr;
    CGestionePrimaNota *list = nullptr;

    QLabel *note = nullptr;
    std::unique_ptr<PNOTA> prepared; ///< as the opener gave it; null = opened on anything else
    Beside beside;
    QSplitter *splitter = nullptr;      ///< null = nothing beside
    QScrollArea *entry_area = nullptr;  ///< holds the entry when there is
    QPointer<const QWidget> seen_focus; ///< whose place was brought into view
    QRect seen_cell;
    bool is_beside_chosen = false; ///< the user hid or showed it himself
};
