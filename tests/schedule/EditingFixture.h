#pragma once

#include "schedule/InstalmentEditing.h"
#include "schedule/Instalments.h"
#include "tarvodlg/base/Dates.h"
#include "tarvolumera/PSQLpno.h"
#include "tests/support/TestArchive.h"

#include <fmt/format.h>

/// Instalments to work on: some typed by hand, some made by a journal entry.
template <class Base>
class InstalmentFixture : public Base {
  protected:
    /// A new instalment of counterpart 1 over 100.00, due on 30 June 2026, as somebody typed it.
    SCADENZE Typed(short side)
    {
        SCADENZE record;
        sqlsca.Blank(this->Cmd(), &record, side);
        EnterCounterpart(this->Cmd(), &record, 1);
        record.sca_importo = 100;
        record.sca_data = DateToJulian(30, 6, 2026);
        return record;
    }
    SCADENZE Stored(short side, const std::function<void(SCADENZE &)> &change = {})
    {
        SCADENZE record = Typed(side);
        if (change) change(record);
        EXPECT_TRUE(StoreInstalment(this->Cmd(), &record, nullptr).done);
        return record;
    }

    /// The two instalments of a purchase of supplier 1 over 122.00: 61.00 on 28 February and 61.00 on 31 March 2026.
    std::vector<SCADENZE> Generated()
    {
        PNOTA entry;
        sqlpno.Blank(this->Cmd(), &entry);
        entry.pno_data = entry.pno_data_doc = DateToJulian(10, 1, 2026);
        entry.pno_cau = 21;
        entry.pno_reg = kPurchases;
        entry.pno_rel = kSupplier;
        entry.pno_cli_for = 1;
        entry.pno_cau_iva = 1;
        entry.pno_pag = 45;
        entry.pno_doc = "7/A";
        entry.pno_tot_doc = 122;
        entry.iva[0] = {22, 1, 22, 100.0, 22.0, 0};
        sqlpno.SqlTransaction(this->Cmd(), kInsert, &entry);
        EXPECT_EQ(GenerateInstalments(this->Cmd(), entry), 2);
        std::vector<SCADENZE> made(2);
        for (long number : {1L, 2L})
            sqlsca.Search(this->Cmd(), kSupplier, number, &made[static_cast<std::size_t>(number - 1)]);
        return made;
    }
};
