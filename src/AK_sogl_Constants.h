// The numbers that the drawing calls take and answer to, by their OpenGL names.
//
// The table of drawing calls (AK_sogl.h) keeps OpenGL's numbering, so that a host can bind it to that library through
// thin wrappers. This header is the only place where the numbers stand; it is never used together with OpenGL's own.
#pragma once

// Primitives of aglBegin. The rasteriser draws POINTS, LINES, LINE_STRIP, TRIANGLES, QUADS and POLYGON.
inline constexpr unsigned GL_POINTS = 0;
inline constexpr unsigned GL_LINES = 1;
inline constexpr unsigned GL_LINE_LOOP = 2;
inline constexpr unsigned GL_LINE_STRIP = 3;
inline constexpr unsigned GL_TRIANGLES = 4;
inline constexpr unsigned GL_TRIANGLE_STRIP = 5;
inline constexpr unsigned GL_TRIANGLE_FAN = 6;
inline constexpr unsigned GL_QUADS = 7;
inline constexpr unsigned GL_QUAD_STRIP = 8;
inline constexpr unsigned GL_POLYGON = 9;

// Buffers of aglClear.
inline constexpr unsigned GL_DEPTH_BUFFER_BIT = 256;
inline constexpr unsigned GL_COLOR_BUFFER_BIT = 16384;

// Factors of aglBlendFunc.
inline constexpr unsigned GL_SRC_ALPHA = 770;
inline constexpr unsigned GL_ONE_MINUS_SRC_ALPHA = 771;

// Faces of aglPolygonMode, their modes, and the winding of aglFrontFace.
inline constexpr unsigned GL_FRONT = 1028;
inline constexpr unsigned GL_BACK = 1029;
inline constexpr unsigned GL_FRONT_AND_BACK = 1032;
inline constexpr unsigned GL_POINT = 6912;
inline constexpr unsigned GL_LINE = 6913;
inline constexpr unsigned GL_FILL = 6914;
inline constexpr unsigned GL_CW = 2304;
inline constexpr unsigned GL_CCW = 2305;

// Switches of aglEnable and aglDisable.
inline constexpr unsigned GL_POINT_SMOOTH = 2832;
inline constexpr unsigned GL_LINE_SMOOTH = 2848;
inline constexpr unsigned GL_LIGHTING = 2896;
inline constexpr unsigned GL_DEPTH_TEST = 2929;
inline constexpr unsigned GL_BLEND = 3042;
inline constexpr unsigned GL_TEXTURE_GEN_S = 3168;
inline constexpr unsigned GL_TEXTURE_GEN_T = 3169;
inline constexpr unsigned GL_TEXTURE_1D = 3552;
inline constexpr unsigned GL_TEXTURE_2D = 3553;
inline constexpr unsigned GL_POLYGON_OFFSET_POINT = 10753;
inline constexpr unsigned GL_POLYGON_OFFSET_LINE = 10754;
inline constexpr unsigned GL_POLYGON_OFFSET_FILL = 32823;

// Matrices: stacks of aglMatrixMode, and values of aglGetIntegerv and aglGetFloatv.
inline constexpr unsigned GL_MODELVIEW = 5888;
inline constexpr unsigned GL_PROJECTION = 5889;
inline constexpr unsigned GL_VIEWPORT = 2978;
inline constexpr unsigned GL_MODELVIEW_MATRIX = 2982;
inline constexpr unsigned GL_PROJECTION_MATRIX = 2983;

// Light of aglLightfv.
inline constexpr unsigned GL_POSITION = 4611;
inline constexpr unsigned GL_LIGHT0 = 16384;

// Pixel store state of aglPixelStorei.
inline constexpr unsigned GL_UNPACK_SWAP_BYTES = 3312;
inline constexpr unsigned GL_UNPACK_LSB_FIRST = 3313;
inline constexpr unsigned GL_UNPACK_ROW_LENGTH = 3314;
inline constexpr unsigned GL_UNPACK_SKIP_ROWS = 3315;
inline constexpr unsigned GL_UNPACK_SKIP_PIXELS = 3316;
inline constexpr unsigned GL_UNPACK_ALIGNMENT = 3317;

// Textures: pixel types and layouts, filters and wraps, coordinates made from positions, environment.
inline constexpr unsigned GL_UNSIGNED_BYTE = 5121;
inline constexpr unsigned GL_RGB = 6407;
inline constexpr unsigned GL_RGBA = 6408;
inline constexpr unsigned GL_NEAREST = 9728;
inline constexpr unsigned GL_LINEAR = 9729;
inline constexpr unsigned GL_LINEAR_MIPMAP_NEAREST = 9985;
inline constexpr unsigned GL_TEXTURE_MAG_FILTER = 10240;
inline constexpr unsigned GL_TEXTURE_MIN_FILTER = 10241;
inline constexpr unsigned GL_TEXTURE_WRAP_S = 10242;
inline constexpr unsigned GL_TEXTURE_WRAP_T = 10243;
inline constexpr unsigned GL_CLAMP = 10496;
inline constexpr unsigned GL_REPEAT = 10497;
inline constexpr unsigned GL_S = 8192;
inline constexpr unsigned GL_T = 8193;
inline constexpr unsigned GL_TEXTURE_GEN_MODE = 9472;
inline constexpr unsigned GL_OBJECT_PLANE = 9473;
inline constexpr unsigned GL_OBJECT_LINEAR = 9217;
inline constexpr unsigned GL_TEXTURE_ENV = 8960;
inline constexpr unsigned GL_TEXTURE_ENV_MODE = 8704;
inline constexpr unsigned GL_MODULATE = 8448;
inline constexpr unsigned GL_DECAL = 8449;

// Display lists of aglNewList.
inline constexpr unsigned GL_COMPILE = 4864;
inline constexpr unsigned GL_COMPILE_AND_EXECUTE = 4865;
