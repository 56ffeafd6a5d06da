// photrak measure on the examples, against the arithmetic of their links.
#include "base/text.h"
#include "base/units.h"
#include "link/example_run.h"
#include "results/signal_measures.h"

namespace photrak::test {
namespace {

struct Measure : ExampleRun {
    /// A column of the table that measuring these places leaves.
    std::vector<double> Measured(const std::string& topologyAndPlaces, const std::string& column) {
        Run("measure --plotting none --table m.csv " + topologyAndPlaces);
        std::istringstream text(FileText("m.csv"));
        std::vector<double> values;
        std::size_t wanted = std::string::npos;
        for (std::string line; std::getline(text, line);) {
            std::istringstream fields(line.substr(0, line.find('\r')));
            std::string field;
            for (std::size_t i = 0; std::getline(fields, field, ','); ++i) {
                if (wanted == std::string::npos && field == column)
                    wanted = i;
                else if (i == wanted)
                    values.push_back(field == "nan" ? NAN : ReadDouble(field));
            }
        }
        return values;
    }

    /// The example with parameters of its modulator.
    static void SetModulator(const std::string& parameters) {
        std::string text = FileText("nrz-link.top");
        const std::size_t at = text.find("ENDCOMPONENT", text.find("COMPONENT Modulator"));
        WriteText("modulator.top", text.insert(at, parameters));
    }
};

std::string Parameter(const char* name, const char* type, const char* value) {
    return Concat("PARAM ", name, " ", type, "\nVALUE ", value, "\nENDPARAM\n\n");
}

/// 40 km of 0.2 dB/km, whatever the shape of the pulses.
TEST_F(Measure, PowerFallsByTheLossOfTheFiber) {
    const auto power = Measured("--set length=40e3 nrz-link.top Laser Modulator Fiber", "average");
    ASSERT_EQ(power.size(), 3u);
    EXPECT_NEAR(PowerDecibels(power[2] / power[1]), -8.0, 1e-4);
    const auto wavelength = Measured("nrz-link.top Fiber", "wavelength");
    EXPECT_EQ(wavelength, std::vector<double>{1550e-9});
}

/// A Mach-Zehnder driven from null to full: its floor is the ratio, its loss is on both levels.
TEST_F(Measure, ExtinctionIsThatOfTheModulator) {
    SetModulator(Parameter("fittingType", "EnumType", "Coefficients") +
                 Parameter("coef1", "DoubleType", "1") + Parameter("coef2", "DoubleType", "0") +
                 Parameter("modulationType", "EnumType", "MachZehnder") +
                 Parameter("onOffRatio", "DoubleType", "17") +
                 Parameter("insertionLoss", "DoubleType", "3"));
    const auto laser = Measured("modulator.top Laser", "average");
    const auto ratio = Measured("modulator.top Modulator", "extinctionRatio");
    const auto high = Measured("modulator.top Modulator", "level1");
    const auto opening = Measured("modulator.top Modulator", "eyeOpening");
    ASSERT_EQ(laser.size() + ratio.size() + high.size() + opening.size(), 4u);
    EXPECT_NEAR(ratio[0], 17.0, 1e-6);
    EXPECT_NEAR(high[0], laser[0] * PowerRatio(-3.0), 1e-9 * laser[0]);
    EXPECT_NEAR(opening[0], high[0] * (1.0 - PowerRatio(-17.0)), 1e-9 * high[0]);
}

/// Five spans, each with the saturated gain and the emission of its amplifier.
TEST_F(Measure, NoiseOfFiveAmplifiersGivesTheOSNR) {
    const auto sent = Measured("wdm8.top Modulator1", "average");
    const auto osnr = Measured("wdm8.top Amplifier1 Amplifier5", "OSNR");
    const auto wavelength = Measured("wdm8.top Amplifier1 Amplifier5", "wavelength");
    ASSERT_EQ(osnr.size(), 16u);
    constexpr double planck = 6.62607015e-34, saturation = 1.0, channels = 8.0;
    const double gain = PowerRatio(16.0), photon = planck * lightSpeed / 1550e-9;
    double signal = sent.at(0), noise = 0.0;  // W, W/Hz in one polarization
    for (int span = 1; span <= 5; ++span) {
        signal *= PowerRatio(-16.0);
        noise *= PowerRatio(-16.0);
        const double g = gain / (1.0 + gain * channels * signal / saturation);
        signal *= g;
        noise = noise * g + (g - 1.0) * PowerRatio(5.0) * photon / 2.0;
        if (span != 1 && span != 5) continue;
        for (std::size_t i = 0; i < 8; ++i) {
            const std::size_t row = i + (span == 1 ? 0 : 8);
            const double band = FrequencyWidth(0.1e-9, wavelength[row]);
            EXPECT_NEAR(osnr[row], PowerDecibels(signal / (2.0 * noise * band)), 2e-3) << row;
        }
    }
}

TEST_F(Measure, WritesSummariesAndTellsInWordsAndAsADocument) {
    const std::string out = Run("measure --plotting none nrz-link.top Drive 1 Modulator:in2");
    for (const char* line : {"\nDrive: average ", " % ones\n", "\nModulator:in2: "}) {
        EXPECT_NE(("\n" + out).find(line), std::string::npos) << out;
    }
    EXPECT_TRUE(FileText("nrz-node_1_sig.sum").starts_with("Binary Signal Summary "));
    EXPECT_TRUE(FileText("nrz-Drive_sig.sum").starts_with("Electrical Signal Summary "));
    EXPECT_EQ(FileText("nrz-Modulator_p2_sig.sum"), FileText("nrz-Drive_sig.sum"));
    const std::string json = Run("measure --json --plotting none nrz-link.top Laser");
    EXPECT_TRUE(json.starts_with("{\n  \"schema\": \"photrak.measure/1\",\n")) << json;
    EXPECT_NE(json.find("{\"place\":\"Laser\",\"node\":3,\"kind\":\"optical\",\"unit\":\"W\","
                        "\"channel\":1,\"wavelength\":1.55"),
              std::string::npos)
        << json;
}

TEST_F(Measure, RefusesPlacesThatAreNone) {
    const struct {
        const char *places, *error;
        int status;
    } rows[] = {
        {"Modulater", "no component 'Modulater'; did you mean 'Modulator'?", 1},
        {"Laser 99", "no node 99", 1},
        {"0", "no node 0", 1},
        {"Laser:2", "component 'Laser' has 1 outputs, and no port 'Laser:2'", 1},
        {"Laser:", "no port 'Laser:'", 1},
        {"Laser:in2", "has 1 inputs", 1},
        {"Laser:in1", "nothing is wired to 'Laser:in1'", 1},
        {"", "wants a topology file and what to measure", 64},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.places);
        const ProgramResult result = Photrak(Concat("measure --quiet nrz-link.top ", row.places));
        EXPECT_EQ(result.status, row.status);
        EXPECT_NE(result.error.find(row.error), std::string::npos) << result.error;
        EXPECT_FALSE(std::filesystem::exists("nrz-sent.pcs"));
    }
}

/// Two levels with a slow edge, three ones for each zero: the phase on the flat parts is found.
TEST(EyeLevels, LieWhereTheGroupsAreFarthestApart) {
    const int pattern[] = {1, 1, 0, 1, 1, 1, 0, 1};
    std::vector<double> wave;
    for (int b = 0; b < 8; ++b) {
        const double before = 1.0 + 2.0 * pattern[(b + 7) % 8], value = 1.0 + 2.0 * pattern[b];
        wave.push_back(0.5 * (before + value));
        wave.push_back(0.1 * before + 0.9 * value);
        wave.push_back(value);
        wave.push_back(value);
    }
    const EyeLevels eye = FindEyeLevels(wave, 4);
    EXPECT_EQ(eye.phase, 2);
    EXPECT_DOUBLE_EQ(eye.opening, 2.0);
    EXPECT_DOUBLE_EQ(eye.level0, 1.0);
    EXPECT_DOUBLE_EQ(eye.level1, 3.0);
    EXPECT_EQ(FindEyeLevels(std::vector<double>(32, 0.7), 4).opening, 0.0);
    EXPECT_EQ(FindEyeLevels({}, 4).opening, 0.0);
}

}  // namespace
}  // namespace photrak::test
