// One avalanche: the parameters of the model, the scenario, the particles, the result fields and the state of the run.
//
// The model is a depth-averaged dense flow on a curved surface, solved by particles. A particle is a column of mass m
// that stands on the terrain; the flow depth h lives on the vertices of the mesh, where each step lays down the masses
// of the particles. In each step
//
//   body forces      gravity along the surface, friction, entrainment, resistance    ComputeBodyForces
//   lateral forces   the gradient of the flow depth, or the earth pressure           ComputeLateralForces
//   motion           drag implicitly, position, walls, enthalpy                      UpdatePositions
//
// are loops over a range of particles that workers share out. What accumulates across particles runs between them, in
// one thread and in a fixed order, so that a run is the same for any number of workers.
//
//   SW_Simulation.cpp                  the object, its components, what the tree asks of it
//   SW_Simulation_Attributes.cpp       the table, option lists, visibilities
//   SW_Simulation_Animation.cpp        stepping through what a run has saved
//   SW_Simulation_Friction.cpp         friction laws, formula files, earth pressure
//   SW_Simulation_Initialize.cpp       scenario -> particles
//   SW_Simulation_Entrainment.cpp      the store of snow that can be entrained; secondary release
//   SW_Simulation_Step.cpp             one time step
//   SW_Simulation_BodyForces.cpp, _LateralForces.cpp, _Positions.cpp   its three phases
//   SW_Simulation_Sources.cpp          particles that flow in, splitting
//   SW_Simulation_Obstacles.cpp        walls and resistance areas, cell by cell
//   SW_Simulation_Fields.cpp           particles -> fields, deposition
//   SW_Simulation_TimeSteps.cpp        files of time steps
//   SW_Simulation_Run.cpp, _Refusals.cpp, _Background.cpp   run control

#pragma once

#include "SW_Particles.h"

#include <array>
#include <cstdlib>
#include <fstream>

class SW_InitialCondition;
class SW_InitialConditions;
class SW_ResistanceArea;
class SW_ResistanceAreas;
class SW_WallLines;
class SW_SourceLines;

/// The laws of bottom friction by their index.
enum SW_FrictionLaw {
    frictionFormula = -1,
    frictionChezy = 0,
    frictionChezyMohrCoulomb = 1,
    frictionClassic = 2,
    frictionKorvoAT = 3,
    frictionWetSnow = 4,
};

/// What formula code is to the run: functions of the inline formula and of a rheology file; null for what is missing.
struct SW_FrictionFormulas {
    Symbol* shear = nullptr;   // of the inline formula: (p, v, h, d)
    Symbol* tau = nullptr;     // of the file: (p, u, h, rho, t, position, normal, e)
    Symbol* ku = nullptr;
    Symbol* kv = nullptr;
    Symbol* get_par = nullptr;
    Symbol* set_par = nullptr;
    Symbol* entrainment_energy_loss = nullptr;
};

/// A point where snow flows into the terrain.
struct SW_PointSource {
    double strength = 0;   // kg/s; 0 for no source
    double duration = 0;   // s
    double radius = 0;     // m, around the point
    AK_Vec2 point;         // m
    double velocity = 0;   // m/s, along the surface
    double angle = 0;      // degrees from north, clockwise
};

/// The inputs of a step that users set as variables of the object ("$compat" and so on). They are read in the main
/// thread before the phases, since workers never ask the object.
struct SW_StepVariables {
    bool v2017 = false;   // the older estimate of the speed
    int numThreads = 0;   // 0: no workers
    int sphVerbose = 0;
    double sphDiffusionCoefficient = 0;
    bool sphDiffusionImplicit = false;
    double cohesiveSurfaceTension = 0;   // N/m
    SW_PointSource source;
};

/// A number as it arrives by the text of an attribute, with 15 significant digits.
inline double SW_AsShown(double value) { return std::strtod(AK_String(value, "%.15g").c_str(), nullptr); }

