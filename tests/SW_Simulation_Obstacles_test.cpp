// Obstacles, cell by cell: where a run looks for walls and for resistance areas.

#include "SW_Simulation_Fixture.h"
#include "SW_Simulation_Phase.h"

#include <set>

namespace {

class SW_SimulationObstacles : public SimulationTest {
protected:
    SW_SimulationObstacles() { OnMesh(6, 6, 10, Flat); }   // cell i, j has number 6 i + j

    /// A wall with a face of slope 10.
    void Wall(const char* points, const char* heights)
    {
        sim->WallLines().Set("AddWallLine", "w");
        SW_WallLine& wall = *sim->WallLines().Wall(sim->WallLines().NumComponents() - 1);
        wall.Set("Polyline", points);
        wall.Set("Heights", heights);
        wall.Set("Slopes", "10");
    }
};

std::string Joined(const std::set<int>& cells)
{
    std::string text;
    for (const int cell : cells) text += std::to_string(cell) + " ";
    return text;
}

}   // namespace

TEST_F(SW_SimulationObstacles, CellsUnderAWallAndTheirNeighboursKnowIt)
{
    const struct {
        const char* why;
        const char *points, *heights;
        std::set<int> cells;
        std::string message;
    } cases[] = {
        // With a slope of 10 the foot of a wall of 10 m lies 1 m left of it, in the same cells.
        {"cells 3, 1 to 3, 3 and around",
         "35 15%AK_SEP%35 35",
         "1010",
         {13, 14, 15, 18, 19, 20, 21, 22, 25, 26, 27},
         ""},
        {"at the border", "5 5%AK_SEP%5 5.5", "1010", {0, 1, 6}, ""},
        {"out of the terrain", "55 45%AK_SEP%55 95", "1010", {28, 29, 33, 34, 35}, ""},
        {"into the terrain", "55 95%AK_SEP%55 45", "1010", {28, 29, 33, 34, 35}, ""},
        {"off the terrain", "105 5%AK_SEP%105 55", "1010", {}, ""},
        {"switched off", "35 15%AK_SEP%35 35", "0", {}, ""},
        {"without heights",
         "35 15%AK_SEP%35 35",
         "",
         {},
         "WARNING:wall line w has no Heights: it does not reflect anything"},
    };
    AK_List<unsigned char> wallCells(1);
    for (const auto& c : cases) {
        sim->WallLines().DeleteAll();
        Wall(c.points, c.heights);
        Messages();
        sim->UpdateWallLines(wallCells);
        std::set<int> found;
        for (int cell = 0; cell < wallCells.Size(); ++cell)
            if (wallCells[cell] != 0) found.insert(cell);
        EXPECT_EQ(wallCells.Size(), 36);
        EXPECT_EQ(Joined(found), Joined(c.cells)) << c.why;
        const std::vector<std::string> said = Messages();
        EXPECT_EQ(said.back(), std::to_string(c.cells.size()) + " cells covered by wall lines") << c.why;
        EXPECT_EQ(said.size(), c.message.empty() ? 1u : 2u) << c.why << ": " << said.front();
    }
    sim->WallLines().DeleteAll();
    Wall("35 15%AK_SEP%35 35", "1010");
    Wall("45 25%AK_SEP%45 26", "1010");
    sim->UpdateWallLines(wallCells);
    EXPECT_EQ(wallCells[13], 1);
    EXPECT_EQ(wallCells[20], 2) << "the later line counts";
    for (int i = sim->WallLines().NumComponents(); i < 255; ++i) sim->WallLines().Create("");
    EXPECT_DEATH(sim->UpdateWallLines(wallCells), "");
}

TEST_F(SW_SimulationObstacles, TheLastResistanceAreaOverTheCentreOfACellBrakesThere)
{
    const auto add = [&](const AK_Polyline& ring) {
        sim->ResistanceAreas().Create("");
        auto* area = sim->ResistanceAreas().Area(sim->ResistanceAreas().NumComponents() - 1);
        area->SetLine(ring);
        return area;
    };
    sim->UpdateCellResistances();
    const SW_ResistanceArea* forest = add(Rectangle(0, 0, 30, 14));    // cells 0, 6, 12; in y short of the next centres
    const SW_ResistanceArea* village = add(Rectangle(12, 2, 58, 8));   // cells 6, 12, 18, 24, 30
    add(Rectangle(100, 100, 200, 200));
    Messages();
    sim->UpdateCellResistances();
    EXPECT_EQ(Messages(), (std::vector<std::string>{"updating cell resistances...", "updating cell resistances done"}));
    const SW_ResistanceArea* const* found = SW_SimulationPhase(*sim).resistances;
    for (int cell = 0; cell < 36; ++cell) {
        const bool inVillage = cell > 0 && cell % 6 == 0;
        EXPECT_EQ(found[cell], inVillage ? village : cell == 0 ? forest : nullptr) << cell;
    }
}
