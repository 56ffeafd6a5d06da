// By what name a block refers to a SuperBlock's file, and what a move to another folder loses.
#include "workbench/superblock_paths.h"

#include <gtest/gtest.h>

#include "support/holds.h"
#include "support/temp_dir.h"

namespace photrak {
namespace {

TEST(SuperBlockNames, AreStemsWhereTheseFindTheVeryFile) {
    const TempDir dir;
    Catalogue catalogue;
    catalogue.superBlockDirectory = dir.Path() + "common/";
    const std::string here = dir.Path() + "here", there = dir.Path() + "there";
    for (const char* file : {"common/amp.dts", "here/amp.dts", "here/own.dts", "there/far.dts"}) {
        dir.Write(file, file);
    }
    struct Case {
        const char *chosen, *name;
    };
    for (const Case& c :
         {Case{"here/own.dts", "own"}, Case{"here/amp.dts", "amp"},
          // The stem would find the file of the same name beside the diagram.
          Case{"common/amp.dts", "../common/amp"}, Case{"there/far.dts", "../there/far"}}) {
        const std::string name = SuperBlockNameOf(dir.Path() + c.chosen, here, catalogue);
        EXPECT_EQ(name, c.name);
        const auto found = FindFromDiagram(name + ".dts", here, catalogue);
        ASSERT_TRUE(found) << name;
        EXPECT_TRUE(std::filesystem::equivalent(*found, dir.Path() + c.chosen)) << *found;
    }
    EXPECT_EQ(SuperBlockNameOf(dir.Path() + "common/amp.dts", there, catalogue), "amp");
    EXPECT_FALSE(FindFromDiagram("own.dts", there, catalogue));

    Workspace workspace;
    for (const char* name : {"amp", "own", "../there/far"}) {
        auto block = std::make_unique<Component>();
        block->name = block->type = "SuperBlock";
        block->superBlockFile = name;
        workspace.components.push_back(std::move(block));
    }
    EXPECT_EQ(LostSuperBlocks(workspace, here, here, catalogue), "");
    const std::string lost = LostSuperBlocks(workspace, here, there, catalogue);
    EXPECT_TRUE(Holds(lost, "here/own.dts")) << lost;
    EXPECT_TRUE(Holds(lost, "here/amp.dts")) << "another file of the same name";
    EXPECT_FALSE(Holds(lost, "far.dts")) << "the same file by the same path";
}

}  // namespace
}  // namespace photrak
