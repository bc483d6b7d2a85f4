// AK_String: a terminated block that is sized exactly. The length is not stored; strlen finds it each time.
//
// What changes the text in more than single bytes builds a new string and swaps it in, so that arguments may point into
// the text being changed, and the cost is one pass however often a pattern occurs.

#include "AK_Basic.h"

#include <climits>
#include <cstdint>
#include <cstdlib>
#include <cstring>

static constexpr const char* pointerMark = "%ak_ptr%";

// Sizes are int: a text that does not fit ends the program before a size wraps round.
static int BlockSize(std::size_t size)
{
    AK_ASSERT(size <= std::size_t(INT_MAX));
    return int(size);
}

// ------------------------------------------------------------------------------------------------------ construction

AK_String::AK_String(const char* s, std::size_t length, std::size_t size)
{
    Resize(BlockSize(size));
    if (length > 0) std::memcpy(_s, s, length);
    _s[length] = 0;
}

AK_String::AK_String(const char* s)
{
    AK_ASSERT(s);
    const std::size_t length = std::strlen(s);
    Resize(BlockSize(length + 1));
    std::memcpy(_s, s, length + 1);
}

AK_String::AK_String(const AK_String& other) : AK_String(other._s) {}

AK_String::AK_String(AK_String&& other) noexcept : AK_String() { Swap(other); }

AK_String::AK_String(const char* begin, const char* end)
    : AK_String(begin, std::size_t(end - begin), std::size_t(end - begin) + 1)
{
}

AK_String::AK_String(char c) : AK_String(&c, 1, 2) {}

// The room is what a plain number takes; a format with a large width or precision gets what it needs.
template <class Number>
void AK_String::Print(Number number, const char* format, int room)
{
    Resize(BlockSize(std::strlen(format) + std::size_t(room)));
    const int length = std::snprintf(_s, std::size_t(_size), format, number);
    AK_ASSERT(length >= 0);
    if (length < _size) return;
    Resize(BlockSize(std::size_t(length) + 1));
    std::snprintf(_s, std::size_t(_size), format, number);
}

AK_String::AK_String(int number, const char* format) { Print(number, format, 16); }

AK_String::AK_String(double number, const char* format) { Print(number, format, 32); }

// The numbers in a format that writes at most 25 characters ("-1.23456789012345e-300" and a blank).
template <class Number>
static AK_String JoinedNumbers(const Number* v, int n, const char* format)
{
    AK_String joined;
    joined.Resize(BlockSize(std::size_t(n < 0 ? 0 : n) * 25 + 2));
    int length = 0;
    joined[0] = 0;
    for (int i = 0; i < n; ++i) {
        if (i > 0) joined[length++] = ' ';
        length += std::snprintf(&joined[length], 25, format, double(v[i]));
    }
    joined.Resize(length + 1);
    return joined;
}

AK_String::AK_String(const float* v, int n) : AK_String(JoinedNumbers(v, n, "%g")) {}

AK_String::AK_String(const double* v, int n) : AK_String(JoinedNumbers(v, n, "%.15g")) {}

AK_String::AK_String(const AK_List<AK_String>& list, const char* sep)
{
    const std::size_t sepLength = std::strlen(sep);
    std::size_t length = 0;
    for (const AK_String& element : list) length += std::strlen(element._s) + sepLength;
    Resize(BlockSize(length + 1));
    char* end = _s;
    for (const AK_String& element : list) {
        end = stpcpy(end, element._s);
        end = stpcpy(end, sep);
    }
    *end = 0;
}

AK_String::~AK_String() { std::free(_s); }

AK_String& AK_String::operator=(const AK_String& other)
{
    if (this != &other) *this = other._s;
    return *this;
}

AK_String& AK_String::operator=(AK_String&& other) noexcept
{
    Swap(other);
    return *this;
}

