// One time step: prepares what the phases need, runs them, and does between them what accumulates across particles.
//
//   location grid      which particles lie near which, for SPH
//   body forces        workers
//   bookkeeping        entrained mass leaves the cells' store, the weight of the columns is laid on the vertices
//   lateral forces     workers
//   motion             workers
//   particles          what has left the mesh goes, sources add, heavy ones are split
//   fields             masses and momenta on the vertices
//
// A worker gets a range of particles and writes the entries of that range only. Everything between the phases runs in
// one thread in the order of the particles. So the result is the same for any number of workers.

#include "SW_Simulation.h"

#include "SW_Simulation_Phase.h"

#include <algorithm>
#include <ctime>
#include <optional>
#include <system_error>
#include <thread>
#include <vector>

static constexpr double radians = ak_pi / 180;

// ----------------------------------------------------------------------------------------------------------------
// What the phases share
// ----------------------------------------------------------------------------------------------------------------

SW_SimulationPhase::SW_SimulationPhase(SW_Simulation& sim)
    : SW_SimulationParameters(sim._parameters),
      variables(sim._stepVariables),
      formulas(sim._formulas),
      walls(sim._wallLines),
      cells(sim._mesh->_lcv.Data()),
      vertices(sim._mesh->_x.Data()),
      vertexNormals(sim._mesh->_vertexNormals.Data()),
      flowDepth(sim._flowDepth->_values.Data()),
      flowVelocity(sim._velocity->_values.Data()),
      bottomPressure(sim._bottomPressure->_values.Data()),
      entrainmentMass(sim._entrainmentMass->_values.Data()),
      entrainmentEnthalpy(sim._entrainmentEnth->_values.Data()),
      resistances(sim._cellResistances.IsEmpty() ? nullptr : sim._cellResistances.Data())
{
    SW_Particles& p = *sim._particles;
    cell = p.cell.Data();
    tag = p.tag.IsEmpty() ? nullptr : p.tag.Data();
    position = p.Position()._x.Data();
    velocity = p.Velocity()._values.Data();
    mass = p.Mass()._values.Data();
    enthalpy = p.TotalEnthalpy()._values.Data();
    depth = p.depth.Data();
    dragCoefficient = p.dragCoefficient.Data();
    force = p.force.Data();
    shearRatio = p.shearRatio.Data();
    entrainedMass = p.entrainedMass.Data();
    enthalpySource = p.enthalpySource.Data();
    enthalpyDiffusion = p.enthalpyDiffusion.Data();
    bottomForce = p.bottomForce.Data();
}

void SW_Simulation::ReadStepVariables()
{
    const auto number = [this](const char* name) {
        double value = 0;
        AK_FromText(value, Get(name));
        return value;
    };
    const auto whole = [this](const char* name) {
        int value = 0;
        AK_FromText(value, Get(name));
        return value;
    };
    SW_StepVariables v;
    v.v2017 = Get("$compat") == "v2017";
    v.numThreads = whole("$n_threads");
    v.sphVerbose = whole("$sph_verbose");
    v.sphDiffusionCoefficient = number("$sph_diffusion_coefficient");
    v.sphDiffusionImplicit = !Get("$sph_diffusion_implicit").IsEmpty();
    v.cohesiveSurfaceTension = number("$cohesiveSurfaceTension");
    v.source.strength = number("$source_strength");
    v.source.duration = number("$source_duration");
    v.source.radius = number("$source_radius");
    Get("$source_point").GetVec(&v.source.point.x, 2);
    v.source.velocity = number("$source_velo");
    v.source.angle = number("$source_velo_ang");
    _stepVariables = v;
}

// ----------------------------------------------------------------------------------------------------------------
// Values of the step
// ----------------------------------------------------------------------------------------------------------------

static double CosOfBreakLines(const SW_Mesh& mesh)
{
    static constexpr double noBreakLines = 0.1;   // degrees
    double angle = 0;                             // degrees
    AK_FromText(angle, mesh.Get("BreakLinesAngle"));
    return angle <= noBreakLines ? -1.0 : std::cos(angle * radians);
}

namespace {

/// The kernel of SPH: a multiple of the cell size, or a fraction for a negative mode.
struct Kernel {
    double radius = 0;            // m
    double gradCoefficient = 0;   // 1/m5: of the gradient
    double lapCoefficient = 0;    // 1/m5: of the Laplacian

