#include "desk/ui/Functions.h"

#include "desk/ui/ArchiveFunctions.h"
#include "desk/ui/Opening.h"
#include "desk/ui/StampaPrimaNota.h"
#include "einvoice/ui/FattureElettroniche.h"
#include "einvoice/ui/RegistraFatture.h"
#include "ledger/ui/GestionePrimaNota.h"
#include "ledger/ui/PNota.h"
#include "schedule/ui/CruscottoScadenze.h"
#include "schedule/ui/EstrattiContoScadenze.h"
#include "schedule/ui/GestioneScadenze.h"
#include "schedule/ui/ImpScadenzeExcel.h"
#include "schedule/ui/ScadenzeSt.h"
#include "schedule/ui/ScadenzeTotali.h"
#include "tables/ChartPrint.h"
#include "tables/ui/Agenti.h"
#include "tables/ui/Articoli.h"
#include "tables/ui/Azienda.h"
#include "tables/ui/Banche.h"
#include "tables/ui/Causali.h"
#include "tables/ui/CausaliMagazzino.h"
#include "tables/ui/CentriCosto.h"
#include "tables/ui/ClientiNew.h"
#include "tables/ui/CodiciIva.h"
#include "tables/ui/Fornitori.h"
#include "tables/ui/Pagamenti.h"
#include "tables/ui/PianoContiEd.h"
#include "tables/ui/Sezioni.h"
#include "tarvolumera/Counterparts.h"

#include <QStringList>

