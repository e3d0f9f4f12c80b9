#include "tables/ui/Lookups.h"

#include "tables/BrowseKeys.h"

#include <cassert>
#include <cstdlib>

namespace {

const BrowseDescription &Described(const char *table)
{
    const BrowseDescription *description = FindBrowse(table);
    assert(description && "browsers name a table of the descriptions");
    if (!description) std::abort();
    return *description;
}

long KeyAt(const RecordKeys &keys, std::size_t index)
{
    return index < keys.size() ? ParseCode(keys[index]).value_or(0) : 0;
}

/// The leading keys that are known; a gap ends them, since an account means nothing without its master.
FixedKeys KnownKeys(const BrowseDescription &description, const std::vector<long> &values)
{
    FixedKeys fixed;
    for (std::size_t i = 0; i + 1 < description.keys.size() && i < values.size() && values[i] != 0; ++i)
        fixed.emplace_back(description.keys[i], values[i]);
    return fixed;
}

} // namespace

CCodeBrowser::CCodeBrowser(CWnd *parent, const char *table) : CLookupBrowser(parent, Described(table)) {}

bool CCodeBrowser::OnInitDialog()
{
    if (m_codice != 0) m_keys = {std::to_string(m_codice)};
    return CLookupBrowser::OnInitDialog();
}

void CCodeBrowser::OnChosen()
{
    m_codice = KeyAt(m_keys, 0);
}

CTextCodeBrowser::CTextCodeBrowser(CWnd *parent, const char *table) : CLookupBrowser(parent, Described(table)) {}

bool CTextCodeBrowser::OnInitDialog()
{
    if (!m_codice.empty()) m_keys = {m_codice};
    return CLookupBrowser::OnInitDialog();
}

void CTextCodeBrowser::OnChosen()
{
    m_codice = m_keys.front();
}

CContiBr::CContiBr(CWnd *parent) : CLookupBrowser(parent, Described("conti")) {}

bool CContiBr::OnInitDialog()
{
    SetFixedKeys(KnownKeys(Described("conti"), {m_mas}));
    if (m_mas != 0 && m_con != 0) m_keys = {std::to_string(m_mas), std::to_string(m_con)};
    return CLookupBrowser::OnInitDialog();
}

void CContiBr::OnChosen()
{
    m_mas = KeyAt(m_keys, 0);
    m_con = KeyAt(m_keys, 1);
}

CSottoconBr::CSottoconBr(CWnd *parent) : CLookupBrowser(parent, Described("sottocon")) {}

bool CSottoconBr::OnInitDialog()
{
    SetFixedKeys(KnownKeys(Described("sottocon"), {m_mas, m_con}));
    if (m_mas != 0 && m_con != 0 && m_sot != 0)
        m_keys = {std::to_string(m_mas), std::to_string(m_con), std::to_string(m_sot)};
    return CLookupBrowser::OnInitDialog();
}

void CSottoconBr::OnChosen()
{
    m_mas = KeyAt(m_keys, 0);
    m_con = KeyAt(m_keys, 1);
    m_sot = KeyAt(m_keys, 2);
}

TableLookup::TableLookup(const char *table, FixedFunction fixed, ChosenFunction chosen)
    : description_(Described(table)), fixed_(std::move(fixed)), chosen_(std::move(chosen))
{
}

FixedKeys TableLookup::Fixed() const
{
    return fixed_ ? KnownKeys(description_, fixed_()) : FixedKeys{};
}

std::optional<std::string> TableLookup::Describe(const std::string &code)
{
    RecordKeys keys;
    for (const auto &fixed : Fixed()) keys.push_back(std::to_string(fixed.second));
    keys.push_back(code);
    if (keys.size() != description_.keys.size()) return std::nullopt;
    CommandScope scope(nullptr);
    return DescribeCode(scope.get(), description_, keys);
}

std::vector<LookupMatch> TableLookup::Match(const std::string &typed, std::size_t max)
{
    CommandScope scope(nullptr);
    std::vector<LookupMatch> matches;
    for (CodeMatch &match : MatchCodes(scope.get(), description_, Fixed(), typed, max))
        matches.push_back({std::move(match.keys.back()), std::move(match.description)});
    return matches;
}

std::optional<std::string> TableLookup::Browse(CWnd *parent, const std::string &code_or_text)
{
    const FixedKeys fixed = Fixed();
    CLookupBrowser browser(parent, description_, fixed);
    RecordKeys keys;
    for (const auto &key : fixed) keys.push_back(std::to_string(key.second));
    if (!code_or_text.empty() && Describe(code_or_text)) {
        keys.push_back(code_or_text);
        browser.m_keys = keys;
    } else {
        browser.m_search = code_or_text;
    }
    if (browser.DoModal() != IDOK) return std::nullopt;
    if (chosen_) chosen_(browser.m_keys);
    return browser.m_keys.back();
}

std::shared_ptr<CodeLookup> Lookup(const char *table)
{
    return std::make_shared<TableLookup>(table);
}
