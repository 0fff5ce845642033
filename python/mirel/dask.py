"""The module's image operations over dask arrays, chunk by chunk.

Every operation of ``mirel.operations`` that maps an image to an image of
the same size and knows its reach is here under the same name. It runs on
each chunk through :func:`dask.array.map_overlap` with a margin of as many
rows and columns as the operation reaches, taken from the neighbouring
chunks, and no padding at the array's outer edges (``boundary='none'``):
the chunks at the edges see the image's own edges, the others see real
pixels where one call would, and the margins are cut off afterwards. The
result has the bytes of one call on the whole image. Pointwise operations
(reach 0) run chunk by chunk with no margin::

    import dask.array as da
    import mirel.dask

    big = da.from_array(frame, chunks=(1024, 1024))
    edges = mirel.dask.sobel(big)                 # lazy; edges.compute()
    opened = mirel.dask.open_box(big, 3, 2)
    summed = mirel.dask.add(big, da.from_array(other, chunks=(1024, 1024)))

A numpy image is cut into dask's default chunks. Further images (the second
operand of ``add``, a reference image) are passed as dask arrays and are cut
like the first; numpy arrays (tables, kernels) go whole to every chunk, and
so does a reference row of ``uniformize``, of which each chunk takes its own
columns. An operation whose result, with the arguments given, depends on the
whole image (a threshold chosen from the histogram) raises ValueError; it
cannot run chunk by chunk. ``out=`` is not taken.
"""

from typing import Any, Callable, Dict, List, Tuple

import dask.array as da
import numpy as np

import mirel

__all__: List[str] = []


class _Columns:
    """A row of values, one per image column, of which each chunk gets its own."""

    def __init__(self, values: np.ndarray) -> None:
        self.values = values


class _Image:
    """The place of a further image among the arguments."""


def _apply(name: str, args: Tuple[Any, ...], kwargs: Dict[str, Any], *blocks: np.ndarray,
           block_info: Any = None) -> np.ndarray:
    """The operation on one chunk: blocks[0] is the chunk of the image, the
    others fill the places of the further images in order (margins
    included)."""
    columns = slice(*block_info[0]["array-location"][1]) if block_info and 0 in block_info else slice(None)
    further = iter(blocks[1:])

    def resolve(value: Any) -> Any:
        if isinstance(value, _Image):
            return next(further)
        if isinstance(value, _Columns):
            return value.values[columns]
        return value

    call_args = [resolve(a) for a in args]
    call_kwargs = {k: resolve(v) for k, v in kwargs.items()}
    return np.asarray(getattr(mirel, name)(blocks[0], *call_args, **call_kwargs))


class _Chunk:
    """The chunk function of one call (picklable for worker processes)."""

    def __init__(self, name: str, args: Tuple[Any, ...], kwargs: Dict[str, Any]) -> None:
        self.name, self.args, self.kwargs = name, args, kwargs

    def __call__(self, *blocks: np.ndarray, block_info: Any = None) -> np.ndarray:
        return _apply(self.name, self.args, self.kwargs, *blocks, block_info=block_info)


def _wrap(name: str) -> Callable[..., Any]:
    op = mirel.operations[name]

    def run(image: Any, *args: Any, **kwargs: Any) -> da.Array:
        if "out" in kwargs:
            raise TypeError(f"mirel.dask.{name}: out= is not taken; the result is a dask array")
        reach = mirel.reach(name, *args, **kwargs)
        if reach is None:
            raise ValueError(f"mirel.dask.{name}: with these arguments the result depends on the whole image, "
                             "so it cannot be computed chunk by chunk")
        rows, cols = reach
        image = image if isinstance(image, da.Array) else da.asarray(image)
        if image.ndim == 3:
            image = image.rechunk({2: -1})
        arrays = [image]

        def place(value: Any) -> Any:
            if isinstance(value, da.Array):
                if value.shape[:2] != image.shape[:2]:
                    raise ValueError(f"mirel.dask.{name}: the images differ in size")
                arrays.append(value.rechunk(image.chunks[:2] + tuple((-1,) * (value.ndim - 2))))
                return _Image()
            if (name == "uniformize" and isinstance(value, np.ndarray) and value.ndim == image.ndim - 1
                    and value.shape[0] == image.shape[1]):
                return _Columns(value)
            return value

        chunk = _Chunk(name, tuple(place(a) for a in args), {k: place(v) for k, v in kwargs.items()})
        meta = _sample(chunk, arrays)
        if rows == 0 and cols == 0:
            extra: Dict[str, Any] = {}
            if meta.ndim < image.ndim:
                extra["drop_axis"] = list(range(meta.ndim, image.ndim))
            elif meta.ndim > image.ndim:
                extra["new_axis"] = list(range(image.ndim, meta.ndim))
                extra["chunks"] = image.chunks[:2] + tuple((n,) for n in meta.shape[2:])
            return da.map_blocks(chunk, *arrays, dtype=meta.dtype, meta=meta[:0, :0], **extra)
        if meta.ndim != image.ndim:
            raise ValueError(f"mirel.dask.{name}: a result of another shape cannot be cut with a margin")
        depth = [{0: rows, 1: cols, **{a: 0 for a in range(2, arr.ndim)}} for arr in arrays]
        return da.map_overlap(chunk, *arrays, depth=depth, boundary="none", trim=True, dtype=meta.dtype,
                              meta=meta[:0, :0])

    run.__name__ = name
    run.__qualname__ = name
    run.__doc__ = f"{op.doc}\n\nOn a dask array, chunk by chunk with a margin of the operation's reach."
    return run


def _sample(chunk: _Chunk, arrays: List[da.Array]) -> np.ndarray:
    """The operation on a small image of ones of the same kinds: its
    result's dtype and trailing dimensions."""
    h, w = min(arrays[0].shape[0], 5), min(arrays[0].shape[1], 5)
    blocks = [np.ones((h, w) + a.shape[2:], dtype=a.dtype) for a in arrays]
    info = {0: {"array-location": [(0, h), (0, w)]}}
    return chunk(*blocks, block_info=info)


for _name, _op in mirel.operations.items():
    if _op.kind == "image" and _op.reach is not None:
        globals()[_name] = _wrap(_name)
        __all__.append(_name)
del _name, _op
