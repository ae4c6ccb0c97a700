#!/usr/bin/env python3
"""Changes one thing of the sources at a time and shows that some test notices.

Each room has a list of changes, <room>.list beside this script. For every entry the text is
changed in a copy of the tree, the one test program that should notice is built and run, and the
change is taken back. A change that no test notices is a hole in the tests.

    run.py                      every list
    run.py --room config        one room (may be repeated)
    run.py --only "block check" entries whose title holds the text
    run.py --check              builds nothing: only whether every old text is where it should be
    run.py --self-test          the rig itself: each outcome from an entry that must lead to it

An entry of a list, in this order; "#" begins a comment line:

    mutant   title
    file     src/config/ProfileKeys.cpp
    tests    tests_config ProfileRoundTrip.*:TTLIniFile*
    old     |return bValue ? "1" : "0";
    new     |return bValue ? "0" : "1";

Texts stand behind the bar, exactly; further lines of a text are further lines "old |" or "new |",
joined by line ends. The old text must occur exactly once in its file. The filter may be left out;
the whole program is then run. "expect" with an outcome belongs to the self-test alone.

Exit status: 0 when every change was killed, 1 when one survived, was stale, did not build or could
not be run, 2 when the tests fail without any change.
"""

import argparse
import os
import re
import shutil
import signal
import subprocess
import sys
import tempfile
import time
from dataclasses import dataclass, field
from pathlib import Path

HERE = Path(__file__).resolve().parent
ROOT = HERE.parent.parent
ROOMS = ["support", "config", "link", "session", "passthru", "shell", "dialogs", "windows",
         "platform", "sim"]
COPIED = ["CMakeLists.txt", "cmake", "src", "sim", "tests", "bench", "fuzz", "docs", "packaging",
          "README.md"]
BUILD_SECONDS = 900
LEAST_TEST_SECONDS = 20
UNPRIVILEGED = 65534

KILLED, SURVIVED, STALE, BROKEN, NOT_RUN = (
    "killed", "survived", "stale", "doesn't build", "not run")


class ListError(Exception):
    pass


@dataclass
class Mutant:
    room: str
    title: str
    where: str
    file: str = ""
    program: str = ""
    filter: str = "*"
    old: list = field(default_factory=list)
    new: list = field(default_factory=list)
    expect: str = ""


def read_list(path, room):
    """The entries of one list file."""
    mutants = []
    for number, line in enumerate(path.read_text(encoding="utf-8").split("\n"), 1):
        where = f"{path.name}:{number}"
        if not line.strip() or line.startswith("#"):
            continue
        text = re.fullmatch(r"(old|new)\s*\|(.*)", line)
        word = re.fullmatch(r"(\w+)\s+(\S.*?)\s*", line)
        if word and word[1] == "mutant":
            mutants.append(Mutant(room, word[2], where))
        elif not mutants:
            raise ListError(f"{where}: text before the first entry")
        elif text:
            getattr(mutants[-1], text[1]).append(text[2])
        elif word and word[1] in ("file", "expect"):
            setattr(mutants[-1], word[1], word[2])
        elif word and word[1] == "tests":
            mutants[-1].program, _, rest = word[2].partition(" ")
            mutants[-1].filter = rest.strip() or "*"
        else:
            raise ListError(f"{where}: not understood: {line}")
    for mutant in mutants:
        if not (mutant.file and mutant.program and mutant.old and mutant.new):
            raise ListError(f"{mutant.where}: an entry needs file, tests, old and new")
        if not mutant.file.startswith(("src/", "sim/")) or ".." in mutant.file:
            raise ListError(f"{mutant.where}: only what stands in src or sim is changed")
    return mutants


def copy_tree(target):
    """Brings the copy up to date, touching only what differs, so that builds stay short."""
    wanted = set()
    for name in COPIED:
        source = ROOT / name
        files = [source] if source.is_file() else sorted(
            p for p in source.rglob("*") if p.is_file() and "__pycache__" not in p.parts)
        for path in files:
            relative = path.relative_to(ROOT)
            wanted.add(relative)
            copy = target / relative
            if not copy.exists() or copy.read_bytes() != path.read_bytes():
                copy.parent.mkdir(parents=True, exist_ok=True)
                shutil.copyfile(path, copy)
                shutil.copymode(path, copy)
    for copy in [p for p in target.rglob("*") if p.is_file()]:
        if copy.relative_to(target) not in wanted:
            copy.unlink()


