#pragma once

#include "tarvodlg/widgets/TarvoTabsDialog.h"
#include "tarvolumera/fatturapa/FattureElettronicheDB.h"

#include <memory>

class CSpreadSheet;
class QLabel;
class QPushButton;

// What the electronic invoice desk shows of the chosen document, a page for each kind of data.

/// A page of the chosen document. Filled when it is in front, so that a walk down the list costs one page a row.
class CFattureElettronichePage : public CTarvoTabsPage {
  public:
    using CTarvoTabsPage::CTarvoTabsPage;

    /// The chosen row changed. @param content  null = no document to show; else it must outlive the next call
    void Refresh(const CFattureElettronicheDB *content, std::size_t document);

    bool OnSetActive() override;

  protected:
    virtual void Show(const CFattureElettronicheDB &content, std::size_t document) = 0;
    virtual void ShowNothing() = 0;

    /// The document that the page shows just now; null for none.
    const fatturapa::FatturaElettronicaBody *Shown() const;

  private:
    void ShowWhenActive();

    const CFattureElettronicheDB *content_ = nullptr;
    std::size_t document_ = 0;
    bool is_stale_ = true;
};

/// "&Fornitore": who sent it.
class CFattureElettronicheFor : public CFattureElettronichePage {
  public:
    explicit CFattureElettronicheFor(CTarvoDialog *dialog);
    ~CFattureElettronicheFor() override;

  protected:
    void Show(const CFattureElettronicheDB &content, std::size_t document) override;
    void ShowNothing() override;

  private:
    struct Form;
    std::unique_ptr<Form> form_;
};

/// "&Dettaglio Linee": one grid row for each line.
class CFattureElettronicheRows : public CFattureElettronichePage {
  public:
    explicit CFattureElettronicheRows(CTarvoDialog *dialog);

  protected:
    void Show(const CFattureElettronicheDB &content, std::size_t document) override;
    void ShowNothing() override;

  private:
    CSpreadSheet *grid_;
};

/// "&Dettaglio Iva": the VAT summary.
class CFattureElettronicheIva : public CFattureElettronichePage {
  public:
    explicit CFattureElettronicheIva(CTarvoDialog *dialog);

  protected:
    void Show(const CFattureElettronicheDB &content, std::size_t document) override;
    void ShowNothing() override;

  private:
    CSpreadSheet *grid_;
    QLabel *total_;
};

/// "&Pagamenti": payment terms and instalments of the document. Only shown: what falls due in the books follows the
/// supplier's own terms.
class CFattureElettronichePagamenti : public CFattureElettronichePage {
  public:
    explicit CFattureElettronichePagamenti(CTarvoDialog *dialog);

  protected:
    void Show(const CFattureElettronicheDB &content, std::size_t document) override;
    void ShowNothing() override;

  private:
    CSpreadSheet *grid_;
    QLabel *note_;
};

/// "&Allegati": the files that the sender put into the document; each can be saved to disk.
class CFattureElettronicheAllegati : public CFattureElettronichePage {
  public:
    explicit CFattureElettronicheAllegati(CTarvoDialog *dialog);

    void OnSalva(); ///< the active one, asked where

  protected:
    void Show(const CFattureElettronicheDB &content, std::size_t document) override;
    void ShowNothing() override;

  private:
    CSpreadSheet *grid_;
    QLabel *note_;
    QPushButton *save_;
};
