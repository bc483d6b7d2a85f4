#include "AK_Object_TestSupport.h"

class AK_ObjectTest : public ObjectTest {};

TEST_F(AK_ObjectTest, ComponentsAreOwnedByTheirParent)
{
    TestThing root("Viewer", nullptr);
    root.Add("a")->Add("b");
    ExpectConsistent(root);
    EXPECT_EQ(TestThing::alive, 3);
}
