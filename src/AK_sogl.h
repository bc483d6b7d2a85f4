// Drawing: the table of drawing calls, what can be drawn through it, the software rasteriser, and PPM files.
//
// Objects draw by process-wide function pointers named as a small subset of OpenGL with the prefix `agl` (`aglu` for
// the utility functions). Two sets of functions stand behind the pointers:
//
//   nogl*   the no-operation layer, to which every pointer is initialised: draws nothing, stores nothing
//   sogl*   a rasteriser into memory buffers, at which AK_SetSoglContext() points the table
//
// The program itself stays on the no-operation layer: objects run their drawing code and no picture is made. A host
// that wants one calls AK_SetSoglContext(), soglAllocBuffers(), lets the objects draw, and fetches the planes by
// soglGetWidthHeightBuf(). The matrix functions of the rasteriser need no buffers: boxes of copied objects are computed
// with them.
//
// The rasteriser is a fixed pipeline: orthographic projection, one light evaluated at each vertex, colours
// interpolated over a triangle, 16-bit depth, one rule of blending, no textures, no display lists, the viewport always
// the whole buffer. A position of -1 to 1 in x, y and z covers the buffer and the range of depths; what lies beyond it
// is dropped pixel by pixel.
//
// Enumerated values are OpenGL's numbers (AK_sogl_Constants.h); a number that a function does not know is ignored.
// Main thread only: the table and the rasteriser's state are process-wide.
#pragma once

#include "AK_sogl_Constants.h"

// The calls, by groups: result, name behind the prefix, parameters, what the no-operation layer returns. The names
// that begin with "u" are the utility functions: agluErrorString, nogluErrorString, sogluErrorString.
// clang-format off

/// Buffers and the matrices. Angles in degrees; matrices are 16 values, column by column. The rasteriser keeps two
/// stacks of 32 matrices of doubles, and every one of these calls changes the top of the one that MatrixMode chose.
/// Pushing a 33rd matrix, popping the last one, and a rotation about an axis shorter than 1.0e-6 end the process with a
/// message and status 1. A projection of no width, height or depth is ignored. GetFloatv and GetIntegerv leave
/// `out` as it is for a name they do not know, and on the no-operation layer always. Viewport and GetIntegerv have no
/// effect in the rasteriser.
#define AGL_MATRIX_CALLS(ROW)                                                                                          \
    ROW(void, ClearColor, (float r, float g, float b, float alpha), void())                                            \
    ROW(void, Clear, (unsigned mask), void())                                                                          \
    ROW(void, Viewport, (int x, int y, int width, int height), void())                                                 \
    ROW(void, MatrixMode, (unsigned mode), void())                                                                     \
    ROW(void, PushMatrix, (), void())                                                                                  \
    ROW(void, PopMatrix, (), void())                                                                                   \
    ROW(void, LoadIdentity, (), void())                                                                                \
    ROW(void, MultMatrixf, (const float* m), void())                                                                   \
    ROW(void, Ortho, (double left, double right, double bottom, double top, double nearZ, double farZ), void())        \
    ROW(void, Translatef, (float x, float y, float z), void())                                                         \
    ROW(void, Rotatef, (float angle, float x, float y, float z), void())                                               \
    ROW(void, Scalef, (float x, float y, float z), void())                                                             \
    ROW(void, GetIntegerv, (unsigned name, int* out), void())                                                          \
    ROW(void, GetFloatv, (unsigned name, float* out), void())

/// State that the primitives are drawn with. Sizes in pixels. Lightfv takes 4 values for the position; the rasteriser
/// has one light, whatever its number, and no pixel store state: PixelStorei has no effect there.
#define AGL_STATE_CALLS(ROW)                                                                                           \
    ROW(void, PixelStorei, (unsigned name, int value), void())                                                         \
    ROW(void, Lightfv, (unsigned light, unsigned name, const float* values), void())                                   \
    ROW(void, Enable, (unsigned capability), void())                                                                   \
    ROW(void, Disable, (unsigned capability), void())                                                                  \
    ROW(void, DepthMask, (unsigned char flag), void())                                                                 \
    ROW(void, PolygonMode, (unsigned face, unsigned mode), void())                                                     \
    ROW(void, PolygonOffset, (float factor, float units), void())                                                      \
    ROW(void, LineWidth, (float width), void())                                                                        \
    ROW(void, PointSize, (float size), void())                                                                         \
    ROW(void, FrontFace, (unsigned mode), void())                                                                      \
    ROW(void, Color3f, (float r, float g, float b), void())                                                            \
    ROW(void, Color4f, (float r, float g, float b, float alpha), void())                                               \
    ROW(void, Normal3f, (float x, float y, float z), void())

