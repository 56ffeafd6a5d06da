#include "photrak/report_page.h"

#include <algorithm>

#include "base/text.h"
#include "drawing/svg_writer.h"

namespace photrak {
namespace {

constexpr std::string_view style = R"(
*{box-sizing:border-box}
body{margin:0;background:var(--paper);color:var(--ink);font:15px/1.55 'Inter','Segoe UI',
 'Helvetica Neue','Liberation Sans','DejaVu Sans',sans-serif;font-variant-numeric:tabular-nums}
main,header,footer{max-width:1216px;margin:0 auto;padding:0 32px}
header{padding-top:40px}
h1{font-size:28px;line-height:1.25;margin:0 0 8px;overflow-wrap:anywhere}
h2{font-size:20px;line-height:1.3;margin:0 0 8px;overflow-wrap:anywhere}
h3{font-size:15px;margin:28px 0 8px}
p{margin:0 0 12px;max-width:80ch;overflow-wrap:anywhere}
.dim,figcaption,footer{color:var(--dim)}
section{margin-top:40px;padding-top:28px;border-top:1px solid var(--frame)}
nav ul{columns:16em;padding:0;margin:16px 0 0;list-style:none}
nav li{padding:1px 0;overflow-wrap:anywhere}
a{color:var(--selected);text-decoration:none}
a:hover{text-decoration:underline}
svg{display:block;max-width:100%;height:auto}
.diagram{overflow-x:auto;border:1px solid var(--grid);border-radius:6px;padding:8px}
.diagram svg{margin:0 auto}
.plots{display:grid;grid-template-columns:repeat(auto-fill,minmax(min(100%,540px),1fr));gap:20px}
figure{margin:0;border:1px solid var(--grid);border-radius:6px;padding:8px;break-inside:avoid}
figure svg{margin:0 auto}
figcaption{font-size:13px;padding:4px 8px 2px;overflow-wrap:anywhere}
.wide{overflow-x:auto}
table{border-collapse:collapse;font-size:14px;margin:0 0 8px;min-width:320px}
caption{text-align:left;color:var(--dim);padding-bottom:6px}
th{font-weight:600;border-bottom:1.5px solid var(--frame)}
td{border-bottom:1px solid var(--grid)}
th,td{text-align:right;padding:4px 14px 4px 0;white-space:nowrap}
th.word,td.word{text-align:left}
th:not(:first-child),td:not(:first-child){padding-left:14px}
.warnings{border-left:4px solid var(--fault);padding:8px 16px;margin:16px 0}
.warnings h3{margin:0 0 4px;color:var(--fault)}
.warnings ul{margin:0;padding-left:18px}
.warnings li{overflow-wrap:anywhere}
details{margin:8px 0 16px}
summary{cursor:pointer;color:var(--selected)}
pre{font:12px/1.5 'DejaVu Sans Mono','Liberation Mono',monospace;white-space:pre-wrap;
 overflow-wrap:anywhere;border:1px solid var(--grid);border-radius:6px;padding:12px;margin:8px 0}
footer{padding-top:24px;padding-bottom:40px;font-size:13px}
@media(max-width:640px){main,header,footer{padding-left:16px;padding-right:16px}}
@media print{main,header,footer{max-width:none;padding:0}nav{display:none}body{font-size:10pt}
 section{break-before:auto}figure,table{break-inside:avoid}h2,h3{break-after:avoid}
 .plots{grid-template-columns:1fr 1fr}}
)";

constexpr std::size_t mostWarnings = 100;  // of a section

std::string Element(std::string_view tag, std::string_view text, std::string_view attributes = "") {
    return Concat("<", tag, attributes, ">", XmlEscaped(text), "</", tag, ">\n");
}

/// Light unless a screen prefers dark; paper is light.
std::string Styles() {
    return Concat(":root{color-scheme:light dark;", SvgPalette(Theme::Light), "}\n",
                  ".on-dark{display:none}\n",
                  "@media screen and (prefers-color-scheme:dark){:root{", SvgPalette(Theme::Dark),
                  "}.on-dark{display:inline}.on-light{display:none}}", style);
}

class PageWriter {
  public:
    explicit PageWriter(const ReportPage& page) : page_(page) {}

    std::string Write() {
        text_ = Concat(
            "<!DOCTYPE html>\n<html lang=\"en\">\n<head>\n<meta charset=\"utf-8\">\n"
            "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; "
            "style-src 'unsafe-inline'; img-src data:\">\n"
            "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n",
            Element("title", page_.title), "<style>\n", Styles(), "</style>\n</head>\n<body>\n");
        Head();
        text_ += "<main>\n";
        for (std::size_t i = 0; i < page_.sections.size(); ++i) Section(i);
        Log();
        text_ += "</main>\n";
        text_ += Element("footer", Concat("Made by ", page_.producer, "."));
        text_ += "</body>\n</html>\n";
        return std::move(text_);
    }

