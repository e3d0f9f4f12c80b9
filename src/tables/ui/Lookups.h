#pragma once

#include "tables/ui/LookupBrowser.h"

#include "tarvodlg/widgets/Field.h"

/// A browser of a table whose key is one number:
///
///     CFornitoriBr browser(this);
///     browser.m_codice = current;
///     if (browser.DoModal() == IDOK) code = browser.m_codice;
class CCodeBrowser : public CLookupBrowser {
  public:
    CCodeBrowser(CWnd *parent, const char *table);
    long m_codice = 0; ///< code to stand on, set before DoModal; the chosen one after IDOK

  protected:
    bool OnInitDialog() override;
    void OnChosen() override;
};

/// The same for a table whose key is a text.
class CTextCodeBrowser : public CLookupBrowser {
  public:
    CTextCodeBrowser(CWnd *parent, const char *table);
    std::string m_codice;

  protected:
    bool OnInitDialog() override;
    void OnChosen() override;
};

class CMastriBr : public CCodeBrowser {
  public:
    explicit CMastriBr(CWnd *parent = nullptr) : CCodeBrowser(parent, "mastri") {}
};
class CCaucontBr : public CCodeBrowser {
  public:
    explicit CCaucontBr(CWnd *parent = nullptr) : CCodeBrowser(parent, "causali") {}
};
class CCodivaBr : public CCodeBrowser {
  public:
    explicit CCodivaBr(CWnd *parent = nullptr) : CCodeBrowser(parent, "codiva") {}
};
class CPagamentiBr : public CCodeBrowser {
  public:
    explicit CPagamentiBr(CWnd *parent = nullptr) : CCodeBrowser(parent, "pagamenti") {}
};
class CSezioniBr : public CCodeBrowser {
  public:
    explicit CSezioniBr(CWnd *parent = nullptr) : CCodeBrowser(parent, "sezioni") {}
};
class CFornitoriBr : public CCodeBrowser {
  public:
    explicit CFornitoriBr(CWnd *parent = nullptr) : CCodeBrowser(parent, "fornitori") {}
};
class CClientiBr : public CCodeBrowser {
  public:
    explicit CClientiBr(CWnd *parent = nullptr) : CCodeBrowser(parent, "clienti") {}
};
class CBancheBr : public CCodeBrowser {
  public:
    explicit CBancheBr(CWnd *parent = nullptr) : CCodeBrowser(parent, "banche") {}
};
class CCentriBr : public CCodeBrowser {
  public:
    explicit CCentriBr(CWnd *parent = nullptr) : CCodeBrowser(parent, "centri") {}
};
class CAgentiBr : public CCodeBrowser {
  public:
    explicit CAgentiBr(CWnd *parent = nullptr) : CCodeBrowser(parent, "agenti") {}
};
class CNazioniBr : public CTextCodeBrowser {
  public:
    explicit CNazioniBr(CWnd *parent = nullptr) : CTextCodeBrowser(parent, "nazioni") {}
};
class CProvinceBr : public CTextCodeBrowser {
  public:
    explicit CProvinceBr(CWnd *parent = nullptr) : CTextCodeBrowser(parent, "province") {}
};

/// The accounts of a master, or of all of them.
class CContiBr : public CLookupBrowser {
  public:
    explicit CContiBr(CWnd *parent = nullptr);
    long m_mas = 0; ///< before: 0 = the accounts of all masters. After IDOK: the master of the chosen one
    long m_con = 0;

  protected:
    bool OnInitDialog() override;
    void OnChosen() override;
};

/// The sub-accounts of an account, of a master, or of the whole chart.
class CSottoconBr : public CLookupBrowser {
  public:
    explicit CSottoconBr(CWnd *parent = nullptr);
    long m_mas = 0, m_con = 0; ///< before: 0 = all. After IDOK: those of the chosen one
    long m_sot = 0;

  protected:
    bool OnInitDialog() override;
    void OnChosen() override;
};

/// The lookup of a code field over a table's description. Each call works over a connection of its own.
class TableLookup : public CodeLookup {
  public:
    /// The values of the keys before the last one, in their order; 0 = not known yet.
    using FixedFunction = std::function<std::vector<long>()>;
    /// Gets all keys of a record that was chosen in the browser, before its code goes into the field.
    using ChosenFunction = std::function<void(const RecordKeys &)>;

    /// @param table  name of a description ("causali", "nazioni")
    explicit TableLookup(const char *table, FixedFunction fixed = {}, ChosenFunction chosen = {});

    std::optional<std::string> Describe(const std::string &code) override;
    std::vector<LookupMatch> Match(const std::string &typed, std::size_t max) override;
    std::optional<std::string> Browse(CWnd *parent, const std::string &code_or_text) override;

  private:
    FixedKeys Fixed() const;

    const BrowseDescription &description_;
    FixedFunction fixed_;
    ChosenFunction chosen_;
};

/// TableLookup as code fields take it: form.Code("&Pagamento", m_record.cli_pag, Lookup("pagamenti")).
std::shared_ptr<CodeLookup> Lookup(const char *table);
