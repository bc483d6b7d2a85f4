// A small canvas for the tests of the drawing layer: the rasteriser in its initial state, corners and pictures as text.
#pragma once

#include "AK_sogl.h"
#include "AK_sogl_Internal.h"

#include <cstddef>
#include <sstream>
#include <string>
#include <vector>

class Canvas
{
public:
    Canvas(int width, int height) : _width(width), _height(height)
    {
        soglAllocBuffers(width, height);
        for (const unsigned stack : {GL_PROJECTION, GL_MODELVIEW}) {
            soglMatrixMode(stack);
            while (soglMatIndex[soglMatMode] > 0) soglPopMatrix();
            soglLoadIdentity();
        }
        for (const unsigned off :
             {GL_BLEND, GL_LIGHTING, GL_POLYGON_OFFSET_POINT, GL_POLYGON_OFFSET_LINE, GL_POLYGON_OFFSET_FILL})
            soglDisable(off);
        soglEnable(GL_DEPTH_TEST);
        soglDepthMask(1);
        soglPolygonMode(GL_FRONT_AND_BACK, GL_FILL);
        soglPolygonOffset(0, 0);
        soglFrontFace(GL_CCW);
        soglPointSize(1);
        soglLineWidth(1);
        soglNormal3f(0, 0, 1);
        const float light[4] = {0, 0, 1, 0};
        soglLightfv(GL_LIGHT0, GL_POSITION, light);
        soglColor3f(1, 1, 1);
        soglClearColor(0, 0, 0, 0);
        soglClear(0);
    }

    ~Canvas() { soglFreeBuffers(); }

    /// The position that maps to a column or row; exact where the sizes are powers of two.
    float X(double column) const { return float(2 * column / _width - 1); }
    float Y(double row) const { return float(2 * row / _height - 1); }

    void Vertex(double column, double row, float z = 0) const { soglVertex3f(X(column), Y(row), z); }

    /// One primitive; corners as "column,row column,row".
    void Draw(unsigned primitive, const std::string& corners, float z = 0) const
    {
        std::istringstream in(corners);
        double column, row;
        char comma;
        soglBegin(primitive);
        while (in >> column >> comma >> row) Vertex(column, row, z);
        soglEnd();
    }

    std::size_t Index(int x, int y) const { return std::size_t(x) + std::size_t(y) * std::size_t(_width); }
    int R(int x, int y) const { return soglBufR[Index(x, y)]; }
    int G(int x, int y) const { return soglBufG[Index(x, y)]; }
    int Z(int x, int y) const { return soglBufZ[Index(x, y)]; }

    /// Where red is not 0: from the top down each row that has pixels with their columns, as "4:45 3:234"; for
    /// canvases of 8 columns.
    std::string Pixels() const
    {
        std::string pixels;
        for (int y = _height - 1; y >= 0; --y) {
            std::string columns;
            for (int x = 0; x < _width; ++x)
                if (R(x, y)) columns += std::to_string(x);
            if (!columns.empty()) pixels += (pixels.empty() ? "" : " ") + std::to_string(y) + ":" + columns;
        }
        return pixels;
    }

    /// Rows from the top down: "#" where red is not 0.
    std::string Picture() const
    {
        std::string picture = "\n";
        for (int y = _height - 1; y >= 0; --y) {
            for (int x = 0; x < _width; ++x) picture += R(x, y) ? '#' : '.';
            picture += '\n';
        }
        return picture;
    }

private:
    int _width, _height;
};
