// The index of AK_Triangulation2: a number near every place, in a grid that refines itself where many come.
//
// Numbers are never corrected: a flip may move a triangle away from its square, but it stays a start for a walk.

#include "AK_Triangulation2.h"

AK_IndexBuckets2::~AK_IndexBuckets2()
{
    for (int i = 0; i < n * n; ++i) delete _children[i];
    delete[] _children;
    delete[] _counts;
    delete[] _entries;
}

void AK_IndexBuckets2::Init(const AK_Vec2& origin, double size, int squares, int initialEntry, int maxEntries)
{
    n = squares;
    _origin = origin;
    _size = size;
    _invSize = 1.0001 / size;
    _maxEntries = maxEntries;
    _entries = new int[n * n];
    _counts = new int[n * n];
    _children = new AK_IndexBuckets2*[n * n]();
    std::fill(_entries, _entries + n * n, initialEntry);
    std::fill(_counts, _counts + n * n, 1);
}

// A position within 0 to n, in whole squares; a box without extent has none, and everything is in the first one.
int AK_IndexBuckets2::Row(double position, int n) { return !(position > 0) ? 0 : position < n ? int(position) : n - 1; }

int AK_IndexBuckets2::Square(const AK_Vec2& p) const
{
    return Row((p.y - _origin.y) * _invSize, n) * n + Row((p.x - _origin.x) * _invSize, n);
}

int AK_IndexBuckets2::Entry(const AK_Vec2& p) const
{
    const AK_IndexBuckets2* level = this;
    int square = level->Square(p);
    while (level->_children[square]) {
        level = level->_children[square];
        square = level->Square(p);
    }
    return level->_entries[square];
}

void AK_IndexBuckets2::AddEntry(const AK_Vec2& p, int entry)
{
    AK_IndexBuckets2* level = this;
    int square = level->Square(p);
    while (level->_children[square]) {
        level = level->_children[square];
        square = level->Square(p);
    }
    if (level->_counts[square] >= level->_maxEntries) return level->Refine(square, entry);
    level->_entries[square] = entry;
    ++level->_counts[square];
}

void AK_IndexBuckets2::Refine(int square, int entry)
{
    const AK_Vec2 corner = {_origin.x + square % n * _size, _origin.y + square / n * _size};
    _children[square] = new AK_IndexBuckets2;
    _children[square]->Init(corner, _size / n, n, entry, _maxEntries);
}
