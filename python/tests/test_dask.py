"""mirel.dask on a local cluster of worker processes: filters, morphology and
point operations chunk by chunk over 2x2 and 3x5 chunk grids give the bytes
of one call on the whole image."""

import numpy as np
import pytest

import mirel
from conftest import random_image

da = pytest.importorskip("dask.array")
dask = pytest.importorskip("dask")
distributed = pytest.importorskip("distributed")
import mirel.dask as md  # noqa: E402  (needs dask)

SHAPE = (46, 67)


@pytest.fixture(scope="session")
def client():
    """Two worker processes on loopback, one for the whole session."""
    cluster = distributed.LocalCluster(n_workers=2, threads_per_worker=1, processes=True, host="127.0.0.1",
                                       dashboard_address=":0", silence_logs=40)
    with distributed.Client(cluster) as c:
        yield c
    cluster.close()


def cases(rng):
    """(label, name, image, further arguments); a dask-array argument is a
    second image, cut like the first."""
    u8, u16 = random_image(rng, "u8", SHAPE), random_image(rng, "u16", SHAPE)
    c24, bits = random_image(rng, "c24", SHAPE), random_image(rng, "bits", SHAPE)
    other8 = random_image(rng, "u8", SHAPE)
    binary = np.where(u8 > 120, 255, 0).astype(np.uint8)
    kernel5 = rng.integers(-3, 6, (5, 5)).astype(np.float32)
    out = []
    for name in ["sobel_x", "sobel", "prewitt_y", "gradient", "laplacian_8", "highpass_2", "lowpass_1",
                 "roberts", "uniform_5x5", "gaussian_7x7", "median"]:
        out.append((name, name, u8, ()))
    out += [
        ("sobel u16", "sobel", u16, ()),
        ("gaussian_5x5 u16", "gaussian_5x5", u16, ()),
        ("convolve 5x5", "convolve", u8, (kernel5,)),
        ("convolve float", "convolve", u8, (kernel5[:3, :3],), {"rectifier": 0, "outside": 9}),
        ("convolve preset", "convolve", u16, ("gaussian",)),
        ("uniform", "uniform", u8, (4, 2)),
        ("gaussian", "gaussian", u16, (2, 3)),
        ("local_deviation", "local_deviation", u8, (3,)),
        ("erode_box", "erode_box", u8, (2, 3)),
        ("dilate_box u16", "dilate_box", u16, (6, 1)),
        ("open_box c24", "open_box", c24, (1, 2)),
        ("close_disk", "close_disk", u8, (2,)),
        ("white_top_hat_box", "white_top_hat_box", u8, (3,)),
        ("morpho_gradient_disk", "morpho_gradient_disk", u16, (1,)),
        ("bilevel_open_box", "bilevel_open_box", binary, (2, 1)),
        ("erode passes", "erode", u8, (2,)),
        ("dilate border", "dilate", u8, (1, 200)),
        ("median u16", "median", u16, ()),
        ("median c24", "median", c24, ()),
        ("median border", "median", u8, (255,)),
        ("bilevel_median", "bilevel_median", binary, ()),
        ("erode_box bits", "erode_box", bits, (2, 1)),
        ("add", "add", u8, (da.from_array(other8),)),
        ("subtract constant", "subtract", u16, (999,)),
        ("abs_difference c24", "abs_difference", c24, (da.from_array(random_image(rng, "c24", SHAPE)),)),
        ("invert", "invert", u8, ()),
        ("lut", "lut", u8, (rng.integers(0, 256, 256, dtype=np.uint8),)),
        ("gain_offset", "gain_offset", u8, (1.7, -20.0)),
        ("threshold", "threshold", u16, (30000,)),
        ("double_threshold", "double_threshold", u8, (60, 180)),
        ("color_threshold", "color_threshold", c24, ((40, 50, 60), (200, 220, 250))),
        ("uniformize image", "uniformize", u8, (200, da.from_array(np.maximum(other8, 1)))),
        ("uniformize row", "uniformize", u8, (200, np.maximum(other8[0], 1))),
        ("convert u16", "convert", u8, (np.uint16, 3)),
        ("convert c24", "convert", u8, ("c24",)),
        ("to_bits", "to_bits", u8, (100,)),
        ("local_mean_threshold", "local_mean_threshold", u8, (3, 2)),
    ]
    return [c if len(c) == 5 else c + ({},) for c in out]


def whole(arg):
    return arg.compute() if isinstance(arg, da.Array) else arg


@pytest.mark.parametrize("grid", [(2, 2), (3, 5)])
def test_chunks_give_the_bytes_of_one_call(client, grid):
    rng = np.random.default_rng(20261124 + grid[1])
    chunks = (-(-SHAPE[0] // grid[0]), -(-SHAPE[1] // grid[1]))
    labels, lazy, expected = [], [], []
    for label, name, image, args, kwargs in cases(rng):
        labels.append(label)
        further = tuple(a.rechunk(chunks + a.shape[2:]) if isinstance(a, da.Array) else a for a in args)
        lazy.append(getattr(md, name)(da.from_array(image, chunks=chunks + image.shape[2:]), *further, **kwargs))
        expected.append(getattr(mirel, name)(image, *[whole(a) for a in args], **kwargs))
        assert lazy[-1].numblocks[:2] == grid, label
    results = dask.compute(*lazy, scheduler=client.get)
    for label, got, want in zip(labels, results, expected):
        assert got.dtype == want.dtype and got.shape == want.shape, label
        assert np.array_equal(got, want), label


def test_whole_image_operations_are_refused(rng):
    image = da.from_array(random_image(rng, "u8", SHAPE), chunks=(23, 34))
    with pytest.raises(ValueError, match="whole image"):
        md.threshold(image, "min_residue")
    with pytest.raises(ValueError, match="whole image"):
        md.gain_offset(image, 9.5)
    with pytest.raises(TypeError, match="out="):
        md.sobel(image, out=np.zeros(SHAPE, np.uint8))
    with pytest.raises(ValueError, match="differ in size"):
        md.add(image, da.from_array(random_image(rng, "u8", (10, 10))))
    # Only operations that can run chunk by chunk are offered.
    assert "normalize" not in md.__all__ and "canny" not in md.__all__
    assert {"sobel", "erode_box", "median", "add", "convolve"} <= set(md.__all__)
