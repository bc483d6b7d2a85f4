// Pictures on objects: halving, reading, parameter and world files, and parameters that are worked out.

#include "AK_VisibleObject_TestSupport.h"

namespace
{

class AK_VisibleObject_Texture : public VisibleTest {
protected:
    /// A grey picture of that size; with 16 bits a colour if the maximum says so.
    AK_String Picture(const char* name, int width, int height, int maximum = 255)
    {
        const size_t bytes = size_t(width * height) * (maximum > 255 ? 6 : 3);
        std::ostringstream file;
        file << "P6\n" << width << " " << height << "\n" << maximum << "\n" << std::string(bytes, 'x');
        WriteFile(directory / name, file.str());
        return directory / name;
    }

    /// Where a point of the object lies in the picture, by the attributes.
    static std::string PlaceOf(const AK_Object& object, double x, double y)
    {
        float s[4], t[4];
        object.Get("TextureParametersS").f4(s);
        object.Get("TextureParametersT").f4(t);
        const auto rounded = [](double share) { return std::round(share * 1e4) / 1e4 + 0.0; };
        const double place[2] = {rounded(s[0] * x + s[1] * y + s[3]), rounded(t[0] * x + t[1] * y + t[3])};
        return Text(AK_String(place, 2));
    }
};

TEST_F(AK_VisibleObject_Texture, HalvingAveragesBlocksOfFour)
{
    const struct {
        const char* why;
        int width, height, depth;
        std::vector<unsigned char> image, halved;
        int halfWidth, halfHeight;
    } cases[] = {
        {"rounds half up, each channel by itself", 2, 2, 2, {0, 9, 0, 9, 1, 9, 1, 10}, {1, 9}, 1, 1},
        {"no overflow of a byte", 2, 2, 1, {255, 255, 255, 255}, {255}, 1, 1},
        {"loses an odd last row and column", 3, 3, 1, {1, 1, 99, 1, 1, 99, 99, 99, 99}, {1}, 1, 1},
        {"blocks side by side, rows of blocks", 4, 4, 1, {1, 1, 2, 2, 1, 1, 2, 2, 3, 3, 4, 4, 3, 3, 4, 4},
         {1, 2, 3, 4}, 2, 2},
        {"one row stays", 4, 1, 1, {1, 2, 3, 4}, {1, 2, 3, 4}, 4, 1},
    };
    for (const auto& c : cases) {
        std::vector<unsigned char> image = c.image;
        int width = c.width, height = c.height;
        AK_VisibleObject::HalfSize(image.data(), &width, &height, c.depth);
        image.resize(c.halved.size());
        EXPECT_EQ(image, c.halved) << c.why;
        EXPECT_EQ(std::pair(width, height), std::pair(c.halfWidth, c.halfHeight)) << c.why;
    }
}

TEST_F(AK_VisibleObject_Texture, IsReadHalvedAndHandedOver)
{
    AK_VisibleObject o("o", nullptr);
    const std::string name = Text(Picture("map.ppm", 21, 10));
    const RecordedCalls record;
    Set(o, "TextureMaxSize", "6");
    Set(o, "TextureRepeat", "1");
    Set(o, "TextureFileName", name.c_str());
    EXPECT_EQ(Messages(), Lines()) << "nothing is read before it is to be shown";
    Set(o, "Textured", "1");
    EXPECT_EQ(Messages(), (Lines{"loading texture file " + name, "loaded texture from file " + name + ", size is 21 x 10",
                                 "scaling texture size down to 10 x 5", "scaling texture size down to 5 x 2"}));
    EXPECT_EQ(record.Calls(), "BindTexture 3553 1|TexParameter 10242 10497|TexParameter 10243 10497|"
                              "TexParameter 10240 9985|TexParameter 10241 9985|Build 5 2 6407 5121|");
    Set(o, "TextureRepeat", "0");
    EXPECT_EQ(record.Calls("TexParameter 1024"), "TexParameter 10242 10496|TexParameter 10243 10496|"
                                                 "TexParameter 10240 9985|TexParameter 10241 9985|");
    Set(o, "TextureParametersT", "0 2 0 1");
    record.Calls();
    o.Update();
    EXPECT_NE(record.Calls().find("BindTexture 3553 1|Plane 8192 1 0 0 0|Plane 8193 0 2 0 1|Enable 3168|Enable 3169|"
                                  "Enable 3553|"),
              std::string::npos);
    Messages();
    Set(o, "TextureMaxSize", "0");
    EXPECT_EQ(Messages().back(), "scaling texture size down to 2 x 1") << "halving ends";
    RecordedCalls::error = 1285;
    Set(o, "TextureMaxSize", "100");
    EXPECT_EQ(Messages().back(), "WARNING: could not apply texture due to OpenGL-error out of memory! Please try to "
                                 "reduce texture image size!");
    EXPECT_EQ(Get(o, "Textured"), "1");
}

TEST_F(AK_VisibleObject_Texture, ThatCannotBeUsedIsSwitchedOff)
{
    AK_VisibleObject o("o", nullptr);
    const std::string deep = Text(Picture("deep.ppm", 2, 2, 65535));
    const struct {
        std::string name, message;
    } cases[] = {
        {"/no/such.ppm", "loading texture from file /no/such.ppm failed - deactivating texturing!"},
        {deep,           "textures with color depth > 8 bits are not supported"                   },
    };
    for (const auto& c : cases) {
        Set(o, "TextureFileName", c.name.c_str());
        EXPECT_EQ(Set(o, "Textured", "1"), "");
        EXPECT_EQ(Messages().back(), c.message);
        EXPECT_EQ(Get(o, "Textured"), "0");
    }
    Set(o, "TextureFileName", Picture("good.ppm", 2, 2));
    Set(o, "Textured", "1");   // on the no-operation layer
    EXPECT_EQ(Messages().back(), "WARNING: could not apply texture due to OpenGL-error ! Please try to reduce texture "
                                 "image size!");
}

TEST_F(AK_VisibleObject_Texture, BringsItsPlace)
{
    AK_VisibleObject o("o", nullptr);
    Set(o, "Textured", "1");

    // Pixels of 10 m, the centre of the upper left one at (1005, 2095): the picture covers 1000 to 1040 by 2000 to 2100.
    WriteFile(directory / "map.pmw", "10 0\n0 -10\n1005 2095\n");
    Set(o, "TextureFileName", Picture("map.ppm", 4, 10));
    EXPECT_EQ(PlaceOf(o, 1000, 2000), "0 0");
    EXPECT_EQ(PlaceOf(o, 1040, 2025), "1 0.25");

    // Columns to the north, rows to the east, 1 m: the upper left corner of the picture is in the south west.
    WriteFile(directory / "turned.JGW", "0 1 1 0 0.5 0.5");
    Set(o, "TextureFileName", Picture("turned.JPG", 2, 4));
    EXPECT_EQ(PlaceOf(o, 0, 0), "0 1");
    EXPECT_EQ(PlaceOf(o, 4, 2), "1 0");

    // A parameter file wins over the world file, and what is set later over both.
    WriteFile(directory / "map.texpar", "1 2 3 4\n5 6 7 8e-1\n");
    Set(o, "TextureFileName", directory / "map.ppm");
    EXPECT_EQ(Get(o, "TextureParametersS") + "|" + Get(o, "TextureParametersT"), "1 2 3 4|5 6 7 0.8");
    Set(o, "TextureParametersS", "0 0 0 1");
    Set(o, "TextureMaxSize", "2");
    EXPECT_EQ(Get(o, "TextureParametersS"), "0 0 0 1");

    // Files that say nothing leave the parameters as they are.
    Messages();
    for (const char* bad : {"", "1 2 3 4 5 6 7", "1 2 3 4 5 6 7 inf"}) {
        WriteFile(directory / "map.texpar", bad);
        WriteFile(directory / "map.pmw", "1 1 2 2 0 0");   // the same direction for columns and rows
        Set(o, "TextureFileName", directory / "map.ppm");
        EXPECT_EQ(Get(o, "TextureParametersS"), "0 0 0 1");
        const Lines messages = Messages();
        EXPECT_EQ(messages[messages.size() - 2],
                  "W: no texture parameters could be read from " + Text(directory / "map.texpar"));
        EXPECT_EQ(messages.back(), "W: no geo-referencing could be read from " + Text(directory / "map.pmw"));
    }
}

TEST_F(AK_VisibleObject_Texture, ParametersAreSavedAndFound)
{
    AK_VisibleObject o("o", nullptr);
    EXPECT_NE(Set(o, "SaveTexPar", ""), "") << "no picture";
    Set(o, "TextureFileName", Picture("map.ppm", 2, 2));
    Set(o, "TextureParametersS", "0.1 0 0 -1300.1234");
    EXPECT_EQ(Set(o, "SaveTexPar", ""), "");
    EXPECT_EQ(Messages().back(), "INFO: texture parameter saved to " + Text(directory / "map.texpar"));
    EXPECT_EQ(FileBytes(directory / "map.texpar"), "0.1 0 0 -1300.1234\n0 1 0 0\n");
    EXPECT_EQ(Set(o, "SaveTexPar", "/no/such/x.ppm"), "cannot open /no/such/x.texpar");
    EXPECT_EQ(Messages().back(), "ERROR: cannot open /no/such/x.texpar");

    AK_VisibleObject other("other", nullptr);
    Set(other, "TextureFileName", directory / "map.ppm");
    Set(other, "Textured", "1");
    EXPECT_EQ(Get(other, "TextureParametersS"), "0.1 0 0 -1300.1234");
}

TEST_F(AK_VisibleObject_Texture, IsFittedToTheBox)
{
    TestBox box("box", nullptr);
    const float low[3] = {100, -50, 3}, high[3] = {300, 50, 4};
    std::copy_n(low, 3, box.low);
    std::copy_n(high, 3, box.high);
    EXPECT_EQ(Set(box, "TextureFit", ""), "");
    EXPECT_EQ(Get(box, "TextureParametersS"), "0.005 0 0 -0.5");
    EXPECT_EQ(Get(box, "TextureParametersT"), "0 0.01 0 0.5");
    box.high[0] = box.low[0];
    EXPECT_NE(Set(box, "TextureFit", ""), "");
    box.isEmpty = true;
    EXPECT_EQ(Set(box, "TextureFit", ""), "");
    EXPECT_EQ(Get(box, "TextureParametersS"), "0.005 0 0 -0.5");
}

TEST_F(AK_VisibleObject_Texture, IsReferencedByThreePoints)
{
    AK_VisibleObject o("o", nullptr);
    Set(o, "TextureParametersS", "1 0 9 0");   // the coefficient of z goes
    const char* world[3] = {"692000 160000", "692000 161000", "694000 160500"};
    for (int i = 0; i < 3; ++i) Set(o, (std::string("TextureWorldPosX") + char('0' + i)).c_str(), world[i]);
    EXPECT_EQ(Set(o, "ApplyTextureReference", ""), "");
    EXPECT_EQ(PlaceOf(o, 692000, 160000), "0 0");
    EXPECT_EQ(PlaceOf(o, 692000, 161000), "0 1");
    EXPECT_EQ(PlaceOf(o, 694000, 160500), "1 0");
    EXPECT_EQ(Get(o, "TextureParametersS"), "0.0005 0 0 -346");

    const std::string before = Get(o, "TextureParametersT");
    Set(o, "TextureWorldPosX2", "692000 162000");
    EXPECT_EQ(Set(o, "ApplyTextureReference", ""), "the three reference points in the world lie on one line");
    EXPECT_EQ(Get(o, "TextureParametersT"), before);
}

}   // namespace
