// List files and the catalogue they build; a lint of the catalogue that ships with the program.
#include "files/catalogue.h"

#include <gtest/gtest.h>

#include "base/text.h"
#include "kernel/graph.h"
#include "kernel/parameters.h"
#include "support/holds.h"
#include "support/paths.h"
#include "support/temp_dir.h"

namespace photrak {
namespace {

constexpr const char* listNames[] = {"trans.lis", "channel.lis", "control.lis", "receiver.lis",
                                     "user.lis"};

class CatalogueFiles : public testing::Test {
  protected:
    void SetUp() override {
        for (const char* name : listNames) Write(name, "");
        Write("a.def",
              "COMPONENT A\nNOTE first\nPARAM p StringType\nVALUE v\nENDPARAM\nENDCOMPONENT\n");
        Write("bad.def", "COMPONENT B\nPARAM p float\nENDPARAM\nPARAM q float\nENDPARAM\n");
    }
    void Write(const std::string& name, std::string_view text) {
        dir_.Write("models/" + name, text);
    }
    Status Initialize() {
        errorText_.clear();
        return InitializeModels(dir_.Path(), catalogue_, errorText_);
    }
    static std::string Names(const auto& models) {
        std::string names;
        for (const auto& model : models) names += model->name + " ";
        return names;
    }

