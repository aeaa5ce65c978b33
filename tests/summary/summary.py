#!/usr/bin/env python3
"""What became of a test run, for a person who has five seconds.

summary.py <folder> <preset>...: the folder is one that ctest has run in with `--output-junit junit.xml` and
`--output-log ctest.log`.
Counts GoogleTest's cases where a program has left its results, and one test for every other entry of
ctest's list. Whatever did not end well, or did not run at all, is a failure and has a name.
"""

import json
import os
import re
import shlex
import shutil
import subprocess
import sys
import textwrap
import xml.etree.ElementTree as xml
from collections import Counter, defaultdict
from dataclasses import dataclass
from pathlib import Path

PASSED, FAILED, SKIPPED = "passed", "failed", "skipped"
MOST_LINES = 40  # of what a failed test said
WIDTH = 110


@dataclass
class Test:
    """One line of ctest's list."""

    name: str
    command: list[str]
    environment: dict[str, str]

    @property
    def preset(self):
        return self.name.partition(".")[0]

    @property
    def results(self):
        """The file for GoogleTest's results, if this is such a program."""
        kind, _, path = self.environment.get("GTEST_OUTPUT", "").partition(":")
        return Path(path) if kind == "xml" else None

    def alone(self, case):
        """The command that runs one case."""
        words = [word for word in self.command if not word.startswith("--gtest_filter=")]
        return self._shell(words + [f"--gtest_filter={case}"])

    def again(self, output):
        """The command that runs the entry, or the part of it that its output names."""
        hint = re.search(r"^run it alone: (\S+)(.*)$", output, re.MULTILINE)
        if hint and hint[1] == os.path.basename(self.command[0]):
            return self._shell(self.command[:1]) + hint[2]
        folder = f"build/{self.preset}"
        return f"ctest --test-dir {folder} -V -R {shlex.quote(f'^{re.escape(self.name)}$')}"

    def _shell(self, words):
        settings = [
            f"{name}={shlex.quote(shortened(value))}"
            for name, value in self.environment.items()
            if not name.startswith("GTEST_")
        ]
        return " ".join(settings + [shlex.quote(shortened(word)) for word in words])


@dataclass
class Run:
    """How ctest saw one entry end."""

    ended_well: bool
    skipped: bool
    reason: str
    output: str
    seconds: float


@dataclass
class Outcome:
    """Of one test, or of a number of cases that share it."""

    state: str
    test: str  # the entry's name
    case: str = ""
    text: str = ""  # why it was skipped, or what it said when it failed
    command: str = ""
    count: int = 1

    @property
    def preset(self):
        return self.test.partition(".")[0]

    @property
    def name(self):
        return f"{self.test} {self.case}".rstrip()


def shortened(word):
    """Paths as one types them: from here on, and programs by their names."""
    here = os.getcwd() + os.sep
    if word.startswith(here):
        return word[len(here) :]
    return os.path.basename(word) if shutil.which(os.path.basename(word)) == word else word


def read_list(text):
    """What ctest --show-only=json-v1 printed."""
    tests = []
    for entry in json.loads(text)["tests"]:
        properties = {p["name"]: p["value"] for p in entry.get("properties", [])}
        settings = (setting.partition("=") for setting in properties.get("ENVIRONMENT", []))
        tests.append(
            Test(entry["name"], entry.get("command", []), {name: value for name, _, value in settings})
        )
    return tests


def read_runs(junit, log):
    """How each entry ended, by its name. Only ctest's log has a word for the way in which one failed."""
    words = {}
    if log.exists():
        ending = log.read_text(errors="replace").rpartition("The following tests FAILED:")[2]
        words = dict(re.findall(r"^\s*\d+ - (\S+) \((.*)\)$", ending, re.MULTILINE))
    runs = {}
    for case in xml.parse(junit).getroot().iter("testcase") if junit.exists() else []:
        name, status = case.get("name"), case.get("status")
        messages = [e.get("message") for kind in ("failure", "skipped") for e in case.iter(kind)]
        message = next(filter(None, messages), "")
        runs[name] = Run(
            ended_well=status == "run" and not case.findall("failure"),
            # What cannot be started is "skipped" as well, in ctest's words.
            skipped=status == "disabled" or message.startswith("SKIP_"),
            reason=message or words.get(name, "Failed"),
            output=case.findtext("system-out") or "",
            seconds=float(case.get("time") or 0),
        )
    return runs


