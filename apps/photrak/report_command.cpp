// photrak report: topologies with their results as one page to read, hand on or print. What it
// reads are the regular files of one folder; nothing is run, no user library is loaded.

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>

#include "base/text.h"
#include "drawing/number_text.h"
#include "drawing/svg_writer.h"
#include "photrak/commands.h"
#include "photrak/console.h"
#include "photrak/diagram.h"
#include "photrak/report.h"
#include "photrak/report_page.h"
#include "photrak/report_settings.h"
#include "photrak/report_sources.h"
#include "photrak/report_tables.h"
#include "platform/file_system.h"
#include "platform/full_path.h"
#include "plotting/ber_readout.h"
#include "plotting/plot_drawing.h"

namespace photrak {
namespace {

constexpr std::size_t mostPlots = 300, mostTopologies = 200, mostPictureBytes = 96u << 20;

std::string StemOf(const std::string& name) {
    return std::filesystem::path(name).stem().string();
}

/// Where each curve of error rates falls through 1e-9.
std::string CrossingRemark(const Plot& plot) {
    constexpr double rate = 1e-9;
    constexpr std::size_t most = 6;
    if (plot.spec.yLabel != "BER") return {};
    std::string text;
    std::size_t shown = 0;
    for (const RateCrossing& crossing : CrossingsAt(plot, rate)) {
        if (!crossing.x || ++shown > most) continue;
        const Curve& curve = plot.curves[crossing.curve];
        text +=
            Concat(text.empty() ? "" : "; ", plot.spec.xLabel, " = ", ReadableText(*crossing.x, 4),
                   curve.named ? " for " : "", curve.named ? curve.name : "");
    }
    return text.empty() ? text
                        : Concat("The bit error rate is ", DecadeText(-9), " at ", text, ".");
}

bool IsLonePoint(const Plot& plot) {
    return !plot.curves.empty() &&
           std::all_of(plot.curves.begin(), plot.curves.end(),
                       [](const Curve& curve) { return curve.y->Size() == 1; });
}

/// Gathers a page in the working directory.
class ReportMaker {
  public:
    ReportPage page;

    bool Open() { return reader_.Open(); }

    /// A section with the topology's note and diagram; `stems` gets what its results are named
    /// after.
    ReportSection& AddTopology(const std::string& file, ResultStems& stems, bool* loads = nullptr) {
        ReportSection& section = page.sections.emplace_back();
        section.name = StemOf(file);
        DiagramView view;
        std::string text;
        const bool loaded = reader_.Load(file, view, text);
        if (loads) *loads = loaded;
        if (!text.empty() || !loaded)
            section.warnings.push_back(Concat(file, loaded ? ": " : ": does not load: ", text));
        if (!loaded) return section;
        section.note = view.workspace->NOTE;
        stems = StemsOf(*view.workspace);
        section.settings = SettingTables(*view.workspace, reader_.Bench().catalogue);
        if (!view.workspace->components.empty()) {
            section.diagram = InlineSvgText(DrawDiagram(reader_.Bench(), view), section.name,
                                            Concat("d", page.sections.size()));
        }
        return section;
    }

    void AddResults(ReportSection& section, const ReportFolder& files) {
        std::vector<ReportedRates> tables;
        for (const std::string& name : files.tables) AddTable(section, name, tables);
        section.tables = BerReportTables(tables);
        for (const std::string& name : files.commandFiles) AddPlot(section, name);
    }

    std::size_t WarningCount() const {
        std::size_t count = page.warnings.size();
        for (const ReportSection& section : page.sections) count += section.warnings.size();
        return count;
    }

    /// What was left out for the size of the page.
    void TellLimits() {
        if (left_ == 0) return;
        page.warnings.push_back(Concat("The page has room for ", mostPlots, " plots and ",
                                       mostPictureBytes >> 20, " MiB of pictures; ", left_,
                                       " plots are left out."));
    }

    bool Write(const std::string& output) {
        TellLimits();
        page.producer = "Photrak " PHOTRAK_VERSION;
        if (ReplaceFile(output, ReportHtml(page))) return true;
        Report("error", Concat("cannot write '", output, "': ", std::strerror(errno)));
        return false;
    }

    /// The log as far as it was written after byte `from`, and its warnings.
    void AddLog(std::uintmax_t from) {
        std::string error;
        if (!ReadReportLog(from, page, error)) Lose(page.warnings, Concat("log.txt: ", error));
        for (std::string& warning : LoggedWarnings(page.log))
            page.warnings.push_back(Concat("log.txt: ", warning));
    }

