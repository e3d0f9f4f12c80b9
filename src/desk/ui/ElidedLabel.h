#pragma once

#include <QLabel>
#include <functional>

/// A line of text that ends in "…" where it has no room, with the whole of it as tooltip. It may lead somewhere: then
/// Tab stops at it, and Enter or a click goes there.
class CElidedLabel : public QLabel {
  public:
    explicit CElidedLabel(const QString &text = {}, QWidget *parent = nullptr);

    void SetText(const QString &text);
    const QString &FullText() const { return full_; }
    /// What runs later than the key or the click, so that it may delete the label.
    void LeadTo(std::function<void()> where);

    QSize minimumSizeHint() const override;
    QSize sizeHint() const override;

  protected:
    void resizeEvent(QResizeEvent *event) override;
    void changeEvent(QEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;

  private:
    void Elide();
    void Go();
    void ShowFocus(bool has_focus);

    QString full_;
    std::function<void()> where_;
};
