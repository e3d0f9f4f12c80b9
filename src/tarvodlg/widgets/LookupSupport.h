#pragma once

#include "tarvodlg/widgets/Field.h"

#include <QLabel>
#include <QObject>
#include <QPointer>

class QLineEdit;
class QTreeWidget;
class QTreeWidgetItem;

/// What the fields with a lookup share: the list of matches under the field while typing, the browser, the description
/// beside the field. The field owns it; database errors of the lookup are shown and count as "not found".
///
/// The list never takes the focus: keys stay with the field, and only the arrows, Page Up and Down and Esc are taken
/// while it is open, before the dialog gives them its own meaning.
class LookupSupport : public QObject {
  public:
    static constexpr const char *kUnknownCode = "Codice sconosciuto";

    /// @param description  label for the description of the code; null = none
    LookupSupport(QLineEdit *edit, std::shared_ptr<CodeLookup> lookup, QLabel *description);
    ~LookupSupport() override;

    /// The code that the user means: the row highlighted in the list, a code the lookup knows, the only row that
    /// letters match. Its description is shown; it is cleared when the code is unknown or ambiguous, and nothing comes
    /// back. @param typed  an empty text and "0" mean no code and pass
    std::optional<std::string> Resolve(const std::string &typed);
    /// Why Resolve gave nothing; empty when it gave a code, or an error was shown already.
    const std::string &Reason() const { return reason_; }

    /// Shows what the code means; an empty or unknown code clears the label.
    void ShowDescription(const std::string &code);

    /// Opens the browser on what is typed; the chosen code is in the field then, as typed by the user.
    /// @return false when it was cancelled
    bool Browse();

    void ClosePopup();

    bool eventFilter(QObject *watched, QEvent *event) override;

  private:
    void Offer(const QString &typed);
    void ShowPopup(const std::vector<LookupMatch> &matches);
    void MakePopup();
    void Take(const LookupMatch &match);
    bool OnPopupKey(int key);
    void MoveHighlight(int rows);
    bool IsPopupOpen() const;
    std::optional<LookupMatch> Highlighted() const;
    std::optional<LookupMatch> Find(const std::string &typed);
    std::optional<std::string> Describe(const std::string &code);
    void SetDescription(const std::string &text);

    QLineEdit *edit_;
    std::shared_ptr<CodeLookup> lookup_;
    QPointer<QLabel> description_;
    QPointer<QTreeWidget> popup_;
    std::string reason_;
};
