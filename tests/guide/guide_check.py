#!/usr/bin/env python3
"""Compares the users' guide with the sources, and its two languages with each other: guide_check.py PROJECT."""

import pathlib
import re
import shutil
import struct
import subprocess
import sys
import tempfile
import unittest
import xml.etree.ElementTree

ROOT = pathlib.Path(__file__).resolve().parents[2]
MAX_BYTES = 1_500_000
STRING = r'"((?:\\.|[^"\\\n])*)"'


def read(name):
    return (ROOT / name).read_text("utf-8")


def strings(source):
    """The texts of string literals that have a word in them."""
    texts = (text.replace("\\n", " ").strip(" :") for text in re.findall(STRING, source))
    return {text for text in texts if re.search("[a-z]{3}", text)}


class Guide:
    """One language. Its file has to be well-formed XML."""

    def __init__(self, language):
        self.root = xml.etree.ElementTree.fromstring(f"<guide>{read(f'guide/{language}.html')}</guide>")
        self.text = "".join(self.root.itertext())

    def all(self, tag, kind=None):
        return [element for element in self.root.iter(tag) if kind in (None, element.get("class"))]

    def structure(self):
        """What both languages have in common. Identifiers begin with the language."""
        tags = {"h1", "h2", "h3", "table", "tr", "td", "th", "figure", "img", "pre", "p", "ul", "ol", "li"}
        return [(e.tag, e.get("class"), e.get("src"), e.get("id", "")[3:]) for e in self.root.iter() if e.tag in tags]

    def rows(self, kind):
        """The rows of all tables of a class, each a list of texts; a variable part is a *."""
        return [[" ".join(self.pattern(cell).split()) for cell in row] for table in self.all("table", kind)
                for row in table.iter("tr") if row[0].tag == "td"]

    def pattern(self, element):
        if element.tag == "var":
            return "*"
        return (element.text or "") + "".join(self.pattern(child) + (child.tail or "") for child in element)


