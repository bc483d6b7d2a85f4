// A small canvas for the tests of the drawing layer: the rasteriser in its initial state, and its planes as pictures.
#pragma once

#include "AK_sogl.h"
#include "AK_sogl_Internal.h"

#include <algorithm>
#include <cstddef>
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

    /// The position that maps to a pixel; exact where the sizes are powers of two.
    float X(double column) const { return float(2 * column / _width - 1); }
    float Y(double row) const { return float(2 * row / _height - 1); }

    void Vertex(double column, double row, float z = 0) const { soglVertex3f(X(column), Y(row), z); }

    void Triangle(const std::vector<std::vector<double>>& corners, float z = 0) const
    {
        soglBegin(GL_TRIANGLES);
        for (const auto& corner : corners) Vertex(corner[0], corner[1], z);
        soglEnd();
    }

    std::size_t Index(int x, int y) const { return std::size_t(x) + std::size_t(y) * std::size_t(_width); }
    int R(int x, int y) const { return soglBufR[Index(x, y)]; }
    int G(int x, int y) const { return soglBufG[Index(x, y)]; }
    int Z(int x, int y) const { return soglBufZ[Index(x, y)]; }

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

    long Drawn() const
    {
        const std::string picture = Picture();
        return std::count(picture.begin(), picture.end(), '#');
    }

private:
    int _width, _height;
};
