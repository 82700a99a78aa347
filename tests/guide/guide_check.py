#!/usr/bin/env python3
"""Holds the users' guide against the program, and its languages against each other: guide_check.py PROJECT.

Only the standard library is used. What the program says is read from its sources by program_facts.py.
"""

import html.parser
import pathlib
import re
import struct
import subprocess
import sys
import tempfile
import unittest

sys.dont_write_bytecode = True  # nothing is to appear among the sources
import program_facts

ROOT = pathlib.Path(__file__).resolve().parents[2]
MOST_BYTES = 1_500_000
LANGUAGES = ("english", "japanese")
VOID = {"br", "hr", "img", "input", "link", "meta"}


class Fragment(html.parser.HTMLParser):
    """One language: headings, tables, blocks, pictures, and the whole text."""

    def __init__(self, text):
        super().__init__()
        self.open = []  # names of the open elements
        self.structure = []  # what both languages have in the same order
        self.tables = []  # (class, rows); a row is a list of texts, variable parts as *
        self.blocks = []  # (class, text)
        self.ids, self.links, self.pictures = [], [], []
        self.text = ""
        self.feed(text)
        self.close()
        if self.open:
            raise ValueError(f"not closed: {self.open}")

    def handle_starttag(self, tag, attributes):
        facts = dict(attributes)
        if "id" in facts:
            self.ids.append(facts["id"])
        if tag == "a":
            self.links.append(facts["href"])
        if tag == "img":
            self.pictures.append(facts)
        if re.fullmatch(r"h[1-6]|img|ul|ol|li|pre|table|figure|tr|t[hd]|p|code|kbd", tag):
            # The language's own letters stand before each identifier.
            self.structure.append((tag, facts.get("class"), facts.get("id", "")[3:]))
        if tag == "table":
            self.tables.append((facts.get("class"), []))
        elif tag == "tbody":
            self.in_body = True
        elif tag == "tr":
            self.row = []
        elif tag in ("td", "th"):
            self.row.append("")
        elif tag == "pre":
            self.blocks.append([facts.get("class"), ""])
        if tag not in VOID:
            self.open.append(tag)

    def handle_endtag(self, tag):
        if not self.open or self.open.pop() != tag:
            raise ValueError(f"line {self.getpos()[0]}: </{tag}> closes nothing")
        if tag == "tr" and "tbody" in self.open:
            self.tables[-1][1].append([program_facts.tidy(cell) for cell in self.row])

    def handle_data(self, data):
        self.text += data
        if "td" in self.open:
            self.row[-1] += "*" if "var" in self.open else data
        if "pre" in self.open:
            self.blocks[-1][1] += data

    def rows(self, kind):
        return [row for name, rows in self.tables if name == kind for row in rows]


class GuideCheck(unittest.TestCase):
    maxDiff = None

    @classmethod
    def setUpClass(cls):
        cls.program = program_facts.Program(ROOT)
        cls.sources = {name: (ROOT / "guide" / f"{name}.html").read_text("utf-8") for name in LANGUAGES}
        cls.guides = {name: Fragment(text) for name, text in cls.sources.items()}

    def test_languages_have_the_same_parts(self):
        english, japanese = (self.guides[name] for name in LANGUAGES)

        def parts(guide, *tags):
            return [part for part in guide.structure if part[0] in tags]

        self.assertEqual(parts(english, "h1", "h2", "h3", "table", "figure", "img", "pre"),
                         parts(japanese, "h1", "h2", "h3", "table", "figure", "img", "pre"))
        self.assertEqual(len(parts(english, "li")), len(parts(japanese, "li")))
        self.assertEqual(len(parts(english, "p")), len(parts(japanese, "p")))
        for (kind, left), (_, right) in zip(english.tables, japanese.tables):
            self.assertEqual([len(row) for row in left], [len(row) for row in right], kind)
        # Comments are translated, commands aren't.
        code = [[[kind, re.sub(r"//.*", "", text)] for kind, text in guide.blocks] for guide in (english, japanese)]
        self.assertEqual(*code)
        self.assertEqual([picture["src"] for picture in english.pictures],
                         [picture["src"] for picture in japanese.pictures])

    def test_links_lead_somewhere(self):
        for language, guide in self.guides.items():
            with self.subTest(language=language):
                self.assertEqual(len(guide.ids), len(set(guide.ids)))
                for link in guide.links:
                    self.assertIn(link.removeprefix("#"), guide.ids)

    def test_messages_are_those_of_the_tool(self):
        for language, guide in self.guides.items():
            with self.subTest(language=language):
                told = [row[0] for row in guide.rows("messages")]
                self.assertEqual(len(told), len(set(told)), "a message stands there twice")
                self.assertEqual(sorted(self.program.messages - set(told)), [], "missing in the guide")
                self.assertEqual(sorted(set(told) - self.program.messages), [], "not among the tool's messages")

    def test_options_and_statuses_are_those_of_the_tool(self):
        for language, guide in self.guides.items():
            with self.subTest(language=language):
                cells = [row[0] for row in guide.rows("options")]
                told = {word for cell in cells for word in re.split(r"[\s,、]+", cell) if word.startswith("-")}
                self.assertEqual(sorted(self.program.usage_options - told), [], "missing in the guide")
                self.assertEqual(sorted(told - self.program.parsed_options), [], "not among the tool's options")
                numbers = {int(row[0]) for row in guide.rows("status")}
                self.assertTrue(self.program.statuses)
                self.assertLessEqual(self.program.statuses, numbers)
                # The largest number that an option takes stands beside it.
                for name, limit in self.program.limits.items():
                    option = {"kMostRuns": "--repeat", "kMostJobs": "--jobs"}[name]
                    row = next(row for row in guide.rows("options") if row[0].startswith(option))
                    self.assertIn(str(limit), re.findall(r"\d+", row[1]), option)

    def test_commands_use_options_that_exist(self):
        options = self.program.parsed_options | {"--"}
        for language, guide in self.guides.items():
            with self.subTest(language=language):
                for kind, text in guide.blocks:
                    if kind != "cmd":
                        continue
                    for option in re.findall(r"(?<=\s)--?[a-z][a-z-]*", text):
                        self.assertIn(option, options)

    def test_values_are_those_of_the_program(self):
        for language, guide in self.guides.items():
            with self.subTest(language=language):
                rows = [tuple(row[:4]) for row in guide.rows("values")]
                wanted = [(name, str(low), str(high), str(default))
                          for name, _, low, high, default in self.program.parameters]
                self.assertEqual(rows, wanted)
                keys = [(row[0], row[1], tuple(re.findall(r"\d+", row[2]))) for row in guide.rows("keys")]
                self.assertEqual(keys, [(key, name, (str(low), str(high)))
                                        for name, key, low, high, _ in self.program.parameters])

    def test_codes_are_those_of_the_program(self):
        scripted = {key for _, key, _, _, _ in self.program.parameters}
        self.assertLessEqual(scripted, set(self.program.codes.values()))
        for language, guide in self.guides.items():
            with self.subTest(language=language):
                script = next(text for kind, text in guide.blocks if kind == "script")
                used = re.findall(r'charIDToTypeID\("([^"]*)"\)', script)
                self.assertEqual(sorted(used), sorted(scripted | {self.program.codes["CODE_PLUGIN"]}))
                self.assertIn(f'stringIDToTypeID("{self.program.names["PLUGIN_GUID"]}")', script)
                for name in ("PLUGIN_GUID", "PLUGIN_CATEGORY", "PLUGIN_NAME"):
                    self.assertIn(self.program.names[name], guide.text)
                self.assertIn(f"{self.program.largest:,}", guide.text)
                self.assertIn("stairmelt.8bf", guide.text)

    def test_pictures_have_the_size_that_is_told(self):
        for language, guide in self.guides.items():
            with self.subTest(language=language):
                for picture in guide.pictures:
                    name = re.fullmatch(r"\{\{picture (\S+)\}\}", picture["src"])[1]
                    header = (ROOT / "sample" / name).read_bytes()[:24]
                    self.assertEqual((picture["width"], picture["height"]),
                                     tuple(map(str, struct.unpack(">II", header[16:]))), name)
                    self.assertTrue(picture["alt"], name)


