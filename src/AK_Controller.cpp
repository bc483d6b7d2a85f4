// What all front ends have in common.

#include "AK_Controller.h"

AK_Controller::AK_Controller(const AK_String& id, AK_Object* parent) : AK_Class(id, parent)
{
    ReadClassFiles();
    RunInitializationCommands();
}
