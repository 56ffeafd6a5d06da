// What is started for the viewer, the editor and command lines, and that a file name stays a name.
#include "kernel/external_commands.h"

#include <functional>

#include "kernel/run_record.h"
#include "platform/file_system.h"
#include "support/recording_host.h"
#include "support/temp_dir.h"

namespace photrak {
namespace {

using Words = std::vector<std::string>;

class ExternalCommands : public testing::Test {
  protected:
    void SetUp() override { ResetExternalCommands(); }
    void TearDown() override { ResetExternalCommands(); }
    RecordingHost host;
};

TEST_F(ExternalCommands, ProgramsAndTheirArguments) {
    const auto plot = [] { RunPlotCommand("a b.pcs", Wait::No); };
    const auto launch = [] { LaunchPlot("a b.pcs", Wait::No); };
    const auto edit = [] { RunEditor("a b.txt", Wait::No); };
    const struct {
        std::map<std::string, std::string> environment;
        std::function<void()> start;
        Words arguments;
    } rows[] = {
        {{}, plot, {"vistrax", "/v", "@a b.pcs"}},
        {{}, launch, {"vistrax", "@a b.pcs"}},
        {{}, edit, {"notepad", "a b.txt"}},
        {{{"PLOTCMD", "view -x"}},
         plot,
         {"/bin/sh", "-c", "view -x \"$@\"", "/bin/sh", "@a b.pcs"}},
        {{{"PLOTCMD", "view"}, {"COMSPEC", "/bin/dash"}},
         launch,
         {"/bin/dash", "-c", "view \"$@\"", "/bin/dash", "@a b.pcs"}},
        {{}, [] { RunEditor("+!x", Wait::No); }, {"notepad", "./+!x"}},
        {{}, [] { RunIconEditor("-x.bmp", Wait::No); }, {"xdg-open", "./-x.bmp"}},
        {{{"PHOTRAK_ICON_EDITOR", " /opt/paint  -n; $HOME"}},
         [] { RunIconEditor("x y.bmp", Wait::No); },
         {"/opt/paint", "-n;", "$HOME", "x y.bmp"}},
    };
    for (const auto& row : rows) {
        host.commands.clear();
        host.environment = row.environment;
        row.start();
        ASSERT_EQ(host.commands.size(), 1u);
        EXPECT_EQ(host.commands[0].arguments, row.arguments);
        EXPECT_FALSE(host.commands[0].waited);
    }
}

TEST_F(ExternalCommands, ViewerBesideTheExecutableServesWhereThePathHasNone) {
    const auto started = [&](bool refused) {
        host.commands.clear();
        ResetRunRecord();
        AllowExternalCommands(!refused);
        host.startResult = -1;
        LaunchPlot("a.pcs", Wait::No);
        Words programs;
        for (const auto& command : host.commands) programs.push_back(command.arguments[0]);
        return programs;
    };
    EXPECT_EQ(started(false), (Words{"vistrax"}));  // without a display
    EXPECT_TRUE(CurrentRun().viewerMissing);
    EXPECT_TRUE(started(true).empty());
    EXPECT_FALSE(CurrentRun().viewerMissing);
    host.environment["DISPLAY"] = ":7";
    EXPECT_EQ(started(false), (Words{"vistrax", ExecutableDirectory() + "vistrax"}));
    host.environment["PLOTCMD"] = "mine";
    EXPECT_EQ(started(false), (Words{"/bin/sh"}));
    EXPECT_FALSE(CurrentRun().viewerMissing);
}

TEST_F(ExternalCommands, NothingStartsWhenRefused) {
    AllowExternalCommands(false);
    EXPECT_EQ(Spawn("x", {}, Wait::Yes), -1);
    EXPECT_EQ(RunPlotCommand("x", Wait::No), -1);
    EXPECT_TRUE(host.commands.empty());
}

TEST_F(ExternalCommands, HostileFileNameReachesTheViewerAsOneWord) {
    const TempDir directory;
    const HostScope real({&host, SystemHost().processes, SystemHost().libraries, &host, &host});
    host.environment["PLOTCMD"] = "show() { printf '[%s]' \"$@\" > seen; }; show -first";
    const std::string name = "a b'\"; touch hit; $(touch hit) `touch hit`\n*.pcs";
    EXPECT_EQ(RunPlotCommand(name, Wait::Yes), 0);
    EXPECT_EQ(directory.Read("seen"), "[-first][@" + name + "]");
    EXPECT_FALSE(directory.Has("hit"));
}

}  // namespace
}  // namespace photrak