    Kernel(int sphMode, double cellSize)
    {
        if (sphMode == 0) return;
        radius = sphMode < 0 ? cellSize / -double(sphMode) : cellSize * double(sphMode);
        const double r5 = radius * radius * radius * radius * radius;
        gradCoefficient = 10 / (r5 * ak_pi) * -3;
        lapCoefficient = gradCoefficient * -2;
    }
};

/// The particles by the cells of the grid: those of cell c are sorted[counts[c]] to before sorted[counts[c + 1]].
struct LocationGrid : SW_LocationGrid {
    AK_List<int> counts{1}, sorted{1};

    void Cover(const SW_Mesh& mesh, double radius);
    void Sort(const AK_List<AK_Vec>& positions);
};

}   // namespace

void LocationGrid::Cover(const SW_Mesh& mesh, double radius)
{
    static constexpr double maxCells = 1 << 24;   // a kernel far smaller than the terrain's cells takes larger ones
    AK_Vec2 lo(1e300, 1e300), hi(-1e300, -1e300);
    for (const AK_Vec& x : mesh._x) {
        lo = {std::min(lo.x, x.x), std::min(lo.y, x.y)};
        hi = {std::max(hi.x, x.x), std::max(hi.y, x.y)};
    }
    origin = lo;
    cellSize = radius;
    if (!(cellSize > 0) || !std::isfinite(hi.x - lo.x + hi.y - lo.y)) return;   // no terrain: one cell holds all
    while (((hi.x - lo.x) / cellSize + 1.0) * ((hi.y - lo.y) / cellSize + 1.0) > maxCells) cellSize *= 2;
    nx = int((hi.x - lo.x) / cellSize + 1.0);
    ny = int((hi.y - lo.y) / cellSize + 1.0);
}

// A counting sort.
void LocationGrid::Sort(const AK_List<AK_Vec>& positions)
{
    counts.Fill(nx * ny + 1, 0);
    sorted.Fill(positions.Size(), -1);
    for (const AK_Vec& p : positions) ++counts[CellOf(p)];
    for (int c = 1; c <= nx * ny; ++c) counts[c] += counts[c - 1];
    for (int i = 0; i < positions.Size(); ++i) sorted[--counts[CellOf(positions[i])]] = i;
}

// ----------------------------------------------------------------------------------------------------------------
// Workers
// ----------------------------------------------------------------------------------------------------------------

// Calls work(first, end) for ranges that make up all particles: in numThreads workers, or here if there are none.
template <class Work>
static void InWorkers(int numThreads, int count, const Work& work)
{
    static constexpr int maxWorkers = 256;
    const int n = std::min(numThreads, maxWorkers);
    if (n < 1) {
        work(0, count);
        return;
    }
    const long long chunk = count / n + 1;
    std::vector<std::thread> workers;
    workers.reserve(size_t(n));
    for (int k = 0; k < n; ++k) {
        const int first = int(std::min<long long>(k * chunk, count));
        const int end = int(std::min<long long>((k + 1) * chunk, count));
        try {
            workers.emplace_back(work, first, end);
        } catch (const std::system_error&) {
            work(first, end);   // the system has no more threads to give
        }
    }
    for (std::thread& worker : workers) worker.join();
}

// ----------------------------------------------------------------------------------------------------------------
// Between the phases
// ----------------------------------------------------------------------------------------------------------------

// What particles have taken leaves the cells' store. A store does not fall below 0, though more may have been taken in
// this step.
void SW_Simulation::BookEntrainment()
{
    double total = 0;   // kg
    for (int i = _particles->NumParticles() - 1; i >= 0; --i) {
        const double mass = double(_particles->entrainedMass[i]);   // kg
        if (!(mass > 0)) continue;
        total += mass;
        const int c = _particles->cell[i];
        float& store = _entrainmentMass->_values[c];        // kg/m2
        const double area = Length(_mesh->CellNormal(c));   // m2
        store = std::max(float(double(store) - mass / area), 0.0f);
    }
    AK_MSG("\tentrained DFA mass: " << total);
}

// The weight of the columns becomes the pressure on the vertices of their cells.
void SW_Simulation::LayDownBottomPressure()
{
    AK_List<float>& pressure = _bottomPressure->_values;   // N at first, Pa in the end
    _mesh->WithView([&](const auto& view) {
        for (int i = _particles->NumParticles() - 1; i >= 0; --i) {
            const int c = _particles->cell[i];
            const double force = double(_particles->bottomForce[i]);   // N
            double weights[4];
            view.GetWeights(c, _particles->Position()._x[i], weights);
            const IA4& corners = view.lcv[c];
            for (int k = 0; k < NumCorners(corners); ++k)
                pressure[corners[k]] = float(double(pressure[corners[k]]) + force * weights[k]);
        }
    });
    for (int v = 0; v < pressure.Size(); ++v)
        if (pressure[v] > 0.0f) pressure[v] = float(double(pressure[v]) / Length(_mesh->_vertexNormals[v]));
}

