// Formula code of classes and macros: the seam between the object tree and the formula language. No class has formula
// code yet, and a "cint" macro is refused.

#include "AK_Object.h"

Namespace* AK_Object::Load_QVT_SCI_code(const AK_String&) { return nullptr; }

void AK_Object::Execute_QVT_SCI_code(const AK_String& file)
{
    _execStatus = AK_String("cannot run formula code '") + file + "'";
}

int AK_Object::qvt_sci_Get(Namespace*, const AK_String&, AK_String&) const { return 0; }

int AK_Object::qvt_sci_Set(Namespace*, const AK_String&, const AK_String&) { return 0; }

void AK_Object::qvt_sci_Update(Namespace*) {}

void AK_Object::List_QVT_SCI_predefined(const AK_String&) {}

void AK_Object::StartInBackground(const AK_String& args)
{
    const AK_String program = _argc > 0 ? AK_String(_argv[0]) : AK_String();
    AK_System::_tmpBatFileName = _userApplicationDirectory + "/" + "start.bat";
    AK_MSG("starting " << program << " " << args << " in background...");
    if (AK_System::Command(program.c_str(), args.c_str(), 1, 1) != 0)
        _execStatus = AK_String("cannot start ") + program + " " + args;
    AK_System::_tmpBatFileName = "";
}
