"""The module's machinery: arrays in place or copied, out=, errors, warnings
and the table of operations with each operation's reach."""

import numpy as np
import pytest

import mirel
from conftest import random_image, views


KINDS = ["u8", "u16", "c24", "bits"]


@pytest.mark.parametrize("kind", KINDS)
def test_views_give_the_result_of_their_contiguous_copy(rng, kind):
    a = random_image(rng, kind, (30, 41))
    for name, v in views(a).items():
        expected = mirel.erode_box(np.ascontiguousarray(v), 2, 1)
        np.testing.assert_array_equal(mirel.erode_box(v, 2, 1), expected, err_msg=name)
        b = random_image(rng, kind, v.shape[:2])
        if kind != "bits":
            np.testing.assert_array_equal(mirel.add(v, b), mirel.add(np.ascontiguousarray(v), b), err_msg=name)


def test_out_is_written_in_place_and_returned(rng):
    a = random_image(rng, "u8", (20, 30))
    parent = np.zeros((40, 30), np.uint8)
    out = parent[::2]  # every other row: the library writes straight into parent
    result = mirel.sobel(a, out=out)
    assert result is out
    np.testing.assert_array_equal(parent[::2], mirel.sobel(a))
    assert not parent[1::2].any()
    # the source itself as destination
    b = a.copy()
    mirel.dilate_disk(b, 2, out=b)
    np.testing.assert_array_equal(b, mirel.dilate_disk(a, 2))


def test_out_that_needs_a_copy_is_filled_and_its_neighbours_kept(rng):
    a = random_image(rng, "u16", (12, 15))
    parent = np.full((12, 30), 7, np.uint16)
    out = parent[:, ::2]  # pixels two apart: computed aside and copied in
    assert mirel.median(a, out=out) is out
    np.testing.assert_array_equal(parent[:, ::2], mirel.median(a))
    assert (parent[:, 1::2] == 7).all()
    bits = np.zeros((12, 15), bool)
    mirel.to_bits(a, 30000, out=bits)
    np.testing.assert_array_equal(bits, a >= 30000)


def test_read_only_sources_are_read_and_read_only_out_refused(rng):
    a = random_image(rng, "u8")
    a.setflags(write=False)
    np.testing.assert_array_equal(mirel.invert(a), 255 - a)
    with pytest.raises(ValueError, match="read-only"):
        mirel.invert(a, out=a)


def test_failure_raises_error_with_code_text_trace_and_leaves_out_alone(rng):
    a = random_image(rng, "u8", (10, 12))
    out = np.full((9, 12), 3, np.uint8)
    with pytest.raises(mirel.Error) as e:
        mirel.erode_box(a, 1, out=out)
    assert e.value.code == 1403
    assert e.value.text == mirel.error_text(1403) == "The images differ in width or height."
    assert e.value.trace == "ImgErodeBox"
    assert "1403" in str(e.value) and e.value.trace in str(e.value)
    assert (out == 3).all()
    with pytest.raises(mirel.Error) as e:
        mirel.dft(a)  # 10 x 12 is no power of two
    assert e.value.code == 2600
    with pytest.raises(mirel.Error) as e:
        mirel.oper(99, a)
    assert e.value.code == 1003 and e.value.trace == "ImgOper ( BW8 Image to Image)"
    with pytest.raises(mirel.Error) as e:
        mirel.wrapped_add(a, a)  # let through by the form's list, no case in the worker
    assert e.value.code == 32767
    with pytest.raises(mirel.Error) as e:
        mirel.erode_box(np.zeros((0, 5), np.uint8))
    assert e.value.code == 1400


def test_bad_kinds_and_values_raise_python_errors(rng):
    with pytest.raises(TypeError, match="uint8, uint16 arrays, not float32"):
        mirel.gaussian_5x5(random_image(rng, "f32"))
    with pytest.raises(TypeError, match="out= must be a uint8 array"):
        mirel.sobel(random_image(rng, "u8"), out=np.zeros((23, 37), np.uint16))
    with pytest.raises(ValueError, match="0..255"):
        mirel.add(random_image(rng, "u8"), 300)
    with pytest.raises(ValueError, match="no threshold mode"):
        mirel.threshold(random_image(rng, "u8"), "otsu")


def test_warning_codes_become_warnings(rng):
    a = np.zeros((8, 8), np.uint8)
    a[:, :4] = 200  # the object touches the left edge
    with pytest.warns(mirel.Warning, match="106"):
        points, closed = mirel.contour(a, 3, 3, 100, mode=0)
    assert not closed and len(points) > 0
    with pytest.warns(mirel.Warning):
        values = mirel.path_values(a, [[1, 1], [50, 1]])
    assert values[0] == 200


def test_table_lists_every_operation_with_library_names():
    ops = mirel.operations
    assert len(ops) > 150
    for name, op in ops.items():
        assert getattr(mirel, name) is op.function
        assert op.kind in {"image", "resample", "inplace", "measure", "vector", "other"}
        if op.library:
            assert getattr(mirel, op.library) is ops[next(n for n, o in ops.items() if o.library == op.library)].function
    assert mirel.ImgErodeBox is mirel.erode_box and mirel.ImgConvolSobelX is mirel.sobel_x
    assert mirel.reach("erode_box", 3) == (3, 3)
    assert mirel.reach("open_box", 2, half_height=1) == (2, 4)
    assert mirel.reach("gaussian", 2, 0) == (0, 2)
    assert mirel.reach("threshold", "min_residue") is None
    assert mirel.reach("convolve", np.ones((5, 3)), out=None) == (2, 1)
    assert mirel.reach("canny") is None


# Arguments for the chunk test, for operations whose defaults need help.
CHUNK_ARGS = {
    "threshold": (100,), "double_threshold": (60, 180), "gain_offset": (1.5, 10), "lut": (np.arange(256)[::-1].astype(np.uint8),),
    "convolve": (np.arange(15, dtype=np.float32).reshape(3, 5) - 7, False, 1 / 16), "uniform": (3, 2), "gaussian": (2, 3),
    "local_average": (3, 1), "local_deviation": (2, 2), "local_mean_threshold": (3,), "to_bits": (128,),
    "convert": (np.uint16, 3), "gradient_scalar": (mirel.modulus_image(),), "normalize": (100.0, 20.0),
}
SKIP_CHUNK = {"fill", "color_threshold", "uniformize", "complex_modulus", "complex_argument"}


def test_reach_is_the_margin_a_block_needs(rng):
    """A block computed from the source cropped with the reach as margin has
    the bytes of the same block of the whole result."""
    a = random_image(rng, "u8", (48, 56))
    checked = 0
    for name, op in mirel.operations.items():
        if op.kind != "image" or name in SKIP_CHUNK:
            continue
        args = CHUNK_ARGS.get(name, ())
        try:
            try:
                full = op.function(a, *args)
            except TypeError:  # the two-operand engine functions: with a constant
                args = (40,)
                full = op.function(a, *args)
        except mirel.Error:  # a form the library refuses for uint8 and a constant
            continue
        r = mirel.reach(name, *args)
        if r is None:
            continue
        ry, rx = r
        y0, y1, x0, x1 = 17, 31, 19, 37
        cy0, cx0 = max(0, y0 - ry), max(0, x0 - rx)
        crop = a[cy0 : y1 + ry, cx0 : x1 + rx]
        part = op.function(crop, *args)
        np.testing.assert_array_equal(part[y0 - cy0 : y1 - cy0, x0 - cx0 : x1 - cx0], full[y0:y1, x0:x1], err_msg=name)
        checked += 1
    assert checked > 60
