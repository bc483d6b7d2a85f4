// The foundation: strings, lists, a hash map, binary records, text files, system services, messages, memory trace.
//
// Everything above speaks in these types: attribute values, paths and commands are AK_String, arrays are AK_List, data
// files are AK_Stream, and each request to the operating system goes through AK_System. Nothing here throws. What can
// fail from outside (a file, a text from the user) is told by a result; running out of memory and broken promises of
// our own code end the program with an assertion. Where nothing else is said, an object belongs to one thread at a time
// and different objects may be used by different threads.
//
// Numbers become text in three fixed formats, since the texts reach files and commands: "%d" for int, "%g" for float,
// "%.15g" for double. The last does not always read back bit for bit, so persistent numbers go through AK_Stream.

#pragma once

#include "AK_Basic_Containers.h"
#include "AK_Basic_Message.h"

#include <concepts>
#include <cstddef>
#include <cstdio>
#include <ostream>

/// Follows every element of a list that travels as one text, the last one too.
inline constexpr const char* ak_sep = "%AK_SEP%";
/// The answer to a question about an attribute that does not exist.
inline constexpr const char* ak_null = "%AK_NULL%";

// ---------------------------------------------------------------------------------------------------------- strings

/// Byte string without an encoding: any bytes but NUL, which ends it. The block is sized exactly, since an object tree
/// holds many short strings; building a long text by many appends therefore costs a reallocation each.
/// "ASCII" operations treat bytes from 128 on as neither letter nor digit. Lengths and positions are in bytes.
class AK_String {
public:
    int _size = 0;        // allocated bytes, at least 2; the text with its NUL fits in
    char* _s = nullptr;   // the text, terminated; null only inside constructors

    AK_String() : AK_String(nullptr, 0, 8) {}
    AK_String(const char* s);   // null is fatal
    AK_String(const AK_String& other);
    AK_String(AK_String&& other) noexcept;
    AK_String(const char* begin, const char* end);   // the bytes of a range; a NUL among them ends the text
    explicit AK_String(char c);
    AK_String(int number, const char* format);                    // a printf format for one int
    AK_String(double number, const char* format);                 // a printf format for one double
    AK_String(const float* v, int n);                             // n numbers in "%g", joined by one blank
    AK_String(const double* v, int n);                            // n numbers in "%.15g", joined by one blank
    AK_String(const AK_List<AK_String>& list, const char* sep);   // each element followed by sep, the last one too
    ~AK_String();

    AK_String& operator=(const AK_String& other);
    AK_String& operator=(AK_String&& other) noexcept;
    AK_String& operator=(const char* s);   // null is fatal; s may lie within this string

    /// "%ak_ptr%" and the address: the form in which a pointer travels inside a text.
    static AK_String PtrString(const void* address);
    /// The address in a text of that form, or null. The text may come from anywhere: check what it points to.
    void* Pointer() const;

    const char* c_str() const { return _s; }
    int Length() const;
    bool IsEmpty() const { return _s[0] == 0; }
    char& operator[](int i) { return _s[i]; }   // 0 to Length(); a NUL written here ends the text
    char operator[](int i) const { return _s[i]; }

    bool operator==(const AK_String& other) const;
    bool operator==(const char* other) const;
    bool StartsWith(const char* text) const;
    bool EndsWith(const char* text) const;

    /// For qsort on an array of AK_String: the order of strcmp.
    static int Compare(const void* a, const void* b);

    /// Reallocates to exactly max(n, 2) bytes, without touching the text: who shrinks it terminates it before.
    void Resize(int n);
    void Swap(AK_String& other) noexcept;

    void Append(const AK_String& s);   // the string itself is fatal, as is a text within it
    void Append(const char* s);
    void Prepend(const AK_String& s);
    void Prepend(const char* s);

    // Replacing. The results count the replacements.
    int Replace(char a, char b);                 // first occurrence only
    int ReplaceAll(char a, char b);              // all of them
    int Replace(const char* a, const char* b);   // first occurrence only; 0 if a equals b, is empty or is not found
    /// All occurrences from left to right in one pass: what has been put in is not searched again.
    int ReplaceAll(const char* a, const char* b);
    int ReplaceNonAlNum(char with);     // each character that is not IsAlnum
    int ReplaceWhitespace(char with);   // each blank or tab
    /// Puts `pre` in the place of the first c and `post` behind the run of IsAlnum characters that follows it; 1 if
    /// there is a c, else 0.
    int ReplaceToNonAlnum(char c, const char* pre, const char* post);
    void RemoveDoubles(char c, int from);   // collapses each run of c to one, from a position on
    void RemoveLineEnd();                   // one "\n" at the end, then one "\r" at the end
    void ToLower();                         // ASCII
    void ToUpper();                         // ASCII

