// The stack of escape levels and the three ways by which a failure leaves a trace. The stack is one
// for each thread: the window goes on beside a run.
#include "base/escape.h"

#include <array>

#include "base/harmless_text.h"
#include "base/text.h"
#include "platform/file_system.h"
#include "platform/host.h"

namespace photrak {
namespace {

constexpr const char* errorFile = "pherror.txt";
constexpr std::size_t maxBoxBytes = 255;

struct EscapeStack {
    std::array<bool, maxEscapeLevels> armed{};  // level 0 stays false
    int current = 0;
};
thread_local EscapeStack stack;

/// Failing to leave a trace must not hide the failure itself.
void AppendTrace(const std::string& text) {
    [[maybe_unused]] const bool written = AppendToFile(errorFile, text);
}

}  // namespace

bool PushEscape(bool armed) {
    if (stack.current + 1 >= maxEscapeLevels) return false;
    stack.armed[static_cast<std::size_t>(++stack.current)] = armed;
    return true;
}

void PopEscape() {
    if (stack.current > 0) --stack.current;
}

void TakeEscape(std::string_view message) {
    if (stack.armed[static_cast<std::size_t>(stack.current)]) throw Escape(std::string(message));
}

int EscapeLevelCount() {
    return stack.current;
}

void FatalError(std::string_view text) {
    CurrentHost().messages->ErrorBox(CutAtCharacter(text, maxBoxBytes), errorTitle);
    TakeEscape(text);
}

void NumericFailure(std::string_view message) {
    AppendTrace(
        Concat("Simulation run-time error...\n", message, "\n...now exiting simulation...\n"));
    FatalError(message);
    throw Escape(std::string(message));
}

void RuntimeError(std::string_view text) {
    AppendTrace(Concat("Photrak runtime error:\n", text, "\n\n"));
}

}  // namespace photrak
