#include "plotting/command_file.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <span>

#include "base/line_reader.h"
#include "base/text.h"
#include "drawing/text_measure.h"

namespace photrak {
namespace {

struct Reading {
    PlotSpec& spec;
    std::string where;  // "NAME:LINE"
    std::string error;
    std::optional<AxisWindow> decades[2] = {};  // of "/ly" and "/ly2", where they stand

    void Note(std::string_view text) {
        if (spec.notes.size() < maxPlotNotes) spec.notes.push_back(Concat(where, ": ", text));
    }
};

/// What stands after an option word.
using Argument = std::string_view;

std::string_view Trimmed(std::string_view text) {
    const std::size_t first = text.find_first_not_of(" \t");
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

/// The text between the first double quote and the last one (or the end of the line).
std::string_view Quoted(Argument argument) {
    const std::size_t first = argument.find('"');
    if (first == std::string_view::npos) return Trimmed(argument);
    const std::size_t last = argument.rfind('"');
    return argument.substr(first + 1, last > first ? last - first - 1 : std::string_view::npos);
}

std::optional<double> Number(std::string_view text) {
    text = Trimmed(text);
    std::size_t used = 0;
    const double value = ReadDouble(text, &used);
    if (used == 0 || used != text.size() || !std::isfinite(value)) return {};
    return value;
}

/// Splits at commas.
std::vector<std::string_view> Fields(std::string_view text) {
    std::vector<std::string_view> fields;
    for (std::size_t start = 0; start <= text.size();) {
        const std::size_t end = std::min(text.find(',', start), text.size());
        fields.push_back(Trimmed(text.substr(start, end - start)));
        start = end + 1;
    }
    return fields;
}

void SetWindow(Reading& reading, AxisWindow& window, std::string_view least,
               std::string_view greatest) {
    const auto set = [&](std::optional<double>& limit, std::string_view field) {
        if (field.empty()) return;
        limit = Number(field);
        if (!limit) reading.Note(Concat("the limit '", DrawableText(field), "' is no number"));
    };
    set(window.least, least);
    set(window.greatest, greatest);
    if (window.least && window.greatest && *window.least > *window.greatest) {
        std::swap(window.least, window.greatest);
    }
}

void SetLimits(Reading& reading, Argument argument, AxisWindow& y) {
    const auto fields = Fields(argument);
    const auto field = [&](std::size_t i) {
        return i < fields.size() ? fields[i] : std::string_view();
    };
    SetWindow(reading, reading.spec.x, field(0), field(1));
    SetWindow(reading, y, field(2), field(3));
}

template <std::string PlotSpec::*member>
void SetText(Reading& reading, Argument argument) {
    reading.spec.*member = ShownText(Quoted(argument));
}
void AddLegend(Reading& reading, Argument argument) {
    if (reading.spec.legends.size() == maxLegends) {
        reading.error = Concat(reading.where, ": more than ", maxLegends, " legends");
        return;
    }
    reading.spec.legends.push_back(ShownText(Quoted(argument)));
}
void AddTextBox(Reading& reading, Argument argument) {
    constexpr std::size_t most = 20;
    if (reading.spec.textBoxes.size() < most) {
        reading.spec.textBoxes.push_back(ShownText(Quoted(argument)));
    } else {
        reading.Note("one text box too many");
    }
}
void SetColors(Reading& reading, Argument argument) {
    constexpr std::size_t most = 1000;
    std::vector<int> colors;
    for (const std::string_view field : Fields(argument)) {
        const auto code = Number(field);
        if (!code || *code < 1 || *code > 255) {
            return reading.Note(
                Concat("the color '", DrawableText(field), "' is no number from 1 to 255"));
        }
        if (colors.size() < most) colors.push_back(static_cast<int>(*code));
    }
    reading.spec.colors = std::move(colors);
}
void SetOneColor(Reading& reading, Argument argument) {
    SetColors(reading, argument);
    reading.spec.oneColor = true;
}
void SetSymbols(Reading& reading, Argument argument) {
    reading.spec.symbols = Trimmed(argument).empty() ? CurveSymbols::All : CurveSymbols::Points;
}
void SetWindowOfFirst(Reading& reading, Argument argument) {
    SetLimits(reading, argument, reading.spec.y);
}
void SetWindowOfSecond(Reading& reading, Argument argument) {
    SetLimits(reading, argument, reading.spec.second);
}
/// After the word the decade limits of the data may stand.
AxisWindow DecadesOf(Reading& reading, Argument argument) {
    AxisWindow decades;
    if (Trimmed(argument).empty()) return decades;
    const auto fields = Fields(argument);
    SetWindow(reading, decades, fields[0], fields.size() > 1 ? fields[1] : std::string_view());
    return decades;
}
void SetLogarithmic(Reading& reading, Argument argument) {
    reading.decades[0] = DecadesOf(reading, argument);
}
void SetLogarithmicSecond(Reading& reading, Argument argument) {
    reading.decades[1] = DecadesOf(reading, argument);
}
/// Limits of a window come before the decades.
void TakeDecades(const std::optional<AxisWindow>& decades, bool& logarithmic, AxisWindow& window) {
    if (!decades) return;
    logarithmic = true;
    if (!window.least && decades->least && *decades->least > 0.0) window.least = decades->least;
    if (!window.greatest && decades->greatest && *decades->greatest > 0.0)
        window.greatest = decades->greatest;
}
/// "/ly2" means the second y axis where some file is on it; a plot of one y axis has it on that.
void ResolveLogarithmic(Reading& reading) {
    PlotSpec& spec = reading.spec;
    const bool two = std::any_of(spec.files.begin(), spec.files.end(),
                                 [](const PlotFile& file) { return file.secondAxis; });
    TakeDecades(reading.decades[0], spec.logarithmic, spec.y);
    TakeDecades(reading.decades[1], two ? spec.secondLogarithmic : spec.logarithmic,
                two ? spec.second : spec.y);
}
/// "/nx1", or "/nx1 /ny" and the count of y columns.
void SetColumns(Reading& reading, Argument argument) {
    const std::size_t ny = argument.find("/ny");
    if (Trimmed(argument.substr(0, std::min(ny, argument.size()))) != "1")
        reading.Note("only one x column is supported");
    if (ny == std::string_view::npos) return;
    const auto count = Number(argument.substr(ny + 3));
    if (!count || *count < 1 || *count > 1e9) return reading.Note("/ny wants a count of columns");
    reading.spec.yColumns = static_cast<int>(*count);
}
void SetYColumns(Reading& reading, Argument argument) {
    SetColumns(reading, Concat("1 /ny", argument));
}
void Ignore(Reading&, Argument) {}

struct OptionRow {
    std::string_view word;
    void (*apply)(Reading& reading, Argument argument);
};

// A word that begins another one stands after it.
constexpr OptionRow optionRows[] = {
    {"/tt", SetText<&PlotSpec::title>},
    {"/xl", SetText<&PlotSpec::xLabel>},
    {"/yl", SetText<&PlotSpec::yLabel>},
    {"/altyl", SetText<&PlotSpec::secondLabel>},
    {"/altw", SetWindowOfSecond},
    {"/lt", AddLegend},
    {"/tb", AddTextBox},
    {"/lcm", SetColors},
    {"/lc", SetOneColor},
    {"/ls", Ignore},  // solid; dashes come only where colors run out
    {"/ly2", SetLogarithmicSecond},
    {"/ly", SetLogarithmic},
    {"/l", Ignore},  // lines, as always
    {"/st", SetSymbols},
    {"/w", SetWindowOfFirst},
    {"/nx", SetColumns},
    {"/ny", SetYColumns},
};

/// A name that leads out of the folder, or that is none.
bool IsBareName(std::string_view name) {
    return !name.empty() && name != "." && name != ".." &&
           std::none_of(name.begin(), name.end(), [](char c) {
               return c == '/' || static_cast<unsigned char>(c) < ' ' || c == '\x7F';
           });
}

void AddFile(Reading& reading, std::string_view line, int lineNumber) {
    PlotFile file;
    file.line = lineNumber;
    constexpr std::string_view secondWord = " /alty";
    line = Trimmed(line);
    if (line.ends_with(secondWord)) {
        file.secondAxis = true;
        line = Trimmed(line.substr(0, line.size() - secondWord.size()));
    }
    // Under a prefix with a folder the writers name the file with it; it lies beside the command
    // file.
    const std::size_t slash = line.rfind('/');
    const std::string_view bare = slash == std::string_view::npos ? line : line.substr(slash + 1);
    const std::string_view folder = line.substr(0, line.size() - bare.size());
    const bool leadsOut = line.starts_with('/') || folder.starts_with("../") ||
                          folder.find("/../") != std::string_view::npos;
    if (leadsOut || !IsBareName(bare)) {
        reading.error = Concat(reading.where, ": the data file '", DrawableText(line),
                               "' does not lie in the folder of the command file");
        return;
    }
    if (reading.spec.files.size() == maxPlotFiles) {
        reading.error = Concat(reading.where, ": more than ", maxPlotFiles, " data files");
        return;
    }
    file.name = bare;
    reading.spec.files.push_back(std::move(file));
}

void ApplyOption(Reading& reading, std::string_view line) {
    for (const OptionRow& row : optionRows) {
        if (line.starts_with(row.word)) return row.apply(reading, line.substr(row.word.size()));
    }
    reading.Note(Concat("unknown option '", DrawableText(line.substr(0, 40)), "'"));
}

struct TextCode {
    std::string_view code, shown;
};
constexpr TextCode startCodes[] = {{"<< ", "\xE2\x86\x90 "}, {">> ", "\xE2\x86\x92 "}};
constexpr TextCode textCodes[] = {{"&l", "\xCE\xBB"}, {"\\# ", "#"}, {"\\#", "#"}};

/// The code at the start of `text`, null if there is none.
const TextCode* CodeAt(std::string_view text, std::span<const TextCode> codes) {
    for (const TextCode& code : codes) {
        if (text.starts_with(code.code)) return &code;
    }
    return nullptr;
}

}  // namespace

int ColorPlace(int code) {
    if (code == 1) return 1;
    if (code == 2) return 0;
    return std::max(code, 1) - 1;
}

std::string ShownText(std::string_view text) {
    constexpr std::size_t longest = 500;
    const std::string drawable = DrawableText(text.substr(0, longest));
    std::string_view rest = drawable;
    std::string shown;
    if (const TextCode* arrow = CodeAt(rest, startCodes)) {
        shown.append(arrow->shown);
        rest.remove_prefix(arrow->code.size());
    }
    while (!rest.empty()) {
        const TextCode* code = CodeAt(rest, textCodes);
        shown.append(code ? code->shown : rest.substr(0, 1));
        rest.remove_prefix(code ? code->code.size() : 1);
    }
    return shown;
}

bool ReadPlotCommands(std::string_view text, const std::string& name, PlotSpec& spec,
                      std::string& error) {
    LineReader lines(text, name);
    spec = {};
    Reading reading{spec, {}, {}};
    while (lines.Next()) {
        reading.where = lines.Where();
        const std::string_view line = lines.Line();
        if (line.starts_with('/')) {
            ApplyOption(reading, line);
        } else {
            AddFile(reading, line, lines.LineNumber());
        }
        if (!reading.error.empty()) {
            error += reading.error;
            return false;
        }
    }
    ResolveLogarithmic(reading);
    return true;
}

}  // namespace photrak
