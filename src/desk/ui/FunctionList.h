#pragma once

#include <QListWidget>
#include <functional>
#include <vector>

/// One row of a list of things to do.
struct FunctionRow {
    QString caption;
    QString hint;  ///< a quieter line below the caption; empty = none
    QString icon;  ///< as TarvoIcon takes it
    QString right; ///< at the right end: a key, a date
    std::function<void()> run;
};

/// A calm list of rows with icon, caption, hint and key. Enter or a click runs the row. Long texts are elided.
class CFunctionList : public QListWidget {
  public:
    explicit CFunctionList(QWidget *parent = nullptr);

    /// The first row becomes the current one.
    void SetRows(std::vector<FunctionRow> rows);
    const std::vector<FunctionRow> &Rows() const { return rows_; }
    void RunCurrent();
    /// Draws the icons again, after the colours of the program changed.
    void RefreshIcons();

    /// Called instead of the row's own function when it has none.
    std::function<void(int row)> on_run;

  protected:
    void keyPressEvent(QKeyEvent *event) override;

  private:
    void Run(int row);

    std::vector<FunctionRow> rows_;
};

/// The text colour of the palette made quieter, for what is read second.
QColor QuietColour(const QPalette &palette);
