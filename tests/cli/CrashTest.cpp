#include "tests/cli/CommandFixture.h"

#include "cli/CommandLine.h"
#include "cli/EntryJson.h"
#include "ledger/EntryStorage.h"
#include "schedule/Instalments.h"
#include "tarvodlg/base/ConsoleUserInterface.h"
#include "tarvodlg/base/Dates.h"
#include "tarvodlg/base/Files.h"
#include "tarvolumera/Company.h"
#include "tarvolumera/archive/ArchiveCheck.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <functional>
#include <random>
#include <thread>

namespace {

using testing::HasSubstr;

class CrashTest : public CommandTest {
  protected:
    std::string ArchiveFaults()
    {
        std::string text;
        for (const ArchiveFault &fault : CheckArchive(Cmd()).faults)
            text += fmt::format("{} {}: {}\n", fault.kind, fault.where, fault.text);
        return text;
    }
    /// On a server the session of a killed station lives on until the server notices; what it had begun may still be
    /// committed until then.
    void AwaitOtherSessions()
    {
        if (GetParam() != SAEngine::PostgreSQL) return;
        const char *const others = "SELECT COUNT(*) FROM pg_stat_activity WHERE datname = current_database()"
                                   " AND backend_type = 'client backend' AND pid <> pg_backend_pid()";
        while (Value(others) != "0") std::this_thread::yield();
    }
};

/// Runs a function in a child process, which ends with its result as exit code.
pid_t Fork(const std::function<int()> &work)
{
    const pid_t child = fork();
    if (child != 0) return child;
    int code = 99;
    try {
        code = work();
    } catch (const std::exception &error) {
        std::fprintf(stderr, "%s\n", error.what());
    }
    _exit(code); // without the destructors and listeners that belong to the test program
}

int ExitCodeOf(pid_t child)
{
    int status = 0;
    waitpid(child, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
}

/// Runs a command in a child process, whose output nobody reads.
int Silently(const std::vector<std::string> &words)
{
    dup2(open("/dev/null", O_WRONLY), STDOUT_FILENO);
    std::vector<const char *> arguments = {"lumera"};
    for (const std::string &word : words) arguments.push_back(word.c_str());
    return RunCommandLine(static_cast<int>(arguments.size()), arguments.data());
}

/// Stores a purchase with its instalments as `pnota registra` does.
bool StorePurchase(SACommand *cmd, const std::string &number)
{
    PNOTA entry = EntryFromJson(cmd, PurchaseJson(number), DateToJulian(15, 3, 2026));
    const std::optional<InstalmentProposal> instalments = ProposeInstalments(cmd, entry);
    StoreTogether together;
    together.after = [&](SACommand *inner, const PNOTA &stored) {
        StoreInstalments(inner, stored, instalments.value());
    };
    return StoreEntry(cmd, &entry, true, together).stored;
}

/// Stores purchases without end and writes one byte to the pipe for each that was confirmed.
int StoreForEver(int pipe, int station)
{
    ConsoleUserInterface user;
    SetUserInterface(&user);
    SAConnection connection;
    connection.Connect(lumera_db_target);
    SACommand command(&connection);
    for (int i = 0;; ++i) {
        if (!StorePurchase(&command, fmt::format("{}/{}", station, i)) || write(pipe, "x", 1) != 1) return kExitFailed;
    }
}

long CountBytes(int pipe)
{
    char buffer[4096];
    long count = 0;
    for (ssize_t got = 0; (got = read(pipe, buffer, sizeof buffer)) > 0;) count += got;
    return count;
}

TEST_P(CrashTest, KilledAtAnyInstantNoEntryIsHalfAndNoConfirmedOneIsLost)
{
    constexpr int kKills = 15;
    std::mt19937 random(20260601);
    std::uniform_int_distribution<int> delay_ms(0, 80);
    long entries = 0;
    for (int kill_number = 0; kill_number < kKills; ++kill_number) {
        Disconnect();
        int ends[2];
        ASSERT_EQ(pipe(ends), 0);
        const pid_t child = Fork([&] { return StoreForEver(ends[1], kill_number); });
        close(ends[1]);
        char first = 0; // however slow the machine, something was confirmed
        EXPECT_EQ(read(ends[0], &first, 1), 1);
        std::this_thread::sleep_for(std::chrono::milliseconds(delay_ms(random)));
        kill(child, SIGKILL);
        EXPECT_EQ(ExitCodeOf(child), -SIGKILL) << "it ended by itself";
        const long confirmed = 1 + CountBytes(ends[0]);
        close(ends[0]);

        Reconnect();
        AwaitOtherSessions();
        const long now = std::stol(Count("pnota1"));
        EXPECT_GE(now, entries + confirmed) << "kill " << kill_number;
        EXPECT_LE(now, entries + confirmed + 1) << "kill " << kill_number;
        entries = now;
        EXPECT_EQ(ArchiveFaults(), "") << "kill " << kill_number;
    }
    EXPECT_EQ(Value("SELECT MAX(pno_prot) FROM admin.pnota1"), std::to_string(entries));
    EXPECT_EQ(Count("scadenze"), std::to_string(2 * entries));
    RecordProperty("entries", std::to_string(entries));
}

TEST_P(CrashTest, EightStationsAtOnceGetDistinctNumbersAndGaplessProtocols)
{
    constexpr int kStations = 8, kEntries = 25;
    Disconnect();
    std::vector<pid_t> stations;
    for (int station = 0; station < kStations; ++station) {
        stations.push_back(Fork([&] {
            for (int i = 0; i < kEntries; ++i) {
                const std::string file =
                    Written(fmt::format("{}.json", station), PurchaseJson(fmt::format("{}-{}", station, i)));
                if (const int code = Silently({"--archivio", Archive(), "pnota", "registra", file}); code != kExitDone)
                    return code;
            }
            return kExitDone;
        }));
    }
    for (const pid_t station : stations) EXPECT_EQ(ExitCodeOf(station), kExitDone);
    Reconnect();
    const std::string all = std::to_string(kStations * kEntries);
    EXPECT_EQ(Count("pnota1"), all);
    EXPECT_EQ(Value("SELECT COUNT(DISTINCT pno_prot) FROM admin.pnota1"), all);
    EXPECT_EQ(Value("SELECT MIN(pno_prot) FROM admin.pnota1"), "1");
    EXPECT_EQ(Value("SELECT MAX(pno_prot) FROM admin.pnota1"), all);
    EXPECT_EQ(Value("SELECT MAX(sca_num) FROM admin.scadenze"), std::to_string(2 * kStations * kEntries));
    EXPECT_EQ(ArchiveFaults(), "");
}

// All of them look for the content before any of them has filed it.
TEST_P(CrashTest, StationsImportingTheSameFilesFileEachOnce)
{
    Disconnect();
    std::vector<pid_t> stations;
    for (int station = 0; station < 4; ++station) {
        stations.push_back(Fork([&] {
            return Silently({"--archivio", Archive(), "fatture", "importa", LUMERA_SOURCE_DIR "/samples/fatture"});
        }));
    }
    for (const pid_t station : stations) EXPECT_EQ(ExitCodeOf(station), kExitDone);
    Reconnect();
    EXPECT_EQ(Count("allegati"), "13");
    EXPECT_EQ(ArchiveFaults(), "");
}

// A file that may not grow any further stands for a disk that is full.
// Each has asked the journal before any of them stored the entry; only one of them may book the invoice.
TEST_P(CrashTest, StationsRegisteringTheSameInvoiceBookItOnce)
{
    constexpr int kStations = 4;
    ASSERT_EQ(Lumera({"fatture", "importa", LUMERA_SOURCE_DIR "/samples/fatture/IT02565617350_00A24.xml"}).code,
              kExitDone);
    Disconnect();
    std::vector<pid_t> stations;
    for (int station = 0; station < kStations; ++station)
        stations.push_back(Fork([&] {
            dup2(open("/dev/null", O_WRONLY), STDERR_FILENO); // the question that stops the others
            return Silently({"--archivio", Archive(), "fatture", "registra", "1"});
        }));
    std::map<int, int> ended;
    for (const pid_t station : stations) ++ended[ExitCodeOf(station)];
    EXPECT_EQ(ended, (std::map<int, int>{{kExitDone, 1}, {kExitRefused, kStations - 1}}));
    Reconnect();
    EXPECT_EQ(Count("pnota1"), "1");
    EXPECT_EQ(Count("scadenze"), "2");
    EXPECT_EQ(ArchiveFaults(), "");
}

class DiskTest : public CrashTest {};

TEST_P(DiskTest, WhenFullStoresNothingAndSaysSo)
{
    ASSERT_EQ(Store(PurchaseJson("1")).code, kExitDone);
    const std::string file = Written("movimento.json", PurchaseJson("2"));
    const std::filesystem::path messages = Written("messaggi.txt", "");
    Disconnect();
    const pid_t child = Fork([&] {
        signal(SIGXFSZ, SIG_IGN);
        const rlimit limit{40'000, 40'000}; // enough for the engine's shared index, not for the pages of an entry
        setrlimit(RLIMIT_FSIZE, &limit);
        dup2(open(messages.c_str(), O_WRONLY), STDERR_FILENO);
        return Silently({"--archivio", Archive(), "pnota", "registra", file});
    });
    EXPECT_EQ(ExitCodeOf(child), kExitFailed);
    EXPECT_THAT(ReadWholeFile(messages, 10'000),
                testing::AnyOf(HasSubstr("Il disco è pieno"), HasSubstr("Errore dell'archivio: disk I/O")));
    Reconnect();
    EXPECT_EQ(Count("pnota1"), "1");
    EXPECT_EQ(ArchiveFaults(), "");
    EXPECT_EQ(Store(PurchaseJson("2"), {"--json"}).Json().at("prot"), 2) << "with room again";
}

// The server drops the session between the header of an entry and its rows.
class ServerTest : public CrashTest {};

TEST_P(ServerTest, GoingAwayInTheMiddleLeavesNothingHalf)
{
    ASSERT_EQ(Lumera({"fatture", "importa", LUMERA_SOURCE_DIR "/samples/fatture"}).code, kExitDone);
    Run("CREATE FUNCTION admin.prova_cade() RETURNS trigger LANGUAGE plpgsql AS"
        " 'BEGIN PERFORM pg_terminate_backend(pg_backend_pid()); RETURN NEW; END'");
    Run("CREATE TRIGGER prova_cade BEFORE INSERT ON admin.pnotaro2 FOR EACH ROW EXECUTE FUNCTION admin.prova_cade()");
    const CommandRun store = Store(PurchaseJson("1"), {"--json"});
    EXPECT_EQ(store.code, kExitFailed);
    EXPECT_THAT(store.Json().at("messaggio").get<std::string>(),
                HasSubstr("Il collegamento con l'archivio si è interrotto."));
    const CommandRun registration = Lumera({"--json", "fatture", "registra", "--tutte", "--nuovo-fornitore"});
    EXPECT_EQ(registration.code, kExitFailed);
    EXPECT_EQ(registration.Json().at("esito"), "errore") << "one document, though the list had begun";
    Run("DROP TRIGGER prova_cade ON admin.pnotaro2");
    for (const char *table : {"pnota1", "pnotaro2", "scadenze", "pnotaall"}) EXPECT_EQ(Count(table), "0") << table;
    EXPECT_EQ(Count("fornito1"), "25");
    EXPECT_EQ(ArchiveFaults(), "");
    EXPECT_EQ(Store(PurchaseJson("1"), {"--json"}).Json().at("prot"), 1);
}

INSTANTIATE_TEST_SUITE_P(Engines, CrashTest, testing::ValuesIn(TestEngines()), TestEngineName);
INSTANTIATE_TEST_SUITE_P(Engines, DiskTest, testing::Values(SAEngine::SQLite), TestEngineName);
INSTANTIATE_TEST_SUITE_P(Engines, ServerTest, testing::Values(SAEngine::PostgreSQL), TestEngineName);

} // namespace