AK_String& AK_String::operator=(const char* s)
{
    AK_ASSERT(s);
    AK_String copy(s);
    Swap(copy);
    return *this;
}

AK_String AK_String::PtrString(const void* address)
{
    char text[32];
    std::snprintf(text, sizeof text, "%p", address);
    return AK_String(pointerMark) + text;
}

void* AK_String::Pointer() const
{
    void* address = nullptr;
    return StartsWith(pointerMark) && std::sscanf(_s + std::strlen(pointerMark), "%p", &address) == 1 ? address
                                                                                                      : nullptr;
}

// ------------------------------------------------------------------------------------------------ length and compare

int AK_String::Length() const { return int(std::strlen(_s)); }

bool AK_String::operator==(const AK_String& other) const { return std::strcmp(_s, other._s) == 0; }

bool AK_String::operator==(const char* other) const { return std::strcmp(_s, other) == 0; }

bool AK_String::StartsWith(const char* text) const { return std::strncmp(_s, text, std::strlen(text)) == 0; }

bool AK_String::EndsWith(const char* text) const
{
    const std::size_t length = std::strlen(_s), textLength = std::strlen(text);
    return textLength <= length && std::strcmp(_s + length - textLength, text) == 0;
}

int AK_String::Compare(const void* a, const void* b)
{
    return std::strcmp(static_cast<const AK_String*>(a)->_s, static_cast<const AK_String*>(b)->_s);
}

// ------------------------------------------------------------------------------------------------- growing and joining

void AK_String::Resize(int n)
{
    _size = n < 2 ? 2 : n;
    _s = static_cast<char*>(std::realloc(_s, std::size_t(_size)));
    AK_ASSERT(_s);
}

void AK_String::Swap(AK_String& other) noexcept
{
    std::swap(_size, other._size);
    std::swap(_s, other._s);
}

void AK_String::Append(const AK_String& s) { Append(s._s); }

void AK_String::Append(const char* s)
{
    AK_ASSERT(s);
    // Resize moves the block, and with it a text that lies within.
    AK_ASSERT_AS(std::uintptr_t(s) - std::uintptr_t(_s) >= std::uintptr_t(_size), "&s != this");
    const std::size_t length = std::strlen(_s), added = std::strlen(s);
    Resize(BlockSize(length + added + 1));
    std::memcpy(_s + length, s, added + 1);
}

void AK_String::Prepend(const AK_String& s) { Prepend(s._s); }

void AK_String::Prepend(const char* s)
{
    AK_ASSERT(s);
    AK_ASSERT_AS(std::uintptr_t(s) - std::uintptr_t(_s) >= std::uintptr_t(_size), "&s != this");
    const std::size_t length = std::strlen(_s), added = std::strlen(s);
    Resize(BlockSize(length + added + 1));
    std::memmove(_s + added, _s, length + 1);
    std::memcpy(_s, s, added);
}

AK_String operator+(const AK_String& a, const char* b)
{
    AK_ASSERT(b);
    AK_String sum;
    const std::size_t aLength = std::strlen(a._s), bLength = std::strlen(b);
    sum.Resize(BlockSize(aLength + bLength + 1));
    std::memcpy(sum._s, a._s, aLength);
    std::memcpy(sum._s + aLength, b, bLength + 1);
    return sum;
}

AK_String operator+(const AK_String& a, const AK_String& b) { return a + b._s; }

AK_String operator+(const char* a, const AK_String& b) { return AK_String(a) + b._s; }

std::ostream& operator<<(std::ostream& out, const AK_String& s) { return out << s._s; }

template <>
int HashIndex(const AK_String& key)
{
    std::uint32_t h = 2166136261u;
    for (const char* s = key.c_str(); *s; ++s) h = (h ^ static_cast<unsigned char>(*s)) * 16777619u;
    return int(h);
}

// --------------------------------------------------------------------------------------------------------- replacing

