#!/usr/bin/env python3
"""A screen of its own for programs with windows: virtual_display.py COMMAND... runs a command on one.

The screen is an Xvfb of 1280 x 1024 pixels with openbox as its window manager, whose own keys and mouse gestures are
switched off: Alt, the wheel and double clicks are the programs'.
"""

import os
import pathlib
import struct
import subprocess
import sys
import tempfile
import time

OPENBOX = """<?xml version="1.0"?>
<openbox_config xmlns="http://openbox.org/3.4/rc">
  <focus><focusNew>yes</focusNew></focus>
  <keyboard/>
  <mouse>
    <context name="Client">
      <mousebind button="Left" action="Press"><action name="Focus"/><action name="Raise"/></mousebind>
    </context>
  </mouse>
</openbox_config>
"""


class VirtualDisplay:
    """Up for the length of a `with` block, in which `environment` is that of its programs."""

    def __enter__(self):
        self.directory = tempfile.TemporaryDirectory()
        config = pathlib.Path(self.directory.name, "rc.xml")
        config.write_text(OPENBOX, encoding="utf-8")
        reading, writing = os.pipe()
        self.server = subprocess.Popen(["Xvfb", "-displayfd", str(writing), "-screen", "0", "1280x1024x24", "-nolisten", "tcp",
                                        "-fbdir", self.directory.name],
                                       pass_fds=(writing,), stderr=subprocess.DEVNULL)
        os.close(writing)
        with os.fdopen(reading) as stream:
            number = stream.readline().strip()
        if not number:
            raise RuntimeError("Xvfb doesn't start")
        self.environment = dict(os.environ, DISPLAY=":" + number)
        self.manager = subprocess.Popen(["openbox", "--sm-disable", "--config-file", str(config)], env=self.environment,
                                        stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        time.sleep(0.5)
        return self

    def __exit__(self, *_):
        for process in (self.manager, self.server):
            process.terminate()
            process.wait(timeout=20)
        self.directory.cleanup()

    def screenshot(self):
        """A function from (x, y) to (red, green, blue), of the screen as it is now."""
        data = pathlib.Path(self.directory.name, "Xvfb_screen0").read_bytes()
        header = struct.unpack(">25I", data[:100])
        start, row_bytes = header[0] + 12 * header[19], header[12]

        def pixel(x, y):
            at = start + y * row_bytes + 4 * x
            return data[at + 2], data[at + 1], data[at]
        return pixel


if __name__ == "__main__":
    with VirtualDisplay() as display:
        sys.exit(subprocess.run(sys.argv[1:], env=display.environment, check=False).returncode)
