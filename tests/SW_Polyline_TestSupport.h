// What tests of line objects share: a project with terrain and containers, files, and lines from texts.

#pragma once

#include "AK_Object_TestSupport.h"
#include "AK_Text2d.h"
#include "SW_Mesh_Container.h"
#include "SW_Polygon.h"
#include "SW_Polyline_Container.h"
#include "SW_Polyline_Labels.h"
#include "SW_Polyline_Set.h"

#include <sstream>

/// "x y z; x y z" as a list; a missing z is 0.
inline AK_List<AK_Vec> Points(const std::string& text)
{
    AK_List<AK_Vec> points(1);
    std::istringstream all(text);
    for (std::string one; std::getline(all, one, ';');) {
        std::istringstream numbers(one);
        AK_Vec p;
        numbers >> p.x >> p.y;
        if (!(numbers >> p.z)) p.z = 0;
        points.Append(p);
    }
    return points;
}

/// The inverse: "x y z;x y z".
inline std::string Text(const AK_List<AK_Vec>& points)
{
    std::string text;
    for (const AK_Vec& p : points) text += (text.empty() ? "" : ";") + std::string(AK_ToText(p, nullptr).c_str());
    return text;
}

/// A line of a file or object in one text: what it is called, its points.
inline std::string Text(const std::string& name, const AK_List<AK_Vec>& points) { return name + ": " + Text(points); }

/// A tree like that of the program: Viewer, Project, and in it DHMs, Polylines, Polygons, Labels.
class LineTest : public ObjectTest {
protected:
    LineTest()
    {
        for (const char* name : {"AK_Container", "AK_Group", "AK_VisibleObject", "AK_VisObj2d", "AK_VisObj3d",
                                 "AK_Text2d", "SW_Mesh", "SW_Meshes", "SW_Polyline", "SW_PolylineSet", "SW_Polylines",
                                 "SW_Polygon", "SW_Polygons", "SW_MeshContourPolygon", "SW_Labels"})
            Describe(name, FileBytes(AK_String(KORVO_SOURCE_DIR "/files/AK_Attributes/") + name + ".atr"));
        Fresh<AK_Container, AK_VisibleObject, AK_VisObj2d, AK_VisObj3d, AK_Text2d, SW_Mesh, SW_Meshes, SW_Polyline,
              SW_PolylineSet, SW_Polylines, SW_Polygon, SW_Polygons, SW_MeshContourPolygon, SW_Labels>();
        viewer = std::make_unique<AK_Container>("Viewer", nullptr);
        project = Add<AK_Container>(*viewer, "Project");
        meshes = Add<SW_Meshes>(*project, "DHMs");
        polylines = Add<SW_Polylines>(*project, "Polylines");
        polygons = Add<SW_Polygons>(*project, "Polygons");
        Messages();
    }

    template <class T>
    static T* Add(AK_Object& parent, const char* id)
    {
        auto* object = new T(id, &parent);
        parent.AddComponent(object);
        return object;
    }

    SW_Polyline* AddLine(const char* id, const std::string& points)
    {
        auto* line = Add<SW_Polyline>(*polylines, id);
        SetPoints(*line, points);
        return line;
    }
    SW_Polygon* AddPolygon(const char* id, const std::string& points)
    {
        auto* polygon = Add<SW_Polygon>(*polygons, id);
        SetPoints(*polygon, points);
        return polygon;
    }
    static void SetPoints(SW_Polyline& line, const std::string& points)
    {
        AK_Polyline data = line.Line();
        data._x = Points(points);
        line.SetLine(data);
    }

    /// A plane z = slope * x over 0 to 100 m in x and y, cells of 10 m.
    SW_Mesh* AddPlane(const char* id, double slope)
    {
        SW_Mesh* mesh = meshes->CreateMesh(id);
        const SW_Grid grid{10, 10, 10, 10, {0, 0}, {100, 100}};
        for (int i = 0; i <= grid.nx; ++i)
            for (int j = 0; j <= grid.ny; ++j) mesh->AddVertex({i * grid.dx, j * grid.dx, i * grid.dx * slope});
        mesh->SetCartesianCells(grid);
        mesh->ComputeConnectivity();
        mesh->ComputeVertexNormals();
        Messages();
        return mesh;
    }

    /// Writes a file into the test's directory and returns its path.
    AK_String File(const char* name, const std::string& bytes)
    {
        WriteFile(directory / name, bytes);
        return directory / name;
    }

    /// Sets an attribute and returns the status.
    static std::string SetOn(AK_Object& object, const char* attr, const AK_String& value)
    {
        EXPECT_EQ(object.Set(attr, value), 1) << attr;
        return AK_Object::_execStatus.c_str();
    }

    /// Ids and points of the lines of a container, in order.
    static Lines LinesOf(const AK_Object& container)
    {
        Lines lines;
        for (int i = 0; i < container.NumComponents(); ++i) {
            const auto* line = dynamic_cast<const SW_Polyline*>(container.ComponentAt(i));
            if (line) lines.push_back(Text(line->Id().c_str(), line->Points()));
        }
        return lines;
    }

    static Lines LinesOf(const SW_PolylineSet& set)
    {
        Lines lines;
        for (int i = 0; i < set.Size(); ++i) lines.push_back(Text(set.Name(i).c_str(), set.Line(i)._x));
        return lines;
    }

    std::unique_ptr<AK_Container> viewer;
    AK_Container* project = nullptr;
    SW_Meshes* meshes = nullptr;
    SW_Polylines* polylines = nullptr;
    SW_Polygons* polygons = nullptr;
};

/// Writes an object's record, lets `other` read it, and expects that every shorter file is refused.
template <class T>
void ExpectRecordRoundTrip(const T& object, T& other, const AK_String& path,
                           const std::function<std::string(const T&)>& text)
{
    {
        AK_Stream stream(path, "wb");
        EXPECT_EQ(object.SaveData(stream), 0);
    }
    {
        AK_Stream stream(path, "rb");
        EXPECT_EQ(other.LoadData(stream), 0);
    }
    EXPECT_EQ(text(other), text(object));
    const std::string bytes = FileBytes(path);
    for (size_t length = 0; length < bytes.size(); ++length) {
        WriteFile(path, bytes.substr(0, length));
        AK_Stream stream(path, "rb");
        EXPECT_EQ(other.LoadData(stream), 1) << "cut after " << length;
        EXPECT_TRUE(AK_Object::_execStatus.StartsWith((other.IdAbs() + ": IO error at src/SW_Poly").c_str()))
            << AK_Object::_execStatus;
        EXPECT_EQ(text(other), text(object)) << "what was loaded before is lost";
    }
}