class SW_Simulation : public AK_Class<SW_Simulation, AK_Object> {
public:
    static constexpr const char* className = "SW_Simulation";
    static std::span<const Row> Rows();

    static constexpr AK_Vec gravAcc{0, 0, -9.81};   // m/s2
    static constexpr double velMagMin = 1e-06;      // m/s
    static constexpr double depMin = 1e-06;         // m
    static constexpr const char* defaultFormula = "return v / h * 1.0;";   // stands in for no law that was named
    inline static float _earthPressureCoefficients[6] = {1, 1, 1, 1, 1, 1};

    SW_Simulation(const AK_String& id, AK_Object* parent);
    ~SW_Simulation() override;
    void Update() override;
    int SaveData(AK_Stream& stream) const override;
    int LoadData(AK_Stream& stream) override;
    void Load(const AK_String& dir) override;
    void LoadFinalize() override;

    // ---- parts
    SW_Mesh* Mesh() const { return _mesh; }
    AK_String MeshPath() const { return _meshReference.Path(*this); }
    /// Binds the mesh that the text names; the text stays if there is none. On another mesh the state of a run is lost.
    /// Lines and areas without a base mesh are projected.
    void SetMesh(const AK_String& path);
    SW_Particles& Particles() { return *_particles; }
    const SW_Particles& Particles() const { return *_particles; }
    SW_InitialConditions& ReleaseAreas() const { return *_releaseAreas; }
    SW_InitialConditions& EntrainmentAreas() const { return *_entrainmentAreas; }
    SW_InitialConditions& SecondaryReleaseAreas() const { return *_secondaryReleaseAreas; }
    SW_ResistanceAreas& ResistanceAreas() const { return *_resistanceAreas; }
    SW_WallLines& WallLines() const { return *_wallLines; }
    SW_SourceLines& SourceLines() const { return *_sourceLines; }
    double CurrentTime() const { return _currentTime; }   // s
    double MassOffMesh() const { return _massOffMesh; }   // kg: what has left the terrain in this run

    // ---- friction (SW_Simulation_Friction.cpp)
    int FrictionIndex() const;   // SW_FrictionLaw
    /// The sentence, behind `start`, with which a run is refused since the law that was named cannot be had; else "".
    AK_String ReasonAgainstFriction(const AK_String& start) const;
    void FrictionType(const AK_String& name);
    static AK_String FrictionTypeOptions();
    const SW_FrictionFormulas& Formulas() const { return _formulas; }
    /// Compiles the body of the formula `shear`; the text before stays if it has errors.
    void BottomShearStressFormula(const AK_String& body);
    static const char* BottomShearStressFormulaSignature();
    /// Loads a rheology file: its functions, or none of them if it has errors or lacks `tau`.
    void BottomShearStressFormulaFile(const AK_String& path);
    AK_String BottomShearStressFormulaFile() const;   // its name, without directory and extension
    /// The law that was loaded by its path; "" for one that FrictionType finds. The file may be missing.
    void FormulaFilePath(const AK_String& path);
    AK_String FormulaFilePath() const;
    AK_String FormulaParameters() const;
    void FormulaParameters(const AK_String& text);
    /// For display: the forces compute theirs for each particle. Savage and Hutter (1989).
    void ComputeEarthPressureCoefficients();
    AK_String EarthPressureCoefficients() const;

    // ---- scenario -> particles (SW_Simulation_Initialize.cpp, SW_Simulation_Entrainment.cpp)
    /// Fills the store of snow, the release and the particles, and empties the fields. False, with a status and with
    /// everything as it was, if the release is nothing that a run can begin with; see SW_Simulation_Refusals.cpp.
    bool Initialize();
    void InitializeCellEntrainmentMass();
    void UpdateReleaseMass();
    double EntrainableMass() const;        // kg
    double ReleaseMass() const;            // kg, as the areas were last updated
    double SecondaryReleaseMass() const;   // kg
    double EntrainmentAreasMass() const;   // kg
    /// False if nothing could flow: no release area, no mesh of release depths, no point source.
    bool HasRelease() const;
    double PointSourceStrength() const;   // kg/s; 0 for no point source

