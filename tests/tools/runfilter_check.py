#!/usr/bin/env python3
"""Runs the finished runfilter with the built plug-in on files of every kind: runfilter_check.py [EMULATOR] RUNFILTER.

Only the standard library is used, and the files are written and read by picture_files.py, which shares nothing with the
tool.
"""

import base64
import os
import pathlib
import random
import re
import struct
import subprocess
import sys
import tempfile
import unittest
import zlib

sys.dont_write_bytecode = True  # nothing is to appear among the sources
import picture_files as files

COMMAND = []  # the program under test, with its emulator before it
# No difference of samples reaches it at any depth, and it is small enough for the 16-bit scale.
TOO_HIGH = ("--threshold", "4096")
PHYS = struct.pack(">IIB", 11811, 11811, 1)  # 300 dpi as pixels per metre
# 16 x 16 pixels of (200, 40, 90), 150 dpi.
JPEG = base64.b64decode(
    "/9j/4AAQSkZJRgABAQEAlgCWAAD/2wBDAAMCAgMCAgMDAwMEAwMEBQgFBQQEBQoHBwYIDAoMDAsKCwsNDhIQDQ4RDgsLEBYQERMUFRUVDA8XGBYU"
    "GBIUFRT/2wBDAQMEBAUEBQkFBQkUDQsNFBQUFBQUFBQUFBQUFBQUFBQUFBQUFBQUFBQUFBQUFBQUFBQUFBQUFBQUFBQUFBQUFBT/wAARCAAQABAD"
    "ASIAAhEBAxEB/8QAFQABAQAAAAAAAAAAAAAAAAAAAAf/xAAUEAEAAAAAAAAAAAAAAAAAAAAA/8QAFQEBAQAAAAAAAAAAAAAAAAAAAwj/xAAUEQEA"
    "AAAAAAAAAAAAAAAAAAAA/9oADAMBAAIRAxEAPwCSACWW/9k=")


def profile(channels):
    """An ICC profile with the header that codecs insist on and one tag of random bytes."""
    content = random.Random(5).randbytes(3000)
    space = b"GRAY" if channels < 3 else b"RGB "
    header = struct.pack(">I4sI4s4s4s12s4s", 144 + len(content), b"none", 0x02400000, b"mntr", space, b"XYZ ",
                         bytes(12), b"acsp")
    header = header.ljust(68, b"\0") + struct.pack(">III", 0xF6D6, 0x10000, 0xD32D) + bytes(48)
    return header + struct.pack(">I4sII", 1, b"cprt", 144, len(content)) + content


def stairs(channels, depth, width=23, height=17):
    """Two areas with a slanting edge between them; within them the samples vary in their lowest bits."""
    rng = random.Random(channels * 100 + depth)
    low = {8: 1, 16: 100}[depth]
    full = (1 << depth) - 1
    has_alpha = channels in (2, 4)
    samples = []
    for y in range(height):
        for x in range(width):
            bright = x > 3 * y // 2
            for channel in range(channels):
                opaque = has_alpha and channel == channels - 1
                value = full - rng.randrange(low) if bright or opaque else rng.randrange(low) + full // 8
                samples.append(value)
    return width, height, channels, depth, tuple(samples)


