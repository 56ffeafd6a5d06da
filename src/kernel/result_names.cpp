// How result files are named from the run's coordinates, and the one door through which they are
// written.
#include "kernel/result_names.h"

#include <algorithm>

#include "base/text.h"
#include "kernel/run_record.h"
#include "platform/file_system.h"
#include "platform/result_folder.h"

namespace photrak {
namespace {

bool IsControl(char c) {
    return static_cast<unsigned char>(c) < ' ' || c == '\x7f';
}

bool WriteAllowed(const std::string& name, std::string_view content,
                  bool (*write)(const std::string& path, std::string_view text,
                                std::string& reason),
                  std::string& errorText) {
    if (!IsAllowedResultName(name)) {
        std::string shown(name);
        std::replace_if(shown.begin(), shown.end(), IsControl, '?');
        errorText += Concat("ERROR: result file name '", shown,
                            "' does not stay inside the directory of the topology",
                            shown == name ? "\n" : " or holds control characters\n");
        return false;
    }
    std::string reason = "a symbolic link stands there, and results never follow one";
    const bool written = !IsBehindLink(name) && write(name, content, reason);
    RunRecord& record = CurrentRun();
    if (written) {
        record.written.Add(name);
    } else {
        record.failed.Add(Concat("'", name, "': ", reason));
    }
    return written;
}

}  // namespace

const std::string& PrefixInUse(const SimOptions& options) {
    return options.mode & simMode::anyScan ? options.SCANPREFIX : options.OUTPUTPREFIX;
}

std::string ResultTags(const SimOptions& options) {
    std::string tags;
    if (options.outerCount > 1) tags += Concat(options.SCANMETA2, options.outerIndex);
    if (options.innerCount > 1) tags += Concat(options.SCANMETA1, options.innerIndex);
    if ((options.mode & simMode::statistical) && options.NUMRUNSTODO > 1) {
        tags += Concat(options.RUNMETA, options.runIndex);
    }
    if (options.loopReps > 1) tags += options.loopSuffix;
    return tags;
}

bool SomeLoopLacksItsTag(const SimOptions& options) {
    const bool statistical = (options.mode & simMode::statistical) != 0;
    return (options.innerCount > 1 && options.SCANMETA1.empty()) ||
           (options.outerCount > 1 && options.SCANMETA2.empty()) ||
           (statistical && options.NUMRUNSTODO > 1 && options.RUNMETA.empty());
}

std::string ResultStem(const SimOptions& options, std::string_view root) {
    return Concat(PrefixInUse(options), root, ResultTags(options));
}

// A topology may come from anyone: its result names must not reach beyond its own directory, and
// they stand bare on the lines of command files, where a line end would start a line of their own.
bool IsAllowedResultName(std::string_view name) {
    if (name.empty() || name.front() == '/') return false;
    if (std::any_of(name.begin(), name.end(), IsControl)) return false;
    for (std::size_t start = 0; start <= name.size();) {
        const std::size_t end = std::min(name.find('/', start), name.size());
        if (name.substr(start, end - start) == "..") return false;
        start = end + 1;
    }
    return true;
}

bool WriteResultFile(const std::string& name, std::string_view content, std::string& errorText) {
    return WriteAllowed(name, content, WriteFileAtOnce, errorText);
}

bool AppendResultFile(const std::string& name, std::string_view content, std::string& errorText) {
    RunRecord& record = CurrentRun();
    const bool isFirst = record.startsAnew && !record.appended.Has(name);
    const bool written =
        WriteAllowed(name, content, isFirst ? WriteFileAtOnce : AppendAtOnce, errorText);
    if (written) record.appended.Add(name);
    return written;
}

}  // namespace photrak