    // ---- one step (SW_Simulation_Step.cpp)
    void ReadStepVariables();
    void ComputeTimeStep(double t, double dt, AK_List<unsigned char>& wallCells);
    void ReleaseSecondaryAreas();   // (SW_Simulation_Entrainment.cpp)

    // ---- obstacles (SW_Simulation_Obstacles.cpp)
    /// For each cell the number of the wall line that particles in it may hit, from 1; 0 for none.
    void UpdateWallLines(AK_List<unsigned char>& wallCells);
    /// For each cell the resistance area that its centre lies in, or null.
    void UpdateCellResistances();

    // ---- fields and time steps (SW_Simulation_Fields.cpp, SW_Simulation_TimeSteps.cpp)
    /// Lays the particles' mass and momentum down on the vertices and raises the peaks; t in s.
    void UpdateFields(float t);
    void EvaluateDepositionWith(const AK_String& line);
    /// Re-binds all fields to the mesh and rebuilds what is not stored from the particles.
    void LoadFinalizePriv();
    /// Writes the state to the simulation's directory, under a name made of the time; nothing without a directory.
    void SaveTimeStep(const AK_String& ignored);
    /// The state as it was saved; the name is without directory and extension, and an empty one does nothing. A file
    /// that is no such state leaves the simulation without particles, as before a run.
    void LoadTimeStep(const AK_String& name);
    bool ReadTimeStep(const AK_String& name);
    void LoadNextTimeStep();
    void LoadPrevTimeStep();
    void LoadFirstTimeStep();
    void LoadLastTimeStep();
    void Time(const AK_String& time);   // loads the step of that time
    static AK_String TimeStepFileName(double t);
    static double TimeStepFromName(const AK_String& name);
    /// Names of the steps in the directory, without directory and extension, in the order of time; `current` becomes
    /// the index of the one that the state is of, or -1.
    AK_List<AK_String> TimeStepInfo(int& current) const;
    AK_String TimeStepsList() const;
    AK_String NextTimeStepVis() const;
    AK_String PrevTimeStepVis() const;
    void DeleteTimesteps(const AK_String& mode);   // "all", or else all but the last
    void RemoveObsoleteTimeStepFiles() const;      // what is later than the state: a continued run writes it anew
    int SaveDataTo(AK_Stream& stream) const;
    int LoadDataFrom(AK_Stream& stream);

    // ---- run control (SW_Simulation_Run.cpp, SW_Simulation_Background.cpp)
    /// From the release to EndTime; refused without anything that could flow.
    void Run(const AK_String& ignored);
    /// From the state that is loaded to EndTime; steps on disc that are later are removed. Without particles afresh.
    void Continue(const AK_String& ignored);
    void Interrupt();               // ends a run, also one of another process, before its next step
    AK_String
    Status() const;   // "started", "running", "finished", "interrupted" (also of a process that is gone); "unknown"
    /// True while a process that is neither this one nor one of its ancestors runs the simulation.
    bool AnotherProcessRuns() const;
    AK_String StatusInfo() const;   // a line that tells how far a run is
    void SetStatus(const char* word) const;
    void SetStatusInfo(const AK_String& line) const;
    AK_String RunVis() const;
    AK_String ContinueVis() const;
    /// Starts the program anew on this simulation; with `out` the command line is written there instead.
    void RunInBackground(int cont, std::ostream* out);
    void RunInBackground(const AK_String& ignored);
    void ContinueInBackground(const AK_String& ignored);
    /// Writes the macro with which the program runs this simulation, or goes on with it, in a tree of its own; false if
    /// that fails. The command line plays it, in the directory of no one in particular.
    bool WriteStartMacro(const char* command) const;
    AK_String StartCommandLine(const char* redirect) const;
    AK_String StartFile(const char* extension) const;   // "start", in the directory of the simulation
    void ShowShallowWaterLogFile();
    /// The file named by "$psaRestartFile" if it lies in the directory, else "".
    AK_String PsaCurrentRestartFile() const;

