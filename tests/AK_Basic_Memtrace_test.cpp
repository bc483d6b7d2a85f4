#include "AK_Basic_TestTools.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <unistd.h>

// Without the running numbers, which count on through the process.
static std::string Dump()
{
    testing::internal::CaptureStdout();
    AK_MemtraceDump();
    std::string text = testing::internal::GetCapturedStdout(), plain;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '#') i = text.find('\n', i);
        plain += text[i];
    }
    return plain;
}

TEST(AK_Memtrace, ListsTheLiveBlocks)
{
    void* blocks[4];
    for (int i = 0; i < 4; ++i) blocks[i] = AK_malloc(std::size_t(10 * i), "src/a.cpp", i);
    EXPECT_EQ(Dump(), "AK_MemtraceDump: 60 bytes allocated\n"
                      "\t0 bytes from src/a.cpp:0, \n\t10 bytes from src/a.cpp:1, \n"
                      "\t20 bytes from src/a.cpp:2, \n\t30 bytes from src/a.cpp:3, \n");
    AK_free(blocks[0]);   // the last entry takes its place
    AK_free(blocks[3]);
    EXPECT_EQ(Dump(), "AK_MemtraceDump: 30 bytes allocated\n"
                      "\t20 bytes from src/a.cpp:2, \n\t10 bytes from src/a.cpp:1, \n");
    AK_free(blocks[1]);
    AK_free(blocks[2]);
    EXPECT_EQ(Dump(), "AK_MemtraceDump: 0 bytes allocated\n");
}

TEST(AK_Memtrace, ReallocatesWithTheContents)
{
    char* block = static_cast<char*>(AK_realloc(nullptr, 4, "old.cpp", 1));
    std::memcpy(block, "abc", 4);
    const std::string name = std::string(40, 'x') + "/new.cpp";
    block = static_cast<char*>(AK_realloc(block, 100000, name.c_str(), 2));
    EXPECT_STREQ(block, "abc");
    EXPECT_EQ(Dump(),
              "AK_MemtraceDump: 100000 bytes allocated\n\t100000 bytes from " + std::string(23, 'x') + "/new.cpp:2, \n")
        << "the last 31 characters of the name";
    EXPECT_EQ(AK_realloc(block, 0, "new.cpp", 3), nullptr);
    EXPECT_EQ(Dump(), "AK_MemtraceDump: 0 bytes allocated\n");
}

TEST(AK_Memtrace, LetsOtherBlocksThrough)
{
    for (const std::size_t size : {std::size_t(1), std::size_t(10000000)}) {   // the second has pages of its own
        void* plain = AK_realloc(std::malloc(size), 2 * size, "f", 1);
        static_cast<char*>(plain)[2 * size - 1] = 1;
        AK_free(plain);
    }
    AK_free(nullptr);
    void* nameless = AK_malloc(5, nullptr, 0);
    EXPECT_EQ(Dump(), "AK_MemtraceDump: 5 bytes allocated\n");
    AK_free(nameless);
}

TEST(AK_Memtrace, TakesPartByTheFormOfNewWithFileAndLine)
{
    auto* s = new ("src/b.cpp", 9) AK_String("text");
    EXPECT_EQ(*s, "text");
    EXPECT_EQ(Dump(), "AK_MemtraceDump: 16 bytes allocated\n\t16 bytes from src/b.cpp:9, \n");
    AK_delete(s);
    int* numbers = new ("src/b.cpp", 10) int[3];
    EXPECT_EQ(Dump(), "AK_MemtraceDump: 12 bytes allocated\n\t12 bytes from src/b.cpp:10, \n");
    AK_free(numbers);
    EXPECT_EQ(Dump(), "AK_MemtraceDump: 0 bytes allocated\n");
    AK_delete(static_cast<AK_String*>(nullptr));
}

TEST(AK_MemtraceDeath, RunningOutOfMemoryIsFatal)
{
    EXPECT_EXIT(
        {
            dup2(2, 1);
            AK_malloc(SIZE_MAX - 10, "f", 1);
        },
        testing::KilledBySignal(SIGABRT), "AK_malloc failed!");
}
