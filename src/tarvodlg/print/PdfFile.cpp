#include "tarvodlg/print/PdfFile.h"

#include <QIODevice>
#include <QPageLayout>
#include <exception>

namespace {

constexpr int kResolution = 600;

} // namespace

/// Qt's way of writing into our file. An exception must not pass through Qt, so it waits here.
class PdfFile::Output : public QIODevice {
  public:
    explicit Output(ProvisionalFile *file) : file_(file) { open(QIODevice::WriteOnly); }
    bool isSequential() const override { return true; }
    void RequireWritten() const
    {
        if (failure_) std::rethrow_exception(failure_);
    }

  protected:
    qint64 readData(char *, qint64) override { return -1; }
    qint64 writeData(const char *bytes, qint64 count) override
    {
        if (failure_) return -1;
        try {
            file_->Write({bytes, static_cast<std::size_t>(count)});
            return count;
        } catch (...) {
            failure_ = std::current_exception();
            return -1;
        }
    }

  private:
    ProvisionalFile *file_;
    std::exception_ptr failure_;
};

PdfFile::PdfFile(const std::filesystem::path &file, const PaperSize &paper, const std::string &title) : file_(file)
{
    EnsureGui();
    output_ = std::make_unique<Output>(&file_);
    writer_ = std::make_unique<QPdfWriter>(output_.get());
    writer_->setResolution(kResolution);
    writer_->setTitle(QString::fromStdString(title));
    writer_->setCreator(QStringLiteral("Lumera Contabilità"));
    writer_->setPageLayout(QPageLayout(QPageSize(QSizeF(paper.width, paper.height), QPageSize::Millimeter),
                                       QPageLayout::Portrait, QMarginsF()));
}

PdfFile::~PdfFile() = default;

void PdfFile::RequireWritten() const
{
    output_->RequireWritten();
}

void PdfFile::PutInPlace()
{
    writer_.reset();
    RequireWritten();
    file_.PutInPlace();
}
