// Tables for other programs: named columns and rows of cells, as comma-separated values or as JSON.
// A row appears whole or not at all, and after each one the file can be read.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace photrak {

/// A number, a count, or a text. NaN is a value that is not there.
using TableCell = std::variant<double, std::int64_t, std::string>;
using TableRow = std::vector<TableCell>;

enum class TableFormat { Csv, Json };
/// By the extension, .csv or .json in any letter case.
std::optional<TableFormat> TableFormatOf(std::string_view fileName);

/// "text" with what JSON escapes; bytes that are no UTF-8 become U+FFFD.
std::string JsonText(std::string_view text);
/// 17 significant digits; null for NaN, 1e999 with the sign for what is infinite.
std::string JsonNumber(double value);
/// A field after RFC 4180: in quotes if it holds a comma, a quote, a line end or outer blanks.
std::string CsvField(std::string_view text);

/// Makes names that came before unique: "gain", "gain_2".
std::vector<std::string> UniqueNames(std::vector<std::string> names);

/// The header of a CSV file; nothing for JSON, whose rows name their cells.
std::string TableHeader(const std::vector<std::string>& columns, TableFormat format);
/// One line with its end; for JSON an object without the comma between rows.
std::string TableLine(const std::vector<std::string>& columns, const TableRow& row,
                      TableFormat format);

/// A table under way on the disk. JSON is one array, a row on each line, whose end is written over
/// by the next row.
class TableFile {
  public:
    /// Replaces what stands under this name by a table without rows.
    TableFile(std::string path, std::vector<std::string> columns);
    /// Adds a line that TableLine made. After a failure nothing more is written.
    void AddLine(std::string_view line);
    void Add(const TableRow& row) { AddLine(TableLine(columns_, row, format_)); }

    const std::vector<std::string>& Columns() const { return columns_; }
    TableFormat Format() const { return format_; }
    /// Why the table is not whole; empty if it is.
    const std::string& Failure() const { return failure_; }

  private:
    std::string path_, failure_;
    std::vector<std::string> columns_;
    TableFormat format_;
    std::size_t bytes_ = 0;  // up to the end of the last row
    bool empty_ = true;
};

}  // namespace photrak
