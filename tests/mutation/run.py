#!/usr/bin/env python3
"""Applies deliberate faults to the library, one at a time, and runs a test suite against each.

A fault is caught when the suite fails with it applied. Suites can be taken from any commit
(only tests/ and fuzz/ come from it; the library is always this checkout's HEAD), so that a
change to the tests can show that every fault the old tests caught is still caught:

    python3 tests/mutation/run.py --suite old=<commit-before> --suite new=HEAD

A suite already run can be taken from that run's output (--known old=old.log with
--suite old=<commit-before>), so that only the changed suite is built and run again.

Each suite is built once in a scratch worktree under the build root (ccache speeds up the
per-fault rebuilds when it is installed). A fault's own subsystem's tests run first; the whole
suite runs only when they pass. Prints one line per fault and suite, then a table;
exits with status 1 when the last suite misses a fault that an earlier suite caught, or when a
fault no longer applies to the library's code.
"""
import argparse
import json
import os
import shutil
import subprocess
import sys
import tempfile

HERE = os.path.dirname(os.path.abspath(__file__))
ROOT = subprocess.run(["git", "-C", HERE, "rev-parse", "--show-toplevel"], check=True,
                      capture_output=True, text=True).stdout.strip()


def run(cmd, cwd=None, timeout=None):
    return subprocess.run(cmd, cwd=cwd, capture_output=True, text=True, timeout=timeout)


def prepare_suite(name, ref, build_root):
    tree = os.path.join(build_root, name)
    if os.path.exists(tree):
        run(["git", "-C", ROOT, "worktree", "remove", "--force", tree])
        shutil.rmtree(tree, ignore_errors=True)
    subprocess.run(["git", "-C", ROOT, "worktree", "add", "--detach", "-q", tree, "HEAD"],
                   check=True)
    if ref != "HEAD":
        for folder in ("tests", "fuzz"):
            shutil.rmtree(os.path.join(tree, folder), ignore_errors=True)
            subprocess.run(["git", "-C", tree, "checkout", ref, "--", folder], check=True)
        # The fault list and this script always come from HEAD.
        subprocess.run(["git", "-C", tree, "checkout", "HEAD", "--", "tests/mutation"],
                       check=True)
    build = os.path.join(tree, "build")
    env_args = []
    if shutil.which("ccache"):
        env_args = ["-DCMAKE_CXX_COMPILER_LAUNCHER=ccache"]
    configure = run(["cmake", "-S", tree, "-B", build, "-G", "Ninja",
                     "-DCANVARO_BUILD_BENCHMARKS=OFF"] + env_args)
    if configure.returncode != 0:
        sys.exit(f"{name}: configure failed\n{configure.stderr}")
    return tree, build


def build_and_test(build, timeout):
    built = run(["cmake", "--build", build, "-j2"], timeout=3600)
    if built.returncode != 0:
        return "no-build", built.stdout[-2000:]
    # The installed-package test builds a whole consumer project; it checks packaging, not the
    # library's behaviour, so it is left out here.
    # The first failing test decides: a fault is caught as soon as anything fails.
    tested = run(["ctest", "-j2", "--stop-on-failure", "--timeout", str(timeout), "-E",
                  "^InstalledPackage\\."], cwd=build, timeout=3600)
    return ("passed" if tested.returncode == 0 else "failed"), tested.stdout[-2000:]


def area_of(fault):
    """The test executable of the fault's own subsystem (test_Undo for src/canvaro/Undo/...)."""
    parts = fault["file"].split("/")
    if parts[:2] == ["src", "kelbra"]:
        return "test_kelbra"
    if parts[:2] == ["src", "canvaro"] and len(parts) > 3:
        return "test_" + parts[2]
    return None


def quick_test(build, area, timeout):
    """Runs the fault's own test executable alone. A failure there is a catch; a pass proves
    nothing, and the whole suite decides."""
    built = run(["cmake", "--build", build, "-j2", "--target", area], timeout=3600)
    if built.returncode != 0:
        return "no-build"
    env = dict(os.environ, TZ="UTC")
    try:
        tested = subprocess.run([os.path.join(build, "tests", area)], cwd=build, env=env,
                                capture_output=True, text=True, timeout=timeout)
    except subprocess.TimeoutExpired:
        return "failed"
    return "passed" if tested.returncode == 0 else "failed"


