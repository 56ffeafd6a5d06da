// Texts are shown as plain text: they may come from files.
#include "workbench/window_desktop.h"

#include <QApplication>
#include <QFileDialog>
#include <QFileInfo>
#include <QMessageBox>
#include <QProcess>

#include "kernel/external_commands.h"
#include "platform/file_system.h"

namespace photrak {
namespace {

QString Text(std::string_view text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

/// Counts while a box is open.
class Opened {
  public:
    explicit Opened(int& count) : count_(count) { ++count_; }
    ~Opened() { --count_; }
    Opened(const Opened&) = delete;
    Opened& operator=(const Opened&) = delete;

  private:
    int& count_;
};

void Fill(QMessageBox& box, std::string_view title, std::string_view text) {
    box.setTextFormat(Qt::PlainText);
    box.setWindowTitle(Text(title));
    box.setText(Text(text));
}

}  // namespace

QWidget* WindowDesktop::Front() const {
    QWidget* modal = QApplication::activeModalWidget();
    return modal ? modal : window_.data();
}

void WindowDesktop::Box(BoxKind kind, std::string_view title, std::string_view text) {
    const Opened opened(open_);
    QMessageBox box(Front());
    Fill(box, title, text);
    box.setIcon(kind == BoxKind::Error ? QMessageBox::Critical : QMessageBox::Information);
    box.exec();
}

Answer WindowDesktop::Query(std::string_view title, std::string_view text) {
    const Opened opened(open_);
    QMessageBox box(Front());
    Fill(box, title, text);
    box.setIcon(QMessageBox::Question);
    box.setStandardButtons(QMessageBox::Yes | QMessageBox::No | QMessageBox::Cancel);
    switch (box.exec()) {
        case QMessageBox::Yes:
            return Answer::Yes;
        case QMessageBox::No:
            return Answer::No;
        default:
            return Answer::Cancel;
    }
}

std::optional<std::string> WindowDesktop::ChooseFile(const FileRequest& request) {
    const Opened opened(open_);
    QStringList filters;
    QString suffix;
    for (const FileFilter& filter : request.filters) {
        // "Photrak Files (*.top)" and "*.top": the words before the bracket, then the pattern.
        const std::string_view words = filter.text.substr(0, filter.text.rfind(" ("));
        const bool all = filter.pattern == "*.*";
        filters << Text(words) + QStringLiteral(" (") +
                       (all ? QStringLiteral("*") : Text(filter.pattern)) + QStringLiteral(")");
        if (suffix.isEmpty() && filter.pattern.starts_with("*.") && !all) {
            suffix = Text(filter.pattern.substr(2));
        }
    }
    QFileDialog dialog(Front(), Text(request.title), Text(request.directory));
    dialog.setNameFilters(filters);
    dialog.setAcceptMode(request.saves ? QFileDialog::AcceptSave : QFileDialog::AcceptOpen);
    dialog.setFileMode(request.saves ? QFileDialog::AnyFile : QFileDialog::ExistingFile);
    if (request.saves) dialog.setDefaultSuffix(suffix);
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) return {};
    return dialog.selectedFiles().front().toStdString();
}

bool WindowDesktop::StartViewer(const std::string& file, const std::string& directory) {
    const WorkingDirectory there(directory);
    if (there.Failed()) return false;
    LaunchPlot(file, Wait::No);
    return true;
}

bool WindowDesktop::StartEditor(const std::string& file, const std::string& directory) {
    const WorkingDirectory there(directory);
    return !there.Failed() && RunEditor(file, Wait::No) == 0;
}

bool WindowDesktop::Start(const std::vector<std::string>& arguments, const std::string& directory) {
    if (arguments.empty()) return false;
    QStringList words;
    for (std::size_t i = 1; i < arguments.size(); ++i) words << Text(arguments[i]);
    return QProcess::startDetached(Text(arguments.front()), words, Text(directory));
}

void WindowDesktop::Reveal(const DiagramView&, const Component& component) {
    if (reveal_) reveal_(component);
}

void WindowDesktop::ShowHelp(std::int32_t topic) {
    if (showHelp_) showHelp_(topic);
}

}  // namespace photrak
