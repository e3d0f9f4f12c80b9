# Writes a C++ source that holds the named files as texts:
#   cmake -DOUTPUT=... -DROOT=... -DFILES=a|b -DHEADER=folder/Resources.h -DPREFIX=Resource -P EmbedFiles.cmake
# The header declares PREFIXText(name), empty when there is none, and PREFIXNames(folder). The programs carry what they need
# with them, so an installed copy needs no data folder.
string(REPLACE "|" ";" files "${FILES}")
set(body "")
foreach(file IN LISTS files)
  file(READ ${ROOT}/${file} text)
  string(APPEND body "    {\"${file}\", R\"LUMERA(${text})LUMERA\"},\n")
endforeach()
file(WRITE ${OUTPUT} "// Made by EmbedFiles.cmake from the files it names.
#include \"${HEADER}\"

#include <array>

namespace {

struct EmbeddedFile {
    std::string_view name, text;
};
const EmbeddedFile kFiles[] = {
${body}};

} // namespace

std::string_view ${PREFIX}Text(std::string_view name)
{
    for (const EmbeddedFile &file : kFiles)
        if (file.name == name) return file.text;
    return {};
}

std::vector<std::string_view> ${PREFIX}Names(std::string_view folder)
{
    std::vector<std::string_view> names;
    for (const EmbeddedFile &file : kFiles)
        if (file.name.starts_with(folder)) names.push_back(file.name);
    return names;
}
")
