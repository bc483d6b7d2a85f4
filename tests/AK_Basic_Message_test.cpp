#include "AK_Basic_TestTools.h"

#include <gtest/gtest.h>

TEST(AK_Message, GoesToStandardOutputWithItsLocation)
{
    testing::internal::CaptureStdout();
    ak_msg_func("WARNING:a %s text", "src/X.cpp:7");
    AK_Object__Message("from a formula", "Project/a");
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "WARNING:a %s text\t(src/X.cpp:7)\nfrom a formula\t(Project/a)\n");
}

TEST(AK_Message, IsComposedWhereItIsSent)
{
    CaughtMessages messages;
    AK_MSG("saving " << AK_String("x") << " to " << 1.5);
    const int line = __LINE__ - 1;
    EXPECT_EQ(messages.Texts().at(0), "saving x to 1.5");
    EXPECT_EQ(messages.Locations().at(0), "tests/AK_Basic_Message_test.cpp:" + std::to_string(line));
}

TEST(AK_MessageDeath, AnAssertionReportsAndAborts)
{
    ak_msg_func = [](const char* message, const char* location) { std::fprintf(stderr, "%s (%s)", message, location); };
    EXPECT_EXIT(AK_ASSERT(1 + 1 == 3), testing::KilledBySignal(SIGABRT),
                "ERROR:FATAL:1 \\+ 1 == 3 failed! \\(tests/AK_Basic_Message_test.cpp:[0-9]+\\)");
    EXPECT_DEATH(AK_ASSERT_AS(false, "_lcc.Size()"), "ERROR:FATAL:_lcc.Size\\(\\) failed!");
    ak_msg_func = ak_default_msg_func;
    AK_ASSERT(true);
}
