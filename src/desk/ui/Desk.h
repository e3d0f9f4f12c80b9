#pragma once

/// How a desk ended.
enum class DeskEnd {
    Done,
    WrongUsage, ///< words it does not know; they were told on standard error
    NotOpened   ///< the archive it was called for could not be opened, nor was any other until it was closed
};

/// Runs the desk until its window is closed: "lumera desk [--archivio CARTELLA|INDIRIZZO]". Without an archive the one
/// of LUMERA_ARCHIVIO is opened, else the company opened last at this station, else the user's default archive.
DeskEnd RunDesk(int argc, char **argv);
