// User models: real libraries loaded from a models directory and called through the support table.
#include "files/user_models.h"

#include <gtest/gtest.h>

#include "kernel/graph.h"
#include "kernel/parameters.h"
#include "support/temp_dir.h"

namespace photrak {
namespace {

class UserLibraries : public testing::Test {
  protected:
    void SetUp() override {
        for (const char* name : {"gain_model", "old_model", "no_entries", "throwing_model"}) {
            const std::string file = std::string(name) + ".so";
            ASSERT_TRUE(
                CopyWholeFile(PHOTRAK_BINARY_DIR "/user_library/" + file, dir_.Path() + file));
        }
        catalogue_.modelDirectory = dir_.Path();
    }
    void Load(std::string_view userList) {
        dir_.Write("user.lis", userList);
        table_.LoadUserModels(catalogue_, messages_);
    }
    /// Runs the model `type` over one port.
    Status Run(const std::string& type, Nodelist& input, Nodelist& output) {
        component_.type = type;
        errorText_ = "before: ";
        return table_.Run({workspace_, component_, options_, &input, &output, errorText_});
    }
    void SetGain(double gain) {
        Parameter* parameter = CreateParameter("gain", DoubleType);
        parameter->valactual = Allocate(sizeof gain);
        *static_cast<double*>(parameter->valactual) = gain;
        InsertParameterSorted(&component_.parameters, parameter);
    }

    TempDir dir_;
    Catalogue catalogue_;
    UserModelTable table_;
    std::string messages_, errorText_;
    Workspace workspace_;
    SimOptions options_;
    Component component_;
};

TEST_F(UserLibraries, AModelInCRunsThroughTheSupportTable) {
    Load("Gain gain.def gain.pic gain_model.so RunGain TestGain\n");
    EXPECT_EQ(messages_, "");
    ASSERT_TRUE(table_.Knows("Gain"));
    EXPECT_EQ(table_.Entries()[0].bitmap, "gainu.bmp");
    SetGain(2.0);

    Owned<ElecSig> wave;
    ASSERT_EQ(Make(wave, CreateElecSig, 2), 0);
    wave->elecSamples[1].re = 1.5;
    wave->sigmaSamples[2].re = 0.25;
    Nodelist input{nullptr, ElecSigType, wave.get()}, output{nullptr, UnknownSigType, nullptr};
    EXPECT_EQ(Run("Gain", input, output), Status::Success) << errorText_;
    EXPECT_EQ(errorText_, "before: ") << "an empty message adds nothing";
    ASSERT_EQ(output.sigType, ElecSigType);
    Owned<ElecSig> amplified(static_cast<ElecSig*>(output.sig));
    EXPECT_EQ(amplified->elecSamples[1].re, 3.0);
    EXPECT_EQ(amplified->sigmaSamples[2].re, 0.5);
    EXPECT_EQ(wave->elecSamples[1].re, 1.5);

    Owned<BinSig> bits;
    ASSERT_EQ(Make(bits, CreateBinSig, 2), 0);
    bits->bitSequence[1] = 1;
    bits->bitSequence[2] = 0;
    input = {nullptr, BinSigType, bits.get()};
    EXPECT_EQ(Run("Gain", input, output), Status::Success);
    ASSERT_EQ(output.sigType, BinSigType);
    Owned<BinSig> inverted(static_cast<BinSig*>(output.sig));
    EXPECT_EQ(inverted->bitSequence[1], 0);
    EXPECT_EQ(inverted->bitSequence[2], 1);
}

TEST_F(UserLibraries, StatusAndMessageComeBack) {
    Load(
        "Gain gain.def gain gain_model.so RunGain TestGain\n"
        "Odd gain.def gain gain_model.so RunOddStatus\n");
    Nodelist input{nullptr, OpSigType, &workspace_}, output{nullptr, UnknownSigType, nullptr};
    EXPECT_EQ(Run("Gain", input, output), Status::Error);
    EXPECT_EQ(errorText_,
              "before: ERROR: the gain model takes electrical and binary signals, 100% of them\n");
    input.sig = nullptr;
    EXPECT_EQ(Run("Gain", input, output), Status::Warning);
    EXPECT_EQ(errorText_, "before: WARNING: nothing came in\n");
    EXPECT_EQ(Run("Odd", input, output), Status::Error) << "a status that is none is an error";
    EXPECT_EQ(errorText_, "before: ");

    std::string message;
    SetGain(1.0);
    EXPECT_EQ(table_.Test("Gain", component_.parameters, message), Status::Success);
    EXPECT_EQ(message, "");
    SetGain(0.0);
    EXPECT_EQ(table_.Test("Gain", component_.parameters, message), Status::Error);
    EXPECT_EQ(message, "gain must not be 0\n");
}

TEST_F(UserLibraries, WhatALibraryThrowsEndsAtTheCall) {
    Load("Throw t.def t throwing_model.so RunThrow TestThrow\n");
    Nodelist input{nullptr, BinSigType, nullptr}, output = input;
    EXPECT_EQ(Run("Throw", input, output), Status::Error);
    EXPECT_NE(errorText_.find("out of ideas"), std::string::npos) << errorText_;
    std::string message;
    EXPECT_EQ(table_.Test("Throw", nullptr, message), Status::Error);
    EXPECT_NE(message, "");
}

TEST_F(UserLibraries, AFailedTransformIsAnErrorThoughTheLibraryTakesNoNotice) {
    Load(
        "Bad t.def t gain_model.so RunBadTransform TestGain\n"
        "Gain t.def t gain_model.so RunGain TestGain\n");
    Nodelist input{nullptr, EtcSigType, nullptr}, output = input;
    EXPECT_EQ(Run("Bad", input, output), Status::Error);
    EXPECT_NE(errorText_.find("ERROR: in the user model: "), std::string::npos) << errorText_;
    EXPECT_EQ(Run("Gain", input, output), Status::Warning) << "the failure is told once";
}

TEST_F(UserLibraries, WhatDoesNotBindKeepsItsPlaceWithoutEntries) {
    dir_.Write("broken.so", "no library at all");
    Load(
        "* a comment line counts\n"
        "Gone g.def g gone.so RunGain\n"
        "Broken g.def g broken.so RunGain\n"
        "Old g.def g old_model.so RunOld\n"
        "None g.def g no_entries.so RunNone TestNone\n"
        "NoTest g.def g gain_model.so RunGain\n"
        "Short\n");
    ASSERT_EQ(table_.Entries().size(), 7u);
    for (const char* type : {"Gone", "Broken", "Old", "None", "Short"}) {
        SCOPED_TRACE(type);
        EXPECT_NE(messages_.find(std::string("'") + type + "'"), std::string::npos) << messages_;
        ASSERT_TRUE(table_.Knows(type));
        Nodelist input{nullptr, BinSigType, nullptr}, output = input;
        EXPECT_EQ(Run(type, input, output), Status::Error);
        EXPECT_EQ(errorText_, "before: ERROR: no pointer for user model.");
    }
    EXPECT_NE(messages_.find("version 2"), std::string::npos) << messages_;
    EXPECT_NE(table_.Entries()[5].run, nullptr);
    std::string message;
    EXPECT_NE(table_.Test("NoTest", nullptr, message), Status::Success);
    EXPECT_EQ(message, "No parameter test available for this model.");
}

TEST_F(UserLibraries, AnEmptyListLoadsNothingAndSaysNothing) {
    Load("");
    EXPECT_TRUE(table_.Entries().empty());
    EXPECT_EQ(messages_, "");
    EXPECT_FALSE(table_.Knows("Gain"));
}

}  // namespace
}  // namespace photrak
