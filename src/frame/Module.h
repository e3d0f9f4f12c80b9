#pragma once

/// What the module says of itself to its host.
struct ModuleInfo {
    const char *name;     ///< "TarvoContabilita"
    const char *version;  ///< of the program, as "0.1.0"
    long archive_version; ///< the archive version it reads and writes
};

ModuleInfo DescribeModule();
