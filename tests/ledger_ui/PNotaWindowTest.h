#pragma once

#include "ledger/ui/PNota.h"
#include "schedule/ui/GenScadenze.h"
#include "tarvodlg/base/Dates.h"
#include "tarvodlg/widgets/Fields.h"
#include "tarvodlg/widgets/SpreadSheet.h"
#include "tests/tables_ui/TablesWindowTest.h"

#include <QTimer>

/// The entry editor over the demo company, on 15 March 2026, driven by keys which are counted.
class PNotaWindowTest : public TablesWindowTest {
  protected:
    void SetUp() override
    {
        TablesWindowTest::SetUp();
        CDateField::SetFiscalYear(2026);
        CDateField::SetWorkingDate(DateToJulian(15, 3, 2026));
        sqlpno.SetIndex(kByNumber);
    }
    void TearDown() override
    {
        CDateField::SetFiscalYear(0);
        TablesWindowTest::TearDown();
    }

    void Type(const QString &text)
    {
        keys_ += static_cast<int>(text.size());
        keys::Type(text);
    }
    /// A schedule generator that the key opens is accepted as it proposes; that key is counted too.
    void Press(int key, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        ++keys_;
        QWidget *const window = QApplication::activeWindow();
        bool is_accepted = false;
        QTimer watch;
        QObject::connect(&watch, &QTimer::timeout, &watch, [&] {
            auto *generator = dynamic_cast<CGenScadenze *>(QApplication::activeModalWidget());
            if (!generator || is_accepted) return;
            is_accepted = true;
            ++keys_;
            QApplication::setActiveWindow(generator);
            keys::Settle();
            keys::Press(Qt::Key_Return);
        });
        watch.start(5);
        keys::Press(key, modifiers);
        if (is_accepted) ComeBack(window);
    }
    void Enter(const QString &text = {})
    {
        Type(text);
        Press(Qt::Key_Return);
    }

    /// Causale, supplier, number, date and total of a purchase; the focus is then in the first VAT line.
    void TypePurchase(const QString &number, const QString &total, const QString &causale = "21")
    {
        Enter(causale);
        Enter("1");
        Enter(number);
        Enter("10");
        Enter(total);
    }
    /// A purchase of one rate in the archive.
    void StorePurchase(const QString &number, const QString &total = "122")
    {
        CPNota editor(nullptr, nullptr);
        keys::Open(&editor);
        TypePurchase(number, total);
        if (editor.m_pnota.iva[0].iva == 0) Enter("22");
        Press(Qt::Key_F2);
        EXPECT_TRUE(editor.m_saved);
    }

    /// Opens an entry of the archive in the editor.
    static void OpenOn(CPNota *editor, long number)
    {
        ASSERT_TRUE(sqlpno.Search(nullptr, number, &editor->m_pnota));
        editor->m_open = true;
        keys::Open(editor);
    }
    /// The first of the texts shown, which only its beginning has in common on the two engines; the script begins anew.
    std::string TakeShown()
    {
        const std::string shown = user_.shown.empty() ? "(niente)" : user_.shown.front();
        EXPECT_EQ(user_.shown.size(), 1u);
        user_ = ScriptedUserInterface();
        return shown;
    }

    static CSpreadSheet *Grid(const CPNota &editor, const std::string &name)
    {
        for (QTableView *view : editor.findChildren<QTableView *>())
            if (view->accessibleName().toStdString() == name) return dynamic_cast<CSpreadSheet *>(view);
        ADD_FAILURE() << "no grid " << name;
        return nullptr;
    }
    /// "250.1.1 A 122,00; 260.1.1 D 22,00" as the row grid shows it.
    static std::string Rows(const CPNota &editor)
    {
        const CSpreadSheet *grid = Grid(editor, "Righe");
        std::string rows;
        for (long row = 1; row <= grid->RowCount() && grid->Long(row, 1) != 0; ++row)
            rows += (rows.empty() ? "" : "; ") + grid->Text(row, 1) + "." + grid->Text(row, 2) + "." +
                    grid->Text(row, 3) + " " + grid->Text(row, 8) + " " + grid->Text(row, 7);
        return rows;
    }
    /// "22 100,00 22,00" of a VAT line.
    static std::string VatLine(const CPNota &editor, long line)
    {
        const CSpreadSheet *grid = Grid(editor, "Righe IVA");
        return grid->Text(line, 1) + " " + grid->Text(line, 2) + " " + grid->Text(line, 4);
    }
    static std::string Cell(const CPNota &editor)
    {
        const QWidget *focus = QApplication::focusWidget();
        for (const char *name : {"Righe IVA", "Righe"}) {
            const CSpreadSheet *grid = Grid(editor, name);
            if (focus != grid && !grid->isAncestorOf(focus)) continue;
            return std::string(name) + " " + std::to_string(grid->ActiveRow()) + "," +
                   std::to_string(grid->ActiveColumn());
        }
        return Focused();
    }
    std::string Entries() { return Value("SELECT COUNT(*) FROM admin.pnota1"); }

    int keys_ = 0;
};
