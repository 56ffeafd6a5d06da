// Gathers the findings of all files that a topology draws in.
#include "photrak/inspection.h"

#include <algorithm>
#include <filesystem>
#include <set>

#include "base/text.h"
#include "files/diagnostics.h"
#include "files/superblock_file.h"
#include "files/topology_blocks.h"
#include "kernel/parameters.h"
#include "photrak/console.h"
#include "photrak/outcome.h"
#include "platform/file_system.h"

namespace photrak {
namespace {

constexpr int deepest = 16;             // levels that a run bears
constexpr std::size_t mostFiles = 256;  // each is looked at once

/// Those of the file, replaced by those of the command line.
std::vector<TypedSweep> AskedSweeps(Inspection& inspection, const CommandOptions& options) {
    std::vector<TypedSweep> sweeps = SweepsOfFile(inspection);
    const struct {
        const char* place;
        TypedSweep::Loop loop;
        const std::optional<SweepOption>& given;
    } replacements[] = {{"--inner", TypedSweep::Loop::Inner, options.inner},
                        {"--outer", TypedSweep::Loop::Outer, options.outer}};
    for (const auto& [place, loop, given] : replacements) {
        if (!given) continue;
        const auto same = [wanted = loop](const TypedSweep& sweep) { return sweep.loop == wanted; };
        std::erase_if(sweeps, same);
        sweeps.push_back({loop, place, given->name, given->start, given->stop, given->step});
    }
    return sweeps;
}

/// The insides of SuperBlocks, each file once.
class NestedFiles {
  public:
    NestedFiles(const Catalogue& catalogue, LoadFindings& findings)
        : catalogue_(catalogue), findings_(findings) {}

    /// `path` is that of the block whose inside `outer` is, with a colon after it; empty at the
    /// top.
    void Into(const Inspection& outer, const std::string& folder, const std::string& path,
              int depth) {
        for (const TypedComponent& block : outer.components) {
            if (block.superBlock.empty() || depth > deepest || seen_.size() > mostFiles) continue;
            const auto file = FindSuperBlockFile(block.superBlock + ".top", catalogue_, folder);
            if (!file || !block.model || !seen_.insert(*file).second) continue;
            Inspect(block, *file, Concat(path, block.name, ":"), depth);
        }
    }

  private:
    void Inspect(const TypedComponent& block, const std::string& file, const std::string& path,
                 int depth) {
        std::string text, reason;
        if (!ReadWholeFile(file, text, reason, maxTopologyBytes)) return;  // the run tells
        Inspection inner = InspectTopologyText(text, file, catalogue_);
        // What a block hands down takes the place of these texts.
        for (TypedVariable& variable : inner.variables) {
            if (variable.type == DoubleType || variable.type == IntType)
                variable.text.assign(1, '1');
        }
        for (const Parameter& parameter : Items(block.model->parameters)) {
            inner.variables.push_back({parameter.name, "1", {}, parameter.type});
        }
        InspectValues(inner, {}, Thoroughness::ForRun);
        const auto isOfNames = [](const LoadFinding& finding) {
            const std::string_view code = finding.code;
            return code == diagnostic::doubleVariable || code == diagnostic::hiddenVariable;
        };
        std::erase_if(inner.findings, isOfNames);
        for (LoadFinding& finding : inner.findings) {
            finding.text = Located(path, finding.text);
            findings_.push_back(std::move(finding));
        }
        Into(inner, std::filesystem::path(file).parent_path().string(), path, depth + 1);
    }

    /// The text with the block's whole path, "Link:Span:Fiber", or with that of the SuperBlock.
    static std::string Located(const std::string& path, std::string_view text) {
        constexpr std::string_view mark = "component '";
        if (text.starts_with(mark)) return Concat(mark, path, text.substr(mark.size()));
        return Concat("in '", std::string_view(path).substr(0, path.size() - 1), "': ", text);
    }

    const Catalogue& catalogue_;
    LoadFindings& findings_;
    std::set<std::string> seen_;
};

void InspectParamFiles(const Session& session, const CommandOptions& options,
                       Inspection& inspection) {
    for (const auto& [component, file] : options.loadParams) {
        std::string text, reason;
        if (!ReadWholeFile(file, text, reason, maxTopologyBytes)) continue;  // the load tells
        InspectParamText(text, file, component, session.catalogue, inspection);
    }
}

/// In the order of the lines of one file; files in the order in which they were met.
void SortByPlace(LoadFindings& findings) {
    const auto place = [](const LoadFinding& finding) {
        const std::size_t colon = finding.place.rfind(':');
        if (colon == std::string::npos) return std::pair(finding.place, std::int32_t{0});
        return std::pair(finding.place.substr(0, colon), ReadInt(finding.place.substr(colon + 1)));
    };
    std::ranges::stable_sort(findings, [&](const LoadFinding& a, const LoadFinding& b) {
        const auto left = place(a), right = place(b);
        return left.first == right.first && left.second < right.second;
    });
}

}  // namespace

Inspection InspectSession(const Session& session, const CommandOptions& options,
                          Thoroughness thoroughness) {
    std::string text, reason;
    if (!ReadWholeFile(session.fileName, text, reason, maxTopologyBytes)) {
        Inspection nothing;
        nothing.findings.push_back({diagnostic::fileUnreadable,
                                    session.fileName,
                                    Concat("cannot be read: ", reason),
                                    {},
                                    {},
                                    {}});
        return nothing;
    }
    Inspection inspection = InspectTopologyText(text, session.fileName, session.catalogue);
    InspectParamFiles(session, options, inspection);
    GivenSymbols given;
    given.symbols = options.symbols;
    if (options.scans || thoroughness == Thoroughness::ForCheck) {
        given.sweeps = AskedSweeps(inspection, options);
    }
    InspectValues(inspection, given, thoroughness);
    SortByPlace(inspection.findings);
    NestedFiles(session.catalogue, inspection.findings).Into(inspection, {}, {}, 1);
    return inspection;
}

namespace {

/// The document of --json takes the finding with its parts.
void ReportFinding(const LoadFinding& finding) {
    const Outcome::Quiet quiet(CurrentOutcome());
    Report(finding.changesNumber ? "error" : "warning", FindingLine(finding));
    CurrentOutcome().Take(finding);
}

}  // namespace

int ReportFindings(const LoadFindings& findings) {
    int errors = 0;
    for (const LoadFinding& finding : findings) {
        errors += finding.changesNumber;
        ReportFinding(finding);
    }
    return errors;
}

}  // namespace photrak
