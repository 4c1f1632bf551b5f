#!/usr/bin/python3
"""Draws the atoms of a structure file as spheres with PyMOL: picture-peer.py FILE.

Writes the number of atoms to standard output, then draws a picture for each line of standard input,
which is its size as "1280 800", and answers with its number of bytes. Without a display the program
has its ray tracer only: on one thread, without shadows, each atom a sphere of 1.7 A.
"""
import os
import sys

import pymol
from pymol import cmd

# What the program itself writes goes to standard error.
answers = os.fdopen(os.dup(1), "w")
os.dup2(2, 1)
pymol.finish_launching(["pymol", "-cqk"])
cmd.set("connect_mode", 1)  # as the file lists them: bonds are not drawn
cmd.load(sys.argv[1], "loaded")
cmd.remove("not present")  # made for residues that the file has no coordinates of
cmd.alter("all", "vdw = 1.7")
cmd.hide("everything")
cmd.show("spheres")
cmd.reset()
cmd.zoom("all", 2, complete=1)
for setting, value in (("orthoscopic", 1), ("antialias", 0), ("ray_shadows", 0),
                       ("ray_trace_mode", 0), ("max_threads", 1)):
    cmd.set(setting, value)
print(cmd.count_atoms("all"), file=answers, flush=True)
for line in sys.stdin:
    width, height = map(int, line.split())
    cmd.ray(width, height)
    print(4 * width * height, file=answers, flush=True)
