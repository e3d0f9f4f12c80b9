#include "einvoice/CaricoMerci.h"

#include "einvoice/InvoiceRounding.h"
#include "tarvodlg/base/Dates.h"
#include "tarvodlg/base/Numbers.h"
#include "tarvodlg/base/UserInterface.h"
#include "tarvolumera/Protocols.h"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>
#include <fmt/printf.h>

namespace {

constexpr std::size_t kMessagesMax = 10; ///< an invoice of services must not cost a box for each line

bool Stop(LoadOutcome *outcome, const std::string &text)
{
    AfxMessageBox(text, MB_OK | MB_ICONSTOP);
    outcome->reason = text;
    return false;
}

bool Asked(const std::string &text, unsigned default_button)
{
    return AfxMessageBox(text, MB_YESNO | MB_ICONQUESTION | default_button) == IDYES;
}

/// The supplier whose goods these are: the one of the list, else the one on whom the invoice was registered.
long SupplierOf(SACommand *cmd, InvoiceRow row, const LoadChoices &choices)
{
    if (row.supplier != 0) return row.supplier;
    FORNITORI supplier;
    if (choices.supplier != 0 && sqlfor.Search(cmd, choices.supplier, &supplier)) return supplier.for_codice;
    if (row.entry == 0) return 0;
    SACommand query(cmd->Connection(), "SELECT pno_cli_for FROM admin.pnota1 WHERE pno_codice = :codice");
    query.Param("codice").setAsLong(row.entry);
    query.Execute();
    return query.FetchNext() ? query.Field(1).asLong() : 0;
}

bool IsReasonSet(SACommand *cmd)
{
    CAUMAG reason;
    return sqlcam.Search(cmd, lumera_db_flag.flg_cau_magazzino, &reason) && reason.cam_tipo == "C";
}

TESTATE HeadOf(long supplier, const fatturapa::DatiGeneraliDocumentoType &document)
{
    TESTATE head;
    head.tes_anno = Year(document.Data);
    head.tes_cod_for = supplier;
    head.tes_n_fat = Trimmed(document.Numero);
    head.tes_d_fat = document.Data;
    head.tes_cau = lumera_db_flag.flg_cau_magazzino;
    head.tes_data = document.Data;
    return head;
}

long CountLoads(SACommand *cmd, const TESTATE &head)
{
    SACommand query(cmd->Connection(),
                    "SELECT COUNT(*) FROM admin.testate1 WHERE tes_cod_for = :codfor AND tes_n_fat = :nfat AND "
                    "tes_d_fat = :dfat AND tes_anno = :anno");
    query.Param("codfor").setAsLong(head.tes_cod_for);
    query.Param("nfat").setAsString(head.tes_n_fat);
    query.Param("dfat").setAsDateTime(ToSqlDate(head.tes_d_fat));
    query.Param("anno").setAsLong(head.tes_anno);
    query.Execute();
    return query.FetchNext() ? query.Field(1).asLong() : 0;
}

/// Says of each line why it is left out; beyond some, only how many more there are.
void ShowDiscarded(const std::vector<std::string> &messages)
{
    for (std::size_t i = 0; i < std::min(messages.size(), kMessagesMax); ++i)
        AfxMessageBox(messages[i], MB_OK | MB_ICONEXCLAMATION);
    if (messages.size() > kMessagesMax)
        AfxMessageBox(fmt::format("Altre {} righe saranno scartate dal carico e dovranno essere inserite manualmente!",
                                  messages.size() - kMessagesMax),
                      MB_OK | MB_ICONEXCLAMATION);
}

/// Lines without a code cannot be matched, nor remembered: they go at once.
void DropLinesWithoutCode(GoodsOfInvoice *goods)
{
    std::vector<std::string> messages;
    std::erase_if(goods->lines, [&](const LoadLine &line) {
        if (!line.Code().empty()) return false;
        messages.push_back(fmt::sprintf("Nessun codice articolo presente per la riga n. %ld\n\nLa riga sarà scartata "
                                        "dal carico e dovrà essere inserita manualmente!",
                                        line.number));
        goods->notes.push_back(
            fmt::format("Riga {} scartata, senza codice articolo: {}.", line.number, FormatAmount(line.amount)));
        return true;
    });
    ShowDiscarded(messages);
}

bool IsUnmatched(const LoadLine &line)
{
    return line.article.empty();
}

/// Asks about the lines that are left without article, then takes them out. False when the user gives up.
bool DropUnmatchedLines(const LoadChoices &choices, GoodsOfInvoice *goods)
{
    if (std::none_of(goods->lines.begin(), goods->lines.end(), IsUnmatched)) return true;
    // Yes gives up and changes nothing, so it is the default here.
    if (!choices.skip_unmatched &&
        Asked("Ci sono ancora articoli non accoppiati!\n\nVuoi annullare l'operazione?", MB_DEFBUTTON1))
        return false;
    std::vector<std::string> messages;
    std::erase_if(goods->lines, [&](const LoadLine &line) {
        if (!IsUnmatched(line)) return false;
        messages.push_back(fmt::sprintf("Non è possibile accoppiare l'articolo della riga n. %ld\n\nLa riga sarà "
                                        "scartata dal carico e dovrà essere inserita manualmente!",
                                        line.number));
        goods->notes.push_back(fmt::format("Riga {} scartata, articolo {} non accoppiato: {}.", line.number,
                                           line.Code(), FormatAmount(line.amount)));
        return true;
    });
    ShowDiscarded(messages);
    return true;
}

bool MatchByHand(long supplier, const LoadChoices &choices, std::vector<LoadLine> *lines)
{
    const bool is_wanted = std::any_of(lines->begin(), lines->end(), [](const LoadLine &line) {
        return IsUnmatched(line) || line.match == ArticleMatch::OwnCode;
    });
    return !is_wanted || !choices.match_by_hand || choices.match_by_hand(supplier, lines);
}

void ShowDiscountWarnings(const GoodsOfInvoice &goods)
{
    constexpr const char *kCheck =
        "Uno o più sconti non sono stati applicati. Si prega di controllare i totali del carico.";
    if (goods.has_value_discount)
        AfxMessageBox(fmt::format("Nella testata del Documento sono presenti sconti/magg. a valore non gestiti da "
                                  "Lumera!\n\n{}",
                                  kCheck),
                      MB_OK | MB_ICONEXCLAMATION);
    if (goods.has_more_discounts)
        AfxMessageBox(fmt::format("Nel Documento sono presenti più sconti di quelli gestiti da Lumera!\n\n{}", kCheck),
                      MB_OK | MB_ICONEXCLAMATION);
}

RIGHE RowOf(const LoadLine &line, long index)
{
    RIGHE row;
    row.rig_idx = index;
    row.rig_articolo = line.article;
    row.rig_desc = OnOneLine(line.description);
    row.rig_um = line.unit;
    row.rig_qta = line.quantity;
    row.rig_prezzo = line.price;
    row.rig_sconto_1 = line.discounts[0];
    row.rig_sconto_2 = line.discounts[1];
    row.rig_sconto_3 = line.discounts[2];
    row.rig_importo = line.amount;
    row.rig_aliquota = line.rate;
    return row;
}

/// Writes document, rows and new matches. False when another station loaded the same invoice meanwhile.
bool Store(SACommand *cmd, long loads_seen, LoadOutcome *outcome)
{
    TESTATE &head = outcome->document;
    SATransaction transaction(cmd);
    LockNumbers(cmd, NumberSeries::Warehouse);
    if (CountLoads(cmd, head) != loads_seen) return false;
    head.tes_codice = sqltes.NextCode(cmd);
    head.tes_rif = fmt::sprintf("RIF. CARICO N. %ld/%-s", head.tes_codice, std::to_string(head.tes_anno));
    sqltes.SqlTransaction(cmd, kInsert, &head);
    for (RIGHE &row : outcome->rows) {
        row.rig_codice = head.tes_codice;
        sqlrig.SqlTransaction(cmd, kInsert, &row);
    }
    for (const LoadLine &line : outcome->lines) {
        if (line.match == ArticleMatch::ByHand)
            sqlarf.Remember(cmd, {head.tes_cod_for, Text<35>(line.Code()), line.article});
    }
    transaction.Commit();
    return true;
}

/// Half a cent for each row is what rounding alone may differ by; more than that is shown.
void CompareTotals(LoadOutcome *outcome)
{
    const double difference = Round(outcome->document.tes_totale - outcome->taxable, 2);
    if (TestIfZero(difference)) return;
    const std::string text = fmt::format("Totale del carico {}, imponibile della fattura {}, differenza {}.",
                                         FormatAmount(outcome->document.tes_totale), FormatAmount(outcome->taxable),
                                         FormatAmount(difference));
    outcome->notes.push_back(text);
    if (std::fabs(difference) > 0.005 * static_cast<double>(outcome->rows.size() + 1))
        AfxMessageBox(text, MB_OK | MB_ICONINFORMATION);
}

void AddRows(LoadOutcome *outcome)
{
    long long cents = 0;
    for (const LoadLine &line : outcome->lines) {
        outcome->rows.push_back(RowOf(line, static_cast<long>(outcome->rows.size()) + 1));
        cents += ToCents(line.amount);
    }
    outcome->document.tes_totale = FromCents(cents);
}

/// From the goods to what will be stored: articles, discounts, questions. False when the load stops.
bool Prepare(SACommand *cmd, const LoadChoices &choices, GoodsOfInvoice goods, LoadOutcome *outcome)
{
    DropLinesWithoutCode(&goods);
    const long supplier = outcome->document.tes_cod_for;
    MatchArticles(cmd, supplier, &goods.lines);
    if (!MatchByHand(supplier, choices, &goods.lines) || !DropUnmatchedLines(choices, &goods)) {
        outcome->reason = "Carico annullato: ci sono articoli non accoppiati.";
        return false;
    }
    if (goods.lines.empty()) return Stop(outcome, "Nessuna riga della fattura può essere caricata in magazzino.");
    ShowDiscountWarnings(goods);
    outcome->lines = std::move(goods.lines);
    outcome->notes = std::move(goods.notes);
    AddRows(outcome);
    return true;
}

bool CheckBeforeLoad(SACommand *cmd, const fatturapa::FatturaElettronicaBody &body, const GoodsOfInvoice &goods,
                     LoadOutcome *outcome)
{
    if (body.DatiBeniServizi.DettaglioLinee.empty())
        return Stop(outcome, "Il documento non contiene linee di dettaglio!");
    if (goods.lines.empty()) return Stop(outcome, "Il documento non contiene righe di dettaglio dei beni/servizi!");
    if (!IsReasonSet(cmd)) return Stop(outcome, "Causale Magazzino non impostata o non valida!");
    return true;
}

} // namespace

