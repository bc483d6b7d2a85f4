// Stepping through what a run has saved.
//
// An animation loads one saved step after the other, from the loaded one or, after the last, from the first, and has
// the root draw it. A front end with a window knows "Draw", and writes what it shows as numbered pictures; one without
// knows neither, and the steps are loaded all the same, so that a macro of the user's on "Update" can act on each.
//
// Views can be assigned to steps: places of the eye that the front end keeps as components of "KeyViewSequences/Views".
// They are kept in "$assigned_views" as "step=view" each. Between two steps with views the eye moves from one to the
// other, in proportion to the time.

#include "SW_Simulation.h"

#include <algorithm>
#include <climits>
#include <cstring>

static const char* const noView = "none";

namespace {

struct Assignment {
    AK_String step, view;
};

}   // namespace

static AK_List<Assignment> Assignments(const AK_String& text)
{
    AK_List<AK_String> entries(1);
    text.Split(ak_sep, entries);
    AK_List<Assignment> assignments(1);
    for (const AK_String& entry : entries)
        if (const char* equals = std::strchr(entry.c_str(), '='))
            assignments.Append({AK_String(entry.c_str(), equals), AK_String(equals + 1)});
    return assignments;
}

// ----------------------------------------------------------------------------------------------------------------
// Views
// ----------------------------------------------------------------------------------------------------------------

static AK_Object* KeyViews(const AK_Object& simulation)
{
    return simulation.Root()->ObjectById("KeyViewSequences/Views");
}

AK_String SW_Simulation::ViewOptions() const
{
    AK_String list = AK_String(noView) + ak_sep;
    const AK_Object* views = KeyViews(*this);
    for (int i = 0; views && i < views->NumComponents(); ++i) list = list + views->ComponentAt(i)->Id() + ak_sep;
    return list;
}

AK_String SW_Simulation::AssignedViews() const { return VariableValue("$assigned_views"); }

void SW_Simulation::AssignedViews(const AK_String& list) { SetVariableValue("$assigned_views", list); }

AK_String SW_Simulation::AssignedView() const
{
    for (const Assignment& assignment : Assignments(AssignedViews()))
        if (assignment.step == _currentTimeStep) return assignment.view;
    return noView;
}

// To the loaded step; "none" takes its view away.
void SW_Simulation::AssignedView(const AK_String& view)
{
    if (_currentTimeStep.IsEmpty()) {
        _execStatus = "no time step is loaded";
        return;
    }
    AK_String list;
    for (const Assignment& assignment : Assignments(AssignedViews()))
        if (!(assignment.step == _currentTimeStep)) list = list + assignment.step + "=" + assignment.view + ak_sep;
    if (!view.IsEmpty() && !(view == noView)) list = list + _currentTimeStep + "=" + view + ak_sep;
    AssignedViews(list);
}

// Moves the eye to where it is at the time: on the way from the last view before it to the first one behind it.
void SW_Simulation::LookFromAssignedView() const
{
    AK_Object* const views = KeyViews(*this);
    if (!views) return;
    const AK_List<Assignment> assignments = Assignments(AssignedViews());
    const Assignment* before = nullptr;
    const Assignment* behind = nullptr;
    for (const Assignment& assignment : assignments) {
        const double time = TimeStepFromName(assignment.step);   // s
        if (time <= _currentTime && (!before || time > TimeStepFromName(before->step))) before = &assignment;
        if (time > _currentTime && (!behind || time < TimeStepFromName(behind->step))) behind = &assignment;
    }
    if (!before) before = behind;
    if (!behind) behind = before;
    if (!before) return;
    const double t0 = TimeStepFromName(before->step);
    const double t1 = TimeStepFromName(behind->step);
    views->Set("KeyView1", before->view);
    views->Set("KeyView2", behind->view);
    views->Set("Interpolate", AK_String(t1 > t0 ? (_currentTime - t0) / (t1 - t0) : 0.0, "%.15g"));
}

// ----------------------------------------------------------------------------------------------------------------
// Animation
// ----------------------------------------------------------------------------------------------------------------

void SW_Simulation::ShowStep()
{
    AK_Object* const root = Root();
    Update();
    root->Set("Draw", "");
    if (_parameters.animationWriteImageFiles && root->Set("WriteImageFile", "") == 1)
        SetVariableValue("$animationFiles",
                         VariableValue("$animationFiles") + root->Get("ActualImageFileName") + ak_sep);
    static constexpr double longestDelay = 3600;   // s
    const double delay = std::clamp(_parameters.animationStepDelay, 0.0, longestDelay);
    if (delay > 0) AK_System::MilliSleep(int(delay * 1000));
}

void SW_Simulation::Animate(bool withAssignedViews)
{
    SetVariableValue("$animationFiles", "");
    if (_parameters.animationWriteImageFiles) Root()->Set("ImageFileNameEvaluator", "numbered");
    int current = -1;
    const AK_List<AK_String> steps = TimeStepInfo(current);
    if (current == steps.Size() - 1) current = -1;   // at the end it begins anew
    const int increment = std::clamp(_parameters.animationStepIncrement, 1, INT_MAX / 2);
    for (int i = std::max(current, 0); i < steps.Size(); i += increment) {
        if (Signal()) return;
        LoadTimeStep(steps[i]);
        if (!_execStatus.IsEmpty()) return;
        if (withAssignedViews) LookFromAssignedView();
        ShowStep();
    }
    _execStatus = "";   // what a front end without a window answered is no error of the animation
}
