// Binary records and bounded text lines.
//
// All that a record needs from the file goes through AK_Stream's two byte functions, so the rules stand in one place:
// the outcome of each operation in _status, a failure that stays, and no read after a failed one. Numbers go in whole
// arrays; the bytes are the same as item by item, since the target's own order is the file's.

#include "AK_Basic.h"

#include <bit>
#include <climits>
#include <cstring>
#include <sys/stat.h>
#include <unistd.h>

static_assert(std::endian::native == std::endian::little, "files hold the host's bytes, which must be little-endian");
static_assert(sizeof(int) == 4 && sizeof(float) == 4 && sizeof(double) == 8);

static std::FILE* File(void* file) { return static_cast<std::FILE*>(file); }

// The length of a regular file, 0 for anything else: a pipe or a device has no end that a count could be held against.
static long RegularFileSize(std::FILE* file)
{
    struct stat status;
    if (fstat(fileno(file), &status) != 0 || !S_ISREG(status.st_mode)) return 0;
    return long(status.st_size);
}

// --------------------------------------------------------------------------------------------------- plain functions

void* AK_open(const char* name, const char* mode)
{
    if (!std::strchr(mode, 'b')) {
        AK_MSG("AK_STREAM " << name << " must be opened in binary mode!");
        return nullptr;
    }
    return std::fopen(name, mode);
}

int AK_close(void* file) { return std::fclose(File(file)); }

int AK_flush(void* file) { return std::fflush(File(file)); }

int AK_seek(unsigned long offset, void* file)
{
    return lseek(fileno(File(file)), off_t(offset), SEEK_CUR) == off_t(-1) ? 1 : 0;
}

template <class T>
static unsigned long WriteItems(const T* items, unsigned long n, void* file)
{
    return std::fwrite(items, sizeof(T), n, File(file));
}

template <class T>
static unsigned long ReadItems(T* items, unsigned long n, void* file)
{
    return std::fread(items, sizeof(T), n, File(file));
}

unsigned long AK_write_c(const char* items, unsigned long n, void* file) { return WriteItems(items, n, file); }
unsigned long AK_write_i(const int* items, unsigned long n, void* file) { return WriteItems(items, n, file); }
unsigned long AK_write_u(const unsigned int* items, unsigned long n, void* file) { return WriteItems(items, n, file); }
unsigned long AK_write_f(const float* items, unsigned long n, void* file) { return WriteItems(items, n, file); }
unsigned long AK_write_d(const double* items, unsigned long n, void* file) { return WriteItems(items, n, file); }

unsigned long AK_read_c(char* items, unsigned long n, void* file) { return ReadItems(items, n, file); }
unsigned long AK_read_i(int* items, unsigned long n, void* file) { return ReadItems(items, n, file); }
unsigned long AK_read_u(unsigned int* items, unsigned long n, void* file) { return ReadItems(items, n, file); }
unsigned long AK_read_f(float* items, unsigned long n, void* file) { return ReadItems(items, n, file); }
unsigned long AK_read_d(double* items, unsigned long n, void* file) { return ReadItems(items, n, file); }

// --------------------------------------------------------------------------------------------------------- AK_Stream

AK_Stream::AK_Stream(const AK_String& name, const char* mode) : _file(AK_open(name.c_str(), mode))
{
    Done(_file != nullptr);
}

AK_Stream::~AK_Stream() { Close(); }

void AK_Stream::Done(bool good)
{
    _status = good ? 0 : 1;
    if (!good) _failed = 1;
}

void AK_Stream::Close()
{
    if (!_file) return;
    _status = AK_close(_file);
    if (_status != 0) _failed = 1;
    _file = nullptr;
}

long AK_Stream::Remaining() const
{
    if (!_file) return 0;
    const long left = RegularFileSize(File(_file)) - std::ftell(File(_file));
    return left > 0 ? left : 0;
}

void AK_Stream::WriteBytes(const void* bytes, std::size_t n)
{
    Done(_file && std::fwrite(bytes, 1, n, File(_file)) == n);
}

