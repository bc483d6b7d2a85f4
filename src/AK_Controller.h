// The controllers: a root of the object tree, and a front end to it.
//
// A controller holds no knowledge of what the objects are. All that it changes it changes by name through Set, and what
// it shows it finds in the attribute description of the object that is on screen. AK_TerminalController is the front
// end of this program: it plays a macro, or walks a person through the tree with numbered menus, one word at a time.
//
//   Viewer:                         object menu: the components by number, then the keys
//   1:Project
//   q: quit
//   e: edit
//   ?: help
//   e                               "edit" goes on to the description of the object
//   Viewer
//   1: bool.Recording: 0            attribute menu: one line for each entry of the description, with its value
//   2: opr.Macros (opr)             a group has no value and opens a menu of its own
//   q: quit

#pragma once

#include "AK_Object.h"
#include "AK_Object_Class.h"

#include <fstream>

/// Abstract root of a tree with a front end.
class AK_Controller : public AK_Class<AK_Controller, AK_Object> {
public:
    static constexpr const char* className = "AK_Controller";
    static std::span<const Row> Rows() { return {}; }

    /// Plays a macro and, unless exitAfterMacro is set, works for the user until he ends it. Width and height [pixels]
    /// and the second text are for front ends that have a window.
    virtual void Run(int width, int height, const AK_String& macro, const AK_String& second, int exitAfterMacro) = 0;

protected:
    AK_Controller(const AK_String& id, AK_Object* parent);
};

/// The menus on standard input and output.
class AK_TerminalController : public AK_Class<AK_TerminalController, AK_Controller> {
public:
    static constexpr const char* className = "AK_TerminalController";
    static std::span<const Row> Rows();

    AK_TerminalController(const AK_String& id, AK_Object* parent);

    /// Plays the macro, whose name becomes `_macroFileName` even if it is empty, then enters the menus. They end only
    /// by "q" at the menu of the root: at the end of the input the same menu comes again and again.
    void Run(int width, int height, const AK_String& macro, const AK_String& second, int exitAfterMacro) override;

    /// Plays `_macroFileName`. A recording ends first, so that what was just recorded can be played at once.
    void PlayMacro(const AK_String& ignored);

    /// Begins (non-zero) to write each command that the menus execute to `_macroFileName`, or ends it. A file that
    /// cannot be opened leaves the recording off, without a message.
    void Recording(int on);
    int IsRecording() const { return _recording; }

private:
    class Menus;

    int _recording = 0;
    std::ofstream _recordStream;
};
