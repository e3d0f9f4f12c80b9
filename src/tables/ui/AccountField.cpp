#include "tables/ui/AccountField.h"

#include "tables/BrowseKeys.h"
#include "tarvodlg/base/Dbisam.h"
#include "tarvodlg/widgets/Theme.h"
#include "tarvolumera/Counterparts.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QTimer>

namespace {

constexpr std::string_view kSeparators = "./- ";

/// "mastri", "conti", "sottocon" by the number of the parts that are known, for a description of each level.
std::optional<std::string> DescribeLevel(SACommand *cmd, const char *table, const std::vector<long> &keys)
{
    RecordKeys texts;
    for (const long key : keys) texts.push_back(std::to_string(key));
    return DescribeCode(cmd, *FindBrowse(table), texts);
}

/// The table that a sub-account comes from: the chart, or the counterparts below their master.
const char *SubAccountTable(long mas)
{
    switch (MasterRelation(lumera_db_impo, mas)) {
    case kCustomer:
        return "clienti";
    case kSupplier:
        return "fornitori";
    default:
        return "sottocon";
    }
}

bool IsOfCounterparts(long mas)
{
    return mas != 0 && std::string_view(SubAccountTable(mas)) != "sottocon";
}

/// The browser stands on the present sub-account when that is known, else it lists all below the master and account.
std::optional<AccountKey> BrowseChart(CWnd *parent, const AccountKey &current, const std::string &search)
{
    CSottoconBr browser(parent);
    browser.m_mas = current.mas;
    browser.m_con = current.con;
    browser.m_sot = current.sot;
    browser.m_search = search;
    if (browser.DoModal() != IDOK) return std::nullopt;
    return AccountKey{browser.m_mas, browser.m_con, browser.m_sot};
}

long OrdinaryAccount(SACommand *cmd, const AccountKey &account)
{
    CLIENTI customer;
    FORNITORI supplier;
    if (MasterRelation(lumera_db_impo, account.mas) == kCustomer)
        return sqlcli.Search(cmd, account.sot, &customer) ? GetContoCliente(&customer) : 0;
    return sqlfor.Search(cmd, account.sot, &supplier) ? GetContoFornitore(&supplier) : 0;
}

template <class Browser>
std::optional<AccountKey> BrowseCounterparts(CWnd *parent, AccountKey account, const std::string &search)
{
    Browser browser(parent);
    browser.m_codice = account.sot;
    browser.m_search = search;
    if (browser.DoModal() != IDOK) return std::nullopt;
    account.sot = browser.m_codice;
    CommandScope scope(nullptr);
    if (account.con == 0) account.con = OrdinaryAccount(scope.get(), account);
    return account;
}

std::optional<AccountKey> BrowseSubAccounts(CWnd *parent, const AccountKey &current, const std::string &search)
{
    switch (MasterRelation(lumera_db_impo, current.mas)) {
    case kCustomer:
        return BrowseCounterparts<CClientiBr>(parent, current, search);
    case kSupplier:
        return BrowseCounterparts<CFornitoriBr>(parent, current, search);
    default:
        return BrowseChart(parent, current, search);
    }
}

bool IsDigits(std::string_view text)
{
    return text.find_first_not_of("0123456789") == std::string_view::npos;
}

} // namespace

std::optional<AccountKey> ParseAccount(std::string_view typed)
{
    AccountKey account;
    long *const parts[] = {&account.mas, &account.con, &account.sot};
    std::size_t count = 0;
    for (std::string_view rest = Trimmed(typed); !rest.empty();) {
        const std::size_t end = std::min(rest.find_first_of(kSeparators), rest.size());
        const std::optional<long> part = ParseCode(rest.substr(0, end));
        if (!part || count == std::size(parts)) return std::nullopt;
        *parts[count++] = *part;
        rest = Trimmed(rest.substr(std::min(end + 1, rest.size())));
    }
    if (count == 0) return std::nullopt;
    return account;
}

