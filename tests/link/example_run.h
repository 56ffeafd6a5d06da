// The example topologies in a directory of their own, and what tests ask of the traces they leave.
#pragma once

#include <algorithm>
#include <cmath>

#include "link/run_program.h"
#include "support/paths.h"

namespace photrak::test {

class ExampleRun : public ::testing::Test {
  protected:
    ExampleRun() {
        std::filesystem::copy(SourceDir() + "/examples", ".",
                              std::filesystem::copy_options::recursive);
    }

    /// Runs or scans without a word on the screen and returns what the program lists.
    static std::string Run(const std::string& commandAndFile) {
        const std::size_t blank = commandAndFile.find(' ');
        const ProgramResult result =
            Photrak(commandAndFile.substr(0, blank) + " --no-commands --quiet" +
                    commandAndFile.substr(blank));
        EXPECT_EQ(result.status, 0) << result.error;
        return result.out;
    }

    TempDir directory_;
};

inline std::vector<double> Column(const std::filesystem::path& path, std::size_t column) {
    std::vector<double> values;
    for (const auto& row : Table(path)) values.push_back(row.at(column));
    return values;
}

inline double Peak(const std::vector<double>& values) {
    return values.empty() ? NAN : *std::max_element(values.begin(), values.end());
}

inline double Least(const std::vector<double>& values) {
    return values.empty() ? NAN : *std::min_element(values.begin(), values.end());
}

inline double Mean(const std::vector<double>& values) {
    double sum = 0;
    for (const double value : values) sum += value;
    return sum / double(values.size());
}

/// How often a text stands in another.
inline int Count(const std::string& text, const std::string& what) {
    int count = 0;
    for (std::size_t at = text.find(what); at != std::string::npos; at = text.find(what, at + 1))
        ++count;
    return count;
}

/// The readings that the program lists after the files: rate and Q of each tester, in its order.
inline std::vector<std::array<double, 2>> Readings(const std::string& listing) {
    std::vector<std::array<double, 2>> readings;
    std::istringstream lines(listing);
    for (std::string line; std::getline(lines, line);) {
        if (line.rfind("BER ", 0) != 0) continue;
        std::istringstream words(line.substr(line.find(": ") + 2));
        std::string label;
        readings.emplace_back();
        words >> readings.back()[0] >> label >> readings.back()[1];
    }
    return readings;
}

}  // namespace photrak::test
