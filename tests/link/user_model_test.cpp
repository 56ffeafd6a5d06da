// A model in a C library, from user.lis to the trace of what it made, through the real program.
#include "link/run_program.h"
#include "support/paths.h"

namespace photrak::test {
namespace {

constexpr const char* definition =
    "COMPONENT Inverter\nMAXINPUTS 4\nMAXOUTPUTS 4\nNUMINEQNUMOUTNODES TRUE\nNUMINPUTS 1\n"
    "NUMOUTPUTS 1\nINSIGTYPES UnknownSigType\nOUTSIGTYPES UnknownSigType\nPARAM gain DoubleType\n"
    "MINVALUE 0\nMAXVALUE 10\nVALUE 1\nSTDDEV 0\nENDPARAM\nENDCOMPONENT\n";

std::string Block(const std::string& type, const std::string& inputs, const std::string& outputs,
                  const std::string& parameter) {
    return "COMPONENT " + type + " " + type + "\nNOTE\nICON x 0 0\nNUMINPUTS " +
           (inputs.size() > 1 ? "2" : "1") + "\nNUMOUTPUTS 1\nINPUTFROM " + inputs + "\nOUTPUTTO " +
           outputs + "\n" + parameter + "ENDCOMPONENT\n";
}

/// A pattern of 2^5 bits and its inverse in a plot; the gain is a symbol.
std::string Topology() {
    return "BEGINVARIABLES\ng DoubleType 2\nENDVARIABLES\n" +
           Block("PseudoRandomBinarySequenceGenerator", "0", "1",
                 "PARAM patternLength IntType\nVALUE 5\nENDPARAM\n") +
           Block("Inverter", "1", "2", "PARAM gain DoubleType\nVALUE g\nENDPARAM\n") +
           Block("SignalPlot", "1 2", "0", "");
}

/// A copy of the program with a catalogue of its own, in the working directory.
class OwnCatalogue : public ::testing::Test {
  protected:
    OwnCatalogue() {
        namespace fs = std::filesystem;
        fs::copy_file(BinaryDir() + "/bin/photrak", "photrak");
        fs::copy(SourceDir() + "/catalogue/models", "models", fs::copy_options::recursive);
        WriteText("models/inverter.def", definition);
        WriteText("link.top", Topology());
        fs::copy(BinaryDir() + "/user_library/gain_model.so", "models");
    }
    static void UserList(const std::string& line) { WriteText("models/user.lis", line); }
    static ProgramResult Run(const std::string& arguments) {
        return RunProgram("./photrak " + arguments);
    }
    TempDir directory_;
};

TEST_F(OwnCatalogue, AModelInCRunsInATopologyAndTellsWhatItsTestFound) {
    UserList("Inverter inverter.def inv gain_model.so RunGain TestGain\n");
    const ProgramResult result = Run("run --no-commands link.top");
    ASSERT_EQ(result.status, 0) << result.error;
    const auto rows = Table("phtmpSignalPlot_bin.sig");
    ASSERT_EQ(rows.size(), 32u);
    for (const auto& row : rows) EXPECT_EQ(row.at(1) + row.at(2), 1.0);
    EXPECT_NE(Run("models Inverter").out.find("gain"), std::string::npos);

    const ProgramResult good = Run("test Inverter link.top");
    EXPECT_EQ(good.status, 0) << good.error;
    EXPECT_EQ(good.out, "Inverter: no faults\n");
    const ProgramResult bad = Run("test --set g=0 Inverter link.top");
    EXPECT_EQ(bad.status, 1);
    EXPECT_NE(bad.error.find("gain must not be 0"), std::string::npos) << bad.error;
    UserList("Inverter inverter.def inv gain_model.so RunGain\n");
    EXPECT_NE(
        Run("test Inverter link.top").error.find("No parameter test available for this model."),
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

TEST_F(OwnCatalogue, AFaultyDefinitionOfAUserStopsNoOtherModel) {
    UserList(
        "Table table.def t gain_model.so RunGain TestGain\n"
        "Inverter inverter.def inv gain_model.so RunGain TestGain\n");
    WriteText("models/table.def", "COMPONENT Table\nPARAM gain float\nENDPARAM\nENDCOMPONENT\n");
    for (const char* command : {"models", "run --no-commands link.top", "check link.top"}) {
        const ProgramResult result = Run(command);
        EXPECT_EQ(result.status, 0) << command << result.error;
        EXPECT_NE(result.error.find("warning: P1108: user model 'Table' is left out: "),
                  std::string::npos)
            << result.error;
        EXPECT_NE(result.error.find("table.def:2: "), std::string::npos) << result.error;
    }
    EXPECT_EQ(Run("check --strict link.top").status, 2);
    EXPECT_NE(Run("models").out.find("Inverter"), std::string::npos);
    EXPECT_EQ(Run("models Table").status, 1);

    std::filesystem::resize_file("models/CWLaserModel.def", 40);
    EXPECT_NE(Run("models").error.find("the definition of 'CWLaserModel' has no line ENDCOMPONENT"),
              std::string::npos);
}

/// Each ends in words that name the block, in our process and in one of its own.
TEST_F(OwnCatalogue, AFaultyLibraryIsNamedAndNothingElseIsLost) {
    namespace fs = std::filesystem;
    fs::copy(BinaryDir() + "/user_library/faulty_model.so", "models");
    const struct {
        const char *entry, *told, *toldIsolated;
        int status;
    } rows[] = {
        {"RunCrash", "models/faulty_model.so' crashed: SIGSEGV",
         "component 'Inverter': the user library crashed: SIGSEGV", 139},
        {"RunExit", "models/faulty_model.so' ended the program",
         "component 'Inverter': the user library ended its process with status", 1},
        {"RunHuge", "out of memory while running the component 'Inverter'",
         "component 'Inverter': the user library ran out of memory", 1},
        {"RunLoop", nullptr, "component 'Inverter': the user library did not return within 0.3 s",
         1},
        {"RunReturnsInput", "output port 1 of the user model is the signal of input port 1",
         nullptr, 1},
        {"RunReturnsFreed", "output port 1 of the user model is no signal that", nullptr, 1},
        {"RunReturnsOther", "output port 1 of the user model is a signal of another kind", nullptr,
         1},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.entry);
        UserList(std::string("Inverter inverter.def inv faulty_model.so ") + row.entry + "\n");
        if (row.told) {
            // A shell tells a crash as 128 and the signal.
            const ProgramResult bare = RunProgram(
                "ASAN_OPTIONS=handle_segv=0:allocator_may_return_null=1 sh -c './photrak run "
                "--no-commands link.top; exit $?'");
            EXPECT_EQ(bare.status, row.status) << bare.error;
            EXPECT_NE(bare.error.find(row.told), std::string::npos) << bare.error;
            EXPECT_NE(FileText("log.txt").find(row.told), std::string::npos);
        }
        const ProgramResult own = RunProgram(
            "ASAN_OPTIONS=handle_segv=0:allocator_may_return_null=1 ./photrak run --no-commands "
            "--isolate-limit 0.3 link.top");
        EXPECT_EQ(own.status, 1);
        const char* told = row.toldIsolated ? row.toldIsolated : row.told;
        EXPECT_NE(own.error.find(told), std::string::npos) << own.error;
        EXPECT_NE(own.error.find("the run failed at component 'Inverter'"), std::string::npos);
    }
}

TEST_F(OwnCatalogue, AnIsolatedLibraryGivesTheSameResults) {
    UserList("Inverter inverter.def inv gain_model.so RunGain TestGain\n");
    EXPECT_EQ(Run("run --no-commands --out here link.top").status, 0);
    EXPECT_EQ(Run("run --no-commands --out apart --isolate link.top").status, 0);
    const std::string here = FileText("here/phtmpSignalPlot_bin.sig");
    EXPECT_FALSE(here.empty());
    EXPECT_EQ(FileText("apart/phtmpSignalPlot_bin.sig"), here);
}

/// What the call upset is put back: results land in the folder, in the numbers of a run without it.
TEST_F(OwnCatalogue, ALibraryThatUpsetsTheProcessDoesSoForItsCallOnly) {
    std::filesystem::copy(BinaryDir() + "/user_library/faulty_model.so", "models");
    UserList("Inverter inverter.def inv faulty_model.so RunUpset\n");
    const ProgramResult result = Run("run --no-commands link.top");
    EXPECT_EQ(result.status, 0) << result.error;
    const auto rows = Table("phtmpSignalPlot_bin.sig");
    ASSERT_EQ(rows.size(), 32u);
    for (const auto& row : rows) EXPECT_EQ(row.at(1), row.at(2));
}

/// Code is loaded for a model that runs, and only where nobody else can have put it there.
TEST_F(OwnCatalogue, OnlyTrustedCodeThatRunsIsLoaded) {
    namespace fs = std::filesystem;
    UserList(
        "Inverter inverter.def inv gain_model.so RunGain TestGain\n"
        "Table inverter.def t damaged.so RunGain\n");
    fs::copy_file("models/gain_model.so", "models/damaged.so");
    fs::resize_file("models/damaged.so", fs::file_size("models/damaged.so") / 2);
    for (const char* command : {"models", "check link.top", "run --no-commands link.top"}) {
        const ProgramResult result = Run(command);
        EXPECT_EQ(result.status, 0) << result.error;
        EXPECT_NE(result.error.find("damaged.so' is cut short"), std::string::npos);
    }
    fs::permissions("models/gain_model.so", fs::perms::others_write, fs::perm_options::add);
    EXPECT_EQ(Run("check link.top").status, 0);
    const ProgramResult refused = Run("run --no-commands link.top");
    EXPECT_EQ(refused.status, 1);
    EXPECT_NE(refused.error.find("can be changed by other users; '--trust' runs it all the same"),
              std::string::npos)
        << refused.error;
    EXPECT_EQ(Run("run --no-commands --trust link.top").status, 0);
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
