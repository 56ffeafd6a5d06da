// Plot command files: a table of options read into a PlotSpec. What the reader does not know is
// kept as a note and passed over. Texts are data: "&l" becomes a lambda, "\#" a number sign,
// nothing else in them means anything.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace photrak {

/// Limits of an axis; an absent one is left open.
struct AxisWindow {
    std::optional<double> least, greatest;
};

enum class CurveSymbols {
    None,
    Points,  // levels by themselves, which no line joins
    All,
};

struct PlotFile {
    std::string name;         // bare: inside the folder of the command file
    bool secondAxis = false;  // its columns belong to the second y axis
    int line = 0;             // of the command file
};

struct PlotSpec {
    std::string title, xLabel, yLabel, secondLabel;
    std::vector<std::string> legends;  // of the data columns, in order
    std::vector<std::string> textBoxes;
    std::vector<PlotFile> files;
    std::vector<int> colors;  // codes in the order of the curves; see ColorPlace
    bool oneColor = false;    // all curves in the first of `colors`
    CurveSymbols symbols = CurveSymbols::None;
    bool logarithmic = false;        // the first y axis
    bool secondLogarithmic = false;  // the second one
    AxisWindow x, y, second;
    std::optional<int> yColumns;     // columns per x column, when the file says so
    std::vector<std::string> notes;  // "NAME:LINE: ...", about what was passed over
};

/// Reads the text of a command file; `name` is for messages. False, with a message in `error`, when
/// it names a data file outside of its folder or asks for more than the reader's limits.
[[nodiscard]] bool ReadPlotCommands(std::string_view text, const std::string& name, PlotSpec& spec,
                                    std::string& error);

/// The place in the palette of a color code. Codes follow the sequence that all writers use (2, 1,
/// 3, 4, ...), so code 2 is the first color.
int ColorPlace(int code);

/// A text of a command file as it is shown: "&l" and "\#" resolved, the arrows "<< " and ">> " at
/// its start made to point at the axes, bytes that are no text replaced.
std::string ShownText(std::string_view text);

inline constexpr std::size_t maxPlotFiles = 1000, maxLegends = 100'000, maxPlotNotes = 20;

}  // namespace photrak
