#include "tarvodlg/widgets/QtUserInterface.h"

#include "tarvodlg/base/ConsoleUserInterface.h"
#include "tarvodlg/widgets/DialogKeys.h"
#include "tarvodlg/widgets/Field.h"
#include "tarvodlg/widgets/Pickers.h"
#include "tarvodlg/widgets/Theme.h"

#include <QApplication>
#include <QCloseEvent>
#include <QElapsedTimer>
#include <QFileDialog>
#include <QLabel>
#include <QLibraryInfo>
#include <QLocale>
#include <QMessageBox>
#include <QPointer>
#include <QProgressBar>
#include <QPushButton>
#include <QStyle>
#include <QTranslator>
#include <QVBoxLayout>
#include <algorithm>
#include <clocale>

namespace {

QString IconOf(unsigned flags)
{
    switch (flags & 0xF0) {
    case MB_ICONERROR:
        return QStringLiteral("errore");
    case MB_ICONQUESTION:
        return QStringLiteral("domanda");
    case MB_ICONEXCLAMATION:
        return QStringLiteral("avviso");
    case MB_ICONINFORMATION:
        return QStringLiteral("informazione");
    default:
        return {};
    }
}

std::vector<int> AnswersOf(unsigned flags)
{
    switch (flags & 0xF) {
    case MB_YESNO:
        return {IDYES, IDNO};
    case MB_YESNOCANCEL:
        return {IDYES, IDNO, IDCANCEL};
    default:
        return {IDOK};
    }
}

QPushButton *AddAnswer(QMessageBox *box, int answer)
{
    switch (answer) {
    case IDYES:
        return box->addButton(QStringLiteral("&Sì"), QMessageBox::YesRole);
    case IDNO:
        return box->addButton(QStringLiteral("&No"), QMessageBox::NoRole);
    case IDCANCEL:
        return box->addButton(QStringLiteral("&Annulla"), QMessageBox::RejectRole);
    default:
        return box->addButton(QStringLiteral("OK"), QMessageBox::AcceptRole);
    }
}

/// The window of a long run. It cannot be closed: what must be whole is not stopped half way.
class ProgressWindow : public QDialog {
  public:
    explicit ProgressWindow(const QString &title)
        : QDialog(WindowInFront(), Qt::Dialog | Qt::CustomizeWindowHint | Qt::WindowTitleHint),
          status_(new QLabel(this)), bar_(new QProgressBar(this))
    {
        setWindowTitle(title);
        setModal(true);
        setCursor(Qt::BusyCursor);
        status_->setTextFormat(Qt::PlainText);
        status_->setAccessibleName(title);
        bar_->setRange(0, 0); // how long it takes is not known yet
        bar_->setTextVisible(false);
        auto *layout = new QVBoxLayout(this);
        layout->addWidget(status_);
        layout->addWidget(bar_);
        setMinimumWidth(60 * fontMetrics().averageCharWidth());
    }
    void SetStatus(const QString &text) { status_->setText(text); }
    /// @param share  0 to 1; below 0 = not known
    void SetShare(double share)
    {
        bar_->setRange(0, share < 0 ? 0 : 1000);
        bar_->setTextVisible(share >= 0);
        if (share >= 0) bar_->setValue(static_cast<int>(share * 1000));
    }

  protected:
    void reject() override {} // Esc
    void closeEvent(QCloseEvent *event) override { event->ignore(); }

  private:
    QLabel *status_;
    QProgressBar *bar_;
};

/// Shows at most thirty states a second: more of them nobody sees, and each costs a turn of the event loop.
class WindowProgress : public ProgressView {
  public:
    explicit WindowProgress(const QString &title) : window_(title)
    {
        window_.show();
        Breathe(true);
    }
    void SetStatus(const std::string &text) override
    {
        window_.SetStatus(ToQt(text));
        Breathe(false);
    }
    void SetRange(long first, long last) override
    {
        first_ = first;
        last_ = last;
        SetPosition(first);
    }
    void SetPosition(long position) override
    {
        if (!Breathe(false) && position < last_) return;
        const double length = static_cast<double>(last_) - static_cast<double>(first_);
        const double done = static_cast<double>(position) - static_cast<double>(first_);
        window_.SetShare(length > 0 ? std::clamp(done / length, 0.0, 1.0) : -1);
    }

