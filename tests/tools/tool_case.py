"""What checks of the finished runfilter share: a folder of its own for each test, and the program started in it."""

import pathlib
import subprocess
import tempfile
import unittest

COMMAND = []  # the program under test, with its emulator before it


class ToolCase(unittest.TestCase):
    def setUp(self):
        self.directory = pathlib.Path(self.enterContext(tempfile.TemporaryDirectory()))

    def start(self, *words, **options):
        """Output and errors go into files, as Wine's services would keep pipes open."""
        self.out, self.err = (self.enterContext(tempfile.TemporaryFile()) for _ in range(2))
        return subprocess.Popen([*COMMAND, "--settings", "values/settings", *words], cwd=self.directory,
                                stdout=self.out, stderr=self.err, start_new_session=True, **options)

    def end(self, process):
        """Exit status, output and error lines."""
        status = process.wait(timeout=120)
        texts = []
        for stream in (self.out, self.err):
            stream.seek(0)
            texts.append(stream.read().decode("utf-8").replace("\r\n", "\n").splitlines())
        return status, *texts

    def run_tool(self, *words, **options):
        return self.end(self.start(*words, **options))
