#!/usr/bin/env python3
"""Sessions with the parameter dialog, by real mouse and keyboard input: session_check.py [EMULATOR] RUNFILTER.

The tool's output, its settings and the picture that it writes show what the dialog made of the input; the screen shows
the preview. The picture's red and green encode the place of each pixel, and a step in its blue is the stair to smooth.
"""

import os
import pathlib
import re
import subprocess
import sys
import tempfile
import time
import unittest

import numpy
from PIL import Image

sys.dont_write_bytecode = True  # nothing is to appear among the sources
from virtual_display import PATIENCE, VirtualDisplay, eventually

COMMAND = []  # the tool, with its emulator before it
# Left, top, width and height in the dialog's template, in dialog units: four are six pixels wide, eight are 13 high.
OK, CANCEL = (334, 7, 57, 14), (334, 25, 57, 14)
THRESHOLD, SOFTNESS, BIAS = (18, 255, 267, 16), (18, 283, 267, 16), (18, 309, 267, 16)
SOFTNESS_EDIT = (289, 278, 30, 14)
PANE_MIDDLE, BESIDE_PANE = (250, 190), (540, 300)  # pixels, whatever the dialog unit
UNFILTERED = (10, 30, 480, 4)  # a part of the pane with a stair, which is unfiltered while a button is held


