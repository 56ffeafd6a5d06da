// What a point of a scan left behind, as one file: readings, log, warnings and result files, whole
// or not at all. Another process merges the points of a scan from these.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "kernel/run_record.h"
#include "kernel/scan_points.h"

namespace photrak {

struct PointFile {
    struct Written {
        std::string name, text;
        bool appends = false;  // the text comes after what the file holds
    };
    struct Warning {
        std::string component, text;
        std::vector<ClampNote> clamps;
    };
    std::string hash;  // of everything that the results follow from
    std::int64_t point = 0;
    double seconds = 0.0;
    bool drewNoise = false;
    PointOutcome outcome;
    std::string log;
    std::vector<Warning> warnings;
    std::vector<Written> files;        // in the order in which the point wrote them first
    std::vector<BerReading> readings;  // `after` counts the files of the point
};

/// "0000012.point"; wide enough for ten million points, then wider.
std::string PointFileName(std::int64_t point);

std::string PointFileText(const PointFile& file);
/// False with a reason for a text that is not whole or not of this form.
[[nodiscard]] bool ReadPointFile(std::string_view text, PointFile& file, std::string& reason);

}  // namespace photrak
