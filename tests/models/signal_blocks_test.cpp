#include "models/signal_blocks.h"

#include <gtest/gtest.h>

#include "support/model_parameters.h"
#include "support/signals.h"
#include "support/temp_dir.h"

namespace photrak {
namespace {

class SignalBlocks : public testing::Test {
  protected:
    Status Run(Status (*model)(const ModelCall&), std::string_view owner, std::string_view fileName,
               Nodelist* inputs, Nodelist* outputs) {
        ModelBlock block(owner);
        block.Word("FileName", fileName);
        Workspace workspace;
        SimOptions options;
        errorText.clear();
        return model({{owner, errorText}, workspace, block.component, options, inputs, outputs});
    }
    Status Save(std::string_view fileName, Nodelist* inputs) {
        return Run(SaveSigBlock, "probe", fileName, inputs, nullptr);
    }
    Status Load(std::string_view fileName, Nodelist* outputs) {
        return Run(LoadSigBlock, "source", fileName, nullptr, outputs);
    }
    /// An optical and an electrical input around one without a signal.
    static Owned<Nodelist> Inputs() {
        Owned<Nodelist> list;
        PushCell(list, RampWaveform(4, 1e-12), ElecSigType);
        PushCell(list, Owned<BinSig>(), UnknownSigType);
        PushCell(list, Multiplex(4, 1e-12), OpSigType);
        return list;
    }

    TempDir directory;
    std::string errorText;
};

TEST_F(SignalBlocks, FeedBackWhatPassedOutputByOutput) {
    const Owned<Nodelist> inputs = Inputs();
    ASSERT_EQ(Save("kept", inputs.get()), Status::Success) << errorText;

    Owned<Nodelist> outputs;
    for (int i = 0; i < 3; ++i) PushCell(outputs, Owned<BinSig>(), UnknownSigType);
    ASSERT_EQ(Load("kept.sgd", outputs.get()), Status::Success) << errorText;
    const Nodelist& optical = *outputs;
    EXPECT_EQ(optical.sigType, OpSigType);
    EXPECT_EQ(optical.next->sigType, ElecSigType);
    EXPECT_EQ(optical.next->next->sig, nullptr) << "no group is left";

    ASSERT_EQ(Save("again", outputs.get()), Status::Success);
    EXPECT_EQ(directory.Read("again.sgd"), directory.Read("kept.sgd"));
}

TEST_F(SignalBlocks, SayWhatIsMissingOrBroken) {
    const Owned<Nodelist> inputs = Inputs();
    Owned<Nodelist> outputs;
    PushCell(outputs, Owned<BinSig>(), UnknownSigType);
    directory.Write("bad.sgd", "BinSigType\nnoPoints 2147483647\nENDSIG\n");
    EXPECT_EQ(Save("no/such/x", inputs.get()), Status::Error);
    EXPECT_EQ(errorText,
              "ERROR: Unable to save signals: could not create output file.\n"
              "  component 'probe', file 'no/such/x.sgd'\n");
    EXPECT_EQ(Load("none%s.sgd", outputs.get()), Status::Error);
    EXPECT_EQ(errorText,
              "ERROR: Unable to load signals: could not open file.\n"
              "  component 'source', file 'none%s.sgd': No such file or directory\n");
    EXPECT_EQ(Load("bad.sgd", outputs.get()), Status::Error);
    EXPECT_EQ(errorText,
              "ERROR: signal file 'bad.sgd', line 2: noPoints is 2147483647, which the file cannot "
              "hold\n  component 'source', file 'bad.sgd'\n");
}

}  // namespace
}  // namespace photrak
