// The container of terrain meshes: import, and the tiles of a raster that comes in several files.

#pragma once

#include "AK_Group.h"
#include "SW_Mesh.h"

class SW_Meshes : public AK_Class<SW_Meshes, AK_Container> {
public:
    static constexpr const char* className = "SW_Meshes";
    static std::span<const Row> Rows();

    SW_Meshes(const AK_String& id, AK_Object* parent);
    AK_Object* CreateComponent(const AK_String& id, const AK_String& type) override;

    /// A new empty mesh, which becomes the last component.
    SW_Mesh* CreateMesh(const AK_String& id);
    /// A mesh from a file, named after it; the release and resistance areas that lie beside it come along.
    void Import(const AK_String& path, int nReduce);
    /// A Cartesian grid of the default cell size over a mesh, "<base>_simulation", not active: the grid that
    /// simulations run on. It is smoothed the more often the coarser the base is. Nothing if there is no such mesh.
    void CreateSimulationMesh(const AK_String& baseId);

    // ---- tiles, a list of paths joined by "%AK_SEP%"
    /// Replaces the selection and looks at the headers: extent, cell size, and whether all lie on one lattice.
    void Tiles(const AK_String& paths);
    void TileSelect(const AK_String& path);     // unless it is in the list already
    void TileDeselect(const AK_String& path);
    /// One mesh, "combined", from the selected tiles; the selection is empty afterwards. Nothing if they do not fit.
    void TilesLoad();

private:
    bool IsSimulationCellSize(double cellSize) const;
    void Autofit();
    AK_String ImportAreas(const AK_String& path);   // the first error

    int _autoCreateSimulationMesh = 0;
    int _numPtRedRasterImport = 1;
    AK_String _tiles;
    AK_Vec2 _tilesXmin, _tilesXmax;   // m: combined extent
    double _tilesDs = 0;              // m: smallest cell size
    int _tilesConsistent = 0;         // 1 if every tile was read and all lie on one lattice
    double _simulationDefaultCellSize = 5.0;   // m
};
