#pragma once

#include "ledger/ui/PNota.h"
#include "tarvodlg/base/Dates.h"
#include "tarvodlg/widgets/Fields.h"
#include "tests/tables_ui/TablesWindowTest.h"

#include <QSettings>

/// Windows that open one after the other while an invoice is registered, on 15 March 2026 of the demo company.
class InvoiceWindowTest : public TablesWindowTest {
  protected:
    void SetUp() override
    {
        TablesWindowTest::SetUp();
        QSettings().clear();
        CDateField::SetFiscalYear(2026);
        CDateField::SetWorkingDate(DateToJulian(15, 3, 2026));
    }
    void TearDown() override
    {
        CDateField::SetFiscalYear(0);
        EXPECT_EQ(steps_left_, 0u) << "windows that did not open";
        TablesWindowTest::TearDown();
    }

    /// What the user does in one window.
    using Step = std::function<void(QWidget *)>;

    /// The next windows that open, one step for each in their order. Call before the key that opens the first.
    void Await(std::vector<Step> steps)
    {
        steps_left_ += steps.size();
        AwaitNext(std::move(steps));
    }

    /// Leaves a window of that class with a key.
    template <class Window>
    static Step Key(int key)
    {
        return [key](QWidget *window) {
            EXPECT_NE(dynamic_cast<Window *>(window), nullptr) << window->windowTitle().toStdString();
            keys::Press(key);
        };
    }
    static CPNota &Editor(QWidget *window)
    {
        auto *editor = dynamic_cast<CPNota *>(window);
        if (!editor) throw std::runtime_error("no entry editor: " + window->windowTitle().toStdString());
        return *editor;
    }

    std::string Count(const std::string &table) { return Value("SELECT COUNT(*) FROM admin." + table); }
    /// Entries, their rows, their files, instalments, suppliers.
    std::string Books()
    {
        return Count("pnota1") + " " + Count("pnotaro2") + " " + Count("pnotaall") + " " + Count("scadenze") + " " +
               Count("fornito1");
    }

    static constexpr const char *kNotFound =
        "Non è stato possibile individuare il fornitore con la partita IVA o con il codice Fiscale!\n\nVuoi cercarlo "
        "manualmente ?\n\nRispondi :\nSI - per cercalo\nNO - per creare un nuovo Fornitore\nAnnulla - per annullare la "
        "contabilizzazione";
    static constexpr const char *kNoTerms =
        "Nessuna modalità di pagamento impostata sul fornitore!\n\nNessuna scadenza generata.";
    static constexpr const char *kLosesChanges = "Le modifiche non salvate andranno perse!\n\nVuoi Continuare ?";

  private:
    void AwaitNext(std::vector<Step> steps)
    {
        if (steps.empty()) return;
        keys::WhenNextWindowOpens([this, steps = std::move(steps)](QWidget *window) {
            --steps_left_;
            AwaitNext({steps.begin() + 1, steps.end()});
            try {
                steps.front()(window);
            } catch (const std::exception &error) {
                ADD_FAILURE() << error.what();
            }
        });
    }

    std::size_t steps_left_ = 0;
};
