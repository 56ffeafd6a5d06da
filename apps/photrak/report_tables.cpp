#include "photrak/report_tables.h"

#include <algorithm>
#include <cmath>
#include <map>

#include "base/text.h"
#include "drawing/number_text.h"

namespace photrak {
namespace {

using Row = std::vector<std::string>;

constexpr std::size_t mostRows = 500, mostFields = 8, mostFieldBytes = 100;
constexpr std::string_view runField = "RUN#";

struct SummaryWord {
    std::string_view word, shown;
};
constexpr SummaryWord summaryWords[] = {{"MIN", "least"}, {"AVE", "mean"}, {"MAX", "greatest"}};

const SummaryWord* SummaryOf(std::string_view field) {
    for (const SummaryWord& row : summaryWords) {
        if (row.word == field) return &row;
    }
    return nullptr;
}

/// At tabs; a line of absurd many or long fields has none.
Row Fields(std::string_view line) {
    Row fields;
    while (!line.empty()) {
        const std::size_t end = std::min(line.find('\t'), line.size());
        if (fields.size() == mostFields || end > mostFieldBytes) return {};
        if (end > 0) fields.emplace_back(line.substr(0, end));
        line.remove_prefix(std::min(end + 1, line.size()));
    }
    return fields;
}

bool IsHeader(const Row& fields) {
    const std::size_t n = fields.size();
    return n >= 2 && fields[n - 1] == "Q" && fields[n - 2] == "BER";
}

bool HasRuns(const ReportedRates& table) {
    return std::find(table.header.begin(), table.header.end(), runField) != table.header.end();
}

/// Two decimals, a rate with its power of ten, so that columns line up.
std::string ReadingText(double value, bool isRate) {
    constexpr double step = 0.01;
    if (isRate && value == 0.0) return "0";
    if (!isRate || !(value > 0.0)) return FixedText(value, step);
    int decade = static_cast<int>(std::floor(std::log10(value)));
    if (value / PowerOfTen(decade) >= 10.0 - 0.5 * step) ++decade;
    return Concat(FixedText(value / PowerOfTen(decade), step), "\xC3\x97", DecadeText(decade));
}

/// A field as it is read; words stay. The last two are rate and Q.
std::string Shown(const Row& row, std::size_t i) {
    if (const SummaryWord* word = SummaryOf(row[i])) return std::string(word->shown);
    std::size_t used = 0;
    const double value = ReadDouble(row[i], &used);
    if (used == 0 || used != row[i].size() || !std::isfinite(value)) return row[i];
    return i + 2 < row.size() ? ReadableText(value) : ReadingText(value, i + 2 == row.size());
}

bool IsSummary(const Row& row) {
    return std::any_of(row.begin(), row.end(), [](const auto& f) { return SummaryOf(f); });
}

void AddRow(ReportTable& table, Row row) {
    if (table.rows.size() < mostRows) {
        table.rows.push_back(std::move(row));
    } else {
        ++table.left;
    }
}

ReportTable EmptyTable(const ReportedRates& like, bool named) {
    ReportTable table;
    if (named) table.header.push_back("Tester");
    for (const std::string& field : like.header)
        table.header.push_back(field == runField ? "run" : field);
    table.textColumns = named ? 1 : 0;
    return table;
}

/// Of statistical runs the summary stands in the open, the runs behind it.
void AddGroup(const std::vector<const ReportedRates*>& group, std::vector<ReportTable>& tables) {
    const bool named = group.size() > 1, runs = HasRuns(*group[0]);
    ReportTable open = EmptyTable(*group[0], named), folded = open;
    for (const ReportedRates* table : group) {
        for (const Row& row : table->rows) {
            const bool summary = IsSummary(row);
            if (summary && !runs) continue;
            Row shown;
            if (named) shown.push_back(table->name);
            for (std::size_t i = 0; i < row.size(); ++i) shown.push_back(Shown(row, i));
            AddRow(runs && !summary ? folded : open, std::move(shown));
        }
    }
    open.caption =
        named ? "Bit error rate and Q" : Concat("Bit error rate and Q (", group[0]->name, ")");
    if (!open.rows.empty()) tables.push_back(std::move(open));
    if (folded.rows.empty()) return;
    folded.caption = Concat("The ", folded.rows.size() + folded.left, " runs");
    folded.folded = true;
    tables.push_back(std::move(folded));
}

}  // namespace

ReportedRates ReadBerTable(std::string_view text, std::string name) {
    ReportedRates table;
    table.name = std::move(name);
    while (!text.empty()) {
        const std::size_t end = std::min(text.find('\n'), text.size());
        Row fields = Fields(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
        if (IsHeader(fields)) {
            table.header = std::move(fields);
            table.rows.clear();
            continue;
        }
        // The number of the run stands there without its word in the header, too.
        const std::size_t columns = table.header.size();
        if (columns > 0 && fields.size() == columns + 1 && !HasRuns(table))
            fields.erase(fields.end() - 3);
        if (columns > 0 && fields.size() == columns) table.rows.push_back(std::move(fields));
    }
    return table;
}

std::vector<ReportTable> BerReportTables(const std::vector<ReportedRates>& tables) {
    std::map<Row, std::vector<const ReportedRates*>> groups;
    for (const ReportedRates& table : tables) {
        if (!table.rows.empty()) groups[table.header].push_back(&table);
    }
    std::vector<ReportTable> made;
    for (const auto& [header, group] : groups) AddGroup(group, made);
    return made;
}

}  // namespace photrak
