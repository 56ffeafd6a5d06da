// What the workbench asks of whatever shows it: boxes, file dialogs, programs that are started, and
// a repaint. The window, the script player and the tests supply their own.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace photrak {

struct Component;
struct DiagramView;

enum class BoxKind { Error, Information };
enum class Answer { Yes, No, Cancel };

/// A filter of a file dialog, as "Photrak Files (*.top)" and "*.top".
struct FileFilter {
    std::string_view text, pattern;
};

struct FileRequest {
    bool saves = false;
    std::string title;
    std::vector<FileFilter> filters;
    std::string directory;  // where the dialog starts
};

struct Desktop {
    virtual ~Desktop() = default;
    virtual void Box(BoxKind kind, std::string_view title, std::string_view text) = 0;
    virtual Answer Query(std::string_view title, std::string_view text) = 0;
    /// The chosen file as an absolute path, or as given by the user; none for Cancel.
    virtual std::optional<std::string> ChooseFile(const FileRequest& request) = 0;
    /// Starts the plot viewer on a command file, the editor on a file; false if it does not start.
    virtual bool StartViewer(const std::string& file, const std::string& directory) = 0;
    virtual bool StartEditor(const std::string& file, const std::string& directory) = 0;
    /// Any other program, by argument vector.
    virtual bool Start(const std::vector<std::string>& arguments, const std::string& directory) = 0;
    /// Topic 0 is the contents.
    virtual void ShowHelp(std::int32_t topic) = 0;
    /// Scrolls a diagram so that the block is in sight.
    virtual void Reveal(const DiagramView&, const Component&) {}
};

}  // namespace photrak
