// Clone transformations: any text is refused, or is walked on the rasteriser's matrices without overflow, in bounded
// time, and leaves the stack as it was.

#include "AK_VisObj3d.h"
#include "AK_VisObj3d_Clones.h"
#include "AK_sogl.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size)
{
    const std::string copy(reinterpret_cast<const char*>(bytes), size);
    const AK_String text(copy.c_str());   // a NUL ends it
    if (!CloneTrafosError(text, AK_VisObj3d::maxCopies).IsEmpty()) return 0;

    int clones = 0;
    const AK_CloneContext context{[](int, void* count) { ++*static_cast<int*>(count); },
                                  &clones,
                                  soglPushMatrix,
                                  soglPopMatrix,
                                  soglRotatef,
                                  soglTranslatef,
                                  soglScalef,
                                  soglMirrorf};
    soglLoadIdentity();
    process_clones(reordered_trafos(text).c_str(), context, 0, 1, 0);
    if (clones > AK_VisObj3d::maxCopies) std::abort();
    float m[16];
    soglGetFloatv(GL_MODELVIEW_MATRIX, m);
    for (int i = 0; i < 16; ++i)
        if (m[i] != (i % 5 == 0)) std::abort();
    return 0;
}
