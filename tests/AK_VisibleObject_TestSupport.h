// What tests of visible objects need: the classes with the descriptions that the program ships, a box as an object, and
// a table of drawing calls that writes down what it is asked for.

#pragma once

#include "AK_Colorbar.h"
#include "AK_Object_TestSupport.h"
#include "AK_VisObj3d.h"
#include "AK_sogl.h"

/// A box of given corners; draws its six faces. Type "TestBox".
class TestBox : public AK_Class<TestBox, AK_VisObj3d> {
public:
    static constexpr const char* className = "obj.TestBox\n";   // a description in place of a file
    static std::span<const Row> Rows() { return {}; }

    TestBox(const AK_String& id, AK_Object* parent) : AK_Class(id, parent)
    {
        if (!_attributes) _attributes = CreateAttributes(className, AK_VisObj3d::_attributes);
    }

    int BoundingBox(float* lo, float* hi) const override
    {
        if (isEmpty) return 0;
        std::copy_n(low, 3, lo);
        std::copy_n(high, 3, hi);
        return UpdateBoundingBox(lo, hi);
    }

    float low[3] = {0, 0, 0}, high[3] = {1, 1, 1};
    bool isEmpty = false;

protected:
    void Draw() override
    {
        aglBegin(GL_QUADS);
        for (int axis = 0; axis < 3; ++axis)
            for (int side = 0; side < 2; ++side) DrawFace(axis, side);
        aglEnd();
    }

private:
    void DrawFace(int axis, int side) const
    {
        float normal[3] = {0, 0, 0};
        normal[axis] = side ? 1 : -1;
        aglNormal3f(normal[0], normal[1], normal[2]);
        for (const auto& [u, v] : {std::pair{0, 0}, {1, 0}, {1, 1}, {0, 1}}) {
            float p[3];
            p[axis] = side ? high[axis] : low[axis];
            p[(axis + 1) % 3] = u ? high[(axis + 1) % 3] : low[(axis + 1) % 3];
            p[(axis + 2) % 3] = v ? high[(axis + 2) % 3] : low[(axis + 2) % 3];
            aglVertex3f(p[0], p[1], p[2]);
        }
    }
};

/// Base of the fixtures: files are looked up as in the program; class variables go to an empty directory.
class VisibleTest : public ObjectTest {
protected:
    VisibleTest()
    {
        for (const char* name : {"AK_VisibleObject", "AK_VisObj2d", "AK_VisObj3d", "AK_Text2d", "AK_Colorbar"})
            Describe(name, FileBytes(AK_String(KORVO_SOURCE_DIR "/files/AK_Attributes/") + name + ".atr"));
        Fresh<AK_VisibleObject, AK_VisObj2d, AK_VisObj3d, AK_Text2d, AK_Colorbar, TestBox>();
    }

    /// Sets an attribute and returns the status.
    static std::string Set(AK_Object& object, const char* attr, const AK_String& value)
    {
        EXPECT_EQ(object.Set(attr, value), 1) << attr;
        return Text(AK_Object::_execStatus);
    }
    static std::string Get(const AK_Object& object, const char* attr) { return Text(object.Get(attr)); }
};

/// Points the table of drawing calls at the no-operation layer in the end.
class RestoredTable {
public:
    RestoredTable() = default;
    RestoredTable(const RestoredTable&) = delete;
    RestoredTable& operator=(const RestoredTable&) = delete;
    ~RestoredTable()
    {
#define RESTORE(result, name, parameters, nothing) agl##name = nogl##name;
        AGL_RASTERISED_CALLS(RESTORE)
        AGL_HOST_CALLS(RESTORE)
#undef RESTORE
    }
};

/// While one lives, the calls that set state are written down, and so is where drawing takes place; textures get names
/// from 1 on, and making one fails with the code `error`.
class RecordedCalls : RestoredTable {
public:
    RecordedCalls()
    {
        error = 0;
        calls.clear();
        aglEnable = [](unsigned name) { Note("Enable", name); };
        aglDisable = [](unsigned name) { Note("Disable", name); };
        aglDepthMask = [](unsigned char flag) { Note("DepthMask", int(flag)); };
        aglBlendFunc = [](unsigned source, unsigned target) { Note("BlendFunc", source, target); };
        aglColor4f = [](float r, float g, float b, float alpha) { Note("Color", r, g, b, alpha); };
        aglPointSize = [](float size) { Note("PointSize", size); };
        aglLineWidth = [](float width) { Note("LineWidth", width); };
        aglPolygonMode = [](unsigned face, unsigned mode) { Note("PolygonMode", face, mode); };
        aglPolygonOffset = [](float factor, float units) { Note("PolygonOffset", factor, units); };
        aglFrontFace = [](unsigned mode) { Note("FrontFace", mode); };
        aglBegin = [](unsigned mode) { Note("Begin", mode); };
        aglTexCoord1f = [](float s) { Note("TexCoord", s); };
        aglGenTextures = [](int, unsigned* textures) { *textures = 1; };
        aglBindTexture = [](unsigned target, unsigned texture) { Note("BindTexture", target, texture); };
        aglTexParameteri = [](unsigned, unsigned name, int value) { Note("TexParameter", name, value); };
        aglTexGenfv = [](unsigned coordinate, unsigned, const float* v) { Note("Plane", coordinate, v[0], v[1], v[2], v[3]); };
        aglTexImage1D = [](unsigned, int, int, int, int, unsigned, unsigned, const void* data) {
            texels = static_cast<const unsigned char*>(data);
        };
        agluBuild2DMipmaps = [](unsigned, int, int width, int height, unsigned format, unsigned type, const void*) {
            Note("Build", width, height, format, type);
            return error;
        };
        agluErrorString = [](unsigned) { return "out of memory"; };
    }
    /// The calls since the last time, "Enable 3042|Color 1 0 0 1|"; with a name only those of that name.
    static std::string Calls(const std::string& name = "")
    {
        std::string text;
        for (const std::string& call : calls)
            if (call.compare(0, name.size(), name) == 0) text += call + "|";
        calls.clear();
        return text;
    }

    inline static int error = 0;
    inline static const unsigned char* texels = nullptr;

private:
    template <class... Numbers>
    static void Note(const char* name, Numbers... numbers)
    {
        std::ostringstream call;
        call << name;
        ((call << ' ' << numbers), ...);
        calls.push_back(call.str());
    }

    inline static std::vector<std::string> calls;
};
