// A curve in pixels: of each pixel column the first, least, greatest and last point in their order,
// which draws the same picture as all points would. Columns are counted from the data, not from the
// edge of the view, so that a panned curve does not shimmer. Source: the M4 aggregation of Jugel,
// Jerzak, Hackenbroich, Markl (VLDB 2014).
#pragma once

#include <vector>

#include "drawing/geometry.h"
#include "plotting/column.h"
#include "plotting/scale.h"

namespace photrak {

/// Where values lie on a page.
struct PixelMap {
    AxisScale x, y;
    Rect pane;

    Point At(double xValue, double yValue) const {
        return {pane.x + x.Place(xValue) * pane.width,
                pane.Bottom() - y.Place(yValue) * pane.height};
    }
    double XAt(double pixel) const { return x.Value((pixel - pane.x) / pane.width); }
    double YAt(double pixel) const { return y.Value((pane.Bottom() - pixel) / pane.height); }
};

/// The visible parts of a curve, joined points between its gaps. Points far outside are cut to one
/// pane's height and width around the pane, since painters are slow or wrong with far coordinates.
/// A point without neighbors is a part of one point.
std::vector<std::vector<Point>> ReduceCurve(const Column& x, const Column& y, const PixelMap& map);

}  // namespace photrak
