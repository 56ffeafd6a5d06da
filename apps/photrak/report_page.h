// A report as one HTML page: no script, no outside resource, light and dark as the reader's system
// has it, fit for print. Every text is data and escaped here.
#pragma once

#include <string>
#include <vector>

namespace photrak {

struct ReportTable {
    std::string caption;
    std::vector<std::string> header;
    std::vector<std::vector<std::string>> rows;  // each as long as the header
    std::size_t left = 0;                        // rows that are not shown
    bool folded = false;                         // opened by a click
    std::size_t textColumns = 0;                 // the first ones hold words, the others numbers
};

struct ReportPlot {
    std::string file;     // its command file
    std::string svg;      // of InlineSvgText
    std::string remark;   // what is read off it, or empty
    bool folded = false;  // opened by a click: a lone point, which a table tells better
};

struct ReportSection {
    std::string name, note;
    std::string diagram;  // of InlineSvgText, or empty
    std::vector<ReportTable> settings, tables;
    std::vector<ReportPlot> plots;
    std::vector<std::string> warnings;
};

struct ReportPage {
    std::string title;
    std::vector<ReportSection> sections;
    std::vector<std::string> warnings;  // that belong to no section
    std::string log;                    // its end, as much as is shown
    bool logCut = false;                // there is more before it
    std::string producer;               // "Photrak 1.0.0"
};

std::string ReportHtml(const ReportPage& page);

}  // namespace photrak
