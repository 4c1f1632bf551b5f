#!/usr/bin/python3
"""Draws a structure file with PyMOL, beside the view: picture-peer.py FILE.

Writes the number of atoms to standard output, and then answers each line of standard input with a
number, 0 if it could not be done:

show points|spheres|sticks|ribbons
    Shows the atoms so, and draws the first picture, for which everything is made.
camera HEIGHT X Y Z
    Looks from the front, with that many A from the lower to the upper edge of the picture, and that
    point in the middle.
draw, redraw, ray
    Turns the camera a little and draws a picture of 1280 x 800 pixels with one sample each, into
    memory with OpenGL, into the window with OpenGL, or with the ray tracer, without shadows. The
    answer is the processor time that all threads of the program took, in nanoseconds.
save PATH
    Writes the picture of the window to a file.

The window is on a display of its own, which Xvfb keeps in memory, and OpenGL is Mesa's on the
processor.
"""
import ctypes
import math
import os
import subprocess
import sys
import threading
import time

SIZE = (1280, 800)

# What the programs themselves write goes to standard error.
answers = os.fdopen(os.dup(1), "w")
os.dup2(2, 1)


def start_display():
    """Starts Xvfb on a display that is free, and returns its process."""
    reading, writing = os.pipe()
    server = subprocess.Popen(
        ["Xvfb", "-displayfd", str(writing), "-screen", "0", "1400x1000x24", "-nolisten", "tcp"],
        pass_fds=[writing], stderr=subprocess.DEVNULL)
    os.close(writing)
    with os.fdopen(reading) as number:
        os.environ["DISPLAY"] = ":" + number.readline().strip()
    return server


def answer(number):
    print(number, file=answers, flush=True)


def show(cmd, what):
    cmd.hide("everything")
    # Points are spheres that are drawn as the points of OpenGL.
    cmd.set("sphere_mode", 1 if what == "points" else -1)
    if what in ("points", "spheres"):
        cmd.show("spheres")
    elif what == "sticks":
        cmd.show("sticks")
        cmd.show("nb_spheres")  # atoms without a bond
    else:
        cmd.show("cartoon", "polymer")
        cmd.show("sticks", "not polymer and not solvent")
        cmd.show("nb_spheres", "not polymer and not solvent")


def look(cmd, height, x, y, z):
    distance = height / 2 / math.tan(math.radians(cmd.get_setting_float("field_of_view") / 2))
    identity = [1, 0, 0, 0, 1, 0, 0, 0, 1]
    # The clipping planes, all around everything.
    planes = [max(distance - 2 * height, 0.1), distance + 2 * height]
    cmd.set_view(identity + [0, 0, -distance, x, y, z] + planes + [1])


def nanoseconds(cmd, finish, draw):
    cmd.turn("y", 3)

    def timed():
        finish()
        start = time.process_time_ns()
        draw()
        finish()
        return time.process_time_ns() - start

    # On the thread that has the OpenGL context.
    return cmd._call_with_opengl_context(timed)


def call_on_window_thread(caller, function):
    """In place of PyMOL's own, which waits for ever if the call is done before it begins to wait."""
    if caller.thread() is caller.thread().currentThread():
        return function()
    done = threading.Event()
    outcome = {}

    def run():
        try:
            outcome["value"] = function()
        except Exception as error:
            outcome["error"] = error
        done.set()

    caller.mainthreadrequested.emit(run)
    done.wait()
    caller.results.pop(run, None)
    if "error" in outcome:
        raise outcome["error"]
    return outcome["value"]


def wait_for_window(cmd, gl):
    """Before the window is on the screen, nothing is drawn."""
    gl.glGetString.restype = ctypes.c_char_p
    vendor = 0x1F00
    for _ in range(600):
        if (tuple(cmd.get_viewport()) == SIZE
                and cmd._call_with_opengl_context(lambda: gl.glGetString(vendor))):
            return
        time.sleep(0.05)
    raise RuntimeError("the window does not appear")


def serve(cmd, finish):
    draws = {"draw": lambda: cmd.draw(*SIZE, 0), "redraw": cmd.refresh, "ray": lambda: cmd.ray(*SIZE)}
    for line in sys.stdin:
        command, *words = line.split()
        if command == "show":
            show(cmd, words[0])
            nanoseconds(cmd, finish, draws["redraw"])
            answer(1)
        elif command == "camera":
            look(cmd, *map(float, words))
            answer(1)
        elif command == "save":
            cmd.png(words[0], ray=0)
            answer(1)
        else:
            answer(nanoseconds(cmd, finish, draws[command]))


def main():
    server = start_display()
    try:
        os.environ.update(LIBGL_ALWAYS_SOFTWARE="1", QT_QPA_PLATFORM="xcb")
        import pymol
        from pymol import cmd
        from pymol.Qt import utils
        utils.MainThreadCaller.__call__ = call_on_window_thread
        pymol.finish_launching(["pymol", "-qxki", "-W", str(SIZE[0]), "-H", str(SIZE[1])])
        gl = ctypes.CDLL("libGL.so.1")
        cmd.viewport(*SIZE)
        for setting, value in (("orthoscopic", 1), ("antialias", 0), ("ray_shadows", 0),
                               ("ray_trace_mode", 0), ("max_threads", 1), ("valence", 0),
                               ("stick_radius", 0.22), ("sphere_point_size", 3)):
            cmd.set(setting, value)
        cmd.load(sys.argv[1], "loaded")
        cmd.remove("not present")  # made for residues that the file has no coordinates of
        wait_for_window(cmd, gl)
        answer(cmd.count_atoms("all"))
        serve(cmd, gl.glFinish)
    finally:
        server.terminate()
        server.wait()
        answers.flush()
        os._exit(0)  # its window's thread does not end by itself


main()