    /// False after a report if the page lacks a result that is there.
    bool IsWhole() const {
        if (lost_ == 0) return true;
        const std::string more = lost_ > 1 ? Concat(", and ", lost_ - 1, " more") : std::string();
        Report("error", Concat("left out of the page: ", firstLost_, more));
        return false;
    }

  private:
    /// What could not be read stands in words on the page, and the command fails.
    void Lose(std::vector<std::string>& warnings, const std::string& warning) {
        if (lost_++ == 0) firstLost_ = warning;
        warnings.push_back(warning);
    }

    void AddTable(ReportSection& section, const std::string& name,
                  std::vector<ReportedRates>& tables) {
        constexpr std::size_t mostBytes = std::size_t{16} << 20;
        std::string text, error;
        if (ReadWholeFile(name, text, error, mostBytes)) {
            tables.push_back(ReadBerTable(text, StemOf(name)));
        } else {
            Lose(section.warnings, Concat(name, ": ", error));
        }
    }

    void AddPlot(ReportSection& section, const std::string& name) {
        if (plots_ == mostPlots || pictureBytes_ > mostPictureBytes) {
            ++left_;
            return;
        }
        ++plots_;
        Plot plot;
        std::string error;
        if (!LoadPlot(name, plot, error)) return Lose(section.warnings, error);
        section.warnings.insert(section.warnings.end(), plot.notes.begin(), plot.notes.end());
        PlotOptions look;
        look.size = {560.0, 350.0};
        ReportPlot picture;
        picture.file = name;
        picture.svg = InlineSvgText(DrawPlot(plot, PlotView(plot), look).drawing,
                                    plot.spec.title.empty() ? plot.name : plot.spec.title,
                                    Concat("p", plots_));
        picture.remark = CrossingRemark(plot);
        picture.folded = IsLonePoint(plot);
        pictureBytes_ += picture.svg.size();
        section.plots.push_back(std::move(picture));
    }

