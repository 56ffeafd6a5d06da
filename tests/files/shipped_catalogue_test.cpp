// A lint of the catalogue that ships with the program: what a block drawn from its defaults needs.
#include <gtest/gtest.h>

#include "base/text.h"
#include "files/catalogue.h"
#include "kernel/graph.h"
#include "kernel/parameters.h"
#include "support/paths.h"

namespace photrak {
namespace {

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
            EXPECT_NE(parameter.type, ComplexType) << "no run accepts one";
            if (parameter.type == DoubleType) {
                EXPECT_STRNE(parameter.UNITS, "");
                EXPECT_STRNE(parameter.STDDEV, "") << "an empty deviation warns at every run";
                EXPECT_GT(*static_cast<double*>(parameter.min), -1e300) << "no MINVALUE";
                EXPECT_LT(*static_cast<double*>(parameter.max), 1e300) << "no MAXVALUE";
            }
            if (parameter.type == EnumType) {
                EXPECT_GT(*static_cast<std::int16_t*>(parameter.valactual), 0)
                    << "the default is none of its words";
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
