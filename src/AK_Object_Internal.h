// What the files of AK_Object share among themselves.

#pragma once

#include "AK_Object.h"

/// Declares the functions by which formula code reaches the object tree, and binds them; the language's global
/// namespace is active. (AK_Object_ScriptFunctions.cpp)
void DefineObjectFunctions();

/// The declarations with their comments: what formula code can use of the object tree, for its users.
AK_String ObjectFunctionsText();
