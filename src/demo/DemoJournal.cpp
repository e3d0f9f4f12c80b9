#include "demo/DemoJournal.h"

#include "demo/DemoInvoices.h"
#include "demo/DemoPayments.h"
#include "demo/DemoSundries.h"
#include "sqlapi/SACommand.h"
#include "tarvodlg/base/Dates.h"
#include "tarvodlg/base/TarvoProgressDlg.h"

#include <algorithm>

namespace {

/// Entries of one transaction: a commit for each would cost more than the entry itself.
constexpr std::size_t kEntriesTogether = 500;
/// The statistics of the tables are refreshed at the first group and each time they have grown so many times.
constexpr std::size_t kGrowth = 8;

/// The bookkeeper of the demo company. His today is the day of the entry, so that the archive says it was written and
/// its instalments were issued then; and no window of progress opens for each invoice.
class DemoBookkeeper : public UserInterface {
  public:
    explicit DemoBookkeeper(UserInterface &user) : user_(user) { SetUserInterface(this); }
    ~DemoBookkeeper() override { SetUserInterface(&user_); }
    DemoBookkeeper(const DemoBookkeeper &) = delete;
    DemoBookkeeper &operator=(const DemoBookkeeper &) = delete;

    /// The next entry is written on that day, two minutes after the previous one.
    void WorkOn(long day)
    {
        second_ = day == today_ ? std::min(second_ + kTimePerEntry, kClosingTime) : kOpeningTime;
        today_ = day;
    }

    int MessageBox(const std::string &text, unsigned flags) override { return user_.MessageBox(text, flags); }
    void Beep(int hertz, int milliseconds) override { user_.Beep(hertz, milliseconds); }
    std::unique_ptr<ProgressView> OpenProgress(const std::string &) override { return nullptr; }
    std::vector<std::filesystem::path> PickFiles(const FilePicking &picking) override
    {
        return user_.PickFiles(picking);
    }
    std::optional<std::filesystem::path> PickFolder(const std::string &title) override
    {
        return user_.PickFolder(title);
    }
    std::optional<long> PickDate(const std::string &title, long proposed) override
    {
        return user_.PickDate(title, proposed);
    }
    std::optional<long> PickYear(const std::string &title, long proposed) override
    {
        return user_.PickYear(title, proposed);
    }
    long Today() override { return today_; }
    long SecondOfDay() override { return second_; }
    std::string UserName() override { return "demo"; }

  private:
    static constexpr long kOpeningTime = 8 * 3600 + 30 * 60, kClosingTime = 18 * 3600, kTimePerEntry = 120;

    UserInterface &user_;
    long today_ = 0, second_ = 0;
};

/// The other way when there is nothing to settle or to refer to: a company always buys, sells and pays its bank.
void Book(DemoBooks *books, const PlannedEntry &planned)
{
    const bool is_purchase_note = planned.model->causale == UsualPurchase().credit_causale;
    switch (planned.model->job) {
    case DemoJob::Invoice:
        return BookInvoice(books, planned);
    case DemoJob::Receipts:
        return BookReceipts(books, planned);
    case DemoJob::CreditNote:
        if (BookCreditNote(books, planned)) return;
        return BookInvoice(books, {planned.day, is_purchase_note ? &UsualPurchase() : &UsualSale()});
    case DemoJob::Payment:
        if (BookSettlement(books, kSupplier, planned.day)) return;
        return BookInvoice(books, {planned.day, &UsualPurchase()});
    case DemoJob::Collection:
        if (BookSettlement(books, kCustomer, planned.day)) return;
        return BookInvoice(books, {planned.day, &UsualSale()});
    default:
        if (!BookSundry(books, planned)) BookSundry(books, {planned.day, &UsualBankCharges()});
    }
}

/// Tells the server how large the tables have become. It does so by itself once they are committed, but a new archive
/// is made in one transaction, and plans made for empty tables would read them from end to end for each next number.
void RefreshStatistics(SACommand *cmd)
{
    if (cmd->Connection()->Engine() != SAEngine::PostgreSQL) return;
    for (const char *table : {"pnota1", "pnotaro2", "pnotacdc", "scadenze"}) {
        SACommand analyze(cmd->Connection(), std::string("ANALYZE admin.") + table);
        analyze.Execute();
    }
}

std::vector<PlannedEntry> PlanFiscalYear(long entries, DemoRandom *random)
{
    const int year = static_cast<int>(lumera_db_impo.dit_anno);
    const long first_day = DateToJulian(1, 1, year), today = CurrentUserInterface().Today();
    // Today's work is still to be done, by whoever tries the program.
    const long last_day = year == Year(today) ? std::max(first_day, today - 1) : DateToJulian(31, 12, year);
    return PlanEntries(entries, first_day, last_day, random);
}

} // namespace

void FillDemoJournal(SACommand *cmd, long entries, unsigned seed)
{
    CommandScope scope(cmd);
    DemoRandom random(seed);
    const std::vector<PlannedEntry> plan = PlanFiscalYear(entries, &random);

    CTarvoProgressDlg progress;
    progress.SetStatus("Creazione movimenti dimostrativi in corso...");
    progress.SetRange(0, static_cast<long>(plan.size()));
    DemoBookkeeper bookkeeper(CurrentUserInterface());
    const auto books = std::make_unique<DemoBooks>(scope.get(), &random, [&](long day) { bookkeeper.WorkOn(day); });
    std::size_t next_refresh = kEntriesTogether;
    for (std::size_t done = 0; done < plan.size();) {
        const std::size_t stop = std::min(done + kEntriesTogether, plan.size());
        SATransaction together(scope.get());
        for (; done < stop; ++done) Book(books.get(), plan[done]);
        if (done >= next_refresh) {
            RefreshStatistics(scope.get());
            next_refresh *= kGrowth;
        }
        together.Commit();
        progress.SetPos(static_cast<long>(done));
    }
}
