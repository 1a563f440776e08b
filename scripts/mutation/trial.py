"""A scratch copy of the tree, in which one fault after another is put, built and tested."""

import contextlib
import dataclasses
import os
import re
import resource
import shutil
import signal
import subprocess
import time

# A hanging run counts as caught. On an idle machine the slowest test program takes 10 seconds.
SHORTEST_LIMIT = 60
LIMIT_FACTOR = 20
# What a fault may fill before its run fails: an endless loop must not take the machine with it.
MEMORY_LIMIT = 4 << 30
FILE_LIMIT = 256 << 20


@dataclasses.dataclass
class Outcome:
    verdict: str  # "caught", "survived" or "uncompiled"
    by: str = ""


@dataclasses.dataclass
class Run:
    failed: bool
    hung: bool
    test: str  # the first test that failed, or the one that ran when the program crashed or hung


class ScratchTree:
    def __init__(self, root, jobs):
        self.root = root
        self.jobs = jobs
        self.base = root / "build" / "mutation"
        self.tree = self.base / "tree"
        self.build = self.base / "build"
        self.home = self.base / "home"
        self.limits = {}

    def prepare(self):
        """Copies what changed since the last time, so that what is built stays built, and sets the build up."""
        files = git(self.root, "ls-files", "-co", "--exclude-standard", "-z").split("\0")
        wanted = {name for name in files if name and (self.root / name).is_file()}
        for name in wanted:
            copy_if_changed(self.root / name, self.tree / name)
        for path in [path for path in self.tree.rglob("*") if path.is_file() or path.is_symlink()]:
            if path.relative_to(self.tree).as_posix() not in wanted:
                path.unlink()
        self.configure()

    def configure(self):
        # No warnings: a fault that the compiler would report is still one for the tests to find. No optimisation and no
        # debug information: a fault is built far more often than run.
        linker = "-Wl,--strip-debug" + (" -fuse-ld=gold" if shutil.which("ld.gold") else "")
        settings = {
            "CMAKE_BUILD_TYPE": "Debug",
            "BRIDGE_COMPANION": "OFF",
            "CMAKE_CXX_FLAGS": "-w",
            "CMAKE_CXX_FLAGS_DEBUG": "-O0",
            "CMAKE_EXE_LINKER_FLAGS": linker,
        }
        command = ["cmake", "-S", self.tree, "-B", self.build, "-G", "Ninja"]
        must([*command, *(f"-D{name}={value}" for name, value in settings.items())])

    def baseline(self, tests):
        """Builds and runs the tests without a fault. They must pass; their time sets the limit for a hanging run."""
        if not self.compile(tests):
            raise SystemExit(f"mutation-check: {tests} doesn't build")
        self.limits[tests] = 10 * SHORTEST_LIMIT
        started = time.monotonic()
        run = self.run(tests)
        if run.failed:
            raise SystemExit(f"mutation-check: {tests} fails without any fault: {run.test}")
        self.limits[tests] = max(SHORTEST_LIMIT, LIMIT_FACTOR * (time.monotonic() - started))

    def attempt(self, fault, tests):
        with self.applied(fault):
            if not self.compile(tests):
                return Outcome("uncompiled")
            run = self.run(tests)
            # A test may fail once because the machine is busy; then it didn't find the fault.
            if run.hung or run.failed and self.run(tests, run.test).failed:
                return Outcome("caught", run.test)
            return Outcome("survived")

    @contextlib.contextmanager
    def applied(self, fault):
        path = self.tree / fault.path
        original = path.read_text()
        change = fault.change
        path.write_text(original[: change.start] + change.new + original[change.end :])
        try:
            yield
        finally:
            path.write_text(original)

    def compile(self, tests):
        command = ["cmake", "--build", self.build, "-j", str(self.jobs), "--target", tests]
        return wait(start(command, subprocess.DEVNULL)) == 0

    def run(self, tests, only="*"):
        """Runs a test program up to its first failing test."""
        self.make_home()
        log = self.base / "run.log"
        command = [self.build / "unit" / tests, "--gtest_fail_fast", f"--gtest_filter={only}"]
        with open(log, "w") as output:
            process = start(command, output, cwd=self.home, env=self.environment(), preexec_fn=limit_resources)
            result = wait(process, self.limits[tests])
        test = first_failure(log.read_text(errors="replace")) if result != 0 else ""
        return Run(result != 0, result is None, test)

    def make_home(self):
        """A home of its own for each run: a fault may write or remove anything that the bridge could."""
        shutil.rmtree(self.home, ignore_errors=True)
        (self.home / "tmp").mkdir(parents=True)

    def environment(self):
        kept = {name: value for name, value in os.environ.items() if not name.startswith("XDG_")}
        return kept | {"HOME": str(self.home), "TMPDIR": str(self.home / "tmp")}


def start(command, output, **more):
    return subprocess.Popen(
        command, stdin=subprocess.DEVNULL, stdout=output, stderr=subprocess.STDOUT, start_new_session=True, **more
    )


def wait(process, limit=None):
    """The program's exit code, or None if it hangs. Nothing that it started outlives it."""
    try:
        return process.wait(limit)
    except subprocess.TimeoutExpired:
        return None
    finally:
        with contextlib.suppress(ProcessLookupError):
            os.killpg(process.pid, signal.SIGKILL)
        process.wait()


def limit_resources():
    resource.setrlimit(resource.RLIMIT_AS, (MEMORY_LIMIT, MEMORY_LIMIT))
    resource.setrlimit(resource.RLIMIT_FSIZE, (FILE_LIMIT, FILE_LIMIT))
    resource.setrlimit(resource.RLIMIT_CORE, (0, 0))


def first_failure(log):
    failed = re.findall(r"^\[  FAILED  \] ([\w/.]+\.[\w/]+)", log, re.M)
    started = re.findall(r"^\[ RUN      \] (\S+)", log, re.M)
    return failed[0] if failed else started[-1] if started else "*"


def copy_if_changed(source, target):
    if target.is_file() and target.read_bytes() == source.read_bytes():
        return
    target.parent.mkdir(parents=True, exist_ok=True)
    shutil.copy(source, target)


def git(root, *arguments):
    return subprocess.run(["git", "-C", root, *arguments], check=True, capture_output=True, text=True).stdout


def must(command):
    done = subprocess.run(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
    if done.returncode != 0:
        raise SystemExit(done.stdout + "mutation-check: the scratch build can't be set up")
