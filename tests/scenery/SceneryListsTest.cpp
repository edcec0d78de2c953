#include <velmora/MDLObject.h>
#include <velmora/ModelList.h>

#include "support/ErrorMatchers.h"

#include <gtest/gtest.h>

using namespace velmora;

TEST(ModelListTest, AModelIsRequired) {
    ModelList models;
    EXPECT_TRUE(throwsPlatform([&] { models.Add(nullptr); }, 91));
    EXPECT_EQ(models.Count(), 0);
    auto model = std::make_shared<MDLObject>();
    EXPECT_EQ(models.Add(model, "Tower"), model);
    EXPECT_EQ(models.Item("TOWER"), model);
}
