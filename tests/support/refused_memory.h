// Operations that run short of memory at each of their allocations in turn.
#pragma once

#include <gtest/gtest.h>
#include <string>

#include "base/escape.h"
#include "base/memory.h"
#include "base/status.h"

namespace photrak {

/// Calls `action(text)` with its first, its second, ... allocation refused and all after it, until
/// one succeeds. Each failure has to say something, unless it takes the escape, as the arrays of
/// the transform do. Gives all texts, one after the other.
template <class Action>
std::string RefuseMemoryInTurn(Action action) {
    constexpr std::int64_t most = 300;
    std::string texts;
    for (std::int64_t n = 1; n <= most; ++n) {
        std::string text;
        Status status = Status::Error;
        RefuseAllocationsFrom(n);
        try {
            status = action(text);
            EXPECT_EQ(text.empty(), status == Status::Success) << n << text;
        } catch (const Escape&) {
        }
        RefuseAllocationsFrom(-1);
        if (status == Status::Success) return texts;
        texts += text;
    }
    ADD_FAILURE() << "no success with " << most << " allocations";
    return texts;
}

}  // namespace photrak
