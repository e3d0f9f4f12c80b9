#pragma once

#include <QWidget>
#include <memory>
#include <string>

/// The readable invoice beside the window in which it is being registered: its pages one below the other, as wide as
/// the pane. Never takes the focus: the user types in the editor and moves the pages with the keys that the editor
/// passes on, or with the wheel.
class InvoicePane : public QWidget {
  public:
    /// @param pdf  the file's bytes; what cannot be shown is said in the place of the pages
    InvoicePane(const std::string &pdf, QWidget *parent);
    ~InvoicePane() override;

    bool ShowsPages() const;
    /// In the place of the pages, why there are none.
    void ShowFault(const std::string &text);

    void ScrollPages(int steps); ///< half a pane each, negative = back
    void ZoomBy(double factor);  ///< 1 = as wide as the pane again

    QSize sizeHint() const override;

  private:
    struct View;
    std::unique_ptr<View> view_;
};
