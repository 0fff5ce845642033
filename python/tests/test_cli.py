"""The command-line tool end to end on files, against the module's results
(the same library calls), and its exit status and messages on bad input."""

import os
import subprocess

import numpy as np
import pytest

import mirel
from conftest import random_image

CLI = os.environ.get("MIREL_CLI")
pytestmark = pytest.mark.skipif(not CLI or not mirel.has_files, reason="the mirel tool is not built")


def run(*args):
    return subprocess.run([CLI, *map(str, args)], capture_output=True, text=True, timeout=60)


@pytest.fixture
def files(rng, tmp_path):
    paths = {}
    for kind, name in [("u8", "grey.png"), ("u16", "deep.tif"), ("c24", "colour.ppm")]:
        paths[kind] = tmp_path / name
        mirel.save(random_image(rng, kind, (26, 35)), str(paths[kind]))
    return paths


@pytest.mark.parametrize(
    "kind, command, args, expected",
    [
        ("u8", "sobel_x", (), lambda a: mirel.sobel_x(a)),
        ("u8", "erode_box", (2, 1), lambda a: mirel.erode_box(a, 2, 1)),
        ("u16", "median", (), lambda a: mirel.median(a)),
        ("c24", "open_disk", (2,), lambda a: mirel.open_disk(a, 2)),
        ("u8", "binarize", ("isodata",), lambda a: mirel.threshold(a, "isodata")),
        ("u8", "shrink", (7, 5), lambda a: mirel.shrink(a, (5, 7))),
        ("c24", "mirror_horizontal", (), lambda a: a[:, ::-1]),
    ],
)
def test_operations_write_the_library_result(files, tmp_path, kind, command, args, expected):
    out = tmp_path / ("out" + files[kind].suffix)
    r = run(command, files[kind], out, *args)
    assert r.returncode == 0, r.stderr
    np.testing.assert_array_equal(mirel.load(str(out)), expected(mirel.load(str(files[kind]))))


def test_number_commands(files):
    a = mirel.load(str(files["u8"]))
    r = run("histogram", files["u8"])
    counts = dict(map(int, line.split()) for line in r.stdout.splitlines())
    h = mirel.histogram(a)
    assert counts == {i: int(c) for i, c in enumerate(h) if c}
    assert int(run("threshold", files["u8"], "max_entropy").stdout) == mirel.auto_threshold(a, "max_entropy")
    stats = dict(line.split() for line in run("stats", files["u8"]).stdout.splitlines())
    assert (int(stats["min"]), int(stats["max"])) == (a.min(), a.max())
    assert float(stats["mean"]) == pytest.approx(a.mean(), rel=1e-5)
    assert float(stats["stddev"]) == pytest.approx(a.std(), rel=1e-4)


def test_list_and_help():
    names = run("list").stdout.split()
    assert {"sobel_x", "erode_box", "canny", "histogram", "threshold", "stats"} <= set(names)
    r = run("help", "erode_box")
    assert r.returncode == 0 and "mirel erode_box IN OUT [HW=1] [HH=1]" in r.stdout


def test_errors_exit_non_zero_with_the_message(files, tmp_path):
    r = run("sobel", tmp_path / "missing.png", tmp_path / "o.png")
    assert r.returncode == 1
    assert r.stderr == "mirel: The file could not be opened. (code 1102): ImgImageFileInfo\n"
    r = run("frobnicate", files["u8"], tmp_path / "o.png")
    assert r.returncode == 2 and "no operation 'frobnicate'" in r.stderr
    r = run("erode_box", files["u8"], tmp_path / "o.png", "two")
    assert r.returncode == 2 and "HW must be a number, not 'two'" in r.stderr
    r = run("erode_box", files["u8"], tmp_path / "o.png", 1, 2, 3)
    assert r.returncode == 2 and "at most 2 arguments" in r.stderr
    r = run("gaussian_5x5", files["c24"], tmp_path / "o.ppm")
    assert r.returncode == 2 and "does not take colour images" in r.stderr
    r = run("erode_box", files["u16"], tmp_path / "o.jpg")  # JPEG holds no 16-bit image
    assert r.returncode == 1 and "(code 1419): ImgSave (BW16)" in r.stderr
    assert not (tmp_path / "o.png").exists()
