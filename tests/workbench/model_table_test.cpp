// The rows that user models add to the palette.
#include "workbench/model_table.h"

#include <gtest/gtest.h>

#include "base/text.h"

namespace photrak {
namespace {

TEST(PaletteModels, TakeUserModelsUntilTheTableIsFull) {
    PaletteModels models;
    EXPECT_EQ(models.Last(), lastBuiltInModel);
    ASSERT_TRUE(models.AddUserModel("RingFilter", "ring.small.bmp"));
    ASSERT_TRUE(models.AddUserModel("", "")) << "a comment takes its place";
    ASSERT_TRUE(models.AddUserModel("Etalon", "etalon"));
    const ModelRow& first = models.Row(lastBuiltInModel + 1);
    EXPECT_EQ(first.bitmap, "ringu.bmp");
    EXPECT_EQ(first.tooltip, "User Model 1");
    EXPECT_EQ(first.tip, "RingFilter");
    EXPECT_FALSE(models.HasButton(lastBuiltInModel + 2));
    EXPECT_EQ(models.Row(lastBuiltInModel + 3).bitmap, "etalonu.bmp");
    EXPECT_EQ(models.Row(lastBuiltInModel + 3).tooltip, "User Model 3");
    EXPECT_EQ(models.IndexOf("Etalon"), lastBuiltInModel + 3);
    for (int i = 4; i <= 17; ++i) ASSERT_TRUE(models.AddUserModel(Concat("M", i), "m.bmp")) << i;
    EXPECT_FALSE(models.AddUserModel("M18", "m.bmp"));
    EXPECT_EQ(models.Last(), modelCapacity - 1);
    // A type that no row names, and the gaps, have the picture of the unknown model.
    EXPECT_EQ(models.IndexOf("UnknownModel"), 0);
    EXPECT_EQ(models.IndexOf("M18"), 0);
    EXPECT_FALSE(models.HasButton(20));
}

}  // namespace
}  // namespace photrak
