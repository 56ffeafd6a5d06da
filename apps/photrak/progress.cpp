// Times come from the points that are done: all points of a scan count alike.
#include "photrak/progress.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <unistd.h>

#include "base/text.h"

namespace photrak {
namespace {

/// "0:07", "1:02:33".
std::string Duration(double seconds) {
    const auto whole = static_cast<long long>(std::clamp(seconds, 0.0, 1e9));
    char text[48];
    if (whole < 3600) {
        std::snprintf(text, sizeof text, "%lld:%02lld", whole / 60, whole % 60);
    } else {
        std::snprintf(text, sizeof text, "%lld:%02lld:%02lld", whole / 3600, whole / 60 % 60,
                      whole % 60);
    }
    return text;
}

std::string Quoted(std::string_view text) {
    std::string quoted = "\"";
    for (const char c : text) {
        const bool isControl = static_cast<unsigned char>(c) < 0x20;
        if (c == '"' || c == '\\') quoted += '\\';
        quoted += isControl ? ' ' : c;
    }
    return quoted + "\"";
}

/// The points that are done and the share of the one under way; what is left follows from it. NaN
/// while nothing is done.
double SecondsLeft(const ScanPosition& at, double fraction, double elapsed) {
    const double share = at.points == 1 ? std::max(fraction, 0.0) : 0.0;
    const double done =
        (static_cast<double>(at.point - 1) + share) / static_cast<double>(at.points);
    return done > 0.0 ? elapsed / done - elapsed : NAN;
}

}  // namespace

ProgressStyle StyleOf(std::string_view word, bool quiet) {
    if (word == "lines") return ProgressStyle::Lines;
    if (word == "json") return ProgressStyle::Json;
    return !quiet && isatty(STDERR_FILENO) == 1 ? ProgressStyle::Rewriting : ProgressStyle::Silent;
}

ScanPosition PositionOf(const SimOptions& options) {
    const std::int64_t inner = std::max(options.innerCount, 1);
    const std::int64_t outer = std::max(options.outerCount, 1);
    const bool isStatistical = (options.mode & simMode::statistical) != 0;
    const std::int64_t runs = isStatistical ? std::max(options.NUMRUNSTODO, 1) : 1;
    const auto before = [](std::int32_t index, std::int64_t count) {
        return std::clamp<std::int64_t>(index - std::int64_t{1}, 0, count - 1);
    };
    const std::int64_t done =
        (before(options.outerIndex, outer) * inner + before(options.innerIndex, inner)) * runs +
        before(options.runIndex, runs);
    return {done + 1, outer * inner * runs};
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
    const double left = SecondsLeft(at, fraction, elapsed);
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
        line += Concat(at.points > 1 ? ", " : " (", Duration(elapsed));
        if (!std::isnan(left)) line += Concat(", ", Duration(left), " left");
        return line + ")";
    }
    return at.points > 1 ? line + ")" : line;
}

}  // namespace photrak
