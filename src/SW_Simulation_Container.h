// The container of simulations: creates and clones them, starts them as a batch, cleans up behind them.

#pragma once

#include "AK_Group.h"

class SW_Simulation;

class SW_Simulations : public AK_Class<SW_Simulations, AK_Container> {
public:
    static constexpr const char* className = "SW_Simulations";
    static std::span<const Row> Rows();

    SW_Simulations(const AK_String& id, AK_Object* parent);
    AK_Object* CreateComponent(const AK_String& id, const AK_String& type) override;
    void CreateSimulation(const AK_String& name);
    void CloneSimulation(const AK_String& name);
    void Cleanup();
    void StartActive(const AK_String& active);
    void AnimateActive();
    void NextTimeStepActive();
    void PrevTimeStepActive();
    void WriteStartMacroAndBat(const AK_String& id);

private:
    SW_Simulation* ActiveSimulation() const;

    int _pauseTime = 0;   // s between the starts of a batch
};
