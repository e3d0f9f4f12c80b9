#include "schedule/ui/CounterpartLookup.h"

#include "tables/ui/Lookups.h"
#include "tarvolumera/Counterparts.h"

CounterpartLookup::CounterpartLookup(const long &side)
    : side_(side), customers_(Lookup("clienti")), suppliers_(Lookup("fornitori"))
{
}

CodeLookup &CounterpartLookup::Current() const
{
    return side_ == kCustomer ? *customers_ : *suppliers_;
}

std::optional<std::string> CounterpartLookup::Describe(const std::string &code)
{
    return Current().Describe(code);
}

std::vector<LookupMatch> CounterpartLookup::Match(const std::string &typed, std::size_t max)
{
    return Current().Match(typed, max);
}

std::optional<std::string> CounterpartLookup::Browse(CWnd *parent, const std::string &code_or_text)
{
    return Current().Browse(parent, code_or_text);
}
