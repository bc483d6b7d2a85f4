// Result fields: what one particle lays down, computed by hand; peaks and arrival over several states; deposition.

#include "SW_Simulation_Fixture.h"

#include <numeric>

class SW_Simulation_Fields : public SimulationTest {};

// A square cell of 10 m, flat: the vertices of the cell in the middle of a 3 x 3 mesh have 100 m2 each.
TEST_F(SW_Simulation_Fields, AParticleSpreadsByTheWeightsOfItsCell)
{
    OnMesh(3, 3, 10, Flat);
    PlaceParticle({12, 15}, 40000, {3, 4, 0});
    const struct {
        const char* why;
        int vertex;
        double weight;
    } cases[] = {{"lower left", 5, 0.4}, {"lower right", 9, 0.1}, {"upper right", 10, 0.1}, {"upper left", 6, 0.4}};
    double mass = 0;
    for (const auto& c : cases) {
        const double h = 40000 * c.weight / (100 * 200);   // m
        const double pdyn = 25 * 0.001 * 200;              // kPa at 5 m/s
        EXPECT_FLOAT_EQ(Part("FlowDepth")._values[c.vertex], float(h)) << c.why;
        EXPECT_FLOAT_EQ(Part("PeakFlowDepth")._values[c.vertex], float(h)) << c.why;
        EXPECT_FLOAT_EQ(Part("DynamicPeakPressure")._values[c.vertex], float(pdyn)) << c.why;
        EXPECT_FLOAT_EQ(Part("PeakForcePerWidth")._values[c.vertex], float(pdyn * h)) << c.why;
        EXPECT_FLOAT_EQ(Part("PeakTorquePerWidth")._values[c.vertex], float(pdyn * h * h / 2)) << c.why;
        const AK_Vec v = Part<SW_VectorField>("Velocity")._values[c.vertex];
        EXPECT_NEAR(v.x, 3, 1e-6) << c.why;
        EXPECT_NEAR(v.y, 4, 1e-6) << c.why;
        mass += double(Part("FlowDepth")._values[c.vertex]) * 100 * 200;
    }
    EXPECT_NEAR(mass, 40000, 0.01);
    EXPECT_EQ(Part("FlowDepth")._values[0], 0.0f);
    EXPECT_EQ(Part("FrontArrivalTime")._values[0], 0.0f);
}

TEST_F(SW_Simulation_Fields, MassIsKeptOnEveryKindOfMesh)
{
    const std::function<std::unique_ptr<SW_Mesh>()> kinds[] = {[] { return CartesianMesh(12, 9, 5, Incline(30)); },
                                                               [] { return HoneyCombMesh(12, 9, 5, Incline(30)); },
                                                               [] { return IrregularMesh(12, 9, 5, Incline(30)); }};
    for (const auto& kind : kinds) {
        sim->Set("Mesh", "");
        OnMesh(kind());
        for (int i = 0; i < 50; ++i) PlaceParticle({6 + 0.9 * i, 7 + 0.5 * i}, 100 + i);
        double mass = 0;
        for (int i = 0; i < mesh->NumVertices(); ++i)
            mass += double(Part("FlowDepth")._values[i]) * Length(mesh->_vertexNormals[i]) * 200;
        EXPECT_NEAR(mass, 50 * 100 + 49 * 25, 0.05);
    }
}

TEST_F(SW_Simulation_Fields, PeaksGrowAndTheFirstArrivalStays)
{
    OnMesh(3, 3, 10, Flat);
    PlaceParticle({15, 15}, 4000, {1, 0, 0});
    float& arrival = Part("FrontArrivalTime")._values[5];
    const struct {
        const char* why;
        float before, t, after;
    } cases[] = {{"not yet reached", 0, 2.5f, 2.5f},
                 {"reached before", 2.5f, 3, 2.5f},
                 {"reached by the release", 1e30f, 0, 0},
                 {"reached at 0 counts as not yet", 0, 0.1f, 0.1f},
                 {"a state that is loaded", 2.5f, 1e30f, 2.5f}};
    for (const auto& c : cases) {
        arrival = c.before;
        sim->UpdateFields(c.t);
        EXPECT_EQ(arrival, c.after) << c.why;
    }
    const float peak = Part("PeakFlowDepth")._values[5];
    sim->Particles().Mass()._values[0] = 1000;
    sim->UpdateFields(4);
    EXPECT_EQ(Part("PeakFlowDepth")._values[5], peak);
    EXPECT_FLOAT_EQ(Part("FlowDepth")._values[5], peak / 4);
    sim->Particles().Mass()._values[0] = 8000;
    sim->UpdateFields(5);
    EXPECT_FLOAT_EQ(Part("PeakFlowDepth")._values[5], 2 * peak);
}

