#!/usr/bin/env python3
"""Runs the finished runfilter on many pictures at once: batch_check.py [EMULATOR] RUNFILTER CRASHING_PLUGIN.

A batch is broken off at chance moments, by Ctrl+C and by killing its process, and taken up again.
"""

import io
import os
import random
import signal
import subprocess
import sys
import time
import unittest

import numpy
import tifffile
from PIL import Image

sys.dont_write_bytecode = True  # nothing is to appear among the sources
from tool_case import COMMAND, ToolCase

CRASHING_PLUGIN = ""


def noise(seed, width=24, height=16):
    samples = numpy.random.default_rng(seed).integers(0, 256, (height, width, 3), dtype=numpy.uint8)
    data = io.BytesIO()
    Image.fromarray(samples).save(data, format="PNG")
    return data.getvalue()


class Batch(ToolCase):
    def write(self, count):
        names = [f"in/{i:03}.png" for i in range(count)]
        (self.directory / "in").mkdir()
        for i, name in enumerate(names):
            (self.directory / name).write_bytes(noise(i))
        return names

    def results(self, directory):
        return {path.name: path.read_bytes() for path in (self.directory / directory).iterdir()}

    def test_processes_share_the_work_and_results_are_those_of_single_runs(self):
        names = self.write(30)
        status, out, err = self.run_tool("--out", "one", "--threshold", "12", "--softness", "77", "in/*.png")
        self.assertEqual((status, err, len(out)), (0, [], 32))
        self.assertIn("threshold 12, softness 77, bias 0", out)
        self.assertRegex(out[5], r"^5 of 30: in/004\.png, \d+ pixels changed$")
        (self.directory / "list").write_text("\n".join(names[10:]), encoding="utf-8")
        with open(self.directory / "list", "rb") as listed:
            status, out, err = self.run_tool("--out", "deep/three", "--jobs", "3", "--files", "-", *names[:10], stdin=listed)
        self.assertEqual((status, err, len(out)), (0, [], 32))
        self.assertIn("threshold 12, softness 77, bias 0", out)
        self.assertEqual(self.results("one"), self.results("deep/three"), "the values are remembered, too")
        self.assertEqual(self.run_tool("in/007.png", "single.png")[0], 0)
        self.assertEqual((self.directory / "single.png").read_bytes(), self.results("one")["007.png"])

    def test_a_picture_that_fails_is_named_and_the_others_go_on(self):
        names = self.write(6)
        (self.directory / names[1]).write_bytes(noise(1)[:-30])
        (self.directory / "in/odd.gif").write_bytes(b"GIF89a, and more than eight bytes")
        (self.directory / "out").mkdir()
        (self.directory / "out/003.png").write_bytes(b"as before")
        (self.directory / "out/003.png").chmod(0o444)
        # No mode of the host holds it, and that is the plug-in's failure; and a name in another code.
        tifffile.imwrite(self.directory / "in/inks.tif", numpy.zeros((2, 2, 4), numpy.float32), photometric="separated")
        (self.directory / "list").write_bytes(b"in/\xe9.png")
        status, out, err = self.run_tool("--out", "out/", "--bias", "33", "--jobs", "2", *names, "in/odd.gif", "none*", "in/inks.tif",
                                         "--files", "list")
        self.assertEqual(status, 1)
        self.assertRegex(out[-1], r"^10 pictures: 4 smoothed, 6 failed; ")
        told = "\n".join(sorted(err))
        self.assertRegex(told, r"(?s)runfilter: in/001\.png: (?!in)[^\n]*damaged.*runfilter: in/\?\.png: its name isn't UTF-8.*"
                               r"runfilter: in/inks\.tif: .*no image mode.*runfilter: in/odd\.gif: not a PNG.*"
                               r"runfilter: none\*: no file matches.*runfilter: out/003\.png: is write-protected")
        self.assertEqual(len(err), 6, err)
        self.assertEqual(sorted(self.results("out")), ["000.png", "002.png", "003.png", "004.png", "005.png"])
        self.assertEqual(self.results("out")["003.png"], b"as before")
        self.assertIn(b"Bias=33", (self.directory / "values/settings").read_bytes())

        # What is there stays, and what isn't is tried again.
        before = self.results("out")
        (self.directory / "out/004.png").unlink()
        status, out, err = self.run_tool("--out", "out/", "--skip-existing", *names)
        self.assertEqual((status, len(err)), (1, 1), err)
        self.assertRegex(out[-1], r"^6 pictures: 1 smoothed, 4 skipped, 1 failed; ")
        self.assertEqual(self.results("out"), before)

        (self.directory / "empty").write_bytes(b"\n")
        for words, told in ((("--plugin", "none.8bf", names[0]), "no such file"), (("--files", "empty"), "list is empty"),
                            (("--out", names[0], names[0]), "can't be created")):
            status, out, err = self.run_tool("--out", "new", *words)
            self.assertEqual((status, out, len(err)), (1, [], 1), err)
            self.assertIn(told, err[0])

    def test_a_crash_costs_its_own_picture_only(self):
        names = self.write(4)
        (self.directory / names[2]).write_bytes(noise(1, width=13))
        status, out, err = self.run_tool("--out", "out", "--plugin", CRASHING_PLUGIN, *names)
        self.assertEqual(status, 1)
        # This plug-in doesn't take the script's values either.
        left = "the plug-in breaks the host's rules: the filter left the played descriptor in its place"
        crashed = "the process that filtered it ended unexpectedly"
        self.assertEqual(sorted(err), [f"runfilter: in/{i:03}.png: {crashed if i == 2 else left}" for i in range(4)])
        self.assertEqual(sorted(self.results("out")), ["000.png", "001.png", "003.png"])
        err = self.run_tool("--plugin", CRASHING_PLUGIN, names[0], "single.png")[2]
        self.assertEqual(" ".join(err).rstrip(), "runfilter: " + left)

    @unittest.skipIf(os.name == "nt", "needs a pseudo-terminal")
    def test_a_terminal_shows_a_bar(self):
        import termios
        names = self.write(3)
        reading, writing = os.openpty()
        termios.tcsetwinsize(writing, (24, 80))
        subprocess.run([*COMMAND, "--settings", "settings", "--out", "out", *names], cwd=self.directory, stdin=writing,
                       stdout=writing, stderr=writing, check=True, timeout=120)
        text = os.read(reading, 1 << 16).decode("utf-8")
        for stream in (reading, writing):
            os.close(stream)
        # Blanks, or what Wine makes of them, cover the end of a longer bar.
        self.assertRegex(text, r"\[#{30}\] 3 of 3, [0-9.]+ per second, 0:00 left(  |\x1b\[K)")
        self.assertIn("3 pictures: 3 smoothed; ", text)
        self.assertNotIn("pixels changed", text)

    @unittest.skipIf(os.name == "nt", "needs signals")
    def test_broken_off_it_leaves_whole_files_and_goes_on_later(self):
        names = self.write(200)
        self.run_tool("--out", "whole", *names)
        whole = self.results("whole")
        rng = random.Random(7)
        for kind, jobs in ((signal.SIGINT, 2), (signal.SIGKILL, 1)):
            out = f"{kind.name}{jobs}"
            process = self.start("--out", out, "--jobs", str(jobs), *names)
            wanted, limit = rng.randrange(1, 40), time.monotonic() + 60
            while process.poll() is None and time.monotonic() < limit:
                if (self.directory / out).is_dir() and len(list((self.directory / out).glob("*.png"))) >= wanted:
                    break
                time.sleep(0.002)
            os.killpg(process.pid, kind)
            status, lines, err = self.end(process)
            # The system deletes what killed processes were writing, unless they hadn't marked it yet.
            limit = time.monotonic() + 5
            while any((self.directory / out).glob("*.unfinished")) and time.monotonic() < limit:
                time.sleep(0.01)
            done = {name: data for name, data in self.results(out).items() if not name.endswith(".unfinished")}
            self.assertTrue(wanted <= len(done) < 200, f"{len(done)} of at least {wanted}")
            self.assertEqual(done, {name: whole[name] for name in done})
            if kind == signal.SIGINT:
                self.assertEqual((status, err), (130, []))
                self.assertIn(f"200 pictures: {len(done)} smoothed, {200 - len(done)} left; ", lines[-1])
            status, lines, err = self.run_tool("--out", out, "--skip-existing", "--jobs", str(jobs), *names)
            self.assertEqual((status, err), (0, []))
            self.assertIn(f"{len(done)} skipped", lines[-1])
            self.assertEqual(self.results(out), whole, "and nothing besides")

        # A run on one picture ends at once.
        (self.directory / "large.png").write_bytes(noise(1, 640, 480))
        process = self.start("--repeat", "10000", "large.png", "single.png")
        while process.poll() is None and not os.pread(self.out.fileno(), 1, 0):
            time.sleep(0.002)
        os.killpg(process.pid, signal.SIGINT)
        self.assertEqual(self.end(process)[0], 130)
        self.assertFalse((self.directory / "single.png").exists())


if __name__ == "__main__":
    *COMMAND[:], CRASHING_PLUGIN = sys.argv[1:]
    os.environ.update({"LC_ALL": "C.UTF-8", "WINEDEBUG": "-all"})
    unittest.main(argv=sys.argv[:1])
