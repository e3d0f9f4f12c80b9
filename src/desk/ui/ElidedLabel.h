#pragma once

#include <QLabel>

/// A line of text that ends in "…" where it has no room, with the whole of it as tooltip.
class CElidedLabel : public QLabel {
  public:
    explicit CElidedLabel(const QString &text = {}, QWidget *parent = nullptr);

    void SetText(const QString &text);
    const QString &FullText() const { return full_; }

    QSize minimumSizeHint() const override;
    QSize sizeHint() const override;

  protected:
    void resizeEvent(QResizeEvent *event) override;
    void changeEvent(QEvent *event) override;

  private:
    void Elide();

    QString full_;
};
