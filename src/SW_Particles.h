// The particles of one simulation: the columns of snow that the flow is made of.
//
// A particle is a column that stands on the terrain: it has a mass, a velocity in the surface and an enthalpy. The
// positions are the vertices of a mesh without cells, so that what particles carry are ordinary fields on that mesh,
// which can be drawn, saved and loaded as such. Particle i is vertex i, entry i of each field and of each list.
//
// Removing particles moves the last one into the gap, and adding may move the lists: indices and pointers are good
// until then. The loops of a time step work on the lists directly; workers write the entries of their own range only.

#pragma once

#include "SW_ScalarField.h"
#include "SW_VectorField.h"

class SW_Particles : public AK_Class<SW_Particles, AK_Object> {
public:
    static constexpr const char* className = "SW_Particles";
    static constexpr const char* recordTag = "SW_Particles:v0";
    static std::span<const Row> Rows();

    // Thermal enthalpy of snow, J/kg: 0 for ice at the melting point, below 0 for colder ice, melting up to h_fusion.
    static constexpr double grav = 9.81;         // m/s2
    static constexpr double T_melt = 0;          // degrees C
    static constexpr double h_fusion = 333500;   // J/kg
    static constexpr double cp_wtr = 4187;       // J/(kg K)
    static constexpr double cp_ice = 2050;       // J/(kg K)
    static constexpr double cond_ice = 2.22;     // W/(m K)

    SW_Particles(const AK_String& id, AK_Object* parent);

    // ---- particles
    AK_List<int> cell{1};   // the cell of the simulation mesh that a particle stands in, negative for none
    // Empty, or for each particle: 0 free, else the secondary release area that holds it.
    AK_List<unsigned char> tag{1};

    SW_Mesh& Position() { return *_position; }   // vertices only; m
    const SW_Mesh& Position() const { return *_position; }
    SW_ScalarField& Mass() { return *_mass; }   // kg
    const SW_ScalarField& Mass() const { return *_mass; }
    SW_VectorField& Velocity() { return *_velocity; }   // m/s
    const SW_VectorField& Velocity() const { return *_velocity; }
    SW_ScalarField& TotalEnthalpy() { return *_totalEnthalpy; }   // J/kg: thermal, potential and kinetic
    const SW_ScalarField& TotalEnthalpy() const { return *_totalEnthalpy; }

    // ---- scratch of a time step, one entry for each particle
    AK_List<float> depth{1};               // m: flow depth at the particle
    AK_List<float> dragCoefficient{1};     // kg/s
    AK_List<AK_Vec> force{1};              // N: all that acts but drag
    AK_List<float> shearRatio{1};          // shear stress by pressure on the bed
    AK_List<float> entrainedMass{1};       // kg in this step
    AK_List<float> enthalpySource{1};      // W: diffusion from the neighbours
    AK_List<float> enthalpyDiffusion{1};   // kg/s
    AK_List<float> bottomForce{1};         // N: weight of the column on the bed
    void SizeScratch(int n);
    void FreeScratch();

    int NumParticles() const { return cell.Size(); }
    const SW_Mesh* Mesh() const { return _mesh; }
    void SetMesh(const SW_Mesh* mesh) { _mesh = mesh; }   // the terrain; not owned

    /// Fills the cells of the mesh with particles of about the given mass: the mass of each cell is exact, the number
    /// of particles in it rounded at random, with fixed seeds. depth (m), velocity and enthalpy (J/kg, thermal) have a
    /// value for each cell; tags is empty or has one too. Nothing happens without a mesh with cells or a mass above 0.
    void CreateFromDepthField(const SW_ScalarField* depthInCells, const SW_VectorField* velocity,
                              const SW_ScalarField* enthalpy, const AK_List<unsigned char>& tags, float rho,
                              float massPerParticle);
    /// Appends a particle on the surface below or above pos; 0 if that is off the mesh.
    int AddParticle(AK_Vec pos, float mass, AK_Vec vel, float enthalpy, unsigned char newTag, int hintCell);
    /// Makes n particles of one, all at the same point; returns the number of new ones.
    int SplitParticle(int i, int n);
    /// What has been removed, apart by its reason.
    struct Removal {
        double massOffMesh = 0;   // kg
        int numTooLight = 0;
        double massTooLight = 0;   // kg
        int numNoNumber = 0;       // whose mass, place or velocity is no number
    };
    /// Removes what is off the mesh, what has no more mass than the threshold, kg, and what is no number any more.
    Removal RemoveUnlocatedParticles(double massThreshold);
    void Clear();

    double TotalMass() const;            // kg
    double TotalKineticEnergy() const;   // J

    /// Lays the fields on the positions again and finds the cells; drops what is off the mesh or has no mass.
    void LoadFinalizePriv();
    int SaveDataTo(AK_Stream& stream) const;
    int LoadDataFrom(AK_Stream& stream);

    // ---- state of snow; by pointer, so that formula code can call them
    static double TemperatureFromEnthalpy(const double* h);         // degrees C
    static double WaterMassFractionFromEnthalpy(const double* h);   // 0 to 1
    static double EnthalpyFromTemperatureAndWaterMassFraction(const double* T, const double* w);
    /// Declares and binds the three in the language's root, once.
    static void RegisterInFormulaLanguage();

    /// A random number in [0, 1).
    static double Draw() { return AK_System::rand() / double(AK_System::rand_max); }
    /// A number of particles from a fraction: the whole part, and one more with the probability of the rest. Draws one
    /// random number whatever the count is; what is beyond an int gives INT_MAX.
    static int RoundedAtRandom(double count);

private:
    void LayFieldsOnPositions();
    void Touch();
    template <class Change>
    void ForEachScratch(const Change& change);

    SW_MeshPointer<const SW_Mesh> _mesh;
    SW_Mesh* _position;   // these four are components
    SW_ScalarField* _mass;
    SW_VectorField* _velocity;
    SW_ScalarField* _totalEnthalpy;
};
