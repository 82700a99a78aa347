#!/usr/bin/env python3
"""A user's sessions with the parameter dialog, by a real pointer and keyboard: session_check.py [EMULATOR] RUNFILTER.

Needs Xvfb, openbox and xdotool. The tool's output, its settings and the picture that it writes tell what the dialog made
of the input; the screen tells what the preview shows. The picture's red and green give the place of each pixel, and a
step in its blue makes the stair that is smoothed.
"""

import io
import os
import pathlib
import subprocess
import sys
import tempfile
import time
import unittest

import numpy
from PIL import Image

sys.dont_write_bytecode = True  # nothing is to appear among the sources
from virtual_display import VirtualDisplay

COMMAND = []  # the tool, with its emulator before it
PATIENCE = 20  # seconds
WIDTH, HEIGHT = 700, 600
# Positions in the dialog's template, in dialog units: left, top, width, height.
UNITS_WIDE, UNITS_HIGH = 399, 334
OK, CANCEL = (334, 7, 57, 14), (334, 25, 57, 14)
THRESHOLD, SOFTNESS, BIAS = (18, 255, 267, 16), (18, 283, 267, 16), (18, 309, 267, 16)
SOFTNESS_EDIT, BIAS_EDIT = (289, 278, 30, 14), (289, 304, 30, 14)
ZOOM_IN = (205, 229, 12, 11)
PANE_MIDDLE, PANE_RIGHT = (250, 190), 490  # pixels, whatever the dialog unit


