#include "photrak/report_sources.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <set>
#include <sys/stat.h>

#include "base/text.h"
#include "kernel/parameters.h"
#include "platform/file_system.h"

namespace photrak {
namespace {

constexpr const char* logName = "log.txt";

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

/// The digits at the start of `text`, without leading zeros; they leave it.
std::string_view TakeNumber(std::string_view& text) {
    std::size_t end = 0;
    while (end < text.size() && IsDigit(text[end])) ++end;
    std::string_view digits = text.substr(0, end);
    digits.remove_prefix(std::min(digits.find_first_not_of('0'), digits.size()));
    text.remove_prefix(end);
    return digits;
}

/// Numbers in names count as numbers.
bool CountsBefore(const std::string& one, const std::string& other) {
    std::string_view a = one, b = other;
    while (!a.empty() && !b.empty()) {
        if (IsDigit(a[0]) && IsDigit(b[0])) {
            const std::string_view x = TakeNumber(a), y = TakeNumber(b);
            if (x.size() != y.size()) return x.size() < y.size();
            if (x != y) return x < y;
            continue;
        }
        if (a[0] != b[0]) return a[0] < b[0];
        a.remove_prefix(1);
        b.remove_prefix(1);
    }
    if (a.empty() != b.empty()) return a.empty();
    return one < other;
}

/// ".pcs" and its like (a letter after ".pc"), the eye lids and the decision eye of a tester.
bool IsCommandFile(std::string_view name) {
    constexpr std::size_t length = 4;
    if (name.size() <= length) return false;
    const std::string_view suffix = name.substr(name.size() - length);
    return (suffix.starts_with(".pc") && suffix[3] >= 'a' && suffix[3] <= 'z') ||
           suffix == ".pld" || suffix == ".pdt";
}

void Add(ReportFolder& folder, const std::string& name) {
    if (name.ends_with(".top")) folder.topologies.push_back(name);
    if (name.ends_with(".bdt")) folder.tables.push_back(name);
    if (IsCommandFile(name)) folder.commandFiles.push_back(name);
}

void Sort(ReportFolder& folder) {
    for (auto* names : {&folder.topologies, &folder.commandFiles, &folder.tables})
        std::sort(names->begin(), names->end(), CountsBefore);
}

bool IsWarning(std::string_view line) {
    return line.find("WARNING") != line.npos || line.find("ERROR") != line.npos ||
           line.starts_with("Warning") || line.starts_with("Error");
}

}  // namespace

bool ListReportFolder(const std::string& folder, ReportFolder& listed, std::string& error) {
    constexpr std::size_t mostEntries = 100'000;
    std::vector<std::string> names;
    bool isWhole = ListFolder(folder, names, error);
    listed.cut = names.size() > mostEntries;
    if (listed.cut) names.resize(mostEntries);
    for (const std::string& name : names) {
        struct stat info {};
        const std::string path = Concat(folder, "/", name);
        const bool isKnown = ::lstat(path.c_str(), &info) == 0;
        if (isKnown && S_ISREG(info.st_mode)) Add(listed, name);
        if (isKnown || errno == ENOENT) continue;  // it was there a moment ago
        error = std::strerror(errno);
        isWhole = false;
    }
    Sort(listed);
    return isWhole;
}

ReportFolder SortReportFiles(const std::vector<std::string>& names) {
    ReportFolder folder;
    for (const std::string& name : names) Add(folder, name);
    Sort(folder);
    return folder;
}

std::size_t ResultStems::Match(std::string_view name) const {
    const auto goesOn = [&](std::string_view rest) {
        return rest.starts_with('.') || rest.starts_with('_') ||
               std::any_of(tags.begin(), tags.end(),
                           [&](const std::string& tag) { return rest.starts_with(tag); });
    };
    constexpr std::size_t ahead = 10'000;
    std::size_t best = 0;
    for (const Stem& stem : stems) {
        const std::size_t length = stem.text.size();
        if (length > 0 && name.starts_with(stem.text) && goesOn(name.substr(length)))
            best = std::max(best, length + (stem.expected ? ahead : 0));
    }
    return best;
}

ResultStems StemsOf(const Workspace& workspace) {
    ResultStems found;
    const SimOptions& options = *workspace.options;
    for (const std::string* tag :
         {&options.SCANMETA1, &options.SCANMETA2, &options.RUNMETA, &options.BINMETA}) {
        if (!tag->empty()) found.tags.push_back(*tag);
    }
    const bool scans = !options.INNERSWEEPVARIABLE.empty() || !options.OUTERSWEEPVARIABLE.empty() ||
                       options.NUMRUNSTODO > 0;
    const std::pair<std::string, bool> prefixes[] = {
        {options.OUTPUTPREFIX, true}, {options.SCANPREFIX, scans}, {"phtmp", true}, {"", false}};
    for (const auto& component : workspace.components) {
        const std::string_view given = GetParamText(component->parameters, "FilenameRoot", "");
        const std::string_view root = given.empty() ? std::string_view(component->name) : given;
        // The results inside a SuperBlock carry its name.
        const std::string_view mark = component->type == superBlockType ? "_" : "";
        for (const auto& [prefix, expected] : prefixes)
            found.stems.push_back({Concat(prefix, mark, root), expected});
    }
    return found;
}

std::uintmax_t LogSize(const std::string& folder) {
    std::error_code failed;
    const std::uintmax_t size =
        std::filesystem::file_size(std::filesystem::path(folder) / logName, failed);
    return failed ? 0 : size;
}

bool ReadReportLog(std::uintmax_t from, ReportPage& page, std::string& error) {
    constexpr std::size_t mostBytes = std::size_t{128} * 1024;
    std::error_code unknown;
    const auto log = std::filesystem::symlink_status(logName, unknown);
    if (std::filesystem::status_known(log) && !std::filesystem::is_regular_file(log)) return true;
    if (!ReadFileEnd(logName, from, mostBytes, page.log, page.logCut, error)) return false;
    if (page.logCut) page.log.erase(0, page.log.find('\n') + 1);  // begin with a whole line
    return true;
}

std::vector<std::string> LoggedWarnings(std::string_view log) {
    constexpr std::size_t most = 50, longest = 500;
    std::vector<std::string> warnings;
    std::set<std::string_view> known;
    while (!log.empty() && warnings.size() < most) {
        const std::string_view line = log.substr(0, log.find('\n'));
        if (IsWarning(line) && known.insert(line).second)
            warnings.emplace_back(line.substr(0, longest));
        log.remove_prefix(std::min(line.size() + 1, log.size()));
    }
    return warnings;
}

}  // namespace photrak
