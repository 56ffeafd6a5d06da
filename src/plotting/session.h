// The open plots of a viewer: which are there, whether their files are whole, what is held of
// earlier runs, whose curves lie on whose axes. Knows no window, no clock and no disk: the caller
// hands in file stamps and times, and parses where it likes.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "plotting/cursors.h"

namespace photrak {

/// Puts the curves of `other` onto the axes of `plot`, their names led by the other's file name.
/// False with a reason when x is another quantity, or y a third one. A y that differs goes to the
/// second axis.
[[nodiscard]] bool Overlay(Plot& plot, const Plot& other, std::string& error);

/// Size and time of all files of a plot, in any unit that changes when one is rewritten.
struct FileStamp {
    std::uint64_t size = 0;
    std::int64_t time = 0;
    bool exists = true;
    bool operator==(const FileStamp&) const = default;
};

enum class ReloadState {
    Current,   // what is drawn is what the files hold
    Settling,  // the files changed; waiting until they rest
    Ready,     // they rest: parse them
    Waiting,   // parsed and found incomplete, or gone: the picture stays until they change again
};

/// One open plot.
struct OpenPlot {
    std::string path;
    Plot plot;              // as read, without what is laid over it
    bool wasRead = false;   // false as long as no try to read it has succeeded
    bool decibels = false;  // levels turned to decibels, or decibels to levels
    PlotView view;
    Cursors cursors;
    ReloadState state = ReloadState::Current;
    std::string message;  // "waiting for nrz.pcs", or what is wrong; empty while all is well

    std::vector<Curve> held;            // curves of earlier runs
    std::vector<std::string> overlaid;  // paths of open plots drawn on these axes

    FileStamp drawn, seen;  // stamps of what is drawn and of what was seen last
    std::int64_t seenAt = 0;
};

class PlotSession {
  public:
    /// How long files have to rest before they are read, in milliseconds.
    static constexpr std::int64_t restTime = 150;

    /// Adds a plot that was read, or replaces the open one of the same path. Gives its index.
    std::size_t Open(const std::string& path, Plot plot, FileStamp stamp);
    /// The same for a plot that could not be read: it has an entry with the message, and is read
    /// when its files change.
    std::size_t OpenFailed(const std::string& path, std::string error, FileStamp stamp);
    void Close(std::size_t index);
    /// Index of the plot of this path.
    std::optional<std::size_t> Find(const std::string& path) const;
    /// The plots over which the curves of this path are laid.
    std::vector<std::size_t> ShownOn(const std::string& path) const;

    std::size_t Count() const { return plots_.size(); }
    OpenPlot& At(std::size_t index) { return *plots_[index]; }
    const OpenPlot& At(std::size_t index) const { return *plots_[index]; }

    /// A stamp of the files of a plot at a time in milliseconds; call it at each change and while
    /// the state is Settling. Ready means: parse now, then call Loaded or LoadFailed.
    ReloadState Noticed(std::size_t index, FileStamp stamp, std::int64_t now);
    /// The files were parsed. A plot that ends within a row is kept back while its writer is at
    /// work, unless there is nothing else to show.
    void Loaded(std::size_t index, Plot plot, FileStamp stamp);
    /// The picture stays, the message tells why.
    void LoadFailed(std::size_t index, std::string error, FileStamp stamp);

    /// Keeps the present curves, faint and named after `name`, under those of later runs.
    void Hold(std::size_t index, const std::string& name);
    void DropHeld(std::size_t index);
    /// Shows levels in decibels, or as they are in the files. The y axes show all afterwards.
    void SetDecibels(std::size_t index, bool on);
    /// Lays another open plot over this one, or takes it off again. False with a reason.
    [[nodiscard]] bool ToggleOverlay(std::size_t index, std::size_t other, std::string& error);

    /// What is to be drawn: the plot with held curves beneath and overlaid ones above.
    Plot Shown(std::size_t index) const;

  private:
    std::vector<std::unique_ptr<OpenPlot>> plots_;
};

}  // namespace photrak
