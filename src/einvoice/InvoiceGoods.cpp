#include "einvoice/CaricoMerci.h"

#include "einvoice/InvoiceRounding.h"
#include "tarvodlg/base/Numbers.h"

#include <algorithm>
#include <cmath>
#include <fmt/format.h>
#include <unordered_map>

// From the lines of an invoice to goods, and from their codes to articles.

namespace {

constexpr double kAmountMax = 1e12; ///< the most that a line may come to
constexpr std::size_t kDiscountsMax = std::tuple_size_v<decltype(LoadLine::discounts)>;

bool IsEanType(std::string_view type)
{
    const std::string upper = ToUpper(type);
    constexpr const char *kNames[] = {"EAN", "GTIN", "BARCODE", "BAR CODE", "UPC"};
    return std::any_of(std::begin(kNames), std::end(kNames),
                       [&](const char *name) { return upper.find(name) != std::string::npos; });
}

/// Codes that classify goods and name no article: customs tariff, public procurement, fuel.
bool IsClassification(std::string_view type)
{
    const std::string upper = ToUpper(Trimmed(type));
    return upper == "TARIC" || upper == "CPV" || upper == "CARB" || upper == "SSCC" || upper == "CNAE";
}

/// Why a line is no goods; null when it is.
const char *NoGoods(const fatturapa::DettaglioLineeType &line)
{
    const std::string &kind = line.TipoCessionePrestazione;
    if (kind == "SC") return "sconto";
    if (kind == "PR") return "premio";
    if (kind == "AB") return "abbuono";
    if (kind == "AC") return "spesa accessoria";
    // Free goods have a quantity and a code; a line of text has an amount of nothing.
    const bool has_quantity = line.Quantita.value_or(0) != 0;
    if (TestIfZero(line.PrezzoTotale, 8) &&
        (!has_quantity || (TestIfZero(line.PrezzoUnitario, 8) && line.CodiceArticolo.empty())))
        return "riga descrittiva";
    return nullptr;
}

/// What a percentage leaves of the price: 10 leaves 0.9, a surcharge of 10 (-10) leaves 1.1.
double Left(double percent)
{
    return 1 - percent / 100;
}

double SignedPercent(const fatturapa::ScontoMaggiorazioneType &discount)
{
    return discount.Percentuale.value_or(0) * (discount.Tipo == "MG" ? -1 : 1);
}

bool IsByValue(const fatturapa::ScontoMaggiorazioneType &discount)
{
    return discount.Percentuale.value_or(0) == 0 && discount.Importo.value_or(0) != 0;
}

/// The discounts of a line in percent. An amount off the price has no percentage of its own: then all discounts of the
/// line are put as the one that the line's total shows.
std::vector<double> DiscountsOf(const fatturapa::DettaglioLineeType &line, double quantity)
{
    std::vector<double> percents;
    const auto &discounts = line.ScontoMaggiorazione;
    const double gross = quantity * line.PrezzoUnitario;
    if (std::any_of(discounts.begin(), discounts.end(), IsByValue) && gross != 0) {
        percents.push_back(Round((1 - line.PrezzoTotale / gross) * 100, 6));
        return percents;
    }
    for (const auto &discount : discounts)
        if (SignedPercent(discount) != 0) percents.push_back(SignedPercent(discount));
    return percents;
}

/// What the lines come to, as the file has them.
double SumOfLines(const fatturapa::FatturaElettronicaBody &body)
{
    double sum = 0;
    for (const auto &line : body.DatiBeniServizi.DettaglioLinee) sum += line.PrezzoTotale;
    return sum;
}

/// What the taxable amounts have beside the lines: accessory expenses and contributions to pension funds.
double BesideLines(const fatturapa::FatturaElettronicaBody &body)
{
    double sum = 0;
    for (const auto &row : body.DatiBeniServizi.DatiRiepilogo) sum += row.SpeseAccessorie.value_or(0);
    for (const auto &fund : body.DatiGenerali.DatiGeneraliDocumento.DatiCassaPrevidenziale)
        sum += fund.ImportoContributoCassa;
    return sum;
}

/// Many sellers name in the head a discount that their lines have had already: it is one more only when the taxable
/// amounts are nearer to the lines with it than to the lines as they are.
bool IsStillToBeTaken(const fatturapa::FatturaElettronicaBody &body, const std::vector<double> &percents)
{
    const double taxable = fatturapa::SumOfSummary(body).imponibile - BesideLines(body);
    const double lines = SumOfLines(body);
    double with_discounts = lines;
    for (const double percent : percents) with_discounts *= Left(percent);
    return std::fabs(taxable - with_discounts) < std::fabs(taxable - lines);
}

/// Percentages on the whole document are further discounts of each line.
std::vector<double> HeadDiscounts(const fatturapa::FatturaElettronicaBody &body, GoodsOfInvoice *goods)
{
    std::vector<double> percents;
    for (const auto &discount : body.DatiGenerali.DatiGeneraliDocumento.ScontoMaggiorazione) {
        if (IsByValue(discount))
            goods->has_value_discount = true;
        else if (SignedPercent(discount) != 0)
            percents.push_back(SignedPercent(discount));
    }
    if (!percents.empty() && !IsStillToBeTaken(body, percents)) percents.clear();
    return percents;
}

/// The highest price of each article of the document, by the first of its codes.
using Prices = std::unordered_map<std::string_view, double>;

Prices HighestPrices(const fatturapa::FatturaElettronicaBody &body)
{
    Prices prices;
    for (const auto &line : body.DatiBeniServizi.DettaglioLinee) {
        if (line.CodiceArticolo.empty()) continue;
        double &highest = prices[line.CodiceArticolo.front().CodiceValore];
        highest = std::max(highest, line.PrezzoUnitario);
    }
    return prices;
}

/// A price cut written as a line of its own: the article is in another line at a higher price. Goods that go back are
/// written with their whole price, or alone.
bool IsPriceCut(const Prices &prices, const fatturapa::DettaglioLineeType &line)
{
    return line.PrezzoUnitario < 0 && !line.CodiceArticolo.empty() &&
           prices.at(line.CodiceArticolo.front().CodiceValore) > -line.PrezzoUnitario;
}

void TakeCodes(const fatturapa::DettaglioLineeType &line, LoadLine *goods)
{
    for (const auto &code : line.CodiceArticolo) {
        const std::string value(Trimmed(code.CodiceValore));
        if (value.empty() || IsClassification(code.CodiceTipo)) continue;
        (IsEanType(code.CodiceTipo) ? goods->eans : goods->codes).push_back(value);
    }
}

/// Discounts and amount. The file's own total counts as long as every discount could be put down; beside discounts
/// that were left out it would hide them.
void TakeAmount(const fatturapa::DettaglioLineeType &line, const std::vector<double> &head, int sign,
                GoodsOfInvoice *goods, LoadLine *result)
{
    const double quantity = line.Quantita.value_or(1);
    std::vector<double> percents = DiscountsOf(line, quantity);
    double amount = line.PrezzoTotale;
    for (const double percent : head) {
        percents.push_back(percent);
        amount *= Left(percent);
    }
    if (percents.size() > kDiscountsMax) {
        goods->has_more_discounts = true;
        percents.resize(kDiscountsMax);
        amount = quantity * line.PrezzoUnitario;
        for (const double percent : percents) amount *= Left(percent);
    }
    std::copy(percents.begin(), percents.end(), result->discounts.begin());
    result->amount = Round(sign * amount, 2);
    result->quantity = sign * quantity;
    result->price = line.PrezzoUnitario;
    if (result->price < 0) { // what goes back, written with a negative price
        result->price = -result->price;
        result->quantity = -result->quantity;
    }
}

std::string FirstArticle(SACommand *cmd, const std::vector<std::string> &codes)
{
    ARTICOLI article;
    for (const std::string &code : codes)
        if (sqlart.Search(cmd, code, &article)) return article.art_codice.str();
    return {};
}

std::string FirstArticleByEan(SACommand *cmd, const std::vector<std::string> &eans)
{
    ARTICOLI article;
    for (const std::string &ean : eans)
        if (sqlart.SearchByEan(cmd, ean, &article)) return article.art_codice.str();
    return {};
}

std::string Remembered(SACommand *cmd, long supplier, const LoadLine &line)
{
    ARTFORN pair;
    for (const auto *codes : {&line.codes, &line.eans})
        for (const std::string &code : *codes)
            if (sqlarf.Search(cmd, supplier, code, &pair)) return pair.arf_articolo.str();
    return {};
}

void Match(SACommand *cmd, long supplier, LoadLine *line)
{
    if (const std::string article = Remembered(cmd, supplier, *line); !article.empty()) {
        line->article = article;
        line->match = ArticleMatch::Remembered;
        return;
    }
    const std::string own = FirstArticle(cmd, line->codes), by_ean = FirstArticleByEan(cmd, line->eans);
    if (!own.empty() && !by_ean.empty() && own != by_ean) return; // a supplier's code that happens to be one of ours
    if (own.empty() && by_ean.empty()) return;
    line->article = own.empty() ? by_ean : own;
    line->match = by_ean.empty() ? ArticleMatch::OwnCode : ArticleMatch::Ean;
}

} // namespace

