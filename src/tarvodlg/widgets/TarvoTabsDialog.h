#pragma once

#include "tarvodlg/widgets/TarvoDialog.h"

class QTabWidget;
class CTarvoTabsDialog;

/// One page of a CTarvoTabsDialog: a form of its own with its own keys.
class CTarvoTabsPage : public QWidget {
  public:
    explicit CTarvoTabsPage(CTarvoTabsDialog *dialog);
    ~CTarvoTabsPage() override;

    CTarvoTabsDialog *Dialog() const { return dialog_; }

    virtual bool OnInitPage() { return true; }                      ///< once, before the dialog shows
    virtual bool OnSetActive() { return true; }                     ///< false: the page does not come to the front
    virtual bool OnKillActive() { return true; }                    ///< false: the page may not be left
    virtual bool PreTranslateMessage(QKeyEvent *) { return false; } ///< before the dialog's; true = used up
    virtual void OnKickIdle() {}

  private:
    CTarvoTabsDialog *dialog_;
};

/// A dialog of pages that live side by side and share its commands.
class CTarvoTabsDialog : public CTarvoDialog {
  public:
    explicit CTarvoTabsDialog(CWnd *parent = nullptr);

    bool PreTranslateMessage(QKeyEvent *message) override;
    void OnKickIdle() override;

    /// The dialog owns the page.
    void AddPage(CTarvoTabsPage *page, const QString &title, const QString &icon = {});
    CTarvoTabsPage *ActivePage() const;
    void SetActivePage(CTarvoTabsPage *page);

  private:
    bool Prepare() override;
    void PageChanged();

    QTabWidget *tabs_;
    CTarvoTabsPage *active_ = nullptr; ///< the one whose OnSetActive ran last; null before the dialog shows
    bool pages_made_ = false;
    bool going_back_ = false;
};
