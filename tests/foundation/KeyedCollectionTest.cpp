#include <velmora/KeyedCollection.h>

#include "support/ErrorMatchers.h"

#include <gtest/gtest.h>

#include <memory>

using namespace velmora;

// Keys without regard to case and adding in front of a position are also FixLightsTest's.
TEST(KeyedCollection, AddsInFrontOfKeysRemovesByKeyAndRefusesWhatItLacks) {
    KeyedCollection<int> list;
    list.Add(std::make_shared<int>(2), "", "");
    list.Add(std::make_shared<int>(3), "Three", "");
    list.Add(std::make_shared<int>(8), "", "THREE");  // in front of a key
    EXPECT_EQ(*list.Item(2), 8);
    list.Remove("tHREE");
    list.Add(std::make_shared<int>(4), "three", "");  // a removed key can be used again
    EXPECT_EQ(*list.Item("Three"), 4);
    // Errors leave the list as it was.
    EXPECT_TRUE(throwsPlatform([&] { list.Item(0); }, 9));
    EXPECT_TRUE(throwsPlatform([&] { list.Remove(4); }, 9));
    EXPECT_TRUE(throwsPlatform([&] { list.Add(nullptr, "", 5); }, 9));
    EXPECT_TRUE(throwsPlatform([&] { list.Item("missing"); }, 5));
    EXPECT_TRUE(throwsPlatform([&] { list.Add(nullptr, "", "nokey"); }, 5));
    EXPECT_EQ(list.Count(), 3);
}
