// Mosaics: tiles that lie on one raster in the world become one picture with a world file of its own.
//
// The first tile sets the raster: the vectors of a pixel and where pixel (0, 0) lies. Each tile gets the column and row
// of its first pixel on it, which may be negative. The total image covers the tiles so far; columns and rows count from
// its upper left corner, while in memory the rows of an image run from the bottom up.

#include "AK_VisibleObject.h"

#include "AK_VisibleObject_WorldFile.h"
#include "AK_sogl.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <memory>
#include <new>

static constexpr double vectorTolerance = 1e-06;   // metres, between the pixel vectors of two tiles
static constexpr double rasterTolerance = 0.001;   // metres, of a tile's position to the raster
static constexpr long maxPixels = 1000000000;      // of a mosaic; world files that send tiles further apart are wrong

namespace {

struct Tile {
    AK_String name;
    long column = 0, row = 0;   // of its first pixel, from that of the first tile; the columns go right, the rows down
};

struct Image {
    std::unique_ptr<unsigned char[]> data;
    long column = 0, row = 0;   // of its upper left pixel, as for a tile
    int width = 0, height = 0;
    int depth = 0;   // bits a channel

    long RowBytes() const { return long(width) * (depth > 8 ? 6 : 3); }
    long Right() const { return column + width; }
    long Bottom() const { return row + height; }
};

AK_String VectorText(const AK_Vec2& v) { return AK_String(&v.x, 2); }

AK_String SizeText(const Image& image) { return AK_String(image.width, "%d") + " x " + AK_String(image.height, "%d"); }

// ----------------------------------------------------------------------------------------------------------------
// Where the tiles lie
// ----------------------------------------------------------------------------------------------------------------

/// The number of steps of that length in a distance; false if it is no whole number.
bool WholeSteps(double distance, double length, long& steps)
{
    const double remainder = std::fabs(std::fmod(distance, length));
    const double off = std::min(remainder, length - remainder);   // a hair too short is a whole step too
    const double n = std::round(distance / length);
    if (!(off <= rasterTolerance) || !(std::fabs(n) < double(maxPixels))) return false;
    steps = long(n);
    return true;
}

/// Puts a tile on the raster of the first one. Returns the error, or "".
AK_String PlaceTile(Tile& tile, const AK_WorldFile& first, const AK_WorldFile& world)
{
    const AK_String inconsistent = AK_String("inconsistent geo-referencing in '") + tile.name;
    if (Length(world.pixelX - first.pixelX) > vectorTolerance)
        return inconsistent + "', pixel-x-vector " + VectorText(world.pixelX) + " does not match " +
               VectorText(first.pixelX);
    if (Length(world.pixelY - first.pixelY) > vectorTolerance)
        return inconsistent + "', pixel-y-vector " + VectorText(world.pixelY) + " does not match " +
               VectorText(first.pixelY);

    const double lengthX = Length(first.pixelX);
    const double lengthY = Length(first.pixelY);
    const AK_Vec2 offset = world.first - first.first;
    if (WholeSteps(Dot(offset, first.pixelX * (1 / lengthX)), lengthX, tile.column) &&
        WholeSteps(Dot(offset, first.pixelY * (1 / lengthY)), lengthY, tile.row))
        return "";
    return AK_String("inconsistent pixel raster in '") + tile.name + "', position " + VectorText(world.first) +
           " not consistent with " + VectorText(first.first);
}

/// Reads the world files of all tiles. Returns the error, or "".
AK_String PlaceTiles(const AK_List<AK_String>& names, AK_List<Tile>& tiles, AK_WorldFile& first)
{
    for (const AK_String& name : names) {
        const AK_String worldFile = AK_WorldFile::Name(name);
        AK_WorldFile world;
        if (!world.Read(worldFile)) return AK_String("cannot open world file '") + worldFile + "'";
        Tile tile{name};
        if (tiles.IsEmpty()) {
            first = world;
            if (Length(first.pixelX) == 0 || Length(first.pixelY) == 0)
                return AK_String("pixels without size in world file '") + worldFile + "'";
        } else {
            const AK_String error = PlaceTile(tile, first, world);
            if (!error.IsEmpty()) return error;
        }
        tiles.Append(tile);
    }
    return "";
}

// ----------------------------------------------------------------------------------------------------------------
// Putting the images together
// ----------------------------------------------------------------------------------------------------------------

AK_String ReadTile(const Tile& tile, Image& image)
{
    AK_MSG("loading texture file " << tile.name);
    unsigned char* data;
    if (aglReadPpmFile(tile.name.c_str(), &image.width, &image.height, &image.depth, &data) != 0)
        return AK_String("loading texture from file ") + tile.name + " failed";
    image.data.reset(data);
    image.column = tile.column;
    image.row = tile.row;
    AK_MSG("loaded texture from file " << tile.name << ", size is " << SizeText(image));
    return "";
}

/// Copies the rows of an image into one that covers it.
void Insert(const Image& source, Image& target)
{
    const long left = (source.column - target.column) * (source.depth > 8 ? 6 : 3);   // bytes
    const long bottom = target.Bottom() - source.Bottom();                            // rows
    for (long row = 0; row < source.height; ++row)
        std::memcpy(target.data.get() + (bottom + row) * target.RowBytes() + left,
                    source.data.get() + row * source.RowBytes(), size_t(source.RowBytes()));
}

/// Gives the total image the size that covers the tile too, what it held at its place, the rest black.
AK_String Enlarge(Image& total, const Image& tile)
{
    Image larger;
    larger.column = std::min(total.column, tile.column);
    larger.row = std::min(total.row, tile.row);
    const long width = std::max(total.Right(), tile.Right()) - larger.column;
    const long height = std::max(total.Bottom(), tile.Bottom()) - larger.row;
    if (width > maxPixels / height)
        return AK_String("a mosaic of more than ") + AK_String(int(maxPixels), "%d") + " pixels is too large";
    larger.width = int(width);
    larger.height = int(height);
    larger.depth = total.depth;
    AK_MSG("re-setting total image size to " << SizeText(larger));

    auto* buffer_new = new (std::nothrow) unsigned char[size_t(larger.RowBytes() * height)]();
    AK_ASSERT(buffer_new);
    larger.data.reset(buffer_new);
    Insert(total, larger);
    total = std::move(larger);
    return "";
}

/// Reads all tiles into one image. Returns the error, or "".
AK_String Assemble(const AK_List<Tile>& tiles, Image& total)
{
    for (const Tile& tile : tiles) {
        Image image;
        AK_String error = ReadTile(tile, image);
        if (error.IsEmpty() && total.data && image.depth != total.depth) error = "color depths inconsistent";
        if (!error.IsEmpty()) return error;
        if (!total.data) {
            AK_MSG("setting total image size to " << SizeText(image));
            AK_MSG("inserting image " << tile.name);
            total = std::move(image);
            continue;
        }
        const bool isInside = image.column >= total.column && image.Right() <= total.Right() &&
                              image.row >= total.row && image.Bottom() <= total.Bottom();
        if (!isInside) error = Enlarge(total, image);
        if (!error.IsEmpty()) return error;
        AK_MSG("inserting image " << tile.name);
        Insert(image, total);
    }
    return "";
}

}   // namespace

