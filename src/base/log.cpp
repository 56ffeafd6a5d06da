// log.txt is written line by line and never kept open.
#include "base/log.h"

#include <cerrno>
#include <cstring>
#include <mutex>
#include <utility>

#include "platform/file_system.h"

namespace photrak {
namespace {

std::mutex failureGuard;  // a run writes beside the interface
std::string firstFailure;

}  // namespace

void LogText(std::string_view text) {
    if (AppendToFile("log.txt", text)) return;
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
