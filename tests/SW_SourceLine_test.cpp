// Source lines: cells, fractions, mass and places.

#include "SW_SourceLine.h"

#include "SW_Simulation_Fixture.h"

namespace {

class SW_SourceLineTest : public SimulationTest {
protected:
    SW_SourceLine& Source(const char* start, const char* end)
    {
        sim->SourceLines().Create("");
        SW_SourceLine& line = *sim->SourceLines().Line(sim->SourceLines().NumComponents() - 1);
        line.Set("StartPoint", start);
        line.Set("EndPoint", end);
        line.Set("MassFlow", "600");
        return line;
    }
};

}   // namespace

TEST_F(SW_SourceLineTest, CellsGetTheMassOfTheirStretchOfTheLine)
{
    OnMesh(4, 4, 10, Flat);   // cell i, j has number 4 i + j
    const struct {
        const char* why;
        const char *start, *end;
        std::vector<int> cells;
        std::vector<double> x;      // where the cells' stretches begin, and where the last one ends
        std::vector<double> mass;   // kg in half a second at 600 kg/s
        bool whole;
    } cases[] = {
        {"across", "5 5", "35 5", {0, 4, 8, 12}, {5, 10, 20, 30, 35}, {50, 100, 100, 50}, true},
        {"backwards", "35 5", "5 5", {12, 8, 4, 0}, {35, 30, 20, 10, 5}, {50, 100, 100, 50}, true},
        {"in one cell", "2 5", "4 5", {0}, {2, 4}, {300}, true},
        {"a point", "2 5", "2 5", {0}, {2, 2}, {300}, true},
        {"out of the terrain", "25 5", "55 5", {8, 12}, {25, 30, 40}, {50, 100}, false},
        {"into the terrain", "-15 5", "15 5", {0, 4}, {0, 10, 15}, {100, 50}, false},
        {"out of its only cell", "35 5", "45 5", {12}, {35, 40}, {150}, false},
        {"off the terrain", "-15 -15", "-15 5", {}, {}, {}, false},
        {"across the whole terrain", "-15 5", "45 5", {}, {}, {}, false},
    };
    for (const auto& c : cases) {
        SW_SourceLine& line = Source(c.start, c.end);
        Messages();
        line.ProjectOnto(mesh);
        EXPECT_NE(Said("WARNING:source line "), c.whole) << c.why;
        ASSERT_EQ(line.Cells().Size(), int(c.cells.size())) << c.why;
        for (int i = 0; i < line.Cells().Size(); ++i) {
            EXPECT_EQ(line.Cells()[i], c.cells[size_t(i)]) << c.why;
            EXPECT_NEAR(line.MassGainInCell(i, 0.5f), c.mass[size_t(i)], 1e-4) << c.why;
            EXPECT_NEAR(line.PositionInCell(i, 0).x, c.x[size_t(i)], 1e-5) << c.why;
            EXPECT_NEAR(line.PositionInCell(i, 1).x, c.x[size_t(i) + 1], 1e-5) << c.why;
            EXPECT_EQ(line.PositionInCell(i, 0.5f).z, 0) << c.why;
        }
    }
}

TEST_F(SW_SourceLineTest, AttributesAreCheckedAndCopied)
{
    SW_SourceLine line("line", nullptr);
    EXPECT_EQ(line.Get("StartPoint"), "0 0");
    EXPECT_EQ(line.Get("EndPoint"), "1 1");
    EXPECT_EQ(line.Get("MassFlow"), "1");
    for (const char* point : {"1", "nan 2", "x"}) {
        EXPECT_EQ(line.Set("EndPoint", point), 1);
        EXPECT_FALSE(AK_Object::_execStatus.IsEmpty()) << point;
        EXPECT_EQ(line.Get("EndPoint"), "1 1");
    }
    line.Set("MassFlow", "-1");
    EXPECT_EQ(AK_Object::_execStatus, "'-1' is negative");
    Source("1 2", "3 4").Set("Id", "inflow");
    EXPECT_EQ(sim->SourceLines().Set("Clone", "inflow"), 1);
    EXPECT_EQ(AK_Object::_execStatus, "");
    const AK_Object* copy = sim->SourceLines().Component("inflow_cloned");
    ASSERT_TRUE(copy);
    EXPECT_EQ(copy->Get("EndPoint"), "3 4");
    EXPECT_EQ(copy->Get("MassFlow"), "600");
    sim->SourceLines().Set("AddSourceLine", "inflow");
    EXPECT_EQ(sim->SourceLines().Line(2)->Id(), "inflow_0001");
    sim->SourceLines().Set("Clone", "..");
    EXPECT_EQ(AK_Object::_execStatus, "there is no SourceLine '..'");

    WriteFile(directory / "in.nxyz", "3\n5 6 0\n7 7 0\n8 9 0\n");
    sim->SourceLines().Set("Import", directory / "in.nxyz");
    EXPECT_EQ(sim->SourceLines().Line(3)->Get("StartPoint"), "5 6");
    EXPECT_EQ(sim->SourceLines().Line(3)->Get("EndPoint"), "8 9");
    sim->SourceLines().Set("Import", directory / "none.dxf");
    EXPECT_EQ(AK_Object::_execStatus, AK_String("cannot open file ") + (directory / "none.dxf"));
}
