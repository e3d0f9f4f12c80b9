# Writes a C++ source that holds the named files as texts: cmake -DOUTPUT=... -DROOT=... -DFILES=a|b -P EmbedFiles.cmake
# The programs carry their schema and base tables with them, so an installed copy needs no data folder.
string(REPLACE "|" ";" files "${FILES}")
set(body "")
foreach(file IN LISTS files)
  file(READ ${ROOT}/${file} text)
  string(APPEND body "    {\"${file}\", R\"LUMERA(${text})LUMERA\"},\n")
endforeach()
file(WRITE ${OUTPUT} "// Made by EmbedFiles.cmake from the files it names.
#include \"tarvolumera/archive/Resources.h\"

#include <array>

namespace {

struct Resource {
    std::string_view name, text;
};
const Resource kResources[] = {
${body}};

} // namespace

std::string_view ResourceText(std::string_view name)
{
    for (const Resource &resource : kResources)
        if (resource.name == name) return resource.text;
    return {};
}

std::vector<std::string_view> ResourceNames(std::string_view folder)
{
    std::vector<std::string_view> names;
    for (const Resource &resource : kResources)
        if (resource.name.starts_with(folder)) names.push_back(resource.name);
    return names;
}
")