/// Primitives: vertices between Begin and End, and bitmaps at the raster position. The rows of a bitmap run from the
/// bottom up, each (width - 1) / 8 + 1 bytes, the highest bit at the left; afterwards the raster position moves by
/// (xMove, yMove).
#define AGL_PRIMITIVE_CALLS(ROW)                                                                                       \
    ROW(void, Begin, (unsigned mode), void())                                                                          \
    ROW(void, End, (), void())                                                                                         \
    ROW(void, Vertex2f, (float x, float y), void())                                                                    \
    ROW(void, Vertex3f, (float x, float y, float z), void())                                                           \
    ROW(void, RasterPos2f, (float x, float y), void())                                                                 \
    ROW(void, RasterPos3f, (float x, float y, float z), void())                                                        \
    ROW(void, Bitmap, (int width, int height, const unsigned char* bits, float xOrigin, float yOrigin, float xMove,    \
                       float yMove), void())

/// Textures and display lists, for hosts that have them: of all these only uErrorString does anything in the
/// rasteriser, and the calls of a list are drawn at once, while it is made. uBuild2DMipmaps returns 0 for
/// success; uErrorString returns a text that the callee owns, or null.
#define AGL_TEXTURE_AND_LIST_CALLS(ROW)                                                                                \
    ROW(void, DeleteTextures, (int count, const unsigned* textures), void())                                           \
    ROW(void, GenTextures, (int count, unsigned* textures), void())                                                    \
    ROW(void, BindTexture, (unsigned target, unsigned texture), void())                                                \
    ROW(void, TexParameteri, (unsigned target, unsigned name, int value), void())                                      \
    ROW(int,  uBuild2DMipmaps, (unsigned target, int components, int width, int height, unsigned format,               \
                                unsigned type, const void* data), 1)                                                   \
    ROW(void, TexGeni, (unsigned coordinate, unsigned name, int value), void())                                        \
    ROW(void, TexGenfv, (unsigned coordinate, unsigned name, const float* values), void())                             \
    ROW(void, TexEnvf, (unsigned target, unsigned name, float value), void())                                          \
    ROW(const char*, uErrorString, (unsigned code), nullptr)                                                           \
    ROW(unsigned, GenLists, (int range), 0)                                                                            \
    ROW(void, DeleteLists, (unsigned list, int range), void())                                                         \
    ROW(void, NewList, (unsigned list, unsigned mode), void())                                                         \
    ROW(void, CallList, (unsigned list), void())                                                                       \
    ROW(void, EndList, (), void())

/// Calls that the rasteriser has no part in: AK_SetSoglContext leaves them as they are. A host that wants pictures
/// binds aglAllocBuffers and aglFreeBuffers to the rasteriser's functions and aglWriteImageFile to a writer of its own.
/// AllocBuffers and WriteImageFile return 0 for success; nothing is allocated or written by the no-operation layer.
#define AGL_HOST_CALLS(ROW)                                                                                            \
    ROW(void, BlendFunc, (unsigned sourceFactor, unsigned targetFactor), void())                                       \
    ROW(void, PushName, (unsigned name), void())                                                                       \
    ROW(void, PopName, (), void())                                                                                     \
    ROW(void, TexImage1D, (unsigned target, int level, int components, int width, int border, unsigned format,         \
                           unsigned type, const void* data), void())                                                   \
    ROW(void, TexCoord1f, (float s), void())                                                                           \
    ROW(int,  AllocBuffers, (int width, int height), 1)                                                                \
    ROW(void, FreeBuffers, (), void())                                                                                 \
    ROW(int,  WriteImageFile, (const char* name), 1)

/// The calls that AK_SetSoglContext() points at the rasteriser.
#define AGL_RASTERISED_CALLS(ROW)                                                                                      \
    AGL_MATRIX_CALLS(ROW) AGL_STATE_CALLS(ROW) AGL_PRIMITIVE_CALLS(ROW) AGL_TEXTURE_AND_LIST_CALLS(ROW)
// clang-format on

