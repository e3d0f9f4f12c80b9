#include "einvoice/ui/AccoppiaArticoli.h"

#include "tables/ui/Articoli.h"
#include "tarvodlg/base/Dbisam.h"
#include "tarvodlg/widgets/FormBuilder.h"
#include "tarvodlg/widgets/SpreadColumns.h"
#include "tarvolumera/Counterparts.h"

#include <QAbstractButton>
#include <QLabel>
#include <algorithm>
#include <fmt/format.h>

namespace {

enum LineColumn : long { kNumber = 1, kCode, kText, kQuantity, kPrice, kArticle, kArticleText, kHow };

constexpr std::size_t kMatches = 2; ///< one is taken, more are for the list to show

std::optional<std::string> ArticleName(std::string_view code)
{
    ARTICOLI article;
    if (!sqlart.Search(nullptr, code, &article)) return std::nullopt;
    return article.art_desc.str();
}

/// A code of the supplier that can be ours too, when it is free.
std::string ProposedCode(const LoadLine &line)
{
    const std::string code = ToUpper(line.Code());
    ARTICOLI article;
    const bool fits = Utf8Length(code) <= article.art_codice.MaxLength();
    return fits && !sqlart.Search(nullptr, code, &article) ? code : std::string();
}

} // namespace

CAccoppiaArticoli::CAccoppiaArticoli(long supplier, std::vector<LoadLine> *lines, CWnd *parent)
    : CTarvoDialog(parent), supplier_(supplier), lines_(lines)
{
    setWindowTitle("Accoppia articoli");
    BuildGrid();
    ok_ = AddCommand({.caption = "F2 - &OK",
                      .tooltip = "Conferma gli articoli e li ricorda per il fornitore",
                      .icon = "salva",
                      .run = [this] { OnOK(); }});
    AddCommand({.caption = "F3 - &Nuovo",
                .tooltip = "Crea un articolo dalla riga della fattura",
                .icon = "nuovo",
                .run = [this] { OnRecordNuovo(); },
                .checks_field = false});
}

QSize CAccoppiaArticoli::sizeHint() const
{
    const QSize window = CTarvoDialog::sizeHint();
    return {WholeListSize(window, grid_).width(), window.height()};
}

std::function<bool(long, std::vector<LoadLine> *)> CAccoppiaArticoli::Matcher(CWnd *parent)
{
    return [parent](long supplier, std::vector<LoadLine> *lines) {
        return CAccoppiaArticoli(supplier, lines, parent).DoModal() == IDOK;
    };
}

void CAccoppiaArticoli::BuildGrid()
{
    FormBuilder form(this);
    FORNITORI supplier;
    Guarded(LUMERA_TAG, [&] { sqlfor.Search(nullptr, supplier_, &supplier); });
    form.Info("Fornitore")->setText(ToQt(fmt::format("{} {}", supplier_, OnOneLine(supplier.for_desc))));

    using Type = CSpreadSheet::Type;
    grid_ = new CSpreadSheet(this);
    grid_->SetColumns({{.title = "Riga", .type = Type::Code, .width = 5, .locked = true},
                       {.title = "Codice", .width = 15, .locked = true},
                       {.title = "Descrizione in fattura", .width = 30, .locked = true, .stretch = true},
                       {.title = "Quantità", .type = Type::Amount, .width = 11, .locked = true, .decimals = 3},
                       {.title = "Prezzo", .type = Type::Amount, .width = 12, .locked = true, .decimals = 4},
                       {.title = "Articolo", .width = 16},
                       {.title = "Descrizione articolo", .width = 26, .locked = true},
                       {.title = "Trovato per", .width = 15, .locked = true}});
    grid_->setAccessibleName("Righe della fattura");
    grid_->on_leave_cell = [this](long row, long column) { return OnLeaveCellSpread(row, column); };
    grid_->on_dbl_click = [this](long row, long) {
        if (row > 0) Guarded(LUMERA_TAG, [&] { Browse(row, grid_->Text(row, kArticle)); });
    };
    grid_->on_advance = [this](bool forward) {
        if (forward) ok_->setFocus(Qt::TabFocusReason);
    };
    form.Fill(grid_);
}

bool CAccoppiaArticoli::OnInitDialog()
{
    return Guarded(LUMERA_TAG, [this] {
        ShowLines();
        ShowCount();
        SetChanged(false);
        grid_->setFocus();
        // Once the window is there: a dialog that shows enters its first control as Tab does, at the first cell.
        QMetaObject::invokeMethod(
            this,
            [this] {
                const auto open = std::find_if(lines_->begin(), lines_->end(),
                                               [](const LoadLine &line) { return line.article.empty(); });
                const long row = open == lines_->end() ? 1 : static_cast<long>(open - lines_->begin()) + 1;
                grid_->SetActiveCell(row, kArticle);
            },
            Qt::QueuedConnection);
    });
}

