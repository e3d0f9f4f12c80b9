#include "einvoice/InvoiceRegistration.h"

#include "tarvodlg/base/UserInterface.h"
#include "tarvolumera/FiscalCodes.h"

#include <fmt/format.h>
#include <fmt/printf.h>

namespace {

constexpr const char *kSupplierNotFound = "Non è stato possibile individuare il fornitore con la partita IVA o con il "
                                          "codice Fiscale!\n\nVuoi cercarlo manualmente "
                                          "?\n\nRispondi :\nSI - per cercalo\nNO - per creare un nuovo "
                                          "Fornitore\nAnnulla - per annullare la contabilizzazione";

long SupplierBy(SACommand *cmd, const char *text, const char *param, const std::string &value)
{
    if (value.empty()) return 0;
    SACommand query(cmd->Connection(), text);
    query.Param(param).setAsString(value);
    query.Execute();
    return query.FetchNext() ? query.Field("for_codice").asLong() : 0;
}

std::string AddressLine(const fatturapa::IndirizzoType &address)
{
    return address.NumeroCivico.empty() ? address.Indirizzo : address.Indirizzo + ", " + address.NumeroCivico;
}

/// Whether the archive has this supplier under its code; another station may have given the code to somebody else.
bool IsStored(SACommand *cmd, const FORNITORI &supplier)
{
    FORNITORI stored;
    return sqlfor.Search(cmd, supplier.for_codice, &stored) && stored.for_desc == supplier.for_desc &&
           stored.for_piva == supplier.for_piva && stored.for_codfis == supplier.for_codfis;
}

} // namespace

FORNITORI SupplierFromSeller(SACommand *cmd, const fatturapa::PartyType &seller)
{
    const auto &anagrafica = seller.DatiAnagrafici.Anagrafica;
    FORNITORI supplier;
    supplier.for_codice = sqlfor.NextCode(cmd);
    if (anagrafica.Denominazione.empty() && !(anagrafica.Cognome.empty() && anagrafica.Nome.empty())) {
        supplier.for_pers = "F";
        supplier.for_rag_soc1 = anagrafica.Cognome;
        supplier.for_rag_soc2 = anagrafica.Nome;
        supplier.for_desc = anagrafica.Cognome.empty() || anagrafica.Nome.empty()
                                ? fatturapa::NameOf(anagrafica)
                                : fmt::sprintf("%-s, %-s", anagrafica.Cognome, anagrafica.Nome);
        // A person who issues invoices with a VAT number trades in his own name.
        supplier.for_ditta_ind = seller.DatiAnagrafici.IdFiscaleIVA.IdCodice.empty() ? 0 : 1;
    } else {
        supplier.for_pers = "G";
        supplier.for_desc = anagrafica.Denominazione;
        supplier.for_rag_soc1 = anagrafica.Denominazione;
    }
    const std::string &country = seller.DatiAnagrafici.IdFiscaleIVA.IdPaese;
    supplier.for_naz = !country.empty() ? country : !seller.Sede.Nazione.empty() ? seller.Sede.Nazione : "IT";
    supplier.for_indirizzo = AddressLine(seller.Sede);
    supplier.for_cap = seller.Sede.CAP;
    supplier.for_citta = seller.Sede.Comune;
    supplier.for_prov = seller.Sede.Provincia;
    supplier.for_piva = fatturapa::VatNumber(seller.DatiAnagrafici.IdFiscaleIVA);
    supplier.for_codfis = NormalisedFiscalCode(seller.DatiAnagrafici.CodiceFiscale);
    supplier.for_telefono = seller.Contatti.Telefono;
    supplier.for_email = seller.Contatti.Email;
    if (!seller.IscrizioneREA.NumeroREA.empty())
        supplier.for_rea = seller.IscrizioneREA.Ufficio + "-" + seller.IscrizioneREA.NumeroREA;
    supplier.for_socio_unico = seller.IscrizioneREA.SocioUnico;
    supplier.for_stato_liq = seller.IscrizioneREA.StatoLiquidazione;
    return supplier;
}

long FindSupplierOf(SACommand *cmd, const fatturapa::PartyType &seller)
{
    CommandScope scope(cmd);
    const long code = SupplierBy(
        scope.get(), "SELECT for_codice, for_naz FROM admin.fornito1 WHERE for_piva = :piva ORDER BY for_codice DESC",
        "piva", fatturapa::VatNumber(seller.DatiAnagrafici.IdFiscaleIVA));
    if (code != 0) return code;
    return SupplierBy(scope.get(),
                      "SELECT for_codice FROM admin.fornito1 WHERE for_codfis = :codfis ORDER BY for_codice DESC",
                      "codfis", NormalisedFiscalCode(seller.DatiAnagrafici.CodiceFiscale));
}

bool CreaFornnitore(SACommand *cmd, const fatturapa::PartyType &seller, const RegistrationChoices &choices,
                    FORNITORI *supplier, bool *is_new)
{
    CommandScope scope(cmd);
    *is_new = false;
    long code = FindSupplierOf(scope.get(), seller);
    if (code == 0) {
        const int answer = AfxMessageBox(kSupplierNotFound, MB_YESNOCANCEL | MB_ICONQUESTION | MB_DEFBUTTON3);
        if (answer == IDCANCEL) return false;
        if (answer == IDNO) {
            *supplier = SupplierFromSeller(scope.get(), seller);
            if (!choices.confirm_supplier || !choices.confirm_supplier(supplier)) return false;
            *is_new = !IsStored(scope.get(), *supplier);
            return true;
        }
        code = choices.choose_supplier ? choices.choose_supplier(seller) : 0;
    }
    return code != 0 && sqlfor.Search(scope.get(), code, supplier);
}
