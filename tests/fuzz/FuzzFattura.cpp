#include "tests/fuzz/FatturaInput.h"

#include <cstddef>
#include <cstdint>

/// One run of libFuzzer: an invoice file, plain or in its signed envelope.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    ReadFatturaInput({reinterpret_cast<const char *>(data), size});
    return 0;
}