class BuildCheck(unittest.TestCase):
    def setUp(self):
        directory = tempfile.TemporaryDirectory()
        self.addCleanup(directory.cleanup)
        self.root = pathlib.Path(directory.name)
        for folder, pattern in (("guide", "*"), ("sample", "*.png")):
            (self.root / folder).mkdir()
            for path in (ROOT / folder).glob(pattern):
                if path.is_file():
                    (self.root / folder / path.name).write_bytes(path.read_bytes())
        self.out = self.root / "out.html"

    def build(self, version="1.2.3"):
        done = subprocess.run([sys.executable, self.root / "guide" / "build.py", "--version", version, self.out],
                              capture_output=True, text=True, check=False)
        return done.returncode, done.stderr

    def change(self, name, old, new):
        path = self.root / "guide" / name
        text = path.read_text("utf-8")
        self.assertIn(old, text)
        path.write_text(text.replace(old, new, 1), "utf-8")

    def test_one_file_that_needs_nothing(self):
        self.assertEqual(self.build(), (0, ""))
        first = self.out.read_bytes()
        self.assertEqual(self.build(), (0, ""))
        self.assertEqual(self.out.read_bytes(), first)
        self.assertLess(len(first), MOST_BYTES)
        text = first.decode("utf-8")
        for sign in ("{{", "}}", "http:", "https:", "@import"):
            self.assertNotIn(sign, text)
        self.assertEqual(set(re.findall(r'src="([^"]{0,22})', text)), {"data:image/png;base64,"})
        self.assertEqual(text.count("1.2.3"), 3)  # the title, and each language

    def test_the_version_is_written_nowhere_else(self):
        for path in (ROOT / "guide").iterdir():
            if path.suffix == ".html":
                self.assertNotIn(program_facts.Program(ROOT).version, path.read_text("utf-8"), path.name)

    def test_what_is_missing_is_told(self):
        for name, old, new, told in (
                ("english.html", "{{picture bias.png}}", "{{picture lost.png}}", "lost.png"),
                ("japanese.html", "{{version}}", "{{vresion}}", "vresion"),
                ("frame.html", "{{japanese}}", "{{japanese}", "{{")):
            with self.subTest(told=told):
                kept = (self.root / "guide" / name).read_bytes()
                self.change(name, old, new)
                status, error = self.build()
                self.assertEqual(status, 1)
                self.assertIn(told, error)
                self.assertNotIn("Traceback", error)
                self.assertFalse(self.out.exists())
                (self.root / "guide" / name).write_bytes(kept)
        self.assertEqual(self.build("1.2")[0], 2)


if __name__ == "__main__":
    if len(sys.argv) > 1:
        ROOT = pathlib.Path(sys.argv[1]).resolve()
    unittest.main(argv=sys.argv[:1])
