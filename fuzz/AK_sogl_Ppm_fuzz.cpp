// PPM files: any bytes give a result of 0 to 4, and an image only if it fits in the bytes.

#include "AK_sogl.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <sys/mman.h>
#include <unistd.h>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size)
{
    const int file = memfd_create("ppm", 0);   // in memory: a fuzzer writes many
    if (file < 0 || write(file, bytes, size) != ssize_t(size)) std::abort();
    int width = 0, height = 0, depth = 0;
    unsigned char* data = nullptr;
    const std::string name = "/proc/self/fd/" + std::to_string(file);
    const int result = aglReadPpmFile(name.c_str(), &width, &height, &depth, &data);
    close(file);

    if ((result == 0) != (data != nullptr) || result < 0 || result > 4) std::abort();
    if (data) {
        const size_t needed = size_t(width) * size_t(height) * size_t(depth / 8) * 3;
        if (needed == 0 || needed > size) std::abort();
        unsigned sum = 0;
        for (size_t i = 0; i < needed; ++i) sum += data[i];   // every byte is there and was read
        if (sum > 255 * needed) std::abort();
    }
    delete[] data;
    return 0;
}