    TempDir dir_;
    Catalogue catalogue_;
    std::string errorText_;
};

TEST_F(CatalogueFiles, ListsSortIntoCategoriesAndTheFirstDefinitionWins) {
    Write("b.def", "COMPONENT A\nNOTE second\n");
    Write("trans.lis", "* a comment\n*Star a.def\n\n  Zeta;a.def, rest\nAlpha:a.def\n");
    Write("receiver.lis", "Alpha b.def\nMid\ta.def\n");
    Write("user.lis", "User a.def user lib.so run test\n");
    EXPECT_EQ(Initialize(), Status::Success) << errorText_;
    EXPECT_EQ(Names(catalogue_.models), "*Star Alpha Mid User Zeta ");
    EXPECT_EQ(Names(catalogue_.transmitters), "*Star Alpha Zeta ");
    EXPECT_EQ(Names(catalogue_.receivers), "Mid ");
    ASSERT_NE(FindModel(catalogue_, "Alpha"), nullptr);
    EXPECT_EQ(FindModel(catalogue_, "Alpha")->NOTE, "first");
}

TEST_F(CatalogueFiles, AllFiveListsAreReadToTheirEndsWhateverTheyHold) {
    ASSERT_EQ(Initialize(), Status::Success) << "empty lists are lists";
    std::filesystem::remove(dir_.Path() + "models/control.lis");
    EXPECT_EQ(Initialize(), Status::Error);
    EXPECT_TRUE(Holds(errorText_, "control.lis"));
    Write("control.lis", "");
    Write("channel.lis", "Bad bad.def\nGone gone.def\nNameless\nGood a.def\n");
    EXPECT_EQ(Initialize(), Status::Error);
    EXPECT_EQ(Names(catalogue_.channels), "Bad Gone Good Nameless ");
    EXPECT_TRUE(Holds(errorText_, "bad.def:2"));
    EXPECT_TRUE(Holds(errorText_, "gone.def"));
}

// The models of the program and the other ones of the user stay; nothing is left out in silence.
TEST_F(CatalogueFiles, AFaultyModelOfAUserIsToldAndLeftOut) {
    Write("cut.def", "COMPONENT Cut\nNOTE cut off\nPARAM p StringType\nVALUE v\nENDPARAM\n");
    Write("inside.def", "COMPONENT Inside\nPARAM p StringType\nVAL");
    Write("trans.lis", "Laser cut.def\n");
    Write("user.lis",
          "Bad bad.def\nGone gone.def\nNameless\nInside inside.def\nFolder ./\nMine a.def\n");
    EXPECT_EQ(Initialize(), Status::Warning);
    EXPECT_EQ(Names(catalogue_.models), "Laser Mine ");
    const char* const told[] = {"cut.def:5: the definition of 'Laser' has no line ENDCOMPONENT",
                                "'Bad' is left out: ",
                                "bad.def:2: parameter 'p' has the unknown type 'float'",
                                "'Gone' is left out: cannot read ",
                                "'Nameless' is left out: ",
                                "inside.def:3: the text ends inside 'p'",
                                "'Folder' is left out: "};
    for (const char* text : told) EXPECT_TRUE(Holds(errorText_, text)) << errorText_;
    EXPECT_EQ(std::count(errorText_.begin(), errorText_.end(), '\n'), 6) << errorText_;
}

TEST_F(CatalogueFiles, DescribesAModelInWords) {
    Write("m.def",
          "COMPONENT M\nNOTE A model\nMININPUTS 1\nMAXINPUTS 1\nNUMINPUTS 1\nMINOUTPUTS 1\n"
          "MAXOUTPUTS 4\nNUMOUTPUTS 2\nINSIGTYPES NoSigType\nOUTSIGTYPES OpSigType\n"
          "PARAM gain DoubleType\nDESC Small signal gain\nMINVALUE 0\nMAXVALUE 50\nVALUE 20\n"
          "UNITS dB\nENDPARAM\n"
          "PARAM mode EnumType\nVALUE fast\nFIELD fast slow\nENDPARAM\n"
          "PARAM file StringType\nVALUE\nENDPARAM\nENDCOMPONENT\n");
    Write("channel.lis", "M m.def\n");
    Write("user.lis", "Mine a.def\n");
    ASSERT_EQ(Initialize(), Status::Success) << errorText_;
    EXPECT_EQ(DescribeModel(*FindModel(catalogue_, "M")),
              "M\n"
              "  A model\n"
              "\n"
              "Ports\n"
              "  inputs:  none\n"
              "  outputs: 1 to 4, 2 when placed: optical\n"
              "\n"
              "Parameters (name, type, default, limits and units or words)\n"
              "  file  text    (empty)\n"
              "  gain  number  20       0 to 50 dB\n"
              "      Small signal gain\n"
              "  mode  choice  fast     one of fast slow\n");
    EXPECT_EQ(ListModels(catalogue_), "Channel\n  M  A model\n\nUser models\n  Mine  first\n");
}

const std::string installDirectory = SourceDir() + "/catalogue/";

class ShippedCatalogue : public testing::Test {
  protected:
    void SetUp() override {
        std::string errorText;
        ASSERT_EQ(InitializeModels(installDirectory, catalogue_, errorText), Status::Success)
            << errorText;
        ASSERT_FALSE(catalogue_.models.empty());
    }
    Catalogue catalogue_;
};

TEST_F(ShippedCatalogue, PortsAreConsistent) {
    for (const auto& model : catalogue_.models) {
        SCOPED_TRACE(model->name);
        EXPECT_FALSE(model->NOTE.empty());
        EXPECT_TRUE(model->ICON.ends_with("u.bmp")) << model->ICON;
        // Sources and sinks stand on the ground node.
        EXPECT_TRUE(1 <= model->MININPUTS && model->MININPUTS <= model->NUMINPUTS &&
                    model->NUMINPUTS <= model->MAXINPUTS && !model->inputs.empty());
        EXPECT_TRUE(1 <= model->MINOUTPUTS && model->MINOUTPUTS <= model->NUMOUTPUTS &&
                    model->NUMOUTPUTS <= model->MAXOUTPUTS && !model->outputs.empty());
    }
}

TEST_F(ShippedCatalogue, ParametersCarryWhatARunNeeds) {
    for (const auto& model : catalogue_.models) {
        for (const Parameter& parameter : Items(model->parameters)) {
            SCOPED_TRACE(Concat(model->name, ": ", parameter.name));
            EXPECT_STRNE(parameter.DESC, "");
            if (parameter.type == DoubleType) {
                EXPECT_STRNE(parameter.UNITS, "");
                EXPECT_STRNE(parameter.STDDEV, "") << "an empty deviation warns at every run";
                EXPECT_GT(*static_cast<double*>(parameter.min), -1e300) << "no MINVALUE";
                EXPECT_LT(*static_cast<double*>(parameter.max), 1e300) << "no MAXVALUE";
            }
        }
    }
}

// A fresh component of every model evaluates and passes its checks without a word.
TEST_F(ShippedCatalogue, DefaultsEvaluateWithinTheirLimits) {
    const auto workspace = CreateWorkspace();
    for (const auto& model : catalogue_.models) {
        SCOPED_TRACE(model->name);
        Component* block = AddComponent(*workspace, model->type, model->type, 0, 0, catalogue_);
        ASSERT_NE(block, nullptr);
        std::string text;
        EXPECT_EQ(EvalComponentParams(*block, workspace.get(), text), Status::Success) << text;
        EXPECT_EQ(CheckPorts(*block, text), Status::Success) << text;
        EXPECT_EQ(text, "");
    }
}

}  // namespace
}  // namespace photrak
