// Where results go, and that none is lost in silence: full disks, read-only folders, two runs in
// one folder, writers that were killed, topologies from pipes.
#include <sys/stat.h>

#include "base/text.h"
#include "link/example_run.h"

namespace photrak::test {
namespace {

class Results : public ExampleRun {
  protected:
    static std::size_t FilesIn(const std::string& folder) {
        const auto all = std::filesystem::directory_iterator(folder);
        return static_cast<std::size_t>(std::distance(begin(all), end(all)));
    }
};

TEST_F(Results, GoToTheirOwnFolderAndAreListedAsTheCallerSeesThem) {
    std::filesystem::create_directory("links");
    for (const char* name : {"first-bits.top", "patterns.top", "frame.txt"}) {
        std::filesystem::rename(name, std::string("links/") + name);
    }
    const std::string beside = Run("run links/patterns.top");
    EXPECT_TRUE(beside.starts_with("links/patterns-")) << beside;
    const std::size_t files = FilesIn("links");

    // frame.txt is read beside the topology, the log and all results are in the new folder.
    const std::string apart = Run("run --out deep/er links/patterns.top");
    EXPECT_TRUE(apart.starts_with("deep/er/patterns-")) << apart;
    EXPECT_EQ(FilesIn("links"), files);
    EXPECT_TRUE(std::filesystem::exists("deep/er/log.txt"));
    EXPECT_FALSE(std::filesystem::exists("deep/er/frame.txt"));
    std::istringstream lines(apart);
    for (std::string path; std::getline(lines, path);) {
        ASSERT_TRUE(std::filesystem::exists(path)) << path;
        EXPECT_EQ(FileText(path), FileText("links" + path.substr(7))) << path;
    }
}

/// A block that loads what another one has saved in the same run gets that, not an older file
/// beside the topology.
TEST_F(Results, OfTheSameRunCountBeforeInputsOfTheirName) {
    std::filesystem::create_directory("out");
    Run("run save-signal.top");
    Run("run --out out save-signal.top");
    EXPECT_EQ(FileText("out/save-arrived.sgd"), FileText("save-arrived.sgd"));
    Run("run --out out load-signal.top");
    EXPECT_TRUE(std::filesystem::exists("out/log.txt"));
}

TEST_F(Results, OfATopologyFromAPipeNeedAFolder) {
    const std::string command = BinaryDir() + "/bin/photrak run --no-commands --quiet - ";
    const ProgramResult homeless = RunProgram("cat first-bits.top | " + command);
    EXPECT_EQ(homeless.status, 1);
    EXPECT_NE(homeless.error.find("wants '--out DIR'"), std::string::npos) << homeless.error;
    const int piped =
        std::system(("cat first-bits.top | " + command + "--out piped >program.out 2>&1").c_str());
    EXPECT_EQ(WEXITSTATUS(piped), 0) << FileText("program.out");
    EXPECT_NE(FileText("program.out").find("piped/first-bits"), std::string::npos);
    Run("run first-bits.top");
    EXPECT_EQ(FileText("piped/first-bits_bin.sig"), FileText("first-bits_bin.sig"));

    ASSERT_EQ(::mkfifo("fifo.top", 0600), 0);
    for (const char* device : {"fifo.top", "/dev/zero", "."}) {
        const ProgramResult result = Photrak(std::string("run --no-commands ") + device);
        EXPECT_EQ(result.status, 1) << device;
        EXPECT_NE(result.error.find("is not a regular file"), std::string::npos) << result.error;
    }
}

TEST_F(Results, ThatCannotBeWrittenWholeAreErrorsAndLeaveWhatWasThere) {
    Run("run first-bits.top");
    const std::string before = FileText("first-bits_bin.sig");
    // A limit on the size of files stands for a full disk.
    const std::string limited =
        "sh -c 'trap \"\" XFSZ; ulimit -f 1; exec " + BinaryDir() + "/bin/photrak ";
    for (const std::string prefix : {"first-", "new-"}) {
        const ProgramResult result =
            RunProgram(limited + "run --no-commands --quiet --set length=12 --lenient --prefix " +
                       prefix + " nrz-link.top'");
        EXPECT_EQ(result.status, 1) << result.error;
        EXPECT_NE(result.error.find("photrak: error: could not write '" + prefix +
                                    "sent_mag.sig': File too large"),
                  std::string::npos)
            << result.error;
        EXPECT_FALSE(std::filesystem::exists(prefix + "sent_mag.sig"));
    }
    const std::pair<const char*, const char*> others[] = {
        {"scan --no-commands --quiet --inner received=-24:-18:0.05 ber-power.top", "ber-power.b"},
        {"report --quiet . -o page.html", "page.html"}};
    for (const auto& [command, lost] : others) {
        const ProgramResult result = RunProgram(limited + command + "'");
        EXPECT_EQ(result.status, 1) << command;
        EXPECT_NE(result.error.find(lost), std::string::npos) << result.error;
        EXPECT_NE(result.error.find("': File too large\n"), std::string::npos) << result.error;
    }
    EXPECT_FALSE(std::filesystem::exists("page.html"));
    EXPECT_EQ(FileText("first-bits_bin.sig"), before);
    for (const auto& entry : std::filesystem::directory_iterator(".")) {
        EXPECT_FALSE(entry.path().filename().string().starts_with(".photrak")) << entry.path();
    }
}

/// Warnings stand on standard error too, so that a lost log is no lost result.
TEST_F(Results, WithoutTheirLogComeWithAWarning) {
    std::filesystem::create_directory("log.txt");
    for (const auto& [strict, status] : {std::pair("", 0), std::pair("--strict ", 2)}) {
        const ProgramResult result =
            Photrak(Concat("run --no-commands ", strict, "first-bits.top"));
        EXPECT_EQ(result.status, status);
        EXPECT_EQ(result.out, "first-bits_bin.sig\nfirst-bits.pcs\n");
        EXPECT_EQ(result.error, "photrak: warning: could not write 'log.txt': Is a directory\n");
    }
}

/// Whatever writes says what and why, and leaves nothing.
TEST_F(Results, InAReadOnlyFolderAreErrors) {
    namespace fs = std::filesystem;
    Run("run first-bits.top");
    fs::create_directory("links");
    for (const char* name :
         {"first-bits.top", "first-bits.pcs", "first-bits_bin.sig", "ber-power.top"}) {
        fs::rename(name, fs::path("links") / name);
    }
    fs::permissions("links", fs::perms(0555));
    // Nothing is read-only for root; the program of a tree that only root can enter starts for no
    // one else.
    fs::permissions(".", fs::perms(0755));
    const std::string user = ::geteuid() == 0 ? "setpriv --reuid=65534 --clear-groups " : "";
    const auto inside = [&](const std::string& arguments) {
        return RunProgram(
            Concat("sh -c 'cd links && exec ", user, BinaryDir(), "/bin/photrak ", arguments, "'"));
    };
    if (inside("--version").status != 0) GTEST_SKIP() << "the build is root's alone";
    const struct {
        const char *command, *lost;
    } rows[] = {{"run --no-commands --quiet first-bits.top", "first-bits_bin.sig': "},
                {"run --no-commands --table t.csv first-bits.top", "t.csv': "},
                {"run --no-commands --report --plotting none first-bits.top", "first-bits.html': "},
                {"scan --no-commands --quiet ber-power.top", "ber-power.bdt': "},
                {"scan -j 2 --no-commands --quiet ber-power.top", "points/': "},
                {"measure --no-commands ber-power.top Fiber", "_sig.sum': "},
                {"report --quiet .", "report.html': "},
                {"draw first-bits.top -o link.svg", "link.svg': "},
                {"plot first-bits.pcs -o bits.svg", "bits.svg': "}};
    for (const auto& row : rows) {
        const ProgramResult result = inside(row.command);
        EXPECT_EQ(result.status, 1) << row.command;
        EXPECT_NE(result.error.find(Concat(row.lost, "Permission denied\n")), std::string::npos)
            << row.command << "\n"
            << result.error;
    }
    EXPECT_EQ(FilesIn("links"), 4u);
    fs::permissions("links", fs::perms(0755));
}

TEST_F(Results, AreAnnouncedInAPipeOnlyWhenAsked) {
    EXPECT_EQ(Photrak("run --no-commands first-bits.top").error, "");
    const std::string scan = "scan --no-commands --plotting none --progress=";
    const std::string lines = Photrak(scan + "lines ber-power.top").error;
    EXPECT_NE(
        lines.find("Simulating component 'Receiver' of type 'ReceiverModel' (point 7 of 7)\n"),
        std::string::npos)
        << lines;
    const std::string json = Photrak(scan + "json ber-power.top").error;
    EXPECT_NE(json.find("'ReceiverModel'\",\"point\":4,\"points\":7,\"elapsed\":"),
              std::string::npos)
        << json;
    EXPECT_NE(json.find(",\"remaining\":"), std::string::npos) << json;

    // 80 km in steps of 2 m take seconds.
    std::string link = FileText("nrz-link.top");
    link.replace(link.find("PARAM loss"), 0, "PARAM zStepSize DoubleType\nVALUE 2\nENDPARAM\n\n");
    WriteText("slow.top", link);
    const std::string slow = Photrak("run --no-commands --progress=lines slow.top").error;
    EXPECT_NE(slow.find(" %\n"), std::string::npos) << slow;
}

/// The lock goes with the process, also with one that was killed.
TEST_F(Results, OfTwoRunsInOneFolderAreRefusedButNotAfterAKill) {
    const std::string photrak = BinaryDir() + "/bin/photrak";
    WriteText("slow.sh", "#!/bin/sh\n" + photrak +
                             " scan --no-commands --quiet --plotting none --inner "
                             "received=-24:-18:1e-6 ber-power.top >slow.out 2>&1 &\n"
                             "echo $! >slow.pid\n"
                             "while ! test -s .photrak.lock && kill -0 $!; do sleep 0.01; done\n" +
                             photrak + " run --no-commands --quiet first-bits.top; echo $?\n" +
                             photrak +
                             " run --no-commands --quiet --out other first-bits.top; echo $?\n"
                             "kill -9 $(cat slow.pid); wait\n" +
                             photrak + " run --no-commands --quiet first-bits.top; echo $?\n");
    const ProgramResult result = RunProgram("sh slow.sh");
    const std::string owner = FileText("slow.pid");
    EXPECT_NE(result.error.find("process " + owner.substr(0, owner.size() - 1) + " is writing"),
              std::string::npos)
        << result.error;
    EXPECT_EQ(result.out,
              "1\nother/first-bits_bin.sig\nother/first-bits.pcs\n0\nfirst-bits_bin.sig\n"
              "first-bits.pcs\n0\n");
    EXPECT_FALSE(std::filesystem::exists(".photrak.lock"));
}

}  // namespace
}  // namespace photrak::test
