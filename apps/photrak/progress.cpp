// The line of a run in its three forms.
#include "photrak/progress.h"

#include <cmath>
#include <unistd.h>

#include "base/text.h"
#include "kernel/run_progress.h"
#include "kernel/workspace.h"

namespace photrak {
namespace {

std::string Quoted(std::string_view text) {
    std::string quoted = "\"";
    for (const char c : text) {
        const bool isControl = static_cast<unsigned char>(c) < 0x20;
        if (c == '"' || c == '\\') quoted += '\\';
        quoted += isControl ? ' ' : c;
    }
    return quoted + "\"";
}

}  // namespace

ProgressStyle StyleOf(std::string_view word, bool quiet) {
    if (word == "lines") return ProgressStyle::Lines;
    if (word == "json") return ProgressStyle::Json;
    return !quiet && isatty(STDERR_FILENO) == 1 ? ProgressStyle::Rewriting : ProgressStyle::Silent;
}

bool ProgressText::IsDue(ProgressStyle style) {
    using namespace std::chrono_literals;
    const auto now = Clock::now();
    const auto interval = style == ProgressStyle::Rewriting ? 250ms : 1000ms;
    if (now - blockStart_ < 1000ms || now - lastShown_ < interval) return false;
    lastShown_ = now;
    return true;
}

std::string ProgressText::Line(ProgressStyle style, const SimOptions* options,
                               double fraction) const {
    const ScanPosition at = options ? PositionOf(*options) : ScanPosition{};
    const double elapsed = std::chrono::duration<double>(Clock::now() - start_).count();
    const double left = SecondsLeft(ShareDone(at, fraction), elapsed);
    constexpr double percent = 100.0;
    if (style == ProgressStyle::Json) {
        std::string line = Concat("{\"status\":", Quoted(status_), ",\"point\":", at.point,
                                  ",\"points\":", at.points, ",\"elapsed\":", elapsed);
        if (fraction >= 0.0) line += Concat(",\"fraction\":", fraction);
        if (!std::isnan(left)) line += Concat(",\"remaining\":", left);
        return line + "}";
    }
    std::string line = status_;
    if (fraction >= 0.0) line += Concat(" ", std::floor(percent * fraction), " %");
    if (at.points > 1) line += Concat(" (point ", at.point, " of ", at.points);
    if (style == ProgressStyle::Rewriting && (fraction >= 0.0 || at.points > 1)) {
        line += Concat(at.points > 1 ? ", " : " (", DurationText(elapsed));
        if (!std::isnan(left)) line += Concat(", ", DurationText(left), " left");
        return line + ")";
    }
    return at.points > 1 ? line + ")" : line;
}

}  // namespace photrak
