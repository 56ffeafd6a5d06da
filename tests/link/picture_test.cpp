// Every plot of every example as a picture, read back: the scales are taken from the labels alone,
// and with them the vertices must lie on the numbers of the data files.
#include <algorithm>
#include <cmath>
#include <set>
#include <sys/stat.h>

#include "link/example_run.h"
#include "plotting/column.h"
#include "support/svg_reader.h"

namespace photrak::test {
namespace {

/// A number as a label shows it: minus sign, raised powers of ten, "2x10^-9".
double LabelValue(std::string text) {
    static const std::pair<std::string_view, std::string_view> plain[] = {
        {"\xE2\x88\x92", "-"}, {"\xC3\x97", "*"},     {"\xE2\x81\xBB", "~"}, {"\xE2\x81\xB0", "a"},
        {"\xC2\xB9", "b"},     {"\xC2\xB2", "c"},     {"\xC2\xB3", "d"},     {"\xE2\x81\xB4", "e"},
        {"\xE2\x81\xB5", "f"}, {"\xE2\x81\xB6", "g"}, {"\xE2\x81\xB7", "h"}, {"\xE2\x81\xB8", "i"},
        {"\xE2\x81\xB9", "j"}};
    for (const auto& [from, to] : plain) {
        for (std::size_t at = text.find(from); at != std::string::npos; at = text.find(from))
            text.replace(at, from.size(), to);
    }
    const std::size_t raised = text.find_first_of("~abcdefghij");
    if (raised == std::string::npos) return std::stod(text);
    std::string exponent;
    for (const char c : text.substr(raised))
        exponent += c == '~' ? '-' : static_cast<char>(c - 'a' + '0');
    const std::size_t times = text.find('*');
    return (times == std::string::npos ? 1.0 : std::stod(text)) *
           std::pow(10.0, std::stod(exponent));
}

/// What stands in the last parentheses, or nothing.
std::string UnitText(const std::string& title) {
    const std::size_t open = title.rfind('('), close = title.rfind(')');
    if (open == std::string::npos || close + 1 != title.size()) return "";
    return title.substr(open + 1, close - open - 1);
}

/// What a label's number is to be multiplied with: the power in "Time (ns)", "span (10^3)".
double UnitOf(const std::string& title) {
    static const std::map<std::string, double> prefixes = {
        {"y", 1e-24}, {"z", 1e-21},       {"a", 1e-18}, {"f", 1e-15}, {"p", 1e-12},
        {"n", 1e-9},  {"\xC2\xB5", 1e-6}, {"m", 1e-3},  {"", 1.0},    {"k", 1e3},
        {"M", 1e6},   {"G", 1e9},         {"T", 1e12}};
    const std::string text = UnitText(title);
    if (text.starts_with("10")) return LabelValue(text.substr(0, text.find(' ')));
    if (text.starts_with("dB")) return 1.0;
    for (const std::string unit : {"Hz", "s", "W", "V", "m"}) {
        if (!text.ends_with(unit)) continue;
        const auto prefix = prefixes.find(text.substr(0, text.size() - unit.size()));
        EXPECT_NE(prefix, prefixes.end()) << title;
        return prefix == prefixes.end() ? 1.0 : prefix->second;
    }
    return 1.0;
}

struct AxisRead {
    std::vector<std::pair<double, double>> labels;  // value in SI units, pixel
    std::string title;
    bool logarithmic = false;

