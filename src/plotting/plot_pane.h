// One open plot under a pointer: what gestures and commands do to its view and cursors, and what is
// drawn over it while they last. Knows no window; one shows its drawing and hands on what happens.
//
//   wheel           zooms at the pointer; with Shift x alone, with Alt y alone; over an axis that
//   axis left drag       a box to zoom to (a flat one zooms one axis); over an axis moves it middle
//   drag, Shift + drag    moves the plot click           puts cursor A there, with Ctrl cursor B; a
//   drag on a cursor moves it legend          a click hides or shows a curve, a double click shows
//   it alone double click    shows all, over an axis all of that axis
#pragma once

#include <memory>
#include <optional>

#include "drawing/input.h"
#include "plotting/session.h"

namespace photrak {

/// What a gesture changed.
enum class Change {
    Nothing,
    Overlay,  // cursors, boxes, what is hovered
    View,     // the base layer too
};

class PlotPane {
  public:
    /// `open` is borrowed.
    explicit PlotPane(OpenPlot& open) : open_(open) {}

    /// What is drawn; see PlotSession::Shown.
    void Show(std::shared_ptr<const Plot> plot);
    const Plot& Shown() const { return *plot_; }
    bool HasPlot() const { return plot_ != nullptr; }
    OpenPlot& Open() { return open_; }
    const OpenPlot& Open() const { return open_; }

    /// All that a base layer is made from: a copy, so that it can be drawn on another thread.
    struct Job {
        std::shared_ptr<const Plot> plot;
        PlotView view;
        PlotOptions options;
        PlotPicture Draw() const { return DrawPlot(*plot, view, options); }
    };
    Job MakeJob(PageSize size, const TextMeasure& measure) const;
    /// True when drawing and painting take longer than a window may stand still.
    bool IsHeavy() const;
    void Take(PlotPicture picture);
    bool HasPicture() const { return hasPicture_; }
    /// Base layer as taken, the overlay as things stand now.
    const Drawing& Picture();
    const PlotLayout& Layout() const { return picture_.layout; }

    Change Pointer(const PointerInput& input);
    Change Wheel(const WheelInput& input);
    PointerShape Shape(Point at) const;
    /// The values under a point of the pane, "12.5 ps, 3.1 mW"; empty outside of it.
    std::string PlaceText(Point at) const;

    // Commands, in parts of the pane where they have a size.
    Change Zoom(double factor);
    Change Move(Point by);
    Change FitAxis(AxisId axis);
    Change SetScale(ScaleKind kind);
    /// Both cursors at a third and two thirds of what is seen, or none.
    Change ToggleCursors();
    Change ToggleLevelCursors();
    /// The x cursor touched last, by samples; without one the plot moves by a tenth.
    Change Step(int steps);
    /// The same cursor to the next peak of the first visible curve, to the right or (-1) left.
    Change StepPeak(int direction);
    Change Escape();

    EyeStyle eyeStyle = EyeStyle::Auto;
    double saturation = 1.0;

  private:
    struct CursorRef {
        bool level = false;
        CursorId id = CursorId::A;
    };
    enum class Drag { None, Pending, Box, Plot, Axis, Cursor };

    Change Press(const PointerInput& input);
    Change Drags(const PointerInput& input);
    Change Release(const PointerInput& input);
    Change DoubleClick(const PointerInput& input);
    Change Hover(Point at);
    Change Click(const PointerInput& input);
    void MoveCursor(Point at);
    std::optional<CursorRef> CursorAt(Point at) const;
    const Mark* MarkUnder(Point at) const;
    std::optional<std::size_t> LegendAt(Point at) const;
    std::optional<AxisId> AxisAt(Point at) const;
    void DrawOver();
    Rect RubberBox() const;

    OpenPlot& open_;
    std::shared_ptr<const Plot> plot_;
    PlotPicture picture_;
    bool hasPicture_ = false;
    std::size_t baseMarks_ = 0;

    Drag drag_ = Drag::None;
    PointerInput pressed_;
    Point last_;
    bool moved_ = false;  // the drag has changed the view: further moves are the same step
    AxisId axis_ = AxisId::X;
    CursorRef cursor_;
    Cursors before_;  // a click, which a double click takes back
    std::optional<std::size_t> hovered_;
    std::optional<WheelInput> wheel_;  // the last one, if nothing else happened since
};

}  // namespace photrak
