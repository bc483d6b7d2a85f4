// Predefined functions on strings: char arrays that end with a null byte.
//
// A text that would leave its array is cut, so that the array's last element is the null byte.

#include "qvt_sci_aux_Builtin.h"

#include <algorithm>
#include <cstdlib>

// Puts length characters of source and a null byte at dest, cut to its room. The two may overlap.
static void PutText(char* dest, size_t room, const char* source, size_t length)
{
    if (!dest || room == 0) return;
    length = std::min(length, room - 1);
    if (length > 0) std::memmove(dest, source, length);
    dest[length] = 0;
}

static int qvt_sci_atoi(const char* s) { return std::atoi(TextArgument(s, 0).c_str()); }

static double qvt_sci_atof(const char* s) { return std::atof(TextArgument(s, 0).c_str()); }

static void qvt_sci_strcpy(char* dest, const char* src)
{
    PutText(dest, RoomOfArgument(0), src, TextLength(src, RoomOfArgument(1)));
}

// As in C: a source of n or more characters leaves dest without a null byte, a shorter one is filled up with null
// bytes.
static void qvt_sci_strncpy(char* dest, const char* src, const int* n)
{
    if (!dest || *n <= 0) return;
    const size_t room = RoomOfArgument(0);
    const size_t count = size_t(*n);
    const size_t length = std::min(TextLength(src, RoomOfArgument(1)), count);
    if (count > room) {
        PutText(dest, room, src, length);
        return;
    }
    if (length > 0) std::memmove(dest, src, length);
    std::memset(dest + length, 0, count - length);
}

static void qvt_sci_strcat(char* dest, const char* src)
{
    const size_t room = RoomOfArgument(0);
    const size_t used = TextLength(dest, room);
    if (used < room) PutText(dest + used, room - used, src, TextLength(src, RoomOfArgument(1)));
}

static int Compare(const char* s1, const char* s2, size_t n)
{
    return std::strncmp(TextArgument(s1, 0).c_str(), TextArgument(s2, 1).c_str(), n);
}

static int qvt_sci_strcmp(const char* s1, const char* s2) { return Compare(s1, s2, UNKNOWN_ROOM); }

static int qvt_sci_strncmp(const char* s1, const char* s2, const int* n)
{
    return Compare(s1, s2, size_t(std::max(*n, 0)));
}

static int qvt_sci_strlen(const char* s) { return int(TextLength(s, RoomOfArgument(0))); }

static int IndexOf(const char* found, const TextArgument& text) { return found ? int(found - text.c_str()) : -1; }

static int qvt_sci_istrchr(const char* s, const int* c)
{
    const TextArgument text(s, 0);
    return IndexOf(std::strchr(text.c_str(), *c), text);
}

static int qvt_sci_istrrchr(const char* s, const int* c)
{
    const TextArgument text(s, 0);
    return IndexOf(std::strrchr(text.c_str(), *c), text);
}

static int qvt_sci_istrstr(const char* haystack, const char* needle)
{
    const TextArgument text(haystack, 0);
    return IndexOf(std::strstr(text.c_str(), TextArgument(needle, 1).c_str()), text);
}

std::span<const Builtin> StringBuiltins()
{
    static const Builtin rows[] = {
        // clang-format off
        {"// STRING FUNCTIONS (strings are char-array ending with a NULL character (null byte))", nullptr,                                          nullptr                 },
        {"// A text that is longer than the array it goes to is cut.",                            nullptr,                                          nullptr                 },
        {"",                                                                                      nullptr,                                          nullptr                 },
        {"int atoi(char s[]);",                                                                   "text to int",                                    Native(qvt_sci_atoi)    },
        {"double atof(char s[]);",                                                                "text to double",                                 Native(qvt_sci_atof)    },
        {"void strcpy(char dest[], char src[]);",                                                 "copies src to dest",                             Native(qvt_sci_strcpy)  },
        {"void strncpy(char dest[], char src[], int n);",                                         "copies at most n characters",                    Native(qvt_sci_strncpy) },
        {"void strcat(char dest[], char src[]);",                                                 "appends src to dest",                            Native(qvt_sci_strcat)  },
 // A script has no way to pass the third argument that the C function of this name wants.
        {"void strncat(char dest[], char src[]);",                                                "the same as strcat",                             Native(qvt_sci_strcat)  },
        {"int strcmp(char s1[], char s2[]);",                                                     "0: equal, below 0: s1 comes first, above 0: s2", Native(qvt_sci_strcmp)  },
        {"int strncmp(char s1[], char s2[], int n);",                                             "compares at most n characters",                  Native(qvt_sci_strncmp) },
        {"int strlen(char s[]);",                                                                 "number of characters before the null byte",      Native(qvt_sci_strlen)  },
        {"int istrchr(char s[], int c);",                                                         "index of the first c, -1: none",                 Native(qvt_sci_istrchr) },
        {"int istrrchr(char s[], int c);",                                                        "index of the last c, -1: none",                  Native(qvt_sci_istrrchr)},
        {"int istrstr(char haystack[], char needle[]);",                                          "index of the first needle, -1: none",
         Native(qvt_sci_istrstr)                                                                                                                                            },
        {"",                                                                                      nullptr,                                          nullptr                 },
        // clang-format on
    };
    return rows;
}
