#include "tarvolumera/fatturapa/FatturaCodes.h"

#include <algorithm>
#include <array>

namespace fatturapa {

namespace {

constexpr std::string_view kUnknown = "*** SCONOSCIUTO ***";

struct CodeText {
    std::string_view code;
    std::string_view text;
};

constexpr CodeText kTipoDocumento[] = {
    {"TD01", "FATTURA"},
    {"TD02", "ACCONTO/ANTICIPO SU FATTURA"},
    {"TD03", "ACCONTO/ANTICIPO SU PARCELLA"},
    {"TD04", "NOTA DI CREDITO"},
    {"TD05", "NOTA DI DEBITO"},
    {"TD06", "PARCELLA"},
    {"TD07", "FATTURA SEMPLIFICATA"},
    {"TD08", "NOTA DI CREDITO SEMPLIFICATA"},
    {"TD10", "FATTURA PER ACQUISTO INTRACOMUNITARIO BENI"},
    {"TD11", "FATTURA PER ACQUISTO INTRACOMUNITARIO SERVIZI"},
    {"TD12", "DOCUMENTO RIEPILOGATIVO (ART.6 C. 1 D.P.R. 695/1996)"},
    {"TD16", "INTEGRAZIONE FATTURA REVERSE CHARGE INTERNO"},
    {"TD17", "INTEGRAZIONE/AUTOFATTURA PER ACQUISTO SERVIZI DALL'ESTERO"},
    {"TD18", "INTEGRAZIONE PER ACQUISTO DI BENI INTRACOMUNITARI"},
    {"TD19", "INTEGRAZIONE/AUTOFATTURA PER ACQUISTO DI BENI EX ART.17 C.2 DPR 633/72"},
    {"TD20", "AUTOFATTURA PER REGOLARIZZAZIONE E INTEGRAZIONE DELLE FATTURE (EX ART.6 C.8 D.LGS. 471/97  O  ART.46 C.5 "
             "D.L. 331/93)"},
    {"TD21", "AUTOFATTURA PER SPLAFONAMENTO"},
    {"TD22", "ESTRAZIONE BENI DA DEPOSITO IVA"},
    {"TD23", "ESTRAZIONE BENI DA DEPOSITO IVA CON VERSAMENTO DELL'IVA"},
    {"TD24", "FATTURA DIFFERITA DI CUI ALL'ART. 21, COMMA 4, LETT. A)"},
    {"TD25", "FATTURA DIFFERITA DI CUI ALL'ART. 21, COMMA 4, TERZO PERIODO LETT. B)"},
    {"TD26", "CESSIONE DI BENI AMMORTIZZABILI E PER PASSAGGI INTERNI (EX ART.36 DPR 633/72)"},
    {"TD27", "FATTURA PER AUTOCONSUMO O PER CESSIONI GRATUITE SENZA RIVALSA"},
};

// In force in the formats, but younger or rarer than the texts above.
constexpr std::string_view kTipoDocumentoWithoutText[] = {"TD09", "TD28", "TD29"};

struct NaturaFamily {
    std::string_view natura;
    short iva_tip;
    std::string_view text;
    int sub_codes; ///< .1 to .sub_codes are published
};

constexpr NaturaFamily kNatura[] = {
    {"", 1, "IMPONIBILE", 0},
    {"N1", 11, "ESCLUSA ART.15", 0},
    {"N2", 4, "NON SOGGETTO", 2},
    {"N3", 3, "NON IMPONIBILE", 6},
    {"N4", 2, "ESENTE", 0},
    {"N5", 12, "REGIME DEL MARGINE / IVA NON ESPOSTA IN FATTURA", 0},
    {"N6", 13, "INVERSIONE CONTABILE (OPERAZIONI IN REVERSE CHARGE - AUTOFATTURAZIONE)", 9},
    {"N7", 14, "IVA ASSOLTA IN ALTRO STATO UE", 0},
};

constexpr CodeText kModalitaPagamento[] = {
    {"MP01", "CONTANTI"},
    {"MP02", "ASSEGNO"},
    {"MP03", "ASSEGNO CIRCOLARE"},
    {"MP04", "CONTANTI PRESSO TESORERIA"},
    {"MP05", "BONIFICO"},
    {"MP06", "VAGLIA CAMBIARIO"},
    {"MP07", "BOLLETTINO BANCARIO"},
    {"MP08", "CARTA DI PAGAMENTO"},
    {"MP09", "RID"},
    {"MP10", "RID UTENZE"},
    {"MP11", "RID VELOCE"},
    {"MP12", "RIBA"},
    {"MP13", "MAV"},
    {"MP14", "QUIETANZA ERARIO"},
    {"MP15", "GIROCONTO SU CONTI DI CONTABILITÀ SPECIALE"},
    {"MP16", "DOMICILIAZIONE BANCARIA"},
    {"MP17", "DOMICILIAZIONE POSTALE"},
    {"MP18", "BOLLETTINO DI C/C POSTALE"},
    {"MP19", "SEPA DIRECT DEBIT"},
    {"MP20", "SEPA DIRECT DEBIT CORE"},
    {"MP21", "SEPA DIRECT DEBIT B2B"},
    {"MP22", "TRATTENUTA SU SOMME GIÀ RISCOSSE"},
    {"MP23", "PAGOPA"},
};

constexpr CodeText kCondizioniPagamento[] = {
    {"TP01", "PAGAMENTO A RATE"},
    {"TP02", "PAGAMENTO COMPLETO"},
    {"TP03", "ANTICIPO"},
};

constexpr CodeText kRegimeFiscale[] = {
    {"RF01", "ORDINARIO"},
    {"RF02", "CONTRIBUENTI MINIMI (L. 244/2007)"},
    {"RF04", "AGRICOLTURA E ATTIVITÀ CONNESSE, PESCA"},
    {"RF05", "VENDITA SALI E TABACCHI"},
    {"RF06", "COMMERCIO FIAMMIFERI"},
    {"RF07", "EDITORIA"},
    {"RF08", "GESTIONE SERVIZI DI TELEFONIA PUBBLICA"},
    {"RF09", "RIVENDITA DOCUMENTI DI TRASPORTO PUBBLICO E DI SOSTA"},
    {"RF10", "INTRATTENIMENTI, GIOCHI E ALTRE ATTIVITÀ"},
    {"RF11", "AGENZIE DI VIAGGIO E TURISMO"},
    {"RF12", "AGRITURISMO"},
    {"RF13", "VENDITE A DOMICILIO"},
    {"RF14", "RIVENDITA BENI USATI, OGGETTI D'ARTE, D'ANTIQUARIATO O DA COLLEZIONE"},
    {"RF15", "AGENZIE DI VENDITE ALL'ASTA DI OGGETTI D'ARTE, ANTIQUARIATO O DA COLLEZIONE"},
    {"RF16", "IVA PER CASSA P.A."},
    {"RF17", "IVA PER CASSA (D.L. 83/2012)"},
    {"RF18", "ALTRO"},
    {"RF19", "REGIME FORFETTARIO"},
    {"RF20", "FRANCHIGIA IVA TRANSFRONTALIERA UE"},
};

constexpr CodeText kEsigibilita[] = {
    {"I", "IMMEDIATA"},
    {"D", "DIFFERITA"},
    {"S", "SCISSIONE DEI PAGAMENTI"},
};

template <std::size_t N>
const CodeText *Find(const CodeText (&table)[N], std::string_view code)
{
    const CodeText *found = std::find_if(table, table + N, [&](const CodeText &entry) { return entry.code == code; });
    return found == table + N ? nullptr : found;
}

/// An absent code has no text; one outside its list is shown as unknown.
template <std::size_t N>
std::string_view TextOf(const CodeText (&table)[N], std::string_view code)
{
    if (code.empty()) return {};
    const CodeText *found = Find(table, code);
    return found ? found->text : kUnknown;
}

const NaturaFamily *FamilyOf(std::string_view natura)
{
    const std::string_view family = natura.substr(0, natura.find('.'));
    if (family.empty() && !natura.empty()) return nullptr;
    for (const NaturaFamily &entry : kNatura) {
        if (entry.natura == family) return &entry;
    }
    return nullptr;
}

} // namespace

std::string_view TipoDocumentoText(std::string_view tipo_documento)
{
    const CodeText *found = Find(kTipoDocumento, tipo_documento);
    return found ? found->text : kUnknown;
}

bool IsCreditNote(std::string_view tipo_documento)
{
    return tipo_documento == "TD04" || tipo_documento == "TD08";
}

bool IsKnownTipoDocumento(std::string_view tipo_documento)
{
    return Find(kTipoDocumento, tipo_documento) != nullptr ||
           std::ranges::find(kTipoDocumentoWithoutText, tipo_documento) != std::end(kTipoDocumentoWithoutText);
}

short NaturaToIvaTip(std::string_view natura)
{
    const NaturaFamily *family = FamilyOf(natura);
    return family ? family->iva_tip : short{0};
}

std::string_view IvaTipToNatura(short iva_tip)
{
    if (iva_tip == 6) return "N3"; // sales after a declaration of intent have a kind of their own in the books only
    for (const NaturaFamily &entry : kNatura) {
        if (entry.iva_tip == iva_tip) return entry.natura;
    }
    return {};
}

std::string_view NaturaText(std::string_view natura)
{
    const NaturaFamily *family = FamilyOf(natura);
    return family ? family->text : kUnknown;
}

bool IsKnownNatura(std::string_view natura)
{
    const NaturaFamily *family = FamilyOf(natura);
    if (family == nullptr || natura.empty()) return false;
    if (natura.size() == 2) return true;
    const int sub_code = natura.size() == 4 ? natura[3] - '0' : 0;
    return sub_code >= 1 && sub_code <= family->sub_codes;
}

std::string_view ModalitaPagamentoText(std::string_view modalita)
{
    return TextOf(kModalitaPagamento, modalita);
}

std::string_view CondizioniPagamentoText(std::string_view condizioni)
{
    return TextOf(kCondizioniPagamento, condizioni);
}

std::string_view RegimeFiscaleText(std::string_view regime)
{
    return TextOf(kRegimeFiscale, regime);
}

std::string_view EsigibilitaIvaText(std::string_view esigibilita)
{
    return TextOf(kEsigibilita, esigibilita);
}

} // namespace fatturapa