class RunFilter(unittest.TestCase):
    def setUp(self):
        directory = tempfile.TemporaryDirectory()
        self.addCleanup(directory.cleanup)
        self.directory = pathlib.Path(directory.name)

    def write(self, name, data):
        (self.directory / name).write_bytes(data)
        return name

    def read(self, name):
        return (self.directory / name).read_bytes()

    def run_tool(self, *words, **options):
        """Exit status, output and error lines. Files stand in for pipes, which Wine's services would keep open."""
        with tempfile.TemporaryFile() as out, tempfile.TemporaryFile() as err:
            status = subprocess.run([*COMMAND, "--settings", "settings", *words], cwd=self.directory, stdout=out,
                                    stderr=err, timeout=120, check=False, **options).returncode
            texts = []
            for stream in (out, err):
                stream.seek(0)
                texts.append(stream.read().decode("utf-8").replace("\r\n", "\n").splitlines())
        return status, *texts

    def smooth(self, *words):
        status, out, err = self.run_tool(*words)
        self.assertEqual((status, err), (0, []))
        return out

    def test_png_of_each_kind(self):
        for depth in (8, 16):
            for channels in (1, 2, 3, 4):
                with self.subTest(depth=depth, channels=channels):
                    picture = stairs(channels, depth)
                    icc = profile(channels)
                    chunks = [(b"iCCP", b"name\0\0" + zlib.compress(icc)), (b"pHYs", PHYS)]
                    self.write("in.png", files.write_png(picture, chunks))
                    out = self.smooth("in.png", "out.png", *TOO_HIGH)
                    self.assertIn("0 pixels changed", out[-1])
                    same, kept = files.read_png(self.read("out.png"))
                    self.assertEqual(same, picture)
                    self.assertEqual((kept[b"iCCP"], kept[b"pHYs"]), (chunks[0][1], PHYS))

                    # By way of TIFF, with the profile and the resolution.
                    self.smooth("in.png", "out.tif", *TOO_HIGH)
                    same, tags = files.read_tiff(self.read("out.tif"))
                    self.assertEqual(same, picture)
                    self.assertEqual(bytes(tags[34675]), icc)
                    self.assertAlmostEqual(tags[282][0] / tags[282][1], 300, delta=0.01)
                    self.assertEqual(tags.get(338), (2,) if channels in (2, 4) else None)
                    self.smooth("out.tif", "back.png", *TOO_HIGH)
                    same, kept = files.read_png(self.read("back.png"))
                    self.assertEqual(same, picture)
                    self.assertEqual(zlib.decompress(kept[b"iCCP"].split(b"\0\0", 1)[1]), icc)
                    self.assertEqual(kept[b"pHYs"], PHYS)

                    # The edge is smoothed, and what lies far from it stays to the bit.
                    out = self.smooth("in.png", "out.png", "--threshold", "10", "--softness", "70", "--bias", "0")
                    self.assertIn("threshold 10, softness 70, bias 0", out)
                    smoothed, _ = files.read_png(self.read("out.png"))
                    self.assertEqual(smoothed[:4], picture[:4])
                    size = picture[0] * channels
                    changed = {i // channels for i, value in enumerate(picture[4]) if smoothed[4][i] != value}
                    self.assertGreater(len(changed), 20)
                    self.assertIn(f"{len(changed)} pixels changed", out[-1])
                    self.assertEqual(smoothed[4][size - 5 * channels:size], picture[4][size - 5 * channels:size])

    def test_small_depths_and_palettes_are_expanded(self):
        palette = bytes((255, 0, 0, 0, 0, 255, 9, 9, 9))
        cases = {
            "1 bit": (files.raw_png(5, 2, 1, 0, [b"\xa8", b"\x50"]), (5, 2, 1, 8, (255, 0) * 5)),
            "4 bits, transparent gray": (files.raw_png(3, 1, 4, 0, [b"\x0f\x70"], [(b"tRNS", b"\0\7")]),
                                         (3, 1, 2, 8, (0, 255, 255, 255, 119, 0))),
            # Indices 0, 1, 2 of two bits each.
            "palette": (files.raw_png(3, 1, 2, 3, [b"\x18"], [(b"PLTE", palette)]), (3, 1, 3, 8, tuple(palette))),
            "transparent colour, 16 bits": (
                files.raw_png(2, 1, 16, 2, [bytes(range(12))], [(b"tRNS", bytes(range(6)))]),
                (2, 1, 4, 16, (0x0001, 0x0203, 0x0405, 0, 0x0607, 0x0809, 0x0A0B, 65535))),
        }
        for name, (data, expected) in cases.items():
            with self.subTest(name):
                self.write("in.png", data)
                self.smooth("in.png", "out.png", *TOO_HIGH)
                self.assertEqual(files.read_png(self.read("out.png"))[0], expected)

    def test_tiff_of_each_kind(self):
        floats = struct.unpack("<36I", struct.pack("<36f", *(i / 35 for i in range(36))))
        cases = {
            "big-endian, predicted": (stairs(3, 16), 2, {"order": ">", "compressed": True, "tags": [(317, 3, (2,))]}),
            "gray with alpha": (stairs(2, 8), 1, {"compressed": True, "tags": [(338, 3, (2,))]}),
            "inks": (stairs(4, 16), 5, {"tags": [(274, 3, (6,)), (282, 5, (118, 1)), (283, 5, (118, 1)), (296, 3, (3,))]}),
            "floats": ((4, 3, 3, 32, floats), 2, {"tags": [(339, 3, (3, 3, 3)), (34675, 7, tuple(profile(3)))]}),
        }
        for name, (picture, photometric, options) in cases.items():
            with self.subTest(name):
                self.write("in.tiff", files.write_tiff(picture, photometric, **options))
                self.smooth("in.tiff", "out.tiff", *TOO_HIGH)
                same, tags = files.read_tiff(self.read("out.tiff"))
                self.assertEqual(same, picture)
                self.assertEqual(tags[262], (photometric,))
                if name == "inks":
                    self.assertEqual(tags[274], (6,))
                    self.assertAlmostEqual(tags[282][0] / tags[282][1], 118 * 2.54, delta=0.001)
                if name == "floats":
                    self.assertEqual(bytes(tags[34675]), profile(3))

    def test_bmp_and_jpeg(self):
        picture = stairs(3, 8)
        self.write("in.bmp", files.write_bmp(picture))
        self.smooth("in.bmp", "out.bmp", *TOO_HIGH)
        self.assertEqual(files.read_bmp(self.read("out.bmp")), (picture, 3937))
        gray = stairs(1, 8)
        self.write("gray.png", files.write_png(gray))
        self.smooth("gray.png", "gray.bmp", *TOO_HIGH)
        self.assertEqual(files.read_bmp(self.read("gray.bmp"))[0], gray)
        self.smooth("gray.bmp", "gray.tif", *TOO_HIGH)
        self.assertEqual(files.read_tiff(self.read("gray.tif"))[0], gray)

        self.write("in.jpg", JPEG)
        self.smooth("in.jpg", "jpeg.png", *TOO_HIGH)
        (width, height, channels, depth, samples), chunks = files.read_png(self.read("jpeg.png"))
        self.assertEqual((width, height, channels, depth), (16, 16, 3, 8))
        self.assertTrue(all(abs(value - (200, 40, 90)[i % 3]) <= 4 for i, value in enumerate(samples)))
        self.assertEqual(chunks[b"pHYs"], struct.pack(">IIB", 5906, 5906, 1))

    def test_values_are_remembered_in_the_settings(self):
        self.write("in.png", files.write_png(stairs(1, 8)))
        self.assertIn("threshold 10, softness 70, bias 0", self.smooth("in.png", "out.png"))
        self.smooth("in.png", "out.png", "--softness", "33", "--bias", "4")
        self.write("settings", bytes(range(256)) + b"\n" + self.read("settings")[:-3])
        # What the dialog wouldn't take is told, and serves once.
        before = self.read("settings")
        for words in (("in.png", "out.png"), ("--out", "folder", "in.png")):
            out = "\n".join(self.smooth("--bias=-4", *words))
            self.assertRegex(out, r"threshold 10, softness 33, bias -4(\n|; )not remembered: bias -4 \(.*0 to 100\)\n")
            self.assertEqual(self.read("settings"), before)
        self.assertIn("threshold 10, softness 33, bias 4", self.smooth("in.png", "out.png"))
        self.write("settings", b"\0" * 50)
        self.assertIn("threshold 10, softness 70, bias 0", self.smooth("in.png", "out.png"))

    def test_repeated_runs_give_the_picture_of_one_and_the_times(self):
        self.write("in.png", files.write_png(stairs(3, 16)))
        once = self.smooth("in.png", "once.png")
        out = self.smooth("in.png", "often.png", "--repeat", "4")
        self.assertEqual(self.read("often.png"), self.read("once.png"))
        self.assertEqual(out[1], once[1])
        self.assertEqual(out[2].split(" in ")[0], once[2].split(" in ")[0])
        self.assertEqual(out[3], "medians of 4 runs:")
        times = [re.fullmatch(r"(plug-in|copy) +([0-9.]+) ms, ([0-9.]+) ms per megapixel", line) for line in out[4:6]]
        self.assertTrue(all(times), out)
        megapixels = 23 * 17 / 1e6
        for match in times:
            self.assertAlmostEqual(float(match[3]) * megapixels, float(match[2]), delta=0.001)

    def test_one_file_for_both_and_any_name(self):
        name = "B\u00e4ume \u6728 #1.png"
        picture = stairs(3, 8)
        self.write(name, files.write_png(picture))
        self.assertIn(name, self.smooth("--threshold", "10", name, name)[0])
        self.assertNotEqual(files.read_png(self.read(name))[0], picture)

    def test_failures_are_one_line_and_leave_the_output_alone(self):
        deep = files.write_png(stairs(4, 16))
        self.write("deep.png", deep)
        damaged = bytearray(deep)
        damaged[len(deep) // 2] ^= 0x55
        self.write("damaged.png", bytes(damaged))
        self.write("short.png", deep[:-40])
        self.write("short.tif", files.write_tiff(stairs(3, 8), 2)[:600])
        self.write("short.jpg", JPEG[:250])
        self.write("text.png", b"This isn't a picture.")
        self.write("empty.png", b"")
        self.write("premultiplied.tif", files.write_tiff(stairs(4, 8), 2, tags=[(338, 3, (1,))]))
        (self.directory / "directory.png").mkdir()
        cases = [
            (("missing.png", "out.png"), "no such file"), (("damaged.png", "out.png"), "damaged"),
            (("short.png", "out.png"), "damaged"), (("short.tif", "out.png"), "damaged"),
            (("short.jpg", "out.png"), "damaged"), (("text.png", "out.png"), "not a PNG, TIFF, BMP or JPEG"),
            (("empty.png", "out.png"), "not a PNG, TIFF, BMP or JPEG"), (("premultiplied.tif", "out.png"), "multiplied"),
            (("directory.png", "out.png"), "directory"), (("deep.png", "missing/out.png"), "written"),
            (("deep.png", "directory.png"), "directory"), (("deep.png", "out.jpg"), "only be written as"),
            (("deep.png", "out.bmp"), "BMP"), (("deep.png", "out.png", "--plugin", "missing.8bf"), "no such file"),
            (("deep.png", "out.png", "--plugin", "text.png"), "library"),
            (("what?.png", "out.png"), "no ? in"), (("deep.png", "nul.png"), "device"), (("deep.png.", "out.png"), "dot"),
            (("deep.png", "out.png", "--plugin", COMMAND[-1]), "plug-in"),
        ]
        for name in ("out.png", "out.jpg", "out.bmp"):
            self.write(name, b"as before")
        before = sorted(os.listdir(self.directory))
        for words, told in cases:
            with self.subTest(words):
                status, _, err = self.run_tool(*words)
                self.assertNotEqual(status, 0)
                self.assertEqual(len(err), 1, err)
                self.assertIn(told, err[0])
                self.assertEqual({self.read(name) for name in ("out.png", "out.jpg", "out.bmp")}, {b"as before"})
                self.assertEqual(sorted(os.listdir(self.directory)), before)

        status, _, err = self.run_tool("deep.png", "out.png", "--threshold", "much")
        self.assertNotEqual(status, 0)
        self.assertIn("usage: runfilter", err[1])

    def test_help_alone(self):
        self.assertIn("  runfilter --out smoothed --jobs 4 frames/*.png", self.smooth("--help"))
        # A script that runs the tool gives it its name and reads lines that end as its own.
        with tempfile.TemporaryFile() as out:
            subprocess.run([*COMMAND, "--version"], stdout=out, check=True, env=dict(os.environ, STAIRMELT_COMMAND="smooth"))
            out.seek(0)
            self.assertRegex(out.read(), rb"^stairmelt [0-9.]+\n$")

    @unittest.skipIf(os.name == "nt", "there is always a display")
    def test_a_dialog_without_a_display(self):
        self.write("in.png", files.write_png(stairs(1, 8)))
        for display in ({}, {"DISPLAY": ":4711"}):
            environment = {name: value for name, value in os.environ.items() if name != "DISPLAY"} | display
            for words in (("--dialog", "in.png", "out.png"), ("--about",)):
                result = self.run_tool(*words, env=environment)
                self.assertEqual(result, (1, [], ["runfilter: a dialog needs a display, and there is none"]))
        self.assertFalse((self.directory / "out.png").exists())

    @unittest.skipIf(os.name == "nt", "needs a limit on the size of files")
    def test_a_full_disk_leaves_the_output_alone(self):
        import resource
        import signal

        def limit():
            signal.signal(signal.SIGXFSZ, signal.SIG_IGN)
            resource.setrlimit(resource.RLIMIT_FSIZE, (4096, 4096))

        picture = (64, 64, 3, 8, tuple(random.Random(1).randbytes(64 * 64 * 3)))
        self.write("in.png", files.write_png(picture))
        self.smooth("in.png", "out.png", *TOO_HIGH)  # also starts Wine's server, which mustn't come under the limit
        self.write("out.png", b"as before")
        before = sorted(os.listdir(self.directory))
        status, _, err = self.run_tool("in.png", "out.png", *TOO_HIGH, preexec_fn=limit)
        self.assertEqual((status != 0, len(err)), (True, 1), err)
        self.assertIn("full", err[0])
        self.assertEqual(self.read("out.png"), b"as before")
        self.assertEqual(sorted(os.listdir(self.directory)), before)


if __name__ == "__main__":
    COMMAND = sys.argv[1:]
    os.environ.update({"LC_ALL": "C.UTF-8", "WINEDEBUG": "-all"})
    unittest.main(argv=sys.argv[:1])
