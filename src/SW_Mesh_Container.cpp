// Import of meshes and selection of tiles.

#include "SW_Mesh_Container.h"

#include "SW_Mesh_Contour.h"

#include <algorithm>
#include <climits>
#include <cmath>

static constexpr double sameCellSize = 0.001;   // m: as close as this to the default size, a raster is for simulations

std::span<const AK_Row> SW_Meshes::Rows()
{
    using S = SW_Meshes;
    using Text = const AK_String&;
    static constexpr Row rows[] = {
        {"CreateMesh", command<&S::CreateMesh>},
        {"Import", command<[](S& m, Text path) { m.Import(path, 0); }>},
        {"ImportRasterReduced", command<[](S& m, Text path) { m.Import(path, m._numPtRedRasterImport); }>},
        {"NumPtRedRasterImport", value<&S::_numPtRedRasterImport>},
        {"AutoCreateSimulationMesh", value<&S::_autoCreateSimulationMesh>},
        {"CreateSimulationMesh", command<&S::CreateSimulationMesh>},
        {"SimulationDefaultCellSize", value<&S::_simulationDefaultCellSize>},   // m
        {"Tiles", pair<&S::_tiles, static_cast<void (S::*)(Text)>(&S::Tiles)>},
        {"TileSelect", command<&S::TileSelect>},
        {"TileDeselect", command<&S::TileDeselect>},
        {"TilesClear", command<[](S& m, Text) { m.Tiles(""); }>},
        {"TilesLoad", command<[](S& m, Text) { m.TilesLoad(); }>},
        {"TilesLoadVis", editable<&S::_tilesConsistent>},
        {"TilesXmin", shown<&S::_tilesXmin>},
        {"TilesXmax", shown<&S::_tilesXmax>},
        {"TilesDs", shown<&S::_tilesDs>},
        {"TilesConsistent", shown<&S::_tilesConsistent>},
    };
    return rows;
}

SW_Meshes::SW_Meshes(const AK_String& id, AK_Object* parent) : AK_Class(id, parent)
{
    ReadClassFiles();
    RunInitializationCommands();
}

AK_Object* SW_Meshes::CreateComponent(const AK_String& id, const AK_String& type)
{
    return type == "DHM" ? new SW_Mesh(id, this) : nullptr;
}

SW_Mesh* SW_Meshes::CreateMesh(const AK_String& id)
{
    auto* mesh = new SW_Mesh(id, this);
    AddComponent(mesh);
    return mesh;
}

// The view follows what has come; a front end without one knows no such attribute.
void SW_Meshes::Autofit() { Root()->Set("Autofit", ""); }

bool SW_Meshes::IsSimulationCellSize(double cellSize) const
{
    return std::fabs(cellSize - _simulationDefaultCellSize) < sameCellSize;
}

// ----------------------------------------------------------------------------------------------------------------
// Import
// ----------------------------------------------------------------------------------------------------------------

AK_String SW_Meshes::ImportAreas(const AK_String& path)
{
    static constexpr struct {
        const char* extension;
        const char* sibling;
        const char* command;
    } sideFiles[] = {{"rel", "ReleaseAreas", "LoadRelFile"}, {"res", "ResistanceAreas", "LoadResFile"}};
    AK_String firstError;
    for (const auto& side : sideFiles) {
        const AK_String file = path.WithExtension(side.extension);
        AK_Object* sibling = Parent() ? Parent()->Component(side.sibling) : nullptr;
        if (!sibling || !AK_System::FileExists(file)) continue;
        sibling->Set(side.command, file);
        if (firstError.IsEmpty()) firstError = _execStatus;
    }
    return firstError;
}

void SW_Meshes::Import(const AK_String& path, int nReduce)
{
    SW_Mesh* mesh = CreateMesh(path.BaseName());
    if (!mesh->Import(path, nReduce)) return;
    AK_String status = _execStatus;   // of the files beside it
    const AK_String statusOfAreas = ImportAreas(path);
    if (status.IsEmpty()) status = statusOfAreas;
    _execStatus = "";
    if (mesh->IsCartesian() && IsSimulationCellSize(mesh->Grid().dx))
        mesh->Set("Id", mesh->Id() + "_simulation");
    else if (_autoCreateSimulationMesh)
        CreateSimulationMesh(mesh->Id());
    if (status.IsEmpty()) status = _execStatus;
    Autofit();   // a command, which empties the status
    _execStatus = status;
}