    // ---- animation (SW_Simulation_Animation.cpp)
    /// Loads the saved steps one after the other, from the loaded one or from the first, and shows them; with the views
    /// that are assigned to them, if wanted.
    void Animate(bool withAssignedViews);

    // ---- the phases of a step: particles from first to before end. They write their own particles only.
    friend void ComputeBodyForces(SW_Simulation* sim, int first, int end, double t, double dt, double tanDelta,
                                  int frictionIndex);
    friend void ComputeLateralForces(SW_Simulation* sim, int first, int end, double dt, double cos2Phi, double tan2Phi,
                                     int sphMode, double r, double gradCoefficient, double lapCoefficient, int nx,
                                     AK_Vec2 origin, double gridSize, const AK_List<int>* counts,
                                     const AK_List<int>* sorted, int verbose);
    friend void UpdatePositions(SW_Simulation* sim, int first, int end, double dt, double cosBreak,
                                const AK_List<unsigned char>* wallCells);

private:
    // (SW_Simulation.cpp, SW_Simulation_Attributes.cpp)
    void AddFields();
    std::array<SW_ScalarField*, 7> StoredFields() const;   // those that a time step holds
    void BindFields();
    /// A mesh that has been imported anew costs the state of the run. To be called before a run goes on.
    void ForgetStateOfChangedMesh();
    AK_String MeshNamesList() const;
    AK_String PsaMeshNamesList() const;
    template <int method>
    bool Determines() const;
    AK_String DepthMeshOptions() const;
    const SW_Mesh* DepthMesh(const AK_String& name) const;
    AK_Object* ProjectContainer(const char* id) const;

    // (SW_Simulation_Friction.cpp)
    bool UsesMohrCoulomb() const;
    bool UsesDynamicFriction() const;
    bool HasFormulaParameters() const;
    bool LoadFormulaFile(const AK_String& path);
    AK_String EarthPressureCoefficientsVis() const;
    void ForgetFormulas();

    // (SW_Simulation_Initialize.cpp)
    struct Release;
    void FindRelease(Release& release);
    void TellDepthMesh(const Release& release) const;
    void TellRelease(const Release& release) const;
    void FindAreas(Release& release);
    void FindCells(Release& release) const;
    void DetermineMassPerParticle(Release& release) const;
    void CompareMasses(const Release& release) const;
    void StartFrom(const Release& release);
    void TakeMassPerParticle(const Release& release);
    void CorrectMassPerParticle(double mass);
    void ClearResults();

    // (SW_Simulation_Entrainment.cpp)
    double GlobalEntrainmentEnthalpy(double z) const;
    void FillStoreByAltitude();
    void FillStoreFromAreasAndMesh();
    const SW_InitialCondition* EntrainmentAreaAt(const AK_Vec2& p) const;

    // (SW_Simulation_Animation.cpp)
    void ShowStep();
    void LookFromAssignedView() const;
    AK_String AssignedViews() const;
    void AssignedViews(const AK_String& list);
    AK_String AssignedView() const;
    void AssignedView(const AK_String& view);
    AK_String ViewOptions() const;

    // (SW_Simulation_TimeSteps.cpp, SW_Simulation_Fields.cpp)
    struct TimeStepRecord;
    static std::span<const TimeStepRecord> TimeStepRecords();
    bool WriteTimeStep(AK_Stream& stream) const;
    bool ReadTimeStepBlock(AK_Stream& stream, bool enthalpies, const char* end);
    bool TimeStepIsSound() const;
    void TakeMassPerParticleOfState(double recorded);   // kg, 0 for an unknown one
    void ForgetState();
    AK_String NeighbourStep(int offset) const;
    bool BringTimeStepsFrom(const AK_String& oldDirectory) const;
    void LabelFields();