// Replaces each byte for which `hit` holds and counts them.
template <class Hit>
static int ReplaceBytes(char* s, Hit hit, char with)
{
    int count = 0;
    for (; *s; ++s) {
        if (!hit(*s)) continue;
        *s = with;
        ++count;
    }
    return count;
}

// The text with up to `most` occurrences of a replaced, from left to right; returns how many were.
static int ReplaceTexts(AK_String& text, const char* a, const char* b, int most)
{
    const std::size_t aLength = std::strlen(a), bLength = std::strlen(b);
    if (aLength == 0 || std::strcmp(a, b) == 0) return 0;
    int count = 0;
    for (const char* at = std::strstr(text.c_str(), a); at && count < most; at = std::strstr(at + aLength, a)) ++count;
    if (count == 0) return 0;

    const char* from = text.c_str();
    const char* end = from + std::strlen(from);
    AK_String result;
    result.Resize(BlockSize(std::size_t(end - from) - std::size_t(count) * aLength + std::size_t(count) * bLength + 1));
    char* out = &result[0];
    for (int i = 0; i < count; ++i) {
        const char* at = std::strstr(from, a);
        out = std::copy(from, at, out);
        out = std::copy(b, b + bLength, out);
        from = at + aLength;
    }
    *std::copy(from, end, out) = 0;
    text.Swap(result);
    return count;
}

int AK_String::Replace(char a, char b)
{
    char* at = a ? std::strchr(_s, a) : nullptr;
    if (!at) return 0;
    *at = b;
    return 1;
}

int AK_String::ReplaceAll(char a, char b)
{
    return ReplaceBytes(
        _s, [a](char c) { return c == a; }, b);
}

int AK_String::Replace(const char* a, const char* b) { return ReplaceTexts(*this, a, b, 1); }

int AK_String::ReplaceAll(const char* a, const char* b) { return ReplaceTexts(*this, a, b, INT_MAX); }

int AK_String::ReplaceNonAlNum(char with)
{
    return ReplaceBytes(
        _s, [](char c) { return !IsAlnum(c); }, with);
}

int AK_String::ReplaceWhitespace(char with) { return ReplaceBytes(_s, IsWhitespace, with); }

int AK_String::ReplaceToNonAlnum(char c, const char* pre, const char* post)
{
    const char* at = c ? std::strchr(_s, c) : nullptr;
    if (!at) return 0;
    const char* runEnd = at + 1;
    while (IsAlnum(*runEnd)) ++runEnd;
    AK_String result = AK_String(_s, at) + pre + AK_String(at + 1, runEnd) + post + runEnd;
    Swap(result);
    return 1;
}

void AK_String::RemoveDoubles(char c, int from)
{
    const int length = Length();
    int out = from < 0 ? 0 : from;
    if (out >= length) return;
    for (int in = out++ + 1; in < length; ++in) {
        if (_s[in] != c || _s[out - 1] != c) _s[out++] = _s[in];
    }
    _s[out] = 0;
}

void AK_String::RemoveLineEnd()
{
    std::size_t length = std::strlen(_s);
    if (length > 0 && _s[length - 1] == '\n') _s[--length] = 0;
    if (length > 0 && _s[length - 1] == '\r') _s[--length] = 0;
}

void AK_String::ToLower()
{
    for (char* s = _s; *s; ++s) {
        if (*s >= 'A' && *s <= 'Z') *s = char(*s - 'A' + 'a');
    }
}

void AK_String::ToUpper()
{
    for (char* s = _s; *s; ++s) {
        if (*s >= 'a' && *s <= 'z') *s = char(*s - 'a' + 'A');
    }
}

// ------------------------------------------------------------------------------------------------------------- tests

bool AK_String::IsAlnum(char c) { return c == '_' || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || IsDigit(c); }

bool AK_String::IsDigit(char c) { return c >= '0' && c <= '9'; }

bool AK_String::IsWhitespace(char c) { return c == ' ' || c == '\t'; }