// What lies off the mesh, and what is too light to count. With a powder part above also at its own steps.
void SW_Simulation::RemoveParticles(double t)
{
    static constexpr int fewParticles = 5;                  // that become light for ordinary reasons in one step
    static constexpr double lightest = 0.01;                // of the mass per particle
    static constexpr double onItsStep = 0.01;               // of the step
    const double threshold = lightest * _parameters.massPerParticle;   // kg
    const auto remove = [&] {
        const SW_Particles::Removal removal = _particles->RemoveUnlocatedParticles(threshold);
        _massOffMesh += removal.massOffMesh;
        _particlesLost += removal.numNoNumber;
        if (removal.numTooLight > fewParticles)
            AK_MSG("WARNING: " << removal.numTooLight
                               << InLanguage(" particles of together ", " Teilchen von zusammen ")
                               << removal.massTooLight
                               << InLanguage(" kg are removed, lighter than ", " kg werden entfernt, leichter als ")
                               << threshold
                               << InLanguage(" kg, a hundredth of MassPerParticle",
                                             " kg, ein Hundertstel von MassPerParticle"));
    };
    remove();
    if (_parameters.interactionTypeWithFluidAbove == "none") return;
    const double steps = t / _parameters.particlesTimeStep;
    if (std::fabs(steps - std::trunc(steps + 0.5)) < onItsStep) remove();
}

// With such steps particles jump over walls and terrain, and the flow becomes ragged.
void SW_Simulation::ReportLongStep(double dt)
{
    static constexpr double mostCells = 2;   // in one step
    if (_longStepIsReported) return;
    const double cellSize = _mesh->Resolution();        // m
    const double fastest = mostCells * cellSize / dt;   // m/s
    for (int i = 0; i < _particles->NumParticles() && !_longStepIsReported; ++i) {
        const double speed = Length(AK_Vec2(_particles->Velocity()._values[i]));   // m/s, in plan
        if (!(speed > fastest)) continue;
        const AK_Vec& place = _particles->Position()._x[i];
        AK_MSG("WARNING: " << InLanguage("a particle moves ", "ein Teilchen bewegt sich in einem Zeitschritt um ")
                           << speed * dt << InLanguage(" m in one step, at ", " m, bei ") << place.x << " " << place.y
                           << InLanguage(": more than two cells; DeltaT should be smaller",
                                         ": mehr als zwei Zellen; DeltaT sollte kleiner sein"));
        _longStepIsReported = true;
    }
}

// Processor time since `start`: with workers the sum of theirs.
static void LogTiming(bool verbose, const char* what, std::clock_t start, const char* more = "")
{
    if (!verbose) return;
    const long ticks = std::clock() - start;
    AK_MSG(what << ticks * 1000 / CLOCKS_PER_SEC << " ms"
                << " (" << ticks << " clocks)" << more);
}

static void LogGrid(const LocationGrid& grid, double radius)
{
    AK_MSG(grid.sorted.Size() << " SPH particles, location grid size " << radius << " origin " << grid.origin.x << " "
                              << grid.origin.y << " cells " << grid.nx << " x " << grid.ny);
}

// ----------------------------------------------------------------------------------------------------------------
// The step
// ----------------------------------------------------------------------------------------------------------------

struct SW_Simulation::Step {
    Step(SW_Simulation& simulation, double start, double length);

    void SortParticles();
    void BodyForces();
    void LateralForces();
    void Positions(const AK_List<unsigned char>& wallCells);
    void ChangeParticles();
    void Fields();

    SW_Simulation& sim;
    const SW_SimulationParameters& parameters = sim._parameters;
    const double t;    // s: at its start
    const double dt;   // s
    const int verbose;
    const int threads;
    const Kernel kernel;
    LocationGrid grid{};
    int count = 0;   // of the particles while they move
};

SW_Simulation::Step::Step(SW_Simulation& simulation, double start, double length)
    : sim(simulation),
      t(start),
      dt(length),
      verbose(parameters.sphMode == 0 ? 0 : sim._stepVariables.sphVerbose),
      threads(sim._stepVariables.numThreads),
      kernel(parameters.sphMode, SW_AsShown(sim._mesh->Resolution()))
{}

