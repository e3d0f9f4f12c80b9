#pragma once

#include "tables/ui/Lookups.h"
#include "tarvodlg/widgets/FormBuilder.h"
#include "tarvolumera/ChartOfAccounts.h"

/// Master, account and sub-account on one line with one description. In the first field "310.2.5", "310 2 5" or
/// "310/2/5" fills all three, "310.2" the first two. Below the customers' or suppliers' master the sub-account is the
/// code of a customer or supplier.
class CAccountField : public QWidget {
  public:
    /// @param has_sub_account  false: master and account only
    explicit CAccountField(CTarvoDialog *dialog, bool has_sub_account = true);
    ~CAccountField() override;

    AccountKey Value() const;
    void SetValue(const AccountKey &account);

    CCodeField *Mas() const;
    CCodeField *Con() const;
    CCodeField *Sot() const; ///< null without sub-account

    /// After the user changed the account, whatever field it was; the description is up to date.
    std::function<void()> on_change;

  private:
    struct Parts;
    friend class AccountCodeField;

    bool TakeWhole(std::string_view typed);
    bool OnLostFocus(CCodeField *field);
    void ShowDescription();

    std::unique_ptr<Parts> parts_;
};

/// What AddAccount made.
struct AccountFields {
    CAccountField *group = nullptr;
    CCodeField *mas = nullptr, *con = nullptr, *sot = nullptr;
};

/// Adds an account to a form, coupled with three members of the record.
AccountFields AddAccount(FormBuilder &form, CTarvoDialog *dialog, const QString &label, long &mas, long &con,
                         long &sot);
/// An account without sub-account: where the rows of a counterpart stand.
AccountFields AddAccount(FormBuilder &form, CTarvoDialog *dialog, const QString &label, long &mas, long &con);

/// "310.2.5", "310 2 5", "310/2/5"; parts that are missing are 0. Nothing for anything else, or for more than three
/// parts.
std::optional<AccountKey> ParseAccount(std::string_view typed);
/// "310.2.5"; parts from the first 0 on are left out.
std::string AccountText(const AccountKey &account);

/// Browses the accounts that rows may stand on: the sub-accounts below what is known of the given one, or the customers
/// (suppliers) below their master. For cells of a grid. @return nothing when cancelled
std::optional<AccountKey> BrowseAccount(CWnd *parent, const AccountKey &current);
/// The description of an account as far as it is given: the sub-account's, else the account's, else the master's; empty
/// when there is none. @throws SAException
std::string DescribeAccount(const AccountKey &account);
