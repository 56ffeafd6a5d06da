// Lines of the table, rows of lids and eye, and their command files.
#include "results/ber_files.h"

#include <functional>
#include <new>
#include <stdexcept>

#include "base/text.h"

namespace photrak {
namespace {

constexpr std::string_view timeAxis = "Decision Time Offset (s)";
constexpr std::string_view levelAxis = "Decision Level Offset (V)";

std::string JoinByTabs(std::initializer_list<std::string_view> words) {
    std::string line;
    for (const std::string_view word : words) {
        if (word.empty()) continue;
        if (!line.empty()) line.push_back('\t');
        line.append(word);
    }
    return line.append("\n");
}

/// Written, unless memory ends first, which counts like a full disk.
FileResult WriteRows(const std::string& name, const std::function<std::string()>& rows,
                     std::string& errorText) {
    try {
        return WritePlotFile(name, rows(), errorText);
    } catch (const std::bad_alloc&) {
    } catch (const std::length_error&) {
    }
    return FileResult::Failed;
}

double TimeOffset(const EyeLidPlot& plot, std::int32_t i) {
    return i * plot.tStep - (static_cast<double>(plot.decisionIndex) - 1.0) * plot.tStep;
}

std::string LidRows(const EyeLidPlot& plot) {
    std::string text;
    for (std::int32_t i = 0; i < plot.lidLength; ++i) {
        text += Concat(TimeOffset(plot, i), ' ', plot.upper[i + 1] - plot.decisionLevel, ' ',
                       plot.lower[i + 1] - plot.decisionLevel, '\n');
    }
    return text;
}

std::string EyeRows(const EyeLidPlot& plot) {
    constexpr std::size_t usualNumberLength = 13;  // with its blank
    std::string text;
    text.reserve(static_cast<std::size_t>(plot.lidLength) *
                 (static_cast<std::size_t>(plot.traces) + 1) * usualNumberLength);
    for (std::int32_t i = 0; i < plot.lidLength; ++i) {
        AppendDefault(text, TimeOffset(plot, i));
        const double* sample = plot.eyeData + i + 1;
        for (std::int64_t trace = 0; trace < plot.traces; ++trace, sample += plot.lidLength) {
            text.push_back(' ');
            AppendDefault(text, *sample - plot.decisionLevel);
        }
        text.push_back('\n');
    }
    return text;
}

std::string AxisLines(std::string_view title) {
    std::string script;
    AppendTextLine(script, "/tt", title);
    AppendTextLine(script, "/xl", timeAxis);
    AppendTextLine(script, "/yl", levelAxis);
    return script;
}

std::string LidScript(const std::string& name, const EyeLidPlot& plot) {
    std::string script =
        AxisLines(plot.averageEye ? "BER Tester Eye Lids (Ave Eye Method)" : "BER Tester Eye Lids");
    script += Concat("/l\n", name, ".lid\n");
    AppendTextLine(script, "/lt", "Upper lid");
    AppendTextLine(script, "/lt", "Lower lid");
    return script;
}

std::string EyeScript(const std::string& name, const EyeLidPlot& plot) {
    return AxisLines("BER Tester Decision Eye") +
           Concat("/lc2\n/ls1\n", name, ".eye\n/nx1 /ny", plot.traces, "\n");
}

}  // namespace

PlotMode ViewerMode(const SimOptions& options, int saveOrDisplay) {
    constexpr int display = 2;
    const bool own = options.PLOTTING != PlotToFilesOnly && options.PLOTTING != DoNotPlot &&
                     saveOrDisplay == display;
    return options.PLOTTING == DisplayAllPlots || own ? PlotMode::Display : PlotMode::Files;
}

std::string BerTableHeader(const BerTable& table) {
    return JoinByTabs(
        {table.innerName, table.outerName, table.statistical ? "RUN#" : "", "BER", "Q"});
}

/// By design: a row holds the number of its run also where there is but one, and the
/// header has no word for it.
std::string BerTableLine(const BerTable& table, const BerTableRow& row) {
    const std::string inner = table.innerName.empty() ? "" : FormatExponent(row.inner);
    const std::string outer = table.outerName.empty() ? "" : FormatExponent(row.outer);
    return JoinByTabs({inner, outer, row.run, FormatExponent(row.BER), FormatDefault(row.Q)});
}

Status WriteEyeLidFiles(const std::string& name, const EyeLidPlot& plot, std::string& errorText) {
    struct File {
        const char *data, *command;
        std::string (*rows)(const EyeLidPlot& plot);
        std::string (*script)(const std::string& name, const EyeLidPlot& plot);
    };
    constexpr File files[] = {{".lid", ".pld", LidRows, LidScript},
                              {".eye", ".pdt", EyeRows, EyeScript}};
    for (const File& file : files) {
        const FileResult data = WriteRows(
            name + file.data, [&] { return file.rows(plot); }, errorText);
        if (data == FileResult::Refused) return Status::Error;
        if (data == FileResult::Failed) continue;
        const Status command =
            WriteCommandFile(name + file.command, file.script(name, plot), plot.mode, errorText);
        if (command != Status::Success) return command;
    }
    return Status::Success;
}

void BitStreamText::Append(bool bit) {
    text_ += bit ? "1 " : "0 ";
    if (++onLine_ < bitsPerLine_) return;
    text_.push_back('\n');
    onLine_ = 0;
}

const std::string& BitStreamText::Finish() {
    if (onLine_ > 0) text_.push_back('\n');
    onLine_ = 0;
    return text_;
}

}  // namespace photrak
