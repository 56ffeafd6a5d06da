// Whether a text holds a part, with the whole text in the failure.
#pragma once

#include <gtest/gtest.h>
#include <string_view>

namespace photrak {

inline testing::AssertionResult Holds(std::string_view text, std::string_view part) {
    const bool holds = text.find(part) != std::string_view::npos;
    return testing::AssertionResult(holds) << '"' << part << "\" in:\n" << text;
}

}  // namespace photrak
