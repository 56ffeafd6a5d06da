// log.txt is written line by line and never kept open.
#include "base/log.h"

#include <cerrno>
#include <cstring>
#include <mutex>
#include <utility>

#include "base/harmless_text.h"
#include "platform/file_system.h"

namespace photrak {
namespace {

std::mutex failureGuard;  // a run writes beside the interface
std::string firstFailure;

thread_local bool isBounded = false;
thread_local std::size_t bytesLeft = 0;  // of the bound

/// As much of the text as the bound has room for, in whole lines, and the word that it is reached.
std::string WithinBound(std::string text) {
    if (!isBounded) return text;
    if (text.size() < bytesLeft) {
        bytesLeft -= text.size();
        return text;
    }
    const std::size_t end = text.rfind('\n', bytesLeft - 1);
    text.resize(end == std::string::npos ? 0 : end + 1);
    bytesLeft = 0;
    return text += "The log of this run is full: what follows is left out, up to its end\n";
}

}  // namespace

LogBound::LogBound(std::size_t most) {
    isBounded = true;
    bytesLeft = most;
}

LogBound::~LogBound() {
    isBounded = false;
}

void LogText(std::string_view text) {
    if (text.empty() || (isBounded && bytesLeft == 0)) return;
    const std::string shown = WithinBound(HarmlessText(text));
    if (AppendToFile("log.txt", shown)) return;
    const int number = errno;
    const std::lock_guard lock(failureGuard);
    if (firstFailure.empty()) firstFailure = std::strerror(number);
}

std::string TakeLogFailure() {
    const std::lock_guard lock(failureGuard);
    return std::exchange(firstFailure, std::string());
}

std::string InterpretPercent(std::string_view text) {
    std::string result;
    result.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        result.push_back(text[i]);
        if (text[i] == '%' && i + 1 < text.size() && text[i + 1] == '%') ++i;
    }
    return result;
}

}  // namespace photrak
