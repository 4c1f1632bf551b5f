#!/usr/bin/python3
"""Makes surfaces of a structure file, or contours of a map, with PyMOL: surface-peer.py FILE.

Writes the number of atoms without waters and hydrogens to standard output, or 1 for a map, and then
answers each line of standard input with a number:

surface excluded|accessible|waals QUALITY
    Makes a surface in one of the program's qualities. The answer is the processor time that all
    threads of the program took, in nanoseconds.
contour LEVEL
    Makes an isosurface of the map. The answer is likewise.
triangles
    How many triangles what was made last has, those without an area included.
"""
import ctypes
import os
import re
import sys
import tempfile
import time

import pymol2

# What the program itself writes goes to a file, of which the newest lines are read.
answers = os.fdopen(os.dup(1), "w")
log = tempfile.TemporaryFile()
os.dup2(log.fileno(), 1)
library = ctypes.CDLL(None)
# Without the thread of its own that the whole program has: that one never rests.
session = pymol2.PyMOL()
session.start()
cmd = session.cmd
# The radius of the probe, and whether the surface is where its centre can go. The program has no van
# der Waals surface; that is where a probe's centre can go that is next to nothing.
KINDS = {"excluded": (1.4, 0), "accessible": (1.4, 1), "waals": (0.01, 1)}


def collect():
    """Surfaces are made when they are first needed; this draws nothing, but needs them."""
    start = time.process_time_ns()
    cmd.ray(16, 16, renderer=2)
    return time.process_time_ns() - start


def time_to_make():
    """In nanoseconds, without collecting what is there."""
    both = collect()
    return max(both - collect(), 1)


def make_surface(kind, quality):
    probe, is_centre = KINDS[kind]
    cmd.hide("everything")
    cmd.set("solvent_radius", probe)
    cmd.set("surface_solvent", is_centre)
    cmd.set("surface_quality", int(quality))
    cmd.rebuild()
    cmd.show("surface")
    return time_to_make()


def make_contour(level):
    cmd.delete("contour")
    cmd.isosurface("contour", "loaded", float(level))
    return time_to_make()


def triangles():
    collect()
    library.fflush(None)
    log.seek(0)
    return int(re.findall(rb"obtained (\d+) graphics primitives", log.read())[-1])


def load(path):
    """Returns how much there is."""
    cmd.set("max_threads", 1)
    cmd.set("connect_mode", 1)  # as the file lists them: bonds do not count here
    cmd.set("normalize_ccp4_maps", 0)
    cmd.load(path, "loaded")
    if path.endswith(".ccp4"):
        cmd.hide("everything")
        return 1
    cmd.remove("not present or solvent or hydro or not alt ''+A")
    return cmd.count_atoms("all")


WORKS = {"surface": make_surface, "contour": make_contour, "triangles": triangles}
print(load(sys.argv[1]), file=answers, flush=True)
for line in sys.stdin:
    work, *words = line.split()
    print(WORKS[work](*words), file=answers, flush=True)
