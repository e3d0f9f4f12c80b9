#include "tarvodlg/print/TemporaryPdf.h"

#include "tarvolumera/Company.h"

#include <atomic>
#include <random>
#include <unistd.h>

#include <fmt/format.h>

TemporaryPdf::TemporaryPdf()
{
    static std::atomic<unsigned> counter = std::random_device()();
    path_ = CompanyFolder("tmp") / fmt::format("stampa-{}-{:08x}.pdf", ::getpid(), counter++);
}

TemporaryPdf::~TemporaryPdf()
{
    std::error_code ignored; // the file may never have been written
    std::filesystem::remove(path_, ignored);
}
