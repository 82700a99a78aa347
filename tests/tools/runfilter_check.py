#!/usr/bin/env python3
"""Runs the finished runfilter with the built plug-in on files of every kind: runfilter_check.py [EMULATOR] RUNFILTER.

The files are written and read by PIL and tifffile, which share nothing with the tool but some libraries below them.
"""

import os
import re
import struct
import subprocess
import sys
import tempfile
import unittest

import numpy
import tifffile
from PIL import Image, ImageCms, PngImagePlugin
from PIL.TiffImagePlugin import IFDRational

sys.dont_write_bytecode = True  # nothing is to appear among the sources
from tool_case import COMMAND, ToolCase

# No difference of samples reaches it at any depth, and it is small enough for the 16-bit scale.
TOO_HIGH = ("--threshold", "4096")
PROFILE = ImageCms.ImageCmsProfile(ImageCms.createProfile("sRGB")).tobytes()
MAKE, ORIENTATION, EXIF, GPS, EXPOSURE = 271, 274, 0x8769, 0x8825, 33434


def stairs(channels, depth, width=23, height=17):
    """Two areas with a slanting edge between them; within them the samples vary in their lowest bits."""
    rng = numpy.random.default_rng(channels * 100 + depth)
    y, x, _ = numpy.ogrid[:height, :width, :channels]
    if depth == 32:
        return rng.random((height, width, channels), dtype=numpy.float32)
    low, full = {8: (2, 255), 16: (100, 65535)}[depth]
    noise = rng.integers(0, low, (height, width, channels))
    bright = numpy.broadcast_to(x > 3 * y // 2, noise.shape).copy()
    if channels in (2, 4):
        bright[..., -1] = True
    return numpy.where(bright, full - noise, noise + full // 8).astype({8: numpy.uint8, 16: numpy.uint16}[depth])


def exif(orientation):
    block = Image.Exif()
    block[ORIENTATION], block[MAKE] = orientation, "maker"
    block[EXIF], block[GPS] = {EXPOSURE: IFDRational(1, 50)}, {1: "N"}
    return block


class RunFilter(ToolCase):
    def write(self, name, data):
        (self.directory / name).write_bytes(data)

    def save(self, name, samples, **options):
        """Samples of 8 bits, by PIL, or a TIFF by tifffile."""
        if name.endswith((".tif", ".tiff")):
            tifffile.imwrite(self.directory / name, samples, metadata=None, software=False, **options)
        else:
            Image.fromarray(samples.squeeze()).save(self.directory / name, **options)

    def load(self, name):
        """Rows, columns, channels."""
        if name.endswith((".tif", ".tiff")):
            samples = tifffile.imread(self.directory / name)
        else:
            samples = numpy.asarray(Image.open(self.directory / name))
        return samples if samples.ndim == 3 else samples[..., None]

    def same(self, name, samples):
        got = self.load(name)
        self.assertEqual((got.shape, got.dtype), (samples.shape, samples.dtype))
        numpy.testing.assert_array_equal(got, samples)

    def tags(self, name):
        with tifffile.TiffFile(self.directory / name) as file:
            return {tag.code: tag.value for tag in file.pages[0].tags}

    def read(self, name):
        return (self.directory / name).read_bytes()

    def smooth(self, *words):
        status, out, err = self.run_tool(*words)
        self.assertEqual((status, err), (0, []))
        return out

    def test_every_kind_of_tiff_keeps_its_samples_and_by_way_of_png(self):
        kinds = {
            "gray": (1, 8, {}), "gray, 16 bits": (1, 16, {"byteorder": ">"}), "floats": (3, 32, {"photometric": "rgb", "compression": "zlib"}),
            "gray and opacity": (2, 8, {"extrasamples": ["unassalpha"]}),
            "RGB": (3, 8, {"photometric": "rgb", "compression": "zlib", "predictor": 2}),
            "RGB, 16 bits": (3, 16, {"photometric": "rgb", "byteorder": ">", "compression": "zlib", "predictor": 2}),
            "RGB and opacity": (4, 16, {"photometric": "rgb", "extrasamples": ["unassalpha"], "rowsperstrip": 3}),
            "planes": (3, 16, {"photometric": "rgb", "planarconfig": "separate"}),
            "tiles": (3, 8, {"photometric": "rgb", "tile": (16, 16), "bigtiff": True}),
            "tiles of planes": (3, 8, {"photometric": "rgb", "tile": (16, 16), "planarconfig": "separate", "compression": "zlib"}),
            "inks": (4, 8, {"photometric": "separated", "compression": "zlib"}),
            "inks, 16 bits": (4, 16, {"photometric": "separated", "byteorder": ">"}),
        }
        for name, (channels, depth, options) in kinds.items():
            with self.subTest(name):
                samples = stairs(channels, depth)
                planes = samples.transpose(2, 0, 1) if "planarconfig" in options else samples
                self.save("in.tif", planes if channels > 1 else planes[..., 0], resolution=(118, 118), resolutionunit="CENTIMETER",
                          description="what it shows", **options,
                          extratags=[(ORIENTATION, 3, 1, 6, True), (34675, 7, len(PROFILE), PROFILE, True)])
                self.assertIn("0 pixels changed", self.smooth("in.tif", "out.tif", *TOO_HIGH)[-1])
                self.same("out.tif", samples)
                before, tags = self.tags("in.tif"), self.tags("out.tif")
                self.assertEqual([tags[code] for code in (259, 262, 274, 34675, 270)],
                                 [before[259], before[262], 6, PROFILE, "what it shows"])
                self.assertEqual((tags.get(317), tags.get(338)), (before.get(317), before.get(338)))
                self.assertAlmostEqual(tags[282][0] / tags[282][1], 118 * 2.54, delta=0.001)
                if "separated" in options.values() or depth == 32:
                    continue
                self.smooth("in.tif", "out.png", *TOO_HIGH)
                self.smooth("out.png", "back.tif", *TOO_HIGH)
                self.same("back.tif", samples)
                tags = self.tags("back.tif")
                self.assertEqual([tags[code] for code in (274, 34675, 270)], [6, PROFILE, "what it shows"])
                self.assertAlmostEqual(tags[282][0] / tags[282][1], 118 * 2.54, delta=0.01)

    def test_kinds_with_few_bits_are_expanded(self):
        picture = Image.fromarray(stairs(3, 8) // numpy.array((1, 2, 4), numpy.uint8))
        quantized = picture.quantize(3)
        bits = picture.convert("1")
        cases = {
            "palette.png": (quantized, {"bits": 2}, "RGB"), "transparent.png": (quantized, {"transparency": 1}, "RGBA"),
            "palette.tif": (quantized, {}, "RGB"), "bits.png": (bits, {}, "L"), "fax.tif": (bits, {"compression": "group4"}, "L"),
            "key.png": (picture.convert("L"), {"transparency": 31}, "LA"), "jpeg.tif": (picture, {"compression": "jpeg"}, "RGB"),
            "grays.png": (picture.convert("L").quantize(4), {}, "L"),
        }
        for name, (image, options, mode) in cases.items():
            with self.subTest(name):
                image.save(self.directory / name, **options)
                self.smooth(name, "out.png", *TOO_HIGH)
                wanted = numpy.asarray(Image.open(self.directory / name).convert(mode))
                self.same("out.png", wanted if wanted.ndim == 3 else wanted[..., None])

        self.save("white.tif", stairs(1, 8), photometric="miniswhite")
        self.smooth("white.tif", "out.png", *TOO_HIGH)
        self.same("out.png", 255 - stairs(1, 8))

    def test_jpeg_and_what_surrounds_pictures(self):
        picture = Image.fromarray(stairs(3, 8))
        for mode, out in (("RGB", "out.png"), ("L", "out.png"), ("RGB", "out.tif"), ("CMYK", "out.tif")):
            with self.subTest(mode=mode, out=out):
                picture.convert(mode).save(self.directory / "in.jpg", exif=exif(8), icc_profile=PROFILE, comment=b"a note")
                self.smooth("in.jpg", out, *TOO_HIGH)
                wanted = numpy.asarray(Image.open(self.directory / "in.jpg"))
                self.same(out, wanted if wanted.ndim == 3 else wanted[..., None])
                result = Image.open(self.directory / out)
                block = result.getexif()
                self.assertEqual((block[ORIENTATION], block[MAKE], block.get_ifd(EXIF)[EXPOSURE], block.get_ifd(GPS)[1]),
                                 (8, "maker", IFDRational(1, 50), "N"))
                self.assertEqual(result.info["icc_profile"], PROFILE)
                self.assertNotIn("dpi" if out == "out.png" else "no such", result.info, "no invented density")
                self.assertEqual(result.text["Comment"] if out == "out.png" else result.tag_v2[270], "a note")
        picture.save(self.directory / "from.jpg", exif=exif(8))
        self.smooth("from.jpg", "from.tif", *TOO_HIGH)
        for again in ("again.tif", "again.png"):
            self.smooth("from.tif", again, *TOO_HIGH)
            self.assertEqual(Image.open(self.directory / again).getexif().get_ifd(EXIF)[EXPOSURE], IFDRational(1, 50))
        picture.save(self.directory / "cm.jpg", dpi=(118, 118))
        data = bytearray(self.read("cm.jpg"))
        data[13] = 2  # the unit
        self.write("cm.jpg", data)
        self.smooth("cm.jpg", "cm.tif", *TOO_HIGH)
        self.assertAlmostEqual(float(self.tags("cm.tif")[282][0] / self.tags("cm.tif")[282][1]), 118 * 2.54, delta=0.01)
        picture.save(self.directory / "three.jpg")
        self.smooth("--out", "many", "in.jpg", "three.jpg", *TOO_HIGH)
        self.assertEqual(sorted(os.listdir(self.directory / "many")), ["in.tif", "three.png"], "PNG holds no CMYK")

        texts = PngImagePlugin.PngInfo()
        texts.add_text("Title", "na\u00efve")
        texts.add_text("Zipped", "z" * 100, zip=True)
        texts.add_itxt("Description", "\u6728")
        self.save("in.png", stairs(3, 8), pnginfo=texts, exif=exif(3), icc_profile=PROFILE, dpi=(300, 300))
        self.smooth("in.png", "out.png", *TOO_HIGH)
        before, after = (Image.open(self.directory / name) for name in ("in.png", "out.png"))
        self.assertEqual(after.text, before.text)
        self.assertEqual((after.getexif()[ORIENTATION], after.getexif().get_ifd(GPS)[1]), (3, "N"))
        self.assertEqual((after.info["icc_profile"], after.info["dpi"]), (PROFILE, before.info["dpi"]))
        self.smooth("in.png", "out.tif", *TOO_HIGH)
        tags = self.tags("out.tif")
        self.assertEqual((tags[269], tags[270], tags[274]), ("na\u00efve", "\u6728", 3))
        self.assertEqual(Image.open(self.directory / "out.tif").getexif().get_ifd(EXIF)[EXPOSURE], IFDRational(1, 50))

    def test_compression_is_kept(self):
        picture = Image.fromarray(stairs(3, 8))
        for kind, kept in (("tiff_lzw", 5), ("packbits", 32773), ("tiff_adobe_deflate", 8), ("jpeg", 5)):
            with self.subTest(kind):
                picture.save(self.directory / "in.tif", compression=kind, tiffinfo={317: 2} if kind == "tiff_lzw" else {})
                self.smooth("in.tif", "out.tif", *TOO_HIGH)
                before, after = (Image.open(self.directory / name) for name in ("in.tif", "out.tif"))
                self.assertEqual((after.tag_v2[259], after.tag_v2.get(317)), (kept, 2 if kind == "tiff_lzw" else None))
                numpy.testing.assert_array_equal(numpy.asarray(after), numpy.asarray(before))

        self.save("old.tif", stairs(3, 8), compression=32946)
        self.smooth("old.tif", "out.tif", *TOO_HIGH)
        self.assertEqual(self.tags("out.tif")[259], 8)

    def test_several_pictures_are_noted(self):
        frames = [Image.fromarray(stairs(3, 8)), Image.fromarray(255 - stairs(3, 8))]
        for name in ("in.png", "in.tif"):
            frames[0].save(self.directory / name, save_all=True, append_images=frames[1:])
            self.assertIn("only the first of its pictures is read", self.smooth(name, "out.tif", *TOO_HIGH))
            self.same("out.tif", stairs(3, 8))
        self.assertEqual(self.run_tool("--out", "batch", name, *TOO_HIGH)[2], [f"runfilter: {name}: only the first of its pictures is read"])

    def test_smoothing_changes_what_lies_at_the_edge(self):
        samples = stairs(3, 16)
        self.save("in.tif", samples, photometric="rgb")
        out = self.smooth("in.tif", "out.tif", "--threshold", "10", "--softness", "70", "--bias", "0")
        self.assertEqual(out[:2], ["in.tif: 23 x 17 pixels, RGB, 16 bits per channel", "threshold 10, softness 70, bias 0"])
        changed = (self.load("out.tif") != samples).any(axis=2)
        self.assertGreater(changed.sum(), 20)
        self.assertIn(f"{changed.sum()} pixels changed", out[-1])
        self.assertFalse(changed[0, -5:].any())

    def test_values_are_remembered_in_the_settings(self):
        self.save("in.png", stairs(1, 8))
        self.assertIn("threshold 10, softness 70, bias 0", self.smooth("in.png", "out.png"))
        self.smooth("in.png", "out.png", "--softness", "33", "--bias", "4")
        self.write("values/settings", bytes(range(256)) + b"\n" + self.read("values/settings")[:-3])
        # What the dialog wouldn't take is told, and serves once.
        before = self.read("values/settings")
        for words in (("in.png", "out.png"), ("--out", "folder", "in.png")):
            out = "\n".join(self.smooth("--bias=-4", *words))
            self.assertRegex(out, r"threshold 10, softness 33, bias -4(\n|; )not remembered: bias -4 \(.*0 to 100\)\n")
            self.assertEqual(self.read("values/settings"), before)
        self.assertIn("threshold 10, softness 33, bias 4", self.smooth("in.png", "out.png"))
        self.write("values/settings", b"\0" * 50)
        self.assertIn("threshold 10, softness 70, bias 0", self.smooth("in.png", "out.png"))
        # Without the option they are in the application data. Wine takes that folder from a Windows program alone.
        subprocess.run([*COMMAND[:-1], "cmd", "/c", "set", "APPDATA=.&&", COMMAND[-1].replace("/", "\\"), "--bias", "5", "in.png",
                        "out.png"], cwd=self.directory, stdout=subprocess.DEVNULL, check=True)
        self.assertIn(b"Bias=5", self.read("stairmelt/runfilter.settings"))

    def test_repeated_runs_give_the_picture_of_one_and_the_times(self):
        self.save("in.png", stairs(3, 8, 500, 300))
        once = self.smooth("in.png", "once.png")
        out = self.smooth("in.png", "often.png", "--repeat", "4")
        self.assertEqual(self.read("often.png"), self.read("once.png"))
        self.assertEqual([line.split(" in ")[0] for line in out[1:4]], [*(line.split(" in ")[0] for line in once[1:]), "medians of 4 runs:"])
        for line, what in zip(out[4:], ("plug-in", "copy   ")):
            ms, each = re.fullmatch(what + " ([0-9.]+) ms, ([0-9.]+) ms per megapixel", line).groups()
            self.assertAlmostEqual(float(each) * 500 * 300 / 1e6, float(ms), delta=0.001)
        self.assertGreater(float(re.fullmatch("ratio +([0-9.]+)", out[6])[1]), 1)

    def test_any_name_but_not_the_pictures_own(self):
        name = "B\u00e4ume \u6728 #1.png"
        self.save(name, stairs(3, 8))
        before = self.read(name)
        self.assertIn(name, self.smooth("--threshold", "10", name, "x" + name)[0])
        (self.directory / "link.png").symlink_to(name)
        for out in (name, "./" + name, "link.png"):
            status, _, err = self.run_tool(name, out)
            self.assertEqual((status, len(err)), (1, 1))
            self.assertIn("is the input file", err[0])
        self.assertEqual(self.read(name), before)

        self.write("target.png", b"earlier")
        (self.directory / "link.png").unlink()
        (self.directory / "link.png").symlink_to("target.png")
        self.smooth(name, "link.png")
        self.assertTrue((self.directory / "link.png").is_symlink())
        self.assertEqual(self.read("target.png"), self.read("x" + name), "the link's target is written")

    def test_failures_are_one_line_and_leave_the_output_alone(self):
        self.save("in.png", stairs(4, 8))
        good = self.read("in.png")
        # A flipped bit, a missing end, and a chunk that is longer than memory.
        at = len(good) // 2
        self.write("damaged.png", good[:at] + bytes([good[at] ^ 0x55]) + good[at + 1:])
        self.write("short.png", good[:-40])
        self.write("long.png", good[:33] + b"\x7f\xff\xff\xf0iTXt" + good[33:])
        for name in ("short.tif", "short.jpg"):
            self.save(name, stairs(3, 8))
            self.write(name, self.read(name)[:-100])
        self.save("hole.jpg", stairs(3, 8))
        self.write("hole.jpg", self.read("hole.jpg")[:-100] + b"\xff\xd9")
        # 16 values where a palette of 8 bits has 768.
        palette = stairs(1, 8)[..., 0]
        self.save("palette.tif", palette, photometric="palette", colormap=numpy.zeros((3, 256), numpy.uint16))
        data = bytearray(self.read("palette.tif"))
        at = data.index(struct.pack("<HHI", 320, 3, 768))
        data[at:at + 8] = struct.pack("<HHI", 320, 3, 16)
        self.write("palette.tif", data)
        self.write("text.png", b"This isn't a picture.")
        self.write("empty.png", b"")
        self.save("multiplied.tif", stairs(4, 8), photometric="rgb", extrasamples=["assocalpha"])
        self.save("inks.tif", stairs(4, 8), photometric="separated")
        (self.directory / "folder.png").mkdir()
        cases = [
            (("missing.png", "out.png"), "no such file"), (("damaged.png", "out.png"), "damaged"),
            (("short.png", "out.png"), "damaged"), (("short.tif", "out.png"), "damaged"), (("long.png", "out.png"), "ends early"),
            (("palette.tif", "out.png"), "damaged"),
            (("short.jpg", "out.png"), "damaged"), (("hole.jpg", "out.png"), "damaged"), (("text.png", "out.png"), "not a PNG, TIFF or JPEG"),
            (("empty.png", "out.png"), "not a PNG, TIFF or JPEG"), (("multiplied.tif", "out.png"), "multiplied"),
            (("folder.png", "out.png"), "is a directory"), (("in.png", "missing/out.png"), "written"),
            (("in.png", "folder.png"), "is a directory"), (("in.png", "out.jpg"), "only be written as"),
            (("inks.tif", "out.png"), "CMYK"), (("in.png", "out.png", "--plugin", "missing.8bf"), "no such file"),
            (("in.png", "out.png", "--plugin", "text.png"), "library"),
            (("what?.png", "out.png"), "doesn't allow ?"), (("in.png", "nul.png"), "device"), (("in.png.", "out.png"), "dot"),
            (("in.png", "out.png", "--plugin", COMMAND[-1]), "plug-in"),
        ]
        for name in ("out.png", "out.jpg"):
            self.write(name, b"as before")
        before = sorted(os.listdir(self.directory))
        for words, told in cases:
            with self.subTest(words):
                status, _, err = self.run_tool(*words)
                self.assertNotEqual(status, 0)
                self.assertEqual(len(err), 1, err)
                self.assertIn(told, err[0])
                self.assertEqual({self.read(name) for name in ("out.png", "out.jpg")}, {b"as before"})
                self.assertEqual(sorted(os.listdir(self.directory)), before)

        status, _, err = self.run_tool("in.png", "out.png", "--threshold", "much")
        self.assertEqual(status, 2)
        self.assertIn("usage: runfilter", err[1])

    def test_help_and_version_alone(self):
        self.assertRegex("\n".join(self.smooth("--version")), r"^stairmelt [0-9.]+$")
        # A script that runs the tool gives it its name and reads lines that end as its own.
        with tempfile.TemporaryFile() as out:
            subprocess.run([*COMMAND, "--help"], stdout=out, check=True, env=dict(os.environ, STAIRMELT_COMMAND="smooth"))
            out.seek(0)
            text = out.read().decode()
        self.assertTrue(text.startswith("usage: smooth [options] [--dialog"), text)
        self.assertTrue(text.endswith("\n  smooth --out smoothed --jobs 4 frames/*.png\n"), text)

    @unittest.skipIf(os.name == "nt", "there is always a display")
    def test_a_dialog_without_a_display(self):
        self.save("in.png", stairs(1, 8))
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

        self.save("in.png", numpy.random.default_rng(1).integers(0, 256, (64, 64, 3), dtype=numpy.uint8))
        self.smooth("in.png", "out.png", *TOO_HIGH)  # also starts Wine's server, which mustn't come under the limit
        self.write("out.png", b"as before")
        before = sorted(os.listdir(self.directory))
        status, _, err = self.run_tool("in.png", "out.png", *TOO_HIGH, preexec_fn=limit)
        self.assertEqual((status != 0, len(err)), (True, 1), err)
        self.assertIn("full", err[0])
        self.assertEqual(self.read("out.png"), b"as before")
        self.assertEqual(sorted(os.listdir(self.directory)), before)


if __name__ == "__main__":
    COMMAND[:] = sys.argv[1:]
    os.environ.update({"LC_ALL": "C.UTF-8", "WINEDEBUG": "-all"})
    unittest.main(argv=sys.argv[:1])
