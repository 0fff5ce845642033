"""Each family through the module on random arrays, against compact numpy
models or the library's worked numbers."""

import numpy as np
import pytest

import mirel
from conftest import median3, random_image, saturate, window_extreme


# ---------------------------------------------------------------- point

ENGINE = {  # name: model on int64 operands, before saturation to the type
    "add": lambda a, b, m: a + b,
    "subtract": lambda a, b, m: a - b,
    "abs_difference": lambda a, b, m: abs(a - b),
    "minimum": lambda a, b, m: np.minimum(a, b),
    "maximum": lambda a, b, m: np.maximum(a, b),
    "bit_xor": lambda a, b, m: a ^ b,
    "average": lambda a, b, m: (a + b) >> 1,
    "greater": lambda a, b, m: np.where(a > b, m, 0),
    "divide": lambda a, b, m: np.where(b == 0, m, a // np.maximum(b, 1)),
}


@pytest.mark.parametrize("kind", ["u8", "u16"])
@pytest.mark.parametrize("name", sorted(ENGINE))
def test_engine_images_and_constants(rng, kind, name):
    a, b = random_image(rng, kind), random_image(rng, kind)
    b[0, :5] = 0
    dtype, m = a.dtype, np.iinfo(a.dtype).max
    model = lambda x, y: saturate(ENGINE[name](np.int64(x), np.int64(y), m), dtype)
    f = getattr(mirel, name)
    np.testing.assert_array_equal(f(a, b), model(a, b))
    np.testing.assert_array_equal(f(a, 77), model(a, np.full_like(a, 77)))
    np.testing.assert_array_equal(mirel.oper(name, a, b), f(a, b))


def test_colour_and_bit_engine(rng):
    c, d = random_image(rng, "c24"), random_image(rng, "c24")
    np.testing.assert_array_equal(mirel.add(c, d), saturate(c.astype(int) + d, np.uint8))
    np.testing.assert_array_equal(mirel.add(c, (1, 2, 3)), saturate(c.astype(int) + [1, 2, 3], np.uint8))
    p, q = random_image(rng, "bits"), random_image(rng, "bits")
    np.testing.assert_array_equal(mirel.bit_and(p, q), p & q)
    np.testing.assert_array_equal(mirel.invert(p), ~p)
    np.testing.assert_array_equal(mirel.invert(c), 255 - c)


def test_thresholds_lut_conversions(rng):
    a, w, c = random_image(rng, "u8"), random_image(rng, "u16"), random_image(rng, "c24")
    np.testing.assert_array_equal(mirel.threshold(a, 100, 5, 200), np.where(a >= 100, 200, 5))
    np.testing.assert_array_equal(mirel.threshold(w, 40000), np.where(w >= 40000, 65535, 0))
    t = mirel.auto_threshold(a, "min_residue")
    assert t == mirel.min_residue_threshold(mirel.histogram(a))[0]
    np.testing.assert_array_equal(mirel.threshold(a, "min_residue"), mirel.threshold(a, t))
    np.testing.assert_array_equal(mirel.double_threshold(a, 50, 150), np.select([a > 150, a >= 50], [255, 128], 0))
    table = rng.integers(0, 256, 256, dtype=np.uint8)
    np.testing.assert_array_equal(mirel.lut(a, table), table[a])
    np.testing.assert_array_equal(mirel.lut(w, table, 8), table[w >> 8])
    np.testing.assert_array_equal(mirel.convert(a, np.uint16, 4), a.astype(np.uint16) << 4)
    np.testing.assert_array_equal(mirel.convert(w, np.uint8, 8), (w >> 8).astype(np.uint8))
    np.testing.assert_array_equal(mirel.convert(a, np.float32), a.astype(np.float32))
    np.testing.assert_array_equal(mirel.to_bits(a, 128), a >= 128)
    np.testing.assert_array_equal(mirel.convert(a > 99, np.uint8, on=7), np.where(a > 99, 7, 0))
    inside = (c >= [10, 20, 30]).all(axis=2) & (c <= [200, 210, 220]).all(axis=2)
    np.testing.assert_array_equal(mirel.color_threshold(c, (10, 20, 30), (200, 210, 220)), inside * 255)
    np.testing.assert_array_equal(mirel.gain_offset(a, 1.0, 20), saturate(a.astype(int) + 20, np.uint8))
    np.testing.assert_array_equal(mirel.uniformize(a, 100, np.full_like(a, 100)), a)
    f = np.zeros((3, 4, 3), np.uint8)
    mirel.fill(f, (1, 2, 3))
    assert (f == [1, 2, 3]).all()


# ---------------------------------------------------------------- filter

def test_filters_worked_numbers_and_models(rng):
    flat = np.full((9, 11), 255, np.uint8)
    assert (mirel.uniform_3x3(flat) == 251).all()
    assert (mirel.uniform_5x5(flat) == 254).all()
    assert (mirel.convolve(flat, "uniform", symmetric=True) == 254).all()
    a = random_image(rng, "u8")
    # a 3x3 float kernel with rectifier 0 (floating point): the identity
    ident = np.zeros((3, 3), np.float32)
    ident[1, 1] = 1
    np.testing.assert_array_equal(mirel.convolve(a, ident, rectifier=0), a)
    # the 16-bit and colour filters are the 8-bit ones per plane where no sum wraps
    c = random_image(rng, "c24")
    for k in range(3):
        np.testing.assert_array_equal(mirel.sobel_x(c)[:, :, k], mirel.sobel_x(np.ascontiguousarray(c[:, :, k])))
    np.testing.assert_array_equal(mirel.gaussian(a, 0, 0), np.zeros_like(a))  # nothing written
    np.testing.assert_array_equal(mirel.uniform(a, 0, 0), a)  # copies
    np.testing.assert_array_equal(mirel.local_average(a, 3, 2), mirel.uniform(a, 3, 2))


# ---------------------------------------------------------------- morphology

@pytest.mark.parametrize("kind", ["u8", "u16", "c24"])
def test_box_morphology_against_model(rng, kind):
    a = random_image(rng, kind)
    np.testing.assert_array_equal(mirel.erode_box(a, 2, 1), window_extreme(a, 2, 1, np.minimum))
    np.testing.assert_array_equal(mirel.dilate_box(a, 1, 3), window_extreme(a, 1, 3, np.maximum))
    opened = window_extreme(window_extreme(a, 2, 2, np.minimum), 2, 2, np.maximum)
    np.testing.assert_array_equal(mirel.open_box(a, 2), opened)
    np.testing.assert_array_equal(mirel.white_top_hat_box(a, 2), a - opened)


def test_bits_grey_and_bilevel_agree(rng):
    bits = random_image(rng, "bits", (21, 45))
    grey = bits.astype(np.uint8) * 255
    for name in ["erode_box", "dilate_box", "close_box", "erode_disk", "morpho_gradient_disk"]:
        f = getattr(mirel, name)
        np.testing.assert_array_equal(f(bits, 2), f(grey, 2) > 0, err_msg=name)
        np.testing.assert_array_equal(getattr(mirel, "bilevel_" + name)(grey, 2), f(grey, 2), err_msg=name)
    np.testing.assert_array_equal(mirel.median(bits), mirel.median(grey) > 0)


def test_median_thin_distance(rng):
    for kind in ["u8", "u16"]:
        a = random_image(rng, kind)
        np.testing.assert_array_equal(mirel.median(a), median3(a))
    block = np.zeros((9, 12), np.uint8)
    block[2:7, 2:10] = 255
    thinned, passes = mirel.thin(block, "pattern_full", 0, 1)
    assert passes == 1 and (thinned <= block).all()
    bits = random_image(rng, "bits", (17, 29))
    thin_bits, n_bits = mirel.thin(bits, "pattern_tee", 1)
    thin_grey, n_grey = mirel.thin(bits.astype(np.uint8) * 255, "pattern_tee", 1)
    np.testing.assert_array_equal(thin_bits, thin_grey > 0)
    assert n_bits == n_grey
    d = mirel.distance(block)
    assert d.dtype == np.uint16 and d[4, 5] == 3 and d[0, 0] == 0


# ---------------------------------------------------------------- edge

def test_gradient_pairs_and_lookup(rng):
    a = random_image(rng, "u8")
    p = np.pad(a.astype(int), 1, mode="edge")
    dx = p[1:-1, :-2] - p[1:-1, 2:]
    dy = p[:-2, 1:-1] - p[2:, 1:-1]
    pairs = mirel.gradient_vector(a)
    np.testing.assert_array_equal(pairs, ((dx & 0xFFFF) | ((dy & 0xFFFF) << 16)).astype(np.uint32))
    table = mirel.modulus_image(1.0)
    assert table[256 + 4, 256 + 3] == 5
    np.testing.assert_array_equal(mirel.gradient_scalar(a, table), table[dy + 256, dx + 256])
    np.testing.assert_array_equal(mirel.gradient_scalar(pairs, table), table[dy + 256, dx + 256])
    assert set(np.unique(mirel.canny(a))) <= {0, 80, 255}
    magnitude, direction = mirel.non_maxima_suppression(pairs)
    assert set(np.unique(direction)) <= {0, 45, 90, 135}
    assert set(np.unique(mirel.hysteresis(magnitude, direction, 20, 60))) <= {0, 80, 255}


def test_dft_against_numpy(rng):
    a = random_image(rng, "u8", (8, 16))
    expected = np.fft.fftshift(np.fft.fft2(a.astype(float))) / np.sqrt(a.size)
    np.testing.assert_allclose(mirel.dft(a, fast=False), expected, rtol=0, atol=1e-3 * np.abs(expected).max())
    spectrum = mirel.dft(a)
    assert spectrum.dtype == np.complex64 and spectrum.shape == a.shape
    assert abs(spectrum[4, 8] - a.sum() / np.sqrt(a.size)) < 1e-2  # the zero frequency, centred
    m = mirel.complex_modulus(mirel.dft(a, fast=False), 0.05)
    np.testing.assert_array_equal(m, np.minimum(np.trunc(np.abs(expected) * 0.05), 255).astype(np.uint8))


# ---------------------------------------------------------------- geometry

def test_geometry(rng):
    a = random_image(rng, "c24", (24, 30))
    np.testing.assert_array_equal(mirel.horizontal_mirror(a), a[:, ::-1])
    np.testing.assert_array_equal(mirel.vertical_mirror(a), a[::-1])
    g = random_image(rng, "u8", (24, 30))
    np.testing.assert_array_equal(mirel.shrink(g, (8, 10)), g.reshape(8, 3, 10, 3).mean(axis=(1, 3)).astype(np.uint8))
    np.testing.assert_array_equal(mirel.halve(g), (g.reshape(12, 2, 15, 2).astype(int).sum(axis=(1, 3)) >> 2))
    np.testing.assert_array_equal(mirel.get_frame(g, 1), g[1::2])
    np.testing.assert_array_equal(mirel.swap_frames(g), g.reshape(12, 2, 30)[:, ::-1].reshape(24, 30))
    np.testing.assert_array_equal(mirel.linear_transform(g, (1, 0, 0, 0, 1, 0)), g)
    levels = mirel.pyramid(g, 3)
    np.testing.assert_array_equal(levels[1], mirel.halve(g))
    assert [x.shape for x in levels] == [(24, 30), (12, 15), (6, 8)]
    warp_x = np.tile(np.arange(29, -1, -1, dtype=np.uint16), (24, 1))
    warp_y = np.tile(np.arange(24, dtype=np.uint16)[:, None], (1, 30))
    np.testing.assert_array_equal(mirel.warp(g, warp_x, warp_y), g[:, ::-1])
    avg = mirel.MovingAverage(4, 30, 24)
    np.testing.assert_array_equal(avg.average(g), g)  # the first image counts size times


# ---------------------------------------------------------------- histogram and measure

def test_histogram_and_statistics(rng):
    a, w = random_image(rng, "u8", (31, 40)), random_image(rng, "u16")
    np.testing.assert_array_equal(mirel.histogram(a), np.bincount(a.ravel(), minlength=256))
    np.testing.assert_array_equal(mirel.histogram(w, 15, 8), np.bincount((w >> 8).ravel(), minlength=256))
    h = mirel.histogram(a)
    np.testing.assert_array_equal(mirel.cumulate_histogram(h), np.cumsum(h))
    np.testing.assert_array_equal(mirel.equalize(a), mirel.lut(a, mirel.setup_equalize(h)))
    assert mirel.analyse_histogram(h, "total") == a.size
    assert mirel.analyse_histogram(h, "max_count_bin") == np.argmax(h)
    np.testing.assert_array_equal(mirel.project_on_row(a), a.sum(axis=0))
    np.testing.assert_array_equal(mirel.project_on_column(a), a.sum(axis=1))
    thresholds, residue = mirel.multi_levels_threshold(h, 2)
    assert len(thresholds) == 2 and thresholds[0] < thresholds[1]
    lo, hi, mean = mirel.pixel_stat(a)
    assert (lo, hi) == (a.min(), a.max()) and mean == pytest.approx(a.mean(), rel=1e-5)
    assert mirel.pixel_stddev(a) == pytest.approx((a.std(), a.mean()), rel=1e-4)
    assert mirel.area(a, 100) == (a >= 100).sum()
    assert mirel.pixel_count(a, 50, 150) == ((a < 50).sum(), ((a >= 50) & (a < 150)).sum(), (a >= 150).sum())
    assert mirel.pixel_compare(a, mirel.bit_xor(a, (a > 200).astype(np.uint8))) == (a > 200).sum()
    y, x = np.mgrid[: a.shape[0], : a.shape[1]]
    m = mirel.weighted_moments(a)
    assert m[:3] == pytest.approx((a.sum(), (x * a).sum(), (y * a).sum()), rel=1e-5)
    assert mirel.gravity_center(a, 128) == pytest.approx((x[a >= 128].mean(), y[a >= 128].mean()), rel=1e-4)
    assert mirel.linear_regression(a, a) == pytest.approx((1.0, 0.0, 1.0), abs=1e-4)
    # pairs (s, r) at column s, row 255 - r
    b = random_image(rng, "u8", a.shape)
    expected = np.zeros((256, 256), np.int64)
    np.add.at(expected, (255 - b.ravel(), a.ravel()), 1)
    np.testing.assert_array_equal(mirel.correlogram(a, b, wide=True), expected)


# ---------------------------------------------------------------- vector

def test_paths_profiles_contours(rng):
    a = random_image(rng, "u8")
    points = np.array([[0, 0], [5, 3], [36, 22]])
    np.testing.assert_array_equal(mirel.path_values(a, points), a[points[:, 1], points[:, 0]])
    c = random_image(rng, "c24")
    np.testing.assert_array_equal(mirel.path_values(c, points), c[points[:, 1], points[:, 0]])
    np.testing.assert_array_equal(mirel.line_profile(a, 2, 1, 9, 8), a[np.arange(1, 9), np.arange(2, 10)])
    b = np.zeros_like(a)
    mirel.draw_line(b, 0, 4, 10, 4, 9)
    assert (b[4, :11] == 9).all() and b.sum() == 99
    mirel.draw_path(b, points, [1, 2, 3])
    assert b[3, 5] == 2 and b[22, 36] == 3
    block = np.zeros((10, 12), np.uint8)
    block[2:6, 3:8] = 200
    contour, closed = mirel.contour(block, 3, 2, 100)
    assert closed and len(contour) == 2 * (4 + 5) - 4
    assert set(map(tuple, contour)) == {(x, y) for y in range(2, 6) for x in range(3, 8) if x in (3, 7) or y in (2, 5)}
    profile = np.array([0, 0, 0, 200, 250, 200, 0, 0, 0], np.uint8)
    peaks = mirel.profile_peaks(profile, 10, 100)
    assert peaks.dtype == mirel.PEAK_DTYPE and len(peaks) == 1
    assert (peaks[0]["start"], peaks[0]["length"], peaks[0]["amplitude"], peaks[0]["area"]) == (3, 3, 150, 350)
    np.testing.assert_array_equal(mirel.profile_dilate(profile), [0, 0, 200, 250, 250, 250, 200, 0, 0])
    np.testing.assert_array_equal(mirel.profile_uniform(profile.astype(np.uint16), 1)[3:6], [150, 216, 150])


@pytest.mark.skipif(not mirel.has_files, reason="built without Mirel::IO")
def test_files_round_trip(rng, tmp_path):
    for kind, ext in [("u8", "png"), ("u16", "tif"), ("c24", "ppm")]:
        a = random_image(rng, kind)
        mirel.save(a, str(tmp_path / f"x.{ext}"))
        np.testing.assert_array_equal(mirel.load(str(tmp_path / f"x.{ext}")), a)
    with pytest.raises(mirel.Error) as e:
        mirel.load(str(tmp_path / "missing.png"))
    assert e.value.code == 1102