  private:
    /// @return false when the last time was just now
    bool Breathe(bool at_once)
    {
        if (!at_once && last_time_.isValid() && last_time_.elapsed() < 33) return false;
        // What the user types or clicks meanwhile waits until the run is over.
        QApplication::processEvents(QEventLoop::ExcludeUserInputEvents);
        last_time_.start();
        return true;
    }

    ProgressWindow window_;
    QElapsedTimer last_time_;
    long first_ = 0, last_ = 0;
};

struct FileFilter {
    QString words;     ///< "Foglio Excel (*.xlsx)"
    QString extension; ///< "xlsx", empty when any file fits
};

/// "Foglio Excel (*.xlsx)|*.xlsx|File CSV (*.csv)|*.csv||"
std::vector<FileFilter> FiltersOf(const std::string &filter)
{
    std::vector<FileFilter> filters;
    const QStringList parts = ToQt(filter).split(QLatin1Char('|'), Qt::SkipEmptyParts);
    for (qsizetype i = 0; i + 1 < parts.size(); i += 2) {
        QString patterns = parts[i + 1];
        patterns.replace(QLatin1Char(';'), QLatin1Char(' '));
        const QString extension = patterns.section(QLatin1Char(' '), 0, 0).section(QLatin1String("*."), 1);
        const QString words = parts[i].section(QLatin1String(" ("), 0, 0);
        filters.push_back({QStringLiteral("%1 (%2)").arg(words, patterns),
                           extension.contains(QLatin1Char('*')) ? QString() : extension});
    }
    return filters;
}

std::filesystem::path ToPath(const QString &file)
{
    return FromQt(file);
}

void PrepareForSaving(QFileDialog *dialog, const std::vector<FileFilter> &filters, const FilePicking &picking)
{
    dialog->setAcceptMode(QFileDialog::AcceptSave);
    dialog->setDefaultSuffix(ToQt(picking.default_extension));
    QObject::connect(dialog, &QFileDialog::filterSelected, dialog, [dialog, filters](const QString &chosen) {
        for (const FileFilter &filter : filters)
            if (filter.words == chosen && !filter.extension.isEmpty()) dialog->setDefaultSuffix(filter.extension);
    });
}

} // namespace

QWidget *WindowInFront()
{
    QWidget *modal = QApplication::activeModalWidget();
    return modal ? modal : QApplication::activeWindow();
}

QtUserInterface::QtUserInterface() = default;
QtUserInterface::~QtUserInterface() = default;

int QtUserInterface::MessageBox(const std::string &text, unsigned flags)
{
    QMessageBox box(WindowInFront());
    box.setWindowTitle(QStringLiteral("Lumera Contabilità"));
    box.setTextFormat(Qt::PlainText); // names of companies and files may look like markup
    box.setText(ToQt(text));
    box.setTextInteractionFlags(Qt::TextSelectableByMouse);
    const int icon_size = box.style()->pixelMetric(QStyle::PM_MessageBoxIconSize, nullptr, &box);
    const QIcon icon = TarvoIcon(IconOf(flags));
    if (!icon.isNull()) box.setIconPixmap(icon.pixmap(QSize(icon_size, icon_size), box.devicePixelRatioF()));

    std::vector<std::pair<QAbstractButton *, int>> buttons;
    for (const int answer : AnswersOf(flags)) {
        QPushButton *button = AddAnswer(&box, answer);
        if (answer == DefaultAnswer(flags)) {
            box.setDefaultButton(button);
            button->setFocus();
        }
        box.setEscapeButton(button); // the last one: No, Annulla or OK
        buttons.emplace_back(button, answer);
    }
    box.exec();
    for (const auto &[button, answer] : buttons)
        if (button == box.clickedButton()) return answer;
    return buttons.back().second;
}

