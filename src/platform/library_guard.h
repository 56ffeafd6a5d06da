// Around a call into code of others: what of the process it may leave behind changed is put back,
// and an end of the process within it does not go without a word.
#pragma once

#include <array>
#include <cfenv>
#include <csignal>
#include <string>
#include <string_view>

namespace photrak {

class LibraryGuard {
  public:
    /// `component` and `library` are for the words of an end within the call, which are shown as
    /// they stand.
    LibraryGuard(std::string_view component, std::string_view library);
    /// Puts back the working directory, the floating-point environment, the locale, the signal
    /// handlers and the signal mask.
    ~LibraryGuard();
    LibraryGuard(const LibraryGuard&) = delete;
    LibraryGuard& operator=(const LibraryGuard&) = delete;

    static constexpr int signals = 32;

  private:
    void WatchCrashes();

    int directory_ = -1;
    std::fenv_t floatingPoint_{};
    std::string locale_;
    sigset_t mask_{};
    std::array<struct sigaction, signals> handlers_{};
    stack_t formerStack_{};
};

}  // namespace photrak