    static bool IsAlnum(char c);        // "_", ASCII letter or digit
    static bool IsDigit(char c);        // ASCII digit
    static bool IsWhitespace(char c);   // blank or tab
    bool IsNumbers() const;             // digits, "+-.EeDd", blanks and tabs only; true for the empty string

    /// Appends the pieces between occurrences of the separator to `list`, which is not cleared first, and returns the
    /// list's size. Empty pieces count, but not one at the very end: "a;;" gives "a" and "", "" gives none.
    int Split(char c, AK_List<AK_String>& list) const;
    int Split(const char* sep, AK_List<AK_String>& list) const;   // an empty separator splits nothing

    /// Reads the numbers of a text that are separated by blanks and returns how many were stored; what is not a number
    /// counts as 0. The float form stores ALL numbers of the text, whatever n says: use it on texts of known length
    /// only. The double form stops at n.
    int GetVec(float* v, int n) const;
    int GetVec(double* v, int n) const;

    /// Exactly 2, 3 or 4 numbers with whitespace between them: returns 1. With fewer, "WARNING:wrong input!" goes out
    /// and the result is 0; the numbers that could be read have been stored.
    int f2(float* v) const;
    int f2(double* v) const;
    int f3(float* v) const;
    int f3(double* v) const;
    int f4(float* v) const;

    /// The value of a key in a text "k1=v1;k2=v2", with `assign` and `sep` in the place of "=" and ";"; "" if the key
    /// is not there. A key begins the text or follows a separator.
    AK_String KeyValue(const AK_String& key, char assign, char sep) const;
    /// Replaces the value of a key, or appends key, assign, value and sep. An empty key does nothing.
    void SetKeyValue(const AK_String& key, const AK_String& value, char assign, char sep);

    // Paths.
    bool IsAbsolutePath() const { return _s[0] == '/'; }
    /// Adds a name to a directory: an empty string is "." first; the separator is not doubled.
    void AppendName(const AK_String& name, char sep);
    void AppendExtension(const AK_String& extension);   // "." and the extension
    void RemoveExtension();                             // cuts at the last ".", wherever it stands
    AK_String Extension() const;                        // behind the last "." of the last path segment, or ""
    AK_String BaseName() const;                         // the last path segment without its extension
    /// The path with its extension replaced, or with the extension if it has none.
    AK_String WithExtension(const AK_String& extension) const;
    void RemoveDotsep(char sep);                        // each "./" at the start or behind a separator
    /// Makes the path absolute and plain: "/" for "\", no doubled "/", no "./", no "..", no "/" at the end. A relative
    /// path starts at the working directory; if there is none it stays relative. The root stays "/".
    void CleanupPath();
    /// This path as seen from the directory `base`: both are cleaned up first; "" if they are the same.
    AK_String RelativePath(const AK_String& base) const;

private:
    AK_String(const char* s, std::size_t length, std::size_t size);   // length bytes of s in a block of size bytes
    template <class Number>
    void Print(Number number, const char* format, int room);
};

AK_String operator+(const AK_String& a, const AK_String& b);
AK_String operator+(const AK_String& a, const char* b);
AK_String operator+(const char* a, const AK_String& b);
std::ostream& operator<<(std::ostream& out, const AK_String& s);

/// The hash of a string for AK_Dict. All bytes count alike (Fowler, Noll and Vo's 1a), since keys of one kind, such as
/// ids and paths, begin alike.
template <>
int HashIndex(const AK_String& key);

// --------------------------------------------------------------------------------------------------- binary records

// Plain functions on an open FILE*, passed as void*. The read and write functions return the number of items done.
// Values are little-endian; there is no padding.

