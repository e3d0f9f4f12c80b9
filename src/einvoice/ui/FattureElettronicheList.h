#pragma once

#include "einvoice/ui/FattureElettroniche.h"
#include "einvoice/ui/FatturePages.h"
#include "tarvodlg/widgets/Fields.h"
#include "tarvolumera/Attachments.h"

#include <vector>

class QMenu;
class QSplitter;
class QTimer;

// What the sources of CFattureElettroniche share.

enum InvoiceColumn : long {
    kMark = 1,
    kAcquired,
    kTime,
    kType,
    kNumber,
    kDate,
    kSellerName,
    kSupplierName,
    kVatNumber,
    kTotal,
    kRegistered,
    kEntry,
    kProtocol,
    kWarehouse,
    kSigned,
    kFile
};

struct CFattureElettroniche::Row {
    InvoiceRow invoice;
    bool is_marked = false;
};

/// The file behind the pages.
struct CFattureElettroniche::Opened {
    long code = 0;
    ALLEGATI filed;
    CFattureElettronicheDB content;
    std::string fault;    ///< why it cannot be read; the content is then empty
    bool has_pdf = false; ///< the archive has its readable document
};

struct CFattureElettroniche::List {
    long first = 0, last = 0; ///< days of acquisition, both included
    Text<60> seller, number;
    long state = 0;        ///< InvoiceState
    std::vector<Row> rows; ///< the grid knows them by their place here (RowData)
    long open = 0, marked = 0;
    bool loading = false;

    CTextField *seller_field = nullptr, *number_field = nullptr;
    CChoiceField *state_field = nullptr;
    QSplitter *splitter = nullptr;
    CTarvoTabs *tabs = nullptr;
    std::vector<CFattureElettronichePage *> pages;
    QTimer *fill = nullptr, *follow = nullptr;
    QMenu *exports = nullptr;
    QAbstractButton *export_button = nullptr;

    std::unique_ptr<Opened> opened; ///< null while nothing is shown
    Text<60> searched;
};

/// "1 fattura", "12 fatture".
QString CountedInvoices(long count);