class Workshop:
    """The copy of the tree with its build folder, and the runs of test programs in it."""

    def __init__(self, folder, jobs):
        self.folder = folder
        self.tree = folder / "tree"
        self.build = folder / "build"
        self.scratch = folder / "scratch"
        self.log = folder / "last.log"
        self.jobs = jobs
        self.baseline = {}
        self.tree.mkdir(parents=True, exist_ok=True)
        copy_tree(self.tree)
        self.sandbox = self.find_sandbox()

    def configure(self, windows):
        command = ["cmake", "-S", str(self.tree), "-B", str(self.build),
                   "-DCMAKE_BUILD_TYPE=Mutants", "-DCMAKE_CXX_FLAGS_MUTANTS=-O0",
                   "-DBRENNIK_TESTS=ON", "-DBRENNIK_WERROR=OFF", "-Wno-dev"]
        if not (self.build / "CMakeCache.txt").exists():
            if shutil.which("ninja"):
                command += ["-G", "Ninja"]
            if shutil.which("ccache"):
                command += ["-DCMAKE_CXX_COMPILER_LAUNCHER=ccache"]
            if shutil.which("ld.lld"):
                command += ["-DCMAKE_EXE_LINKER_FLAGS=-fuse-ld=lld"]
        # They take a library more, and long to build.
        command += ["-DBRENNIK_WINDOWS=" + ("ON" if windows else "OFF")]
        if self.run(command, BUILD_SECONDS) != 0:
            raise ListError(f"the copy can't be configured, see {self.log}")

    def run(self, command, seconds, cwd=None, env=None):
        """The exit status, or None when it took longer than its time; output goes to the log."""
        with open(self.log, "wb") as log:
            process = subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=log, stderr=log,
                                       cwd=cwd, env=env, start_new_session=True)
            try:
                return process.wait(timeout=seconds)
            except subprocess.TimeoutExpired:
                return None
            finally:
                # What the program left behind goes with it, by the id of its own group.
                try:
                    os.killpg(process.pid, signal.SIGKILL)
                except (ProcessLookupError, PermissionError):
                    pass
                process.wait()

    def build_program(self, program):
        return self.run(["cmake", "--build", str(self.build), "--target", program, "-j",
                         str(self.jobs)], BUILD_SECONDS) == 0

    def find_sandbox(self):
        """A command in front of a test program behind which it can harm nothing but the scratch
        folder: the disk mounted read-only, or a user who owns nothing else."""
        self.fresh_scratch()
        if os.geteuid() == 0 and shutil.which("setpriv"):
            candidate = ["setpriv", f"--reuid={UNPRIVILEGED}", f"--regid={UNPRIVILEGED}",
                         "--clear-groups", "--no-new-privs", "--inh-caps=-all",
                         "--bounding-set=-all"]
        elif os.geteuid() != 0 and shutil.which("bwrap"):
            candidate = ["bwrap", "--ro-bind", "/", "/", "--dev", "/dev", "--proc", "/proc",
                         "--bind", str(self.scratch), str(self.scratch), "--die-with-parent"]
        else:
            return None
        probe = ["/bin/sh", "-c", '! touch "$1" 2>/dev/null && touch "$2"', "probe",
                 str(self.folder / "outside"), str(self.scratch / "inside")]
        if self.run(candidate + probe, 20) != 0:
            return None
        return candidate

    def fresh_scratch(self):
        if self.scratch.exists():
            shutil.rmtree(self.scratch)
        self.scratch.mkdir()
        if os.geteuid() == 0:
            os.chown(self.scratch, UNPRIVILEGED, UNPRIVILEGED)

    def run_tests(self, program, test_filter, seconds):
        """(exit status or None, output) of one test program in the scratch folder."""
        self.fresh_scratch()
        env = {key: value for key, value in os.environ.items()
               if not key.startswith(("BRENNIK_", "XDG_", "GTEST_"))}
        env.update(HOME=str(self.scratch), TMPDIR=str(self.scratch))
        command = [str(self.build / "tests" / program), f"--gtest_filter={test_filter}",
                   "--gtest_brief=1"]
        status = self.run((self.sandbox or []) + command, seconds, self.scratch, env)
        return status, self.log.read_text(encoding="utf-8", errors="replace")

    def check_baseline(self, program, test_filter):
        """Seconds that the unchanged tests take; they must run and pass."""
        key = (program, test_filter)
        if key not in self.baseline:
            if not self.build_program(program):
                raise ListError(f"{program} doesn't build without any change, see {self.log}")
            begin = time.monotonic()
            status, output = self.run_tests(program, test_filter, 300)
            if status != 0:
                raise ListError(f"{program} {test_filter} fails without any change, "
                                f"see {self.log}")
            found = re.search(r"(\d+) tests? from", output)
            if not found or found[1] == "0":
                raise ListError(f"{program} {test_filter}: no such test")
            self.baseline[key] = time.monotonic() - begin
        return self.baseline[key]

    def try_mutant(self, mutant, limit):
        """The outcome of one change; the copy is whole again afterwards."""
        # What deletes or overwrites for real is changed only where it can do no harm.
        if mutant.file.startswith("src/platform/") and self.sandbox is None:
            return NOT_RUN
        path = self.tree / mutant.file
        original = path.read_bytes() if path.is_file() else b""
        old = "\n".join(mutant.old).encode()
        if original.count(old) != 1:
            return STALE
        try:
            path.write_bytes(original.replace(old, "\n".join(mutant.new).encode()))
            if not self.build_program(mutant.program):
                return BROKEN
            status, _ = self.run_tests(mutant.program, mutant.filter, limit)
            return SURVIVED if status == 0 else KILLED
        finally:
            path.write_bytes(original)


