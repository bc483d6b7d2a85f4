// What the cells of the mesh hold at the start of a run. For SW_Simulation_*.cpp only.

#pragma once

#include "SW_Simulation.h"

#include "SW_InitialCondition.h"

struct SW_Simulation::Release {
    AK_List<const SW_InitialCondition*> areas{1};   // primary ones first
    int numPrimary = 0;
    const SW_Mesh* depthMesh = nullptr;             // null for none
    SW_ScalarField depth{"depth", nullptr};         // m of snow of the flow's density, on cells
    SW_ScalarField enthalpy{"enthalpy", nullptr};   // J/kg, on cells
    AK_List<unsigned char> tags{1};   // for each cell the number of its secondary area from 1, 0 for none; or empty
    double mass = 0;                  // kg, of the areas and the cells of the depth mesh
    double massOfCells = 0;           // kg, of the cells
    int numCells = 0;                 // with snow
    int numFreeCells = 0;             // those of no secondary area
    int numSecondaryCells = 0;

    // By the method that the simulation names:
    double massPerParticle = 0;   // kg
    double numParticles = 0;      // expected; beyond an int there is no run
    double numParticlesPerCell = 0;
    double deltaDepthPerParticle = 0;   // m
    bool countIsGiven = false;          // the number of particles is the input
};
