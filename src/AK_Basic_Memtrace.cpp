// The memory trace: a header before each block says who asked for it, and a table lists the headers of all live blocks.
//
//   header (56 bytes)                                               | block handed to the caller
//   magic, index in the table, size, file, line, running number     |
//
// Freeing takes the last entry of the table into the place that gets free, so the index in each header is its place.
// Whether a block is one of the traced ones is looked up in a set: what lies before a block of plain malloc is not ours
// to read and may not even be mapped.

#include "AK_Basic.h"

#include <cstdlib>
#include <cstring>
#include <unordered_set>

namespace {

struct Header {
    unsigned int magic;
    unsigned int index;   // place in `allocated`
    std::size_t size;     // bytes requested
    char file[32];        // its last 31 characters if longer; empty if not known
    int line;
    int number;   // running number of the allocation
};
static_assert(sizeof(Header) == 56);

constexpr unsigned int traceMagic = 123456789;

Header** allocated = nullptr;   // live headers
unsigned int nAllocated = 0;
unsigned int mAllocated = 0;   // capacity of the table
int allocNum = 0;              // running number
std::size_t allocMem = 0;      // live bytes
AK_String currId;              // label for whoever looks at the process in a debugger; empty when the trace is off

// Never destroyed: blocks may be freed by the destructors of other statics.
std::unordered_set<const void*>& TracedBlocks()
{
    static auto* blocks = new std::unordered_set<const void*>;
    return *blocks;
}

[[noreturn]] void Fail(const char* text)
{
    std::fputs(text, stdout);
    std::fflush(stdout);
    std::abort();
}

// realloc of a header (or none) with the room for `size` bytes behind it.
Header* ReallocateHeader(Header* header, std::size_t size, const char* failure)
{
    if (size > SIZE_MAX - sizeof(Header)) Fail(failure);
    header = static_cast<Header*>(std::realloc(header, size + sizeof(Header)));
    if (!header) Fail(failure);
    return header;
}

// Makes a header a live one at its index in the table and returns its block.
void* Register(Header* header, unsigned int index, std::size_t size, const char* file, int line)
{
    header->magic = traceMagic;
    header->index = index;
    header->size = size;
    const std::size_t length = file ? std::strlen(file) : 0;
    const std::size_t kept = std::min(length, sizeof header->file - 1);
    std::memset(header->file, 0, sizeof header->file);
    if (kept > 0) std::memcpy(header->file, file + length - kept, kept);
    header->line = line;
    header->number = allocNum++;
    allocated[index] = header;
    allocMem += size;
    TracedBlocks().insert(header + 1);
    return header + 1;
}

// The header of a traced block, or null for any other; the block stops being one.
Header* Unregister(void* block)
{
    if (TracedBlocks().erase(block) == 0) return nullptr;
    Header* header = static_cast<Header*>(block) - 1;
    AK_ASSERT_AS(header->magic == traceMagic, "magic");   // somebody wrote before the block
    allocMem -= header->size;
    return header;
}

}   // namespace

void* AK_malloc(std::size_t size, const char* file, int line)
{
    Header* header = ReallocateHeader(nullptr, size, "AK_malloc failed!");
    if (nAllocated == mAllocated) {
        mAllocated = 2 * mAllocated + 1;
        allocated = static_cast<Header**>(
            std::realloc(allocated, mAllocated * sizeof(Header*)));   // NOLINT(bugprone-sizeof-expression)
        if (!allocated) Fail("AK_malloc failed!");
    }
    return Register(header, nAllocated++, size, file, line);
}

void* AK_realloc(void* block, std::size_t size, const char* file, int line)
{
    if (!block) return AK_malloc(size, file, line);
    if (size == 0) {
        AK_free(block);
        return nullptr;
    }
    Header* header = Unregister(block);
    if (!header) return std::realloc(block, size);
    const unsigned int index = header->index;
    return Register(ReallocateHeader(header, size, "AK_realloc failed!"), index, size, file, line);
}

void AK_free(void* block)
{
    Header* header = Unregister(block);
    if (!header) {
        std::free(block);
        return;
    }
    Header* last = allocated[--nAllocated];
    allocated[header->index] = last;
    last->index = header->index;
    std::free(header);
}

void AK_MemtraceOn(const char* id) { currId = id; }

void AK_MemtraceOff() { currId = ""; }

void AK_MemtraceDump()
{
    std::printf("AK_MemtraceDump: %zd bytes allocated\n", ssize_t(allocMem));
    for (unsigned int i = 0; i < nAllocated; ++i) {
        const Header& block = *allocated[i];
        if (block.file[0])
            std::printf("\t%zd bytes from %s:%d, #%d\n", ssize_t(block.size), block.file, block.line, block.number);
    }
    std::fflush(stdout);
}

void* operator new(std::size_t size, const char* file, int line) { return AK_malloc(size, file, line); }
void* operator new[](std::size_t size, const char* file, int line) { return AK_malloc(size, file, line); }
void operator delete(void* block, const char*, int) { AK_free(block); }
void operator delete[](void* block, const char*, int) { AK_free(block); }
