// Members stand in a fixed order; what a command has nothing to say of is left out, but for the
// diagnostics, whose list may be empty.
#include "photrak/outcome.h"

#include <algorithm>

#include "base/text.h"
#include "kernel/run_record.h"
#include "photrak/commands.h"
#include "photrak/point_rows.h"
#include "results/result_table.h"

namespace photrak {
namespace {

constexpr std::size_t mostDiagnostics = 10'000;

std::string StatusText(int status) {
    switch (status) {
        case exitStatus::success:
            return "ok";
        case exitStatus::warnings:
            return "warnings";
        case exitStatus::usage:
            return "usage";
        default:
            return status > exitStatus::stoppedBase ? "stopped" : "failed";
    }
}

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

/// The place of "P1234: " in a line, npos without one.
std::size_t FindCode(std::string_view line) {
    constexpr std::size_t length = 5;
    for (std::size_t at = line.find('P'); at != std::string_view::npos;
         at = line.find('P', at + 1)) {
        const std::string_view word = line.substr(at, length + 1);
        const bool isAlone = at == 0 || line[at - 1] == ' ';
        if (isAlone && word.size() > length && word[length] == ':' &&
            std::all_of(word.begin() + 1, word.begin() + length, IsDigit)) {
            return at;
        }
    }
    return std::string_view::npos;
}

/// "link.top:34" into its parts; a place without a line is a file or an option.
void SplitPlace(std::string_view place, OutcomeDiagnostic& diagnostic) {
    if (place.starts_with("--")) {  // an option of the command line
        diagnostic.text = Concat(place, ": ");
        return;
    }
    const std::size_t colon = place.rfind(':');
    const bool hasLine =
        colon != std::string_view::npos && colon + 1 < place.size() &&
        std::all_of(place.begin() + static_cast<std::ptrdiff_t>(colon) + 1, place.end(), IsDigit);
    diagnostic.file = place.substr(0, hasLine ? colon : place.size());
    if (hasLine) diagnostic.line = ReadInt(place.substr(colon + 1));
}

/// The place of a line without a code: "link.top:34: text", or "text (link.top:34)".
void FindPlace(std::string_view line, OutcomeDiagnostic& diagnostic) {
    OutcomeDiagnostic found;
    const std::size_t end = line.find(": ");
    if (end != std::string_view::npos) SplitPlace(line.substr(0, end), found);
    const std::size_t open = line.rfind(" (");
    const std::size_t close = line.find(')', open);
    if (found.line == 0 && open != std::string_view::npos && close != std::string_view::npos) {
        SplitPlace(line.substr(open + 2, close - open - 2), found);
    }
    if (found.line == 0) return;
    diagnostic.file = found.file;
    diagnostic.line = found.line;
}

std::string Member(std::string_view name, std::string_view json) {
    return Concat(",\n  ", JsonText(name), ": ", json);
}

std::string DiagnosticJson(const OutcomeDiagnostic& diagnostic) {
    const auto orNull = [](const std::string& text) {
        return text.empty() ? std::string("null") : JsonText(text);
    };
    return Concat("{\"severity\": ", JsonText(diagnostic.severity),
                  ", \"code\": ", orNull(diagnostic.code), ", \"file\": ", orNull(diagnostic.file),
                  ", \"line\": ", diagnostic.line > 0 ? Concat(diagnostic.line) : "null",
                  ", \"text\": ", JsonText(diagnostic.text), "}");
}

std::string TesterJson(const BerReading& reading) {
    const auto number = [&](double value) {
        return reading.found ? JsonNumber(value) : std::string("null");
    };
    return Concat("{\"tester\": ", JsonText(reading.component), ", \"BER\": ", number(reading.BER),
                  ", \"Q\": ", number(reading.Q), ", \"level\": ", number(reading.level),
                  ", \"offset\": ", number(reading.offset),
                  ", \"status\": ", JsonText(StatusWord(reading, Status::Success)), "}");
}

template <class Items, class Text>
std::string Array(const Items& items, const Text& text) {
    std::string json = "[";
    for (const auto& item : items) {
        json += Concat(json.size() > 1 ? ",\n    " : "\n    ", text(item));
    }
    return json + (json.size() > 1 ? "\n  ]" : "]");
}

}  // namespace

Outcome& CurrentOutcome() {
    static Outcome outcome;
    return outcome;
}

std::string JsonArray(const std::vector<std::string>& items) {
    return Array(items, [](const std::string& item) { return item; });
}

void Outcome::Add(std::string_view severity, std::string_view line) {
    if (!asked_ || quiet_) return;
    if (diagnostics_.size() >= mostDiagnostics) {
        ++unheard_;
        return;
    }
    OutcomeDiagnostic diagnostic;
    diagnostic.severity = severity;
    const std::size_t code = FindCode(line);
    if (code != std::string_view::npos) {
        diagnostic.code = line.substr(code, 5);
        if (code > 2) SplitPlace(line.substr(0, code - 2), diagnostic);
        line.remove_prefix(std::min(code + 7, line.size()));
    } else {
        FindPlace(line, diagnostic);
    }
    diagnostic.text += line;
    diagnostics_.push_back(std::move(diagnostic));
}

void Outcome::Take(const LoadFinding& finding) {
    if (!asked_) return;
    OutcomeDiagnostic diagnostic;
    diagnostic.severity = finding.changesNumber ? "error" : "warning";
    diagnostic.code = finding.code;
    SplitPlace(finding.place, diagnostic);
    const std::string line = FindingLine(finding);
    const std::string start = Concat(finding.place, ": ", finding.code, ": ");
    diagnostic.text += line.starts_with(start) ? line.substr(start.size()) : line;
    diagnostics_.push_back(std::move(diagnostic));
}

void Outcome::TakeRun(const std::string& resultFolder, std::int64_t points, double seconds) {
    if (!asked_) return;
    const RunRecord& record = CurrentRun();
    const auto inFolder = [&](const std::string& name) { return JsonText(resultFolder + name); };
    AddMember("folder", JsonText(resultFolder.empty() ? "." : resultFolder));
    AddMember("seconds", JsonNumber(seconds));
    AddMember("points", Concat(points));
    AddMember("files", Array(record.written.Names(), inFolder));
    AddMember("failed", Array(record.failed.Names(), JsonText));
    AddMember("testers", Array(record.readings, TesterJson));
}

void Outcome::AddMember(std::string_view name, std::string_view json) {
    if (asked_) members_ += Member(name, json);
}

std::string Outcome::Document(int status) const {
    std::string text = Concat("{\n  \"schema\": ", JsonText(Concat("photrak.", command_, "/1")));
    text += Member("version", JsonText(PHOTRAK_VERSION));
    if (!topology_.empty()) text += Member("topology", JsonText(topology_));
    text += Member("status", Concat(status));
    text += Member("outcome", JsonText(StatusText(status)));
    text += members_;
    if (!table_.empty()) text += Member("table", JsonText(table_));
    text += Member("diagnostics", Array(diagnostics_, DiagnosticJson));
    if (unheard_ > 0) text += Member("moreDiagnostics", Concat(unheard_));
    return text + "\n}\n";
}

}  // namespace photrak
