// The container of simulations.

#include "SW_Simulation_Container.h"

#include "SW_Simulation.h"

SW_Simulations::SW_Simulations(const AK_String& id, AK_Object* parent) : AK_Class(id, parent)
{
    ReadClassFiles();
    RunInitializationCommands();
}

AK_Object* SW_Simulations::CreateComponent(const AK_String& id, const AK_String& type)
{
    return type == "ShallowWaterSimulation" ? new SW_Simulation(id, this) : nullptr;
}

void SW_Simulations::CreateSimulation(const AK_String& name)
{
    AddComponent(CreateComponent(name, "ShallowWaterSimulation"));
}

std::span<const AK_Row> SW_Simulations::Rows()
{
    using S = SW_Simulations;
    static constexpr Row rows[] = {
        {"CreateSimulation", command<&S::CreateSimulation>}, {"PauseTime", value<&S::_pauseTime>},   // s
    };
    return rows;
}