void SW_Meshes::CreateSimulationMesh(const AK_String& baseId)
{
    const auto* base = dynamic_cast<const SW_Mesh*>(Component(baseId));
    if (!base) return;
    SW_Mesh* mesh = CreateMesh(baseId + "_simulation");
    mesh->Set("NumNoDataValueInterpolationIterations", "50");
    mesh->Set("BaseMesh", AK_String("../") + baseId);
    mesh->Set("Dx", AK_String(_simulationDefaultCellSize, "%.15g"));
    mesh->Set("CoverWithCartesianGrid", "");
    if (mesh->NumCells() == 0) {   // refused: the status or a message says why
        const AK_String status = _execStatus;
        DeleteComponent(mesh->Id());
        _execStatus = status;
        return;
    }
    double resolution = 0;
    AK_FromText(resolution, base->Get("Resolution"));
    AK_MSG("resolution of base mesh is " << resolution);
    const double rounds = resolution / _simulationDefaultCellSize;
    mesh->Set("SmootherIterations", AK_String(rounds > 0 ? int(std::min(rounds, double(INT_MAX))) : 0, "%d"));
    mesh->Set("Smooth", "");
    mesh->Set("Active", "0");
}

// ----------------------------------------------------------------------------------------------------------------
// Tiles
// ----------------------------------------------------------------------------------------------------------------

void SW_Meshes::Tiles(const AK_String& paths)
{
    static constexpr double sameSize = 1e-06;    // m
    static constexpr double onLattice = 0.001;   // m
    _tiles = paths;
    _tilesDs = 0;
    _tilesConsistent = 0;
    AK_List<AK_String> list(1);
    paths.Split(ak_sep, list);
    bool consistent = list.Size() > 0;
    bool first = true;
    for (const AK_String& path : list) {
        AK_Vec2 min, max;
        double cellSize = 0;
        if (!SW_Mesh::GetGridParameters(path, min, max, cellSize)) {
            consistent = false;
            continue;
        }
        if (first) {
            _tilesXmin = min;
            _tilesXmax = max;
            _tilesDs = cellSize;
            first = false;
            continue;
        }
        const bool fits = std::fabs(_tilesDs - cellSize) < sameSize &&
                          std::fabs(std::fmod(_tilesXmin.x - min.x, cellSize)) < onLattice &&
                          std::fabs(std::fmod(_tilesXmin.y - min.y, cellSize)) < onLattice;
        if (!fits) _tilesDs = std::min(_tilesDs, cellSize);
        consistent = consistent && fits;
        _tilesXmin = {std::min(_tilesXmin.x, min.x), std::min(_tilesXmin.y, min.y)};
        _tilesXmax = {std::max(_tilesXmax.x, max.x), std::max(_tilesXmax.y, max.y)};
    }
    _tilesConsistent = consistent;
}

void SW_Meshes::TileSelect(const AK_String& path)
{
    AK_List<AK_String> list(1);
    _tiles.Split(ak_sep, list);
    if (list.IndexOf(path) >= 0) return;
    list.Append(path);
    Tiles(AK_String(list, ak_sep));
}

void SW_Meshes::TileDeselect(const AK_String& path)
{
    AK_List<AK_String> list(1);
    _tiles.Split(ak_sep, list);
    const int index = list.IndexOf(path);
    if (index < 0) return;
    list.Remove(index);
    Tiles(AK_String(list, ak_sep));
}

void SW_Meshes::TilesLoad()
{
    if (!_tilesConsistent) return;
    const bool forSimulations = IsSimulationCellSize(_tilesDs);
    SW_Mesh* mesh = CreateMesh(forSimulations ? "combined_simulation" : "combined");
    mesh->LoadTiles(_tiles);
    if (!_execStatus.IsEmpty()) {   // the tiles have changed since they were selected: they stay, for another choice
        const AK_String status = _execStatus;
        DeleteComponent(mesh->Id());
        _execStatus = status;
        return;
    }
    Tiles("");
    if (mesh->NumCells() > 0 && !forSimulations && _autoCreateSimulationMesh) CreateSimulationMesh(mesh->Id());
    Autofit();
}