    // (SW_Simulation_Run.cpp, SW_Simulation_Background.cpp)
    struct RunState;
    AK_String StatusFile(const char* name) const;
    bool IsCoupled() const;   // with a fluid above
    void RunToEnd(const Release* release);   // null: from the state that is loaded
    void TellDoubts() const;                 // what is no reason against a run, but worth a warning
    void PrepareRun(RunState& run, const Release* release);
    void ReportLongStep(double dt);
    void ShowAndSave(RunState& run);
    void TellProgress(const RunState& run) const;
    bool EvaluateStopCriterion(RunState& run);
    void FinishRun(const RunState& run);
    AK_String MarkedCommand(const AK_String& command) const;
    void StartCommand(const AK_String& command);

    // (SW_Simulation_Refusals.cpp)
    /// Says the sentence, a "WARNING:" or "INFO:", and leaves it in the status; false.
    bool Refuse(const AK_String& sentence) const;
    /// What stands against a run, "" if nothing does. Changes nothing.
    AK_String ReasonAgainstStart(const AK_String& noRelease) const;
    AK_String ReasonAgainstRelease(Release& release);
    AK_String ReasonAgainstParameters() const;
    AK_String ReasonAgainstSources(double massPerParticle) const;
    /// Whether a run can begin, from the release, which is found then, or from the state that is loaded. If not, the
    /// reason is said and left in the status, and nothing has changed.
    bool MayRun(bool afresh, const char* noRelease, Release& release);
    bool StartsAfresh() const;   // Continue has no state to go on from
    bool MeshHasChanged() const;

    friend struct SW_SimulationPhase;   // what the phases share; defined where they are

    // Parts of a step, each in particle order and in one thread (SW_Simulation_Step.cpp, SW_Simulation_Sources.cpp).
    void BookEntrainment();
    void LayDownBottomPressure();
    void RemoveParticles(double t);
    void AddParticlesFromSources(double t, double dt);
    void SplitParticles();

    // Parameters of the model. Their meaning, units and usual ranges: files/AK_Attributes/SW_Simulation.atr.
    AK_String _psaMesh;
    AK_String _frictionType = "Mohr-Coulomb with max of dynamic and granular pressure (KORVO classic)";
    double _internalFrictionAngle = 35;   // degrees
    double _bedFrictionAngle = 16;        // degrees
    double _dynamicFrictionCoefficient = 0.022;
    Namespace* _formulaNameSpace = nullptr;   // owned; the functions of the rheology file
    Namespace* _shearNameSpace = nullptr;     // owned; the inline formula, which a file must not clear away
    SW_FrictionFormulas _formulas;
    AK_String _bottomShearStressFormula = defaultFormula;
    AK_String _formulaFile;         // of the functions in force; "" for none
    AK_String _namedFormulaFile;    // loaded by its path, wherever it is now; "" where FrictionType names the law
    AK_String _formulaParameters;   // as last set: they outlive a file that is missing
    double _density = 200;   // kg/m3 of the flow
    AK_String _releaseDHM = "none";
    double _releaseDHMDensity = 150;       // kg/m3
    double _releaseDHMTemperature = -10;   // degrees C
    AK_String _entrainmentDHM = "none";
    double _entrainmentDHMDensity = 50;                     // kg/m3
    double _globalEntrainmentAreaWeight = 0;                // kg/m2
    double _globalEntrainmentMinZ = 0;                      // m
    double _globalEntrainmentTemperature = -10;             // degrees C
    double _globalEntrainmentTemperatureGradient = -0.01;   // degrees per m
    double _entrainmentShearResistance = 0;                 // J/m2
    double _entrainmentDeformationResistance = 0;           // J/kg
    double _entrainmentErosionEnergy = 0;                   // J/kg; 0 for plough entrainment
    double _subgridMixingFactor = 100;
    double _restitutionCoefficient = 0;
    double _curvatureReductionFactor = 1;
    int _sphMode = 0;
    AK_String _interactionTypeWithFluidAbove = "none";
    double _particlesMinFroudeSaltation = 400;
    double _particlesSuspensionCoeff = 5;
    double _particlesDiameter = 0.001;        // m
    double _particlesMaterialDensity = 900;   // kg/m3
    double _particlesDragCoefficient = 1;
    double _particlesRestitutionCoefficient = 0.98;
    double _dfaTurbulenceFactor = 0.05;
    int _turbulenceReactionMode = 0;
    double _particlesReflexionAngle = 30;            // degrees
    double _particlesReflexionMinimalVelocity = 3;   // m/s
    double _psaMinRoughness = 0.01;
    double _psaRoughnessVibrationConst = 0.0001;
    double _psaRoughnessSuspensionConst = 10;
    int _psaDirectEntrainment = 0;
    double _parcelMass = 50;           // kg
    double _particlesTimeStep = 0.1;   // s
    double _endTime = 100;             // s
    double _deltaT = 0.1;              // s
    double _deltaOut = 5;              // s
    AK_String _remark;
    AK_String _cleanupBehavior = "keep all time steps";
    AK_String _massPerParticleDeterminationMethod = "delta-depth per particle";
    double _massPerParticle = 10000;   // kg
    double _numParticlesPerCell = 5;
    int _numParticles = 20000;
    double _deltaDepthPerParticle = 0.5;   // m
    int _psaNumMPI = 1;
    double _dx = 0;       // stored only
    int _honeycomb = 0;   // stored only
    int _animationWriteImageFiles = 0;
    int _animationStepIncrement = 1;
    double _animationStepDelay = 0;   // s
    double _peakKineticEnergy = 0;    // J
    AK_String _additionalPSASolverArgs;

