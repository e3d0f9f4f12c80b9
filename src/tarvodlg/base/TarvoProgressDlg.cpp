#include "tarvodlg/base/TarvoProgressDlg.h"

CTarvoProgressDlg::CTarvoProgressDlg(const std::string &title) : view_(CurrentUserInterface().OpenProgress(title)) {}

void CTarvoProgressDlg::SetStatus(const std::string &text)
{
    if (view_) view_->SetStatus(text);
}

void CTarvoProgressDlg::SetRange(long first, long last)
{
    position_ = first;
    if (view_) view_->SetRange(first, last);
}

void CTarvoProgressDlg::StepIt()
{
    SetPos(position_ + 1);
}

void CTarvoProgressDlg::SetPos(long position)
{
    position_ = position;
    if (view_) view_->SetPosition(position);
}

void CTarvoProgressDlg::Close()
{
    view_.reset();
}
