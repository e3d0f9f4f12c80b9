#include "tests/fuzz/SheetInput.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>

/// One run of libFuzzer: a workbook of either format. It lies in a file of memory, since the reader takes a path.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    static const int memory = memfd_create("foglio", 0);
    static const std::string path = "/proc/self/fd/" + std::to_string(memory);
    const std::string bytes = SheetBytes({reinterpret_cast<const char *>(data), size});
    if (ftruncate(memory, 0) != 0 ||
        pwrite(memory, bytes.data(), bytes.size(), 0) != static_cast<ssize_t>(bytes.size()))
        std::abort(); // not the reader's fault: the machine is out of memory
    ReadSheetFile(path);
    return 0;
}
