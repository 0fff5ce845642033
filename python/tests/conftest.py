"""Shared fixtures and compact numpy reference models for the mirel tests."""

import numpy as np
import pytest

import mirel


@pytest.fixture
def rng():
    return np.random.default_rng(20261123)


def random_image(rng, kind, shape=(23, 37)):
    """A random image of a pixel kind: 'u8', 'u16', 'u32', 'f32', 'c24', 'bits'."""
    h, w = shape
    if kind == "u8":
        return rng.integers(0, 256, (h, w), dtype=np.uint8)
    if kind == "u16":
        return rng.integers(0, 65536, (h, w), dtype=np.uint16)
    if kind == "u32":
        return rng.integers(0, 2**32, (h, w), dtype=np.uint32)
    if kind == "f32":
        return rng.normal(100, 50, (h, w)).astype(np.float32)
    if kind == "c24":
        return rng.integers(0, 256, (h, w, 3), dtype=np.uint8)
    if kind == "bits":
        return rng.random((h, w)) < 0.6
    raise ValueError(kind)


def views(a):
    """Non-contiguous views of `a` with the same shape as a crop of it, each
    with a contiguous copy: every stride the module must handle."""
    return {
        "row step": a[::2],
        "column step": a[:, ::2],
        "reversed rows": a[::-1],
        "reversed columns": a[:, ::-1],
        "transposed": np.swapaxes(a, 0, 1),
        "window": a[3:-2, 5:-4],
    }


def window_extreme(a, hw, hh, fn):
    """Minimum or maximum over a (2hw+1) x (2hh+1) box, pixels outside the
    image taking no part (per channel for colour)."""
    big = np.iinfo(a.dtype).max if fn is np.minimum else 0
    pad = [(hh, hh), (hw, hw)] + [(0, 0)] * (a.ndim - 2)
    p = np.pad(a, pad, constant_values=big)
    out = p[: a.shape[0], : a.shape[1]].copy()
    for dy in range(2 * hh + 1):
        for dx in range(2 * hw + 1):
            out = fn(out, p[dy : dy + a.shape[0], dx : dx + a.shape[1]])
    return out


def median3(a):
    """3x3 median, edges repeated."""
    p = np.pad(a, 1, mode="edge")
    stack = [p[dy : dy + a.shape[0], dx : dx + a.shape[1]] for dy in range(3) for dx in range(3)]
    return np.median(np.stack(stack), axis=0).astype(a.dtype)


def saturate(x, dtype):
    info = np.iinfo(dtype)
    return np.clip(x, info.min, info.max).astype(dtype)


__all__ = ["mirel", "random_image", "views", "window_extreme", "median3", "saturate"]