std::string AccountText(const AccountKey &account)
{
    std::string text;
    for (const long part : {account.mas, account.con, account.sot}) {
        if (part == 0) break;
        text += (text.empty() ? "" : ".") + std::to_string(part);
    }
    return text;
}

std::optional<AccountKey> BrowseAccount(CWnd *parent, const AccountKey &current)
{
    return BrowseSubAccounts(parent, current, {});
}

std::string DescribeAccount(const AccountKey &account)
{
    if (account.mas == 0) return {};
    CommandScope scope(nullptr);
    if (account.con == 0) return DescribeLevel(scope.get(), "mastri", {account.mas}).value_or("");
    if (account.sot == 0) return DescribeLevel(scope.get(), "conti", {account.mas, account.con}).value_or("");
    if (!AccountExists(scope.get(), account)) return {};
    return AccountDescription(scope.get(), account).str();
}

/// One of the three codes. The first one takes a whole account, too.
class AccountCodeField : public CCodeField {
  public:
    AccountCodeField(CAccountField *group, bool is_first) : CCodeField(group), group_(group), is_first_(is_first) {}

    bool Complete() override
    {
        if (is_first_ && group_->TakeWhole(FromQt(text()))) return true;
        return CCodeField::Complete();
    }

  private:
    CAccountField *group_;
    bool is_first_;
};

struct CAccountField::Parts {
    CTarvoDialog *dialog = nullptr;
    AccountCodeField *mas = nullptr, *con = nullptr, *sot = nullptr;
    QLabel *description = nullptr;
    QTimer *describing = nullptr; ///< three fields that change together are described once
};

namespace {

/// In the first field letters find sub-accounts of the whole chart, so that "energia" gives 310.2.1 at once.
class MasterLookup : public CodeLookup {
  public:
    explicit MasterLookup(bool has_sub_account) : has_sub_account_(has_sub_account), masters_("mastri") {}

    std::optional<std::string> Describe(const std::string &code) override { return masters_.Describe(code); }

    std::vector<LookupMatch> Match(const std::string &typed, std::size_t max) override
    {
        if (IsDigits(typed)) return masters_.Match(typed, max);
        if (const auto account = ParseAccount(typed)) return MatchBelow(*account, max);
        CommandScope scope(nullptr);
        const char *const table = has_sub_account_ ? "sottocon" : "conti";
        std::vector<LookupMatch> matches;
        for (CodeMatch &match : MatchCodes(scope.get(), *FindBrowse(table), {}, typed, max))
            matches.push_back({KeyText(match.keys), std::move(match.description)});
        return matches;
    }

    std::optional<std::string> Browse(CWnd *parent, const std::string &code_or_text) override
    {
        CMastriBr browser(parent);
        if (const auto code = ParseCode(code_or_text); code && Describe(code_or_text))
            browser.m_codice = *code;
        else
            browser.m_search = code_or_text;
        if (browser.DoModal() != IDOK) return std::nullopt;
        return std::to_string(browser.m_codice);
    }

  private:
    /// "310.2" and "310.2.1": what begins so, one level below the separator typed last.
    std::vector<LookupMatch> MatchBelow(const AccountKey &account, std::size_t max)
    {
        CommandScope scope(nullptr);
        const bool is_third = account.sot != 0;
        const char *const table = is_third ? SubAccountTable(account.mas) : "conti";
        FixedKeys fixed = {{"con_mas", account.mas}};
        if (is_third) fixed = {{"sot_mas", account.mas}, {"sot_con", account.con}};
        if (is_third && IsOfCounterparts(account.mas)) fixed.clear();
        const long last = is_third ? account.sot : account.con;
        const std::string head = is_third ? AccountText({account.mas, account.con, 0}) : std::to_string(account.mas);
        std::vector<LookupMatch> matches;
        if (last == 0 || (is_third && !has_sub_account_)) return matches;
        for (CodeMatch &match : MatchCodes(scope.get(), *FindBrowse(table), fixed, std::to_string(last), max))
            matches.push_back({head + "." + match.keys.back(), std::move(match.description)});
        return matches;
    }

