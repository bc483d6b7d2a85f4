#!/usr/bin/env python3
"""Compares a Delaunay triangulation with that of scipy.spatial: 0 if the triangles are the same.

AK_Triangulation2_scipy.py POINTS TRIANGLES     files of doubles, x y a point, and of 32-bit ints, 3 a triangle
"""
import sys

import numpy
from scipy.spatial import Delaunay

points = numpy.fromfile(sys.argv[1]).reshape(-1, 2)
ours = numpy.fromfile(sys.argv[2], dtype=numpy.int32).reshape(-1, 3)


def as_set(triangles):
    return set(map(tuple, numpy.sort(triangles, axis=1).tolist()))


ours, theirs = as_set(ours), as_set(Delaunay(points).simplices)
print(f"{len(ours)} triangles, {len(theirs)} of scipy, {len(ours ^ theirs)} differ")
sys.exit(ours != theirs)
