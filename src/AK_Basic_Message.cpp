// Where messages go unless a front end takes them, and the end of a process that broke a promise.

#include "AK_Basic_Message.h"

#include <cstdio>
#include <cstdlib>
#include <string>

void (*ak_msg_func)(const char* message, const char* location) = ak_default_msg_func;

void ak_default_msg_func(const char* message, const char* location)
{
    std::printf("%s\t(%s)\n", message, location);
    std::fflush(stdout);
}

void AK_Object__Message(const char* message, const char* id) { ak_msg_func(message, id); }

void ak_assertion_failed(const char* condition, const char* location)
{
    const std::string message = std::string("ERROR:FATAL:") + condition + " failed!";
    ak_msg_func(message.c_str(), location);
    std::abort();
}