void AK_Stream::ReadBytes(void* bytes, std::size_t n)
{
    if (_file && !_readFailed && std::fread(bytes, 1, n, File(_file)) == n)
        Done(true);
    else
        RefuseRead();
}

void AK_Stream::RefuseRead()
{
    _readFailed = 1;
    Done(false);
}

int AK_Stream::ReadCount(long bytesPerItem)
{
    int count = 0;
    Read(count);
    if (_status != 0) return 0;
    if (count >= 0 && count <= Remaining() / bytesPerItem) return count;
    RefuseRead();
    return 0;
}

void AK_Stream::Write(const AK_String& s)
{
    const int length = s.Length();
    Write(length);
    if (_status == 0) Write(s.c_str(), length);
}

// Asking for the rest of the file takes two system calls, ten times as long as reading a short string: what is no
// burden to allocate is left to fail when it is read.
void AK_Stream::Read(AK_String& s)
{
    constexpr int noBurden = 1024;
    int length = 0;
    Read(length);
    if (length < 0 || length == INT_MAX || (length > noBurden && length > Remaining())) RefuseRead();
    if (_status != 0) length = 0;

    AK_String read;
    read.Resize(length + 1);
    read[0] = 0;
    if (_status == 0) Read(read._s, length);
    read[_status == 0 ? length : 0] = 0;
    s.Swap(read);
}

void AK_Stream::Write(const AK_List<AK_String>& list)
{
    Write(list.Size());
    for (int i = 0; i < list.Size() && _status == 0; ++i) Write(list[i]);
}

void AK_Stream::Read(AK_List<AK_String>& list)
{
    const int count = ReadCount(sizeof(int));   // an empty string is its length alone
    list.Clear();
    list.Redimension(count);
    for (int i = 0; i < count && _status == 0; ++i) {
        AK_String s;
        Read(s);
        list.Append(std::move(s));
    }
    if (_status != 0) list.Clear();
}

// ----------------------------------------------------------------------------------------------------- AK_TextReader

AK_TextReader::AK_TextReader(const AK_String& name)
    : _name(name), _file(AK_System::IsDirectory(name) ? nullptr : std::fopen(name.c_str(), "rb"))
{
    if (!_file) return;
    _fileSize = RegularFileSize(_file);
    _buffer = new char[bufferSize];
}

AK_TextReader::~AK_TextReader()
{
    if (_file) std::fclose(_file);
    delete[] _buffer;
}

// Called when the buffer has been read to its end; false when nothing is left of the file.
bool AK_TextReader::Fill()
{
    if (!_file) return false;
    _next = 0;
    _end = int(std::fread(_buffer, 1, bufferSize, _file));
    const bool atStart = _bytesBuffered == 0;
    _bytesBuffered += _end;
    if (static constexpr char mark[] = "\xEF\xBB\xBF"; atStart && _end >= 3 && std::memcmp(_buffer, mark, 3) == 0) {
        _next = 3;
        AK_MSG("WARNING:" << Place() << ": a byte-order mark is passed over");
    }
    return _next < _end;
}

AK_String AK_TextReader::Place() const { return _name + ", line " + AK_String(int(_line), "%d"); }

bool AK_TextReader::ReadLine(AK_String& line, int limit)
{
    AK_ASSERT(limit > 0);
    line = "";
    int length = 0;
    bool ended = false;
    while (!ended && length < limit && (_next < _end || Fill())) {
        const char* from = _buffer + _next;
        int n = std::min(_end - _next, limit - length);
        if (const void* newline = std::memchr(from, '\n', std::size_t(n))) {
            n = int(static_cast<const char*>(newline) - from) + 1;
            ended = true;
        }
        line.Resize(length + n + 1);
        std::memcpy(line._s + length, from, std::size_t(n));
        length += n;
        _next += n;
    }
    line[length] = 0;
    _line += length > 0 && _lineEnded;
    if (length > 0) _lineEnded = ended;
    _nulBytes += std::count(line._s, line._s + length, '\0');
    return length > 0;
}

long AK_TextReader::Remaining() const
{
    const long left = _fileSize - _bytesBuffered + (_end - _next);
    return left > 0 ? left : 0;
}
