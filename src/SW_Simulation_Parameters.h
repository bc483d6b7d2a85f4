// The parameters of a run as a user sets them. The attributes of a simulation are rows on this structure, and the
// phases of a time step take a copy of it. Meaning and usual ranges: files/AK_Attributes/SW_Simulation.atr.

#pragma once

#include "AK_Basic.h"

struct SW_SimulationParameters {
    AK_String psaMesh;
    AK_String frictionType = "Mohr-Coulomb with max of dynamic and granular pressure (KORVO classic)";
    double internalFrictionAngle = 35;   // degrees
    double bedFrictionAngle = 16;        // degrees
    double dynamicFrictionCoefficient = 0.022;
    double density = 200;   // kg/m3 of the flow
    AK_String releaseDHM = "none";
    double releaseDHMDensity = 150;       // kg/m3
    double releaseDHMTemperature = -10;   // degrees C
    AK_String entrainmentDHM = "none";
    double entrainmentDHMDensity = 50;                     // kg/m3
    double globalEntrainmentAreaWeight = 0;                // kg/m2
    double globalEntrainmentMinZ = 0;                      // m
    double globalEntrainmentTemperature = -10;             // degrees C
    double globalEntrainmentTemperatureGradient = -0.01;   // degrees per m
    double entrainmentShearResistance = 0;                 // J/m2
    double entrainmentDeformationResistance = 0;           // J/kg
    double entrainmentErosionEnergy = 0;                   // J/kg; 0 for plough entrainment
    double subgridMixingFactor = 100;
    double restitutionCoefficient = 0;
    double curvatureReductionFactor = 1;
    int sphMode = 0;
    AK_String interactionTypeWithFluidAbove = "none";
    double particlesMinFroudeSaltation = 400;
    double particlesSuspensionCoeff = 5;
    double particlesDiameter = 0.001;        // m
    double particlesMaterialDensity = 900;   // kg/m3
    double particlesDragCoefficient = 1;
    double particlesRestitutionCoefficient = 0.98;
    double dfaTurbulenceFactor = 0.05;
    int turbulenceReactionMode = 0;
    double particlesReflexionAngle = 30;            // degrees
    double particlesReflexionMinimalVelocity = 3;   // m/s
    double psaMinRoughness = 0.01;
    double psaRoughnessVibrationConst = 0.0001;
    double psaRoughnessSuspensionConst = 10;
    int psaDirectEntrainment = 0;
    double parcelMass = 50;           // kg
    double particlesTimeStep = 0.1;   // s
    double endTime = 100;             // s
    double deltaT = 0.1;              // s
    double deltaOut = 5;              // s
    AK_String remark;
    AK_String cleanupBehavior = "keep all time steps";
    AK_String massPerParticleDeterminationMethod = "delta-depth per particle";
    double massPerParticle = 10000;   // kg
    double numParticlesPerCell = 5;
    int numParticles = 20000;
    double deltaDepthPerParticle = 0.5;   // m
    int psaNumMPI = 1;
    double dx = 0;       // stored only
    int honeycomb = 0;   // stored only
    int animationWriteImageFiles = 0;
    int animationStepIncrement = 1;
    double animationStepDelay = 0;   // s
    AK_String additionalPSASolverArgs;
};
