// A small picture of visible objects, compared byte by byte with one that was looked at: boxes as clones and as rotated
// copies, a colour bar with steps and labels, one with a colour table, and a title.
//
// When a rule of drawing changes on purpose, the test leaves the new picture in its working directory: look at it, then
// put it in the place of tests/data/AK_visible_scene.ppm.

#include "AK_VisibleObject_TestSupport.h"
#include "AK_sogl_Canvas.h"

namespace
{

constexpr int width = 300, height = 200;

class AK_Colorbar_Scene : public VisibleTest {
protected:
    AK_Colorbar_Scene()
    {
        AK_SetSoglContext();
        AK_Object::_viewerWidth = width;
        AK_Object::_viewerHeight = height;
        AK_Object::SetAttributesDirectory(KORVO_SOURCE_DIR "/files/AK_Attributes");
        AK_Colorbar::_minColorToBackgroundFadingRange = 0.05f;
        AK_Colorbar::ColorTable("colorblind");
    }
    ~AK_Colorbar_Scene() override
    {
        AK_Object::_viewerWidth = AK_Object::_viewerHeight = 500;
        AK_Colorbar::_minColorToBackgroundFadingRange = 0;
        AK_Colorbar::ColorTable("none");
    }

    /// Sets attributes, "Shaded=1;Color=1 0 0", and draws the object.
    static void Draw(AK_Object& object, const std::string& assignments)
    {
        std::istringstream in(assignments);
        std::string assignment;
        while (std::getline(in, assignment, ';')) {
            const size_t equals = assignment.find('=');
            EXPECT_EQ(Set(object, assignment.substr(0, equals).c_str(), assignment.substr(equals + 1).c_str()), "")
                << assignment;
        }
        object.Update();
    }

    const RestoredTable table;
};

/// The host's part: a view from the south and above, 30 m wide, on the level below the tops.
void SetView()
{
    aglClearColor(1, 1, 1, 1);
    aglClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
    aglMatrixMode(GL_PROJECTION);
    aglOrtho(-15, 15, -10, 10, -40, 40);
    aglPushMatrix();
    aglMatrixMode(GL_MODELVIEW);
    aglRotatef(-50, 1, 0, 0);
    const float light[4] = {-0.4f, 0.2f, 1, 0};
    aglLightfv(GL_LIGHT0, GL_POSITION, light);
    aglPushMatrix();
}

TEST_F(AK_Colorbar_Scene, IsTheOneThatWasLookedAt)
{
    const Canvas canvas(width, height);
    SetView();

    TestBox clones("clones", nullptr), copies("copies", nullptr);
    Draw(clones, "Shaded=1;Color=0.9 0.6 0.3;Position=0.5 0.5 0;"
                 "CloneTrafos=scale 2 3 4\ncp 3\n2:trans 4 0 0\n3:rot 30 0 0 1\n3:trans 8 0 0\nscale 1 1 0.5\n"
                 "mirror 1 0 0\ntrans -1 2 0");
    std::copy_n(std::initializer_list<float>{2.5f, -0.6f, 0}.begin(), 3, copies.low);
    std::copy_n(std::initializer_list<float>{4, 0.6f, 2}.begin(), 3, copies.high);
    Draw(copies, "Shaded=1;Color=0.4 0.6 0.9;Position=-8 3 0;NumberOfRotatedCopies=7;RotatedCopiesAxisPoint=8 -3 0;"
                 "RotatedCopiesAxisVis=1");

    AK_Colorbar range("range", nullptr), steps("steps", nullptr);
    range.Label("sim peak flow depth [m] at 300");
    Draw(range, "Size=0.5 0.06;Max=5;Segments=5;DisplayInterLabels=1");
    steps.Label("dynamic peak pressure [kPa]");
    Draw(steps, "Size=0.35 0.05;HorizontalAlignment=left;VerticalAlignment=top;Position=0.01 -0.02;Autoscale=0;Max=100;"
                "ArbitrarySteps=1;StepValues=3 10 30;DiscreteColors=1;DisplayInterLabels=1;Font=TIMES_ROMAN_10;"
                "NumSignificantDigits=3");
    AK_Text2d title("title", nullptr);
    Draw(title, "Position=-0.35 -0.1;AutoColored=0;Color=0.7 0 0;Font=8_BY_13;Text=Two lines\nof a title");

    std::vector<unsigned char> pixels;
    for (int i = 0; i < width * height; ++i)
        for (const unsigned char* plane : {soglBufR, soglBufG, soglBufB}) pixels.push_back(plane[i]);
    ASSERT_EQ(aglWritePpmFile("AK_visible_scene.ppm", width, height, 8, pixels.data()), 0);
    EXPECT_TRUE(FileBytes("AK_visible_scene.ppm") == FileBytes(KORVO_SOURCE_DIR "/tests/data/AK_visible_scene.ppm"))
        << "the picture has changed: AK_visible_scene.ppm";
}

}   // namespace
