#!/usr/bin/env python3
"""Shows the summary a run of every kind that ends badly, beside some that do not."""

import os
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

SUMMARY = Path(__file__).with_name("summary.py")

PASSED = '<testcase name="{}" classname="Gamma" status="run" result="completed" />'
SKIPPED = """<testcase name="{}" classname="Gamma" status="run" result="skipped">
  <skipped message="a.cpp:7&#x0A;no such processor"><![CDATA[a.cpp:7
no such processor]]></skipped></testcase>"""
FAILED = """<testcase name="{}" classname="Gamma" status="run" result="completed">
  <failure message="b.cpp:9" type=""><![CDATA[b.cpp:9
Expected: 1 < 0]]></failure></testcase>"""


def results(*cases):
    """Shell code that leaves these cases where GoogleTest would."""
    xml = f'<?xml version="1.0" encoding="UTF-8"?><testsuites><testsuite name="Gamma">{"".join(cases)}</testsuite></testsuites>'
    return f"cat > ${{GTEST_OUTPUT#xml:}} << 'XML'\n{xml}\nXML\n"


def says(*lines):
    return "".join(f"echo '{line}'\n" for line in lines)


class Run:
    """A project with these entries in its list, built, tested and summarised."""

    def __init__(self, place, presets=("dev",)):
        self.place = Path(place)
        self.presets = presets
        self.list = []
        self.folder = self.place / "build/all"
        self.folder.mkdir(parents=True)
        (self.place / "build/dev").mkdir()

    def add(self, name, program, properties=""):
        path = self.place / f"build/dev/{name}"
        path.write_text(f"#!/bin/sh\n{program}")
        path.chmod(0o755)
        self.add_command(name, f'"{path}"', properties)

    def add_command(self, name, command, properties=""):
        self.list.append(f"add_test(dev.{name} {command})")
        if properties:
            self.list.append(f"set_tests_properties(dev.{name} PROPERTIES {properties})")

    def add_cases(self, name, program, environment="", properties="", arguments=""):
        output = f"GTEST_OUTPUT=xml:{self.place}/{name}.xml"
        self.add(name, program, f'ENVIRONMENT "{environment}{output}" {properties}')
        if arguments:
            self.list[-2] = self.list[-2].removesuffix(")") + f" {arguments})"

    def finish(self):
        (self.folder / "CTestTestfile.cmake").write_text("\n".join(self.list))
        subprocess.run(
            ["ctest", "-j8", "--output-junit", "junit.xml", "--output-log", "ctest.log"],
            cwd=self.folder, capture_output=True, check=False)
        return self.summarise()

    def summarise(self):
        done = subprocess.run(
            [sys.executable, SUMMARY, "build/all", *self.presets],
            cwd=self.place, capture_output=True, text=True, check=False)
        self.status, self.text = done.returncode, done.stdout
        self.lines = self.text.splitlines()
        return self


