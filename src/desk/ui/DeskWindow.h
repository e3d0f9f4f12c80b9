#pragma once

#include "desk/ui/Functions.h"

#include <QMainWindow>

class CElidedLabel;
class CFunctionList;
class CStartPage;
class CWelcomePage;
class QAction;
class QActionGroup;
class QLabel;
class QLineEdit;
class QMenu;
class QStackedWidget;
class QToolButton;

/// The desk: areas at the left, what can be done in the middle, what waits on the start page. Everything is reached by
/// keyboard; a function is run with the desk as its parent.
class CDesk : public QMainWindow {
  public:
    explicit CDesk(QWidget *parent = nullptr);
    CDesk(std::vector<DeskFunction> functions, QWidget *parent); ///< with other functions than the program's
    ~CDesk() override;

    /// Opens an archive and shows it; when that fails, the reason and the choice of companies.
    /// @return true when it is open
    bool Open(const std::string &archive);
    /// Shows the current company, or the choice of companies when none is open.
    /// @param reason  why the company that was meant is not open
    void ShowCompany(const QString &reason = {});

    void ShowArea(int number); ///< of DeskAreas; one without functions is ignored
    void ShowStart();
    void RefreshStart();
    void FocusFilter();

  protected:
    void changeEvent(QEvent *event) override;
    void closeEvent(QCloseEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override; ///< Down and Enter in the filter go to the list

  private:
    struct Area {
        const DeskArea *area;
        std::vector<std::size_t> functions; ///< indexes of functions_
    };

    void BuildMenus();
    void BuildViewMenu();
    void BuildPages();
    void BuildStatus();
    void Run(std::size_t function);
    void OnNavigate(int row);
    void OnFilter(const QString &typed);
    void ShowFunctions(const std::vector<std::size_t> &functions, bool with_area);
    void OnTheme(QAction *chosen);
    void OnKeys();
    void OnAbout();
    void RefreshNavigation();
    void ShowCompanyNames(); ///< in title and status bar, and what dates are completed from
    void RefreshActions();
    bool HasCompany() const;

    std::vector<DeskFunction> functions_;
    std::vector<QAction *> actions_; ///< one for each function
    std::vector<Area> areas_;        ///< those with functions

    CFunctionList *navigation_, *list_;
    QLineEdit *filter_;
    QAction *glass_; ///< in the filter
    QWidget *work_;
    QStackedWidget *whole_, *pages_;
    CWelcomePage *welcome_;
    CStartPage *start_;
    QLabel *empty_;
    CElidedLabel *company_;
    QToolButton *year_;
    QLabel *engine_, *user_;
    long working_year_ = -1; ///< the fiscal year that dates are completed from; -1 = none yet
};
