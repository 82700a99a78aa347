"""The results of kernel_bench: medians by group, picture and measurement."""

import collections
import json
import statistics

Median = collections.namedtuple("Median", "milliseconds copy megapixels flagged repetitions")


class Results:
    """The contents of one file. The context is Google Benchmark's; table.py adds `cpu` and `load_after`."""

    def __init__(self, path):
        with open(path, encoding="utf-8") as file:
            content = json.load(file)
        self.context = content["context"]
        runs = collections.defaultdict(list)
        for entry in content["benchmarks"]:
            if entry["run_type"] == "iteration" and "error_message" not in entry:
                group, picture, what = entry["run_name"].split("/")[:3]
                runs[group, picture, what].append(entry)
        self._medians = {name: self._median(entries) for name, entries in runs.items()}

    @staticmethod
    def _median(entries):
        def middle(field):
            return statistics.median(entry[field] for entry in entries)

        return Median(middle("real_time"), middle("copy"), middle("megapixels"), middle("flagged"), len(entries))

    def pictures(self, group):
        """In the order of the run."""
        return list(dict.fromkeys(name[1] for name in self._medians if name[0] == group))

    def measurements(self, group):
        return list(dict.fromkeys(name[2] for name in self._medians if name[0] == group))

    def get(self, group, picture, what):
        """None if it wasn't measured."""
        return self._medians.get((group, picture, what))

    def repetitions(self):
        return max((median.repetitions for median in self._medians.values()), default=0)


def per_megapixel(median):
    return median.milliseconds / median.megapixels


def copies(median):
    """The time as a multiple of copying the same picture, measured right before each run."""
    return median.milliseconds / median.copy
