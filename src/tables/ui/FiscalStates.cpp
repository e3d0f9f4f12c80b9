#include "tables/ui/FiscalStates.h"

#include "tables/TableChecks.h"
#include "tarvodlg/widgets/Field.h"

namespace {

/// How far a code of fixed length is: "mancano 3 cifre"; empty when it has its length.
QString Missing(qsizetype length, qsizetype wanted, const char *one, const char *several)
{
    const qsizetype missing = wanted - length;
    if (missing == 0) return {};
    if (missing < 0) return QString("%1 %2 di troppo").arg(-missing).arg(missing == -1 ? one : several);
    return missing == 1 ? QString("manca 1 %1").arg(one) : QString("mancano %1 %2").arg(missing).arg(several);
}

} // namespace

QString VatNumberState(std::string_view nation, std::string_view typed)
{
    const std::string number = NormalisedFiscalCode(typed);
    if (number.empty() || nation != "IT") return {};
    const QString missing = Missing(static_cast<qsizetype>(number.size()), 11, "cifra", "cifre");
    if (!missing.isEmpty()) return "Partita IVA: " + missing;
    const FiscalCodeCheck check = CheckCounterpartVat(nation, number);
    return check.ok() ? QString("Partita IVA corretta") : "Partita IVA: " + ToQt(check.text);
}

QString FiscalCodeState(std::string_view nation, bool is_person, std::string_view typed)
{
    const std::string code = NormalisedFiscalCode(typed);
    if (code.empty() || nation != "IT") return {};
    const QString missing = Missing(static_cast<qsizetype>(code.size()), is_person ? 16 : 11, "carattere", "caratteri");
    if (!missing.isEmpty()) return "Codice fiscale: " + missing;
    const FiscalCodeCheck check = CheckCounterpartFiscalCode(nation, is_person, code);
    return check.ok() ? QString("Codice fiscale corretto") : "Codice fiscale: " + ToQt(check.text);
}