def read_cases(path):
    """(state, case, text) for each case in a file of GoogleTest's; None if it was not written to its end."""
    try:
        root = xml.fromstring(path.read_bytes().decode("utf-8", "replace"))
    except (OSError, xml.ParseError):
        return None
    cases = []
    for suite in root.iter("testsuite"):
        for case in suite.iter("testcase"):
            # What goes wrong around a suite has no name of its own.
            name = f"{case.get('classname') or suite.get('name')}.{case.get('name') or '*'}"
            failures = [failure.text or failure.get("message", "") for failure in case.iter("failure")]
            skips = [skip.text or skip.get("message", "") for skip in case.iter("skipped")]
            if failures:
                cases.append((FAILED, name, "\n".join(failures)))
            elif skips or case.get("result") == "skipped":
                # The place comes first, on a line of its own.
                text = "\n".join(skips)
                cases.append((SKIPPED, name, text.partition("\n")[2] if "\n" in text else ""))
            elif case.get("status") != "run":
                cases.append((SKIPPED, name, "disabled"))
            else:
                cases.append((PASSED, name, ""))
    return cases


def cases_of_output(output):
    """As read_cases, for a program that broke off, and how many cases it left over."""
    cases, running = {}, None
    states = {"OK": PASSED, "FAILED": FAILED, "SKIPPED": SKIPPED}
    for mark, name in re.findall(r"\[ +(RUN|OK|FAILED|SKIPPED) +\] ([^\s,]+\.[^\s,]+)", output):
        if mark == "RUN":
            running = name
        elif name == running:
            cases[name], running = states[mark], None
    announced = re.search(r"Running (\d+) tests? from", output)
    left = int(announced[1]) - len(cases) - (running is not None) if announced else 0
    return [(state, name, "") for name, state in cases.items()], running, left


def last_lines(text):
    lines = text.rstrip().splitlines()
    return "\n".join((["..."] if len(lines) > MOST_LINES else []) + lines[-MOST_LINES:])


def first_lines(text):
    lines = text.strip().splitlines()
    return "\n".join(lines[:MOST_LINES] + (["..."] if len(lines) > MOST_LINES else []))


def outcomes_of_cases(test, run):
    """What became of the cases of a GoogleTest program."""
    cases = read_cases(test.results)
    broken_off, left = None, 0
    if cases is None:
        cases, broken_off, left = cases_of_output(run.output)
    outcomes = []
    for state, name, text in cases:
        if state == FAILED:
            text = first_lines(text) or last_lines(run.output)
            outcomes.append(Outcome(FAILED, test.name, name, text, test.alone(name)))
        else:
            outcomes.append(Outcome(state, test.name, name, text))
    if broken_off:
        text = f"broke off: {run.reason}\n{last_lines(run.output)}"
        outcomes.append(Outcome(FAILED, test.name, broken_off, text, test.alone(broken_off)))
    if left > 0:
        text = "did not run, because the program broke off"
        name = f"({left} more {'case' if left == 1 else 'cases'})"
        outcomes.append(Outcome(FAILED, test.name, name, text, count=left))
    if any(outcome.state == FAILED for outcome in outcomes):
        return outcomes

    # No case is to blame, but not all is well.
    text = ""
    if not run.ended_well:
        text = f"outside of its cases: {run.reason}\n{last_lines(run.output)}"
    elif not test.results.exists():
        text = f"left no results\n{last_lines(run.output)}"
    elif not cases:
        text = "has run no case"
    if text:
        outcomes.append(Outcome(FAILED, test.name, text=text, command=test.again(run.output)))
    return outcomes


