#pragma once

#include "schedule/CashOutlook.h"

#include <QWidget>
#include <functional>

/// The outlook as a chart: for every month a bar to collect and a bar to pay side by side, what is overdue apart in the
/// colour of alarm, and a line for the balance that they leave. Credit notes hang below the zero line.
///
/// Left and Right, Home and End move through the months, a double click opens one; a bar tells its figures in a
/// tooltip. All colours are the palette's, all sizes the font's.
class CScheduleChart : public QWidget {
  public:
    explicit CScheduleChart(QWidget *parent = nullptr);

    void SetOutlook(const CashOutlook &outlook); ///< keeps the selected month when it is still there
    /// Number of a period of the outlook, from 0; -1 = none.
    int Selected() const { return selected_; }
    void Select(int period); ///< does not call on_select

    enum class Side { Collect, Pay };
    /// Where the bar of a period stands; empty when it has no amount.
    QRectF BarOf(int period, Side side) const;
    /// What the tooltip says at a place; empty beside the months.
    QString TipAt(const QPointF &place) const;

    std::function<void(int period)> on_select; ///< the user moved to it
    std::function<void(int period)> on_open;   ///< a double click

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

  protected:
    void paintEvent(QPaintEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;
    void focusInEvent(QFocusEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;
    bool event(QEvent *event) override;

  private:
    struct Layout;

    void MoveTo(int period);
    void Describe();
    int Count() const { return static_cast<int>(outlook_.periods.size()); }
    int PeriodAt(const QPointF &place) const; ///< -1 = none

    void PaintLegend(QPainter &painter, const Layout &layout) const;
    void PaintAxis(QPainter &painter, const Layout &layout) const;
    void PaintSelection(QPainter &painter, const Layout &layout) const;
    void PaintBars(QPainter &painter, const Layout &layout) const;
    void PaintBalance(QPainter &painter, const Layout &layout) const;
    void PaintNames(QPainter &painter, const Layout &layout) const;
    void PaintEmpty(QPainter &painter) const;

    CashOutlook outlook_;
    int selected_ = -1;
};
