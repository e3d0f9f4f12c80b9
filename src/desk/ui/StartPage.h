#pragma once

#include "desk/Waiting.h"

#include <QElapsedTimer>
#include <QScrollArea>

class QGridLayout;
class QVBoxLayout;

/// What waits today in the current company, in four cards: invoices to register, instalments of customers and of
/// suppliers, unbalanced entries. What goes wrong is told on the page.
class CStartPage : public QScrollArea {
  public:
    explicit CStartPage(QWidget *parent = nullptr);

    /// Reads again. @param by_user  false: the window came to the front; a large archive is then read once a minute
    void Refresh(bool by_user);

  protected:
    void resizeEvent(QResizeEvent *event) override;
    void changeEvent(QEvent *event) override;

  private:
    void Show(const Waiting &waiting);
    void ShowFault(const QString &text);
    void OpenEntry(long number);
    void OpenInvoices(long first, long code);
    QWidget *Invoices(const Waiting &waiting);               ///< the card
    QWidget *Instalments(const Waiting &waiting, long side); ///< the card
    void RunAndRefresh(const std::function<void()> &work);
    QVBoxLayout *NewContent();
    void Arrange();

    WaitingReader reader_;
    Waiting shown_;
    QElapsedTimer since_; ///< from the last reading
    qint64 cost_ms_ = 0;  ///< of the last reading
    std::vector<QWidget *> cards_;
    QGridLayout *grid_ = nullptr; ///< null while a fault is shown
    int columns_ = 0;
};
