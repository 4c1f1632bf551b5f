#!/usr/bin/python3
"""Selects atoms of a structure file with PyMOL: select-peer.py FILE.

Reads a selection expression a line from standard input, selects by it, and answers each with a line
that holds the number of atoms selected. The first line of all is the number of atoms in the file.
"""
import os
import sys

import pymol2

# What the program itself writes goes to standard error.
answers = os.fdopen(os.dup(1), "w")
os.dup2(2, 1)
# Without the thread of its own that the whole program has: that one never rests.
session = pymol2.PyMOL()
session.start()
cmd = session.cmd
cmd.set("connect_mode", 1)  # as the file lists them: bonds do not count here
cmd.load(sys.argv[1], "loaded")
cmd.remove("not present")  # made for residues that the file has no coordinates of
print(cmd.count_atoms("all"), file=answers, flush=True)
for line in sys.stdin:
    print(cmd.select("chosen", line.strip()), file=answers, flush=True)