// By which each finds its neighbours.
void SW_Simulation::Step::SortParticles()
{
    if (parameters.sphMode == 0) return;
    const std::clock_t start = std::clock();
    grid.Cover(*sim._mesh, kernel.radius);
    grid.Sort(sim._particles->Position()._x);
    if (t < dt / 2 || verbose) AK_MSG("SPH kernel radius " << kernel.radius);
    if (verbose) LogGrid(grid, kernel.radius);
    LogTiming(verbose, "SPH location grid in ", start);
}

void SW_Simulation::Step::BodyForces()
{
    const std::clock_t start = std::clock();
    const int frictionLaw = sim.FrictionIndex();
    const double tanDelta = std::tan(parameters.bedFrictionAngle * radians);
    const bool runsFormula = frictionLaw == frictionFormula || sim._formulas.entrainment_energy_loss;
    std::optional<CodeOf> running;
    if (runsFormula) running.emplace(&sim);   // formula code is for one thread
    InWorkers(runsFormula ? 0 : threads, count,
              [&](int first, int end) { ComputeBodyForces(&sim, first, end, t, dt, tanDelta, frictionLaw); });
    running.reset();
    sim.BookEntrainment();
    const bool isAlone = parameters.interactionTypeWithFluidAbove == "none";
    if (parameters.sphMode == 0 || !isAlone) sim.LayDownBottomPressure();
    LogTiming(verbose, "body forces ", start);
}

void SW_Simulation::Step::LateralForces()
{
    const std::clock_t start = std::clock();
    const double cosPhi = std::cos(parameters.internalFrictionAngle * radians);
    const double tanPhi = std::tan(parameters.internalFrictionAngle * radians);
    // Its reports are messages, which only this thread sends.
    InWorkers(verbose > 1 ? 0 : threads, count, [&](int first, int end) {
        ComputeLateralForces(&sim, first, end, dt, cosPhi * cosPhi, tanPhi * tanPhi, parameters.sphMode, kernel.radius,
                             kernel.gradCoefficient, kernel.lapCoefficient, grid.nx, grid.origin, grid.cellSize,
                             &grid.counts, &grid.sorted, verbose);
    });
    const AK_String neighbors = ", " + AK_ToText(0.0 / count, "%g") + " neighs/particle";   // nobody counts them
    LogTiming(verbose, "lateral forces ", start, neighbors.c_str());
}

void SW_Simulation::Step::Positions(const AK_List<unsigned char>& wallCells)
{
    const std::clock_t start = std::clock();
    const double cosBreak = CosOfBreakLines(*sim._mesh);
    InWorkers(threads, count, [&](int first, int end) { UpdatePositions(&sim, first, end, dt, cosBreak, &wallCells); });
    LogTiming(verbose, "position update ", start);
}

void SW_Simulation::Step::ChangeParticles()
{
    const std::clock_t start = std::clock();
    sim.RemoveParticles(t);
    sim.ReportLongStep(dt);
    sim.AddParticlesFromSources(t, dt);
    sim.SplitParticles();
    LogTiming(verbose, "particles removal/splitting ", start);
}

void SW_Simulation::Step::Fields()
{
    const std::clock_t start = std::clock();
    sim.UpdateFields(float(t));   // the time at the start of the step
    LogTiming(verbose, "field update ", start);
    double totalMass = 0;   // kg
    for (int i = sim._particles->NumParticles() - 1; i >= 0; --i)
        totalMass += double(sim._particles->Mass()._values[i]);
    AK_MSG("\ttotal DFA mass: " << totalMass);
}

void SW_Simulation::ComputeTimeStep(double t, double dt, AK_List<unsigned char>& wallCells)
{
    static constexpr unsigned long stepSeed = 777;
    AK_ASSERT(_mesh);
    const std::clock_t start = std::clock();
    AK_MSG("computing time step " << t + dt << "...");
    AK_System::srand(stepSeed);
    ReadStepVariables();
    Step step(*this, t, dt);
    step.SortParticles();
    _bottomPressure->_values.Fill(_mesh->NumVertices(), 0.0f);
    ReleaseSecondaryAreas();
    step.count = _particles->NumParticles();
    _particles->SizeScratch(step.count);
    step.BodyForces();
    step.LateralForces();
    step.Positions(wallCells);
    step.ChangeParticles();
    step.Fields();
    LogTiming(step.verbose, "timestep total ", start);
}
