// A component of the shipped catalogue with the definition's own parameters, for tests that a model
// and its definition agree: names, defaults and limits.
#pragma once

#include <gtest/gtest.h>
#include <memory>
#include <string>
#include <string_view>

#include "files/catalogue.h"
#include "kernel/graph.h"
#include "kernel/parameters.h"
#include "support/paths.h"
#include "support/recording_host.h"

namespace photrak {

class CatalogueBlock {
  public:
    explicit CatalogueBlock(std::string_view type, std::int32_t inputs = 1,
                            std::int32_t outputs = 1) {
        EXPECT_EQ(InitializeModels(SourceDir() + "/catalogue/", catalogue_, text_), Status::Success)
            << text_;
        component_ = AddComponent(*workspace_, type, "box", inputs, outputs, catalogue_);
        EXPECT_NE(component_, nullptr);
    }
    CatalogueBlock& Set(std::string_view name, std::string_view value) {
        Parameter* parameter = FindParamCursor(component_->parameters, name);
        EXPECT_NE(parameter, nullptr) << name;
        EXPECT_TRUE(SetText(&parameter->value, value));
        return *this;
    }
    /// The component as a run hands it to the model; no value may break its limits.
    Component& Evaluated() {
        EXPECT_EQ(EvalComponentParams(*component_, workspace_.get(), text_), Status::Success)
            << text_;
        EXPECT_EQ(CheckPorts(*component_, text_), Status::Success) << text_;
        return *component_;
    }

  private:
    RecordingHost host_;
    Catalogue catalogue_;
    std::unique_ptr<Workspace> workspace_ = CreateWorkspace();
    Component* component_ = nullptr;
    std::string text_;
};

}  // namespace photrak