/// fopen in binary mode, "rb" or "wb"; null on failure. A mode without "b" is reported and opens nothing.
void* AK_open(const char* name, const char* mode);
int AK_close(void* file);   // 0 on success
int AK_flush(void* file);
/// Moves the file descriptor by `offset` bytes from where it stands, past the stream's buffer: it is not fseek.
/// Returns 0 on success.
int AK_seek(unsigned long offset, void* file);
unsigned long AK_write_c(const char* items, unsigned long n, void* file);
unsigned long AK_write_i(const int* items, unsigned long n, void* file);
unsigned long AK_write_u(const unsigned int* items, unsigned long n, void* file);
unsigned long AK_write_f(const float* items, unsigned long n, void* file);
unsigned long AK_write_d(const double* items, unsigned long n, void* file);
unsigned long AK_read_c(char* items, unsigned long n, void* file);
unsigned long AK_read_i(int* items, unsigned long n, void* file);
unsigned long AK_read_u(unsigned int* items, unsigned long n, void* file);
unsigned long AK_read_f(float* items, unsigned long n, void* file);
unsigned long AK_read_d(double* items, unsigned long n, void* file);

/// Types that a record holds as their bytes in memory: the numbers here, and plain structures of one kind of number
/// without padding for which a higher layer says so: template <> inline constexpr bool ak_is_stream_item<X> = true;
template <class T>
inline constexpr bool ak_is_stream_item =
    std::same_as<T, char> || std::same_as<T, unsigned char> || std::same_as<T, int> || std::same_as<T, unsigned int> ||
    std::same_as<T, float> || std::same_as<T, double>;
template <class T>
concept AK_StreamItem = ak_is_stream_item<T> && std::is_trivially_copyable_v<T>;

/// A file of binary records, as SaveData and LoadData receive it: the plain sequence of what was written, where a
/// reader mirrors its writer. A record opens with a version tag, a string such as "SW_Mesh:v1".
///
///   char, int, float, double   1, 4, 4, 8 bytes, little-endian
///   string                     int length, the bytes, no terminator
///   list                       int count, the items
///
/// The input may be hostile. A length or count that is negative or that the rest of the file cannot hold is refused
/// before memory is asked for, so reading never takes much more memory than the file is long. After the first failed
/// read every later one fails too: the check of _status at the end of a record is enough. Only regular files are read.
class AK_Stream {
public:
    int _status = 0;         // outcome of the last operation: 0 good, 1 failed; after Close its result
    void* _file = nullptr;   // the open FILE*, null when closed

    AK_Stream() = default;
    AK_Stream(const AK_String& name, const char* mode);   // AK_open; _status is 1 if that failed
    ~AK_Stream();                                         // closes
    AK_Stream(const AK_Stream&) = delete;
    AK_Stream& operator=(const AK_Stream&) = delete;

    /// Closes the file if it is open; _status tells whether all that was written has reached it.
    void Close();

    /// 1 if any operation so far has failed, be it hidden in _status by a later good one: a writer's complete answer.
    int Failed() const { return _failed; }

    /// Bytes from here to the end of the file; 0 for what is no regular file.
    long Remaining() const;

    template <AK_StreamItem T>
    void Write(T item)
    {
        WriteBytes(&item, sizeof item);
    }
    template <AK_StreamItem T>
    void Write(const T* items, long n)
    {
        WriteBytes(items, std::size_t(n) * sizeof(T));
    }
    template <AK_StreamItem T>
    void Write(const AK_List<T>& list)
    {
        Write(list.Size());
        if (_status == 0) Write(list.Data(), list.Size());
    }
    void Write(const AK_String& s);
    void Write(const AK_List<AK_String>& list);

    /// An item that cannot be read whole keeps its value: give it one before.
    template <AK_StreamItem T>
    void Read(T& item)
    {
        T read;
        ReadBytes(&read, sizeof read);
        if (_status == 0) item = read;
    }
    /// n items into the caller's array. When the file ends early, part of the array may have been overwritten.
    template <AK_StreamItem T>
    void Read(T* items, long n)
    {
        ReadBytes(items, std::size_t(n) * sizeof(T));
    }
    /// The list becomes what was read, with that capacity; empty if that failed.
    template <AK_StreamItem T>
    void Read(AK_List<T>& list)
    {
        const int count = ReadCount(sizeof(T));
        list.Clear();
        list.Redimension(count);
        list.SetSize(count);
        if (_status == 0) Read(list.Data(), count);
        if (_status != 0) list.Clear();
    }
    void Read(AK_String& s);
    void Read(AK_List<AK_String>& list);

