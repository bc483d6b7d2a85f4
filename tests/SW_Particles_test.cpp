// Particles: creation from cell depths, adding, splitting, removal, record, states of snow.

#include "SW_Mesh_TestSupport.h"
#include "SW_Particles.h"
#include "qvt_sci.h"

#include <vector>

namespace {

class Particles : public TerrainTest {
protected:
    Particles() { On(CartesianMesh(10, 8, 5, Plane)); }

    void On(std::unique_ptr<SW_Mesh> terrain)
    {
        particles = std::make_unique<SW_Particles>("Particles", nullptr);
        mesh = std::move(terrain);
        particles->SetMesh(mesh.get());
        for (SW_ScalarField* field : {&depth, &enthalpy}) field->SetMesh(mesh.get());
        velocity.SetMesh(mesh.get());
    }

    void Create(double massPerParticle, const AK_List<unsigned char>& tags = AK_List<unsigned char>(1))
    {
        particles->CreateFromDepthField(&depth, &velocity, &enthalpy, tags, rho, float(massPerParticle));
    }

    double CellMass(int c) const { return Length(mesh->CellNormal(c)) * double(depth._values[c]) * double(rho); }

    // All lists tell of the same particles.
    void ExpectConsistentLists() const
    {
        const int n = particles->NumParticles();
        EXPECT_EQ(particles->Position().NumVertices(), n);
        EXPECT_EQ(particles->Mass()._values.Size(), n);
        EXPECT_EQ(particles->Velocity()._values.Size(), n);
        EXPECT_EQ(particles->TotalEnthalpy()._values.Size(), n);
        EXPECT_TRUE(particles->tag.Size() == 0 || particles->tag.Size() == n);
    }

    void AddAt(double x, double mass, unsigned char tag = 0)
    {
        EXPECT_EQ(particles->AddParticle({x, 10, 0}, float(mass), {x, 0, 0}, float(10 * x), tag, -1), 1);
    }

    static constexpr float rho = 200;
    SW_ScalarField depth{"depth", nullptr}, enthalpy{"enthalpy", nullptr};
    SW_VectorField velocity{"velocity", nullptr};
    std::unique_ptr<SW_Mesh> mesh;
    std::unique_ptr<SW_Particles> particles;
};

}   // namespace

TEST_F(Particles, GiveEachCellItsExactMassWhateverTheirNumber)
{
    for (const bool honeycomb : {false, true}) {
        if (honeycomb) On(HoneyCombMesh(7, 6, 5, Hill));
        AK_List<unsigned char> tags(1);
        for (int c = 0; c < mesh->NumCells(); ++c) {
            depth._values[c] = float(0.1 * (c % 7));
            enthalpy._values[c] = float(-1000 * c);
            velocity._values[c] = {double(c), 0, 0};
            tags.Append(static_cast<unsigned char>(c % 3));
        }
        Create(700, tags);
        ExpectConsistentLists();
        std::vector<double> massInCell(size_t(mesh->NumCells()));
        std::vector<int> numInCell(size_t(mesh->NumCells()));
        for (int i = 0; i < particles->NumParticles(); ++i) {
            const int c = particles->cell[i];
            const AK_Vec p = particles->Position()._x[i];
            massInCell[size_t(c)] += double(particles->Mass()._values[i]);
            ++numInCell[size_t(c)];
            EXPECT_EQ(mesh->CellContainingPoint(p, c), c);
            AK_Vec onSurface = p;
            mesh->ProjectOntoCell(onSurface, c);
            EXPECT_NEAR(p.z, onSurface.z, 1e-9);
            EXPECT_EQ(particles->TotalEnthalpy()._values[i], float(p.z * 9.81 - 1000.0 * c));
            EXPECT_EQ(particles->Velocity()._values[i].x, c);
            EXPECT_EQ(particles->tag[i], c % 3);
        }
        for (int c = 0; c < mesh->NumCells(); ++c) {
            const double wanted = CellMass(c) / 700;
            EXPECT_LT(std::fabs(numInCell[size_t(c)] - wanted), 1) << "cell " << c;
            if (numInCell[size_t(c)] == 0) continue;
            EXPECT_NEAR(massInCell[size_t(c)], CellMass(c), 1e-5 * CellMass(c));
        }
    }
}

