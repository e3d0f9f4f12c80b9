#pragma once

#include "tarvodlg/widgets/TarvoRecordDialog.h"

#include <QImage>
#include <QUrl>

class CSpreadSheet;
class DocumentView;
class QScrollArea;

/// The size of a file as people read it: "1 KB", "12,3 MB". What is there has at least 1 KB.
std::string FileSizeText(long long bytes);

/// The files attached to a stored entry.
class CPNotaAllegati : public CTarvoRecordBrowseDialog {
  public:
    /// The largest file that is taken: it is held whole in memory, and every copy of the archive carries it.
    static constexpr long long kBytesMax = 100LL * 1024 * 1024;

    /// @param entry  number of a stored entry
    CPNotaAllegati(long entry, CWnd *parent);
    ~CPNotaAllegati() override;

    void LoadTable(SACommand *cmd, bool progress) override;

    void OnRecordNuovo() override;   ///< attaches files picked by the user: all of them or none
    void OnRecordApri() override;    ///< a copy opens in the program of its kind
    void OnRecordSalva() override;   ///< writes a copy where the user wants it
    void OnRecordElimina() override; ///< after a question
    void OnRecordStampa() override;  ///< a copy opens in its program, which prints
    void OnUpdateRecordSalva(CCmdUI *command) override { command->Enable(IsRecordLoaded()); }

    /// Hands a file to the desktop; false when no program takes it.
    std::function<bool(const QUrl &)> m_open;

  protected:
    bool OnInitDialog() override;

  private:
    long Selected() const; ///< number of the attachment, 0 = none
    void HandOver();
    void ShowIcons();

    long entry_;
};

/// Shows the document image of an entry (admin.pnotaim1), with zoom, and takes a new one.
class CPrimaNotaImg : public CTarvoDialog {
  public:
    CPrimaNotaImg(long entry, CWnd *parent);
    ~CPrimaNotaImg() override;

    bool PreTranslateMessage(QKeyEvent *message) override;
    double Zoom() const { return zoom_; } ///< 1 = one point of the image is one of the screen

    void OnRecordNuovo();   ///< takes an image from a file, in the place of the present one after a question
    void OnRecordElimina(); ///< after a question

  protected:
    bool OnInitDialog() override;

  private:
    void Load();
    void SetZoom(double zoom);
    void FitZoom(); ///< the whole image in the window

    long entry_;
    double zoom_ = 1;
    QImage image_;
    QScrollArea *area_;
    DocumentView *view_;
};

/// The co-holders of an entry (admin.pnotacoi).
class CCointestatari : public CTarvoDialog {
  public:
    CCointestatari(long entry, CWnd *parent);
    ~CCointestatari() override;

    void OnRecordSalva(); ///< stores all lines or none, and closes

  protected:
    bool OnInitDialog() override;

  private:
    void ShowLines(SACommand *cmd);
    void ShowName(long row);
    bool OnLeaveCellSpread(long row, long column);
    void OnDblClickSpread(long row, long column);
    bool OnKeyPressSpread(long row, QKeyEvent *key);
    bool CheckLines();
    void StoreLines(SACommand *cmd);

    long entry_;
    CSpreadSheet *grid_;
    QAbstractButton *save_;
};
