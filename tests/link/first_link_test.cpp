// What a newcomer is given to begin with has no faults: the new topology, the examples with their
// files, a block of each model.
#include "link/example_run.h"

namespace photrak::test {
namespace {

class FirstLink : public ::testing::Test {
  protected:
    TempDir directory_;
};

TEST_F(FirstLink, NewTopologiesRunAndNeverReplaceAFile) {
    EXPECT_EQ(Photrak("new mine").out, "mine.top\n");
    EXPECT_EQ(Photrak("check --strict mine.top").out, "mine.top: 2 components, no faults\n");
    const ProgramResult run = Photrak("run --no-commands mine.top");
    EXPECT_EQ(run.out, "new-bits_bin.sig\nnew-bits.pcs\n") << run.error;
    WriteText("mine.top", "NOTE precious\n");
    const ProgramResult again = Photrak("new mine.top");
    EXPECT_EQ(again.status, 1);
    EXPECT_NE(again.error.find("it exists already"), std::string::npos) << again.error;
    EXPECT_EQ(FileText("mine.top"), "NOTE precious\n");
}

TEST_F(FirstLink, ExamplesComeWithAllThatTheyNeed) {
    const std::string list = Photrak("example").out;
    for (const auto& entry : std::filesystem::directory_iterator(SourceDir() + "/examples")) {
        if (entry.path().extension() != ".top") continue;
        const std::string name = entry.path().stem().string();
        SCOPED_TRACE(name);
        EXPECT_NE(("\n" + list).find("\n" + name + "  "), std::string::npos);
        std::filesystem::create_directory(name);
        const ProgramResult copy =
            RunProgram("cd " + name + " && " + BinaryDir() + "/bin/photrak example " + name);
        EXPECT_EQ(copy.status, 0) << copy.error;
        EXPECT_EQ(FileText(name + "/" + name + ".top"), FileText(entry.path()));
        // The one that loads a signal wants the one that saves it to have run.
        const char* strict = name == "load-signal" ? "" : "--strict ";
        EXPECT_EQ(Photrak("check " + (strict + name) + "/" + name + ".top").status, 0);
    }
    EXPECT_NE(Photrak("example nrz-lnk").error.find("did you mean 'nrz-link'?"), std::string::npos);
    EXPECT_EQ(Photrak("example ../examples/../x").status, 1);
}

TEST_F(FirstLink, BlocksOfAllModelsCanBePasted) {
    int models = 0;
    for (const auto& entry :
         std::filesystem::directory_iterator(SourceDir() + "/catalogue/models")) {
        const std::string type = entry.path().stem().string();
        if (entry.path().extension() != ".def" || type == "SuperBlock") continue;
        SCOPED_TRACE(type);
        const ProgramResult block = Photrak("models --block " + type);
        ASSERT_EQ(block.status, 0) << block.error;
        WriteText("block.top", block.out);
        const ProgramResult check = Photrak("check block.top");
        EXPECT_EQ(check.status, 0) << check.error;
        ++models;
    }
    EXPECT_GT(models, 30);
}

/// Blocks as they are placed, wired in the order of the light: what goes wrong in the first hour
/// may not be the defaults. Circular time does to a pattern that repeats what the padded one does.
TEST_F(FirstLink, BlocksAtTheirDefaultsMakeALink) {
    const struct {
        const char *type, *inputs, *output;
    } chain[] = {{"PseudoRandomBinarySequenceGenerator", "0", "1"},
                 {"ElectricalSignalGenerator", "1", "2"},
                 {"CWLaserModel", "0", "3"},
                 {"Modulator", "3 2", "4"},
                 {"NonlinearFiberModel", "4", "5"},
                 {"ReceiverModel", "5", "6"},
                 {"BERTester", "6 1", "0"}};
    const auto lineWith = [](std::string text, const std::string& word, const std::string& line) {
        const std::size_t at = text.find("\n" + word + " ") + 1;
        return text.replace(at, text.find('\n', at) - at, word + " " + line);
    };
    std::string link;
    for (const auto& block : chain) {
        const std::string text = Photrak(std::string("models --block ") + block.type).out;
        link += lineWith(lineWith(text, "INPUTFROM", block.inputs), "OUTPUTTO", block.output);
    }
    WriteText("link.top", link);
    const std::size_t level = link.find("VALUE", link.find("PARAM optimizationlevel")) + 6;
    EXPECT_EQ(link[level], '3');
    link[level] = '0';
    WriteText("padded.top", link);
    double Q[2] = {};
    for (const char* name : {"link", "padded"}) {
        const std::string file = std::string(name) + ".top";
        EXPECT_EQ(Photrak("check --strict " + file).status, 0);
        const ProgramResult run = Photrak("run --no-commands --quiet --strict " + file);
        EXPECT_EQ(run.status, 0) << run.error;
        Q[name[0] == 'p'] = std::stod(run.out.substr(run.out.find("Q: ") + 3));
    }
    EXPECT_GT(Q[0], 6.0);
    EXPECT_LT(Q[0], 8.0);
    EXPECT_NEAR(Q[1], Q[0], 0.01 * Q[0]);
}

TEST_F(FirstLink, EachCommandHasAPageOfHelp) {
    for (const char* command :
         {"run", "scan", "check", "test", "params", "plot", "report", "draw", "models",
          "superblock", "explain", "new", "example", "completion"}) {
        const ProgramResult help = Photrak(std::string("help ") + command);
        EXPECT_EQ(help.status, 0);
        EXPECT_TRUE(help.out.starts_with(std::string("Usage: photrak ") + command)) << help.out;
        EXPECT_EQ(help.out, Photrak(std::string(command) + " --help").out);
        EXPECT_NE(help.out.find(std::string("\nExamples:\n")), std::string::npos);
    }
    EXPECT_EQ(Photrak("help fly").status, 64);
}

/// The manual page has the options of the program, each with its text (tools/man-options writes
/// them), and the shell offers them, models and names.
TEST_F(FirstLink, ManPageAndCompletionKnowAllWords) {
    const std::string script = Photrak("completion").out;
    const std::string page = FileText(SourceDir() + "/packaging/man/photrak.1");
    const std::string help = Photrak("--help").out;
    for (std::size_t at = help.find("\n  --"); at != std::string::npos;
         at = help.find("\n  --", at + 1)) {
        const std::string option = help.substr(at + 3, help.find(' ', at + 3) - at - 3);
        EXPECT_NE(script.find(option), std::string::npos) << option;
    }
    const std::string options = Photrak("--manual-options").out;
    EXPECT_GT(Count(options, ".TP\n"), 30);
    EXPECT_NE(page.find("stands from here\n" + options + ".\\\" End of the options\n"),
              std::string::npos)
        << "call tools/man-options";
    WriteText("completion.bash", script);
    RunProgram(BinaryDir() + "/bin/photrak example ber-power");
    const struct {
        const char *words, *offered;
    } rows[] = {{"ch", "check"},
                {"run --prog", "--progress"},
                {"run --plotting ic", "icon"},
                {"models NonlinearF", "NonlinearFiberModel"},
                {"run ber-power.top --set rec", "received="}};
    for (const auto& row : rows) {
        const ProgramResult result = RunProgram(std::string("env PATH=") + BinaryDir() +
                                                "/bin:$PATH bash -c 'source completion.bash; "
                                                "COMP_WORDS=(photrak " +
                                                row.words +
                                                "); COMP_CWORD=$((${#COMP_WORDS[@]} - 1)); "
                                                "_photrak; echo \"${COMPREPLY[@]}\"'");
        EXPECT_EQ(result.out, std::string(row.offered) + "\n") << result.error;
    }
}

}  // namespace
}  // namespace photrak::test
