// What the workbench asks of a window system: boxes, file dialogs, programs, help pages.
#pragma once

#include <QPointer>
#include <QWidget>
#include <functional>

#include "workbench/desktop.h"

namespace photrak {

class WindowDesktop : public Desktop {
  public:
    /// Boxes and dialogs stand over the dialog in front, else over this window.
    void SetWindow(QWidget* window) { window_ = window; }
    /// Called with a topic of the help, 0 for the contents.
    void SetHelp(std::function<void(std::int32_t)> show) { showHelp_ = std::move(show); }
    /// Called with a block that should be in sight in the diagram in front.
    void SetReveal(std::function<void(const Component&)> reveal) { reveal_ = std::move(reveal); }
    /// A box or a file dialog is open: whoever polls must wait.
    bool Asks() const { return open_ > 0; }

    void Box(BoxKind kind, std::string_view title, std::string_view text) override;
    Answer Query(std::string_view title, std::string_view text) override;
    std::optional<std::string> ChooseFile(const FileRequest& request) override;
    bool StartViewer(const std::string& file, const std::string& directory) override;
    bool StartEditor(const std::string& file, const std::string& directory) override;
    bool Start(const std::vector<std::string>& arguments, const std::string& directory) override;
    void ShowHelp(std::int32_t topic) override;
    void Reveal(const DiagramView& view, const Component& component) override;

  private:
    QWidget* Front() const;

    QPointer<QWidget> window_;
    std::function<void(std::int32_t)> showHelp_;
    std::function<void(const Component&)> reveal_;
    int open_ = 0;
};

}  // namespace photrak
