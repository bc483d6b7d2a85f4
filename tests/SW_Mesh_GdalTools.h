// GDAL's command-line tools as readers that are not ours: what they find in rasters and in files of lines.

#pragma once

#include "AK_Basic_Vec.h"

#include <array>
#include <cstdio>
#include <cstdlib>
#include <sstream>
#include <string>
#include <vector>

/// False where the tools (Debian: gdal-bin) are missing: tests then leave out what needs them.
inline bool HaveGdal() { return std::system("gdalinfo --version >/dev/null 2>&1") == 0; }

#define SKIP_WITHOUT_GDAL()                                                                                            \
    if (!HaveGdal()) GTEST_SKIP() << "GDAL's tools are not installed"

/// What a command writes, line by line.
inline std::vector<std::string> OutputOf(const std::string& command)
{
    std::FILE* pipe = popen((command + " 2>&1").c_str(), "r");
    std::string all;
    std::array<char, 65536> buffer;
    for (size_t n; (n = std::fread(buffer.data(), 1, buffer.size(), pipe)) > 0;) all.append(buffer.data(), n);
    pclose(pipe);
    std::vector<std::string> lines;
    std::istringstream in(all);
    for (std::string line; std::getline(in, line);) lines.push_back(line);
    return lines;
}

/// Centre and value of each cell of a raster, from the top row down.
inline std::vector<AK_Vec> RasterByGdal(const AK_String& path)
{
    const std::string command = "gdalinfo '" + std::string(path.c_str()) +
                                "' >/dev/null && gdal_translate -q -of XYZ '" + path.c_str() + "' /vsistdout/";
    std::vector<AK_Vec> cells;
    for (const std::string& line : OutputOf(command)) {
        AK_Vec cell;
        if (std::sscanf(line.c_str(), "%lf %lf %lf", &cell.x, &cell.y, &cell.z) == 3) cells.push_back(cell);
    }
    return cells;
}

struct GdalLine {
    std::string layer;   // in a DXF file
    std::vector<AK_Vec> points;
};

/// The lines of a file of shapes: "LINESTRING Z (1 2 3,4 5 6)", behind "Layer (String) = wall".
inline std::vector<GdalLine> LinesByGdal(const AK_String& path)
{
    static const std::string layerIs = "Layer (String) = ";
    std::vector<GdalLine> lines;
    std::string layer;
    for (const std::string& text : OutputOf("ogrinfo -q -al '" + std::string(path.c_str()) + "'")) {
        if (const size_t at = text.find(layerIs); at != std::string::npos) layer = text.substr(at + layerIs.size());
        if (text.find("LINESTRING") == std::string::npos) continue;
        lines.push_back({layer, {}});
        std::istringstream points(text.substr(text.find('(') + 1));
        for (std::string point; std::getline(points, point, ',');) {
            AK_Vec p;
            std::sscanf(point.c_str(), "%lf %lf %lf", &p.x, &p.y, &p.z);
            lines.back().points.push_back(p);
        }
    }
    return lines;
}
