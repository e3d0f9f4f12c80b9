#include "tarvodlg/base/Dbisam.h"

#include <fmt/format.h>

namespace {

struct NumberedMessage {
    int number;
    const char *text;
};

constexpr NumberedMessage kMessages[] = {
    {20006, "Il conto di contropartita non esiste nel piano dei conti !"},
    {20024, "Data esterna all' esercizio consentito !"},
    {20025, "Il movimento non quadra: il totale Dare è diverso dal totale Avere !\n\nVuoi Continuare ?"},
    {20031, "La causale scelta non è una causale di clienti !"},
    {20060, "Registrazione non trovata in archivio !"},
    {20073, "La causale scelta non è una causale di fornitori !"},
    {20104, "Manca la causale per i pagamenti ai fornitori: impostarla nei dati della ditta !"},
    {20105, "La causale scelta deve movimentare il solo libro giornale !"},
    {20106, "La causale scelta non deve movimentare l' IVA !"},
    {20107, "La causale scelta non deve essere di IVA in sospensione !"},
    {20108, "Manca la causale per gli incassi dai clienti: impostarla nei dati della ditta !"},
    {20140, "Manca il conto per le differenze di arrotondamento: impostarlo nei dati della ditta !"},
    {20152, "La data non è in ordine con le registrazioni già presenti in archivio !\n\nVuoi Continuare ?"},
};

} // namespace

std::string ApplicationMessage(int number)
{
    for (const NumberedMessage &message : kMessages)
        if (message.number == number) return message.text;
    return fmt::format("Errore n. {}", number);
}

std::string SourceTag(std::string_view file, int line)
{
    file.remove_prefix(file.rfind('/') + 1); // npos + 1 is 0: a bare name stays whole
    return fmt::format("{}:{}", file.substr(0, file.rfind('.')), line);
}

int DBISAM(int number, const char *tag, unsigned flags)
{
    std::string text = ApplicationMessage(number);
    const bool is_question = (flags & 0xFu) != MB_OK;
    if (!is_question && tag != nullptr && *tag != '\0') text += fmt::format("\n\n[{}]", tag);
    return AfxMessageBox(text, flags);
}
