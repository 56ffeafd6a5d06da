// User models: real libraries loaded from a models directory and called through the support table.
#include "files/user_models.h"

#include <gtest/gtest.h>

#include "kernel/graph.h"
#include "support/holds.h"
#include "support/model_parameters.h"
#include "support/paths.h"
#include "support/signals.h"
#include "support/temp_dir.h"

namespace photrak {
namespace {

class UserLibraries : public testing::Test {
  protected:
    void SetUp() override {
        for (const char* name : {"gain_model", "other_version", "no_entries", "throwing_model"}) {
            const std::string file = std::string(name) + ".so";
            ASSERT_TRUE(CopyWholeFile(BinaryDir() + "/user_library/" + file, dir_.Path() + file));
        }
        catalogue_.modelDirectory = dir_.Path();
    }
    void Load(std::string_view userList) {
        dir_.Write("user.lis", userList);
        table_.LoadUserModels(catalogue_, messages_);
    }
    /// Runs the model `type` over one port.
    Status Run(const std::string& type, Nodelist& input, Nodelist& output) {
        block_.component.type = type;
        errorText_ = "before: ";
        return table_.Run({{block_.component.name, errorText_},
                           workspace_,
                           block_.component,
                           options_,
                           &input,
                           &output});
    }
    TempDir dir_;
    Catalogue catalogue_;
    UserModelTable table_;
    std::string messages_, errorText_;
    Workspace workspace_;
    SimOptions options_;
    ModelBlock block_;
};

TEST_F(UserLibraries, AModelInCRunsThroughTheSupportTable) {
    Load("Gain gain.def gain.pic gain_model.so RunGain TestGain\n");
    EXPECT_EQ(messages_, "");
    ASSERT_TRUE(table_.Knows("Gain"));
    EXPECT_EQ(table_.Entries()[0].bitmap, "gainu.bmp");
    block_.Number("gain", 2.0);

    const Owned<ElecSig> wave = RampWaveform(2, 1e-12);
    Nodelist input{nullptr, ElecSigType, wave.get()};
    OutputCell output(UnknownSigType);
    EXPECT_EQ(Run("Gain", input, output), Status::Success) << errorText_;
    EXPECT_EQ(errorText_, "before: ") << "an empty message adds nothing";
    ASSERT_EQ(output.sigType, ElecSigType);
    EXPECT_EQ(output.As<ElecSig>().elecSamples[1].re, 2.0);
}

TEST_F(UserLibraries, StatusAndMessageComeBack) {
    Load(
        "Gain gain.def gain gain_model.so RunGain TestGain\n"
        "Bad t.def t gain_model.so RunBadTransform TestGain\n"
        "Throw t.def t throwing_model.so RunThrow TestThrow\n");
    Nodelist input{nullptr, OpSigType, &workspace_}, output{nullptr, UnknownSigType, nullptr};
    EXPECT_EQ(Run("Gain", input, output), Status::Error);
    EXPECT_EQ(errorText_,
              "before: ERROR: the gain model takes electrical and binary signals, 100% of them\n");
    input.sig = nullptr;
    EXPECT_EQ(Run("Throw", input, output), Status::Error);
    EXPECT_TRUE(Holds(errorText_, "out of ideas"));
    EXPECT_EQ(Run("Bad", input, output), Status::Error) << "the library took no notice";
    EXPECT_TRUE(Holds(errorText_, "ERROR: in the user model: "));
    EXPECT_EQ(Run("Gain", input, output), Status::Warning) << "that failure is reported once";
    EXPECT_EQ(errorText_, "before: WARNING: nothing came in\n");

    std::string message;
    block_.Number("gain", 0.0);
    EXPECT_EQ(table_.Test("Gain", block_.component.parameters, message), Status::Error);
    EXPECT_EQ(message, "gain must not be 0\n");
}

TEST_F(UserLibraries, WhatDoesNotBindKeepsItsPlaceWithoutEntries) {
    dir_.Write("broken.so", "no library at all");
    Load(
        "* a comment line counts\n"
        "Broken g.def g broken.so RunGain\n"
        "Other g.def g other_version.so RunOther\n"
        "None g.def g no_entries.so RunNone TestNone\n"
        "NoTest g.def g gain_model.so RunGain\n"
        "Short\n");
    ASSERT_EQ(table_.Entries().size(), 6u);
    for (const std::string type : {"Broken", "Other", "None", "Short"}) {
        SCOPED_TRACE(type);
        // Code is loaded when it is called: what only the loader sees is told then.
        const bool isSeenBefore = type == "Broken" || type == "Short";
        EXPECT_EQ(Holds(messages_, "'" + type + "'"), isSeenBefore) << messages_;
        ASSERT_TRUE(table_.Knows(type));
        Nodelist input{nullptr, BinSigType, nullptr}, output = input;
        EXPECT_EQ(Run(type, input, output), Status::Error);
        EXPECT_TRUE(errorText_.ends_with("ERROR: no pointer for user model.")) << errorText_;
    }
    EXPECT_FALSE(table_.HasTest("NoTest"));
}

}  // namespace
}  // namespace photrak