    DiagramReader reader_;
    std::size_t plots_ = 0, left_ = 0, pictureBytes_ = 0, lost_ = 0;
    std::string firstLost_;
};

void TellOfAge(ReportSection& section, const std::string& topology, const ReportFolder& files) {
    std::error_code failed;
    const auto saved = std::filesystem::last_write_time(topology, failed);
    const bool old = std::any_of(
        files.commandFiles.begin(), files.commandFiles.end(), [&](const std::string& name) {
            return !failed && std::filesystem::last_write_time(name, failed) < saved;
        });
    if (old && !failed)
        section.warnings.push_back(
            Concat(topology, " was saved after results that are shown here"));
}

/// Each file to the topology whose name for it is the longest; what has none goes to the end.
void AddFolder(ReportMaker& maker, ReportFolder folder) {
    if (folder.topologies.size() > mostTopologies) {
        maker.page.warnings.push_back(Concat("The first ", mostTopologies, " of ",
                                             folder.topologies.size(), " topologies are shown."));
        folder.topologies.resize(mostTopologies);
    }
    const std::size_t count = folder.topologies.size();
    std::vector<ResultStems> stems(count);
    for (std::size_t i = 0; i < count; ++i) maker.AddTopology(folder.topologies[i], stems[i]);
    std::vector<ReportFolder> own(count + 1);
    const auto share = [&](std::vector<std::string> ReportFolder::*kind) {
        for (const std::string& name : folder.*kind) {
            std::size_t owner = count == 1 ? 0 : count, longest = 0;
            for (std::size_t i = 0; i < count; ++i) {
                const std::size_t match = stems[i].Match(name);
                if (match > longest) longest = match, owner = i;
            }
            (own[owner].*kind).push_back(name);
        }
    };
    share(&ReportFolder::tables);
    share(&ReportFolder::commandFiles);
    if (!own[count].tables.empty() || !own[count].commandFiles.empty()) {
        maker.page.sections.emplace_back().name = count ? "Other results" : "Results";
    }
    for (std::size_t i = 0; i < maker.page.sections.size(); ++i) {
        if (i < count) TellOfAge(maker.page.sections[i], folder.topologies[i], own[i]);
        maker.AddResults(maker.page.sections[i], own[i]);
    }
}

/// A topology alone gets the files that are named after it, all of them if it has the folder for
/// itself. False after a report if it does not load.
bool AddOneTopology(ReportMaker& maker, const std::string& topology, const ReportFolder& folder) {
    ResultStems stems;
    bool loaded = false;
    ReportSection& section = maker.AddTopology(topology, stems, &loaded);
    if (!loaded) {
        Report("error", section.warnings.front());
        return false;
    }
    ReportFolder own = folder;
    if (folder.topologies.size() > 1) {
        const auto foreign = [&](const std::string& name) { return stems.Match(name) == 0; };
        std::erase_if(own.commandFiles, foreign);
        std::erase_if(own.tables, foreign);
    }
    TellOfAge(section, topology, own);
    maker.AddResults(section, own);
    return true;
}

struct ReportPlace {
    std::string directory, topology, output, title;
};

/// Where to look and what to write. A text that says what is wrong, or nothing.
std::string PlaceOf(const CommandOptions& options, std::filesystem::file_status kind,
                    ReportPlace& place) {
    const std::filesystem::path given(options.file);
    std::error_code failed;
    const std::string& output = options.plot.output;
    if (std::filesystem::is_directory(kind)) {
        const std::filesystem::path full = ResolvedPath(given, failed);
        place = {options.file, "", FullPath((given / "report.html").string()),
                 full.filename().string()};
    } else if (given.extension() == ".top") {
        place.directory = given.has_parent_path() ? given.parent_path().string() : ".";
        place.topology = given.filename().string();
        place.output = FullPath(std::filesystem::path(given).replace_extension(".html").string());
        place.title = given.stem().string();
    } else {
        return Concat("'", options.file, "' is neither a topology nor a folder");
    }
    if (!output.empty()) {
        if (!output.ends_with(".html") && !output.ends_with(".htm"))
            return Concat("'", output, "' is no name of a page: it must end in .html");
        place.output = FullPath(output);
    }
    if (!options.title.empty()) place.title = options.title;
    return {};
}

int Failed(std::string_view problem) {
    Report("error", problem);
    return exitStatus::failed;
}

}  // namespace

int ReportCommand(const CommandOptions& options) {
    const ConsoleMessages messages;
    std::error_code unknown;
    const auto kind = std::filesystem::status(options.file, unknown);
    if (!std::filesystem::status_known(kind))
        return Failed(Concat("cannot read '", options.file, "': ", unknown.message()));
    ReportPlace place;
    if (const std::string problem = PlaceOf(options, kind, place); !problem.empty()) {
        Report("error", problem);
        return exitStatus::usage;
    }
    if (!place.topology.empty() && !std::filesystem::exists(kind))
        return Failed(Concat("'", options.file, "': No such file"));
    const WorkingDirectory directory(place.directory);
    ReportFolder folder;
    std::string error;
    if (directory.Failed() || !ListReportFolder(".", folder, error)) {
        return Failed(Concat("cannot read the folder '", place.directory,
                             "': ", directory.Failed() ? directory.Reason() : error));
    }
    ReportMaker maker;
    if (!maker.Open()) return exitStatus::failed;
    maker.page.title = place.title;
    if (folder.cut)
        maker.page.warnings.push_back("The folder has too many files: some are missing.");
    if (place.topology.empty()) {
        AddFolder(maker, folder);
    } else if (!AddOneTopology(maker, place.topology, folder)) {
        return exitStatus::failed;
    }
    maker.AddLog(0);
    if (!maker.Write(place.output)) return exitStatus::failed;
    if (const std::size_t count = maker.WarningCount(); count > 0 && !options.quiet)
        Report("note", Concat("warnings on the page: ", count));
    if (!options.quiet)
        WriteOut(options.plot.output.empty() ? place.output + "\n" : options.plot.output + "\n");
    return maker.IsWhole() ? exitStatus::success : exitStatus::failed;
}

bool WriteRunReport(const RunForReport& run) {
    ReportMaker maker;
    if (!maker.Open()) return false;
    maker.page.title = StemOf(run.topology);
    maker.page.warnings = run.warnings;
    ResultStems stems;
    maker.AddResults(maker.AddTopology(run.topology, stems), SortReportFiles(run.results));
    maker.AddLog(run.logBefore);
    const std::string output = maker.page.title + ".html";
    if (!maker.Write(output)) return false;
    WriteOut(output + "\n");
    return maker.IsWhole();
}

}  // namespace photrak
