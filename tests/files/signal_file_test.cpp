// Signal files: their lines by hand, round trips in every digit, and texts that are none.
#include "files/signal_file.h"

#include <algorithm>
#include <gtest/gtest.h>

#include "base/text.h"
#include "kernel/graph.h"
#include "support/holds.h"
#include "support/signals.h"
#include "support/temp_dir.h"

namespace photrak {
namespace {

/// What one call of the reader gave.
class Loaded {
  public:
    explicit Loaded(LineReader& stream) { status = ReadSignalGroup(&stream, &type, &sig, text); }
    explicit Loaded(const std::string& file) : Loaded(LineReader(file, "in.sgd")) {}
    ~Loaded() { FreeSignal(&sig, type); }
    Loaded(const Loaded&) = delete;
    Loaded& operator=(const Loaded&) = delete;

    const OpSig& Channel() const { return *static_cast<const OpSignal*>(sig)->channels; }
    const ElecSig& Wave() const { return *static_cast<const ElecSig*>(sig); }
    const BinSig& Bits() const { return *static_cast<const BinSig*>(sig); }

    Status status = Status::Success;
    std::int32_t type = UnknownSigType;
    void* sig = nullptr;
    std::string text;

  private:
    explicit Loaded(LineReader&& stream) : Loaded(stream) {}
};

std::string Written(std::int32_t sigType, const void* sig) {
    SimOptions options;
    options.set = 3;
    options.innerIndex = 2;
    options.outerIndex = 4;
    options.runIndex = 5;
    options.loopIndex = 6;
    std::string text;
    SigFileWriter(text, sigType, sig, options);
    return text;
}

constexpr std::string_view header =
    "BEGINSIG\nSET 3\nINNERSWEEP 2\nOUTERSWEEP 4\nSTATRUN 5\nLOOP 6\n";

/// A multiplex with numbers of every size and sign.
Owned<OpSignal> AwkwardMultiplex() {
    Owned<OpSignal> pair = Multiplex(5, 3.125e-12);
    Complex* ex = pair->channels->Ex_samples;
    ex[1] = {1.0 / 3.0, -2.0 / 3.0};
    ex[2] = {-0.0, 1e-300};
    ex[3] = {1e15 + 0.3, -5e-324};
    ex[4] = {-1.2345678901234567e-5, 0.1};
    pair->channels->tStep = 1.0 / 3.2e11;
    return pair;
}

/// One file of each kind.
std::vector<std::pair<std::int32_t, std::string>> AwkwardTexts() {
    Owned<ElecSig> wave = RampWaveform(4, 1.0 / 3.0);
    wave->elecSamples[2].re = -1.0 / 7.0;
    return {{OpSigType, Written(OpSigType, AwkwardMultiplex().get())},
            {ElecSigType, Written(ElecSigType, wave.get())},
            {BinSigType, Written(BinSigType, AlternatingBits(5).get())}};
}

// Written out by hand: trailing blanks behind some keywords belong to the format.
TEST(SignalFileWriter, WritesTheLinesOfEachKind) {
    Owned<OpSignal> pair;
    ASSERT_EQ(Make(pair, CreateOpSignalWithSig, 1), 0);
    OpSig& channel = *pair->channels;
    channel.wavelength = 1.55e-6;
    channel.bitRate = 1e10;
    channel.patternLength = 8;
    channel.tStep = 3.125e-12;
    channel.RIN = 1e-15;
    channel.Ex_samples[1] = {1.25e-5, -3.5e-7};
    ASSERT_EQ(AddEySamples(&channel), 0);
    channel.Ey_samples[1] = {-2.0, -0.0};
    pair->noise = RampSpectrum(2).release();
    EXPECT_EQ(Written(OpSigType, pair.get()),
              std::string(header) +
                  "OpSigASE \nfstart 193000000000000\nfstep 1000000000\nnoPoints 2\npowerSamples\n"
                  "1\n2\nENDASE \n"
                  "OpSigType \nwavelength 1.55e-06\ndomain TIMEDOMAIN\nbitRate 10000000000\n"
                  "noPoints 1\npatternLength 8\ntStep 3.125e-12\nstartTime 0\nRIN 1e-15\n"
                  "Ex_samples\n1.25e-05-3.5e-07j\nEy_samples\n-2+0j\nENDOpSig\nENDSIG\n");

    const Owned<ElecSig> wave = RampWaveform(1, 1e-12);
    EXPECT_EQ(Written(ElecSigType, wave.get()),
              std::string(header) +
                  "ElecSigType \nUnitType CURRENT\ndomain FREQDOMAIN\nbitRate 10000000000\n"
                  "patternLength 8\ntStep 1e-12\nstartTime 4e-12\nnoPoints 1\nelecSamples \n1\n"
                  "sigmaSamples\n1001\nENDSIG\n");

    const Owned<BinSig> bits = AlternatingBits(2);
    EXPECT_EQ(Written(BinSigType, bits.get()),
              std::string(header) +
                  "BinSigType \nbitRate 10000000000\nstartTime 5e-12\nnoPoints 2\nbitSequence \n"
                  "1\n0\nENDSIG\n");
}

TEST(SignalFile, ComesBackEqualInEveryStoredDigit) {
    for (const auto& [type, text] : AwkwardTexts()) {
        const Loaded loaded(text);
        ASSERT_EQ(loaded.status, Status::Success) << loaded.text;
        ASSERT_EQ(loaded.type, type);
        EXPECT_EQ(Written(loaded.type, loaded.sig), text);
    }
}

TEST(SignalFile, LosesImaginaryPartsUnknownUnitsAndBareSpectra) {
    Owned<ElecSig> wave = RampWaveform(2, 1e-12);
    wave->UnitType = 7;
    const Loaded loaded(Written(ElecSigType, wave.get()));
    EXPECT_EQ(loaded.Wave().UnitType, VoltageUnit) << "as a record is made";
    EXPECT_EQ(Value(loaded.Wave().elecSamples[2]), std::complex<double>(2.0, 0.0));

    SigRecord record;
    record.NAME = "after fiber";
    record.RUN = 9;
    record.BIN = 1;
    const Owned<OpSignal> pair = Multiplex(2, 1e-12);
    record.sig = pair.get();
    std::string bare;
    SigRecordWriter(bare, record, 12);
    EXPECT_TRUE(
        bare.starts_with("BEGINSIG\nNAME after fiber\nNODE 12\nSET 0\nINNERSWEEP 0\n"
                         "OUTERSWEEP 0\nRUN 9\nLOOP 0\nBIN 1\nOpSigASE \n"));
}

TEST(SignalFileReader, TakesAnyFormOfAComplexNumber) {
    const Loaded loaded(
        "# by hand\nOpSigType:\n\tnoPoints: 6\nEx_samples\n-1e-3-4E+2j\n1+-0j\n1+-2\n3\n"
        " 1.5 +2.5i\n-.5+.25j\nENDOpSig\nENDSIG\n");
    ASSERT_EQ(loaded.status, Status::Success) << loaded.text;
    const std::complex<double> expected[] = {{-1e-3, -400}, {1, 0},     {1, -2},
                                             {3, 0},        {1.5, 2.5}, {-0.5, 0.25}};
    for (int i = 0; i < 6; ++i) EXPECT_EQ(Value(loaded.Channel().Ex_samples[i + 1]), expected[i]);
}

TEST(SignalFileReader, ReadsGroupAfterGroupAndThenNothing) {
    const auto texts = AwkwardTexts();
    const std::string text = texts[2].second + texts[1].second;
    LineReader stream(text, "in.sgd");
    EXPECT_EQ(Loaded(stream).type, BinSigType);
    EXPECT_EQ(Loaded(stream).type, ElecSigType);
    const Loaded none(stream);
    EXPECT_EQ(none.sig, nullptr);
    EXPECT_EQ(none.type, UnknownSigType);
}

TEST(SignalFileReader, TellsOfAFileThatIsCutAtAnyByte) {
    for (const auto& [type, whole] : AwkwardTexts()) {
        for (std::size_t size = 1; size < whole.size() - 1; ++size) {
            const Loaded loaded(whole.substr(0, size));
            ASSERT_EQ(loaded.status, Status::Error) << "at byte " << size;
            ASSERT_TRUE(Holds(loaded.text, "'in.sgd', line "));
        }
    }
}

TEST(SignalFileReader, RefusesCountsThatTheFileCannotHold) {
    for (const char* kind : {"OpSigASE", "OpSigType", "ElecSigType", "BinSigType"}) {
        for (const char* count : {"-1", "2147483647", "1000", "20\nnoPoints 3\nnoPoints 20"}) {
            const Loaded loaded(Concat(kind, "\nnoPoints ", count, "\nENDASE\nENDOpSig\nENDSIG\n"));
            EXPECT_EQ(loaded.status, Status::Error) << kind << count;
            EXPECT_TRUE(Holds(loaded.text, "cannot hold"));
        }
    }
    EXPECT_EQ(Loaded("BinSigType\nnoPoints 1e9\n1\nENDSIG\n").status, Status::Success)
        << "an integer ends at its e";
}

TEST(SignalFileReader, RefusesWhatIsNoNumberInAnyField) {
    const std::pair<std::string_view, std::vector<std::string_view>> bodies[] = {
        {"OpSigType",
         {"wavelength", "bitRate", "noPoints", "patternLength", "tStep", "startTime", "RIN"}},
        {"OpSigASE", {"noPoints", "fstart", "fstep"}},
        {"ElecSigType", {"bitRate", "patternLength", "tStep", "startTime", "noPoints"}},
        {"BinSigType", {"bitRate", "startTime", "noPoints"}}};
    for (const auto& [kind, fields] : bodies) {
        for (const std::string_view field : fields) {
            for (const std::string_view value : {"inf", "-nan", "x", "1e999"}) {
                const bool isCount = field == "noPoints" || field == "patternLength";
                if (isCount && value == "1e999") continue;  // an integer ends at its e
                const Loaded loaded(
                    Concat(kind, "\n", field, " ", value, "\nENDASE\nENDOpSig\nENDSIG\n"));
                EXPECT_EQ(loaded.status, Status::Error) << kind << field << value;
                EXPECT_TRUE(Holds(loaded.text, "line 2: the value is ")) << loaded.text;
            }
        }
    }
}

TEST(SignalFileReader, SurvivesBodiesThatContradictThemselves) {
    const std::pair<std::string, std::string_view> rows[] = {
        {"OpSigType\nnoPoints 2\nEx_samples\n1\n2\nnoPoints 1\nENDOpSig\nENDSIG\n", ""},
        {"OpSigASE\nnoPoints 1\npowerSamples\n1\npowerSamples\n2\nENDASE\nENDSIG\n", ""},
        {"OpSigType\nnoPoints 2\nEx_samples\n1+1j\nENDOpSig\nENDSIG\n",
         "line 5: value 2 of 2 is no number"},
        {"ElecSigType\nnoPoints 1\nelecSamples\nnan\nENDSIG\n", "is no number"},
        {"OpSigType\ntStep\nENDOpSig\nENDSIG\n", ""},
        {"OpSigType\nENDOpSig\nBinSigType\nENDSIG\n", "a second kind of signal"},
    };
    for (const auto& [text, complaint] : rows) {
        const Loaded loaded(text);
        EXPECT_EQ(loaded.status, complaint.empty() ? Status::Success : Status::Error) << text;
        EXPECT_TRUE(Holds(loaded.text, complaint)) << text;
    }
}

TEST(SaveAllSignals, WritesTheRecordsOfEveryNode) {
    const TempDir directory;
    std::unique_ptr<Workspace> workspace = CreateWorkspace();
    std::string errorText;
    for (const std::int32_t number : {7, 3}) {
        auto* record = new SigRecord;
        record->sigType = BinSigType;
        record->sig = AlternatingBits(number).release();
        FindOrCreateNode(number, *workspace).signals = record;
    }
    ASSERT_EQ(SaveAllSignals(workspace.get(), "all.sgd", errorText), Status::Success);
    const std::string text = directory.Read("all.sgd");
    LineReader stream(text, "all.sgd");
    EXPECT_EQ(Loaded(stream).Bits().noPoints, 3);
    EXPECT_EQ(Loaded(stream).Bits().noPoints, 7);
    EXPECT_EQ(SaveAllSignals(workspace.get(), "no/such/all.sgd", errorText), Status::Error);
    EXPECT_EQ(errorText, "ERROR: Unable to save signals: could not create output file.\n");
}

TEST(SignalFile, ALargeTextThatIsUsedUpGivesTheSameSamples) {
    constexpr std::int32_t n = 1 << 19;
    const Owned<OpSignal> pair = Multiplex(n, 3.125e-12);
    for (std::int32_t i = 1; i <= n; ++i) pair->channels->Ex_samples[i] = {1.0 / i, -0.5 * i};
    std::string text = Written(OpSigType, pair.get());
    ASSERT_GT(text.size(), std::size_t{12} << 20);
    LineReader stream(text, "in.sgd", SpentText(text));
    const Loaded loaded(stream);
    ASSERT_EQ(loaded.status, Status::Success) << loaded.text;
    EXPECT_EQ(Written(OpSigType, loaded.sig), Written(OpSigType, pair.get()));
    const auto middle = text.begin() + static_cast<std::ptrdiff_t>(text.size() / 2);
    EXPECT_EQ(std::count(text.begin() + 4096, middle, '\0'), middle - text.begin() - 4096)
        << "what was read went back to the system";
}

}  // namespace
}  // namespace photrak
