// A plot as it was read: its command file joined with the columns of its data files.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "plotting/column.h"
#include "plotting/command_file.h"
#include "plotting/scale.h"

namespace photrak {

struct Curve {
    std::string name;    // its legend, or the file's name where it has none
    bool named = false;  // the name is a legend
    std::string key;     // tells it from all others, and is the same after a reload
    std::string file;
    std::shared_ptr<const Column> x, y;
    bool second = false;  // on the second y axis
    int place = 0;        // in the palette
    bool held = false;    // of an earlier run: drawn faint
};

/// What is measured of an eye, in the units of its axes.
struct EyeMeasures {
    std::size_t traces = 0;
    double decisionTime = 0.0, decisionLevel = 0.0;  // middle of the opening where it is highest
    double height = 0.0;                             // there, between the lids
    double low = 0.0, high = 0.0;                    // mean levels there
    std::optional<double> Q;         // (high - low) / (sum of the standard deviations)
    std::optional<double> width;     // between the nearest crossings of the decision level
    std::optional<double> crossing;  // where mean rising and falling traces meet: 0 low, 1 high
};

enum class PlotKind { Curves, Eye };

struct Plot {
    PlotSpec spec;
    std::string path;  // of the command file, as given
    std::string name;  // its last part
    PlotKind kind = PlotKind::Curves;
    std::vector<Curve> curves;
    std::optional<double> eyePeriod;  // one interval of an eye that shows two, in units of x
    std::optional<EyeMeasures> eye;   // measured when it was read
    std::vector<std::string> notes;   // what was odd about the files
    bool incomplete = false;          // some data file ends within a row
};

/// What LoadPlot asks of the disk, so that tests and a viewer that watches can hand it texts.
class PlotSource {
  public:
    virtual ~PlotSource() = default;
    /// A data file beside the command file. False with a reason.
    virtual bool ReadData(const std::string& name, std::string& text, std::string& error) = 0;
};

/// Reads the command file at `path` and what it names beside itself. False with a message when the
/// command file cannot be read or none of its data files can; if some can, the others are noted. A
/// link that leads out of the folder is refused.
[[nodiscard]] bool LoadPlot(const std::string& path, Plot& plot, std::string& error);
/// The same from a text and a source.
[[nodiscard]] bool LoadPlotText(std::string_view commands, const std::string& path,
                                PlotSource& source, Plot& plot, std::string& error);

enum class AxisId { X, Y, Second };
bool HasSecondAxis(const Plot& plot);
/// The scale that the command file asks of an axis.
ScaleKind AskedScale(const Plot& plot, AxisId axis);
/// The range of an axis that shows all of it: the window of the command file, elsewhere the data
/// with some room above and below. Levels in dB that stand a hundred below all others mark
/// darkness, values of 1e30 and more what was never set (eye lids): neither counts.
ValueRange FullRange(const Plot& plot, AxisId axis, ScaleKind kind);

}  // namespace photrak