    /// Reads the count of items that follow, each of which takes at least `bytesPerItem` bytes in the file. A negative
    /// count and one that cannot be true fail, and the result is 0.
    int ReadCount(long bytesPerItem);

private:
    void WriteBytes(const void* bytes, std::size_t n);
    void ReadBytes(void* bytes, std::size_t n);
    void RefuseRead();
    void Done(bool good);

    int _failed = 0;       // sticky
    int _readFailed = 0;   // sticky: no later read succeeds
};

// ------------------------------------------------------------------------------------------------------- text files

/// Reads a text file of any content in lines of bounded length, or byte by byte. A byte-order mark that it begins with
/// is passed over, with a warning.
class AK_TextReader {
public:
    explicit AK_TextReader(const AK_String& name);
    ~AK_TextReader();
    AK_TextReader(const AK_TextReader&) = delete;
    AK_TextReader& operator=(const AK_TextReader&) = delete;

    /// False if the file does not exist, cannot be read or is a directory; there are no lines in it then.
    bool IsOpen() const { return _file != nullptr; }

    /// Reads one line with its "\n", at most `limit` bytes (at least 1); what exceeds that counts as the next line.
    /// False at the end of the file. The text of a line ends at a NUL byte; the next line is not affected.
    bool ReadLine(AK_String& line, int limit);

    /// The next byte, 0 to 255, or -1 at the end of the file.
    int ReadByte()
    {
        if (!(_next < _end || Fill())) return -1;
        _line += _lineEnded;
        _lineEnded = _buffer[_next] == '\n';
        return static_cast<unsigned char>(_buffer[_next++]);
    }

    /// The number of the line, from 1, in which the last byte that was read stands.
    long Line() const { return _line; }
    /// The file and that line, as messages name them: "alp.xyz, line 3".
    AK_String Place() const;

    /// NUL bytes met by ReadLine so far: a text file has none.
    long NulBytes() const { return _nulBytes; }
    /// Bytes of the whole file and bytes not yet read; 0 for what is no regular file.
    long Size() const { return _fileSize; }
    long Remaining() const;

private:
    bool Fill();

    static constexpr int bufferSize = 65536;
    AK_String _name;
    std::FILE* _file = nullptr;
    char* _buffer = nullptr;
    long _line = 1;
    bool _lineEnded = false;   // by the last byte that was read
    int _next = 0;             // first unread byte of the buffer
    int _end = 0;              // end of the bytes in the buffer
    long _bytesBuffered = 0;   // bytes that have been in the buffer so far
    long _fileSize = 0;
    long _nulBytes = 0;
};

// -------------------------------------------------------------------------------------------------- system services

/// Counts how deep something goes into itself, by a counter that all of its guards share. What comes from outside must
/// not choose how deep the stack gets: who is too deep goes no further.
class AK_DepthGuard {
public:
    AK_DepthGuard(int& depth, int deepest) : _depth(depth), _tooDeep(depth >= deepest) { ++_depth; }
    ~AK_DepthGuard() { --_depth; }
    AK_DepthGuard(const AK_DepthGuard&) = delete;
    AK_DepthGuard& operator=(const AK_DepthGuard&) = delete;
    bool TooDeep() const { return _tooDeep; }

private:
    int& _depth;
    bool _tooDeep;
};

/// What the program asks of the operating system, and its random numbers. rand and srand share unlocked state and are
/// for the main thread; the others may be called by any thread, as far as the file system itself allows it.
class AK_System {
public:
    static AK_String _tmpBatFileName;   // batch file of the background run that is being started; empty at first

    static bool FileExists(const AK_String& name);         // directories count
    static bool IsDirectory(const AK_String& name);        // follows a symbolic link
    static long ModificationTime(const AK_String& name);   // seconds since 1970, 0 if it cannot be read

    /// 0 on success and for a directory that is there already.
    static int CreateDir(const AK_String& name);
    /// Creates what is missing of a path, parents first. 0 on success, for "" and for an existing path; 1 on failure.
    static int CreateDirRecursively(const AK_String& name);

