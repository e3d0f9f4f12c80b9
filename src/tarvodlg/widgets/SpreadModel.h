#pragma once

#include "tarvodlg/widgets/SpreadSheet.h"
#include "tarvodlg/widgets/SpreadStore.h"

#include <QAbstractTableModel>

/// What the view asks of the grid: the number of its rows, its titles, the texts of the cells in sight. Changes of
/// cells are not announced one by one: the grid repaints what is in sight. Rows and columns count from 0.
class SpreadModel : public QAbstractTableModel {
  public:
    void SetColumns(std::vector<CSpreadSheet::Column> columns); ///< drops all rows
    const std::vector<CSpreadSheet::Column> &Columns() const { return columns_; }
    const CSpreadSheet::Column &Column(long column) const { return columns_[static_cast<std::size_t>(column)]; }

    SpreadStore &Store() { return store_; }
    const SpreadStore &Store() const { return store_; }

    void SetRows(long rows);
    void InsertRow(long before);
    void DeleteRow(long row);

    /// Between the two the view keeps the number of rows it knew; afterwards rows are added or taken at the end.
    void BeginBatch() { batching_ = true; }
    void EndBatch();

    std::string Shown(long row, int column) const; ///< the text of the cell as the user reads it
    Qt::Alignment Alignment(int column) const;

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;

  private:
    std::vector<CSpreadSheet::Column> columns_;
    SpreadStore store_;
    long known_rows_ = 0; ///< as the view was told
    bool batching_ = false;
};

/// Reads what was typed into a cell of the column, the way the fields of a form do; blank gives an empty cell.
/// @return false when it can't be read or a choice is none of the column's
bool CompleteCell(const CSpreadSheet::Column &column, const QString &typed, SpreadValue *value);
