// Predefined functions on files. A FILE* of a script is a variable: each function gets the address of the variable.
// A file that could not be opened, and one that was closed, is null; operations on it fail as those at the end of a
// file do.

#include "qvt_sci_aux_Builtin.h"

#include <algorithm>

static FILE* qvt_sci_file_open(const char* path, const char* mode)
{
    return qvt_sci_fopen(TextArgument(path, 0).c_str(), TextArgument(mode, 1).c_str());
}

// A FUNC* passes for a FILE*.
static bool IsOpen(FILE* stream) { return stream && !IsSymbol(stream); }

static int qvt_sci_file_close(FILE** stream)
{
    if (!IsOpen(*stream)) return EOF;
    FILE* const closed = *stream;
    *stream = nullptr;
    return qvt_sci_fclose(closed);
}

static int qvt_sci_file_error(FILE* const* stream) { return IsOpen(*stream) ? qvt_sci_ferror(*stream) : 1; }

static int qvt_sci_file_eof(FILE* const* stream) { return IsOpen(*stream) ? qvt_sci_feof(*stream) : 1; }

static int qvt_sci_file_getc(FILE* const* stream) { return IsOpen(*stream) ? qvt_sci_fgetc(*stream) : EOF; }

// 1 for success, other than in C, where the text comes back.
static int qvt_sci_file_gets(char* s, const int* size, FILE* const* stream)
{
    if (!s || !IsOpen(*stream) || *size <= 0) return 0;
    const size_t room = std::min(size_t(*size), RoomOfArgument(0));
    return room > 0 && qvt_sci_fgets(s, int(room), *stream) ? 1 : 0;
}

static int qvt_sci_file_putc(const int* c, FILE* const* stream)
{
    return IsOpen(*stream) ? qvt_sci_fputc(*c, *stream) : EOF;
}

static int qvt_sci_file_puts(const char* s, FILE* const* stream)
{
    return IsOpen(*stream) ? qvt_sci_fputs(TextArgument(s, 0).c_str(), *stream) : EOF;
}

std::span<const Builtin> FileBuiltins()
{
    static const Builtin rows[] = {
        // clang-format off
        {"// FILE IO",                                   nullptr,                                             nullptr                   },
        {"",                                             nullptr,                                             nullptr                   },
        {"FILE* fopen(char path[], char mode[]);",       "opens a file, NULL: failed",                        Native(qvt_sci_file_open) },
        {"int fclose(FILE *stream);",                    "0: success",                                        Native(qvt_sci_file_close)},
        {"int ferror(FILE *stream);",                    "0: no error so far",                                Native(qvt_sci_file_error)},
        {"int feof(FILE *stream);",                      "1 once a read met the end of the file",             Native(qvt_sci_file_eof)  },
        {"int fgetc(FILE *stream);",                     "next character, EOF at the end",                    Native(qvt_sci_file_getc) },
        {"int fgets(char s[], int size, FILE *stream);",
         "reads a line of up to size-1 characters; returns 1, at the end or on an error 0 (other than in C)", Native(qvt_sci_file_gets) },
        {"int fputc(int c, FILE *stream);",              "writes a character, returns it, EOF: failed",       Native(qvt_sci_file_putc) },
        {"int fputs(char s[], FILE *stream);",           "writes a text, EOF: failed",                        Native(qvt_sci_file_puts) },
        {"",                                             nullptr,                                             nullptr                   },
        // clang-format on
    };
    return rows;
}
