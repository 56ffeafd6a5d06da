// What a plot shows as comma-separated values: for spreadsheets.
#pragma once

#include <string>

#include "plotting/view.h"

namespace photrak {

/// A header row with the names of the visible curves, then the rows in the visible range of x.
/// Numbers have nine digits; gaps are empty. Curves of several x columns follow one another side by
/// side, each with its own x. Fields are quoted where needed, and a text that a spreadsheet would
/// take for a formula gets an apostrophe first.
std::string TableText(const Plot& plot, const PlotView& view);

}  // namespace photrak