    SW_MeshPointer<SW_Mesh> _mesh;   // not owned
    SW_MeshReference _meshReference;
    int _boundVertices = 0, _boundCells = 0;   // of the mesh when it was bound: it may be imported anew
    double _currentTime = 0;                   // s
    AK_String _currentTimeStep;

    // Components.
    SW_InitialConditions* _releaseAreas;
    SW_InitialConditions* _entrainmentAreas;
    SW_InitialConditions* _secondaryReleaseAreas;
    SW_ResistanceAreas* _resistanceAreas;
    SW_WallLines* _wallLines;
    SW_SourceLines* _sourceLines;
    SW_ScalarField* _flowDepth;             // m
    SW_ScalarField* _peakFlowDepth;         // m
    SW_VectorField* _velocity;              // m/s
    SW_ScalarField* _dynamicPeakPressure;   // kPa
    SW_ScalarField* _peakForcePerWidth;     // kN/m
    SW_ScalarField* _peakTorquePerWidth;    // kNm/m
    SW_ScalarField* _frontArrivalTime;      // s
    SW_ScalarField* _entrainmentMass;       // kg/m2, on cells
    SW_ScalarField* _entrainmentEnth;       // J/kg, on cells
    SW_Particles* _particles;
    std::unique_ptr<SW_ScalarField> _bottomPressure;   // Pa; a working field, no component

    AK_List<const SW_ResistanceArea*> _cellResistances{1};   // for each cell, null for none
    SW_StepVariables _stepVariables;
    double _massOffMesh = 0;   // kg
    int _particlesLost = 0;    // that have become no number in this run
    bool _isBeingLoaded = false;
    bool _longStepIsReported = false;   // of a particle that passes more than two cells, once a run
    bool _loadPsaResults = true;
    mutable AK_String _dataDirectory;   // where the time steps lie: that of the last save or load
};

void ComputeBodyForces(SW_Simulation* sim, int first, int end, double t, double dt, double tanDelta, int frictionIndex);
void ComputeLateralForces(SW_Simulation* sim, int first, int end, double dt, double cos2Phi, double tan2Phi,
                          int sphMode, double r, double gradCoefficient, double lapCoefficient, int nx, AK_Vec2 origin,
                          double gridSize, const AK_List<int>* counts, const AK_List<int>* sorted, int verbose);
void UpdatePositions(SW_Simulation* sim, int first, int end, double dt, double cosBreak,
                     const AK_List<unsigned char>* wallCells);