    bool has_sub_account_;
    TableLookup masters_;
};

/// In the third field the table depends on the first.
class SubAccountLookup : public CodeLookup {
  public:
    explicit SubAccountLookup(CAccountField *group) : group_(group) {}

    std::optional<std::string> Describe(const std::string &code) override
    {
        AccountKey account = group_->Value();
        account.sot = ParseCode(code).value_or(0);
        CommandScope scope(nullptr);
        if (!AccountExists(scope.get(), account)) return std::nullopt;
        return AccountDescription(scope.get(), account).str();
    }

    std::vector<LookupMatch> Match(const std::string &typed, std::size_t max) override
    {
        return Table().Match(typed, max);
    }

    std::optional<std::string> Browse(CWnd *parent, const std::string &code_or_text) override
    {
        AccountKey current = group_->Value();
        const bool is_known = !code_or_text.empty() && Describe(code_or_text).has_value();
        current.sot = is_known ? ParseCode(code_or_text).value_or(0) : 0;
        const auto chosen = BrowseSubAccounts(parent, current, is_known ? std::string() : code_or_text);
        if (!chosen) return std::nullopt;
        group_->Mas()->SetValue(chosen->mas);
        group_->Con()->SetValue(chosen->con);
        return std::to_string(chosen->sot);
    }

  private:
    TableLookup Table() const
    {
        const AccountKey account = group_->Value();
        if (IsOfCounterparts(account.mas)) return TableLookup(SubAccountTable(account.mas));
        return TableLookup("sottocon", [account] { return std::vector<long>{account.mas, account.con}; });
    }

    CAccountField *group_;
};

} // namespace

CAccountField::CAccountField(CTarvoDialog *dialog, bool has_sub_account) : parts_(std::make_unique<Parts>())
{
    Parts &parts = *parts_;
    parts.dialog = dialog;
    parts.mas = new AccountCodeField(this, true);
    parts.con = new AccountCodeField(this, false);
    if (has_sub_account) parts.sot = new AccountCodeField(this, false);
    parts.description = new QLabel(this);
    parts.description->setTextFormat(Qt::PlainText);
    parts.description->setForegroundRole(QPalette::PlaceholderText);
    parts.description->setMinimumWidth(CharactersWide(parts.description, 30));
    parts.description->setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Preferred); // a long one is cut
    parts.describing = new QTimer(this);
    parts.describing->setSingleShot(true);
    connect(parts.describing, &QTimer::timeout, this, [this] { ShowDescription(); });

    auto *line = new QHBoxLayout(this);
    line->setContentsMargins(0, 0, 0, 0);
    const std::pair<AccountCodeField *, const char *> fields[] = {
        {parts.mas, "Mastro"}, {parts.con, "Conto"}, {parts.sot, "Sottoconto"}};
    for (const auto &[field, name] : fields) {
        if (!field) continue;
        field->setFixedWidth(CharactersWide(field, field == parts.sot ? 7 : 5));
        field->setToolTip(name);
        field->setAccessibleName(name);
        line->addWidget(field);
        connect(field, &QLineEdit::textChanged, this, [this] { parts_->describing->start(0); });
        dialog->OnLostFocusEvent(field, [this, code = field] { return OnLostFocus(code); });
    }
    line->addWidget(parts.description, 1);
    setFocusProxy(parts.mas);

    parts.mas->SetLookup(std::make_shared<MasterLookup>(has_sub_account));
    parts.con->SetLookup(std::make_shared<TableLookup>(
        "conti", [this] { return std::vector<long>{parts_->mas->Value()}; },
        [this](const RecordKeys &keys) { parts_->mas->SetValue(ParseCode(keys.front()).value_or(0)); }));
    if (has_sub_account) parts.sot->SetLookup(std::make_shared<SubAccountLookup>(this));
}

CAccountField::~CAccountField() = default;

AccountKey CAccountField::Value() const
{
    return {parts_->mas->Value(), parts_->con->Value(), parts_->sot ? parts_->sot->Value() : 0};
}

