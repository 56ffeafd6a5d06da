#include "plotting/session.h"

#include <algorithm>

#include "base/text.h"
#include "drawing/text_measure.h"
#include "plotting/axis_label.h"
#include "plotting/decibels.h"

namespace photrak {
namespace {

constexpr std::size_t mostHeld = 1000;
constexpr std::string_view laidOver = "over/";  // begins the keys of another plot's curves

/// Second axis or not for a y label of another plot; -1 when both axes show something else.
int AxisFor(Plot& plot, const std::string& label) {
    if (plot.curves.empty() || label == plot.spec.yLabel) return 0;
    if (label == plot.spec.secondLabel && HasSecondAxis(plot)) return 1;
    if (HasSecondAxis(plot)) return -1;
    plot.spec.secondLabel = label;
    return 1;
}

/// Both, as long as a reader takes them in.
void JoinTitles(std::string& title, const std::string& other) {
    constexpr std::size_t longest = 100;
    if (other.empty() || title.find(other) != std::string::npos || title.size() > longest) return;
    title += (title.empty() ? "" : " \xC2\xB7 ") + other;
}

std::string Waiting(const OpenPlot& open) {
    return Concat("waiting for ", open.plot.name);
}

}  // namespace

bool Overlay(Plot& plot, const Plot& other, std::string& error) {
    if (plot.kind == PlotKind::Eye || other.kind == PlotKind::Eye) {
        error = Concat(other.name, ": eye diagrams are not laid over others");
        return false;
    }
    if (plot.spec.xLabel != other.spec.xLabel) {
        error = Concat(other.name, ": its x axis is '", other.spec.xLabel, "', not '",
                       plot.spec.xLabel, "'");
        return false;
    }
    const std::size_t before = plot.curves.size();
    // Held curves have the colors of those they were.
    int place = static_cast<int>(std::count_if(plot.curves.begin(), plot.curves.end(),
                                               [](const Curve& c) { return !c.held; }));
    const std::string secondLabel = plot.spec.secondLabel;
    for (const Curve& source : other.curves) {
        const int axis = AxisFor(plot, source.second ? other.spec.secondLabel : other.spec.yLabel);
        if (axis < 0) {
            error = Concat(other.name, ": both y axes show other quantities already");
            plot.curves.resize(before);
            plot.spec.secondLabel = secondLabel;
            return false;
        }
        Curve curve = source;
        curve.second = axis == 1;
        curve.name = curve.named ? Concat(other.name, ": ", source.name) : other.name;
        curve.named = true;
        curve.key = Concat(laidOver, other.name, "/", source.key);
        curve.place = place++ % 1'000'000;
        plot.curves.push_back(std::move(curve));
    }
    // Now all need the name of their file.
    for (std::size_t i = 0; i < before; ++i) {
        Curve& curve = plot.curves[i];
        if (curve.held || curve.key.starts_with(laidOver)) continue;
        if (!curve.named || !curve.name.starts_with(plot.name)) {
            curve.name = curve.named ? Concat(plot.name, ": ", curve.name) : plot.name;
        }
        curve.named = true;
    }
    JoinTitles(plot.spec.title, other.spec.title);
    // A window that was made for one set of data may cut the other off.
    plot.spec.x = plot.spec.y = {};
    return true;
}

std::size_t PlotSession::Open(const std::string& path, Plot plot, FileStamp stamp) {
    if (const auto found = Find(path)) {
        Loaded(*found, std::move(plot), stamp);
        return *found;
    }
    auto open = std::make_unique<OpenPlot>();
    open->path = path;
    open->view = PlotView(plot);
    open->plot = std::move(plot);
    open->wasRead = true;
    open->drawn = open->seen = stamp;
    plots_.push_back(std::move(open));
    return plots_.size() - 1;
}

std::size_t PlotSession::OpenFailed(const std::string& path, std::string error, FileStamp stamp) {
    const auto found = Find(path);
    const std::size_t index = found ? *found : Open(path, {}, stamp);
    OpenPlot& open = At(index);
    if (!found) {
        open.wasRead = false;
        open.plot.path = path;
        open.plot.name = DrawableText(path.substr(path.rfind('/') + 1));
    }
    LoadFailed(index, std::move(error), stamp);
    return index;
}

std::optional<std::size_t> PlotSession::Find(const std::string& path) const {
    for (std::size_t i = 0; i < plots_.size(); ++i) {
        if (plots_[i]->path == path) return i;
    }
    return std::nullopt;
}

void PlotSession::Close(std::size_t index) {
    const std::string path = plots_[index]->path;
    plots_.erase(plots_.begin() + static_cast<std::ptrdiff_t>(index));
    for (const std::size_t over : ShownOn(path)) {
        std::erase(At(over).overlaid, path);
        At(over).view.Follow(Shown(over));
    }
}

std::vector<std::size_t> PlotSession::ShownOn(const std::string& path) const {
    std::vector<std::size_t> found;
    for (std::size_t i = 0; i < plots_.size(); ++i) {
        const auto& overlaid = plots_[i]->overlaid;
        if (std::find(overlaid.begin(), overlaid.end(), path) != overlaid.end()) found.push_back(i);
    }
    return found;
}

ReloadState PlotSession::Noticed(std::size_t index, FileStamp stamp, std::int64_t now) {
    OpenPlot& open = At(index);
    if (stamp == open.drawn) {
        // Back to what is drawn, or nothing new.
        open.seen = stamp;
        if (open.state == ReloadState::Settling) open.state = ReloadState::Current;
        return open.state;
    }
    if (!(stamp == open.seen)) {
        open.seen = stamp;
        open.seenAt = now;
        open.state = stamp.exists ? ReloadState::Settling : ReloadState::Waiting;
        if (!stamp.exists) open.message = Waiting(open);
        return open.state;
    }
    if (open.state == ReloadState::Settling && now - open.seenAt >= restTime)
        open.state = ReloadState::Ready;
    return open.state;
}

void PlotSession::Loaded(std::size_t index, Plot plot, FileStamp stamp) {
    OpenPlot& open = At(index);
    open.seen = open.drawn = stamp;
    const bool whole = !plot.incomplete;
    open.state = whole ? ReloadState::Current : ReloadState::Waiting;
    open.message = whole ? std::string() : Waiting(open);
    if (!whole && open.wasRead) return;
    open.plot = std::move(plot);
    if (open.wasRead) {
        open.view.Follow(Shown(index));
    } else {
        open.view = PlotView(Shown(index));
    }
    open.wasRead = true;
    for (const std::size_t over : ShownOn(open.path)) At(over).view.Follow(Shown(over));
}

void PlotSession::LoadFailed(std::size_t index, std::string error, FileStamp stamp) {
    OpenPlot& open = At(index);
    open.seen = open.drawn = stamp;
    open.state = ReloadState::Waiting;
    open.message = std::move(error);
}

void PlotSession::Hold(std::size_t index, const std::string& name) {
    OpenPlot& open = At(index);
    for (const Curve& curve : open.plot.curves) {
        if (open.held.size() == mostHeld) break;
        Curve kept = curve;
        kept.held = true;
        kept.name = Concat(DrawableText(name), ": ", curve.name);
        kept.key = Concat("held/", open.held.size(), "/", curve.key);
        open.held.push_back(std::move(kept));
    }
}

void PlotSession::DropHeld(std::size_t index) {
    At(index).held.clear();
    At(index).view.Follow(Shown(index));
}

void PlotSession::SetDecibels(std::size_t index, bool on) {
    OpenPlot& open = At(index);
    if (open.decibels == on) return;
    open.decibels = on;
    open.cursors.y = {};
    const Plot shown = Shown(index);
    open.view.Follow(shown);
    open.view.SetYScale(shown, ScaleKind::Linear);  // decibels have no logarithm
    open.view.SetRange(AxisId::Y, FullRange(shown, AxisId::Y, ScaleKind::Linear));
    open.view.SetRange(AxisId::Second,
                       FullRange(shown, AxisId::Second, open.view.Now().secondKind));
}

bool PlotSession::ToggleOverlay(std::size_t index, std::size_t other, std::string& error) {
    OpenPlot& open = At(index);
    const std::string& path = At(other).path;
    if (std::erase(open.overlaid, path) > 0) {
        open.view.Follow(Shown(index));
        return true;
    }
    if (index == other) {
        error = "a plot is not laid over itself";
        return false;
    }
    Plot trial = Shown(index);
    if (!Overlay(trial, At(other).plot, error)) return false;
    open.overlaid.push_back(path);
    open.view.Follow(Shown(index));
    return true;
}

Plot PlotSession::Shown(std::size_t index) const {
    const OpenPlot& open = At(index);
    Plot shown = open.plot;
    shown.curves.insert(shown.curves.begin(), open.held.begin(), open.held.end());
    for (const std::string& path : open.overlaid) {
        const auto other = std::find_if(plots_.begin(), plots_.end(),
                                        [&](const auto& p) { return p->path == path; });
        std::string reason;  // it fitted when it was laid on; after a reload it may not any more
        if (other != plots_.end() && !Overlay(shown, (*other)->plot, reason))
            shown.notes.push_back(reason);
    }
    if (open.decibels) TurnDecibels(shown);
    return shown;
}

}  // namespace photrak