void CAccoppiaArticoli::ShowLines()
{
    const SpreadUpdate update(grid_);
    grid_->SetRowCount(static_cast<long>(lines_->size()));
    for (long row = 1; row <= grid_->RowCount(); ++row) {
        const LoadLine &line = Line(row);
        grid_->SetLong(row, kNumber, line.number);
        grid_->SetText(row, kCode, OnOneLine(line.Code()));
        grid_->SetText(row, kText, OnOneLine(line.description));
        grid_->SetNumber(row, kQuantity, line.quantity);
        grid_->SetNumber(row, kPrice, line.price);
        grid_->SetText(row, kArticle, line.article);
        grid_->SetText(row, kHow, ArticleMatchText(line.match));
        ShowArticle(row);
    }
}

void CAccoppiaArticoli::ShowArticle(long row)
{
    grid_->SetText(row, kArticleText, ArticleName(grid_->Text(row, kArticle)).value_or(""));
}

void CAccoppiaArticoli::ShowCount()
{
    long open = 0;
    for (long row = 1; row <= grid_->RowCount(); ++row) open += grid_->Text(row, kArticle).empty() ? 1 : 0;
    SetStatus(open == 0 ? QStringLiteral("Tutte le righe hanno un articolo: F2 conferma")
                        : ToQt(fmt::format("{} senza articolo: F4 apre l'elenco, F3 ne crea uno",
                                           open == 1 ? "1 riga" : fmt::format("{} righe", open))));
}

void CAccoppiaArticoli::Take(long row, const std::string &article)
{
    grid_->SetText(row, kArticle, article);
    const bool is_found = Line(row).article == article; // as the search left it
    grid_->SetText(row, kHow,
                   article.empty() ? ""
                   : is_found      ? ArticleMatchText(Line(row).match)
                                   : ArticleMatchText(ArticleMatch::ByHand));
    ShowArticle(row);
    ShowCount();
    SetChanged(true);
}

bool CAccoppiaArticoli::Browse(long row, const std::string &typed)
{
    CLookupBrowser browser(this, *FindBrowse("articoli"));
    if (ArticleName(typed))
        browser.m_keys = {ToUpper(typed)};
    else
        browser.m_search = typed;
    if (browser.DoModal() != IDOK) return false;
    Take(row, browser.m_keys.back());
    return true;
}

bool CAccoppiaArticoli::OnLeaveCellSpread(long row, long column)
{
    if (column != kArticle || row < 1) return true;
    const std::string typed(Trimmed(grid_->Text(row, kArticle)));
    if (typed.empty() || ArticleName(typed)) {
        Take(row, ToUpper(typed));
        return true;
    }
    CommandScope scope(nullptr);
    const std::vector<CodeMatch> matches = MatchCodes(scope.get(), *FindBrowse("articoli"), {}, typed, kMatches);
    if (matches.size() == 1) {
        Take(row, matches.front().keys.back());
        return true;
    }
    if (matches.size() > 1) return Browse(row, typed);
    SetStatus("Nessun articolo con questo codice o descrizione: F4 apre l'elenco, F3 ne crea uno");
    return false;
}

void CAccoppiaArticoli::OnRecordNuovo()
{
    const long row = grid_->ActiveRow();
    if (row < 1) return;
    Guarded(LUMERA_TAG, [&] {
        const LoadLine &line = Line(row);
        CArticoli editor(this);
        editor.m_single = true;
        editor.m_proposta.art_codice = ProposedCode(line);
        editor.m_proposta.art_desc = OnOneLine(line.description);
        editor.m_proposta.art_um = line.unit;
        if (!line.eans.empty()) editor.m_proposta.art_ean = line.eans.front();
        editor.DoModal();
        grid_->setFocus();
        grid_->SetActiveCell(row, kArticle);
        if (editor.m_saved) Take(row, editor.m_keys.back());
    });
}

void CAccoppiaArticoli::OnOK()
{
    Guarded(LUMERA_TAG, [this] {
        if (!grid_->LeaveActiveCell()) return;
        for (long row = 1; row <= grid_->RowCount(); ++row) {
            LoadLine &line = lines_->at(static_cast<std::size_t>(row) - 1);
            const std::string article = grid_->Text(row, kArticle);
            if (line.match == ArticleMatch::Remembered && line.article == article) continue;
            line.article = article;
            line.match = article.empty() ? ArticleMatch::None : ArticleMatch::ByHand; // seen, and so confirmed
        }
        EndDialog(IDOK);
    });
}