const char *ArticleMatchText(ArticleMatch match)
{
    switch (match) {
    case ArticleMatch::Remembered:
        return "abbinamento noto";
    case ArticleMatch::OwnCode:
        return "codice nostro";
    case ArticleMatch::Ean:
        return "codice a barre";
    case ArticleMatch::ByHand:
        return "a mano";
    case ArticleMatch::None:
        break;
    }
    return "";
}

const std::string &LoadLine::Code() const
{
    static const std::string kNone;
    if (!codes.empty()) return codes.front();
    return eans.empty() ? kNone : eans.front();
}

GoodsOfInvoice ReadGoods(const fatturapa::FatturaElettronicaBody &body)
{
    GoodsOfInvoice goods;
    const int sign = SignOf(body);
    const std::vector<double> head = HeadDiscounts(body, &goods);
    const Prices prices = HighestPrices(body);
    for (const auto &line : body.DatiBeniServizi.DettaglioLinee) {
        if (const char *why = IsPriceCut(prices, line) ? "sconto" : NoGoods(line)) {
            if (!TestIfZero(line.PrezzoTotale))
                goods.notes.push_back(fmt::format("Riga {} non caricata, {}: {}.", line.NumeroLinea, why,
                                                  FormatAmount(line.PrezzoTotale)));
            continue;
        }
        LoadLine result;
        result.number = line.NumeroLinea;
        result.description = line.Descrizione;
        result.unit = line.UnitaMisura;
        result.rate = line.AliquotaIVA;
        TakeCodes(line, &result);
        TakeAmount(line, head, sign, &goods, &result);
        if (!std::isfinite(result.amount) || std::fabs(result.amount) > kAmountMax) {
            goods.notes.push_back(fmt::format("Riga {} non caricata, importo fuori dai limiti.", line.NumeroLinea));
            continue;
        }
        goods.lines.push_back(std::move(result));
    }
    return goods;
}

void MatchArticles(SACommand *cmd, long supplier, std::vector<LoadLine> *lines)
{
    CommandScope scope(cmd);
    for (LoadLine &line : *lines)
        if (line.article.empty()) Match(scope.get(), supplier, &line);
}
