#include "cli/Commands.h"

#include "cli/Table.h"
#include "desk/Waiting.h"
#include "tarvodlg/base/Dates.h"
#include "tarvodlg/base/Numbers.h"

#include <CLI/CLI.hpp>
#include <fmt/format.h>

namespace {

constexpr auto kRight = TableColumn::Align::Right;

nlohmann::json ToJson(const InvoiceRow &row)
{
    nlohmann::json item = {{"codice", row.code},
                           {"documento", row.document + 1},
                           {"fornitore", row.supplier_name},
                           {"cedente", row.seller_name},
                           {"numero", row.number},
                           {"data", JsonDate(row.day)},
                           {"totale", JsonAmount(row.total)}};
    if (!row.fault.empty()) item["anomalia"] = row.fault;
    return item;
}

nlohmann::json ToJson(const WaitingInstalments &group)
{
    nlohmann::json first = nlohmann::json::array();
    for (const WaitingInstalment &instalment : group.first)
        first.push_back({{"num", instalment.number},
                         {"data", JsonDate(instalment.due_day)},
                         {"importo", JsonAmount(FromCents(instalment.cents))},
                         {"nome", instalment.name},
                         {"fattura", instalment.invoice}});
    return {{"numero", group.count}, {"importo", JsonAmount(FromCents(group.cents))}, {"prime", first}};
}

nlohmann::json ToJson(const Waiting &waiting, long today)
{
    nlohmann::json invoices = nlohmann::json::array(), entries = nlohmann::json::array();
    for (const InvoiceRow &row : waiting.oldest_invoices) invoices.push_back(ToJson(row));
    for (const UnbalancedEntry &entry : waiting.unbalanced_entries)
        entries.push_back({{"codice", entry.number},
                           {"data", JsonDate(entry.day)},
                           {"desc", entry.text},
                           {"dare", JsonAmount(FromCents(entry.debit_cents))},
                           {"avere", JsonAmount(FromCents(entry.credit_cents))}});
    const auto side = [&](long which) {
        return nlohmann::json{{"scadute", ToJson(waiting.overdue[which])},
                              {"in_scadenza", ToJson(waiting.due_soon[which])}};
    };
    return {{"oggi", JsonDate(today)},
            {"fatture", {{"numero", waiting.invoices}, {"almeno", waiting.are_invoices_at_least}, {"prime", invoices}}},
            {"clienti", side(kCustomer)},
            {"fornitori", side(kSupplier)},
            {"squadrati", {{"numero", waiting.unbalanced}, {"primi", entries}}}};
}

void PrintInvoices(const Session &session, const Waiting &waiting)
{
    Print(fmt::format("\nFatture ricevute da registrare: {}{}\n", waiting.are_invoices_at_least ? "circa " : "",
                      waiting.invoices));
    if (waiting.oldest_invoices.empty()) return;
    Table table({{"ID", kRight}, {"Fornitore", TableColumn::Align::Left, 44}, {"Numero"}, {"Data"}, {"Totale", kRight}},
                session.Colours());
    for (const InvoiceRow &row : waiting.oldest_invoices) {
        const std::string id =
            row.documents > 1 ? fmt::format("{}.{}", row.code, row.document + 1) : std::to_string(row.code);
        if (!row.fault.empty())
            table.AddRow({id, row.fault});
        else
            table.AddRow({id, row.seller_name, row.number, FormatDate(row.day), FormatAmount(row.total)});
    }
    Print(table.Finish());
}

void PrintInstalments(const Session &session, const char *title, const WaitingInstalments &group)
{
    if (group.count == 0) return;
    Print(fmt::format("\n{}: {}, {} euro\n", title, group.count, FormatAmount(FromCents(group.cents))));
    Table table({{"Scadenza"}, {"Nome", TableColumn::Align::Left, 44}, {"Fattura"}, {"Importo", kRight}},
                session.Colours());
    for (const WaitingInstalment &instalment : group.first)
        table.AddRow({FormatDate(instalment.due_day), instalment.name, instalment.invoice,
                      FormatAmount(FromCents(instalment.cents))});
    Print(table.Finish());
}

void PrintUnbalanced(const Session &session, const Waiting &waiting)
{
    if (waiting.unbalanced == 0) return;
    Print(fmt::format("\nMovimenti squadrati: {}\n", waiting.unbalanced));
    Table table({{"Numero", kRight}, {"Data"}, {"Descrizione"}, {"Dare", kRight}, {"Avere", kRight}},
                session.Colours());
    for (const UnbalancedEntry &entry : waiting.unbalanced_entries)
        table.AddRow({std::to_string(entry.number), FormatDate(entry.day), entry.text,
                      FormatAmount(FromCents(entry.debit_cents)), FormatAmount(FromCents(entry.credit_cents))});
    Print(table.Finish());
}

int Today(Session *session)
{
    session->OpenArchive();
    SAConnection connection;
    connection.Connect(lumera_db_target);
    SACommand command(&connection);
    const long today = session->user.Today();
    const Waiting waiting = WaitingReader().Read(&command, today);
    if (session->json) {
        PrintJson(ToJson(waiting, today));
        return kExitDone;
    }
    Print(fmt::format("{}\nOggi, {}\n", CompanyLine(), FormatDate(today)));
    if (waiting.IsNothing()) {
        Print("Nulla in attesa.\n");
        return kExitDone;
    }
    PrintInvoices(*session, waiting);
    PrintInstalments(*session, "Da incassare, già scadute", waiting.overdue[kCustomer]);
    PrintInstalments(*session, "Da incassare entro sette giorni", waiting.due_soon[kCustomer]);
    PrintInstalments(*session, "Da pagare, già scadute", waiting.overdue[kSupplier]);
    PrintInstalments(*session, "Da pagare entro sette giorni", waiting.due_soon[kSupplier]);
    PrintUnbalanced(*session, waiting);
    return kExitDone;
}

} // namespace

void AddTodayCommand(CLI::App *app, Session *session, Action *action)
{
    CLI::App *command = app->add_subcommand("oggi", "Che cosa aspetta oggi: fatture, scadenze, squadrature");
    command->footer("Esempio:\n  lumera --archivio demo oggi");
    command->callback([=] { *action = [=] { return Today(session); }; });
}