namespace {

/// Opens a window of the suite and waits for its end.
template <class Dialog>
void Open(QWidget *parent)
{
    Dialog(parent).DoModal();
}

void AddLedger(std::vector<DeskFunction> *functions)
{
    const QString area = QStringLiteral("Contabilità");
    functions->push_back({area, QStringLiteral("Prima nota"), QStringLiteral("contabilita"),
                          QStringLiteral("Ctrl+Shift+P"), Open<CGestionePrimaNota>,
                          QStringLiteral("L'elenco dei movimenti: si sfogliano, si cercano, si modificano")});
    functions->push_back({area, QStringLiteral("Nuovo movimento"), QStringLiteral("nuovo"), QStringLiteral("Ctrl+M"),
                          [](QWidget *parent) { CPNota(nullptr, parent).DoModal(); },
                          QStringLiteral("Registra fatture, incassi, pagamenti e ogni altra scrittura")});
    functions->push_back({area, QStringLiteral("Stampa movimenti di prima nota"), QStringLiteral("stampa"),
                          QStringLiteral("Ctrl+P"), Open<CStampaPrimaNota>,
                          QStringLiteral("L'elenco dei movimenti per data, numero, sezione o causale, con i totali")});
    functions->push_back({area, QStringLiteral("Stampa piano dei conti"), QStringLiteral("conti"),
                          QStringLiteral("Ctrl+Shift+T"), [](QWidget *) { PrintChartOfAccounts(); },
                          QStringLiteral("Mastri, conti e sottoconti")});
}

void AddSchedule(std::vector<DeskFunction> *functions)
{
    const QString area = QStringLiteral("Scadenze");
    const auto list_of = [](long side) {
        return [side](QWidget *parent) {
            CGestioneScadenze list(parent);
            list.m_relaz = static_cast<short>(side);
            list.DoModal();
        };
    };
    functions->push_back({area, QStringLiteral("Scadenze clienti"), QStringLiteral("clienti"),
                          QStringLiteral("Ctrl+Shift+L"), list_of(kCustomer),
                          QStringLiteral("Che cosa c'è da incassare: elenco per data, totali, modifica, stampa")});
    functions->push_back({area, QStringLiteral("Scadenze fornitori"), QStringLiteral("fornitori"),
                          QStringLiteral("Ctrl+Shift+R"), list_of(kSupplier),
                          QStringLiteral("Che cosa c'è da pagare: elenco per data, totali, modifica, stampa")});
    functions->push_back({area, QStringLiteral("Scadenzario"), QStringLiteral("calendario"),
                          QStringLiteral("Ctrl+Shift+Z"), Open<CScadenzeSt>,
                          QStringLiteral("Incassi e pagamenti per settimana o per mese, con il saldo progressivo")});
    functions->push_back({area, QStringLiteral("Cruscotto scadenze"), QStringLiteral("cruscotto"),
                          QStringLiteral("Ctrl+Shift+H"), Open<CCruscottoScadenze>,
                          QStringLiteral("Incassi e pagamenti attesi mese per mese in un grafico, chi è in ritardo")});
    functions->push_back({area, QStringLiteral("Anzianità dei saldi"), QStringLiteral("anzianita"),
                          QStringLiteral("Ctrl+Shift+O"), Open<CScadenzeTotali>,
                          QStringLiteral("Chi deve che cosa e da quanto: scaduto a 30, 60, 90, 120 giorni e oltre")});
    functions->push_back({area, QStringLiteral("Estratti conto scadenze"), QStringLiteral("estratto-conto"),
                          QStringLiteral("Ctrl+Shift+X"), Open<CEstrattiContoScadenze>,
                          QStringLiteral("Le scadenze di un cliente o di un fornitore, con la lettera da spedire")});
    functions->push_back({area, QStringLiteral("Importa saldi iniziali da Excel..."), QStringLiteral("excel"),
                          QStringLiteral("Ctrl+Shift+J"), [](QWidget *) { ImpScadenzeExcel(); },
                          QStringLiteral("I saldi aperti di clienti e fornitori del programma precedente")});
}

void AddInvoices(std::vector<DeskFunction> *functions)
{
    const QString area = QStringLiteral("Fatture elettroniche");
    functions->push_back(
        {area, QStringLiteral("Fatture ricevute"), QStringLiteral("fatture"), QStringLiteral("Ctrl+Shift+M"),
         Open<CFattureElettroniche>,
         QStringLiteral("Si caricano, si leggono, si registrano, entrano in magazzino, si esportano")});
    functions->push_back({area, QStringLiteral("Registra le fatture da registrare..."), QStringLiteral("contabilita"),
                          QStringLiteral("Ctrl+Shift+Y"), Open<CRegistraFatture>,
                          QStringLiteral("Molte in una volta: prima si vede come, poi si registrano insieme")});
}

void AddTables(std::vector<DeskFunction> *functions)
{
    struct Table {
        const char *caption, *icon, *shortcut, *hint;
        void (*run)(QWidget *);
    };
    constexpr Table kTables[] = {
        {"Clienti", "clienti", "Ctrl+Shift+C", "Anagrafica, partita IVA, pagamento, banca e conto dei clienti",
         Open<CClientiNew>},
        {"Fornitori", "fornitori", "Ctrl+Shift+F", "Anagrafica, partita IVA, causale e pagamento dei fornitori",
         Open<CFornitori>},
        {"Causali", "causale", "Ctrl+Shift+U", "I tipi di movimento, con il registro e le righe che propongono",
         Open<CCausali>},
        {"Codici IVA", "iva", "Ctrl+Shift+I", "Aliquote, nature e indetraibilità", Open<CCodiciIva>},
        {"Pagamenti", "pagamento", "Ctrl+Shift+G", "Le condizioni da cui nascono le scadenze", Open<CPagamenti>},
        {"Piano dei conti", "conti", "Ctrl+Shift+D", "Mastri, conti e sottoconti uno accanto all'altro",
         Open<CPianoContiEd>},
        {"Sezioni", "sezione", "Ctrl+Shift+S", "Le sezioni IVA, con registri e protocolli propri", Open<CSezioni>},
        {"Banche", "banca", "Ctrl+Shift+B", "Le banche d'appoggio proprie e altrui", Open<CBanche>},
        {"Centri di costo", "centro-costo", "Ctrl+Shift+E", "La contabilità analitica", Open<CCentriCosto>},
        {"Agenti", "tabelle", "Ctrl+Shift+N", "Gli agenti dei clienti", Open<CAgenti>},
        {"Articoli", "tabelle", "Ctrl+Shift+Q", "Gli articoli di magazzino che le fatture ricevute caricano",
         Open<CArticoli>},
        {"Causali di magazzino", "causale", "Ctrl+Shift+W", "Perché la merce entra ed esce", Open<CCausaliMagazzino>},
        {"Azienda e impostazioni", "azienda", "Ctrl+Shift+A",
         "Dati dell'azienda, esercizio, conti e causali che il programma usa da sé", Open<CAzienda>},
    };
    for (const Table &table : kTables)
        functions->push_back({QStringLiteral("Tabelle"), QString::fromUtf8(table.caption),
                              QString::fromUtf8(table.icon), QString::fromUtf8(table.shortcut), table.run,
                              QString::fromUtf8(table.hint)});
}

void AddArchive(std::vector<DeskFunction> *functions)
{
    const QString area = QStringLiteral("Archivio");
    functions->push_back(
        {area, QStringLiteral("Verifica"), QStringLiteral("archivio"), QStringLiteral("Ctrl+Shift+V"),
         [](QWidget *parent) { CheckArchiveOf(parent); },
         QStringLiteral("Controlla quadrature, totali, collegamenti, protocolli, scadenze e documenti")});
    functions->push_back({area, QStringLiteral("Copia di sicurezza..."), QStringLiteral("archivio"),
                          QStringLiteral("Ctrl+Shift+K"), [](QWidget *) { CopyArchiveToPickedFile(); },
                          QStringLiteral("Scrive l'intero archivio in un file, anche mentre altri lavorano")});
    functions->push_back({area, QStringLiteral("Apri azienda..."), QStringLiteral("azienda"), QStringLiteral("Ctrl+O"),
                          [](QWidget *parent) { OpenAnotherCompany(parent); },
                          QStringLiteral("Passa a un'altra azienda conosciuta o ne cerca una"), false});
    functions->push_back({area, QStringLiteral("Nuova azienda..."), QStringLiteral("azienda"), QStringLiteral("Ctrl+N"),
                          [](QWidget *parent) { MakeNewCompany(parent); },
                          QStringLiteral("Crea l'archivio di un'azienda con le tabelle di base"), false});
}

} // namespace

