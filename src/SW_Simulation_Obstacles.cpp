// Obstacles, cell by cell: which wall a particle may hit, which resistance area brakes it. Found once at the start of a
// run; workers read them.

#include "SW_Simulation.h"

#include "SW_ResistanceArea.h"
#include "SW_WallLine.h"

// Tells of a wall that cannot do what it was made for.
static void WarnOfIncompleteWall(const SW_WallLine& wall)
{
    if (!wall.HasHeights())
        AK_MSG("WARNING:wall line " << wall.Id() << " has no Heights: it does not reflect anything");
    else if (!wall.HasSlopes() && wall.IsActive())
        AK_MSG("WARNING:wall line " << wall.Id() << " has no Slopes: its face counts as level");
    if (!wall.BaseMesh())
        AK_MSG("WARNING:wall line " << wall.Id() << " lies on no terrain: it does not reflect anything");
}

// Cells under the foot line. A walk must begin on the mesh, and along the edges of a grid it finds its way in one
// direction only: each segment is walked from both ends.
static void AppendCellsUnder(const AK_List<AK_Vec>& footLine, const SW_Mesh& mesh, AK_List<int>& cells)
{
    for (int k = 1; k < footLine.Size(); ++k) {
        mesh.GetCellsAlongLine(footLine[k - 1], footLine[k], &cells, nullptr);
        mesh.GetCellsAlongLine(footLine[k], footLine[k - 1], &cells, nullptr);
    }
}

void SW_Simulation::UpdateWallLines(AK_List<unsigned char>& wallCells)
{
    const int numWalls = _wallLines->NumComponents();
    AK_ASSERT_AS(numWalls < 255, "_wallLines->Components().Size() < 255");   // a byte holds their numbers
    wallCells.SetSize(_mesh->NumCells());
    for (unsigned char& wall : wallCells) wall = 0;
    AK_List<int> cells(1);
    for (int i = 0; i < numWalls; ++i) {
        SW_WallLine& wall = *_wallLines->Wall(i);
        wall.UpdateTangentsAndNormals();
        WarnOfIncompleteWall(wall);
        cells.Clear();
        AppendCellsUnder(wall.FootLine()._x, *_mesh, cells);
        const auto number = static_cast<unsigned char>(i + 1);
        for (const int cell : cells) {
            wallCells[cell] = number;
            for (int face = 0; face < NumCorners(_mesh->_lcv[cell]); ++face)
                if (const int neighbor = _mesh->NeighborCell(cell, face); neighbor >= 0) wallCells[neighbor] = number;
        }
    }
    int covered = 0;
    for (const unsigned char wall : wallCells) covered += wall != 0;
    AK_MSG(covered << " cells covered by wall lines");
}

void SW_Simulation::UpdateCellResistances()
{
    AK_MSG("updating cell resistances...");
    _cellResistances.SetSize(_mesh->NumCells());
    for (int cell = 0; cell < _mesh->NumCells(); ++cell) {
        const AK_Vec center = _mesh->CellCenter(cell);
        _cellResistances[cell] = nullptr;
        for (int i = _resistanceAreas->NumComponents() - 1; i >= 0 && !_cellResistances[cell]; --i)
            if (const SW_ResistanceArea* area = _resistanceAreas->Area(i); area->Contains(center))
                _cellResistances[cell] = area;
    }
    AK_MSG("updating cell resistances done");
}
