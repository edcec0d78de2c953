#include <velmora/KeyedCollection.h>

#include "support/ErrorMatchers.h"

#include <gtest/gtest.h>

using velmora::KeyedCollection;

namespace {

struct Item {
    int value = 0;
};

std::shared_ptr<Item> make(int value) { return std::make_shared<Item>(Item{value}); }

std::string values(const KeyedCollection<Item>& list) {
    std::string out;
    for (const auto& element : list) out += std::to_string(element->value);
    return out;
}

}  // namespace

TEST(KeyedCollection, AddsAppendsAndInsertsInFrontOfAPositionOrAKey) {
    KeyedCollection<Item> list;
    auto fresh = list.Add(nullptr, "", "");
    ASSERT_TRUE(fresh);
    EXPECT_EQ(fresh->value, 0) << "an Add without element makes a default one";
    fresh->value = 1;
    auto two = make(2);
    EXPECT_EQ(list.Add(two, "", ""), two);
    EXPECT_EQ(list.Item(list.Count()), two);
    list.Add(make(3), "Three", "");
    list.Add(make(0), "", 1);
    EXPECT_EQ(values(list), "0123");
    list.Add(make(9), "", "THREE");
    EXPECT_EQ(values(list), "01293");
    EXPECT_EQ(list.Item("three")->value, 3) << "keys compare without regard to case";
}

TEST(KeyedCollection, RemovesByPositionAndKey) {
    KeyedCollection<Item> list;
    list.Add(make(1), "", "");
    list.Add(make(2), "b", "");
    list.Add(make(3), "", "");
    list.Remove(1);
    EXPECT_EQ(list.Count(), 2);
    EXPECT_EQ(list.Item(1)->value, 2);
    list.Remove("B");
    EXPECT_EQ(values(list), "3");
    EXPECT_TRUE(throwsPlatform([&] { list.Item("b"); }, 5)) << "a removed key is gone";
    list.Add(make(4), "b", "");  // and can be used again
    EXPECT_EQ(values(list), "34");
}

TEST(KeyedCollection, ErrorsLeaveTheListAsItWas) {
    KeyedCollection<Item> list;
    EXPECT_TRUE(throwsPlatform([&] { list.Item(1); }, 9));
    list.Add(make(1), "k", "");
    EXPECT_TRUE(throwsPlatform([&] { list.Item(0); }, 9));
    EXPECT_TRUE(throwsPlatform([&] { list.Item(2); }, 9));
    EXPECT_TRUE(throwsPlatform([&] { list.Remove(-1); }, 9));
    EXPECT_TRUE(throwsPlatform([&] { list.Item("missing"); }, 5));
    EXPECT_TRUE(throwsPlatform([&] { list.Add(make(2), "K", ""); }, 457));
    EXPECT_TRUE(throwsPlatform([&] { list.Add(make(2), "", 5); }, 9));
    EXPECT_TRUE(throwsPlatform([&] { list.Add(make(2), "", "nokey"); }, 5));
    EXPECT_EQ(values(list), "1");
    for (int i = 0; i < 3; ++i) list.Add(nullptr, "", "");  // empty keys repeat freely
    EXPECT_EQ(list.Count(), 4);
}

TEST(KeyedCollection, EnumeratingAnEmptyListYieldsNothing) {
    KeyedCollection<Item> list;
    int seen = 0;
    for (const auto& element : list) seen += element ? 1 : 1;
    EXPECT_EQ(seen, 0);
}
