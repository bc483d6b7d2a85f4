// What a mesh takes from another one below or above it: heights, and directions of normals.
//
// Both walk through the vertices with the last cell found as the hint for the next: neighbouring vertices then cost few
// steps on an irregular mesh.

#include "SW_Mesh.h"

#include "SW_Mesh_Contour.h"

static constexpr double outside = -1.2345e+30;   // m: stands for the height of a vertex beside the other mesh

bool SW_Mesh::HasSurfaceFor(const AK_Object& projected) const
{
    if (NumCells() > 0) return true;
    AK_MSG("WARNING:" << projected.IdAbs()
                      << InLanguage(" is not projected: there is no surface in mesh ",
                                    " wird nicht projiziert: keine Oberflaeche im Netz ")
                      << IdAbs());
    return false;
}

void SW_Mesh::ProjectOnto(const SW_Mesh* mesh)
{
    if (!mesh->HasSurfaceFor(*this)) return;
    AK_MSG("projecting mesh " << _id << " onto mesh " << mesh->_id << "...");
    int cell = -1;
    for (AK_Vec& x : _x) {
        cell = mesh->Project(x, cell);
        if (cell < 0) x.z = outside;
    }
    if (!_isCartesian || _numNoDataIterations == 0)
        RemoveNoDataAreas(outside);
    else
        InterpolateNoDataValuesMultigrid(outside);
    if (NumCells() > 0) ComputeVertexNormals();
    ForgetDerived();
    for (int i = 0; i < NumComponents(); ++i)
        ComponentAt(i)->Set("ProjectOnto", mesh->IdAbs(ComponentAt(i)));   // fields have no such command: they stay
    AK_MSG("projecting mesh " << _id << " onto mesh " << mesh->_id << " done");
}

void SW_Mesh::InterpolateNormalsFrom(const SW_Mesh* mesh)
{
    AK_ASSERT(mesh->HasNormals());
    AK_MSG("interpolationg normals of " << _id << " from mesh " << mesh->_id << "...");
    ComputeVertexNormals();
    int cell = -1;
    for (int i = 0; i < NumVertices(); ++i) {
        cell = mesh->CellContainingPoint(_x[i], cell);
        if (cell < 0) continue;
        double weights[4];
        mesh->GetWeights(cell, _x[i], weights);
        const AK_Vec direction = mesh->InterpolatedVector(cell, weights, mesh->_vertexNormals);
        AK_Vec& normal = _vertexNormals[i];
        normal = direction * (normal.z / direction.z);
    }
}

SW_Mesh* SW_Mesh::OtherMesh(const AK_String& name) const
{
    SW_Mesh* mesh = SW_MeshReference::Find(*this, name);
    return mesh == this ? nullptr : mesh;
}

void SW_Mesh::ProjectOnto(const AK_String& name)
{
    if (const SW_Mesh* mesh = OtherMesh(name)) ProjectOnto(mesh);
}

void SW_Mesh::InterpolateNormalsFrom(const AK_String& name)
{
    SW_Mesh* mesh = OtherMesh(name);
    if (!mesh) return;
    if (!mesh->HasNormals()) mesh->ComputeVertexNormals();
    InterpolateNormalsFrom(mesh);
}
