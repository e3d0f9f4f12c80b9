#include "schedule/ui/DestinationLookup.h"

#include "tables/ui/LookupBrowser.h"
#include "tarvolumera/Lookups.h"

namespace {

const BrowseDescription &Destinations()
{
    using enum BrowseColumn::Kind;
    static const BrowseDescription description{"destinazioni",
                                               "Destinazioni",
                                               "destinazione",
                                               &sqldst,
                                               {"dst_rel", "dst_cli_for", "dst_codice"},
                                               "dst_desc",
                                               {{"dst_codice", "Codice", Code, 7},
                                                {"dst_desc", "Descrizione", Text, 34},
                                                {"dst_indirizzo", "Indirizzo", Text, 30},
                                                {"dst_citta", "Città", Text, 20}},
                                               "dst_rel, dst_cli_for, dst_codice"};
    return description;
}

class DestinationLookup : public CodeLookup {
  public:
    explicit DestinationLookup(std::function<DestinationOwner()> owner) : owner_(std::move(owner)) {}

    std::optional<std::string> Describe(const std::string &code) override
    {
        CommandScope scope(nullptr);
        return DescribeCode(scope.get(), Destinations(), KeysOf(code));
    }

    std::vector<LookupMatch> Match(const std::string &typed, std::size_t max) override
    {
        CommandScope scope(nullptr);
        std::vector<LookupMatch> matches;
        for (CodeMatch &match : MatchCodes(scope.get(), Destinations(), Fixed(), typed, max))
            matches.push_back({std::move(match.keys.back()), std::move(match.description)});
        return matches;
    }

    std::optional<std::string> Browse(CWnd *parent, const std::string &code_or_text) override
    {
        CLookupBrowser browser(parent, Destinations(), Fixed());
        if (!code_or_text.empty() && Describe(code_or_text))
            browser.m_keys = KeysOf(code_or_text);
        else
            browser.m_search = code_or_text;
        browser.m_sola_scelta = true;
        if (browser.DoModal() != IDOK) return std::nullopt;
        return browser.m_keys.back();
    }

  private:
    RecordKeys KeysOf(const std::string &code) const
    {
        const DestinationOwner owner = owner_();
        return {std::to_string(owner.side), std::to_string(owner.code), code};
    }
    FixedKeys Fixed() const
    {
        const DestinationOwner owner = owner_();
        return {{"dst_rel", owner.side}, {"dst_cli_for", owner.code}};
    }

    std::function<DestinationOwner()> owner_;
};

} // namespace

std::shared_ptr<CodeLookup> LookupDestination(std::function<DestinationOwner()> owner)
{
    return std::make_shared<DestinationLookup>(std::move(owner));
}
