// Scans in parts through the real program: merging gives the bytes of one process, whatever the
// number of parts and however often they were killed; what is missing or of another scan is told.
#include <csignal>
#include <map>
#include <regex>

#include "base/text.h"
#include "link/example_run.h"
#include "results/point_file.h"

namespace photrak::test {
namespace {

struct Shards : ExampleRun {
    using Files = std::map<std::string, std::string>;

    /// A folder's files and the listing of the scan that wrote them. The times that the fiber logs
    /// and the folder's name are left out.
    static Files FilesOf(const std::string& folder, const std::string& listing) {
        static const std::regex time("calculation time = [0-9.e+-]+ sec");
        Files files;
        for (const auto& entry : std::filesystem::directory_iterator(folder)) {
            if (!entry.is_regular_file()) continue;
            const std::string name = entry.path().filename().string();
            files[name] = std::regex_replace(FileText(entry.path().string()), time, "");
        }
        files["listing"] = std::regex_replace(listing, std::regex(folder + "/"), "");
        return files;
    }
    /// Results of a scan by one process, or by several.
    static Files Scan(const std::string& words, const std::string& folder) {
        std::filesystem::remove_all(folder);
        const std::string listing =
            Run(Concat("scan --out ", folder, " --table ", folder, ".csv ", words));
        Files files = FilesOf(folder, listing);
        files["table"] = FileText(folder + ".csv");
        files.erase(folder + ".csv");
        return files;
    }
    static void ExpectEqual(const Files& one, const Files& other, const std::string& what) {
        for (const auto& [name, text] : one) {
            ASSERT_TRUE(other.contains(name)) << what << ": " << name;
            EXPECT_TRUE(other.at(name) == text) << what << ": " << name;
        }
        EXPECT_EQ(one.size(), other.size()) << what;
    }
};

/// Two sweeps, statistics with draws, plots with tags, loops whose number is swept, SuperBlocks.
TEST_F(Shards, MergeToTheBytesOfOneProcess) {
    std::string drawn = FileText("statistical.top");
    const std::string loss = "PARAM attenuation DoubleType\nVALUE ";
    const std::size_t value = drawn.find(loss) + loss.size();
    WriteText("drawn.top", drawn.replace(value, drawn.find('\n', value) - value, "-far"));
    const std::string scans[] = {
        "ber-power-length.top",
        "--runs 9 --run-tag _r statistical.top",
        "--runs 3 --run-tag _r --inner far=0.5:2:0.5 --inner-tag _s drawn.top",
        "--runs 2 --run-tag _r ber-power-length.top",
        "sweep-pattern.top",
        "--inner spans=1:4:1 --inner-tag _n recirculating-loop.top",
        "superblock-line.top"};
    for (const std::string& scan : scans) {
        const Files serial = Scan(scan, "folder");
        ASSERT_GT(serial.size(), 3u);
        for (const int parts : {2, 3, 7}) {
            ExpectEqual(serial, Scan(Concat("-j ", parts, " ", scan), "folder"),
                        Concat(parts, " parts of ", scan));
        }
    }
}

/// The words of a launcher give the part; the last part alone lacks the others.
TEST_F(Shards, TakeTheirPartFromALauncherAndTellWhatIsMissing) {
    const std::string scan = "/bin/photrak scan --no-commands --quiet ";
    const auto part = [&](const std::string& variables) {
        return RunProgram(variables + " " + BinaryDir() + scan +
                          "--shard auto --out folder ber-power.top");
    };
    const std::string merge = BinaryDir() + scan + "--merge folder ber-power.top";
    EXPECT_EQ(part("OMPI_COMM_WORLD_RANK=1 OMPI_COMM_WORLD_SIZE=2").status, 0);
    ProgramResult merged = RunProgram(merge);
    EXPECT_EQ(merged.status, 1);
    EXPECT_NE(merged.error.find("3 of 7 points are missing, the first is point 1"),
              std::string::npos)
        << merged.error;
    EXPECT_FALSE(std::filesystem::exists("folder/ber-power.ber"));
    EXPECT_EQ(part("SLURM_ARRAY_TASK_ID=4 SLURM_ARRAY_TASK_MIN=4 SLURM_ARRAY_TASK_MAX=5").status,
              0);
    merged = RunProgram(merge);
    EXPECT_EQ(merged.status, 0) << merged.error;
    Run("scan ber-power.top");
    EXPECT_EQ(FileText("folder/ber-power.ber"), FileText("ber-power.ber"));
    EXPECT_EQ(FileText("folder/ber-power.bdt"), FileText("ber-power.bdt"));

    std::string other = FileText("ber-power.top");
    WriteText("ber-power.top", other.insert(other.find("NOTE ") + 5, "Changed. "));
    merged = RunProgram(merge);
    EXPECT_EQ(merged.status, 1);
    EXPECT_NE(merged.error.find("7 are of another topology"), std::string::npos) << merged.error;
    EXPECT_EQ(part("PMI_RANK=2 PMI_SIZE=2").status, 64);
    EXPECT_EQ(RunProgram(BinaryDir() + scan + "--shard 3/2 --out folder ber-power.top").status, 64);
}

/// Killed with its processes again and again, the scan goes on from the points that are there.
TEST_F(Shards, SurviveKillsWithTheSameBytes) {
    const std::string words = "--runs 150 --run-tag _r ber-power.top";
    const Files serial = Scan(words, "folder");
    std::filesystem::remove_all("folder");
    for (int kill = 0; kill < 8; ++kill) {
        // The signal goes to the whole group, the parts among it.
        RunProgram(Concat("timeout -s KILL 0.0", kill + 2, " ", BinaryDir(),
                          "/bin/photrak scan --no-commands --quiet -j 2 --resume --out folder "
                          "--table folder.csv ",
                          words));
    }
    const std::string listing = Run("scan -j 2 --resume --out folder --table folder.csv " + words);
    Files resumed = FilesOf("folder", listing);
    resumed["table"] = FileText("folder.csv");
    ExpectEqual(serial, resumed, "resumed");
}

/// Noise is drawn anew for each point, so that it does not depend on the number of parts; the scan
/// says that one process gives other noise.
TEST_F(Shards, GiveEachPointNoiseOfItsOwn) {
    std::string link = FileText("ber-power.top");
    const std::size_t drive = link.find("ENDCOMPONENT", link.find(" ElectricalSignalGenerator\n"));
    WriteText("jitter.top",
              link.insert(drive, "PARAM timeJitter DoubleType\nVALUE 2e-12\nENDPARAM\n\n"));
    const Files two = Scan("-j 2 --runs 3 --run-tag _r jitter.top", "folder");
    ExpectEqual(two, Scan("-j 5 --runs 3 --run-tag _r jitter.top", "folder"), "5 parts");
    EXPECT_NE(two.at("ber-power.ber"), Scan("ber-power.top", "folder").at("ber-power.ber"));
    const ProgramResult told = Photrak("scan --no-commands --quiet -j 2 --out folder jitter.top");
    EXPECT_NE(told.error.find("blocks drew noise while they ran"), std::string::npos) << told.error;
}

TEST_F(Shards, TellTheirPointsBeforeTheyRun) {
    const ProgramResult told = Photrak("scan --dry-run --quiet ber-power-length.top");
    EXPECT_EQ(told.status, 0) << told.error;
    EXPECT_TRUE(told.out.starts_with("points:  15\ntime:    about ")) << told.out;
    EXPECT_FALSE(std::filesystem::exists("ber-power-length.ber"));
}

}  // namespace
}  // namespace photrak::test
