"""Which tests run, what they run on, and what a failure leaves behind."""
import shlex
import shutil
from collections import defaultdict
from pathlib import Path

import pytest

from desktop import WINDOW_MANAGERS, Desktop
from program import TREE, Program

FAILURES = TREE / "build/e2e-failures"


def pytest_addoption(parser):
    parser.addoption("--all", action="store_true", help="the whole matrix, under every window manager")


def pytest_configure(config):
    config.addinivalue_line("markers", "main: belongs to the dozen that run by default")
    config.addinivalue_line("markers", "any_wm: knows no window manager and runs under one")
    if not hasattr(config, "workerinput"):
        shutil.rmtree(FAILURES, ignore_errors=True)


def pytest_generate_tests(metafunc):
    if "window_manager" in metafunc.fixturenames:
        names = list(WINDOW_MANAGERS)
        if metafunc.definition.get_closest_marker("any_wm"):
            names = names[:1]
        metafunc.parametrize("window_manager", names, scope="function")


def pytest_collection_modifyitems(config, items):
    """Without --all, and without a test named by its full name: the marked ones under the first window manager."""
    if config.getoption("--all") or any("::" in argument for argument in config.args):
        return
    first = next(iter(WINDOW_MANAGERS))
    chosen = [i for i in items if i.get_closest_marker("main") and i.callspec.params["window_manager"] == first]
    config.hook.pytest_deselected(items=[i for i in items if i not in chosen])
    items[:] = chosen


@pytest.hookimpl(hookwrapper=True)
def pytest_runtest_makereport(item):
    report = (yield).get_result()
    setattr(item, f"report_{report.when}", report)
    if report.failed:
        test = f"./test {shlex.quote(item.nodeid)}"
        report.sections.append(("Run this test alone", f"{test}\nscreenshot and logs: {failure_folder(item)}"))


def failure_folder(item):
    file, _, test = item.nodeid.partition("::")
    return FAILURES / "".join(c if c.isalnum() or c in "-_" else "-" for c in f"{Path(file).stem}-{test}").strip("-")


def pytest_terminal_summary(terminalreporter, config):
    """With --all, one line for each test and one column for each window manager, with the seconds taken."""
    if not config.getoption("--all"):
        return
    table = defaultdict(dict)
    for outcome in ("passed", "failed", "error", "skipped"):
        for report in terminalreporter.stats.get(outcome, []):
            file, _, test = report.nodeid.partition("::")
            file = file.rpartition("/")[2]
            manager = next(m for m in WINDOW_MANAGERS if f"[{m}" in test)
            name = f"{file} " + test.replace(f"[{manager}-", "[").replace(f"[{manager}]", "")
            table[name][manager] = f"{report.duration:.1f} s" if outcome == "passed" else outcome.upper()
    width = max(map(len, table), default=0)
    for name, cells in [("", dict(zip(WINDOW_MANAGERS, WINDOW_MANAGERS))), *sorted(table.items())]:
        terminalreporter.write_line(f"{name:{width}}" + "".join(f"{cells.get(m, '-'):>10}" for m in WINDOW_MANAGERS))


@pytest.fixture
def desktop(request, window_manager):
    with Desktop(window_manager) as started:
        yield started
        reports = [getattr(request.node, f"report_{when}", None) for when in ("setup", "call")]
        if any(report and report.failed for report in reports):
            folder = failure_folder(request.node)
            folder.mkdir(parents=True, exist_ok=True)
            started.screenshot(folder / "screen.png")
            shutil.copytree(started.logs, folder / "logs", dirs_exist_ok=True)
            state = started.data_home / "Vantle/shelves.json"
            if state.is_file():
                shutil.copy(state, folder)


@pytest.fixture
def program(desktop):
    """Not started yet."""
    return Program(desktop)


@pytest.fixture
def shelf(program):
    return program.start()