    double Even(double value) const { return logarithmic ? std::log10(value) : value; }
    double Pixel(double value) const {
        const auto [v0, p0] = labels.front();
        const auto [v1, p1] = labels.back();
        return p0 + (Even(value) - Even(v0)) / (Even(v1) - Even(v0)) * (p1 - p0);
    }
};

AxisRead ReadAxis(const std::vector<SvgElement>& svg, const std::string& mark, bool upright) {
    AxisRead axis;
    std::vector<const SvgElement*> texts;
    for (const SvgElement& element : svg) {
        if (element.name == "text" && element.mark == mark) texts.push_back(&element);
    }
    EXPECT_GE(texts.size(), 4u) << mark;  // three labels and the title
    axis.title = texts.back()->text;
    const double unit = UnitOf(axis.title);
    for (const SvgElement* text : texts) {
        if (text == texts.back()) break;
        axis.logarithmic |= text->text.starts_with("10\xE2\x81\xBB");
        // A label is centered on its tick; the middle of its digits lies 0.36 of the size above the
        // baseline.
        axis.labels.emplace_back(LabelValue(text->text) * unit,
                                 upright ? text->Number("y") - 0.36 * 11.0 : text->Number("x"));
    }
    return axis;
}

/// Steps are equal and 1, 2 or 5 times a power of ten (of decades: 1, 2 or 5 times a power of ten
/// of them).
void ExpectRound(const AxisRead& axis) {
    std::vector<double> steps;
    for (std::size_t i = 1; i < axis.labels.size(); ++i) {
        steps.push_back(axis.Even(axis.labels[i].first) - axis.Even(axis.labels[i - 1].first));
    }
    for (const double step : steps) {
        EXPECT_NEAR(step, steps[0], 1e-6 * std::fabs(steps[0]));
        const double mantissa = step / std::pow(10.0, std::floor(std::log10(step) + 1e-6));
        EXPECT_TRUE(std::fabs(mantissa - 1) < 1e-5 || std::fabs(mantissa - 2) < 1e-5 ||
                    std::fabs(mantissa - 5) < 1e-5)
            << step;
    }
}

struct DataPoint {
    double x, y;  // pixels
};

/// Data ascend in x. Each vertex inside the pane is a point of them, and in each column of pixels
/// the curve reaches as high and as low as they do.
void ExpectCurveOnData(const std::vector<Point>& vertices, const std::vector<DataPoint>& data,
                       const Rect& pane) {
    constexpr double half = 0.5;
    for (const Point vertex : vertices) {
        if (!pane.Contains(vertex)) continue;
        auto point = std::lower_bound(data.begin(), data.end(), vertex.x - half,
                                      [](const DataPoint& p, double x) { return p.x < x; });
        bool found = false;
        for (; !found && point != data.end() && point->x <= vertex.x + half; ++point) {
            found = std::fabs(point->y - vertex.y) <= half;
        }
        EXPECT_TRUE(found) << vertex.x << ", " << vertex.y;
        if (!found) return;
    }
    std::map<long, ValueRange> reached;  // by column of pixels
    for (const Point vertex : vertices) reached[std::lround(vertex.x)].Include(vertex.y);
    for (const DataPoint& point : data) {
        // What lies outside of the pane is cut off somewhere outside of it.
        if (!pane.Contains({point.x, point.y})) continue;
        ValueRange drawn;
        for (long column = std::lround(point.x) - 1; column <= std::lround(point.x) + 1; ++column) {
            const auto found = reached.find(column);
            if (found != reached.end()) drawn.Include(found->second);
        }
        const bool within = point.y >= drawn.least - half && point.y <= drawn.greatest + half;
        EXPECT_TRUE(within) << "the curve does not reach " << point.x << ", " << point.y;
        if (!within) return;
    }
}

/// Times and wavelengths have their units, the first axis of a trace or a spectrum too.
void ExpectUnits(const std::string& commandFile, const AxisRead& x, const AxisRead& y) {
    static const std::map<char, std::pair<std::string_view, std::string_view>> ends = {
        {'s', {"s", "W"}}, {'e', {"s", "W"}}, {'f', {"m", "dBm"}}, {'b', {"", ""}}};
    const auto expected = ends.find(commandFile.back());
    ASSERT_NE(expected, ends.end());
    EXPECT_TRUE(UnitText(x.title).ends_with(expected->second.first)) << x.title;
    const std::string unit = UnitText(y.title);
    const bool named =
        unit.ends_with(expected->second.second) || unit.ends_with("V") || unit.ends_with("Hz");
    // Bits have no unit, and a real part has that of whatever it is of.
    EXPECT_TRUE(named || y.title == "Binary Value" || y.title == "Signal (Real)" ||
                y.title.starts_with("Signal (Real) ("))
        << y.title;
}

/// Data files of a command file, with true for the second axis.
std::vector<std::pair<std::string, bool>> DataFiles(const std::string& commands) {
    std::vector<std::pair<std::string, bool>> files;
    std::istringstream lines(commands);
    for (std::string line; std::getline(lines, line);) {
        if (line.empty() || line[0] == '/') continue;
        const std::size_t second = line.find(" /alty");
        files.emplace_back(line.substr(0, second), second != std::string::npos);
    }
    return files;
}

/// Beside rates stands the Q of each: rate = erfc(Q / sqrt(2)) / 2.
void ExpectQBeside(const std::vector<SvgElement>& svg, const AxisRead& rates) {
    if (!rates.logarithmic || rates.title != "BER") return;
    int labels = 0;
    for (const SvgElement& element : svg) {
        if (element.name != "text" || element.mark != "axis:q" || element.text == "Q") continue;
        const double rate = 0.5 * std::erfc(std::stod(element.text) / std::sqrt(2.0));
        EXPECT_NEAR(element.Number("y") - 0.36 * 11.0, rates.Pixel(rate), 0.5) << element.text;
        ++labels;
    }
    EXPECT_GE(labels, 3);
}

void CheckPicture(const std::string& commandFile, const std::string& picture) {
    SCOPED_TRACE(commandFile);
    const auto svg = ReadSvg(FileText(picture));
    ASSERT_FALSE(svg.empty());
    ExpectTextsApart(svg);
    const AxisRead x = ReadAxis(svg, "axis:x", false), y = ReadAxis(svg, "axis:y", true);
    ExpectRound(x);
    ExpectRound(y);
    ExpectUnits(commandFile, x, y);
    ExpectQBeside(svg, y);
    const auto frame = std::find_if(svg.begin(), svg.end(), [](const SvgElement& e) {
        return e.name == "rect" && e.mark.empty() && e.attributes.count("fill") &&
               e.attributes.at("fill") == "none";
    });
    ASSERT_NE(frame, svg.end());
    const Rect pane{frame->Number("x"), frame->Number("y"), frame->Number("width"),
                    frame->Number("height")};
    int curve = 0;
    for (const auto& [file, second] : DataFiles(FileText(commandFile))) {
        const AxisRead& axis = second ? ReadAxis(svg, "axis:second", true) : y;
        const auto rows = Table(file);
        ASSERT_FALSE(rows.empty());
        // In an eye each trace goes on with the one after it.
        const std::size_t intervals = commandFile.ends_with(".pce") ? 2 : 1;
        const double period = rows.back()[0] + rows[intervals - 1][0];  // from 0
        for (std::size_t column = 1; column + intervals <= rows[0].size(); ++column, ++curve) {
            std::vector<DataPoint> data;
            std::ptrdiff_t zeros = 0;
            for (std::size_t k = 0; k < intervals; ++k) {
                for (const auto& row : rows) {
                    const double value = row.at(column + k);
                    zeros += axis.logarithmic && !(value > 0.0);
                    if (axis.logarithmic && !(value > 0.0)) continue;
                    data.push_back({x.Pixel(row[0] + double(k) * period), axis.Pixel(value)});
                }
            }
            std::vector<Point> vertices;
            const std::string mark = "curve:" + std::to_string(curve);
            for (const SvgElement& element : svg) {
                if (element.mark != mark) continue;
                if (element.name == "circle")
                    vertices.push_back({element.Number("cx"), element.Number("cy")});
                if (element.name == "polyline") {
                    const auto points = element.Points();
                    vertices.insert(vertices.end(), points.begin(), points.end());
                }
            }
            EXPECT_FALSE(vertices.empty());
            ExpectCurveOnData(vertices, data, pane);
            // Zeros point downward at the lower edge of a logarithmic axis.
            if (axis.logarithmic) {
                const auto isSign = [&](const SvgElement& e) {
                    return e.name == "polygon" && e.mark == mark &&
                           std::fabs(e.Points()[0].y - pane.Bottom()) < 10;
                };
                EXPECT_EQ(std::count_if(svg.begin(), svg.end(), isSign), zeros);
            }
        }
    }
}

class Pictures : public ExampleRun {};

TEST_F(Pictures, OfAllExamplesShowTheirData) {
    for (const char* command : {"run first-bits",
                                "run patterns",
                                "run nrz-link",
                                "run gaussian",
                                "run cross-phase",
                                "run add-drop",
                                "run wdm8",
                                "run osa-wdm8",
                                "run eye-10g",
                                "run save-signal",
                                "run load-signal",
                                "run soliton",
                                "run recirculating-loop",
                                "scan mach-zehnder",
                                "scan ber-power",
                                "scan ber-power-length",
                                "scan decision-level",
                                "scan statistical",
                                "scan sweep-pattern",
                                "run direct-laser",
                                "run nested",
                                "scan superblock-line"}) {
        Run(std::string(command) + ".top");
    }
    std::vector<std::string> plots;
    for (const auto& entry : std::filesystem::directory_iterator(".")) {
        const std::string name = entry.path().filename().string();
        if (name.find(".pc") != std::string::npos) plots.push_back(name);
    }
    ASSERT_GE(plots.size(), 50u);
    std::filesystem::create_directory("pictures");
    const ProgramResult drawn = Photrak("plot --quiet *.pc? -o pictures");
    ASSERT_EQ(drawn.status, 0) << drawn.error;
    EXPECT_EQ(drawn.error, "");
    for (const std::string& plot : plots) CheckPicture(plot, "pictures/" + plot + ".svg");
    // The same input gives the same bytes; another theme differs in colors alone.
    ASSERT_EQ(Photrak("plot ber-power.pcb -o again.svg").status, 0);
    EXPECT_EQ(FileText("again.svg"), FileText("pictures/ber-power.pcb.svg"));
    ASSERT_EQ(Photrak("plot --dark ber-power.pcb -o dark.svg").status, 0);
    EXPECT_EQ(FileText("dark.svg").size(), FileText("again.svg").size());
    EXPECT_NE(FileText("dark.svg"), FileText("again.svg"));
}

/// Wires that a topology's text asks for: an input on a numbered node that an output stands on.
int WiresIn(const std::string& topology) {
    std::vector<int> inputs;
    std::set<int> driven;
    std::istringstream lines(topology);
    for (std::string line; std::getline(lines, line);) {
        std::istringstream words(line);
        std::string keyword;
        words >> keyword;
        for (int node = 0; (keyword == "INPUTFROM" || keyword == "OUTPUTTO") && words >> node;) {
            if (keyword == "OUTPUTTO") driven.insert(node);
            if (keyword == "INPUTFROM" && node != 0) inputs.push_back(node);
        }
    }
    return static_cast<int>(
        std::ranges::count_if(inputs, [&](int node) { return driven.contains(node); }));
}

TEST_F(Pictures, OfDiagramsHoldEveryBlockAndWire) {
    for (const auto& entry : std::filesystem::directory_iterator(".")) {
        const std::string name = entry.path().filename().string();
        if (entry.path().extension() != ".top") continue;
        SCOPED_TRACE(name);
        const ProgramResult drawn = Photrak("draw --zoom 2 " + name);
        ASSERT_EQ(drawn.status, 0) << drawn.error;
        const std::string topology = FileText(name);
        EXPECT_EQ(Count(drawn.out, "data-mark=\"block:"), Count(topology, "\nCOMPONENT "));
        EXPECT_EQ(Count(drawn.out, "data-mark=\"wire:"), WiresIn(topology));
    }
}

TEST_F(Pictures, OverlaidPlotsShareTheAxesOfTheFirst) {
    Run("run nrz-link.top");
    Run("run first-bits.top");
    ASSERT_EQ(Photrak("plot --overlay nrz-sent.pcs nrz-arrived.pcs nrz-received.pcs --size 900x600 "
                      "-o all.svg")
                  .status,
              0);
    const auto svg = ReadSvg(FileText("all.svg"));
    EXPECT_EQ(svg[0].Number("width"), 900);
    EXPECT_EQ(svg[1].text,
              "Sent Signal Plot \xC2\xB7 Arrived Signal Plot \xC2\xB7 Received Signal Plot");
    ExpectTextsApart(svg);
    std::vector<std::string> marks;
    for (const SvgElement& element : svg) {
        if (element.name == "g" && element.attributes.count("data-mark"))
            marks.push_back(element.mark);
    }
    // The voltage is another quantity: it has the second axis.
    for (const char* mark : {"curve:0", "curve:1", "curve:2", "axis:second", "legend"}) {
        EXPECT_EQ(std::count(marks.begin(), marks.end(), mark), 1) << mark;
    }
}

struct RefusedRow {
    const char* arguments;
    int status;
    const char* expected;
};

TEST_F(Pictures, WhatCannotBeDrawnIsTold) {
    Run("run first-bits.top");
    WriteText("out.pcs", "../first-bits_bin.sig\n");
    WriteText("pipe.pcs", "|touch found\n`touch found`\n");
    WriteText("odd.sig", "0 1\n1 %s%n\n");
    WriteText("odd.pcs", "odd.sig\n");
    WriteText("empty.pcs", "/tt\"x\"\n");
    std::string wide;
    for (int i = 0; i < (1 << 20) + 1; ++i) wide += "1 ";
    WriteText("wide.sig", wide + "\n");
    WriteText("wide.pcs", "wide.sig\n/nx1 /ny1000000000\n");
    ASSERT_EQ(::mkfifo("fifo.pcs", 0600), 0);
    WriteText("odd-files.pcs", "fifo.pcs\nother\n");
    WriteText("long.pcs", "/tt\"" + std::string(17'000'000, 'x') + "\"\n");
    std::filesystem::create_directory("other");
    std::filesystem::create_symlink("../first-bits_bin.sig", "other/link.sig");
    WriteText("other/link.pcs", "link.sig\n");
    const RefusedRow rows[] = {
        {"plot first-bits.pcs", 64, "-o OUT.svg"},
        {"plot first-bits.pcs out.pcs -o x.svg", 64, "folder"},
        {"plot first-bits.pcs -o x.gif", 64, ".svg"},
        {"plot first-bits.pcs -o x.svg --size 10x10", 64, "--size wants"},
        {"plot first-bits.pcs -o x.svg --eye blue", 64, "--eye wants"},
        {"plot -o x.svg", 64, "wants the command file"},
        {"plot missing.pcs -o x.svg", 1, "No such file"},
        {"plot out.pcs -o x.svg", 1,
         "out.pcs:1: the data file '../first-bits_bin.sig' does not lie"},
        {"plot pipe.pcs -o x.svg", 1, "No such file"},
        {"plot odd.pcs -o x.svg", 1, "odd.sig:2: '%s%n' is no number"},
        {"plot empty.pcs -o x.svg", 1, "names no data file"},
        {"plot wide.pcs -o x.svg", 1, "wide.sig:1: more than 1048576 columns"},
        {"plot fifo.pcs -o x.svg", 1, "'fifo.pcs': is not a regular file"},
        {"plot /dev/zero -o x.svg", 1, "'/dev/zero': is not a regular file"},
        {"plot odd-files.pcs -o x.svg", 1, "odd-files.pcs:1: 'fifo.pcs': is not a regular file"},
        {"plot odd-files.pcs -o x.svg", 1, "odd-files.pcs:2: 'other': is not a regular file"},
        {"plot long.pcs -o x.svg", 1, "'long.pcs': is larger than 16777216 bytes"},
        {"plot other/link.pcs -o x.svg", 1, "leads out of the folder"},
        {"plot first-bits.pcs -o missing/x.svg", 1, "cannot write 'missing/x.svg'"},
    };
    for (const RefusedRow& row : rows) {
        const ProgramResult result = Photrak(row.arguments);
        EXPECT_EQ(result.status, row.status) << row.arguments << result.error;
        EXPECT_NE(result.error.find(row.expected), std::string::npos) << row.arguments << "\n"
                                                                      << result.error;
    }
    EXPECT_FALSE(std::filesystem::exists("x.svg"));
    EXPECT_FALSE(std::filesystem::exists("found"));
}

}  // namespace
}  // namespace photrak::test
