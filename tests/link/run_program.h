// Runs the program built with the tests on a copy of a directory, as a user would.
#pragma once

#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <sstream>
#include <string>
#include <sys/wait.h>
#include <vector>

#include "support/temp_dir.h"

namespace photrak::test {

struct ProgramResult {
    int status = -1;
    std::string out, error;
};

inline std::string FileText(const std::filesystem::path& path) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    text << file.rdbuf();
    return text.str();
}

inline void WriteText(const std::filesystem::path& path, std::string_view text) {
    std::ofstream(path, std::ios::binary) << text;
}

/// Runs a shell command line in the working directory.
inline ProgramResult RunProgram(const std::string& commandLine) {
    const std::string command = commandLine + " >program.out 2>program.err </dev/null";
    const int wait = std::system(command.c_str());
    ProgramResult result;
    result.status = WIFEXITED(wait) ? WEXITSTATUS(wait) : -1;
    result.out = FileText("program.out");
    result.error = FileText("program.err");
    return result;
}

/// Runs the program with the words of a shell command line.
inline ProgramResult Photrak(const std::string& arguments) {
    return RunProgram(PHOTRAK_BINARY_DIR "/bin/photrak " + arguments);
}

/// A table of numbers as the result files hold them: a row per line, columns split at blanks.
inline std::vector<std::vector<double>> Table(const std::filesystem::path& path) {
    std::vector<std::vector<double>> rows;
    std::istringstream text(FileText(path));
    for (std::string line; std::getline(text, line);) {
        std::istringstream words(line);
        std::vector<double> row;
        for (double value; words >> value;) row.push_back(value);
        rows.push_back(row);
    }
    return rows;
}

}  // namespace photrak::test