// ----------------------------------------------------------------------------------------------------------------
// Operations
// ----------------------------------------------------------------------------------------------------------------

void AK_VisibleObject::TextureTiles(const AK_String& list)
{
    _textureTiles.Clear();
    list.Split(ak_sep, _textureTiles);
}

void AK_VisibleObject::TextureTileAdd(const AK_String& name) { _textureTiles.Append(name); }

void AK_VisibleObject::TextureTilesLoad(const AK_String& output)
{
    if (_textureTiles.IsEmpty()) {
        _execStatus = "there are no texture tiles";
        return;
    }
    AK_List<Tile> tiles(_textureTiles.Size());
    AK_WorldFile world;
    Image total;
    _execStatus = PlaceTiles(_textureTiles, tiles, world);
    if (_execStatus.IsEmpty()) _execStatus = Assemble(tiles, total);
    if (!_execStatus.IsEmpty()) return;

    AK_MSG("writing image file '" << output << "'");
    if (aglWritePpmFile(output.c_str(), total.width, total.height, total.depth, total.data.get()) != 0) {
        _execStatus = AK_String("could not write image file '") + output + "'";
        return;
    }
    world.first = world.first + world.pixelX * double(total.column) + world.pixelY * double(total.row);
    const AK_String worldFile = AK_WorldFile::Name(output);
    if (world.Write(worldFile)) {
        AK_MSG("geo-referencing saved to world-file '" << worldFile << "'");
    } else {
        _execStatus = AK_String("cannot open world file '") + worldFile + "'";
        AK_MSG("ERROR: cannot open world file '" << worldFile << "'");
    }
}