const std::vector<DeskArea> &DeskAreas()
{
    static const std::vector<DeskArea> areas = {
        {QStringLiteral("Contabilità"), QStringLiteral("contabilita"), 1},
        {QStringLiteral("IVA"), QStringLiteral("iva"), 2},
        {QStringLiteral("Scadenze"), QStringLiteral("scadenze"), 3},
        {QStringLiteral("Fatture elettroniche"), QStringLiteral("fatture"), 4},
        {QStringLiteral("Comunicazioni"), QStringLiteral("comunicazioni"), 5},
        {QStringLiteral("Fine anno"), QStringLiteral("fineanno"), 6},
        {QStringLiteral("Tabelle"), QStringLiteral("tabelle"), 7},
        {QStringLiteral("Archivio"), QStringLiteral("archivio"), 8},
    };
    return areas;
}

std::vector<DeskFunction> DeskFunctions()
{
    std::vector<DeskFunction> functions;
    AddLedger(&functions);
    AddSchedule(&functions);
    AddInvoices(&functions);
    AddTables(&functions);
    AddArchive(&functions);
    return functions;
}

QString Folded(const QString &text)
{
    QString folded;
    for (const QChar c : text.normalized(QString::NormalizationForm_D))
        if (c.category() != QChar::Mark_NonSpacing) folded += c.toLower();
    return folded;
}

bool Matches(const DeskFunction &function, const QString &typed)
{
    const QString text =
        Folded(function.caption + QLatin1Char('\n') + function.hint + QLatin1Char('\n') + function.area);
    for (const QString &word : Folded(typed).split(QLatin1Char(' '), Qt::SkipEmptyParts))
        if (!text.contains(word)) return false;
    return true;
}
