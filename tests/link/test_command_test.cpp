// photrak test: the response of a filter against its closed form, read back from the files, and
// what is told when there is nothing to draw.
#include <cmath>

#include "link/run_program.h"

namespace photrak::test {
namespace {

constexpr double lightSpeed = 299792458.0;

std::string Block(const std::string& name, const std::string& type, const std::string& parameters) {
    return "COMPONENT " + name + " " + type +
           "\nNOTE\nICON x 0 0\nNUMINPUTS 1\nNUMOUTPUTS 1\nINPUTFROM 1\nOUTPUTTO 2\n" + parameters +
           "ENDCOMPONENT\n";
}

std::string Parameter(const std::string& name, const std::string& type, const std::string& value) {
    return "PARAM " + name + " " + type + "\nVALUE " + value + "\nENDPARAM\n";
}

/// A filter of that name with symbols for its center and half its width, and a laser.
std::string Topology(const std::string& name) {
    return "BEGINVARIABLES\ncenter DoubleType 1.5e-6\nhalf DoubleType 1e-9\n"
           "file DoubleType 0\nENDVARIABLES\n" +
           Block(name, "OpticalFilter",
                 Parameter("type", "EnumType", "Gaussian") +
                     Parameter("wavelength", "DoubleType", "center") +
                     Parameter("BW", "DoubleType", "2 * half") +
                     Parameter("loss", "DoubleType", "10")) +
           Block("Laser", "CWLaserModel", "") +
           Block("Missing", "OpticalFilter",
                 Parameter("type", "EnumType", "Custom1") +
                     Parameter("filename", "StringType", "none%s.txt"));
}

class BlockTest : public ::testing::Test {
  protected:
    static ProgramResult Test(const std::string& arguments) {
        return Photrak("test --no-commands " + arguments);
    }
    TempDir directory_;
};

/// A width of a fifteenth of the center, so that six digits of a frequency still tell the bins
/// apart. Bins stand a hundredth of the width apart: the half-power points are 50 from the center.
TEST_F(BlockTest, AGaussianFilterIsAtHalfPowerAtTheEdgesOfItsBand) {
    WriteText("f.top", Topology("F%s%n_x"));
    const ProgramResult result = Test("--set center=1.55e-6 --set half=5e-8 F%s%n_x f.top");
    ASSERT_EQ(result.status, 0) << result.error;
    EXPECT_EQ(result.out,
              "test_F%s%n_x_freqresp.lic\ntest_F%s%n_x_freqresp.pcl\n"
              "test_F%s%n_x_lambdaresp.lic\ntest_F%s%n_x_lambdaresp.pcl\n");
    EXPECT_EQ(result.error, "");

    const auto frequency = Table("test_F%s%n_x_freqresp.lic"),
               wavelength = Table("test_F%s%n_x_lambdaresp.lic");
    ASSERT_EQ(frequency.size(), 1000u);
    ASSERT_EQ(wavelength.size(), 1000u);
    const double nu0 = lightSpeed / 1.55e-6, width = lightSpeed / 1.5e-6 - lightSpeed / 1.6e-6;
    const std::pair<std::size_t, double> points[] = {{499, nu0}, {449, nu0 - width / 2}};
    for (const auto& [row, nu] : points) {
        EXPECT_NEAR(frequency[row].at(0), nu, 0.51e9);
        EXPECT_NEAR(frequency[row].at(1), nu == nu0 ? -10 : -10 - 10 * std::log10(2), 0.51e-4);
        EXPECT_NEAR(wavelength[row].at(0), lightSpeed / nu, 0.51e-11);
        EXPECT_EQ(wavelength[row].at(1), frequency[row].at(1));
    }
    EXPECT_TRUE(FileText("test_F%s%n_x_lambdaresp.pcl")
                    .starts_with("/xl\"Lambda (m)\"\n/yl\"Transmitted Power (dB)\"\n"
                                 "/tt\"Optical Filter Lambda Response\"\n"));
    const std::string script = FileText("test_F%s%n_x_freqresp.pcl");
    EXPECT_NE(script.find("\ntest_F%s%n_x_freqresp.lic\n"), std::string::npos) << script;
}

TEST_F(BlockTest, WhatCannotBeDrawnIsToldAndLeavesNoFile) {
    const struct {
        const char *filter, *arguments, *text;
    } rows[] = {
        {"F", "Nobody%n f.top", "f.top: no component 'Nobody%n'"},
        {"F", "Laser f.top", "'CWLaserModel': No parameter test available for this model."},
        {"F", "Missing f.top", "ERROR: can't open custom filter file."},
        {"F", "--set half=2e-6 F f.top", "does not fit the wavelength"},
        {"a/b", "a/b f.top", "cannot write 'test_a/b_freqresp.lic'"},
        {"a/b", "a/b f.top", "Error plotting optical filter response"},
        {"x/../../up", "x/../../up f.top", "does not stay inside the directory"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.arguments);
        std::filesystem::create_directories("in/test_x");
        std::filesystem::current_path("in");
        WriteText("f.top", Topology(row.filter));
        const ProgramResult result = Test(row.arguments);
        EXPECT_EQ(result.status, 1);
        EXPECT_EQ(result.out, "");
        EXPECT_NE(result.error.find(row.text), std::string::npos) << result.error;
        std::filesystem::current_path("..");
        for (const std::string& file : directory_.Files()) {
            EXPECT_EQ(file.find("resp"), std::string::npos) << file;
        }
    }
}

TEST_F(BlockTest, ASlashLeadsIntoADirectoryThatExists) {
    WriteText("f.top", Topology("a/b"));
    std::filesystem::create_directory("test_a");
    EXPECT_EQ(Test("a/b f.top").status, 0);
    EXPECT_TRUE(directory_.Has("test_a/b_freqresp.lic"));
}

TEST_F(BlockTest, FaultsOfParametersAreToldAndTheTestGoesOn) {
    WriteText("f.top", Topology("F"));
    const struct {
        const char *arguments, *text;
        int status;
    } rows[] = {
        {"--set half=-1 F f.top", "'BW' less than minimum value", 0},
        {"--lenient --strict --set half=nowhere F f.top", "'BW' value cannot be evaluated", 2}};
    for (const auto& row : rows) {
        const ProgramResult result = Test(row.arguments);
        EXPECT_EQ(result.status, row.status);
        EXPECT_NE(result.error.find(row.text), std::string::npos) << result.error;
        EXPECT_TRUE(std::filesystem::remove("test_F_freqresp.lic"));
    }
}

}  // namespace
}  // namespace photrak::test
