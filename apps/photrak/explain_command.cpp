// photrak explain: the page of a code that a message carries.

#include "base/nearest.h"
#include "base/text.h"
#include "files/diagnostics.h"
#include "photrak/commands.h"
#include "photrak/console.h"

namespace photrak {

int ExplainCommand(const CommandOptions& options) {
    if (options.file.empty()) {
        for (const Diagnostic& row : Diagnostics()) {
            WriteOut(Concat(row.code, "  ", row.title, "\n"));
        }
        return exitStatus::success;
    }
    const Diagnostic* row = FindDiagnostic(options.file);
    if (!row) {
        Report("error", Concat("no code '", options.file, "'; 'photrak explain' lists them all"));
        return exitStatus::failed;
    }
    WriteOut(Concat(row->code, ": ", row->title, "\n"));
    for (const std::string_view line : row->page) WriteOut(Concat(line, "\n"));
    return exitStatus::success;
}

}  // namespace photrak