class Session(unittest.TestCase):
    def setUp(self):
        self.display = self.enter(VirtualDisplay("openbox"))
        self.directory = pathlib.Path(self.enter(tempfile.TemporaryDirectory()))
        y, x = numpy.mgrid[:600, :700]
        samples = numpy.dstack((x & 255, y & 255, (x >> 8) << 4 | y >> 8 | numpy.where(x > 3 * y // 2, 128, 0)))
        Image.fromarray(samples.astype(numpy.uint8)).save(self.directory / "in.png")

    def enter(self, manager):
        value = manager.__enter__()
        self.addCleanup(manager.__exit__, None, None, None)
        return value

    # ---- The tool ----

    def start(self, *words):
        output = self.enter(open(self.directory / "log", "wb"))  # Wine's services would keep a pipe open
        return subprocess.Popen([*COMMAND, "--settings", "settings", *words], cwd=self.directory, stdout=output,
                                stderr=output, env=self.display.environment)

    def open_dialog(self):
        self.tool = self.start("--dialog", "in.png", "out.png")
        self.addCleanup(self.tool.kill)
        windows = []

        def is_open():
            windows[:] = self.xdo("search", "--onlyvisible", "--name", "^NORVA stairmelt$", check=False).split()
            return windows != []
        self.assertTrue(eventually(is_open, True))
        self.xdo("mousemove", "--window", windows[0], 0, 0)
        place = self.xdo("getmouselocation", "--shell")
        self.left, self.top = (int(re.search(axis + r"=(\d+)", place)[1]) for axis in "XY")
        self.assert_shown(240, 180, (350, 300))

    def end(self):
        """Waits for the tool to end; returns its exit status and output."""
        return self.tool.wait(timeout=PATIENCE), (self.directory / "log").read_text("utf-8")

    # ---- Mouse and keyboard ----

    def xdo(self, *words, check=True):
        done = subprocess.run(["xdotool", *map(str, words)], env=self.display.environment, stdout=subprocess.PIPE,
                              timeout=PATIENCE, check=check)
        time.sleep(0.03)  # a hand isn't quicker
        return done.stdout.decode()

    def move(self, x, y):
        self.xdo("mousemove", self.left + x, self.top + y)

    def rectangle(self, control):
        return [int(value * (6 / 4, 13 / 8)[i % 2] + 0.5) for i, value in enumerate(control)]

    def press(self, shows, *words):
        """Presses a button and waits until a part of the dialog has changed.

        Keys sent earlier could be lost, and the pane's gestures read the pointer when they are handled.
        """
        def pixels():
            pixel = self.display.screenshot()
            left, top, width, height = shows
            return [pixel(self.left + x, self.top + y) for y in range(top, top + height) for x in range(left, left + width)]
        before = pixels()
        self.xdo(*words)
        self.assertTrue(eventually(lambda: pixels() != before, True))

    def click(self, control, shows=None):
        left, top, width, height = self.rectangle(control)
        self.move(left + width // 2, top + height // 2)
        if shows:
            self.press(self.rectangle(shows), "click", 1)
        else:
            self.xdo("click", 1)

    def drag(self, shows, start, *places):
        self.move(*start)
        self.press(shows, "mousedown", 1)
        for place in places:
            self.move(*place)
        self.xdo("mouseup", 1)

    def drag_slider(self, slider, start, end, top):
        """Drags from one value to about another, of 0 to `top`; returns the value at the place of the release."""
        left, upper, width, _ = self.rectangle(slider)
        places = [left + 6 + value * (width - 12) // top for value in (start, (start + end) // 2, end)]
        self.drag(self.rectangle(slider), *((x, upper + 8) for x in places))
        return (places[-1] - left - 6) * top // (width - 12)

    # ---- The preview ----

    def assert_shown(self, x, y, wanted):
        """The image pixel under a pixel of the pane has to become this one."""
        def shown():
            red, green, blue = self.display.screenshot()(self.left + 10 + x, self.top + 10 + y)
            return red + 256 * (blue >> 4 & 7), green + 256 * (blue & 15)
        self.assertEqual(eventually(shown, wanted), wanted)

    def test_a_whole_session(self):
        self.open_dialog()
        # With Alt, Cancel resets.
        self.drag_slider(SOFTNESS, 70, 20, 100)
        self.xdo("keydown", "alt")
        self.click(CANCEL, shows=SOFTNESS)
        self.xdo("keyup", "alt")
        # A drag, undone as one step in the edit box, which has the focus then. Three steps up from there.
        self.drag_slider(THRESHOLD, 10, 200, 255)
        self.xdo("key", "ctrl+z", "Up", "Up", "Up")
        # Out of range: the slider's end counts. Two steps down from there.
        self.click(SOFTNESS_EDIT, shows=SOFTNESS)
        self.xdo("key", "Home", "shift+End", "9", "9", "9", "Down", "Down")
        # A drag, and one notch of the wheel up beside the pane.
        bias = self.drag_slider(BIAS, 0, 42, 100) + 1
        self.move(*BESIDE_PANE)
        self.press(self.rectangle(BIAS), "click", 4)

        # The wheel over the pane: twice in, twice out. One notch is one step.
        self.move(*PANE_MIDDLE)
        for button, wanted in ((4, 250), (4, 300), (5, 250)):
            self.xdo("click", button)
            self.assert_shown(40, 180, (wanted, 300))
        self.xdo("click", 5)
        self.assert_shown(3, 3, (113, 123))
        # A pan far beyond the left and lower edges stops there, and a pan back takes effect immediately.
        self.drag(UNFILTERED, PANE_MIDDLE, (450, 100), (700, 0))
        self.assert_shown(3, 3, (3, 243))
        self.drag(UNFILTERED, (300, 100), (290, 105))  # elsewhere, or the presses would make a double click
        self.assert_shown(3, 3, (13, 238))
        # Fitted, the image takes 420 x 360 pixels of the pane. Then a place in its lower right at full size.
        self.move(*PANE_MIDDLE)
        self.xdo("click", "--repeat", 2, "--delay", 60, 1)
        self.assert_shown(35, 180, (8, 300))
        self.move(10 + 30 + 300, 10 + 240)
        self.xdo("click", 3)
        self.assert_shown(240, 180, (460, 400))
        self.assert_shown(3, 3, (223, 223))

        self.click(OK)
        status, output = self.end()
        self.assertEqual(status, 0, output)
        self.assertIn(f"threshold 13, softness 98, bias {bias}", output)
        stored = (self.directory / "settings").read_text("utf-8")
        self.assertRegex(stored, rf"(?s)Thsh=13\s.*Sftn=98\s.*Bias={bias}\s.*PDPX=\d")
        # The same values without the dialog give the same picture.
        silent = self.start("--threshold", "13", "--softness", "98", "--bias", str(bias), "in.png", "silent.png")
        self.assertEqual(silent.wait(timeout=PATIENCE), 0)
        before, after, again = (Image.open(self.directory / name).tobytes() for name in ("in.png", "out.png", "silent.png"))
        self.assertEqual(after, again)
        self.assertNotEqual(after, before)
        # Escape leaves everything as it was.
        (self.directory / "out.png").unlink()
        self.open_dialog()
        self.drag_slider(THRESHOLD, 13, 200, 255)
        self.xdo("key", "Escape")
        status, output = self.end()
        self.assertTrue(status == 1 and output.rstrip().endswith(": cancelled"), (status, output))
        self.assertFalse((self.directory / "out.png").exists())
        self.assertEqual((self.directory / "settings").read_text("utf-8"), stored)


if __name__ == "__main__":
    COMMAND = sys.argv[1:]
    os.environ["WINEDEBUG"] = "-all"
    unittest.main(argv=sys.argv[:1])
