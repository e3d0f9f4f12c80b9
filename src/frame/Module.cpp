#include "frame/Module.h"

#include "tarvolumera/archive/Migrations.h"

ModuleInfo DescribeModule()
{
    return {"TarvoContabilita", LUMERA_VERSION, ProgramArchiveVersion()};
}