class GuideCheck(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.guides = {language: Guide(language) for language in ("english", "japanese")}

    def test_languages_have_the_same_parts(self):
        english, japanese = self.guides.values()
        self.assertEqual(english.structure(), japanese.structure())
        # Comments are translated, commands aren't.
        self.assertEqual(*([re.sub("//.*", "", block.text) for block in guide.all("pre")] for guide in (english, japanese)))

    def test_links_and_pictures_exist(self):
        for guide in self.guides.values():
            ids = [element.get("id") for element in guide.root.iter() if element.get("id")]
            self.assertEqual(len(ids), len(set(ids)))
            for link in guide.all("a"):
                self.assertIn(link.get("href").removeprefix("#"), ids)
            for picture in guide.all("img"):
                name = re.fullmatch(r"\{\{picture (\S+)\}\}", picture.get("src"))[1]
                size = struct.unpack(">II", (ROOT / "sample" / name).read_bytes()[16:24])
                self.assertEqual((picture.get("width"), picture.get("height")), tuple(map(str, size)), name)
                self.assertTrue(picture.get("alt"), name)

    def test_messages_are_those_of_the_tool(self):
        everything, reported = set(), set()
        for path in (ROOT / "tools").rglob("*.cpp"):
            source = re.sub("#include.*", "", path.read_text("utf-8"))
            source = re.sub(r'"\s*\n\s*"', "", source)  # a literal that continues in the next line
            everything |= strings(source)
            reported |= strings(" ".join(re.findall(r"(?:Error|Refuse|Failed)\((.*?)\);", source, re.S)))
            if path.name == "describe_result.cpp":
                reported |= strings(source) - {"(result"}
        for guide in self.guides.values():
            described = [row[0] for row in guide.rows("messages")]
            self.assertEqual(len(described), len(set(described)), "a message is listed twice")
            together = "\n".join(described)
            # What follows these words is the picture libraries' own text.
            missing = {text for text in reported if text not in together} - {"can't be written"}
            self.assertEqual(missing, set(), "missing in the guide")
            fixed = {part.removesuffix("(result ").strip(" :()") for message in described for part in message.split("*")}
            unknown = [part for part in fixed if not any(part in text for text in everything)]
            self.assertEqual(unknown, [], "not among the messages")

    def test_options_and_statuses_are_those_of_the_tool(self):
        parsed = set(re.findall('"(--?[a-z-]*)"', read("tools/arguments.cpp"))) - {"--worker", "-"}
        limits = dict(re.findall(r"(--\w+) N .*?1 to (\d+)", read("tools/arguments.h")))
        statuses = {int(number) for path in (ROOT / "tools").rglob("*.*")
                    for body in re.findall(r"enum ExitStatus[^{]*\{([^}]*)\}", path.read_text("utf-8"))
                    for number in re.findall(r"= (\d+)", body)}
        self.assertEqual((set(limits), len(statuses)), ({"--repeat", "--jobs"}, 3))
        for guide in self.guides.values():
            options = {row[0]: row[1] for row in guide.rows("options")}
            described = {word for cell in options for word in re.split(r"[\s,、]+", cell) if word.startswith("-")}
            self.assertEqual(described, parsed)
            for name, limit in limits.items():
                self.assertIn(limit, re.findall(r"\d+", options[name + " *"]), name)
            self.assertEqual({int(row[0]) for row in guide.rows("status")}, statuses | {130})  # as shells have it
            for block in guide.all("pre", "cmd"):
                self.assertLessEqual(set(re.findall(r"(?<=\s)--?[a-z][a-z-]*", block.text)), parsed)

    def test_values_and_codes_are_those_of_the_program(self):
        dialog, ids = read("resources/stairmelt.rc"), read("resources/plugin_ids.h")
        codes = {name: bytes.fromhex(number).decode() for name, number in
                 re.findall(r"#define ((?:CODE|KEY)_\w+) 0x([0-9A-F]{8})L", ids)}
        defaults = re.findall(r'FourCharCode\("(\w{4})"\), &ParameterBlock::(\w+), (-?\d+), true\}', read("host/parameters.h"))
        defaults = {field: (key, default) for key, field, default in defaults}
        values, keys = [], []
        for control, low, high, field in re.findall(r"\{IDC_(\w+)_SLIDER, IDC_\w+_EDIT, (\d+), (\d+), &ViewParams::(\w+)\}",
                                                    read("ui/dialog_controls.cpp")):
            # The label is the last text before the slider.
            label = re.findall(r'"([^"]+)", -1', dialog[:dialog.index(f"IDC_{control}_SLIDER")])[-1]
            key, default = defaults[field]
            values.append([label, low, high, default])
            keys.append([key, label, low, high])
        self.assertEqual(len(values), 3)
        names = dict(re.findall(r'#define (PLUGIN_\w+) "([^"]*)"', ids))
        largest = int(re.search(r"(\d+)L, \d+L,\s*// largest image", read("resources/pipl.rc"))[1])
        for guide in self.guides.values():
            self.assertEqual([row[:4] for row in guide.rows("values")], values)
            self.assertEqual([row[:2] + re.findall(r"\d+", row[2]) for row in guide.rows("keys")], keys)
            script = guide.all("pre", "script")[0].text
            self.assertEqual(re.findall(r'charIDToTypeID\("([^"]*)"\)', script), [row[0] for row in keys] + [codes["CODE_PLUGIN"]])
            self.assertIn(f'stringIDToTypeID("{names["PLUGIN_GUID"]}")', script)
            for text in (names["PLUGIN_GUID"], names["PLUGIN_CATEGORY"], names["PLUGIN_NAME"], f"{largest:,}", "stairmelt.8bf"):
                self.assertIn(text, guide.text)


class BuildCheck(unittest.TestCase):
    def setUp(self):
        directory = tempfile.TemporaryDirectory()
        self.addCleanup(directory.cleanup)
        self.root = pathlib.Path(directory.name)
        for folder in ("guide", "sample"):
            shutil.copytree(ROOT / folder, self.root / folder)
        self.out = self.root / "out.html"

    def build(self, version="1.2.3"):
        done = subprocess.run([sys.executable, self.root / "guide" / "build.py", "--version", version, self.out],
                              capture_output=True, text=True, check=False)
        return done.returncode, done.stderr

    def test_one_self_contained_file(self):
        self.assertEqual(self.build(), (0, ""))
        text = self.out.read_text("utf-8")
        self.assertLess(self.out.stat().st_size, MAX_BYTES)
        for sign in ("{{", "}}", "http:", "https:", "@import"):
            self.assertNotIn(sign, text)
        self.assertEqual(set(re.findall(r'src="([^"]{0,33})', text)), {"data:image/png;base64,iVBORw0KGgo"})
        self.assertEqual(text.count("1.2.3"), 3)  # the title, and each language

    def test_reports_what_is_missing(self):
        for name, old, new, reported in (
                ("english.html", "{{picture bias.png}}", "{{picture lost.png}}", "lost.png"),
                ("japanese.html", "{{version}}", "{{vresion}}", "vresion"),
                ("frame.html", "{{japanese}}", "{{japanese}", "{{")):
            path = self.root / "guide" / name
            kept = path.read_text("utf-8")
            path.write_text(kept.replace(old, new, 1), "utf-8")
            status, error = self.build()
            self.assertEqual(status, 1)
            self.assertIn(reported, error)
            self.assertNotIn("Traceback", error)
            self.assertFalse(self.out.exists())
            path.write_text(kept, "utf-8")
        self.assertEqual(self.build("1.2")[0], 2)


if __name__ == "__main__":
    if len(sys.argv) > 1:
        ROOT = pathlib.Path(sys.argv[1]).resolve()
    unittest.main(argv=sys.argv[:1])