def outcomes_of(test, run):
    if run is None:
        return [Outcome(FAILED, test.name, text="did not run", command=test.again(""))]
    if test.results:
        return outcomes_of_cases(test, run)
    if run.skipped:
        said = re.search(r"\[ +SKIPPED +\] (.*)", run.output)
        return [Outcome(SKIPPED, test.name, text=said[1] if said else run.reason)]
    if run.ended_well:
        return [Outcome(PASSED, test.name)]
    text = f"{run.reason}\n{last_lines(run.output)}"
    return [Outcome(FAILED, test.name, text=text.strip(), command=test.again(run.output))]


def tell_details(failures):
    for outcome in failures:
        print(f"== {outcome.name}")
        print(outcome.text.rstrip() + "\n")


def tell_skips(skips):
    """By reason; presets that skip the same share a line."""
    by_reason = defaultdict(lambda: defaultdict(list))
    for outcome in skips:
        reason = " ".join(outcome.text.split()) or "no reason given"
        name = f"{outcome.test.partition('.')[2]} {outcome.case}".rstrip()
        by_reason[reason][name].append(outcome.preset)
    for reason, names in by_reason.items():
        print(f"Skipped, {reason}:")
        by_presets = defaultdict(list)
        for name, presets in names.items():
            by_presets[", ".join(presets)].append(name)
        for presets, group in by_presets.items():
            text = f"{presets}: {', '.join(group)}"
            print(textwrap.fill(text, WIDTH, initial_indent="  ", subsequent_indent="    ",
                                break_long_words=False, break_on_hyphens=False))
    if skips:
        print()


def tell_failures(failures):
    if failures:
        print("Failed:")
    for outcome in failures:
        print(f"  {outcome.name}: {outcome.text.partition(chr(10))[0]}")
        if outcome.command:
            print(f"    {outcome.command}")
    if failures:
        print()


def tell_table(outcomes, seconds, presets):
    counts = Counter()
    for outcome in outcomes:
        counts[outcome.preset, outcome.state] += outcome.count
    width = max(len(preset) for preset in presets)
    print(f"{'':{width}}  passed  failed  skipped  seconds")
    for preset in presets:
        numbers = [counts[preset, state] for state in (PASSED, FAILED, SKIPPED)]
        print(f"{preset:{width}} {numbers[0]:7} {numbers[1]:7} {numbers[2]:8} {seconds[preset]:8.0f}")
    print()


def summarise(folder, presets):
    ctest = shutil.which("ctest") or "ctest"
    listing = subprocess.run([ctest, "--show-only=json-v1"], cwd=folder, check=True, capture_output=True)
    tests = read_list(listing.stdout)
    runs = read_runs(folder / "junit.xml", folder / "ctest.log")

    outcomes, seconds = [], Counter()
    for test in tests:
        run = runs.get(test.name)
        outcomes += outcomes_of(test, run)
        seconds[test.preset] += run.seconds if run else 0
    for preset in presets:
        if not any(test.preset == preset for test in tests):
            outcomes.append(Outcome(FAILED, preset, text="has no tests"))

    by_state = defaultdict(list)
    for outcome in outcomes:
        by_state[outcome.state].append(outcome)
    tell_details(by_state[FAILED])
    tell_skips(by_state[SKIPPED])
    tell_failures(by_state[FAILED])
    tell_table(outcomes, seconds, presets)
    total = {state: sum(o.count for o in by_state[state]) for state in (PASSED, FAILED, SKIPPED)}
    print(f"{total[PASSED]} passed, {total[FAILED]} failed, {total[SKIPPED]} skipped")
    return 0 if total[FAILED] == 0 and total[PASSED] > 0 else 1


if __name__ == "__main__":
    if len(sys.argv) < 3:
        sys.exit(__doc__)
    sys.exit(summarise(Path(sys.argv[1]), sys.argv[2:]))