void CAccountField::SetValue(const AccountKey &account)
{
    parts_->mas->SetValue(account.mas);
    parts_->con->SetValue(account.con);
    if (parts_->sot) parts_->sot->SetValue(account.sot);
    ShowDescription();
}

CCodeField *CAccountField::Mas() const
{
    return parts_->mas;
}

CCodeField *CAccountField::Con() const
{
    return parts_->con;
}

CCodeField *CAccountField::Sot() const
{
    return parts_->sot;
}

/// Splits a whole account over the fields. @return false when it is not a whole one, or there is no such account; the
/// field then completes (and refuses) it as any code
bool CAccountField::TakeWhole(std::string_view typed)
{
    std::optional<AccountKey> account;
    if (IsDigits(typed)) return false;
    const bool is_code = typed.find_first_not_of("0123456789./- ") == std::string_view::npos;
    bool is_taken = false;
    parts_->dialog->Guarded(LUMERA_TAG, [&] {
        if (!is_code) { // letters that one account alone has in its description
            MasterLookup lookup(parts_->sot != nullptr);
            const std::vector<LookupMatch> matches = lookup.Match(std::string(typed), 2);
            if (matches.size() == 1) account = ParseAccount(matches.front().code);
        } else {
            account = ParseAccount(typed);
        }
        if (!account || account->con == 0 || (account->sot != 0 && !parts_->sot)) return;
        is_taken = !DescribeAccount(*account).empty();
    });
    if (!is_taken) return false;
    SetValue(*account);
    for (CCodeField *field : {Mas(), Con(), Sot()})
        if (field) field->SetModified(true);
    return true;
}

/// What stands below a changed code and does not exist there any more is emptied.
bool CAccountField::OnLostFocus(CCodeField *field)
{
    const bool is_good = parts_->dialog->Guarded(LUMERA_TAG, [&] {
        const AccountKey account = Value();
        if (field == Mas() && DescribeAccount({account.mas, account.con, 0}).empty()) Con()->SetValue(0);
        if (field != Sot() && Sot() && DescribeAccount(Value()).empty()) Sot()->SetValue(0);
        if (account.mas == 0) Con()->SetValue(0);
        if (Sot() && (account.mas == 0 || Value().con == 0)) Sot()->SetValue(0);
    });
    if (!is_good) return false;
    ShowDescription();
    if (on_change) on_change();
    return true;
}

void CAccountField::ShowDescription()
{
    parts_->describing->stop();
    parts_->dialog->Guarded(LUMERA_TAG, [this] {
        const QString text = ToQt(DescribeAccount(Value()));
        parts_->description->setText(text);
        parts_->description->setToolTip(PlainTip(text));
    });
}

namespace {

AccountFields Added(FormBuilder &form, CTarvoDialog *dialog, const QString &label, CAccountField *group, long *mas,
                    long *con, long *sot)
{
    const AccountFields fields{group, group->Mas(), group->Con(), group->Sot()};
    form.Add(label, group);
    dialog->Bind(
        fields.mas, [group, mas] { group->Mas()->SetValue(*mas); }, [group, mas] { *mas = group->Mas()->Value(); });
    dialog->Bind(
        fields.con, [group, con] { group->Con()->SetValue(*con); }, [group, con] { *con = group->Con()->Value(); });
    if (sot)
        dialog->Bind(
            fields.sot, [group, sot] { group->Sot()->SetValue(*sot); }, [group, sot] { *sot = group->Sot()->Value(); });
    return fields;
}

} // namespace

AccountFields AddAccount(FormBuilder &form, CTarvoDialog *dialog, const QString &label, long &mas, long &con, long &sot)
{
    return Added(form, dialog, label, new CAccountField(dialog), &mas, &con, &sot);
}

AccountFields AddAccount(FormBuilder &form, CTarvoDialog *dialog, const QString &label, long &mas, long &con)
{
    return Added(form, dialog, label, new CAccountField(dialog, false), &mas, &con, nullptr);
}