def apply_fault(tree, fault):
    path = os.path.join(tree, fault["file"])
    with open(path, encoding="utf-8") as f:
        text = f.read()
    count = text.count(fault["find"])
    if count != 1:
        return None, f"'find' text occurs {count} times in {fault['file']}"
    with open(path, "w", encoding="utf-8") as f:
        f.write(text.replace(fault["find"], fault["replace"]))
    return text, None


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--suite", action="append", default=[],
                        help="NAME=REF: tests/ and fuzz/ taken from commit REF (default now=HEAD)")
    parser.add_argument("--only", default="", help="comma-separated fault ids")
    parser.add_argument("--faults", default=os.path.join(HERE, "faults.json"))
    parser.add_argument("--build-root", default=os.path.join(tempfile.gettempdir(),
                                                             "canvaro-mutation"))
    parser.add_argument("--timeout", type=int, default=300, help="seconds per test")
    parser.add_argument("--known", action="append", default=[],
                        help="NAME=FILE: take suite NAME's verdicts from an earlier run's output "
                             "instead of running it again")
    args = parser.parse_args()

    with open(args.faults, encoding="utf-8") as f:
        faults = json.load(f)
    if args.only:
        wanted = set(args.only.split(","))
        faults = [fault for fault in faults if fault["id"] in wanted]
    suites = [s.split("=", 1) for s in (args.suite or ["now=HEAD"])]
    width = max([len(fault["id"]) for fault in faults] + [5])
    os.makedirs(args.build_root, exist_ok=True)

    results = {}
    broken = False
    for name, path in (k.split("=", 1) for k in args.known):
        with open(path, encoding="utf-8") as f:
            for line in f:
                words = line.split(None, 2)
                if len(words) == 3 and words[0] == name:
                    results[(words[1], name)] = words[2].strip()
        missing = [fault["id"] for fault in faults if (fault["id"], name) not in results]
        if missing:
            sys.exit(f"{name}: {path} has no verdict for " + ", ".join(missing))
    known = {k.split("=", 1)[0] for k in args.known}
    for name, ref in suites:
        if name in known:
            continue
        tree, build = prepare_suite(name, ref, args.build_root)
        state, log = build_and_test(build, args.timeout)
        if state != "passed":
            sys.exit(f"{name}: the suite does not pass without faults ({state})\n{log}")
        for fault in faults:
            original, problem = apply_fault(tree, fault)
            if problem:
                verdict = "does not apply: " + problem
                broken = True
            else:
                area = area_of(fault)
                state = quick_test(build, area, args.timeout) if area else "passed"
                if state == "passed":
                    try:
                        state, _ = build_and_test(build, args.timeout)
                    except subprocess.TimeoutExpired:
                        state = "failed"
                verdict = {"failed": "caught", "passed": "MISSED",
                           "no-build": "does not build"}[state]
                if state == "no-build":
                    broken = True
                with open(os.path.join(tree, fault["file"]), "w", encoding="utf-8") as f:
                    f.write(original)
            results[(fault["id"], name)] = verdict
            print(f"{name:>8}  {fault['id']:<{width}} {verdict}", flush=True)
        build_and_test(build, args.timeout)  # leaves the tree built without faults

    names = [name for name, _ in suites]
    print("\n" + f"{'fault':<{width}} " + " ".join(f"{n:>10}" for n in names) + "  what")
    regressions = []
    for fault in faults:
        row = [results[(fault["id"], n)] for n in names]
        print(f"{fault['id']:<{width}} " + " ".join(f"{v.split(':')[0]:>10}" for v in row) +
              f"  {fault['what']}")
        if len(row) > 1 and "caught" in row[:-1] and row[-1] != "caught":
            regressions.append(fault["id"])
    caught = sum(results[(f["id"], names[-1])] == "caught" for f in faults)
    print(f"\n{names[-1]}: {caught} of {len(faults)} faults caught")
    if regressions:
        print("caught before, missed now: " + ", ".join(regressions))
    return 1 if regressions or broken else 0


if __name__ == "__main__":
    sys.exit(main())
