#pragma once

#include "schedule/ui/Scadenze.h"
#include "tarvodlg/widgets/Fields.h"

#include <QWidget>
#include <map>

/// The rubber stamp on a paid instalment: its words slightly askew in a double frame, the day below them. In the
/// accent of the theme, so that it is read at once and disturbs nothing. Hidden while it says nothing.
class StampLabel : public QLabel {
  public:
    explicit StampLabel(QWidget *parent);

    /// @param words  "P A G A T A"; empty hides the stamp   @param day  day number; 0 = not known
    void SetStamp(const QString &words, long day);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

  protected:
    void paintEvent(QPaintEvent *event) override;

  private:
    QFont WordsFont() const;
    QSizeF FrameSize() const;

    QString day_;
};

/// Controls of the editor and what it knows beside the record on screen.
struct CScadenze::Form {
    bool is_new = true;
    SCADENZE loaded; ///< as it was read from the archive

    /// What is typed into fields whose change does more than store the value.
    struct {
        long counterpart = 0, terms = 0;
    } typed;

    CAmountField *number = nullptr;
    CCodeField *counterpart = nullptr, *terms = nullptr;
    std::map<std::string, CTarvoField *> fields; ///< by column

    StampLabel *stamp = nullptr;
    QLabel *state = nullptr, *entry = nullptr, *print = nullptr;
};

/// Asks how an open instalment is to be parted, and parts it.
/// @param first  as it was read   @param second  the new instalment   @return false when nothing was done
bool SplitByDialog(CWnd *parent, SCADENZE *first, SCADENZE *second);
