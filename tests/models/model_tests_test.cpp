// The table of tests of blocks, and the steps around a test that the program does not show.
#include "models/model_tests.h"

#include <algorithm>
#include <gtest/gtest.h>

#include "base/text.h"
#include "kernel/graph.h"
#include "kernel/parameters.h"
#include "kernel/result_names.h"
#include "models/dispatch.h"
#include "support/recording_host.h"
#include "support/temp_dir.h"

namespace photrak {
namespace {

TEST(ModelTests, EachRowIsOfABuiltInModel) {
    for (const ModelTest& row : BuiltInModelTests()) {
        SCOPED_TRACE(row.type);
        EXPECT_NE(std::ranges::find(BuiltInModels(), row.type, &ModelEntry::type),
                  BuiltInModels().end());
        EXPECT_TRUE(HasModelTest(row.type, UserModelTable()));
    }
    EXPECT_FALSE(HasModelTest("CWLaserModel", UserModelTable()));
}

/// A filter without parameters but for its center and width, which are symbols.
class FilterBlock : public ::testing::Test {
  protected:
    FilterBlock() : workspace_(CreateWorkspace()) {
        filter_.name = "F";
        filter_.type = "OpticalFilter";
        for (const char* name : {"wavelength", "BW"}) {
            Parameter* parameter = CreateParameter(name, DoubleType);
            EXPECT_TRUE(SetText(&parameter->value, name[0] == 'B' ? "width" : "center"));
            EXPECT_TRUE(SetText(&parameter->STDDEV, "0"));
            InsertParameterSorted(&filter_.parameters, parameter);
        }
        AddVariable(*workspace_, "center", DoubleType, "1.55e-6");
        AddVariable(*workspace_, "width", DoubleType, "center / 10");
        ResetResultFiles();
    }
    Status Test() { return TestComponent(filter_, *workspace_, UserModelTable(), text_); }

    TempDir directory_;
    RecordingHost host_;
    std::unique_ptr<Workspace> workspace_;
    Component filter_;
    std::string text_;
};

TEST_F(FilterBlock, StartsTheViewerAsAPlotBlockWould) {
    const std::pair<std::int16_t, std::size_t> rows[] = {
        {DoNotPlot, 0}, {PlotToFilesOnly, 0}, {DisplayAllPlots, 2}};
    for (const auto& [plotting, viewers] : rows) {
        SCOPED_TRACE(plotting);
        ResetResultFiles();
        host_.commands.clear();
        workspace_->options->PLOTTING = plotting;
        EXPECT_EQ(Test(), Status::Success) << text_;
        EXPECT_EQ(host_.commands.size(), viewers);
        EXPECT_EQ(ResultFiles().size(), 4u);
    }
}

TEST_F(FilterBlock, AFaultOfThePortsIsAnErrorButTheTestGoesOn) {
    filter_.MININPUTS = 1;
    EXPECT_EQ(Test(), Status::Error);
    EXPECT_EQ(text_, "ERROR: 'F' number of input nodes is less than minimum number\n");
    EXPECT_EQ(ResultFiles().size(), 4u);
}

TEST_F(FilterBlock, TooManySymbolsEndTheTestAndLeaveNoTable) {
    for (int i = 0; i <= symbolTableCapacity; ++i) {
        AddVariable(*workspace_, Concat("v", i), DoubleType, "1");
    }
    EXPECT_EQ(Test(), Status::Error);
    EXPECT_NE(text_.find("Symbol table full"), std::string::npos) << text_;
    EXPECT_EQ(workspace_->symbols.entries, nullptr);
    EXPECT_TRUE(ResultFiles().empty());
}

}  // namespace
}  // namespace photrak