TEST_F(SW_Simulation_Fields, LegendsNameSimulationQuantityUnitAndTime)
{
    OnMesh(3, 3, 10, Flat);
    sim->Update();
    EXPECT_EQ(Part("PeakFlowDepth").Label(), "avalanche peak flow depth [m] at 0");
    EXPECT_EQ(Part("DynamicPeakPressure").Label(), "avalanche dynamic peak pressure [KPa] at 0");
    EXPECT_EQ(sim->Particles().Velocity().Label(), "avalanche SPH velocity [m/s] at 0");
}

TEST_F(SW_Simulation_Fields, ARasterOnTheLatticeOfTheMeshHasTheValuesOfTheField)
{
    OnMesh(6, 4, 10, Incline(30));
    for (int i = 0; i < 9; ++i) PlaceParticle({5 + 6.0 * i, 3 + 4.0 * i}, 1000 + 100 * i);
    const SW_ScalarField& depth = Part("FlowDepth");
    Part("FlowDepth").Set("ExportRasterSize", "10");
    Part("FlowDepth").Set("ExportFieldRasterAscii", directory / "depth.asc");
    std::ifstream raster((directory / "depth.asc").c_str());
    std::string word;
    double number = 0;
    for (const auto& [name, value] : {std::pair("ncols", 6.0), std::pair("nrows", 4.0), std::pair("xllcenter", 0.0),
                                      std::pair("yllcenter", 0.0), std::pair("cellsize", 10.0)}) {
        raster >> word >> number;
        EXPECT_EQ(word, name);
        EXPECT_EQ(number, value) << name;
    }
    raster >> word >> number;   // no data
    for (int j = 3; j >= 0; --j)
        for (int i = 0; i < 6; ++i) {
            raster >> word;
            EXPECT_EQ(word, AK_String(double(depth._values[i * 5 + j]), "%g").c_str()) << i << ", " << j;
        }
}

// A line along y = 15 from x = 0 to 30, with the inside (left) above; what counts lies right of its chord, which a
// straight line leaves to points of the outside only: there flow at distance d adds d to error and total alike.
TEST_F(SW_Simulation_Fields, DepositionIsHeldAgainstALine)
{
    OnMesh(3, 3, 10, Flat);
    auto* lines = AddedTo(*project, new SW_Polylines("Polylines", nullptr));
    const auto line = [&](const char* id, AK_Polyline points) {
        lines->Create(id);
        static_cast<SW_Polyline*>(lines->Component(id))->SetLine(points);
    };
    line("straight", Ring({{0, 15, 0}, {30, 15, 0}}));
    line("bent", Ring({{0, 15, 0}, {15, 5, 0}, {30, 15, 0}}));
    line("point", Ring({{0, 15, 0}}));
    for (float& h : Part("FlowDepth")._values) h = 0;
    Part("FlowDepth")._values[5] = 1;   // at (10, 10)

    sim->Set("EvaluateDepositionWith", "../../Polylines/straight");
    EXPECT_EQ(Text("$DepositionError"), "1");
    EXPECT_TRUE(Said("INFO: deposition error relative to 'straight' is 1"));

    // Inside of the bend, below its chord, lie the vertices (10, 10) with flow and (20, 10) without, each as far from
    // the line; outside there is none.
    sim->Set("EvaluateDepositionWith", "../../Polylines/bent");
    EXPECT_NEAR(Number("$DepositionError"), 0.5, 1e-12);

    for (const char* none : {"../../Polylines/point", "nowhere", "../../DHMs/terrain"}) {
        sim->Set("EvaluateDepositionWith", none);
        EXPECT_FALSE(AK_Object::_execStatus.IsEmpty()) << none;
    }
}
