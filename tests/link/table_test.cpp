// --table and --json through the real program: rows against what the other files say, documents
// also where the command fails, and what a killed writer leaves.
#include <csignal>

#include "base/text.h"
#include "link/example_run.h"

namespace photrak::test {
namespace {

struct Tables : ExampleRun {
    /// The fields of a table without quotes, line by line.
    static std::vector<std::vector<std::string>> Csv(const std::string& file) {
        std::vector<std::vector<std::string>> rows;
        std::istringstream text(FileText(file));
        for (std::string line; std::getline(text, line);) {
            EXPECT_TRUE(line.ends_with('\r')) << line;
            line.pop_back();
            rows.emplace_back();
            std::istringstream fields(line);
            for (std::string field; std::getline(fields, field, ',');) rows.back().push_back(field);
        }
        return rows;
    }
};

using Header = std::vector<std::string>;

/// The statistics draw the loss of a connector in dB; Q follows it, and all other tables agree.
TEST_F(Tables, HoldEveryDrawnParameterWithItsResult) {
    const std::string out = Run("scan --plotting none --table out.csv statistical.top");
    EXPECT_TRUE(out.ends_with("out.csv\n")) << out;
    const auto rows = Csv("out.csv");
    ASSERT_EQ(rows.size(), 41u);
    EXPECT_EQ(rows[0], (Header{"point", "run", "Connector.attenuation", "tester", "loop", "BER",
                               "Q", "level", "offset", "status"}));
    std::istringstream table(FileText("statistical.bdt"));
    std::string line;
    std::getline(table, line);
    double ratio = 0.0;
    for (std::size_t i = 1; i < rows.size(); ++i) {
        const Header& row = rows[i];
        ASSERT_EQ(row.size(), 10u);
        std::getline(table, line);
        EXPECT_EQ(Concat(row[1], "\t", FormatExponent(ReadDouble(row[5])), "\t",
                         FormatDefault(ReadDouble(row[6]))),
                  line);
        EXPECT_EQ(row[9], "ok");
        // Thermal noise alone: Q and the level in V go with the power that arrives.
        const double loss = std::pow(10.0, 0.1 * ReadDouble(row[2]));
        if (i == 1) ratio = ReadDouble(row[7]) / loss;
        EXPECT_NEAR(ReadDouble(row[7]) / loss, ratio, 1e-9 * ratio);
    }
}

/// A block that does not run again counts in every point with what it found before, and fixed
/// columns keep their names beside a symbol of the same name.
TEST_F(Tables, HaveARowForEveryPoint) {
    Run("scan --lenient --plotting none --inner run=1:3:1 --outer received=-20:-18:2 --table t.csv "
        "ber-power.top");
    const auto rows = Csv("t.csv");
    ASSERT_EQ(rows.size(), 7u);
    EXPECT_EQ(rows[0], (Header{"point", "received", "run_2", "run", "tester", "loop", "BER", "Q",
                               "level", "offset", "status"}));
    for (std::size_t i = 1; i < rows.size(); ++i) {
        EXPECT_EQ(rows[i][0], Concat(i));
        EXPECT_EQ(rows[i][1], i <= 3 ? "-20" : "-18");
        EXPECT_EQ(rows[i][2], Concat((i - 1) % 3 + 1));
        EXPECT_EQ(rows[i][7], rows[i <= 3 ? 1 : 4][7]);
    }
    EXPECT_LT(ReadDouble(rows[1][7]), ReadDouble(rows[4][7]));
}

TEST_F(Tables, AreWholeAfterAKill) {
    for (const std::string file : {"killed.csv", "killed.json"}) {
        InterruptedPhotrak(
            {"scan", "--no-commands", "--quiet", "--plotting", "none", "--outer", "bits=4:4:1",
             "--inner", "turn=0:1:1e-6", "--table", file, "sweep-pattern.top"},
            SIGKILL, file);
        const std::string text = FileText(file);
        ASSERT_TRUE(text.ends_with(file == "killed.csv" ? "\r\n" : "\n]\n")) << text;
        EXPECT_EQ(Count(text, "\n"), Count(text, file == "killed.csv" ? "\r\n" : "{\"point\":") +
                                         (file == "killed.csv" ? 0 : 2));
    }
}

/// The command of a block prints too, and a warning of the run knows its line.
TEST_F(Tables, StandardOutputHoldsTheDocumentAlone) {
    WriteText("one.txt", "TransferMatrixFormat1 REAL LIN\n1 1 1 1.5e-6 1.5e-6\n1.5e-6 1\n");
    WriteText("command.top",
              "NODEBEGIN 1 OpSigType\nENDNODE\n\n"
              "COMPONENT Device MultiportOpticalDevice\nNOTE\nICON x 0 0\nNUMINPUTS 1\n"
              "NUMOUTPUTS 1\nINPUTFROM 1\nOUTPUTTO 0\n\n"
              "PARAM CommandLine StringType\nVALUE echo shouted\nENDPARAM\n\n"
              "PARAM FileName StringType\nVALUE one.txt\nENDPARAM\n\nENDCOMPONENT\n\n"
              "COMPONENT Laser CWLaserModel\nNOTE\nICON x 0 0\nNUMINPUTS 1\nNUMOUTPUTS 1\n"
              "INPUTFROM 0\nOUTPUTTO 1\n\n"
              "PARAM peakPower DoubleType\nVALUE -1\nENDPARAM\n\nENDCOMPONENT\n");
    const ProgramResult result = Photrak("measure --lenient --json command.top Laser");
    EXPECT_EQ(result.status, 0) << result.error;
    EXPECT_NE(result.error.find("shouted"), std::string::npos) << result.error;
    EXPECT_EQ(result.out.find("shouted\n"), std::string::npos) << result.out;
    EXPECT_TRUE(result.out.starts_with("{\n  \"schema\": \"photrak.measure/1\"")) << result.out;
    EXPECT_NE(result.out.find("\"file\": \"command.top\", \"line\": 31, "), std::string::npos)
        << result.out;
}

/// Standard output is one document whatever happens, and holds what standard error says.
TEST_F(Tables, ComeAsADocumentOnFailureToo) {
    std::filesystem::create_symlink("/dev/full", "full.csv");
    const struct {
        const char *arguments, *schema;
        int status;
        const char* holds;
    } rows[] = {
        {"run nrz-link.top", "run", 0, "\"files\": [\n    \"nrz-sent_mag.sig\""},
        {"scan --inner received=-20:-19:1 ber-power.top", "scan", 0, "\"points\": 2"},
        {"run --set lenght=1 nrz-link.top", "run", 1, "\"code\": \"P1305\""},
        {"run absent.top", "run", 1, "\"severity\": \"error\""},
        {"run --bogus nrz-link.top", "run", 64, "\"outcome\": \"usage\""},
        {"run --table full.csv nrz-link.top", "run", 1, "No space left on device"},
        {"check bad.top", "check", 1, "\"code\": \"P1209\", \"file\": \"bad.top\", \"line\": "},
    };
    std::string bad = FileText("nrz-link.top");
    const std::size_t at = bad.find("VALUE 10e9");
    ASSERT_NE(at, std::string::npos);
    WriteText("bad.top", bad.replace(at, 10, "VALUE rate9"));
    for (const auto& row : rows) {
        SCOPED_TRACE(row.arguments);
        const ProgramResult result =
            Photrak(Concat(row.arguments, " --json", row.schema[0] == 'c' ? "" : " --no-commands"));
        EXPECT_EQ(result.status, row.status) << result.error;
        const std::string start = Concat("{\n  \"schema\": \"photrak.", row.schema, "/1\",\n");
        EXPECT_TRUE(result.out.starts_with(start) && result.out.ends_with("\n}\n")) << result.out;
        EXPECT_NE(result.out.find(row.holds), std::string::npos) << result.out;
        EXPECT_NE(result.out.find(Concat("\"status\": ", row.status)), std::string::npos);
        EXPECT_EQ(Count(result.out, "\"severity\": \"error\""),
                  Count(result.error, "photrak: error: "));
    }
}

}  // namespace
}  // namespace photrak::test
