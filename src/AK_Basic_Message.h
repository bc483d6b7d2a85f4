// Messages and assertions: the one road by which a text leaves the program. Part of AK_Basic.h, which is what to
// include.
//
// A message is a finished text and the place in the source that sends it. There is no format string: the call site
// composes the text with stream operators. Its prefix tells a front end what to do with it:
//
//   "ERROR:FATAL:"  an assertion failed, abort follows        "INFO:"      a notice for the user
//   "ERROR:"        a command or an operation failed          "CMD-INFO:"  explanation of a command
//   "WARNING:"      a problem the program works around        none         progress, such as "saving x to y"
//   "W:"            short warning about a class's files

#pragma once

#include <sstream>

/// Receives every message of the program; front ends replace it, null is not allowed. Main thread only.
extern void (*ak_msg_func)(const char* message, const char* location);

/// The first value of ak_msg_func: writes the message, a tab and the location in parentheses as one line to standard
/// output and flushes it. The prefix is written as it stands.
void ak_default_msg_func(const char* message, const char* location);

/// Sends a message whose location is the id of an object: what formula code knows as `message`.
void AK_Object__Message(const char* message, const char* id);

/// Sends "ERROR:FATAL:" + condition + " failed!" and aborts; what the assertion macros expand to.
[[noreturn]] void ak_assertion_failed(const char* condition, const char* location);

#define AK_TEXT_OF_VALUE(value) #value
#define AK_TEXT_OF(value) AK_TEXT_OF_VALUE(value)

/// This place in the source, as the literal "src/<file>:<line>" (the build maps __FILE__ to that form).
#define AK_HERE __FILE__ ":" AK_TEXT_OF(__LINE__)

/// Sends a text from here: AK_MSG("cannot open " << name).
#define AK_MSG(text)                                                                                                   \
    do {                                                                                                               \
        std::ostringstream ak_message;                                                                                 \
        ak_message << text;                                                                                            \
        ak_msg_func(ak_message.str().c_str(), AK_HERE);                                                                \
    } while (0)

/// A promise of our own code, kept in every build: reports the condition and aborts when it does not hold.
#define AK_ASSERT(condition) AK_ASSERT_AS(condition, #condition)

/// The same, where the reported text differs from the spelling of the condition.
#define AK_ASSERT_AS(condition, text)                                                                                  \
    do {                                                                                                               \
        if (!(condition)) ak_assertion_failed(text, AK_HERE);                                                          \
    } while (0)
