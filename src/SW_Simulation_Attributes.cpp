// What a user sees of a simulation: its attributes and commands.

#include "SW_Simulation.h"

// ----------------------------------------------------------------------------------------------------------------
// Options and visibilities
// ----------------------------------------------------------------------------------------------------------------

static AK_String Options(std::initializer_list<const char*> options)
{
    AK_String list;
    for (const char* option : options) list = list + option + ak_sep;
    return list;
}

static const char* const massPerParticleMethods[] = {"direct", "particles per cell", "number of particles",
                                                     "delta-depth per particle"};

static AK_String MassPerParticleMethods()
{
    AK_String list;
    for (const char* method : massPerParticleMethods) list = list + method + ak_sep;
    return list;
}

// ----------------------------------------------------------------------------------------------------------------
// The table
// ----------------------------------------------------------------------------------------------------------------

// clang-format off
std::span<const AK_Row> SW_Simulation::Rows()
{
    using S = SW_Simulation;
    using Text = const AK_String&;
    static constexpr auto ignore = [](S&, Text) {};   // commands of a solver that is no part of this program
    static constexpr Row rows[] = {
        {"Mesh",                                 pair<&S::MeshPath, &S::SetMesh>},
        {"GetMeshNamesList",                     shown<&S::MeshNamesList>},
        {"Remark",                               value<&S::_remark>},

        {"FrictionType",                         pair<&S::_frictionType, &S::FrictionType>},
        {"FrictionTypeOptions",                  shown<[](const S&) { return FrictionTypeOptions(); }>},
        {"InternalFrictionAngle",                value<&S::_internalFrictionAngle>},          // degrees
        {"BedFrictionAngle",                     value<&S::_bedFrictionAngle>},               // degrees
        {"FrictionAngleVisibility",              visible<&S::UsesMohrCoulomb>},
        {"DynamicFrictionCoefficient",           value<&S::_dynamicFrictionCoefficient>},
        {"DynamicFrictionCoefficientVis",        visible<&S::UsesDynamicFriction>},
        {"EarthPressureCoefficients",            shown<&S::EarthPressureCoefficients>},
        {"EarthPressureCoefficientsVis",         shown<&S::EarthPressureCoefficientsVis>},
        {"FormulaFilePath",                      pair<[](const S& s) { return s.FormulaFilePath(); },
                                                      [](S& s, Text path) { s.FormulaFilePath(path); }>},
        {"FormulaFilePathVis",                   shown<[](const S& s) { return s.FormulaFilePath().IsEmpty() ? "-"
                                                                                                             : "w"; }>},
        {"FormulaParameters",                    pair<[](const S& s) { return s.FormulaParameters(); },
                                                      [](S& s, Text text) { s.FormulaParameters(text); }>},
        {"FormulaParametersVis",                 visible<&S::HasFormulaParameters>},
        {"BottomShearStressFormula",             pair<&S::_bottomShearStressFormula,
                                                      [](S& s, Text body) { s.BottomShearStressFormula(body); }>},
        {"BottomShearStressFormulaVis",          shown<[](const S&) { return "-"; }>},
        {"BottomShearStressFormulaSignature",    shown<[](const S&) { return BottomShearStressFormulaSignature(); }>},
        {"BottomShearStressFormulaFile",         pair<[](const S& s) { return s.BottomShearStressFormulaFile(); },
                                                      [](S& s, Text path) { s.BottomShearStressFormulaFile(path); }>},

        {"Density",                              value<&S::_density>},                        // kg/m3
        {"ReleaseDHM",                           value<&S::_releaseDHM>},
        {"ReleaseDHM_Options",                   shown<&S::DepthMeshOptions>},
        {"ReleaseDHMDensity",                    value<&S::_releaseDHMDensity>},              // kg/m3
        {"EntrainmentDHM",                       value<&S::_entrainmentDHM>},
        {"EntrainmentDHMDensity",                value<&S::_entrainmentDHMDensity>},          // kg/m3
        {"GlobalEntrainmentAreaWeight",          value<&S::_globalEntrainmentAreaWeight>},    // kg/m2
        {"GlobalEntrainmentMinZ",                value<&S::_globalEntrainmentMinZ>},          // m
        {"GlobalEntrainmentTemperature",         value<&S::_globalEntrainmentTemperature>},   // degrees C
        {"GlobalEntrainmentTemperatureGradient", value<&S::_globalEntrainmentTemperatureGradient>},
        {"EntrainmentShearResistance",           value<&S::_entrainmentShearResistance>},          // J/m2
        {"EntrainmentDeformationResistance",     value<&S::_entrainmentDeformationResistance>},    // J/kg
        {"EntrainmentErosionEnergy",             value<&S::_entrainmentErosionEnergy>},            // J/kg

        {"SubgridMixingFactor",                  value<&S::_subgridMixingFactor>},
        {"RestitutionCoefficient",               value<&S::_restitutionCoefficient>},
        {"CurvatureReductionFactor",             value<&S::_curvatureReductionFactor>},
        {"SphMode",                              value<&S::_sphMode>},
        {"$n_threads",                           AK_Variable<"$n_threads">},
        {"$compat",                              AK_Variable<"$compat">},
        {"$sph_verbose",                         AK_Variable<"$sph_verbose">},
        {"$sph_diffusion_coefficient",           AK_Variable<"$sph_diffusion_coefficient">},     // m2/s
        {"$sph_diffusion_implicit",              AK_Variable<"$sph_diffusion_implicit">},
        {"$cohesiveSurfaceTension",              AK_Variable<"$cohesiveSurfaceTension">},        // N/m
        {"$source_strength",                     AK_Variable<"$source_strength">},               // kg/s
        {"$source_duration",                     AK_Variable<"$source_duration">},               // s
        {"$source_radius",                       AK_Variable<"$source_radius">},                 // m
        {"$source_point",                        AK_Variable<"$source_point">},                  // m
        {"$source_velo",                         AK_Variable<"$source_velo">},                   // m/s
        {"$source_velo_ang",                     AK_Variable<"$source_velo_ang">},               // degrees

        {"MassPerParticleDeterminationMethod",   value<&S::_massPerParticleDeterminationMethod>},
        {"MassPerParticleDeterminationMethods",  shown<[](const S&) { return MassPerParticleMethods(); }>},
        {"MassPerParticle",                      value<&S::_massPerParticle>},                // kg
        {"MassPerParticleVisibility",            editable<&S::Determines<0>>},
        {"NumParticlesPerCell",                  value<&S::_numParticlesPerCell>},
        {"NumParticlesPerCellVisibility",        editable<&S::Determines<1>>},
        {"NumParticles",                         value<&S::_numParticles>},
        {"NumParticlesVisibility",               editable<&S::Determines<2>>},
        {"DeltaDepthPerParticle",                value<&S::_deltaDepthPerParticle>},          // m
        {"DeltaDepthPerParticleVisibility",      editable<&S::Determines<3>>},

        {"ReleaseMass",                          shown<&S::ReleaseMass>},                     // kg
        {"SecondaryReleaseMass",                 shown<&S::SecondaryReleaseMass>},
        {"EntrainmentMass",                      shown<&S::EntrainmentAreasMass>},
        {"EntrainableMass",                      shown<&S::EntrainableMass>},
        {"CurrentMass",                          shown<[](const S& s) { return s._particles->TotalMass(); }>},
        {"UpdateReleaseMass",                    command<[](S& s, Text) { s.UpdateReleaseMass(); }>},

        {"EndTime",                              value<&S::_endTime>},                        // s
        {"DeltaT",                               value<&S::_deltaT>},
        {"DeltaOut",                             value<&S::_deltaOut>},
        {"$stop_crit",                           AK_Variable<"$stop_crit">},
        {"$endITC",                              AK_ResultVariable<"$endITC">},
        {"$autosave",                            AK_Variable<"$autosave">},
        {"Run",                                  command<&S::Run>},
        {"RunVis",                               shown<&S::RunVis>},
        {"Continue",                             command<&S::Continue>},
        {"ContinueVis",                          shown<&S::ContinueVis>},
        {"RunInBackground",                      command<[](S& s, Text text) { s.RunInBackground(text); }>},
        {"ContinueInBackground",                 command<&S::ContinueInBackground>},
        {"Interrupt",                            command<[](S& s, Text) { s.Interrupt(); }>},
        {"InterruptVis",                         editable<[](const S& s) { return s.Status() == "running"
                                                                                  || s.Status() == "started"; }>},
        {"Status",                               shown<&S::Status>},
        {"StatusInfo",                           shown<&S::StatusInfo>},
        {"$run_time",                            AK_ResultVariable<"$run_time">},             // s
        {"CurrentTime",                          shown<&S::_currentTime>},                    // s
        {"PeakKineticEnergy",                    shown<&S::_peakKineticEnergy>},              // J
        {"ShowShallowWaterLogFile",              command<[](S& s, Text) { s.ShowShallowWaterLogFile(); }>},

        {"SaveTimeStep",                         command<&S::SaveTimeStep>},
        {"LoadTimeStep",                         command<&S::LoadTimeStep>},
        {"LoadNextTimeStep",                     command<[](S& s, Text) { s.LoadNextTimeStep(); }>},
        {"LoadPrevTimeStep",                     command<[](S& s, Text) { s.LoadPrevTimeStep(); }>},
        {"LoadFirstTimeStep",                    command<[](S& s, Text) { s.LoadFirstTimeStep(); }>},
        {"LoadLastTimeStep",                     command<[](S& s, Text) { s.LoadLastTimeStep(); }>},
        {"NextTimeStepVis",                      shown<&S::NextTimeStepVis>},
        {"PrevTimeStepVis",                      shown<&S::PrevTimeStepVis>},
        {"Time",                                 command<&S::Time>},
        {"TimeStepsList",                        shown<&S::TimeStepsList>},
        {"CurrentTimeStep",                      shown<&S::_currentTimeStep>},
        {"DeleteTimesteps",                      command<&S::DeleteTimesteps>},
        {"DeleteTimestepsOptions",               shown<[](const S&) { return Options({"except last", "all"}); }>},
        {"CleanupBehavior",                      value<&S::_cleanupBehavior>},
        {"CleanupBehaviorOptions",               shown<[](const S&) {
            return Options({"keep all time steps", "keep last time step", "remove all time steps", "delete entirely"});
        }>},
        {"EvaluateDepositionWith",               command<&S::EvaluateDepositionWith>},
        {"DepositionEvaluationOptions",          shown<[](const S& s) { return SW_PathsOfType(s, "Polyline"); }>},
        {"$DepositionError",                     AK_ResultVariable<"$DepositionError">},

        {"AnimateTimeSteps",                     command<[](S& s, Text) { s.Animate(false); }>},
        {"AnimationWriteImageFiles",             value<&S::_animationWriteImageFiles>},
        {"AnimationStepIncrement",               value<&S::_animationStepIncrement>},
        {"AnimationStepDelay",                   value<&S::_animationStepDelay>},             // s
        {"get_assigned_animation_view_options",  shown<&S::ViewOptions>},
        {"get_assigned_animation_view",          shown<[](const S& s) { return s.AssignedView(); }>},
        {"set_assigned_animation_view",          command<[](S& s, Text view) { s.AssignedView(view); }>},
        {"get_assigned_views",                   shown<[](const S& s) { return s.AssignedViews(); }>},
        {"set_assigned_views",                   command<[](S& s, Text list) { s.AssignedViews(list); }>},
        {"clear_animation_views",                command<[](S& s, Text) { s.AssignedViews(""); }>},
        {"animate_with_assigned_views",          command<[](S& s, Text) { s.Animate(true); }>},
        {"$animationFiles",                      AK_ResultVariable<"$animationFiles">},
        {"$assigned_views",                      AK_Variable<"$assigned_views">},

        // Of the powder part: stored and saved for a solver that is no part of this program.
        {"InteractionTypeWithFluidAbove",        value<&S::_interactionTypeWithFluidAbove>},
        {"InteractionTypeWithFluidAboveOptions", shown<[](const S&) { return Options({"none",
                                                                                      "particles suspension"}); }>},
        {"InteractionTypeWithFluidAboveVis",     shown<[](const S&) { return "-"; }>},
        {"PsaVis",                               shown<[](const S&) { return "-"; }>},
        {"PsaMesh",                              value<&S::_psaMesh>},
        {"PsaMeshVis",                           shown<[](const S&) { return "-"; }>},
        {"GetPsaMeshNamesList",                  shown<[](const S& s) { return s.PsaMeshNamesList(); }>},
        {"ParticlesMinFroudeSaltation",          value<&S::_particlesMinFroudeSaltation>},
        {"ParticlesSuspensionCoeff",             value<&S::_particlesSuspensionCoeff>},
        {"ParticlesDiameter",                    value<&S::_particlesDiameter>},              // m
        {"ParticlesMaterialDensity",             value<&S::_particlesMaterialDensity>},       // kg/m3
        {"ParticlesDragCoefficient",             value<&S::_particlesDragCoefficient>},
        {"ParticlesRestitutionCoefficient",      value<&S::_particlesRestitutionCoefficient>},
        {"DfaTurbulenceFactor",                  value<&S::_dfaTurbulenceFactor>},
        {"TurbulenceReactionMode",               value<&S::_turbulenceReactionMode>},
        {"ParticlesReflexionAngle",              value<&S::_particlesReflexionAngle>},        // degrees
        {"ParticlesReflexionMinimalVelocity",    value<&S::_particlesReflexionMinimalVelocity>},   // m/s
        {"PsaMinRoughness",                      value<&S::_psaMinRoughness>},
        {"PsaRoughnessVibrationConst",           value<&S::_psaRoughnessVibrationConst>},
        {"PsaRoughnessSuspensionConst",          value<&S::_psaRoughnessSuspensionConst>},
        {"PsaDirectEntrainment",                 value<&S::_psaDirectEntrainment>},
        {"ParcelMass",                           value<&S::_parcelMass>},                     // kg
        {"ParticlesTimeStep",                    value<&S::_particlesTimeStep>},              // s
        {"PsaNumMPI",                            value<&S::_psaNumMPI>},
        {"AdditionalPSASolverArgs",              value<&S::_additionalPSASolverArgs>},
        {"Dx",                                   value<&S::_dx>},
        {"Honeycomb",                            value<&S::_honeycomb>},
        {"$psaRestartFile",                      AK_Variable<"$psaRestartFile">},
        {"PSALogFileName",                       shown<[](const S&) { return "psa.log"; }>},
        {"DeactivateLoadingPsaResults",          stampsItself(command<[](S& s, Text) { s._loadPsaResults = false; }>)},
        {"ShowPSALogFile",                       command<ignore>},
        {"ShowCouplingLogFile",                  command<ignore>},
        {"ShowRemainingPSACalculationTime",      command<ignore>},
    };
    return rows;
}
// clang-format on

template <int method>
bool SW_Simulation::Determines() const
{
    return _massPerParticleDeterminationMethod == massPerParticleMethods[method];
}

AK_String SW_Simulation::PsaMeshNamesList() const
{
    AK_String list;
    const AK_Object* meshes = ProjectContainer("PsaMeshes");
    for (int i = 0; meshes && i < meshes->NumComponents(); ++i)
        list = list + meshes->ComponentAt(i)->IdAbs(this) + ak_sep;
    return list;
}
