// Two cursors on the x axis and two on the y axis, and the table they give: values come from the
// data, never from what is drawn.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <vector>

#include "plotting/plot_drawing.h"

namespace photrak {

enum class CursorId { A, B };

/// Where the cursors stand, in values of the axes; absent ones are not shown.
struct Cursors {
    std::array<std::optional<double>, 2> x, y;
    bool snaps = true;  // x cursors stand on samples

    std::optional<double>& X(CursorId id) { return x[static_cast<std::size_t>(id)]; }
    std::optional<double>& Y(CursorId id) { return y[static_cast<std::size_t>(id)]; }
};

/// The sample nearest to `x`; nothing in an empty column or one of gaps.
std::optional<std::size_t> NearestSample(const Column& x, double at);
/// The curve's value at `x`: of the nearest sample, or between two of them. Nothing outside of the
/// data and in gaps.
std::optional<double> ValueAt(const Curve& curve, double at, bool snaps);

/// The place for a cursor asked for at `x`: on the nearest sample of the first visible curve, if it
/// snaps.
double CursorPlace(const Plot& plot, const PlotView& view, const Cursors& cursors, double at);
/// Moves a cursor by whole samples of the first visible curve (or by hundredths of the range when
/// it does not snap).
void StepCursor(const Plot& plot, const PlotView& view, Cursors& cursors, CursorId id, int steps);

/// One row of the readout, in text: digits follow the step of the data.
struct ReadoutRow {
    std::string name, a, b, difference, slope;
};
struct Readout {
    // Of the x cursors: "1.25 ns", their difference, and what it means besides ("8 GHz" for a
    // time).
    std::string xA, xB, xDifference, xInverse;
    std::string yA, yB, yDifference;
    std::vector<ReadoutRow> rows;  // one for each visible curve
};
/// At most `mostRows` rows, of the first visible curves.
Readout MakeReadout(const Plot& plot, const PlotView& view, const Cursors& cursors,
                    std::size_t mostRows = 100'000);
/// The readout as lines of tab-separated fields, for a clipboard.
std::string ReadoutText(const Readout& readout);

/// Lines, letters and dots of the cursors on the overlay, with marks "cursor:xA" and the like.
void DrawCursors(PlotPicture& picture, const Plot& plot, const PlotView& view,
                 const Cursors& cursors);

}  // namespace photrak
