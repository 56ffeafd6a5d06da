// Runs the program built with the tests on a copy of a directory, as a user would.
#pragma once

#include <array>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <gtest/gtest.h>
#include <sstream>
#include <string>
#include <sys/wait.h>
#include <thread>
#include <unistd.h>
#include <vector>

#include "support/paths.h"
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

inline ProgramResult ResultOf(int wait) {
    return {WIFEXITED(wait) ? WEXITSTATUS(wait) : -1, FileText("program.out"),
            FileText("program.err")};
}

/// Runs a shell command line in the working directory.
inline ProgramResult RunProgram(const std::string& commandLine) {
    const std::string command = commandLine + " >program.out 2>program.err </dev/null";
    return ResultOf(std::system(command.c_str()));
}

/// Runs the program with the words of a shell command line.
inline ProgramResult Photrak(const std::string& arguments) {
    return RunProgram(BinaryDir() + "/bin/photrak " + arguments);
}

/// Runs the program, sends it the signal as soon as `file` is there, and waits for its end.
inline ProgramResult InterruptedPhotrak(std::vector<std::string> words, int signal,
                                        const std::filesystem::path& file) {
    words.insert(words.begin(), BinaryDir() + "/bin/photrak");
    std::vector<char*> arguments;
    for (std::string& word : words) arguments.push_back(word.data());
    arguments.push_back(nullptr);
    const pid_t program = ::fork();
    if (program == 0) {
        if (std::freopen("program.out", "w", stdout) && std::freopen("program.err", "w", stderr)) {
            ::execv(arguments[0], arguments.data());
        }
        ::_exit(127);
    }
    const auto latest = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    while (!std::filesystem::exists(file) && std::chrono::steady_clock::now() < latest) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    ::kill(program, signal);
    int wait = 0;
    ::waitpid(program, &wait, 0);
    return ResultOf(wait);
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
