#include "bench/JournalListing.h"

#include "tarvolumera/TableDescription.h"

void ListedSum::Add(const ListedEntry &entry)
{
    ++entries;
    codes += entry.codice + entry.sez + entry.cau + entry.reg + entry.rel + entry.cli_for;
    days += entry.data + entry.data_doc;
    cents += static_cast<long long>((entry.tot_doc + entry.dare + entry.avere) * 100 + 0.5);
    characters += entry.desc.size() + entry.doc.size();
}

ListedSum ListThroughLibrary(SACommand *command)
{
    ListedSum sum;
    ListedEntry entry;
    command->Execute();
    while (command->FetchNext()) {
        entry.codice = command->Field("pno_codice").asLong();
        entry.data = FromSqlDate(command->Field("pno_data").asDateTime());
        entry.desc = command->Field("pno_desc").asStringView();
        entry.data_doc = FromSqlDate(command->Field("pno_data_doc").asDateTime());
        entry.tot_doc = command->Field("pno_tot_doc").asDouble();
        entry.sez = command->Field("pno_sez").asLong();
        entry.cau = command->Field("pno_cau").asLong();
        entry.reg = command->Field("pno_reg").asLong();
        entry.rel = command->Field("pno_rel").asLong();
        entry.cli_for = command->Field("pno_cli_for").asLong();
        entry.doc = command->Field("pno_doc").asStringView();
        entry.dare = command->Field("pno_dare").asDouble();
        entry.avere = command->Field("pno_avere").asDouble();
        sum.Add(entry);
    }
    return sum;
}
