#pragma once

#include "tarvodlg/widgets/TarvoDialog.h"

class QTabWidget;

/// One page of CTarvoTabs: a form of its own with its own keys.
class CTarvoTabsPage : public QWidget {
  public:
    explicit CTarvoTabsPage(CTarvoDialog *dialog);
    ~CTarvoTabsPage() override;

    CTarvoDialog *Dialog() const { return dialog_; }

    virtual bool OnInitPage() { return true; }                      ///< once, before the dialog shows
    virtual bool OnSetActive() { return true; }                     ///< false: the page does not come to the front
    virtual bool OnKillActive() { return true; }                    ///< false: the page may not be left
    virtual bool PreTranslateMessage(QKeyEvent *) { return false; } ///< before the dialog's; true = used up
    virtual void OnKickIdle() {}

  private:
    CTarvoDialog *dialog_;
};

/// Pages that live side by side in a dialog and share its commands. The dialog that has them calls Init,
/// PreTranslateMessage and OnKickIdle from its own.
class CTarvoTabs : public QWidget {
  public:
    CTarvoTabs(CTarvoDialog *dialog, QWidget *parent);

    /// Takes the page over.
    void AddPage(CTarvoTabsPage *page, const QString &title, const QString &icon = {});
    CTarvoTabsPage *ActivePage() const;
    void SetActivePage(CTarvoTabsPage *page);

    bool Init();                                  ///< false: a page refused to be made or shown
    bool PreTranslateMessage(QKeyEvent *message); ///< before the dialog's own; true = used up
    void OnKickIdle();

  private:
    void PageChanged();

    CTarvoDialog *dialog_;
    QTabWidget *tabs_;
    CTarvoTabsPage *active_ = nullptr; ///< the one whose OnSetActive ran last; null before the dialog shows
    bool pages_made_ = false;
    bool going_back_ = false;
};

/// A dialog of such pages and nothing else.
class CTarvoTabsDialog : public CTarvoDialog {
  public:
    explicit CTarvoTabsDialog(CWnd *parent = nullptr);

    bool PreTranslateMessage(QKeyEvent *message) override;
    void OnKickIdle() override;

    void AddPage(CTarvoTabsPage *page, const QString &title, const QString &icon = {});
    CTarvoTabsPage *ActivePage() const { return tabs_->ActivePage(); }
    void SetActivePage(CTarvoTabsPage *page) { tabs_->SetActivePage(page); }

  private:
    bool Prepare() override;

    CTarvoTabs *tabs_;
};