TEST_F(Particles, AreTheSameForEachCreationAndTheirNumberIsRightOnAverage)
{
    depth._values.Fill(mesh->NumCells(), 1.0f);
    const double total = mesh->NumCells() * CellMass(0);
    Create(CellMass(0) / 0.4);   // two cells in five get a particle, with the mass of the whole cell
    EXPECT_NEAR(particles->NumParticles(), 0.4 * mesh->NumCells(), 12);   // 3 standard deviations of the 80 draws
    EXPECT_NEAR(particles->Mass()._values[0], CellMass(0), 1e-5 * CellMass(0));
    const AK_List<AK_Vec> before = particles->Position()._x;
    AK_System::srand(99);
    Create(CellMass(0) / 0.4);
    ASSERT_EQ(before.Size(), particles->NumParticles());
    EXPECT_TRUE(std::equal(before.begin(), before.end(), particles->Position()._x.begin()));
    Create(CellMass(0) / 3);
    EXPECT_NEAR(particles->TotalMass(), total, 1e-6 * total);
    EXPECT_EQ(particles->NumParticles(), 3 * mesh->NumCells());
}

TEST_F(Particles, AreNotCreatedFromWhatCannotBe)
{
    depth._values.Fill(mesh->NumCells(), 1.0f);
    Messages();
    Create(0);
    Create(-5);
    Create(std::nan(""));
    Create(1e-30);   // more than can be counted
    const std::vector<std::string> said = Messages();
    ASSERT_EQ(said.size(), 1u);
    EXPECT_EQ(said[0].rfind("WARNING:", 0), 0u) << said[0];
    depth._values.Fill(mesh->NumCells(), 0.0f);
    Create(100);
    depth._values.Fill(mesh->NumCells(), std::nanf(""));
    Create(100);
    particles->SetMesh(nullptr);
    Create(100);
    EXPECT_EQ(particles->AddParticle({1, 1, 0}, 1, {}, 0, 0, -1), 0);
    EXPECT_EQ(particles->NumParticles(), 0);
}

TEST_F(Particles, AreAddedOnTheSurfaceSplitAtOnePointAndRemovedWithAllTheyCarry)
{
    for (const bool tagged : {false, true}) {
        On(CartesianMesh(10, 8, 5, Plane));
        if (tagged) {
            AddAt(2, 8);
            particles->tag.Append(7);
        } else
            AddAt(2, 8);
        AddAt(12, 6, 3);
        EXPECT_EQ(particles->AddParticle({-100, 10, 0}, 1, {}, 0, 0, -1), 0);
        EXPECT_EQ(particles->Position()._x[1].z, Plane(12, 10));
        EXPECT_EQ(particles->SplitParticle(1, 1), 0);
        EXPECT_EQ(particles->Mass()._values[1], 6);
        EXPECT_EQ(particles->SplitParticle(1, 3), 2);
        ExpectConsistentLists();
        for (int i = 1; i < 4; ++i) {
            EXPECT_EQ(particles->Mass()._values[i], 2);
            EXPECT_EQ(particles->Position()._x[i], particles->Position()._x[1]);
            EXPECT_EQ(particles->Velocity()._values[i].x, 12);
            EXPECT_EQ(particles->cell[i], particles->cell[1]);
            EXPECT_TRUE(!tagged || particles->tag[i] == 3);
        }
        AddAt(22, 1);
        AddAt(32, 0.5);   // at the limit: goes as well
        particles->cell[1] = -1;
        EXPECT_EQ(particles->RemoveUnlocatedParticles(0.5).massOffMesh, 2);   // kg off the mesh
        ExpectConsistentLists();
        ASSERT_EQ(particles->NumParticles(), 4);
        for (int i = 0; i < 4; ++i)
            EXPECT_EQ(particles->TotalEnthalpy()._values[i], float(10 * particles->Velocity()._values[i].x));
        EXPECT_EQ(particles->TotalMass(), 8 + 2 + 2 + 1);
        EXPECT_EQ(particles->TotalKineticEnergy(), 0.5 * (8 * 4 + 2 * 144 * 2 + 22 * 22));
        EXPECT_STREQ(particles->Get("NumberOfParticles").c_str(), "4");
        EXPECT_STREQ(particles->Get("TotalParticlesMass").c_str(), "13");
        EXPECT_STREQ(particles->Get("TotalParticlesKineticEnergy").c_str(), "546");
    }
    EXPECT_EQ(Messages().back(), "2 particles removed");
}

