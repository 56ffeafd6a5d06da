// Rows of numbers read into columns: the data files of plots. A point "." is a gap, as are "nan"
// and what is missing at the end of a row. A last row without a line end is not whole (its writer
// may be at work) and is left out.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "base/memory.h"

namespace photrak {

struct DataTable {
    std::vector<std::vector<double>> columns;  // gaps are NaN; all of one length
    std::size_t rows = 0;
    bool lastRowIncomplete = false;
};

inline constexpr std::size_t maxDataColumns = std::size_t{1} << 20;
inline constexpr std::size_t maxDataValues = 200'000'000;

/// The first row says how many columns there are. False, with "NAME:LINE: ..." in `error`, for a
/// word that is no number, for a row with more columns than the first, or for more than the limits.
/// \param mostValues  at most maxDataValues
/// \param spent       made of the text if nobody wants it afterward
[[nodiscard]] bool ReadDataTable(std::string_view text, const std::string& name, DataTable& table,
                                 std::string& error, std::size_t mostValues = maxDataValues,
                                 SpentText spent = {});

}  // namespace photrak
