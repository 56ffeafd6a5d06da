// The page of results: what it holds, that texts of files stay texts, and what a folder of odd
// files does to it.
#include <cmath>
#include <set>
#include <sys/stat.h>

#include "link/example_run.h"
#include "support/svg_reader.h"

namespace photrak::test {
namespace {

/// The elements after the head of the page; tags that do not nest are a failure. Nothing in it
/// runs, or comes from elsewhere; what parts of pictures refer to is there once.
std::vector<SvgElement> ReadPage(const std::string& file) {
    const std::string page = FileText(file);
    const std::size_t body = page.find("<header>");
    EXPECT_NE(body, std::string::npos) << file;
    if (body == std::string::npos) return {};
    const std::size_t end = page.rfind("</body>");
    const auto elements = ReadSvg(std::string_view(page).substr(body, end - body));
    static const std::set<std::string> harmless = {
        "header", "main",     "footer",  "nav",     "section", "h1",    "h2",     "h3",
        "p",      "ul",       "li",      "a",       "div",     "table", "thead",  "tbody",
        "tr",     "th",       "td",      "details", "summary", "pre",   "figure", "figcaption",
        "svg",    "title",    "g",       "rect",    "path",    "line",  "text",   "circle",
        "image",  "polyline", "polygon", "clipPath"};
    std::set<std::string> ids, used;
    for (const SvgElement& element : elements) {
        EXPECT_TRUE(harmless.count(element.name)) << file << ": <" << element.name << ">";
        for (const auto& [name, value] : element.attributes) {
            EXPECT_FALSE(name.starts_with("on") || name == "src") << file << ": " << name;
            if (name == "id") {
                EXPECT_TRUE(ids.insert(value).second) << file << ": twice " << value;
            } else if (name == "href") {
                EXPECT_TRUE(value.starts_with(element.name == "a" ? "#" : "data:image/png;base64,"))
                    << value;
            }
            if (name == "clip-path") used.insert(value.substr(5, value.size() - 6));
        }
    }
    for (const std::string& id : used) EXPECT_TRUE(ids.count(id)) << file << ": no " << id;
    return elements;
}

int CountOf(const std::vector<SvgElement>& page, std::string_view name) {
    return static_cast<int>(std::count_if(page.begin(), page.end(),
                                          [&](const SvgElement& e) { return e.name == name; }));
}

std::vector<std::string> TextsOf(const std::vector<SvgElement>& page, std::string_view name) {
    std::vector<std::string> texts;
    for (const SvgElement& element : page) {
        if (element.name == name) texts.push_back(element.text);
    }
    return texts;
}

bool HoldsText(const std::vector<std::string>& texts, std::string_view part) {
    return std::any_of(texts.begin(), texts.end(), [&](const std::string& text) {
        return text.find(part) != std::string::npos;
    });
}

class Reports : public ExampleRun {};

TEST_F(Reports, OfARunHoldNoteDiagramTableAndPlots) {
    Run("run nrz-link.top");
    const std::string listing = Run("scan --report ber-power.top");
    EXPECT_TRUE(listing.ends_with("ber-power.html\n")) << listing;
    const auto page = ReadPage("ber-power.html");
    EXPECT_EQ(TextsOf(page, "h1"), (std::vector<std::string>{"ber-power"}));
    EXPECT_TRUE(HoldsText(TextsOf(page, "p"), "whose power at the receiver"));
    EXPECT_TRUE(HoldsText(TextsOf(page, "p"), "is swept from -24 to -18 dBm"));
    EXPECT_EQ(CountOf(page, "figure"), 1);  // its own plot, and none of the other run
    EXPECT_EQ(CountOf(page, "svg"), 2);     // and the diagram
    EXPECT_TRUE(HoldsText(TextsOf(page, "text"), "Receiver"));
    // The table says what the file does, in three digits.
    auto cells = TextsOf(page, "td");
    EXPECT_TRUE(HoldsText(cells, "from -24 to -18 by 1 (inner sweep)"));
    EXPECT_TRUE(HoldsText(cells, "80e3"));  // the fiber's length
    ASSERT_GT(cells.size(), 21u);
    cells.erase(cells.begin(), cells.end() - 21);  // rates come after the settings
    EXPECT_EQ(cells[0],
              "\xE2\x88\x92"
              "24");
    EXPECT_EQ(cells[1],
              "8.40\xC3\x97"
              "10\xE2\x81\xBB\xE2\x81\xB5");
    EXPECT_EQ(cells[2], "3.76");
    EXPECT_EQ(cells[20], "13.61");
    // Between -22 dBm (3.689e-9) and -21 dBm (4.09e-13): a quarter of a decade in four.
    EXPECT_TRUE(HoldsText(TextsOf(page, "figcaption"),
                          "received = \xE2\x88\x92"
                          "21.86"));
    const auto log = TextsOf(page, "pre");
    ASSERT_EQ(log.size(), 1u);
    EXPECT_TRUE(log[0].starts_with("Starting Parameter Scan")) << log[0].substr(0, 80);
}

TEST_F(Reports, OfAFolderGiveEachTopologyItsResults) {
    for (const char* command : {"run nrz-link", "run add-drop", "scan statistical",
                                "scan superblock-line", "run nested", "scan mach-zehnder"}) {
        Run(std::string(command) + ".top");
    }
    WriteText("foreign.sig", "0 1\n1 2\n");
    WriteText("foreign.pcs", "foreign.sig\n");
    ASSERT_EQ(Photrak("report . -o all.html --title 'Six & more'").status, 0);
    const auto page = ReadPage("all.html");
    EXPECT_EQ(TextsOf(page, "h1"), (std::vector<std::string>{"Six & more"}));
    std::map<std::string, std::vector<std::string>> files;  // below each heading
    std::string heading;
    for (const SvgElement& element : page) {
        if (element.name == "h2") heading = element.text;
        if (element.name == "text" && element.text.find(".pc") != std::string::npos)
            files[heading].push_back(element.text);
    }
    using Names = std::vector<std::string>;
    EXPECT_EQ(files["nrz-link"], (Names{"nrz-arrived.pcs", "nrz-received.pcs", "nrz-sent.pcs"}));
    EXPECT_EQ(files["superblock-line"], (Names{"line.pcb"}));
    EXPECT_EQ(files["nested"], (Names{"nested-received.pcs", "nested-_End_BER.pcb"}));
    EXPECT_EQ(files["add-drop"].size(), 5u);
    EXPECT_EQ(files["mach-zehnder"].size(), 15u);
    EXPECT_EQ(files["Other results"], (Names{"foreign.pcs"}));
    EXPECT_TRUE(HoldsText(TextsOf(page, "summary"), "The 40 runs"));
    EXPECT_TRUE(HoldsText(TextsOf(page, "td"), "greatest"));
    // The same input gives the same bytes.
    const std::string first = FileText("all.html");
    ASSERT_EQ(Photrak("report . -o all.html --title 'Six & more'").status, 0);
    EXPECT_TRUE(FileText("all.html") == first);
}

TEST_F(Reports, TakeTextsOfFilesAsTexts) {
    const TempDir folder;
    const std::string attack = "<script>alert(1)</script>&\"'`%s%n";
    WriteText("a.top", "NOTE " + attack + "\nLOCKED NO\n");
    WriteText("a.sig", "0 1\n1 nan\n2 inf\n3 .\n4 2\n");
    WriteText("a.pcs", "/tt\"" + attack + "\"\n/xl\"" + attack +
                           " (s)\"\n/yl\"</svg><img src=x>\"\n" + "/lt\"" + attack + "\"\n/tb\"" +
                           attack + "\"\n/zz" + attack + "\na.sig\n");
    WriteText("<img src=x onerror=alert(1)>.pcs", "missing<b>.sig\n");
    WriteText("`touch found`|touch found.pcs", "$(touch found)\n|touch found\n");
    WriteText("out.pcs", "../../etc/passwd\n/etc/passwd\n");
    WriteText("t.bdt", attack + "\tBER\tQ\n" + attack + "\t1e-9\t6\n\tBER\n");
    WriteText("log.txt", "WARNING " + attack + "\n" + attack + "\n");
    ASSERT_EQ(::mkfifo("fifo.pcs", 0600), 0);
    ASSERT_EQ(::mkfifo("fifo.sig", 0600), 0);
    WriteText("of-fifo.pcs", "fifo.sig\n");
    WriteText("of-folder.pcs", "sub\n");
    std::filesystem::create_directory("sub");
    std::filesystem::create_directory("folder.pcs");
    std::filesystem::create_symlink("/etc/passwd", "passwd.pcs");
    std::filesystem::create_symlink("/etc/passwd", "passwd.sig");
    WriteText("of-link.pcs", "passwd.sig\n");
    std::filesystem::create_symlink("/dev/zero", "zero.sig");
    WriteText("of-zero.pcs", "zero.sig\n");
    WriteText("empty.pcs", "");
    WriteText("empty.bdt", "");
    WriteText("none.pcs", "none.sig\n");
    WriteText("none.sig", "");
    const ProgramResult result = Photrak("report .");
    ASSERT_EQ(result.status, 1) << "a page without a plot that is there is no success";
    EXPECT_NE(result.error.find("missing<b>.sig': No such file or directory, and 7 more"),
              std::string::npos)
        << result.error;
    const auto page = ReadPage("report.html");
    for (const char* place : {"p", "td", "th", "li", "pre", "text"}) {
        EXPECT_TRUE(HoldsText(TextsOf(page, place), "<script>")) << place;
    }
    const auto warnings = TextsOf(page, "li");
    for (const char* expected :
         {"'fifo.sig': is not a regular file", "'sub': is not a regular file",
          "'passwd.sig': is a link that leads out", "'zero.sig': is a link that leads out",
          "'../../etc/passwd' does not lie in the folder", "empty.pcs: names no data file",
          "log.txt: WARNING <script>"}) {
        EXPECT_TRUE(HoldsText(warnings, expected)) << expected;
    }
    EXPECT_EQ(FileText("report.html").find("root:"), std::string::npos);
    EXPECT_FALSE(std::filesystem::exists("found"));
}

TEST_F(Reports, OfFoldersWithoutMeasureStayReadable) {
    const TempDir folder;
    WriteText("x.sig", "0 1\n1 2\n");
    for (int i = 0; i < 10'000; ++i) WriteText(Concat("x", i, ".pcs"), "x.sig\n");
    WriteText("log.txt", std::string(3'000'000, 'x') + "\nthe end\n");
    ASSERT_EQ(Photrak("report . -o page.html").status, 0);
    const auto page = ReadPage("page.html");
    EXPECT_EQ(CountOf(page, "figure"), 300);
    EXPECT_TRUE(HoldsText(TextsOf(page, "li"), "9700 plots are left out"));
    EXPECT_TRUE(HoldsText(TextsOf(page, "text"), "x299.pcs"));  // counted, not spelled
    EXPECT_EQ(TextsOf(page, "pre"), (std::vector<std::string>{"the end\n"}));
    EXPECT_LT(std::filesystem::file_size("page.html"), 8'000'000u);
}

TEST_F(Reports, RefuseWhatTheyCannotDo) {
    WriteText("frame.top", "COMPONENT A NoSuchModel\n");
    const struct {
        const char* arguments;
        int status;
        const char* expected;
    } rows[] = {
        {"report", 64, "wants a topology file or a folder"},
        {"report frame.txt", 64, "neither a topology nor a folder"},
        {"report missing.top", 1, "No such file"},
        {"report frame.top", 1, "does not load: "},
        {"report nrz-link.top -o nrz-link.top", 64, "must end in .html"},
        {"report nrz-link.top -o missing/x.html", 1, "/missing/x.html'"},
        {"report nrz-link.top wdm8.top", 64, "too many"},
    };
    for (const auto& row : rows) {
        const ProgramResult result = Photrak(row.arguments);
        EXPECT_EQ(result.status, row.status) << row.arguments << result.error;
        EXPECT_NE(result.error.find(row.expected), std::string::npos) << row.arguments << "\n"
                                                                      << result.error;
    }
}

TEST_F(Reports, OfAFailedRunTellWhyItFailed) {
    const ProgramResult result = Photrak("run --no-commands --quiet --report load-signal.top");
    EXPECT_EQ(result.status, 1);  // nothing was saved that it could load
    const auto page = ReadPage("load-signal.html");
    EXPECT_TRUE(HoldsText(TextsOf(page, "li"), "The run failed"));
}

}  // namespace
}  // namespace photrak::test