    static int RemoveFile(const AK_String& name);   // a file or an empty directory; 0 on success
    static int RenameFile(const AK_String& from, const AK_String& to);
    /// The name under which a file is written before it is renamed to `name`, so that a reader never meets half of it:
    /// `name` and ".tmp". What is there and is no regular file (a terminal, a link) is written in place: `name` itself.
    static AK_String TemporaryName(const AK_String& name);
    /// Copies a file. 0 on success, 1 if `from` cannot be opened or read, 2 if `to` cannot be opened, 3 if it cannot be
    /// written. A copy of a file to itself leaves it as it is.
    static int CpyFile(const AK_String& from, const AK_String& to);
    /// Removes a file or a directory with all it holds. Symbolic links are removed, never followed; the root of the
    /// file system is refused. Returns the sum of the results: 0 if everything is gone.
    static int RemoveFileRecursively(const AK_String& name);
    /// Removes directories that hold nothing but empty directories. Files and symbolic links are left. 0 if `name` is
    /// gone.
    static int RemoveEmptyDirsRecursively(const AK_String& name);

    /// Names of the entries of a directory, without the directory, in the order of strcmp; ".", ".." and what begins
    /// with ".." are left out. With a non-empty extension, only names that have it (behind their last "."). A directory
    /// that cannot be opened gives an empty list.
    static AK_List<AK_String> FilesList(const AK_String& directory, const AK_String& extension);

    static AK_String CurrentWorkingDirectory();   // "" on failure, or beyond 511 bytes
    static AK_String HomeDirectory();             // "HOME", or the working directory if that is empty or not set
    static AK_String Date();                      // now, as ctime writes it, with its newline
    static void MilliSleep(int milliseconds);
    /// Processors: the lines "cpu0", "cpu1"... of the system's statistics; 1 if they cannot be read.
    static int NumCpus(const AK_String& statistics = "/proc/stat");

    /// This process as others can recognise it: its id and the time of its start (in clock ticks since the system's),
    /// "1234 567890". An id alone is given again to a later process.
    static AK_String ProcessMark();
    /// True if the process of such a mark is alive; false for a text that is none.
    static bool ProcessLives(const AK_String& mark);
    /// True if the mark is of this process or of one that it was started from.
    static bool ProcessIsOurs(const AK_String& mark);

    /// The text as one word of the shell, whatever it holds.
    static AK_String ShellQuoted(const AK_String& text);
    /// Runs `cmd args` by the shell and returns the result of `system`; -1 for a null or empty cmd. quote puts cmd in
    /// double quotes; background adds " &". The texts are the shell's to interpret: quoting within them is the
    /// caller's part.
    static int Command(const char* cmd, const char* args, int background, int quote);
    /// Command("source", "\"file\"", background, 0)
    static int BatchCommand(const AK_String& file, int background);

    // Random numbers of our own, so that results are the same on every system.
    static unsigned long rand_next;   // state, 1 at start
    static constexpr int rand_max = 0x7FFFFFFF;
    static void srand(unsigned long seed) { rand_next = seed; }
    static int rand();   // 0 to rand_max - 1
};

// ------------------------------------------------------------------------------------------------------ linear solver

/// Solves the dense system A x = b of n equations by elimination with partial pivoting. A: n by n, row-major; b and x:
/// n values. A pivot below eps in magnitude becomes 1. Returns how many did: 0 for a regular system; x is filled in any
/// case.
int AK_SolveLES(int n, const double* A, const double* b, double* x, double eps);

// ------------------------------------------------------------------------------------------------------ memory trace

// Allocation with a record of who asked. Every block of AK_malloc is listed until it is freed. A class takes part by
// `new (file, line) T`; such objects go back through AK_delete, never through plain delete. Blocks are aligned to 8
// bytes. No lock: one thread only.

/// Running out of memory is fatal. `file` may be null: the block is then left out of the dump.
void* AK_malloc(std::size_t size, const char* file, int line);
/// A null block is allocated, a size of 0 frees and returns null. A block of plain malloc stays one.
void* AK_realloc(void* block, std::size_t size, const char* file, int line);
/// Frees a block of AK_malloc or of plain malloc.
void AK_free(void* block);

/// Sets and empties the label of the trace.
void AK_MemtraceOn(const char* id);
void AK_MemtraceOff();
/// Writes the live bytes and the live blocks to standard output.
void AK_MemtraceDump();

void* operator new(std::size_t size, const char* file, int line);
void* operator new[](std::size_t size, const char* file, int line);
void operator delete(void* block, const char* file, int line);
void operator delete[](void* block, const char* file, int line);

/// Ends an object made by `new (file, line) T`.
template <class T>
void AK_delete(T* object)
{
    if (!object) return;
    object->~T();
    AK_free(object);
}
