// Where messages go: two replaceable pointers, a default sink on a stream, a sink into a buffer of the host. The hooks
// for files, console and signals stand here too.

#include "qvt_sci_Internal.h"

#include <algorithm>
#include <csignal>
#include <cstdarg>
#include <cstdlib>

// ---------------------------------------------------------------------------------------------------------------------
// Hooks

#define DEFINE_HOOK(name, Result, Parameters) Result(*qvt_sci_##name) Parameters = name;
QVT_SCI_HOOKS(DEFINE_HOOK)
#undef DEFINE_HOOK

void (*qvt_sci_flush_stdout)() = nullptr;

// ---------------------------------------------------------------------------------------------------------------------
// Sinks

static FILE* qvtsciout = nullptr;

static FILE* OutputStream()
{
    if (!qvtsciout) qvtsciout = stderr;
    return qvtsciout;
}

static int StreamMessage(const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    const int written = std::vfprintf(OutputStream(), format, arguments);
    va_end(arguments);
    return written;
}

static void StreamFlush() { std::fflush(OutputStream()); }

static char* messageBuffer = nullptr;   // where the next message goes; null: silent
static int messageRoom = 0;

static int BufferMessage(const char* format, ...)
{
    if (!messageBuffer) return -1;
    va_list arguments;
    va_start(arguments, format);
    const int length = std::vsnprintf(messageBuffer, size_t(messageRoom), format, arguments);
    va_end(arguments);
    if (length == 0) {
        messageBuffer = nullptr;
    } else if (length > 0) {
        const int taken = std::min(length, messageRoom);   // a cut message leaves no room: its null byte stays
        messageBuffer += taken;
        messageRoom -= taken;
    }
    return length;
}

static void BufferFlush() {}

int (*qvt_sci_msg)(const char* format, ...) = StreamMessage;
void (*qvt_sci_flush_msg)() = StreamFlush;

void qvt_sci_ResetPrintf(int (*msg)(const char* format, ...), void (*flush)())
{
    if (msg) qvt_sci_msg = msg;
    if (flush) qvt_sci_flush_msg = flush;
}

void qvt_sci_ResetOutputStream(FILE* stream) { qvtsciout = stream; }

void qvt_sci_SetMessageBuffer(char* buffer, int length)
{
    messageBuffer = buffer;
    messageRoom = std::max(length, 0);
    qvt_sci_msg = buffer ? BufferMessage : StreamMessage;
    qvt_sci_flush_msg = buffer ? BufferFlush : StreamFlush;
}

MessageSink RedirectMessages(char* buffer, int length)
{
    const MessageSink sink = {qvt_sci_msg, qvt_sci_flush_msg, messageBuffer, messageRoom};
    qvt_sci_SetMessageBuffer(buffer, length);
    return sink;
}

void RestoreMessages(const MessageSink& sink)
{
    qvt_sci_msg = sink.msg;
    qvt_sci_flush_msg = sink.flush;
    messageBuffer = sink.buffer;
    messageRoom = sink.room;
}

void qvt_sci_Fail(const char* what, int line, const char* file)
{
    qvt_sci_printf("at %d in %s\n", line, file);
    qvt_sci_printf("%s failed!", what);
    std::exit(1);
}