TEST_F(Particles, FindTheirCellsAgainAfterLoading)
{
    for (double x : {2.0, 12.0, 22.0, 32.0}) AddAt(x, x);
    for (unsigned char tag : {1, 2, 3, 4}) particles->tag.Append(tag);
    particles->Position()._x[1].x = -500;
    particles->Position()._x[2].y = std::nan("");
    const AK_String file = directory / "particles";
    {
        AK_Stream out(file, "wb");
        EXPECT_EQ(particles->SaveDataTo(out), 0);
    }
    EXPECT_EQ(FileBytes(file), std::string("\x0f\0\0\0SW_Particles:v0\4\0\0\0\1\2\3\4", 27));
    particles->tag.Clear();
    AK_Stream in(file, "rb");
    EXPECT_EQ(particles->LoadDataFrom(in), 0);
    particles->LoadFinalizePriv();
    ExpectConsistentLists();
    ASSERT_EQ(particles->NumParticles(), 2);
    EXPECT_EQ(particles->tag[1], 4);
    EXPECT_EQ(particles->cell[1], mesh->CellContainingPoint(AK_Vec2(32, 10), -1));
    particles->tag.Append(9);   // a record that belongs to other positions
    particles->LoadFinalizePriv();
    EXPECT_EQ(particles->tag.Size(), 0);

    const std::string good = FileBytes(file);
    for (size_t length = 0; length < good.size(); ++length) {
        WriteFile(file, good.substr(0, length));
        AK_Stream cut(file, "rb");
        EXPECT_EQ(particles->LoadDataFrom(cut), 1) << length;
        EXPECT_EQ(particles->tag.Size(), 0);
    }
    WriteFile(file, std::string("\x0f\0\0\0SW_Particles:v1\0\0\0\0", 23));
    AK_Stream other(file, "rb");
    EXPECT_EQ(particles->LoadDataFrom(other), 1);
    EXPECT_EQ(std::string(AK_Object::_execStatus.c_str()).rfind("Particles: IO error at ", 0), 0u);
}

TEST_F(Particles, KnowTheStatesOfSnow)
{
    const struct {
        double enthalpy, temperature, water;
    } states[] = {{-20500, -10, 0}, {-1e-9, -1e-9 / 2050, 0}, {0, 0, 0},
                  {166750, 0, 0.5}, {333500, 0, 1},           {333500 + 4187, 1, 1}};
    SW_Particles::RegisterInFormulaLanguage();
    SW_Particles::RegisterInFormulaLanguage();   // once is enough
    Namespace* space = qvt_sci_NamespaceOpen();
    ASSERT_EQ(qvt_sci_ParseString("double back(double h) { return EnthalpyFromTemperatureAndWaterMassFraction("
                                  "TemperatureFromEnthalpy(h), WaterMassFractionFromEnthalpy(h)); }"),
              0);
    Symbol* back = qvt_sci_FuncPtr("back");
    for (const auto& s : states) {
        EXPECT_DOUBLE_EQ(SW_Particles::TemperatureFromEnthalpy(&s.enthalpy), s.temperature) << s.enthalpy;
        EXPECT_DOUBLE_EQ(SW_Particles::WaterMassFractionFromEnthalpy(&s.enthalpy), s.water) << s.enthalpy;
        EXPECT_DOUBLE_EQ(SW_Particles::EnthalpyFromTemperatureAndWaterMassFraction(&s.temperature, &s.water),
                         s.enthalpy);
        EXPECT_DOUBLE_EQ(qvt_sci_AsDouble(qvt_sci_Call(back, &s.enthalpy)), s.enthalpy);
    }
    EXPECT_EQ(space, qvt_sci_NamespaceGetCurrent());
    qvt_sci_NamespaceClose();
}