def place_picture():
    y, x = numpy.mgrid[:HEIGHT, :WIDTH]
    samples = numpy.dstack((x & 255, y & 255, (x >> 8) << 4 | y >> 8 | numpy.where(x > 3 * y // 2, 128, 0)))
    data = io.BytesIO()
    Image.fromarray(samples.astype(numpy.uint8)).save(data, format="PNG")
    return data.getvalue()


def eventually(probe, wanted):
    """Whatever the probe says when it says what is wanted, or in the end."""
    deadline = time.monotonic() + PATIENCE
    while (got := probe()) != wanted and time.monotonic() < deadline:
        time.sleep(0.05)
    return got


class Session(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.picture = place_picture()

    def setUp(self):
        self.display = self.enterContext(VirtualDisplay())
        self.directory = pathlib.Path(self.enterContext(tempfile.TemporaryDirectory()))
        (self.directory / "in.png").write_bytes(self.picture)

    def enterContext(self, manager):  # the library has one of its own from Python 3.11 on
        value = manager.__enter__()
        self.addCleanup(manager.__exit__, None, None, None)
        return value

    # ---- The tool ----

    def start(self, *words):
        self.output = open(self.directory / "log", "wb")  # Wine's services would keep a pipe open
        self.addCleanup(self.output.close)
        return subprocess.Popen([*COMMAND, "--settings", "settings", *words], cwd=self.directory, stdout=self.output,
                                stderr=self.output, env=self.display.environment)

    def open_dialog(self):
        self.tool = self.start("--dialog", "in.png", "out.png")
        self.addCleanup(self.tool.kill)
        window = self.xdo("search", "--sync", "--onlyvisible", "--name", "^NORVA stairmelt$").split()[0]
        size = self.ask("getwindowgeometry", "--shell", window)
        # A dialog unit is a quarter of one base unit wide and an eighth of the other high.
        self.width = size["WIDTH"]
        self.base = round(size["WIDTH"] * 4 / UNITS_WIDE), round(size["HEIGHT"] * 8 / UNITS_HIGH)
        # The geometry's own place counts the window manager's frame twice.
        self.xdo("mousemove", "--window", window, 0, 0)
        place = self.ask("getmouselocation", "--shell")
        self.left, self.top = place["X"], place["Y"]
        self.assertEqual(eventually(lambda: self.shown(240, 180), (350, 300)), (350, 300))

    def end(self):
        """Waits for the tool; its exit status and last lines."""
        status = self.tool.wait(timeout=PATIENCE)
        return status, self.log()

    def log(self):
        return (self.directory / "log").read_text("utf-8").replace("\r\n", "\n").splitlines()

    # ---- Pointer and keyboard ----

    def xdo(self, *words):
        done = subprocess.run(["xdotool", *map(str, words)], env=self.display.environment, stdout=subprocess.PIPE,
                              timeout=PATIENCE, check=True)
        time.sleep(0.1)  # a hand isn't quicker
        return done.stdout.decode()

    def ask(self, *words):
        return {key: int(value) for key, value in (line.split("=") for line in self.xdo(*words).split())}

    def move(self, x, y):
        self.xdo("mousemove", self.left + x, self.top + y)

    def rectangle(self, control):
        left, top, width, height = control
        x, y = self.base
        scaled = left * x / 4, top * y / 8, width * x / 4, height * y / 8
        return [int(value + 0.5) for value in scaled]

    def click(self, control, *options):
        left, top, width, height = self.rectangle(control)
        self.move(left + width // 2, top + height // 2)
        self.xdo("click", *options, 1)

    def drag(self, *places):
        self.move(*places[0])
        self.xdo("mousedown", 1)
        for place in places[1:]:
            self.move(*place)
        self.xdo("mouseup", 1)

    def drag_slider(self, slider, start, end, top):
        """From one value to about another, of 0 to `top`; returns the value that the place of the release stands for."""
        left, upper, width, _ = self.rectangle(slider)
        places = [left + 6 + value * (width - 12) // top for value in (start, (start + end) // 2, end)]
        self.drag(*((x, upper + 8) for x in places))
        return (places[-1] - left - 6) * top // (width - 12)

    # ---- The preview ----

    def shown(self, x, y):
        """The image pixel under a pixel of the pane, or whatever a foreign pixel looks like."""
        red, green, blue = self.display.screenshot()(self.left + 10 + x, self.top + 10 + y)
        return red + 256 * (blue >> 4 & 7), green + 256 * (blue & 15)

    def assert_shown(self, x, y, wanted):
        self.assertEqual(eventually(lambda: self.shown(x, y), wanted), wanted)

    def test_a_whole_session(self):
        self.open_dialog()
        # Dragged, and undone as one step in the edit box, which has the focus then. Three steps up from there.
        self.drag_slider(THRESHOLD, 10, 200, 255)
        self.xdo("key", "ctrl+z")
        self.xdo("key", "Up", "Up", "Up")
        # Out of range: the slider's end counts. Two steps down from that.
        self.click(SOFTNESS_EDIT)
        self.xdo("key", "Home", "shift+End")
        self.xdo("type", "--delay", 50, "999")
        self.xdo("key", "Down", "Down")
        # Dragged, and one notch of the wheel up beside the pane.
        bias = self.drag_slider(BIAS, 0, 42, 100)
        self.move((PANE_RIGHT + self.width) // 2, 300)
        self.xdo("click", 4)
        bias += 1

        # The wheel over the pane: twice in, once out. One notch is one step.
        self.move(*PANE_MIDDLE)
        self.xdo("click", 4)
        self.assert_shown(40, 180, (350 - 120 + 20, 300))
        self.xdo("click", 4)
        self.assert_shown(40, 180, (350 - 60 + 10, 300))
        self.xdo("click", 5)
        self.assert_shown(40, 180, (350 - 120 + 20, 300))
        self.xdo("click", 5)
        self.assert_shown(3, 3, (113, 123))
        # A pan far beyond the left and lower edges ends there, and leaves at once.
        self.drag(PANE_MIDDLE, (450, 100), (700, 0))
        self.assert_shown(3, 3, (3, 243))
        self.drag(PANE_MIDDLE, (240, 195))
        self.assert_shown(3, 3, (13, 238))
        # Fitted, the image takes 420 x 360 pixels of the pane. Its place in the lower right then at full size.
        self.move(*PANE_MIDDLE)
        self.xdo("click", "--repeat", 2, "--delay", 60, 1)
        self.assert_shown(35, 180, (8, 300))
        self.move(10 + 30 + 300, 10 + 240)
        self.xdo("click", 3)
        self.assert_shown(240, 180, (460, 400))
        self.assert_shown(3, 3, (223, 223))

        self.click(OK)
        status, out = self.end()
        self.assertEqual(status, 0, out)
        self.assertIn(f"threshold 13, softness 98, bias {bias}", out)
        stored = (self.directory / "settings").read_text("utf-8").splitlines()
        for line in ("Thsh=13", "Sftn=98", f"Bias={bias}"):
            self.assertIn(line, stored)
        self.assertTrue(any(line.startswith("PDPX=") and line != "PDPX=-1" for line in stored), stored)
        # The same values without the dialog give the same picture.
        silent = self.start("--threshold", "13", "--softness", "98", "--bias", str(bias), "in.png", "silent.png")
        self.assertEqual(silent.wait(timeout=PATIENCE), 0)
        result = (self.directory / "out.png").read_bytes()
        self.assertEqual(result, (self.directory / "silent.png").read_bytes())
        before, after = (Image.open(io.BytesIO(data)).tobytes() for data in (self.picture, result))
        self.assertNotEqual(after, before)

    def test_reset_and_cancel(self):
        (self.directory / "settings").write_text("")
        self.open_dialog()
        self.drag_slider(THRESHOLD, 10, 77, 255)
        self.drag_slider(SOFTNESS, 70, 20, 100)
        self.xdo("keydown", "alt")
        self.click(CANCEL)
        self.xdo("keyup", "alt")
        self.click(BIAS_EDIT)
        self.xdo("key", "Up", "Up")
        # A plus in an edit box is text, and on a button it zooms.
        self.xdo("key", "End", "plus")
        self.click(ZOOM_IN)
        self.xdo("key", "plus")
        self.assert_shown(40, 180, (350 - 60 + 10, 300))
        self.xdo("key", "space")  # presses the + button, which has the focus
        self.assert_shown(40, 180, (350 - 30 + 5, 300))
        self.click(OK)
        status, out = self.end()
        self.assertEqual(status, 0, out)
        self.assertIn("threshold 10, softness 70, bias 2", out)

        stored = (self.directory / "settings").read_bytes()
        (self.directory / "out.png").unlink()
        for close in (lambda: self.click(CANCEL), lambda: self.xdo("key", "Escape")):
            self.open_dialog()
            self.drag_slider(THRESHOLD, 10, 200, 255)
            close()
            status, out = self.end()
            self.assertNotEqual(status, 0)
            self.assertEqual((self.directory / "settings").read_bytes(), stored)
            self.assertFalse((self.directory / "out.png").exists())


if __name__ == "__main__":
    COMMAND = sys.argv[1:]
    os.environ.update({"WINEDEBUG": "-all"})
    unittest.main(argv=sys.argv[:1])
