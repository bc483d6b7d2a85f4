// Colour bar: label, range, steps, memory per unit, colours and colour tables.

#include "AK_VisibleObject_TestSupport.h"

namespace
{

class AK_ColorbarTest : public VisibleTest {
protected:
    AK_ColorbarTest() : bar("Colorbar", nullptr)
    {
        AK_Colorbar::ColorTable("none");
        AK_Colorbar::_greyscale = 0;
        AK_Colorbar::_minColorToBackgroundFadingRange = 0;
    }

    /// Sets attributes, "Autoscale=0;Min=2"; returns the status of the last one.
    std::string Apply(const std::string& assignments)
    {
        std::istringstream in(assignments);
        std::string assignment, status;
        while (std::getline(in, assignment, ';')) {
            const size_t equals = assignment.find('=');
            status = Set(bar, assignment.substr(0, equals).c_str(), assignment.substr(equals + 1).c_str());
        }
        return status;
    }

    std::string Steps() const
    {
        std::string steps;
        const int n = bar.NumSteps();
        for (int i = 0; i <= n; ++i) steps += (i ? " " : "") + Text(AK_String(bar.Step(i), "%g"));
        return steps;
    }

    static std::string ValueColor(float v)
    {
        float rgb[3];
        AK_Colorbar::GetValueColor(v, rgb[0], rgb[1], rgb[2]);
        return Text(AK_String(rgb, 3));
    }

    static std::string TableColor(int i)
    {
        float rgb[3];
        AK_Colorbar::GetTableColor(i, rgb[0], rgb[1], rgb[2]);
        return Text(AK_String(rgb, 3));
    }