void QtUserInterface::Beep(int, int)
{
    QApplication::beep();
}

std::unique_ptr<ProgressView> QtUserInterface::OpenProgress(const std::string &title)
{
    return std::make_unique<WindowProgress>(ToQt(title));
}

std::vector<std::filesystem::path> QtUserInterface::PickFiles(const FilePicking &picking)
{
    QFileDialog dialog(WindowInFront(), ToQt(picking.title));
    const std::vector<FileFilter> filters = FiltersOf(picking.filter);
    QStringList names;
    for (const FileFilter &filter : filters) names << filter.words;
    if (!names.isEmpty()) dialog.setNameFilters(names);

    if (picking.save)
        PrepareForSaving(&dialog, filters, picking);
    else
        dialog.setFileMode(picking.several ? QFileDialog::ExistingFiles : QFileDialog::ExistingFile);
    if (picking.proposed.has_parent_path()) dialog.setDirectory(ToQt(picking.proposed.parent_path().string()));
    if (picking.proposed.has_filename()) dialog.selectFile(ToQt(picking.proposed.filename().string()));

    std::vector<std::filesystem::path> picked;
    if (dialog.exec() == QDialog::Accepted)
        for (const QString &file : dialog.selectedFiles()) picked.push_back(ToPath(file));
    return picked;
}

std::optional<std::filesystem::path> QtUserInterface::PickFolder(const std::string &title)
{
    const QString folder = QFileDialog::getExistingDirectory(WindowInFront(), ToQt(title));
    if (folder.isEmpty()) return std::nullopt;
    return ToPath(folder);
}

std::optional<long> QtUserInterface::PickDate(const std::string &title, long proposed)
{
    CData dialog(WindowInFront());
    dialog.m_title = ToQt(title);
    dialog.m_data = proposed;
    if (dialog.DoModal() != IDOK) return std::nullopt;
    return dialog.m_data;
}

std::optional<long> QtUserInterface::PickYear(const std::string &title, long proposed)
{
    CAnno dialog(WindowInFront());
    dialog.m_title = ToQt(title);
    dialog.m_anno = proposed;
    if (dialog.DoModal() != IDOK) return std::nullopt;
    return dialog.m_anno;
}

// The clock and the login are the same at the desk and at a terminal.
long QtUserInterface::Today()
{
    return ConsoleUserInterface().Today();
}

long QtUserInterface::SecondOfDay()
{
    return ConsoleUserInterface().SecondOfDay();
}

std::string QtUserInterface::UserName()
{
    return ConsoleUserInterface().UserName();
}

void SetUpApplication()
{
    // Qt takes over the desktop's locale, and with it a decimal comma that files and SQL must not have.
    std::setlocale(LC_NUMERIC, "C");
    QLocale::setDefault(QLocale(QLocale::Italian, QLocale::Italy));
    QApplication::setOrganizationName(QStringLiteral("Lumera"));
    QApplication::setApplicationName(QStringLiteral("lumera"));
    QApplication::setDesktopFileName(QStringLiteral("it.lumera.Contabilita"));
    QApplication::setStyle(QStringLiteral("Fusion"));
    QApplication::setWindowIcon(TarvoIcon(QStringLiteral("lumera")));

    static QPointer<QTranslator> standard_texts;
    if (!standard_texts) {
        standard_texts = new QTranslator(qApp);
        if (standard_texts->load(QStringLiteral("qtbase_it"), QLibraryInfo::path(QLibraryInfo::TranslationsPath)))
            QApplication::installTranslator(standard_texts);
    }
    DialogKeys::Install();
}
