// Binary PPM files: three header lines and the pixels.
//
//   P6                 every header line may have lines before it that begin with "#"
//   <width> <height>
//   <maximum value>    below 256: one byte a component; otherwise two, the high one first
//   pixels             rows from the top down, r g b
//
// In memory the rows run from the bottom up, as in the rasteriser's planes.
//
// A file is measured before it is read: no line runs past its end (a device may have none), and a size is believed only
// if the bytes behind the header can hold it.

#include "AK_sogl.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>

namespace
{

enum ReadResult { OK = 0, NOT_OPENED = 1, WRONG_MAGIC = 2, BAD_SIZE = 3, BAD_MAXIMUM_OR_NO_MEMORY = 4 };

struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, CloseFile>;

/// Bytes from the start of the file to its end; 0 for what cannot be measured.
std::int64_t MeasuredSize(std::FILE* file)
{
    if (std::fseek(file, 0, SEEK_END) != 0) return 0;
    const long size = std::ftell(file);
    std::rewind(file);
    return size > 0 ? size : 0;
}

/// The header's lines, read one byte at a time and never past the measured size.
class Header
{
public:
    explicit Header(std::FILE* file) : _file(file), _rest(MeasuredSize(file)) {}

    /// Bytes behind the lines read so far.
    std::int64_t Rest() const { return _rest; }

    /// The start of the next line that is no comment; empty at the end of the file. Valid until the next call.
    const char* Line()
    {
        do {
            ReadLine();
        } while (_line[0] == '#');
        return _line;
    }

private:
    static constexpr int lineSize = 128;   // two numbers and some blanks; what is longer is cut

    void ReadLine()
    {
        int length = 0;
        for (int c = Next(); c != EOF && c != '\n'; c = Next())
            if (length < lineSize - 1) _line[length++] = char(c);
        _line[length] = '\0';
    }

    int Next()
    {
        if (_rest <= 0) return EOF;
        --_rest;
        return std::getc(_file);
    }

    std::FILE* _file;
    std::int64_t _rest;
    char _line[lineSize];
};

/// A number from 1 to `largest` at `text`, which moves behind it; 0 if there is none.
int ReadNumber(const char*& text, long largest)
{
    char* end = nullptr;
    const long number = std::strtol(text, &end, 10);
    const bool good = end != text && number >= 1 && number <= largest;
    text = end;
    return good ? int(number) : 0;
}

std::size_t BytesOfPixel(int depth)
{
    return depth < 9 ? 3 : 6;
}

}   // namespace

int aglReadPpmFile(const char* name, int* width, int* height, int* depth, unsigned char** data)
{
    *data = nullptr;
    const File file(std::fopen(name, "rb"));
    if (!file) return NOT_OPENED;
    Header header(file.get());
    if (std::strncmp(header.Line(), "P6", 2) != 0) return WRONG_MAGIC;

    const char* sizes = header.Line();
    const int w = ReadNumber(sizes, INT32_MAX);
    const int h = w ? ReadNumber(sizes, INT32_MAX) : 0;
    if (!h) return BAD_SIZE;
    const char* maximum = header.Line();
    const int largest = ReadNumber(maximum, 65535);
    if (!largest) return BAD_MAXIMUM_OR_NO_MEMORY;

    const int bits = largest < 256 ? 8 : 16;
    const std::int64_t rowsInFile = header.Rest() / (std::int64_t(w) * std::int64_t(BytesOfPixel(bits)));
    if (h > rowsInFile) return BAD_SIZE;
    const std::size_t rowBytes = std::size_t(w) * BytesOfPixel(bits);
    std::unique_ptr<unsigned char[]> pixels(new (std::nothrow) unsigned char[rowBytes * std::size_t(h)]);
    if (!pixels) return BAD_MAXIMUM_OR_NO_MEMORY;
    for (int row = h - 1; row >= 0; --row)
        if (std::fread(pixels.get() + std::size_t(row) * rowBytes, rowBytes, 1, file.get()) != 1) return BAD_SIZE;

    *width = w;
    *height = h;
    *depth = bits;
    *data = pixels.release();
    return OK;
}

int aglWritePpmFile(const char* name, int width, int height, int depth, const unsigned char* data)
{
    if (depth > 16) return 3;
    File file(std::fopen(name, "wb"));
    if (!file) return 1;
    bool written = std::fprintf(file.get(), "P6\n%d %d\n%d\n", width, height, depth < 9 ? 255 : 65535) > 0;
    const std::size_t rowBytes = width > 0 ? std::size_t(width) * BytesOfPixel(depth) : 0;
    for (int row = height - 1; row >= 0 && rowBytes > 0 && written; --row)
        written = std::fwrite(data + std::size_t(row) * rowBytes, rowBytes, 1, file.get()) == 1;
    written = std::fclose(file.release()) == 0 && written;   // the last of it may fail to reach the disk only here
    return written ? 0 : 1;
}