    AK_Colorbar bar;
};

// ----------------------------------------------------------------------------------------------------------------
// Label, range, steps
// ----------------------------------------------------------------------------------------------------------------

TEST_F(AK_ColorbarTest, LabelsNameUnitAndAttribute)
{
    const struct {
        const char *label, *unit, *attribute, *shortForm;
    } cases[] = {
        {"sim peak flow depth [m] at 10", "m",    "peak flow depth", "pfd"},
        {"depth [m] at 10:30",            "m",    "",                ""   },
        {"sim velocity [m/s] at 3",       "m/s",  "velocity",        "v"  },
        {"[kPa]",                         "kPa",  "",                ""   },
        {"x ] y [m]",                     "",     "] y",             ""   },
        {"sim:flow depth:m at 10",        "m",    "flow depth",      "fd" },
        {"sim:depth:m",                   "m",    "depth",           ""   },
        {"depth:m",                       "m",    "depth",           ""   },
        {"sim:velocity:m/s:vec.x at 3",   "m/s",  "velocity",        "v"  },
        {"speed:vec.",                    "speed", "",               ""   },
        {"a:vec.b:c",                     "c",    "vec.b",           ""   },
        {"Colorbar",                      "",     "",                ""   },
        {"",                              "",     "",                ""   },
        {":",                             "",     "",                ""   }
    };
    for (const auto& c : cases) {
        bar.Label(c.label);
        EXPECT_EQ(Get(bar, "Label"), c.label);
        EXPECT_EQ(Get(bar, "Unit"), c.unit) << c.label;
        EXPECT_EQ(Get(bar, "Attribute"), c.attribute) << c.label;
        EXPECT_EQ(Get(bar, "AttributeShort"), c.shortForm) << c.label;
    }
}

TEST_F(AK_ColorbarTest, StepsAreEqualOrChosen)
{
    const struct {
        const char *set, *steps;
    } cases[] = {
        {"Max=10;Segments=4",                                  "0 2.5 5 7.5 10"},
        {"Autoscale=0;ArbitrarySteps=1;StepValues=1 5 3",      "0 1 5 3 10"    }, // the order stays
        {"StepValues=0 10 -1 11 4",                            "0 4 10"        }, // strictly between
        {"StepValues=  x 2 nan 3m  5 inf",                     "0 2 3 5 10"    },
        {"StepValues=",                                        "0 10"          },
        {"Min=10;StepValues=10",                               "10 10"         },
        {"ArbitrarySteps=0;Min=1;Max=-1;Segments=2",           "1 0 -1"        }
    };
    for (const auto& c : cases) {
        EXPECT_EQ(Apply(c.set), "") << c.set;
        EXPECT_EQ(Steps(), c.steps) << c.set;
    }
    for (const char* bad : {"Segments=0", "Segments=-3", "Segments=10001", "NumSignificantDigits=0",
                            "NumSignificantDigits=18"})
        EXPECT_NE(Apply(bad), "") << bad;
    EXPECT_EQ(Get(bar, "Segments") + Get(bar, "NumSignificantDigits"), "25");
    Apply("ArbitrarySteps=1");
    EXPECT_EQ(bar.Step(7), bar.Max()) << "a step that is not there";
}

// ----------------------------------------------------------------------------------------------------------------
// Memory per unit
// ----------------------------------------------------------------------------------------------------------------

TEST_F(AK_ColorbarTest, RemembersTheRangeOfAUnit)
{
    double min = 1, max = 2.5;
    EXPECT_EQ(AK_Colorbar::GetUnitScaling("", min, max), 0);
    EXPECT_EQ(AK_Colorbar::_classVariables.Size(), 1) << "only the marker";
    EXPECT_EQ(AK_Colorbar::GetUnitScaling("m", min, max), 0) << "the first one seen";
    EXPECT_EQ(AK_Colorbar::_classVariables[1], "scaling.m=1 2.5");
    min = max = 0;
    EXPECT_EQ(AK_Colorbar::GetUnitScaling("m", min, max), 1);
    EXPECT_EQ(min + max, 3.5);

    bar.Label("sim peak flow depth [m]");
    Apply("Max=7");
    EXPECT_EQ(AK_Colorbar::_classVariables[1], "scaling.m=1 2.5") << "a range that follows the data is not remembered";
    Apply("Autoscale=0;Min=0.1;Max=4");
    EXPECT_EQ(AK_Colorbar::_classVariables[1], "scaling.m=0.1 4");

    AK_Colorbar other("other", nullptr);
    other.Label("flow depth [m]");
    other.Update();
    EXPECT_EQ(Get(other, "Max"), "1") << "it follows its data";
    Set(other, "Autoscale", "0");
    other.Update();
    EXPECT_EQ(Get(other, "Min") + " " + Get(other, "Max"), "0.1 4");
    Set(other, "Max", "9");
    bar.Update();
    EXPECT_EQ(Get(bar, "Min") + " " + Get(bar, "Max"), "0.1 4") << "the range that was fixed here";
    for (const char* none : {"", "abc", "nan", "-inf", "1e999"}) {
        bar.Set("Max", none);
        EXPECT_FALSE(AK_Object::_execStatus.IsEmpty()) << none;
        EXPECT_EQ(Get(bar, "Max"), "4") << none;
    }
    Apply("Autoscale=1");
    bar.FollowData("-1", "nan");
    EXPECT_EQ(Get(bar, "Min") + " " + Get(bar, "Max"), "0.1 4") << "data that are no numbers have no range";
    bar.FollowData("-1", "3");
    EXPECT_EQ(Get(bar, "Min") + " " + Get(bar, "Max"), "-1 3");
    Apply("Autoscale=0");
    bar.Update();
    EXPECT_EQ(Get(bar, "Min") + " " + Get(bar, "Max"), "0.1 9") << "what was chosen last for the unit";
    Apply("Min=0.1;Max=4");

    AK_Colorbar::_classVariables[1] = "scaling.m=0.2 many";
    EXPECT_EQ(AK_Colorbar::GetUnitScaling("m", min, max), 0);
}

TEST_F(AK_ColorbarTest, RemembersTheStepsOfAUnitAcrossRuns)
{
    bar.Label("sim dynamic peak pressure [kPa]");
    Apply("Autoscale=0;Max=100;StepValues=5");
    AK_String steps;
    EXPECT_EQ(AK_Colorbar::GetUnitSteps("", steps), 0);
    Apply("ArbitrarySteps=1;StepValues=3 30");
    EXPECT_EQ(AK_Colorbar::GetUnitSteps("kPa", steps), 1);
    EXPECT_EQ(Text(steps), "3 30");
    Apply("Autoscale=0");
    EXPECT_EQ(Get(bar, "StepValues"), "") << "emptied";
    bar.Update();
    EXPECT_EQ(Get(bar, "StepValues"), "3 30") << "and recalled";

    EXPECT_EQ(bar.SaveClassVariables(), 0);
    EXPECT_EQ(FileBytes(directory / "home/.korvo/AK_Colorbar.clv"), "scaling.kPa=0 100\nsteps.kPa=3 30\n");
    Apply("Max=50");
    EXPECT_EQ(bar.SaveClassVariables(), 0);
    EXPECT_EQ(FileBytes(directory / "home/.korvo/AK_Colorbar.clv"), "scaling.kPa=0 50\nsteps.kPa=3 30\n") << "anew";
    AK_Colorbar::_classVariables.Clear();
    AK_Object::ReadClassVariables("AK_Colorbar", AK_Colorbar::_classVariables);
    double min, max;
    EXPECT_EQ(AK_Colorbar::GetUnitScaling("kPa", min, max), 1);
    EXPECT_EQ(max, 50);
}

// ----------------------------------------------------------------------------------------------------------------
// Colours
// ----------------------------------------------------------------------------------------------------------------

TEST_F(AK_ColorbarTest, ValuesGoFromBlueOverGreenToRed)
{
    const struct {
        float v;
        const char* color;
    } cases[] = {
        {-1,    "0 0 1"    },
        {0,     "0 0 1"    },
        {0.125, "0 0.5 1"  },
        {0.25,  "0 1 1"    },
        {0.5,   "0 1 0"    },
        {0.625, "0.5 1 0"  },
        {1,     "1 0 0"    },
        {9,     "1 0 0"    }
    };
    for (const auto& c : cases) EXPECT_EQ(ValueColor(c.v), c.color) << c.v;

    Apply("MinColorToBackgroundFadingRange=0.5");
    EXPECT_EQ(ValueColor(0), "1 1 1") << "the background";
    EXPECT_EQ(ValueColor(0.25), "0.5 1 1");
    EXPECT_EQ(ValueColor(0.5), "0 1 0");
    Apply("MinColorToBackgroundFadingRange=0;Greyscale=1");
    EXPECT_EQ(ValueColor(0) + "|" + ValueColor(1), "0.95 0.95 0.95|0 0 0");
}

TEST_F(AK_ColorbarTest, TablesAreReadFromTheAttributeDirectories)
{
    EXPECT_EQ(TableColor(3), "0.5 0.5 0.5");
    ClassFile("mine.rgb", "# a comment\n0.1 0.2 0.3 and more\n\n  -1 2 0.5\n0.1 0.2\n");
    ClassFile("empty.rgb", "# nothing\n1 2\n");
    ClassFile("long.rgb", std::string(300, '#') + "\n1 1 1\n");
    WriteFile(directory / "user/mine.rgb", "1 0 0\n");
    EXPECT_EQ(Listed(bar.Get("ColorTableOptions")), (Lines{"none", "empty", "long", "mine"}));

    AK_System::RemoveFile(directory / "user/mine.rgb");
    Apply("ColorTable=mine");
    EXPECT_EQ(TableColor(0) + "|" + TableColor(1) + "|" + TableColor(2), "0.1 0.2 0.3|0 1 0.5|0.1 0.2 0.3");
    EXPECT_EQ(Get(bar, "GreyscaleVis"), "-");

    Messages();
    Apply("ColorTable=missing");
    EXPECT_EQ(Messages(), Lines{"W: cannot open color table file " + Text(directory / "attributes/missing.rgb")});
    EXPECT_EQ(Get(bar, "ColorTable") + " " + TableColor(0), "mine 0.1 0.2 0.3");
    Apply("ColorTable=empty");
    EXPECT_EQ(Messages(), Lines{"W: no rgb-colors could be read from " + Text(directory / "attributes/empty.rgb")});
    EXPECT_EQ(Get(bar, "ColorTable") + " " + TableColor(0), "none 0.5 0.5 0.5");
    Apply("ColorTable=long");
    EXPECT_EQ(TableColor(5), "1 1 1");
    Apply("ColorTable=none");
    EXPECT_EQ(TableColor(5), "0.5 0.5 0.5");
}

TEST_F(AK_ColorbarTest, ShippedTablesGoOneWayInBrightness)
{
    AK_Object::SetAttributesDirectory(KORVO_SOURCE_DIR "/files/AK_Attributes");
    for (const char* name : {"depth", "pressure", "velocity", "colorblind"}) {
        AK_Colorbar::ColorTable(name);
        const auto& colors = AK_Colorbar::_tableColors;
        ASSERT_GE(colors.Size(), 3 * 8) << name;
        const bool darker = std::string(name) != "colorblind";
        for (int i = 3; i < colors.Size(); i += 3) {
            const auto brightness = [&](int at) {
                return 0.3 * colors[at] + 0.59 * colors[at + 1] + 0.11 * colors[at + 2];
            };
            const double change = brightness(i) - brightness(i - 3);
            EXPECT_GT(darker ? -change : change, 0.04) << name << ", colour " << i / 3;
        }
    }
}

TEST_F(AK_ColorbarTest, ColoursWhatIsDrawnNext)
{
    const RecordedCalls record;
    Apply("Max=10");
    bar.SetColor(5, 0.25f);
    bar.SetColor(-3, 1);
    EXPECT_EQ(record.Calls(), "Color 0 1 0 0.25|Color 0 0 1 1|") << "without a texture";
    Apply("Transparent=1");
    bar.SetColor(5, 1);
    EXPECT_EQ(record.Calls(), "");
    Apply("Transparent=0;Max=0");
    bar.SetColor(1, 1);
    EXPECT_EQ(record.Calls(), "Color 1 0 0 1|") << "a range without width";

    // With a texture of 1024 pixels: 10 steps of 102 use 1020 of them.
    ClassFile("two.rgb", "1 0 0\n0 0 1\n");
    Apply("Max=10;DiscreteColors=1;ColorTable=two");
    bar.Update();
    const unsigned char* texels = RecordedCalls::texels;
    EXPECT_EQ(std::vector<int>(texels + 3 * 101, texels + 3 * 103), (std::vector<int>{255, 0, 0, 0, 0, 255}));
    EXPECT_EQ(texels[3 * 1023 + 2], 255) << "the last colour goes on";
    record.Calls();
    bar.SetColor(5, 1);
    EXPECT_EQ(record.Calls(), "TexCoord 0.498047|");   // 0.5 * 1020 / 1024

    // Chosen steps: 0 1 5 3 10, equally wide; the first whose upper limit is not below the value.
    Apply("Autoscale=0;DiscreteColors=0;ArbitrarySteps=1;StepValues=1 5 3");
    bar.Update();
    bar.BeginColor();
    record.Calls();
    for (const double value : {0.5, 3.0, 5.0, 6.5, 11.0}) bar.SetColor(value, 1);
    EXPECT_EQ(record.Calls(), "TexCoord 0.125|TexCoord 0.375|TexCoord 0.5|TexCoord 0.875|TexCoord 1|");
    bar.EndColor();
    EXPECT_EQ(record.Calls(), "Disable 3552|");
}

}   // namespace
