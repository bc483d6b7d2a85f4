// What formula code can use of the object tree: the predefined functions, their declarations and their natives.
//
// Natives receive a pointer for each argument. A text is read no further than its array, and what is written into one
// is cut at its end: the language knows how long the arrays are that it passes.

#include "AK_Object_Internal.h"

#include "qvt_sci.h"

#include <algorithm>
#include <cstring>

// What is written into an array whose length nobody knows: as much as an attribute's text may hold.
static constexpr int64_t defaultRoom = 131072;

static constexpr double noTime = -1.0e30;   // a stamp of an object that does not exist

namespace {

// A char array that formula code passed as argument `index`. Made before the tree is entered: code that runs in
// between has arguments of its own.
class TextArgument {
public:
    TextArgument(int index, char* text) : _text(text), _room(qvt_sci_ArgLength(index))
    {
        if (_room < 0) _room = defaultRoom;
    }

    AK_String Text() const { return AK_String(_text, _text + strnlen(_text, size_t(_room))); }

    void Write(const AK_String& value)
    {
        if (_room < 1) return;
        const auto length = std::min(int64_t(value.Length()), _room - 1);
        std::memcpy(_text, value.c_str(), size_t(length));
        _text[length] = 0;
    }

private:
    char* _text;
    int64_t _room;
};

}   // namespace

// ----------------------------------------------------------------------------------------------------------------
// Objects
// ----------------------------------------------------------------------------------------------------------------

static int StaticSet(char* objId, char* attr, char* value)
{
    const AK_String path = TextArgument(0, objId).Text();
    const AK_String name = TextArgument(1, attr).Text();
    const AK_String text = TextArgument(2, value).Text();
    AK_Object* object = AK_Object::ObjectFromCurrentById(path);
    if (!object) return 2;
    object->Set(name, text);
    return AK_Object::_execStatus.IsEmpty() ? 0 : 1;
}

static void StaticGet(char* objId, char* attr, char* value)
{
    const AK_String path = TextArgument(0, objId).Text();
    const AK_String name = TextArgument(1, attr).Text();
    TextArgument result(2, value);
    const AK_Object* object = AK_Object::ObjectFromCurrentById(path);
    result.Write(object ? object->Get(name) : AK_String());
}

static void Message(char* text, char* id)
{
    AK_Object__Message(TextArgument(0, text).Text().c_str(), TextArgument(1, id).Text().c_str());
}

static void SetError(char* text) { AK_Object::_execStatus = TextArgument(0, text).Text(); }

static int GetError(char* text)
{
    if (AK_Object::_execStatus.IsEmpty()) return 0;
    TextArgument(0, text).Write(AK_Object::_execStatus);
    return 1;
}

static double exec_time(char* objId, char* cmd)
{
    const AK_String path = TextArgument(0, objId).Text();
    const AK_String name = TextArgument(1, cmd).Text();
    const AK_Object* object = AK_Object::ObjectFromCurrentById(path);
    return object ? double(object->ExecTime(name)) : noTime;
}

static double modification_time(char* objId)
{
    const AK_Object* object = AK_Object::ObjectFromCurrentById(TextArgument(0, objId).Text());
    return object ? double(object->ModificationTime()) : noTime;
}

static double modification_time_recursive(char* objId)
{
    const AK_Object* object = AK_Object::ObjectFromCurrentById(TextArgument(0, objId).Text());
    return object ? double(object->ModificationTimeRec()) : noTime;
}

// ----------------------------------------------------------------------------------------------------------------
// Lists
// ----------------------------------------------------------------------------------------------------------------

static int ListSize(char* list)
{
    const AK_String text = TextArgument(0, list).Text();
    int n = 0;
    for (const char* s = text.c_str(); (s = std::strstr(s, ak_sep)); s += std::strlen(ak_sep)) ++n;
    return n;
}

static int GetListElement(char* list, int* i, char* element)
{
    const AK_String text = TextArgument(0, list).Text();
    const char* begin = text.c_str();
    if (*i < 0) return 0;
    for (int skipped = 0; skipped < *i; ++skipped) {
        begin = std::strstr(begin, ak_sep);
        if (!begin) return 0;
        begin += std::strlen(ak_sep);
    }
    if (!*begin) return 0;   // behind the last separator there is no element
    const char* end = std::strstr(begin, ak_sep);
    const AK_String found = end ? AK_String(begin, end) : AK_String(begin);
    TextArgument(2, element).Write(found);
    return found.Length();
}

// ----------------------------------------------------------------------------------------------------------------
// Paths and files
// ----------------------------------------------------------------------------------------------------------------

static void add_name(char* path, char* name)
{
    TextArgument target(0, path);
    AK_String text = target.Text();
    text.AppendName(TextArgument(1, name).Text(), '/');
    target.Write(text);
}

static int cut_name(char* path, char* name)
{
    TextArgument target(0, path);
    const AK_String text = target.Text();
    const char* slash = std::strrchr(text.c_str(), '/');
    if (!slash) return 0;
    TextArgument(1, name).Write(AK_String(slash + 1));
    target.Write(AK_String(text.c_str(), slash));
    return 1;
}

