// Hostile records and text files. The input is a few bytes that choose what is read, then the file itself.
//
// For any input: what a list or a string holds has stood in the file, nothing is read after a failure, and the lines of
// a text are its bytes.

#include "AK_Basic.h"

#include <cstdint>
#include <cstdlib>
#include <sys/mman.h>
#include <unistd.h>

// A finding is an abort, as in the program itself.
static void Require(bool holds)
{
    if (!holds) std::abort();
}

// A file in memory that has a name.
class MemoryFile
{
public:
    MemoryFile(const uint8_t* data, size_t size) : _descriptor(memfd_create("input", 0))
    {
        Require(write(_descriptor, data, size) == ssize_t(size));
    }
    ~MemoryFile() { close(_descriptor); }
    AK_String Name() const { return AK_String("/proc/self/fd/") + AK_String(_descriptor, "%d"); }

private:
    int _descriptor;
};

template <class T>
static void ReadList(AK_Stream& in, long itemBytes, bool failedBefore)
{
    const long before = in.Remaining();
    AK_List<T> list;
    in.Read(list);
    Require(!failedBefore || in._status == 1);
    Require(in._status == 0 || list.IsEmpty());
    Require(list.Size() * itemBytes <= before);
}

static void ReadRecord(const AK_String& name, const uint8_t* choices, size_t n)
{
    AK_Stream in(name, "rb");
    for (size_t i = 0; i < n; ++i) {
        const bool failedBefore = in._status != 0;
        AK_String text;
        double number = 0;
        switch (choices[i] % 7) {
        case 0: ReadList<int>(in, 4, failedBefore); break;
        case 1: ReadList<double>(in, 8, failedBefore); break;
        case 2: ReadList<char>(in, 1, failedBefore); break;
        case 3: ReadList<AK_String>(in, 4, failedBefore); break;
        case 4: in.Read(text); break;
        case 5: in.Read(number); break;
        case 6: Require(in.ReadCount(choices[i] + 1) * (choices[i] + 1L) <= in.Remaining()); break;
        }
        Require(!failedBefore || in._status == 1);
    }
}

static void ReadText(const AK_String& name, int limit, size_t size)
{
    AK_TextReader reader(name);
    Require(reader.Size() == long(size));
    AK_String line;
    for (long left = reader.Remaining(); reader.ReadLine(line, limit); left = reader.Remaining()) {
        const long taken = left - reader.Remaining();
        const long mark = left == long(size) ? 3 : 0;   // bytes of a byte-order mark that may be passed over
        Require(taken >= 1 && taken <= limit + mark && line.Length() <= taken);
        line.RemoveLineEnd();
    }
    Require(reader.Remaining() == 0 && reader.ReadByte() == -1);
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    const size_t nChoices = 8;
    if (size < nChoices) return 0;
    const MemoryFile file(data + nChoices, size - nChoices);
    ReadRecord(file.Name(), data, nChoices);
    ReadText(file.Name(), data[0] + 1, size - nChoices);
    return 0;
}
