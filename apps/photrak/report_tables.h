// The tables of error rates (".bdt") as a reader wants them: the latest simulation of each, tables
// of one kind joined, statistics first.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "photrak/report_page.h"

namespace photrak {

/// One table file: its latest simulation.
struct ReportedRates {
    std::string name;                 // of the file, without ".bdt"
    std::vector<std::string> header;  // "received", "RUN#", "BER", "Q"
    std::vector<std::vector<std::string>> rows;
};

/// Reads what follows the last header of the text. Lines that do not fit it are passed over.
ReportedRates ReadBerTable(std::string_view text, std::string name);

/// Joins tables of the same header, under a column with their names where there are several.
std::vector<ReportTable> BerReportTables(const std::vector<ReportedRates>& tables);

}  // namespace photrak
