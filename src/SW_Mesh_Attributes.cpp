// What a user sees of a mesh: its attributes and commands.

#include "SW_Mesh.h"

#include "SW_Mesh_Contour.h"

#include "AK_Text2d.h"

static AK_String HeightAt(const SW_Mesh& mesh, const AK_Vec2& p)
{
    AK_Vec point{p.x, p.y, 0};
    mesh.Project(point, -1);   // outside it stays 0
    return AK_ToText(point.z, nullptr);
}

static AK_String NormalAt(const SW_Mesh& mesh, const AK_Vec2& p)
{
    const int cell = mesh.CellContainingPoint(p, -1);
    return cell < 0 ? AK_String("0 0 1") : AK_ToText(Normalized(mesh.CellNormal(cell)), nullptr);
}

AK_String SW_Mesh::MeshNamesList() const { return SW_PathsOfType(*this, "DHM"); }

std::span<const AK_Row> SW_Mesh::Rows()
{
    using S = SW_Mesh;
    using Text = const AK_String&;
    static constexpr Row rows[] = {
        {"Import", command<[](S& m, Text path) { m.Import(path, 0); }>},
        {"Export", command<&S::Export>},
        {"ExportContourLines", command<&S::ExportContourLines>},
        {"NumNoDataValueInterpolationIterations", value<&S::_numNoDataIterations>},
        {"Projection", value<&S::_projection>},
        {"InsertBreakLines", command<&S::InsertBreakLines>},
        {"InsertBreakLine", command<&S::InsertBreakLine>},

        {"NumVertices", shown<&S::NumVertices>},
        {"NumCells", shown<&S::NumCells>},
        {"RegularGrid", shown<[](const S& m) { return m._isCartesian ? "1" : "0"; }>},
        {"Resolution", shown<&S::Resolution>},          // m
        {"ProjectedArea", shown<&S::ProjectedArea>},    // m2
        {"XActive", value<&S::_xActive>},
        {"HActive", shown<[](const S& m) { return HeightAt(m, m._xActive); }>},
        {"NActive", shown<[](const S& m) { return NormalAt(m, m._xActive); }>},
        {"MeshNamesList", shown<&S::MeshNamesList>},
        {"Polylines", shown<[](const S& m) { return SW_PathsOfType(m, "Polyline"); }>},

        {"Nx", value<&S::_nx>},
        {"Ny", value<&S::_ny>},
        {"Dx", value<&S::_dx>},
        {"DxVis", shown<[](const S& m) { return m._isCartesian ? "r" : "w"; }>},
        {"Xll", value<&S::_xll>},
        {"Xor", value<&S::_xor>},
        {"BaseMesh",
         pair<[](const S& m) { return m._baseMesh.Path(m); }, [](S& m, Text name) { m._baseMesh.Set(name); }>},
        {"Length", value<&S::_length>},             // m
        {"Width", value<&S::_width>},               // m
        {"Inclination", value<&S::_inclination>},   // m
        {"SetToPlane", command<&S::SetToPlane>},
        {"SetToCartesianGrid", command<&S::SetToCartesianGrid>},
        {"SetToHoneyCombGrid", command<&S::SetToHoneyCombGrid>},
        {"CoverWithCartesianGrid", command<&S::CoverWithCartesianGrid>},
        {"CoverWithHoneyCombGrid", command<&S::CoverWithHoneyCombGrid>},

        {"ProjectOnto", command<static_cast<void (S::*)(Text)>(&S::ProjectOnto)>},
        {"InterpolateNormalsFrom", command<static_cast<void (S::*)(Text)>(&S::InterpolateNormalsFrom)>},
        {"SmootherIterations", value<&S::_smootherIterations>},
        {"Smooth", command<[](S& m) { m.Smooth(m._smootherIterations); }>},
        {"SmoothVertexNormals", command<[](S& m) { m.SmoothVertexNormals(m._smootherIterations); }>},
        {"MinimizeCurvature", command<&S::MinimizeCurvatureRepeatedly>},
        {"CreateCurvatureField", command<&S::CreateCurvatureField>},
        {"RemoveCurvatureField", command<[](S& m) { m.DeleteComponent("curvature"); }>},
        {"CreateNormalsField", command<&S::CreateNormalsField>},
        {"RemoveNormalsField", command<[](S& m) { m.DeleteComponent("normals"); }>},

        {"DisplayFaces", value<&S::_displayFaces>},
        {"DrawCoarsened", value<&S::_drawCoarsened>},
        {"SmoothShading", value<&S::_smoothShading>},
        {"ShadeIncl", value<&S::_shadeIncl>},
        {"ShadeInclVis", visible<&S::_shadeIncl>},
        {"InclMin", value<&S::_inclMin>},   // degrees
        {"InclMax", value<&S::_inclMax>},
        {"BreakLinesAngle", value<&S::_breakLinesAngle>},   // degrees
        {"DisplayConnectivity", value<&S::_displayConnectivity>},
        {"DisplayNodeLabels", value<&S::_displayNodeLabels>},
        {"DrawGrid", value<&S::_drawGrid>},
        {"GridSize", value<&S::_gridSize>},   // m

        {"DisplayContourLines", value<&S::_displayContourLines>},
        {"DisplayContourLinesVis", visible<&S::_displayContourLines>},
        {"ContourLinesMinorStep", value<&S::_contourLinesMinorStep>},   // m
        {"ContourLinesMajorStep", value<&S::_contourLinesMajorStep>},   // m
        {"ContourLinesMinorWidth", value<&S::_contourLinesMinorWidth>},
        {"ContourLinesMajorWidth", value<&S::_contourLinesMajorWidth>},
        {"$cont_lines_col", AK_Variable<"$cont_lines_col">},
        {"$cont_lines_inv_bg_col", AK_Variable<"$cont_lines_inv_bg_col">},
        {"ContourLinesLabelled", value<&S::_contourLinesLabelled>},
        {"ContourLinesLabelsVis", editable<&S::_contourLinesLabelled>},
        {"ContourLinesLabelDistance", value<&S::_contourLinesLabelDistance>},   // m
        {"ContourLinesLabelsFont", value<&S::_contourLinesLabelsFont>},
        {"ContourLinesLabelsFontOptions", shown<[](const S&) { return AK_Text2d::FontList(); }>},
    };
    return rows;
}
