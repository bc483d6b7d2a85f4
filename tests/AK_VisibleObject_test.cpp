// Visible objects: attributes and their descriptions, numbers that are refused, drawing state, places in the overlay.

#include "AK_VisibleObject_TestSupport.h"

namespace
{

using AK_VisibleObject_Attributes = VisibleTest;

/// What a description promises, the code keeps: names that are read answer, names that are set take the value that was
/// read, options and visibilities exist, and everything has a text in both languages.
void ExpectKept(AK_Object& object, const AK_Attribute* node)
{
    const std::string name = Text(object.Type()) + ": " + Text(node->_id);
    const auto answers = [&](const AK_String& attr) { return Text(object.Get(attr)) != ak_null; };
    const AK_Attribute* doc = node->Component("doc");
    EXPECT_TRUE(node->Component("german") && doc && doc->Component("german")) << name;
    EXPECT_TRUE(node->_cmd.IsEmpty() || answers(node->_cmd)) << name;
    for (const AK_Attribute* child : node->_components) {
        const AK_String kind = child->Id(0);
        if (kind == "options" || kind == "vis")
            EXPECT_TRUE(answers(child->_cmd)) << name;
        else if (kind == "set" && node->_cmd.IsEmpty())
            EXPECT_EQ(object.Set(child->_cmd, ""), 1) << name;
        else if (kind == "set") {
            EXPECT_EQ(object.Set(child->_cmd, object.Get(node->_cmd)), 1) << name;
            EXPECT_EQ(Text(AK_Object::_execStatus), "") << name << " refuses its own value";
        } else if (!child->Id(1).IsEmpty() && kind != "obj")
            ExpectKept(object, child);
    }
}

TEST_F(AK_VisibleObject_Attributes, DescriptionsAndCodeAgree)
{
    AK_VisibleObject visible("v", nullptr);
    AK_VisObj2d overlay("o", nullptr);
    AK_VisObj3d world("w", nullptr);
    AK_Text2d text("t", nullptr);
    AK_Colorbar bar("b", nullptr);
    for (AK_Object* object : std::initializer_list<AK_Object*>{&visible, &overlay, &world, &text, &bar})
        ExpectKept(*object, object->Attributes());
    EXPECT_TRUE(bar.IsOfType("VisObj2d"));
    EXPECT_TRUE(world.IsOfType("VisibleObject"));
}

TEST_F(AK_VisibleObject_Attributes, NumbersThatAreNotFiniteAreRefused)
{
    AK_VisObj3d o("o", nullptr);
    const struct {
        const char *name, *bad, *kept;
    } cases[] = {
        {"Color",                "1 0",           "0.6 0.6 0.6"},
        {"Color",                "red",           "0.6 0.6 0.6"},
        {"PointSize",            "nan",           "1"          },
        {"LineWidth",            "1e39",          "1"          }, // no float
        {"Position",             "0 inf 0",       "0 0 0"      },
        {"Scale",                "-inf",          "1"          },
        {"TextureWorldPosX1",    "1e300 0",       "0 1"        },
        {"RotatedCopiesAxisDir", "0 0 0",         "0 0 1"      },
        {"RotatedCopiesAxisDir", "0 0 1e-7",      "0 0 1"      },
        {"RotatedCopiesAxisDir", "1e200 0 0",     "0 0 1"      },
        {"NumberOfRotatedCopies", "10001",        "0"          },
        {"NumberOfRotatedCopies", "-1",           "0"          }
    };
    for (const auto& c : cases) {
        EXPECT_NE(Set(o, c.name, c.bad), "") << c.name << " = " << c.bad;
        EXPECT_EQ(Get(o, c.name), c.kept) << c.name << " = " << c.bad;
    }
    EXPECT_EQ(Set(o, "Color", "0.1 1e-3 .5 and more"), "");
    EXPECT_EQ(Get(o, "Color"), "0.1 0.001 0.5");
}

TEST_F(AK_VisibleObject_Attributes, FloatsAreTextsThatGiveThemAgain)
{
    AK_VisibleObject o("o", nullptr);
    for (const char* text :
         {"1 0 0 0", "0.1 1e-05 0 3.40282e+38", "0.0005 0 0 -1300.1234", "16777215 0 0 0.33333334"}) {
        EXPECT_EQ(Set(o, "TextureParametersS", text), "");
        EXPECT_EQ(Get(o, "TextureParametersS"), text);
    }
}

// ----------------------------------------------------------------------------------------------------------------

using AK_VisibleObject_Update = VisibleTest;

TEST_F(AK_VisibleObject_Update, SetsTheStateInItsOrder)
{
    AK_VisibleObject o("o", nullptr);
    Set(o, "Color", "0.25 0.5 1");
    const RecordedCalls record;
    o.Update();
    EXPECT_EQ(record.Calls(), "DepthMask 1|Disable 3042|Color 0.25 0.5 1 1|Disable 2832|Disable 2848|PointSize 1|"
                              "LineWidth 1|PolygonMode 1032 6914|Disable 32823|Disable 10754|PolygonOffset 1 1|"
                              "Disable 2896|Disable 3168|Disable 3169|Disable 3553|");
    for (const char* flag : {"Blending", "AntialiasPoints", "AntialiasLines", "PolygonOffsetFill", "PolygonOffsetLine",
                             "Shaded", "AutoColored"})
        Set(o, flag, "1");
    Set(o, "PolygonsFilled", "0");
    Set(o, "Opacity", "0.5");
    Set(o, "PolygonOffsetFactors", "2 3");
    o.Update();
    EXPECT_EQ(record.Calls(), "DepthMask 0|Enable 3042|BlendFunc 770 771|Color 0 0 0 0.5|Enable 2832|Enable 2848|"
                              "PointSize 1|LineWidth 1|PolygonMode 1032 6913|Enable 32823|Enable 10754|"
                              "PolygonOffset 2 3|Enable 2896|Disable 3168|Disable 3169|Disable 3553|");
}

TEST_F(AK_VisibleObject_Update, LeavesOutWhatIsHiddenOrInactive)
{
    TestBox box("box", nullptr);
    AK_VisibleObject* component = new AK_VisibleObject("part", &box);
    box.AddComponent(component);
    const RecordedCalls record;
    for (const char* flag : {"Visibility", "Active"}) {
        Set(box, flag, "0");
        box.Update();
        EXPECT_EQ(record.Calls(), "") << flag;
        Set(box, flag, "1");
    }
    Set(*component, "Visibility", "0");
    box.Update();
    EXPECT_EQ(record.Calls("Begin"), "Begin 7|");
}

TEST_F(AK_VisibleObject_Update, OverlayPositionsCountFromTheFarEdge)
{
    AK_VisObj2d o("o", nullptr);
    const struct {
        const char *set, *shown;
    } cases[] = {
        {"0.25 1.5",       "0.25 1.5"  },
        {"-0.25 -1",       "0.75 0"    },
        {"-3.5 -0.125",    "0.5 0.875" },
        {"-1e20 -1e-20",   "-1e+20 1"  }  // 1 does not change the first; the second comes to the edge itself
    };
    for (const auto& c : cases) {
        Set(o, "Position", c.set);
        o.Update();
        EXPECT_EQ(Get(o, "Position"), c.shown) << c.set;
    }
}

}   // namespace