def check_lists(mutants):
    """Whether every entry still fits the sources of the tree itself."""
    stale = 0
    for mutant in mutants:
        path = ROOT / mutant.file
        text = path.read_text(encoding="utf-8") if path.is_file() else ""
        if text.count("\n".join(mutant.old)) != 1:
            print(f"{STALE:<14} {mutant.room}: {mutant.title} ({mutant.where})")
            stale += 1
    print(f"{len(mutants)} mutants, {stale} stale")
    return 1 if stale else 0


def run_mutants(workshop, mutants):
    """Outcome by outcome, printed as they come."""
    # All unchanged programs first; then file by file, so that little is built twice.
    limits = {}
    for mutant in mutants:
        seconds = workshop.check_baseline(mutant.program, mutant.filter)
        limits[id(mutant)] = max(LEAST_TEST_SECONDS, 10 * seconds)
    outcomes = []
    for mutant in sorted(mutants, key=lambda m: (m.program, m.file)):
        begin = time.monotonic()
        outcome = workshop.try_mutant(mutant, limits[id(mutant)])
        seconds = time.monotonic() - begin
        print(f"{outcome:<14} {mutant.room}: {mutant.title} ({mutant.where}, {seconds:.1f} s)",
              flush=True)
        outcomes.append((mutant, outcome))
    return outcomes


def report(outcomes):
    counts = {name: sum(1 for _, outcome in outcomes if outcome == name)
              for name in (KILLED, SURVIVED, STALE, BROKEN, NOT_RUN)}
    line = f"{len(outcomes)} mutants, {counts[KILLED]} killed, {counts[SURVIVED]} survived"
    for name, words in ((STALE, "stale"), (BROKEN, "did not build"), (NOT_RUN, "not run")):
        if counts[name]:
            line += f", {counts[name]} {words}"
    print(line)
    return 0 if outcomes and counts[KILLED] == len(outcomes) else 1


def self_test(outcomes):
    wrong = [(m, outcome) for m, outcome in outcomes if outcome != m.expect]
    for mutant, outcome in wrong:
        print(f"{mutant.where}: expected {mutant.expect}, met {outcome}")
    print(f"{len(outcomes)} entries of the self-test, {len(wrong)} wrong")
    return 1 if wrong or not outcomes else 0


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n", maxsplit=1)[0])
    parser.add_argument("--room", action="append", choices=ROOMS)
    parser.add_argument("--only", default="", help="part of the titles to run")
    parser.add_argument("--check", action="store_true")
    parser.add_argument("--self-test", action="store_true")
    parser.add_argument("--work", type=Path, help="folder of the copy and its build; kept")
    parser.add_argument("--jobs", type=int, default=os.cpu_count())
    options = parser.parse_args()

    os.umask(0o022)
    folder = options.work or Path(tempfile.gettempdir()) / f"brennik-mutants-{os.getuid()}"
    folder = folder.resolve()
    if folder == ROOT or ROOT in folder.parents or folder in ROOT.parents:
        parser.error("the copy can't stand in the tree itself")
    try:
        rooms = ["selftest"] if options.self_test else options.room or ROOMS
        mutants = [m for room in rooms if (HERE / f"{room}.list").exists() or options.room
                   for m in read_list(HERE / f"{room}.list", room) if options.only in m.title]
        if not mutants:
            raise ListError("no entries")
        if options.check:
            return check_lists(mutants)
        folder.mkdir(parents=True, exist_ok=True)
        workshop = Workshop(folder, options.jobs)
        workshop.configure(any(m.program in ("tests_windows", "tests_dialogs") for m in mutants))
        if workshop.sandbox is None:
            print("no sandbox here: src/platform stays unchanged "
                  "(needs bwrap, or setpriv as root)")
        outcomes = run_mutants(workshop, mutants)
    except ListError as error:
        print(f"mutants: {error}", file=sys.stderr)
        return 2
    return self_test(outcomes) if options.self_test else report(outcomes)


if __name__ == "__main__":
    sys.exit(main())