static void add_extension(char* name, char* ext)
{
    TextArgument target(0, name);
    AK_String text = target.Text();
    text.AppendExtension(TextArgument(1, ext).Text());
    target.Write(text);
}

// The name is cut at the last point even where no extension follows: "a.b/c" becomes "a" and "".
static void cut_extension(char* name, char* ext)
{
    TextArgument target(0, name);
    AK_String text = target.Text();
    TextArgument(1, ext).Write(text.Extension());
    text.RemoveExtension();
    target.Write(text);
}

static int make_directory(char* name) { return AK_System::CreateDir(TextArgument(0, name).Text()); }

static void get_attribute_file(char* name, char* extension, char* filename)
{
    const AK_String ext = TextArgument(1, extension).Text();
    TextArgument result(2, filename);
    result.Write(
        AK_Object::AttributeFile(TextArgument(0, name).Text(), ext.IsEmpty() ? nullptr : ext.c_str(), nullptr));
}

// ----------------------------------------------------------------------------------------------------------------
// Declarations
// ----------------------------------------------------------------------------------------------------------------

namespace {

// A predefined function: what its users read, and what it calls. Bound in this order.
struct Predefined {
    const char* comment;
    const char* declaration;
    const char* name;
    const void* native;
};

template <class Result, class... Arguments>
const void* Address(Result (*native)(Arguments...))
{
    return reinterpret_cast<const void*>(native);
}

}   // namespace

static const Predefined predefined[] = {
    {"set an attribute; 0 if all went well, 1 if there was an error, 2 if there is no such object",
     "int set(char objId[], char attr[], char value[]);", "set", Address(StaticSet)},
    {"get an attribute into value; \"\" if there is no such object",
     "void get(char objId[], char attr[], char value[]);", "get", Address(StaticGet)},
    {"set the error of the command that runs; \"\" for none", "void set_error(char msg[]);", "set_error",
     Address(SetError)},
    {"1 if the last command failed, with its error in msg; else 0", "int error(char msg[]);", "error",
     Address(GetError)},
    {"send a message; it may begin with \"INFO:\", \"WARNING:\" or \"ERROR:\"", "void message(char msg[], char id[]);",
     "message", Address(Message)},
    {"number of elements of a list", "int list_size(char list[]);", "list_size", Address(ListSize)},
    {"copy the i-th element of a list, counted from 0; its length, 0 if there is none",
     "int get_list_element(char list[], int i, char s[]);", "get_list_element", Address(GetListElement)},
    {"append an id to the path of an object", "void add_id(char path[], char id[]);", "add_id", Address(add_name)},
    {"cut the last id off the path of an object; 0 if there is only one", "int cut_id(char path[], char id[]);",
     "cut_id", Address(cut_name)},
    {"append a name to the path of a file", "void add_name(char path[], char name[]);", "add_name", Address(add_name)},
    {"cut the last name off the path of a file; 0 if there is only one", "int cut_name(char path[], char name[]);",
     "cut_name", Address(cut_name)},
    {"append an extension to a file name", "void add_extension(char name[], char ext[]);", "add_extension",
     Address(add_extension)},
    {"cut the extension off a file name", "void cut_extension(char name[], char ext[]);", "cut_extension",
     Address(cut_extension)},
    {"create a directory; 0 if it is there now", "int make_directory(char name[]);", "make_directory",
     Address(make_directory)},
    {"path of a file in the user's attribute directory, else in the program's",
     "void get_attribute_file(char name[], char extension[], char filename[]);", "get_attribute_file",
     Address(get_attribute_file)},
    {"when an attribute was last set, 0 if never, -1.0e30 if there is no such object; for comparison only",
     "double exec_time(char objId[], char cmd[]);", "exec_time", Address(exec_time)},
    {"when any attribute of an object was last set", "double modification_time(char objId[]);", "modification_time",
     Address(modification_time)},
    {"when any attribute of an object or of anything below it was last set",
     "double modification_time_recursive(char objId[]);", "modification_time_recursive",
     Address(modification_time_recursive)},
};

AK_String ObjectFunctionsText()
{
    AK_String text =
        "// An object is named by its path; \"\" is the one for which the code runs, \"root\" the root.\n\n";
    for (const Predefined& function : predefined)
        text = text + "// " + function.comment + "\n" + function.declaration + "\n\n";
    const AK_String sepLength(int(std::strlen(ak_sep)) + 1, "%d");
    return text + "// AK-list-separator\nchar AK_SEP[" + sepLength + "] = \"" + ak_sep + "\";\n\n" +
           "// directory separator\nchar DIR_SEP = '/';\n";
}

void DefineObjectFunctions()
{
    qvt_sci_ParseString(ObjectFunctionsText().c_str());
    for (const Predefined& function : predefined) qvt_sci_Bind(function.name, function.native);
    qvt_sci_InitAll();
}
