#include "plotting/table_writer.h"

#include <algorithm>
#include <cmath>

#include "base/text.h"

namespace photrak {
namespace {

constexpr int digits = 9;

/// Curves that share their x column.
struct ColumnGroup {
    const Column* x = nullptr;
    std::vector<const Curve*> curves;
    std::vector<std::size_t> rows;  // visible
};

std::string Field(std::string_view text) {
    std::string field(text);
    if (!field.empty() && std::string_view("=+-@").find(field[0]) != std::string_view::npos)
        field.insert(field.begin(), '\'');
    if (field.find_first_of(",\"\n") == std::string::npos) return field;
    std::string quoted = "\"";
    for (const char c : field) quoted.append(c == '"' ? 2 : 1, c);
    quoted.push_back('"');
    return quoted;
}

std::string NumberField(double value) {
    return std::isnan(value) ? std::string() : FormatSignificant(value, digits);
}

std::vector<ColumnGroup> Groups(const Plot& plot, const PlotView& view) {
    std::vector<ColumnGroup> groups;
    for (const Curve& curve : plot.curves) {
        if (view.IsHidden(curve)) continue;
        auto group = std::find_if(groups.begin(), groups.end(), [&](const ColumnGroup& g) {
            return g.x == curve.x.get() || g.x->Values() == curve.x->Values();
        });
        if (group == groups.end()) group = groups.insert(group, {curve.x.get(), {}, {}});
        group->curves.push_back(&curve);
    }
    const ValueRange range = view.ScaleOf(AxisId::X).Range();
    for (ColumnGroup& group : groups) {
        for (std::size_t i = 0; i < group.x->Size(); ++i) {
            if (range.Contains((*group.x)[i])) group.rows.push_back(i);
        }
    }
    return groups;
}

}  // namespace

std::string TableText(const Plot& plot, const PlotView& view) {
    const std::vector<ColumnGroup> groups = Groups(plot, view);
    std::string text;
    std::size_t rows = 0;
    for (const ColumnGroup& group : groups) {
        if (!text.empty()) text.push_back(',');
        text.append(Field(plot.spec.xLabel.empty() ? "x" : plot.spec.xLabel));
        for (const Curve* curve : group.curves) text.append(",").append(Field(curve->name));
        rows = std::max(rows, group.rows.size());
    }
    text += "\n";
    for (std::size_t row = 0; row < rows; ++row) {
        std::string line;
        for (const ColumnGroup& group : groups) {
            const bool present = row < group.rows.size();
            const std::size_t i = present ? group.rows[row] : 0;
            if (&group != &groups.front()) line += ",";
            if (present) line += NumberField((*group.x)[i]);
            for (const Curve* curve : group.curves) {
                line += ",";
                if (present && i < curve->y->Size()) line += NumberField((*curve->y)[i]);
            }
        }
        text.append(line).append("\n");
    }
    return text;
}

}  // namespace photrak