LoadOutcome LoadIntoWarehouse(SACommand *cmd, long code, std::size_t document, const LoadChoices &choices)
{
    CommandScope scope(cmd);
    LoadOutcome outcome;
    CFattureElettronicheDB content;
    const ALLEGATI filed = LoadInvoice(scope.get(), code, &content);
    const fatturapa::FatturaElettronicaBody &body = content.Documents().at(document);
    GoodsOfInvoice goods = ReadGoods(body);
    if (!CheckBeforeLoad(scope.get(), body, goods, &outcome)) return outcome;

    const long supplier = SupplierOf(scope.get(), DescribeInvoice(scope.get(), filed, content, document), choices);
    if (supplier == 0) {
        Stop(&outcome, "Il fornitore della fattura non è in archivio: va creato, o la fattura contabilizzata, prima "
                       "del carico.");
        return outcome;
    }
    outcome.document = HeadOf(supplier, body.DatiGenerali.DatiGeneraliDocumento);
    outcome.taxable = SignOf(body) * fatturapa::SumOfSummary(body).imponibile;
    const long loads = CountLoads(scope.get(), outcome.document);
    if (loads > 0 &&
        !Asked("Attenzione!\n\nIl documento è già stato caricato in magazzino.\n\nVuoi Continuare?", MB_DEFBUTTON2)) {
        outcome.reason = "Il documento è già stato caricato in magazzino.";
        return outcome;
    }
    if (!Prepare(scope.get(), choices, std::move(goods), &outcome)) return outcome;
    if (!Store(scope.get(), loads, &outcome)) {
        Stop(&outcome, "Il documento è stato caricato in questo momento da un'altra stazione.");
        return outcome;
    }
    outcome.loaded = true;
    CompareTotals(&outcome);
    AfxMessageBox("Carico in magazzino correttamente eseguito!", MB_OK | MB_ICONINFORMATION);
    return outcome;
}