  private:
    bool Single() const { return page_.sections.size() == 1; }

    void Head() {
        text_ += "<header>\n" + Element("h1", page_.title);
        if (Single()) {
            Paragraph(page_.sections[0].note);
        } else {
            Contents();
        }
        Warnings(page_.warnings);
        text_ += "</header>\n";
    }
    void Contents() {
        if (page_.sections.empty()) return Paragraph("There are no results here.");
        text_ += "<nav aria-label=\"Contents\">\n<ul>\n";
        for (std::size_t i = 0; i < page_.sections.size(); ++i) {
            text_ += Concat("<li><a href=\"#s", i + 1, "\">", XmlEscaped(page_.sections[i].name),
                            "</a></li>\n");
        }
        text_ += "</ul>\n</nav>\n";
    }
    void Paragraph(std::string_view text) {
        if (!text.empty()) text_ += Element("p", text);
    }
    void Warnings(const std::vector<std::string>& warnings) {
        if (warnings.empty()) return;
        text_ += "<div class=\"warnings\">\n<h3>\xE2\x9A\xA0 Warnings</h3>\n<ul>\n";
        const std::size_t shown = std::min(warnings.size(), mostWarnings);
        for (std::size_t i = 0; i < shown; ++i) text_ += Element("li", warnings[i]);
        if (shown < warnings.size())
            text_ += Element("li", Concat("and ", warnings.size() - shown, " more"));
        text_ += "</ul>\n</div>\n";
    }

    void Section(std::size_t index) {
        const ReportSection& section = page_.sections[index];
        text_ += Concat("<section id=\"s", index + 1, "\">\n");
        if (!Single()) {
            text_ += Element("h2", section.name);
            Paragraph(section.note);
        }
        Warnings(section.warnings);
        if (!section.diagram.empty()) {
            text_ += Concat("<div class=\"diagram\">\n", section.diagram, "</div>\n");
        }
        for (const auto* tables : {&section.settings, &section.tables}) {
            for (const ReportTable& table : *tables) Table(table);
        }
        Plots(section);
        text_ += "</section>\n";
    }
    void Table(const ReportTable& table) {
        if (table.folded) {
            text_ += Concat("<details>\n", Element("summary", table.caption));
        } else {
            text_ += Element("h3", table.caption);
        }
        text_ += "<div class=\"wide\">\n<table>\n<thead><tr>";
        for (std::size_t i = 0; i < table.header.size(); ++i) Cell("th", table, i, table.header[i]);
        text_ += "</tr></thead>\n<tbody>\n";
        for (const auto& row : table.rows) {
            text_ += "<tr>";
            for (std::size_t i = 0; i < row.size(); ++i) Cell("td", table, i, row[i]);
            text_ += "</tr>\n";
        }
        text_ += "</tbody>\n</table>\n</div>\n";
        if (table.left > 0) Paragraph(Concat("and ", table.left, " more rows"));
        if (table.folded) text_ += "</details>\n";
    }
    void Cell(std::string_view tag, const ReportTable& table, std::size_t i,
              std::string_view text) {
        text_ += Concat("<", tag, i < table.textColumns ? " class=\"word\">" : ">",
                        XmlEscaped(text), "</", tag, ">");
    }
    void Plots(const ReportSection& section) {
        for (const bool folded : {false, true}) {
            std::string figures;
            std::size_t count = 0;
            for (const ReportPlot& plot : section.plots) {
                if (plot.folded == folded) figures += Figure(plot), ++count;
            }
            if (count == 0) continue;
            text_ += Concat(folded ? "<details>\n" : "",
                            folded ? Element("summary", Concat("Plots of a single point: ", count))
                                   : Element("h3", "Plots"),
                            "<div class=\"plots\">\n", figures, "</div>\n",
                            folded ? "</details>\n" : "");
        }
    }
    static std::string Figure(const ReportPlot& plot) {
        return Concat("<figure>\n", plot.svg,
                      plot.remark.empty() ? "" : Element("figcaption", plot.remark), "</figure>\n");
    }

    void Log() {
        if (page_.log.empty()) return;
        text_ += "<section id=\"log\">\n<h2>Log</h2>\n<details>\n<summary>log.txt";
        text_ += page_.logCut ? ", its end</summary>\n<pre>" : "</summary>\n<pre>";
        std::string_view rest = page_.log;
        while (!rest.empty()) {
            const std::size_t end = rest.find('\n');
            text_ += XmlEscaped(rest.substr(0, end)) + "\n";
            rest.remove_prefix(end == std::string_view::npos ? rest.size() : end + 1);
        }
        text_ += "</pre>\n</details>\n</section>\n";
    }

    const ReportPage& page_;
    std::string text_;
};

}  // namespace

std::string ReportHtml(const ReportPage& page) {
    return PageWriter(page).Write();
}

}  // namespace photrak
