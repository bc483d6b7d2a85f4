// Explanation mode: each command of a macro is told to the user before it runs, in the current language, together with
// the comment that stands before it in the macro. Thus a macro doubles as a tutorial.

#include "AK_Object.h"

#include <cstring>

namespace {

struct Sentence {
    const char* english;
    const char* german;
    const char* Text() const { return InLanguage(english, german); }
};

}   // namespace

static constexpr Sentence switchedOn{
    "Explanation-mode is switched on. All commands in the running macro will be explained before execution.",
    "Erklaerungsmodus wird eingeschaltet. Alle Befehle im laufenden Makro werden vor ihrer Ausfuehrung erklaert."};
static constexpr Sentence switchedOff{"Explanation-mode is terminated.", "Erklaerungsmodus wird beendet."};
static constexpr Sentence findAView{"Rotate/zoom/shift to obtain some desired view...",
                                    "Drehen/zoomen/verschieben Sie bis Sie eine gewuenschte Ansicht erhalten..."};
static constexpr Sentence selectObject{"\nSelect the object '", "\nWaehlen Sie das Objekt '"};
static constexpr Sentence selectAttribute{",\nselect ", ",\nwaehlen Sie "};
static constexpr Sentence applyBegin{"\nand apply ", "\nund wenden Sie "};
static constexpr Sentence applyEnd{".", " an."};
static constexpr Sentence macroCommand{" \n(The corresponding macro command is '",
                                       " \n(Der entsprechende Makrobefehl ist '"};

// How a value is given, by the kind of its attribute. The German texts begin with a quote, but that of coordinates.
struct ValueSentence {
    Sentence before;
    Sentence after;
};
static constexpr ValueSentence option{
    {" and select option '", "' und waehlen Sie '"},
    {"'.",                   "' aus."             }
};
static constexpr ValueSentence switchOn{
    {" and switch to '", "' und schalten Sie auf '"},
    {"' (on).",          "' (ein)."                }
};
static constexpr ValueSentence switchOff{
    {" and switch to '", "' und schalten Sie auf '"},
    {"' (off).",         "' (aus)."                }
};
static constexpr ValueSentence fileName{
    {" and select file '",                      "' und waehlen Sie die Datei '"     },
    {"'. (Adjust the file name if necessary.)", "' aus. (Dateinamen ggf. anpassen.)"}
};
static constexpr ValueSentence directory{
    {" and select directory '",                                                    "' und waehlen Sie das Verzeichnis '"},
    {"'. (Adjust the directory name or create the directory first if necessary.)",
     "' aus. (Verzeichnisnamen ggf. anpassen bzw. Verzeichnis erst anlegen.)"                                           }
};
static constexpr ValueSentence pickWorld{
    {" and mouse-click (:pick world or :pick world multiple) or enter the coordinates '",
     " und klicken Sie mit der Maus (:pick world or :pick world multiple) oder geben die Koordinaten '"},
    {"'.",                                                                                "' ein."      }
};
static constexpr ValueSentence enterValue{
    {" and enter '", "' und geben Sie '"},
    {"'.",           "' ein."           }
};

static const ValueSentence& SentenceFor(const AK_Attribute* attribute, const AK_String& value)
{
    if (!attribute) return enterValue;
    if (attribute->Component("options")) return option;
    const AK_String kind = attribute->Id(0);
    if (kind == "bool") return value == "0" ? switchOff : switchOn;
    if (kind == "filename") return fileName;
    if (kind == "directory") return directory;
    if (attribute->Component("pick world") || attribute->Component("pick world multiple")) return pickWorld;
    return enterValue;
}

AK_String AK_Object::Explanation(const AK_String& command, const AK_String& attr, const AK_String& value) const
{
    AK_String text;
    if (!_macroComment.IsEmpty()) {
        text = _macroComment + "\n\n";
        _macroComment = "";
    }
    const AK_String ofType = AK_String(" (->") + Type() + ".)";
    if (!_parent && attr == "Transformation") return text + findAView.Text() + ofType;

    const AK_String path = AK_String("->") + Attributes()->ObjectTypeOfSetCmd(attr) + "." + attr;
    text = text + selectObject.Text() + IdAbs() + "'" + ofType;
    if (value.IsEmpty())
        text = text + applyBegin.Text() + path + applyEnd.Text();
    else {
        const ValueSentence& sentence = SentenceFor(Attributes()->AttributeOfSetCmd(attr), value);
        text = text + selectAttribute.Text() + path + sentence.before.Text() + value + sentence.after.Text();
    }
    return text + macroCommand.Text() + command + "'.)";
}

bool AK_Object::ExplainCommand(const AK_String& command, const AK_String& attr, const AK_String& value,
                               int noExplain) const
{
    if (attr == "ExplainCommands" && !(value == AK_String(_explainCommands, "%d").c_str())) {
        AK_MSG("INFO:" << (value == "1" ? switchedOn : switchedOff).Text());
        return true;
    }
    if (!_explainCommands || noExplain) return true;
    const AK_String text = Explanation(command, attr, value);
    _execStatus = "";   // what went wrong before refuses nothing
    AK_MSG("CMD-INFO:" << text);
    return _execStatus.IsEmpty();   // the message function of a front end may have refused the command
}
