// The containers of simulations and of the meshes of a powder part.
//
// The container of simulations creates and clones them, starts them as a batch, cleans up behind them, and steps
// through the results of the active one: the first that takes part in updates.

#pragma once

#include "AK_Group.h"

#include <fstream>

class SW_Simulation;

class SW_Simulations : public AK_Class<SW_Simulations, AK_Container> {
public:
    static constexpr const char* className = "SW_Simulations";
    static std::span<const Row> Rows();

    SW_Simulations(const AK_String& id, AK_Object* parent);
    AK_Object* CreateComponent(const AK_String& id, const AK_String& type) override;
    void CreateSimulation(const AK_String& name);
    /// A copy with the parameters and the scenario of a simulation, without its state. An unknown source is fatal.
    void CloneSimulation(const AK_String& path);
    /// Removes time steps, or whole simulations, as the CleanupBehavior of each says.
    void Cleanup();
    /// Starts simulations one after the other in the background. The text has "i=1" for each that is to start, i being
    /// its place in the container from 0, with ";" between them.
    void StartActive(const AK_String& active);
    void ForwardToActive(const char* command);
    /// Files in the directory of a simulation by which it can be started by hand.
    void WriteStartMacroAndBat(const AK_String& path);

private:
    AK_List<SW_Simulation*> Simulations() const;
    bool WriteBatch(const AK_String& path, const AK_List<SW_Simulation*>& active);

    int _pauseTime = 0;   // s between the starts of a batch
};

/// Meshes for a powder part, whose solver is no part of this program: the container stays empty.
class SW_PsaMeshes : public AK_Class<SW_PsaMeshes, AK_Container> {
public:
    static constexpr const char* className = "SW_PsaMeshes";
    static std::span<const Row> Rows();

    SW_PsaMeshes(const AK_String& id, AK_Object* parent);
};
