#pragma once

#include "tables/TableChecks.h"
#include "tables/ui/AccountField.h"
#include "tables/ui/TableEditor.h"

/// The members that customers and suppliers have in common, so that their form is written once.
struct CounterpartMembers {
    const char *prefix; ///< of the columns: "cli_"
    long &code;
    BoundedText &desc, &rag_soc1, &rag_soc2, &pers;
    long &ditta_ind;
    BoundedText &indirizzo, &cap, &citta, &prov, &naz, &piva, &codfis, &telefono, &email, &pec, &iban;
    long &mas, &con, &pag, &ban, &data_cessazione, &escludi_iva;
};

/// The common part of the customers' and suppliers' editors: identity and address, accounting. VAT number, fiscal code
/// and IBAN are checked when they are left: a wrong one is refused with the reason in the status line.
class CounterpartForm {
  public:
    /// Names the field of a column for the focus after a refusal; see CTableEditor::Field.
    using NameFunction = std::function<void(const std::string &column, CTarvoField *field)>;
    /// The faults of the record as it is on screen.
    using CheckFunction = std::function<std::vector<FieldFault>()>;

    CounterpartForm(CTarvoDialog *dialog, const CounterpartMembers &members, NameFunction name, CheckFunction check);

    void AddIdentity(FormBuilder &form); ///< name, address, VAT number and fiscal code
    void AddContacts(FormBuilder &form);
    void AddAccounting(FormBuilder &form); ///< account, terms, bank
    void AddState(FormBuilder &form);      ///< ceased, left out of the communications

    /// After the record was shown: labels by the kind of person.
    void OnRecordShown();
    /// Only a person can be a sole trader.
    void Protect();
    /// Composes the name of a person from its parts when it was left empty.
    void CompleteName();

  private:
    void Name(const char *column, CTarvoField *field);
    CTextField *Named(const char *column, CTextField *field);
    std::string Nation() const;
    bool IsPerson() const;
    void OnKindChosen();
    void ProposeName();
    bool OnLostFocusEventPiva();
    bool OnLostFocusEventCodFis();
    bool OnLostFocusEventIban();
    /// Tells of a question that storing will ask about the column, a duplicate above all.
    void TellQuestion(const char *column);

    CTarvoDialog *dialog_;
    CounterpartMembers members_;
    NameFunction name_;
    CheckFunction check_;
    CChoiceField *kind_ = nullptr;
    CFlagField *sole_trader_ = nullptr;
    CTextField *desc_ = nullptr, *first_line_ = nullptr, *second_line_ = nullptr, *nation_ = nullptr,
               *vat_number_ = nullptr, *fiscal_code_ = nullptr, *iban_ = nullptr;
};
