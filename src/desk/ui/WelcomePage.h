#pragma once

#include <QWidget>
#include <functional>
#include <string>

class CFunctionList;
class QLabel;
class QFrame;

/// What the desk shows while no company is open: the known companies, and the ways to a new one.
class CWelcomePage : public QWidget {
  public:
    explicit CWelcomePage(QWidget *parent = nullptr);

    /// @param reason  why the company that was meant is not open; empty = none was
    void Refresh(const QString &reason);
    CFunctionList *List() const { return list_; }

    std::function<void(const std::string &archive)> on_open; ///< one of the known companies was chosen
    std::function<void()> on_new, on_other, on_demo;

  protected:
    void changeEvent(QEvent *event) override;

  private:
    void ShowLogo();

    QLabel *logo_, *reason_;
    QFrame *fault_;
    CFunctionList *list_;
};
