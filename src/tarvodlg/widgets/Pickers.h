#pragma once

#include "tarvodlg/widgets/Fields.h"
#include "tarvodlg/widgets/TarvoDialog.h"

/// Asks for a year.
class CAnno : public CTarvoDialog {
  public:
    explicit CAnno(CWnd *parent = nullptr);
    QString m_title = "Anno";
    long m_anno = 0; ///< proposed before DoModal, chosen after IDOK; 1900 to 2199

    bool PreTranslateMessage(QKeyEvent *message) override;

  protected:
    bool OnInitDialog() override;
    void OnOK() override;
    void OnCancel() override;

  private:
    CAmountField *year_;
};

/// Asks for a date, with a month to pick it from.
class CData : public CTarvoDialog {
  public:
    explicit CData(CWnd *parent = nullptr);
    QString m_title = "Data";
    long m_data = 0;            ///< day number; proposed before DoModal, chosen after IDOK
    bool m_obbligatoria = true; ///< false: an empty date is an answer too

    bool PreTranslateMessage(QKeyEvent *message) override;

  protected:
    bool OnInitDialog() override;
    void OnOK() override;
    void OnCancel() override;

  private:
    CDateField *date_;
    class QCalendarWidget *calendar_;
};

/// First and last day, day numbers, both included.
struct Period {
    long start, stop;
    friend bool operator==(const Period &, const Period &) = default;
};

/// The month (1), quarter (3) or year (12) in which the day falls.
Period PeriodAround(long day, int months);
/// The period of the same length that follows, for -1 the one before. Whole months move by months, so that after
/// February comes all of March; any other period moves by its days. At the ends of the calendar it stays.
Period StepPeriod(const Period &period, int steps);

/// Asks for a period.
class CDataSel : public CTarvoDialog {
  public:
    explicit CDataSel(CWnd *parent = nullptr);
    QString m_title = "Seleziona Periodo";
    /// Day numbers, proposed before DoModal (0: the working month), chosen after IDOK; the stop is never before the
    /// start.
    long m_start = 0, m_stop = 0;

    bool PreTranslateMessage(QKeyEvent *message) override; ///< PgUp and PgDn step the period

  protected:
    bool OnInitDialog() override;
    void OnOK() override;
    void OnCancel() override;

  private:
    void SetMonths(int months);
    void Step(int steps);
    void Show(const Period &period);

    CDateField *start_, *stop_;
};