#define AGL_DECLARE_POINTER(result, name, parameters, nothing)                                                         \
    extern result(*agl##name) parameters;                                                                              \
    result nogl##name parameters;
#define AGL_DECLARE_RASTERISED(result, name, parameters, nothing) result sogl##name parameters;

AGL_RASTERISED_CALLS(AGL_DECLARE_POINTER)
AGL_HOST_CALLS(AGL_DECLARE_POINTER)
AGL_RASTERISED_CALLS(AGL_DECLARE_RASTERISED)

#undef AGL_DECLARE_POINTER
#undef AGL_DECLARE_RASTERISED

/// Points the table at the rasteriser: every call of AGL_RASTERISED_CALLS; the host's calls stay as they are.
void AK_SetSoglContext();

// ---- The rasteriser beyond the table

/// Makes the buffers, all zero: three planes of colour, one byte a pixel each, and 16-bit depths. Frees the old ones,
/// sets the top of both matrix stacks to the identity and the matrix mode to the modelview.
/// Returns 0, or 1 with no buffers when the size is below 1, counts more than 1e9 pixels, or memory is short. Until
/// buffers are made, drawing only changes state.
int soglAllocBuffers(int width, int height);
void soglFreeBuffers();

/// Hands out the size and the planes, which stay the rasteriser's until the next soglAllocBuffers or soglFreeBuffers.
/// Pixel (x, y) is at x + y * width, row 0 at the bottom. The planes are null without buffers.
void soglGetWidthHeightBuf(int* width, int* height, unsigned char** r, unsigned char** g, unsigned char** b);

/// Multiplies the current matrix by the reflection in the plane through the origin with this normal. The normal is
/// brought to unit length; one shorter than 1.0e-6 is ignored.
void soglMirrorf(float x, float y, float z);

// ---- Drawn through the table, on whatever functions it points at

/// The reflection of soglMirrorf through aglMultMatrixf.
void aglMirrorf(float x, float y, float z);

/// A sphere about the origin, of quads with outward normals: `slices` around the z axis, and `stacks` of equal height
/// (not of equal latitude) along it. With less than 1 slice or stack nothing is drawn.
void aglutSolidSphere(double radius, int slices, int stacks);

/// One character of a font. The bitmap is laid out as aglBitmap takes it; (xOrigin, yOrigin) is the point of it that
/// comes to lie on the raster position, the left end of the base line; then the raster position moves by `advance`.
struct AK_BitmapGlyph {
    float xOrigin, yOrigin;   // pixels from the lower left corner of the bitmap
    int width, height;        // pixels
    float advance;            // pixels
    const unsigned char* bitmap;
};

/// Characters firstCharacter to firstCharacter + numberOfCharacters - 1; a null glyph is a character that is missing.
struct AK_BitmapFont {
    int numberOfCharacters;
    int firstCharacter;
    const AK_BitmapGlyph* const* glyphs;
};

/// The fonts of the program: "TIMES_ROMAN_10", "HELVETICA_12" and "8_BY_13", each with the printable ASCII characters.
/// Null for another name. The fonts live as long as the process.
const AK_BitmapFont* AK_FindBitmapFont(const char* name);

/// The name of font i, counted from 0; null past the last one.
const char* AK_BitmapFontName(int i);

/// Draws one glyph at the raster position and moves it on. The pixel store state is saved before and restored after.
/// A character that the font does not have, or a null font, draws nothing.
void aglutBitmapCharacter(const AK_BitmapFont* font, int character);
void AK_DrawBitmapText(const AK_BitmapFont* font, const char* text);   // its characters one after the other

/// Advance of a character, and the sum over a text, in pixels, each truncated. 0 for a character that the font does
/// not have.
int aglutBitmapWidth(const AK_BitmapFont* font, int character);
int aglutBitmapLength(const AK_BitmapFont* font, const char* text);

// ---- Image files, independent of the table

/// Reads a binary PPM file. `depth` becomes 8 (3 bytes a pixel) for a maximum value below 256, otherwise 16 (6 bytes,
/// in the file's order: high byte first). The first row of the file is the last one in memory.
/// Returns 0 and *data, which the caller releases with delete[]; otherwise *data is null and the rest untouched:
///   1 the file cannot be opened   2 it is not a PPM of this kind   3 bad size, or more pixels than the file holds
///   4 bad maximum value, or no memory
/// Nothing is allocated before the rest of the file is known to hold all pixels.
int aglReadPpmFile(const char* name, int* width, int* height, int* depth, unsigned char** data);

/// Writes a binary PPM file, data laid out as aglReadPpmFile returns it; the maximum value is 255 for a depth below 9,
/// otherwise 65535.
/// Returns 0, 1 if the file cannot be opened or not be written to its end, 3 for a depth above 16 (no file is made).
int aglWritePpmFile(const char* name, int width, int height, int depth, const unsigned char* data);
