// Numbers are written so that they read back equal in every bit.
#include "results/result_table.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <set>

#include "base/harmless_text.h"
#include "base/text.h"
#include "platform/result_folder.h"

namespace photrak {
namespace {

constexpr int exactDigits = 17;
constexpr std::string_view jsonStart = "[", jsonEnd = "\n]\n";

void AppendEscaped(std::string& out, char c) {
    constexpr std::string_view digits = "0123456789abcdef";
    if (c == '"' || c == '\\') {
        out += '\\';
        out += c;
    } else if (c == '\n') {
        out += "\\n";
    } else if (c == '\t') {
        out += "\\t";
    } else if (const auto code = static_cast<unsigned char>(c); code < 0x20 || code == 0x7f) {
        out += "\\u00";
        out += digits[code / 16];
        out += digits[code % 16];
    } else {
        out += c;
    }
}

std::string CsvCell(const TableCell& cell) {
    if (const auto* number = std::get_if<double>(&cell)) {
        // The sign bit of NaN says nothing.
        return std::isnan(*number) ? "nan" : FormatSignificant(*number, exactDigits);
    }
    if (const auto* count = std::get_if<std::int64_t>(&cell)) return Concat(*count);
    return CsvField(std::get<std::string>(cell));
}

std::string JsonCell(const TableCell& cell) {
    if (const auto* number = std::get_if<double>(&cell)) return JsonNumber(*number);
    if (const auto* count = std::get_if<std::int64_t>(&cell)) return Concat(*count);
    return JsonText(std::get<std::string>(cell));
}

}  // namespace

std::optional<TableFormat> TableFormatOf(std::string_view fileName) {
    std::string lower(fileName);
    for (char& c : lower) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    if (lower.ends_with(".csv")) return TableFormat::Csv;
    if (lower.ends_with(".json")) return TableFormat::Json;
    return {};
}

std::string JsonText(std::string_view text) {
    std::string out = "\"";
    while (!text.empty()) {
        const std::size_t length = Utf8Length(text);
        if (length == 0) {
            out += "\xef\xbf\xbd";
        } else if (length == 1) {
            AppendEscaped(out, text.front());
        } else {
            out += text.substr(0, length);
        }
        text.remove_prefix(std::max<std::size_t>(length, 1));
    }
    return out + '"';
}

std::string JsonNumber(double value) {
    if (std::isnan(value)) return "null";
    if (std::isinf(value)) return value < 0.0 ? "-1e999" : "1e999";
    return FormatSignificant(value, exactDigits);
}

std::string CsvField(std::string_view text) {
    const bool hasOuterBlank = !text.empty() && (text.front() == ' ' || text.back() == ' ');
    if (!hasOuterBlank && text.find_first_of(",\"\r\n") == std::string_view::npos) {
        return std::string(text);
    }
    std::string field = "\"";
    for (const char c : text) {
        if (c == '"') field += c;
        field += c;
    }
    return field + '"';
}

std::vector<std::string> UniqueNames(std::vector<std::string> names) {
    std::set<std::string> known;
    for (std::string& name : names) {
        const std::string asked = name;
        for (int number = 2; !known.insert(name).second; ++number) {
            name = Concat(asked, "_", number);
        }
    }
    return names;
}

std::string TableHeader(const std::vector<std::string>& columns, TableFormat format) {
    if (format == TableFormat::Json) return {};
    std::string line;
    for (const std::string& column : columns) {
        if (!line.empty()) line += ',';
        line += CsvField(column);
    }
    return line + "\r\n";
}

std::string TableLine(const std::vector<std::string>& columns, const TableRow& row,
                      TableFormat format) {
    const bool isJson = format == TableFormat::Json;
    std::string line = isJson ? "{" : "";
    for (std::size_t i = 0; i < std::min(columns.size(), row.size()); ++i) {
        if (i > 0) line += ',';
        line += isJson ? Concat(JsonText(columns[i]), ":", JsonCell(row[i])) : CsvCell(row[i]);
    }
    return line + (isJson ? "}" : "\r\n");
}

TableFile::TableFile(std::string path, std::vector<std::string> columns)
    : path_(std::move(path)),
      columns_(UniqueNames(std::move(columns))),
      format_(TableFormatOf(path_).value_or(TableFormat::Csv)) {
    const bool isJson = format_ == TableFormat::Json;
    const std::string start(isJson ? std::string(jsonStart) : TableHeader(columns_, format_));
    bytes_ = start.size();
    const std::string whole = isJson ? Concat(start, jsonEnd) : start;
    if (!WriteFileAtOnce(path_, whole, failure_) && failure_.empty()) failure_ = "unknown reason";
}

void TableFile::AddLine(std::string_view line) {
    if (!failure_.empty()) return;
    if (format_ == TableFormat::Csv) {
        static_cast<void>(AppendAtOnce(path_, line, failure_));
        return;
    }
    const std::string row = Concat(empty_ ? "\n" : ",\n", line);
    if (!ReplaceEnd(path_, bytes_, jsonEnd, row, failure_)) return;
    bytes_ += row.size();
    empty_ = false;
}

}  // namespace photrak