class Summary(unittest.TestCase):
    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.run_ = Run(os.path.realpath(folder.name))

    def assert_failed(self, what, command, count=1):
        """It is the one failure, it has a name, and below it stands how to run it alone."""
        run = self.run_.finish()
        self.assertEqual(run.status, 1, run.text)
        self.assertTrue(run.lines[-1].endswith(f" passed, {count} failed, 0 skipped"), run.text)
        at = run.lines.index(f"  {what}")
        self.assertGreater(at, run.lines.index("Failed:"))
        self.assertEqual(run.lines[at + 1], f"    {command}", run.text)
        return run

    def test_counts_cases_and_other_entries(self):
        self.run_.add_cases("gamma", results(PASSED.format("A"), PASSED.format("B"), SKIPPED.format("C")))
        self.run_.add("gate.good", "")
        self.run_.add("gate.absent", says("[  SKIPPED ] it is not installed"),
                      r'SKIP_REGULAR_EXPRESSION "\\[  SKIPPED \\]"')
        run = self.run_.finish()
        self.assertEqual(run.status, 0, run.text)
        self.assertEqual(run.lines[-1], "3 passed, 0 failed, 2 skipped")
        self.assertEqual(run.lines[-3].split()[:4], ["dev", "3", "0", "2"])
        self.assertIn("Skipped, no such processor:\n  dev: gamma Gamma.C\n", run.text)
        self.assertIn("Skipped, it is not installed:\n  dev: gate.absent\n", run.text)
        self.assertNotIn("Failed", run.text)

    def test_names_a_failing_case(self):
        self.run_.add_cases("gamma", results(PASSED.format("A"), FAILED.format("B/3")) + "exit 1",
                            environment="PPL_IMAGE=/an/image;GTEST_TOTAL_SHARDS=1;",
                            arguments="--gtest_filter=Gamma* --more")
        run = self.assert_failed(
            "dev.gamma Gamma.B/3: b.cpp:9",
            "PPL_IMAGE=/an/image build/dev/gamma --more --gtest_filter=Gamma.B/3")
        self.assertIn("== dev.gamma Gamma.B/3\nb.cpp:9\nExpected: 1 < 0\n", run.text)
        self.assertEqual(run.lines[-3].split()[:4], ["dev", "1", "1", "0"])

    def test_names_the_case_that_crashed_and_counts_what_never_ran(self):
        self.run_.add_cases("gamma", says(
            "[==========] Running 5 tests from 1 test suite.",
            "[ RUN      ] Gamma.A", "[       OK ] Gamma.A (0 ms)",
            "[ RUN      ] Gamma.B", "[  FAILED  ] Gamma.B, where GetParam() = 3 (1 ms)",
            "[ RUN      ] Gamma.C") + "kill -SEGV $$")
        run = self.assert_failed("dev.gamma Gamma.C: broke off: SEGFAULT",
                                 "build/dev/gamma --gtest_filter=Gamma.C", count=4)
        self.assertIn("    build/dev/gamma --gtest_filter=Gamma.B\n", run.text)
        self.assertIn("dev.gamma (2 more cases): did not run", run.text)
        self.assertEqual(run.lines[-1], "1 passed, 4 failed, 0 skipped")

    def test_names_the_case_that_took_too_long(self):
        self.run_.add_cases("gamma", says("[==========] Running 1 test from 1 test suite.",
                                          "[ RUN      ] Gamma.A") + "exec sleep 60",
                            properties="TIMEOUT 1")
        self.assert_failed("dev.gamma Gamma.A: broke off: Timeout",
                           "build/dev/gamma --gtest_filter=Gamma.A")

    def test_results_of_half_a_run_do_not_count(self):
        self.run_.add_cases("gamma", "echo '<testsuites><testsuite name=' > ${GTEST_OUTPUT#xml:}\n"
                            + says("[==========] Running 1 test from 1 test suite.",
                                   "[ RUN      ] Gamma.A", "[       OK ] Gamma.A (0 ms)") + "exit 1")
        self.assert_failed("dev.gamma: outside of its cases: Failed",
                           "ctest --test-dir build/dev -V -R '^dev\\.gamma$'")

    def test_a_program_that_fails_after_its_cases_has_failed(self):
        self.run_.add_cases("gamma", results(PASSED.format("A")) + says("a leak") + "exit 23")
        run = self.assert_failed("dev.gamma: outside of its cases: Failed",
                                 "ctest --test-dir build/dev -V -R '^dev\\.gamma$'")
        self.assertIn("\na leak\n", run.text)

    def test_a_program_without_a_case_has_failed(self):
        self.run_.add_cases("gamma", results())
        self.assert_failed("dev.gamma: has run no case",
                           "ctest --test-dir build/dev -V -R '^dev\\.gamma$'")

    def test_a_program_that_leaves_no_results_has_failed(self):
        self.run_.add_cases("gamma", "exit 0")
        self.assert_failed("dev.gamma: left no results",
                           "ctest --test-dir build/dev -V -R '^dev\\.gamma$'")

    def test_a_program_that_is_not_there_has_failed(self):
        self.run_.add_command("gamma", "/not/there")
        self.assert_failed("dev.gamma: Unable to find executable",
                           "ctest --test-dir build/dev -V -R '^dev\\.gamma$'")

    def test_a_refusing_gate_says_why(self):
        self.run_.add("gate.no_xmm", says("a.o uses xmm registers") + "exit 1")
        run = self.assert_failed("dev.gate.no_xmm: Failed",
                                 "ctest --test-dir build/dev -V -R '^dev\\.gate\\.no_xmm$'")
        self.assertIn("\na.o uses xmm registers\n", run.text)

    def test_takes_the_command_that_a_program_names(self):
        self.run_.add("compare", says("run it alone: compare --seed 1 --case 7 --packed-video") + "exit 1")
        self.assert_failed("dev.compare: Failed", "build/dev/compare --seed 1 --case 7 --packed-video")

    def test_an_entry_that_ctest_never_came_to_has_failed(self):
        self.run_.add("gate.good", "")
        run = self.run_.finish()
        (run.folder / "junit.xml").unlink()
        run.summarise()
        self.assertEqual(run.status, 1)
        self.assertEqual(run.lines[-1], "0 passed, 1 failed, 0 skipped")
        self.assertIn("  dev.gate.good: did not run\n", run.text)

    def test_a_preset_without_tests_has_failed(self):
        self.run_.add("gate.good", "")
        self.run_.presets = ("dev", "m32")
        run = self.run_.finish()
        self.assertEqual(run.status, 1)
        self.assertIn("  m32: has no tests\n", run.text)
        self.assertEqual(run.lines[-1], "1 passed, 1 failed, 0 skipped")

    def test_presets_that_skip_the_same_share_a_line(self):
        self.run_.add_cases("gamma", results(SKIPPED.format("C")))
        self.run_.add("good", "")
        self.run_.list += [line.replace("dev.", "m32.") for line in self.run_.list]
        self.run_.presets = ("dev", "m32")
        run = self.run_.finish()
        self.assertIn("Skipped, no such processor:\n  dev, m32: gamma Gamma.C\n", run.text)
        self.assertEqual(run.lines[-1], "2 passed, 0 failed, 2 skipped")


if __name__ == "__main__":
    unittest.main()
