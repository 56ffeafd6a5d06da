// A model in a C library, from user.lis to the trace of what it made, through the real program.
#include "link/run_program.h"

namespace photrak::test {
namespace {

constexpr const char* definition =
    "COMPONENT Inverter\nNOTE bits turned round\nMININPUTS 1\nMAXINPUTS 4\nMINOUTPUTS "
    "1\nMAXOUTPUTS 4\n"
    "NUMINEQNUMOUTNODES TRUE\nNUMINPUTS 1\nNUMOUTPUTS 1\nINSIGTYPES UnknownSigType\n"
    "OUTSIGTYPES UnknownSigType\nPARAM gain DoubleType\nDESC factor\nMINVALUE 0\nMAXVALUE 10\n"
    "VALUE 1\nSTDDEV 0\nPROBDIST NoProbDist\nUNITS none\nENDPARAM\nENDCOMPONENT\n";

constexpr const char* topology =
    "NOTE a pattern and its inverse\n"
    "COMPONENT Bits PseudoRandomBinarySequenceGenerator\nNOTE\nICON x 0 0\nNUMINPUTS 1\nNUMOUTPUTS "
    "1\n"
    "INPUTFROM 0\nOUTPUTTO 1\nPARAM patternLength IntType\nVALUE 5\nENDPARAM\nENDCOMPONENT\n"
    "COMPONENT Turn Inverter\nNOTE\nICON x 0 0\nNUMINPUTS 1\nNUMOUTPUTS 1\nINPUTFROM 1\nOUTPUTTO "
    "2\n"
    "ENDCOMPONENT\n"
    "COMPONENT Plot SignalPlot\nNOTE\nICON x 0 0\nNUMINPUTS 2\nNUMOUTPUTS 1\nINPUTFROM 1 2\n"
    "OUTPUTTO 0\nENDCOMPONENT\n";

/// A copy of the program with a catalogue of its own, in the working directory.
class OwnCatalogue : public ::testing::Test {
  protected:
    OwnCatalogue() {
        namespace fs = std::filesystem;
        fs::copy_file(PHOTRAK_BINARY_DIR "/bin/photrak", "photrak");
        fs::copy(PHOTRAK_SOURCE_DIR "/catalogue/models", "models", fs::copy_options::recursive);
        WriteText("models/inverter.def", definition);
        WriteText("link.top", topology);
    }
    static void UserList(const std::string& line) { WriteText("models/user.lis", line); }
    static ProgramResult Run(const std::string& arguments) {
        return RunProgram("./photrak " + arguments);
    }
    TempDir directory_;
};

TEST_F(OwnCatalogue, AModelInCRunsInATopology) {
    std::filesystem::copy(PHOTRAK_BINARY_DIR "/user_library/gain_model.so", "models");
    UserList("Inverter inverter.def inv gain_model.so RunGain TestGain\n");
    const ProgramResult result = Run("run --no-commands link.top");
    ASSERT_EQ(result.status, 0) << result.error;
    const auto rows = Table("phtmpPlot_bin.sig");
    ASSERT_EQ(rows.size(), 32u);
    for (const auto& row : rows) EXPECT_EQ(row.at(1) + row.at(2), 1.0);
    EXPECT_NE(Run("models Inverter").out.find("gain"), std::string::npos);
}

TEST_F(OwnCatalogue, ATestOfAModelInCTellsWhatItFound) {
    std::filesystem::copy(PHOTRAK_BINARY_DIR "/user_library/gain_model.so", "models");
    UserList("Inverter inverter.def inv gain_model.so RunGain TestGain\n");
    std::string link = topology;
    const std::string place = "INPUTFROM 1\nOUTPUTTO 2\n";
    link.insert(link.find(place) + place.size(), "PARAM gain DoubleType\nVALUE g\nENDPARAM\n");
    WriteText("link.top", "BEGINVARIABLES\ng DoubleType 2\nENDVARIABLES\n" + link);
    const ProgramResult good = Run("test Turn link.top"), bad = Run("test --set g=0 Turn link.top");
    EXPECT_EQ(good.status, 0) << good.error;
    EXPECT_EQ(good.out, "Turn: no faults\n");
    EXPECT_EQ(bad.status, 1);
    EXPECT_NE(bad.error.find("gain must not be 0"), std::string::npos) << bad.error;

    UserList("Inverter inverter.def inv gain_model.so RunGain\n");
    EXPECT_NE(Run("test Turn link.top").error.find("No parameter test available for this model."),
              std::string::npos);
}

TEST_F(OwnCatalogue, ALibraryThatIsNotThereIsToldAtStartAndAtTheRun) {
    UserList("Inverter inverter.def inv missing.so RunGain TestGain\n");
    const ProgramResult result = Run("run --no-commands link.top");
    EXPECT_EQ(result.status, 1);
    EXPECT_NE(result.error.find("missing.so"), std::string::npos) << result.error;
    EXPECT_NE(result.error.find("ERROR: no pointer for user model."), std::string::npos)
        << result.error;
}

TEST_F(OwnCatalogue, AMissingListEndsTheProgramWithTheTextOfTheCatalogue) {
    std::filesystem::remove("models/channel.lis");
    const ProgramResult result = Run("models");
    EXPECT_EQ(result.status, 1);
    EXPECT_NE(result.error.find("ERROR in initializing models."), std::string::npos);
    EXPECT_NE(result.error.find("channel.lis"), std::string::npos) << result.error;
}

}  // namespace
}  // namespace photrak::test
