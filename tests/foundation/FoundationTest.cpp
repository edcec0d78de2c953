#include <velmora/KeyedCollection.h>

#include "support/ErrorMatchers.h"

#include <gtest/gtest.h>

using namespace velmora;

TEST(KeyedCollection, InsertsRemovesAndKeysWithoutRegardToCase) {
    struct Item {
        int value = 0;
    };
    const auto make = [](int value) { return std::make_shared<Item>(Item{value}); };
    KeyedCollection<Item> list;
    const auto values = [&] {
        std::string out;
        for (const auto& element : list)
            out += std::to_string(element->value);
        return out;
    };
    EXPECT_EQ(list.Add(nullptr, "", "")->value, 0) << "an Add without element makes one";
    list.Add(make(2), "", "");
    list.Add(make(3), "Three", "");
    list.Add(make(9), "", 1);        // in front of a position
    list.Add(make(8), "", "THREE");  // in front of a key
    EXPECT_EQ(values(), "90283");
    EXPECT_EQ(list.Item("three")->value, 3);
    list.Remove(1);
    list.Remove("tHREE");
    list.Add(make(4), "three", "");  // a removed key can be used again
    EXPECT_EQ(values(), "0284");

    // Errors leave the list as it was.
    EXPECT_TRUE(throwsPlatform([&] { list.Item(0); }, 9));
    EXPECT_TRUE(throwsPlatform([&] { list.Item(5); }, 9));
    EXPECT_TRUE(throwsPlatform([&] { list.Remove(-1); }, 9));
    EXPECT_TRUE(throwsPlatform([&] { list.Item("missing"); }, 5));
    EXPECT_TRUE(throwsPlatform([&] { list.Add(make(1), "THREE", ""); }, 457));
    EXPECT_TRUE(throwsPlatform([&] { list.Add(make(1), "", 6); }, 9));
    EXPECT_TRUE(throwsPlatform([&] { list.Add(make(1), "", "nokey"); }, 5));
    EXPECT_EQ(values(), "0284");
}