bool AK_String::IsNumbers() const { return _s[std::strspn(_s, "0123456789+-.EeDd \t")] == 0; }

// ----------------------------------------------------------------------------------------------------------- parsing

int AK_String::Split(char c, AK_List<AK_String>& list) const
{
    const char sep[2] = {c, 0};
    return Split(sep, list);
}

int AK_String::Split(const char* sep, AK_List<AK_String>& list) const
{
    const std::size_t sepLength = std::strlen(sep);
    const char* from = _s;
    while (const char* at = sepLength > 0 ? std::strstr(from, sep) : nullptr) {
        list.Append(AK_String(from, at));
        from = at + sepLength;
    }
    if (*from) list.Append(AK_String(from));
    return list.Size();
}

// The pieces between blanks, as numbers, up to `most` of them.
template <class Number>
static int ReadNumbers(const char* s, Number* v, int most)
{
    int count = 0;
    for (s += std::strspn(s, " "); *s && count < most; s += std::strspn(s, " ")) {
        const AK_String piece(s, s + std::strcspn(s, " "));
        v[count++] = Number(std::strtod(piece.c_str(), nullptr));
        s += piece.Length();
    }
    return count;
}

int AK_String::GetVec(float* v, int) const { return ReadNumbers(_s, v, INT_MAX); }

int AK_String::GetVec(double* v, int n) const { return ReadNumbers(_s, v, n); }

static int Expect(int wanted, int found)
{
    if (found == wanted) return 1;
    AK_MSG("WARNING:wrong input!");
    return 0;
}

// NOLINTBEGIN(cert-err34-c): the count of numbers read is what matters; one out of range reads as infinity
int AK_String::f2(float* v) const { return Expect(2, std::sscanf(_s, " %f %f", v, v + 1)); }

int AK_String::f2(double* v) const { return Expect(2, std::sscanf(_s, " %lf %lf", v, v + 1)); }

int AK_String::f3(float* v) const { return Expect(3, std::sscanf(_s, " %f %f %f", v, v + 1, v + 2)); }

int AK_String::f3(double* v) const { return Expect(3, std::sscanf(_s, " %lf %lf %lf", v, v + 1, v + 2)); }

int AK_String::f4(float* v) const { return Expect(4, std::sscanf(_s, " %f %f %f %f", v, v + 1, v + 2, v + 3)); }
// NOLINTEND(cert-err34-c)

// Where the value of a key begins in a text of key values, or null.
static const char* FindValue(const char* s, const AK_String& key, char assign, char sep)
{
    const std::size_t length = std::strlen(key.c_str());
    if (length == 0) return nullptr;
    while (s) {
        if (std::strncmp(s, key.c_str(), length) == 0 && s[length] == assign && assign) return s + length + 1;
        s = sep ? std::strchr(s, sep) : nullptr;
        if (s) ++s;
    }
    return nullptr;
}

static const char* EndOfValue(const char* value, char sep)
{
    const char* end = std::strchr(value, sep);   // a separator NUL is the end as well
    return end ? end : value + std::strlen(value);
}

AK_String AK_String::KeyValue(const AK_String& key, char assign, char sep) const
{
    const char* value = FindValue(_s, key, assign, sep);
    return value ? AK_String(value, EndOfValue(value, sep)) : AK_String();
}

void AK_String::SetKeyValue(const AK_String& key, const AK_String& value, char assign, char sep)
{
    if (key.IsEmpty()) return;
    AK_String result;
    if (const char* old = FindValue(_s, key, assign, sep)) {
        result = AK_String(_s, old) + value + EndOfValue(old, sep);
    } else {
        const AK_String separator(sep);
        result = *this;
        if (!IsEmpty() && !EndsWith(separator._s)) result.Append(separator);
        result = result + key + AK_String(assign) + value + separator;
    }
    Swap(result);
}
