#include "einvoice/ui/FatturePages.h"

void CFattureElettronichePage::Refresh(const CFattureElettronicheDB *content, std::size_t document)
{
    content_ = content && document < content->Count() ? content : nullptr;
    document_ = document;
    is_stale_ = true;
    if (isVisibleTo(parentWidget())) ShowWhenActive(); // pages behind are hidden, whether the dialog shows or not
}

bool CFattureElettronichePage::OnSetActive()
{
    ShowWhenActive();
    return true;
}

const fatturapa::FatturaElettronicaBody *CFattureElettronichePage::Shown() const
{
    return content_ && !is_stale_ ? &content_->Documents()[document_] : nullptr;
}

void CFattureElettronichePage::ShowWhenActive()
{
    if (!is_stale_) return;
    if (content_)
        Show(*content_, document_);
    else
        ShowNothing();
    is_stale_ = false;
}
