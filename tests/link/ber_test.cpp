// From bits to a bit error rate through the real program: what stands on the screen and in the
// files.
#include "base/text.h"
#include "link/run_program.h"

namespace photrak::test {
namespace {

struct Block {
    const char *name, *type, *from, *to;
    std::string parameters;
    int inputs = 1;
};

/// A transmitter of `power` watts, and behind the modulator at once a receiver and a tester.
std::string LinkTopology() {
    const std::string power =
        "PARAM peakPower DoubleType\nVALUE power\nSTDDEV 0\nPROBDIST NoProbDist\nUNITS W\n"
        "ENDPARAM\n";
    const Block blocks[] = {
        {"Bits", "PseudoRandomBinarySequenceGenerator", "0", "1", ""},
        {"Drive", "ElectricalSignalGenerator", "1", "2", ""},
        {"Laser", "CWLaserModel", "0", "3", power},
        {"Modulator", "Modulator", "3 2", "4", "", 2},
        {"Receiver", "ReceiverModel", "4", "5", ""},
        {"Tester", "BERTester", "5 1", "0", "PARAM FilenameRoot StringType\nVALUE rate\nENDPARAM\n",
         2},
    };
    const char* types[] = {"BinSigType", "ElecSigType", "OpSigType", "OpSigType", "ElecSigType"};
    std::string text =
        "BEGINVARIABLES\npower DoubleType 40e-6\nENDVARIABLES\n"
        "SIMOPTIONS\nPLOTTING PlotToFilesOnly\nENDSIMOPTIONS\n";
    int number = 0;
    for (const char* type : types) text += Concat("NODEBEGIN ", ++number, ' ', type, "\nENDNODE\n");
    for (const Block& block : blocks) {
        text +=
            Concat("COMPONENT ", block.name, ' ', block.type, "\nNOTE -\nICON i 1 1\nNUMINPUTS ",
                   block.inputs, "\nNUMOUTPUTS 1\nINPUTFROM ", block.from, "\nOUTPUTTO ", block.to,
                   "\n", block.parameters, "ENDCOMPONENT\n");
    }
    return text;
}

class BerLink : public ::testing::Test {
  protected:
    BerLink() { WriteText("link.top", LinkTopology()); }
    TempDir directory_;
};

TEST_F(BerLink, RateAndQStandBehindTheFiles) {
    const ProgramResult result = Photrak("run --no-commands --quiet link.top");
    ASSERT_EQ(result.status, 0) << result.error;
    const auto row = Table("rate.ber").at(0);
    const std::string table = FileText("rate.bdt");
    const double Q = ReadDouble(table.substr(table.rfind('\t') + 1));
    EXPECT_EQ(result.out,
              Concat("rate.ber\nrate.pcb\nrate.bdt\nBER Tester: ", FormatSignificant(row.at(1), 3),
                     "  Q: ", FormatSignificant(Q, 3), "\n"));
    EXPECT_GT(Q, 5.0);
    EXPECT_LT(Q, 8.0);
}

/// The receiver's own noise, which does not know the light, sets Q: it is proportional to the
/// power.
TEST_F(BerLink, QFollowsTheReceivedPower) {
    const ProgramResult result = Photrak(
        "scan --no-commands --quiet --inner power=10e-6:50e-6:10e-6 --inner-tag _p link.top");
    ASSERT_EQ(result.status, 0) << result.error;
    const std::string text = FileText("rate.bdt");
    ASSERT_EQ(text.rfind("power\tBER\tQ\n", 0), 0u);
    WriteText("rows.txt", text.substr(text.find('\n') + 1));
    const auto rows = Table("rows.txt");
    ASSERT_EQ(rows.size(), 5u);
    for (const auto& row : rows) {
        EXPECT_NEAR(row.at(3) / row.at(0) / (rows[0].at(3) / rows[0].at(0)), 1.0, 0.05);
    }
    EXPECT_EQ(Table("rate.ber").size(), 5u);
    EXPECT_NE(result.out.find("\nBER Tester: "), std::string::npos);
}

}  // namespace
}  // namespace photrak::test
