#!/usr/bin/env python3
"""Runs a Windows program on a screen of its own, an Xvfb of 1280 x 1024 pixels: virtual_display.py WINE PROGRAM...

There is no window manager: its answers would arrive at any time, some with places where a window is only in passing. Wine
frames, places and focuses the windows of such a program itself.

Sessions by real mouse and keyboard input need openbox. Its own keys and mouse gestures are off, since Alt, the wheel and
double clicks belong to the programs. A window gets the focus when it is clicked: given to new windows, it would arrive at
any time, and Wine would move its own focus then.
"""

import contextlib
import os
import pathlib
import struct
import subprocess
import sys
import tempfile
import time

OPENBOX = """<?xml version="1.0"?>
<openbox_config xmlns="http://openbox.org/3.4/rc">
  <focus><focusNew>no</focusNew></focus>
  <theme><keepBorder>no</keepBorder></theme>
  <applications><application class="*"><decor>no</decor></application></applications>
  <keyboard/>
  <mouse>
    <context name="Client">
      <mousebind button="Left" action="Press"><action name="Focus"/><action name="Raise"/></mousebind>
    </context>
  </mouse>
</openbox_config>
"""
PATIENCE = 20  # seconds


def eventually(probe, wanted):
    """What the probe returns: at once where that is what is wanted, otherwise when time is up."""
    deadline = time.monotonic() + PATIENCE
    while (got := probe()) != wanted and time.monotonic() < deadline:
        time.sleep(0.02)
    return got


class VirtualDisplay(contextlib.ExitStack):
    """Runs for the length of a `with` block; `environment` is for the programs on it. manager: "openbox" or None."""

    def __init__(self, manager=None):
        super().__init__()
        self.manager = manager

    def __enter__(self):
        self.directory = pathlib.Path(self.enter_context(tempfile.TemporaryDirectory()))
        config, started = self.directory / "rc.xml", self.directory / "started"
        config.write_text(OPENBOX, encoding="utf-8")
        reading, writing = os.pipe()
        self.run("Xvfb", "-displayfd", str(writing), "-screen", "0", "1280x1024x24", "-nolisten", "tcp",
                 "-noreset", "-fbdir", self.directory, pass_fds=(writing,))
        os.close(writing)
        with os.fdopen(reading) as stream:
            self.environment = dict(os.environ, DISPLAY=":" + stream.readline().strip())
        if self.manager != "openbox":
            return self
        self.run("openbox", "--sm-disable", "--config-file", config, "--startup", f"touch '{started}'",
                 env=self.environment)
        if not eventually(started.exists, True):
            raise RuntimeError("Xvfb or openbox does not start")
        return self

    def run(self, *command, **options):
        process = subprocess.Popen(command, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, **options)
        self.callback(process.wait, timeout=PATIENCE)
        self.callback(process.terminate)

    def screenshot(self):
        """Returns a function from (x, y) to (red, green, blue) on the screen as it is now."""
        data = (self.directory / "Xvfb_screen0").read_bytes()
        header = struct.unpack(">25I", data[:100])
        start, row_bytes = header[0] + 12 * header[19], header[12]

        def pixel(x, y):
            at = start + y * row_bytes + 4 * x
            return data[at + 2], data[at + 1], data[at]
        return pixel


if __name__ == "__main__":
    wine, program = sys.argv[1:3]
    KEY = rf"HKCU\Software\Wine\AppDefaults\{pathlib.Path(program).name}\X11 Driver"
    subprocess.run([wine, "reg", "add", KEY, "/v", "Managed", "/d", "N", "/f"], stdout=subprocess.DEVNULL, check=True)
    with VirtualDisplay() as display:
        sys.exit(subprocess.run(sys.argv[1:], env=display.environment, check=False).returncode)
