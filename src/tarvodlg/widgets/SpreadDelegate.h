#pragma once

#include "tarvodlg/widgets/SpreadSheet.h"

#include <QStyledItemDelegate>

/// Draws the cells in sight straight from the store and makes the line they are typed in.
class SpreadDelegate : public QStyledItemDelegate {
  public:
    explicit SpreadDelegate(CSpreadSheet *sheet);

    void paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const override;
    QWidget *createEditor(QWidget *parent, const QStyleOptionViewItem &option, const QModelIndex &index) const override;
    void setEditorData(QWidget *editor, const QModelIndex &index) const override;
    void setModelData(QWidget *, QAbstractItemModel *, const QModelIndex &) const override {} ///< the grid stores
    void updateEditorGeometry(QWidget *editor, const QStyleOptionViewItem &option,
                              const QModelIndex &index) const override;
    void destroyEditor(QWidget *editor, const QModelIndex &index) const override;
    bool helpEvent(QHelpEvent *event, QAbstractItemView *view, const QStyleOptionViewItem &option,
                   const QModelIndex &index) override;

  protected:
    bool eventFilter(QObject *editor, QEvent *event) override;

  private:
    QColor Background(const QStyleOptionViewItem &option, const QModelIndex &index, bool selected) const;
    QColor Foreground(const QStyleOptionViewItem &option, const QModelIndex &index, const QColor &background) const;
    QString Fitting(const QString &text, const QFontMetrics &metrics, int width, int column) const;

    CSpreadSheet *sheet_;
};

/// The colour, made lighter or darker until it can be read on the background; the hue stays as long as it can.
QColor ReadableOn(const QColor &background, QColor colour);
