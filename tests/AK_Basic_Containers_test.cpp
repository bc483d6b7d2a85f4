#include "AK_Basic_TestTools.h"

#include <gtest/gtest.h>

#include <set>

static AK_List<int> Numbers(int n)
{
    AK_List<int> list;
    for (int i = 0; i < n; ++i) list.Append(i);
    return list;
}

TEST(AK_List, RedimensionSetsTheCapacityAndDropsTheTail)
{
    AK_List<int> list = Numbers(5);
    EXPECT_EQ(list.Redimension(3), 3);
    EXPECT_EQ(list.Size(), 3);
    EXPECT_EQ(list[2], 2);
    EXPECT_EQ(list.Redimension(100), 100);
    EXPECT_EQ(list.Size(), 3);
    EXPECT_EQ(list[2], 2);
    EXPECT_EQ(list.Redimension(-1), 1);
    EXPECT_EQ(list.Size(), 1);
}

TEST(AK_List, CopiesAreIndependent)
{
    AK_List<AK_List<int>> lists;
    lists.Append(Numbers(3));
    AK_List<AK_List<int>> copy = lists, assigned;
    assigned.Append(Numbers(1));
    assigned = lists;
    assigned = *&assigned;
    lists[0][1] = 77;
    EXPECT_EQ(copy[0][1], 1);
    EXPECT_EQ(assigned[0][1], 1);
    EXPECT_EQ(assigned[0].Size(), 3);
    const AK_List<AK_List<int>> moved = std::move(copy);
    EXPECT_EQ(moved[0][2], 2);
    EXPECT_EQ(copy.Size(), 0) << "what is moved from is an empty list";
    EXPECT_EQ(copy.Append(Numbers(2)), 0);
}

TEST(AK_List, TakesItsOwnElementsAsArguments)
{
    AK_List<AK_String> list;
    list.Append("first");
    for (int i = 0; i < 4; ++i) list.Append(list[0]);   // at sizes 1, 2 and 4 the array moves
    EXPECT_EQ(Joined(list), "first|first|first|first|first|");
    list.Fill(9, list[0]);
    EXPECT_EQ(list.Size(), 9);
    EXPECT_EQ(list[8], "first");
}

TEST(AK_List, RemovesAndFinds)
{
    AK_List<int> list = Numbers(4);
    list.Remove(1);
    list.Remove(2);
    EXPECT_EQ(list.Size(), 2);
    EXPECT_EQ(list.IndexOf(2), 1);
    EXPECT_EQ(list.IndexOf(3), -1) << "what was removed is not found behind the end";
    list.Clear();
    EXPECT_TRUE(list.IsEmpty());
    EXPECT_DEATH(list.Remove(0), "");
}

TEST(AK_Dict, KeepsEachEntryWhileItGrows)
{
    AK_Dict<int, int> dict(2, -1);
    for (int i = 0; i < 1000; ++i) {
        int& value = dict[i * 7];
        EXPECT_EQ(value, -1) << "a new entry holds the default";
        value = i;   // the reference is into the table as it is after growing
    }
    EXPECT_EQ(dict.Count(), 1000);
    for (int i = 0; i < 1000; ++i) EXPECT_EQ(dict[i * 7], i);
    EXPECT_EQ(dict.Find(1), nullptr);
    EXPECT_EQ(dict.Count(), 1000);
    // From 2 buckets on, each time the first prime at or above twice as many: 5, 11, 23, 47, 97, 197.
    EXPECT_EQ(dict.Buckets(), 197);
}

TEST(AK_Dict, WorksWithAnyHash)
{
    using Hash = int (*)(const AK_String&);
    const Hash hashes[] = {HashIndex<AK_String>, [](const AK_String&) { return INT_MIN; },
                           [](const AK_String& s) { return -s.Length(); }};
    for (const Hash hash : hashes) {
        AK_Dict<AK_String, AK_String> dict(1, "new", hash);
        EXPECT_EQ(dict["a"], "new");
        dict["a"] = "A";
        dict["b"] = "B";
        dict["long key"] = "C";
        EXPECT_EQ(dict["a"] + dict["b"] + dict["long key"], "ABC");
        EXPECT_EQ(dict.Count(), 3);
    }
    AK_Dict<int, int> parity(
        11, 0, [](const int& k) { return k % 2; }, [](const int& a, const int& b) { return int((a - b) % 2 == 0); });
    parity[2] = 5;
    EXPECT_EQ(parity[8], 5) << "a comparison of its own decides what is the same key";
}

TEST(AK_Dict, SpreadsStringsThatBeginAlike)
{
    const unsigned buckets = 1009;
    std::set<unsigned> used;
    for (int i = 0; i < int(buckets); ++i)
        used.insert(unsigned(HashIndex(AK_String("Project/Polylines/valley_") + AK_String(i, "%04d"))) % buckets);
    EXPECT_GT(used.size(), buckets / 2);
}
