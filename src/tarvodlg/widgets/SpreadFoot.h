#pragma once

#include <QHeaderView>
#include <QTableView>
#include <functional>

/// Titles that stand exactly over the texts of their cells.
class SpreadHeader : public QHeaderView {
  public:
    explicit SpreadHeader(QWidget *grid);

  protected:
    void initStyleOptionForIndex(QStyleOptionHeader *option, int column) const override;
    void paintSection(QPainter *painter, const QRect &rect, int column) const override;
};

/// The slim row with the sums below a grid, aligned with its columns and scrolled with them.
class SpreadFoot : public QWidget {
  public:
    struct Cell {
        QString text;
        Qt::Alignment alignment;
    };
    using CellFunction = std::function<Cell(int column)>;

    SpreadFoot(QTableView *grid, CellFunction cell);

    QSize sizeHint() const override;

  protected:
    void paintEvent(QPaintEvent *event) override;

  private:
    QTableView *grid_;
    CellFunction cell_;
};

/// The blank between a cell's edge and its text; cells, titles and foot agree on it.
int SpreadPadding(const QFontMetrics &metrics);
